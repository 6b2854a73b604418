#pragma once

#include "AttributeIdent.h"
#include "XObjectRefBase.h"

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>

namespace Orvi::Mapping
{

/// Keeps the references between mapped objects and owns their entries. A reference is listed under the
/// object it points to and under the object it starts from, once if both are the same object. Entries
/// handed out by getDependencyInfos() stay valid until their reference is removed or the holder is gone.
class XObjectRefHolder : public XObjectRefBase
{
public:
    XObjectRefHolder() = default;
    ~XObjectRefHolder() override;

    bool addReference(const std::string& service, const std::string& resource, const std::string& attribute,
                      Poco::Int32 fromObjectId, Poco::Int32 toObjectId);
    /// Notes that the attribute of the object fromObjectId refers to the object toObjectId. False, and
    /// nothing added, if exactly this reference is known already.

    bool removeReference(const std::string& service, const std::string& resource,
                         const std::string& attribute, Poco::Int32 fromObjectId, Poco::Int32 toObjectId);
    /// False if the reference is unknown.

    std::size_t removeReferencesFrom(Poco::Int32 fromObjectId);
    /// Removes every reference that starts from the object and gives their number.

    std::size_t removeReferencesTo(Poco::Int32 toObjectId);
    /// Removes every reference that points to the object and gives their number.

    std::size_t size() const;
    /// The number of references.

    void clear();

private:
    struct Reference
    {
        std::unique_ptr<AttributeIdent> from;
        std::unique_ptr<XObjectRefData> data;
    };

    std::size_t removeIf(const std::function<bool(const Reference&)>& matches);
    void unlist(Poco::Int32 objId, XObjectRefData* data);

    std::list<Reference> m_references;
};

} // namespace Orvi::Mapping
