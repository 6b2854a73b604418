#pragma once

#include "Data/AttributeBase.h"
#include "Data/AttributeContainer.h"
#include "Data/AttributeValueBase.h"
#include "Data/DataTypes.h"
#include "Data/ElementBase.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/JSONDataCache.h"

#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Orvi::Service::DataAccess
{

/// A typed, read-only view of one stored object. Attributes are converted when they are first asked
/// for and then kept, so a view shows the object as it was at that moment; one thread at a time.
class ElementAccess : public Data::ElementBase
{
public:
    ElementAccess(const DBData::XObject::Ptr& base, const std::string& service, const std::string& resource,
                  JSONDataCache::JSONDataCache* cache);
    /// Raises Poco::NullPointerException for an empty object or cache pointer.

    ElementAccess(const DBData::XObject::Ptr& base, const Poco::URI& uri,
                  JSONDataCache::JSONDataCache* cache);
    /// Takes service and resource from the URI ("/service/resource/uuid"), which is kept as given.

    ElementAccess(const DBData::XObject::Ptr& base, JSONDataCache::JSONDataCache* cache);
    /// Takes service and resource from the object's stored "uri" value; raises
    /// Poco::NullPointerException when it has none and the exceptions of Poco::Dynamic::Var::extract
    /// when it is empty or no text.

    ElementAccess(const ElementAccess& other);
    /// Copies the converted attributes too, so that the two views do not share them.

    ElementAccess(ElementAccess&&) = default;
    ElementAccess& operator=(const ElementAccess& other);
    ElementAccess& operator=(ElementAccess&&) = default;
    ~ElementAccess() override;

    Data::AttributeMap getAttributes() const override;
    /// Converts all stored attributes first.

    Data::AttributeBase::Ptr getAttribute(const std::string& name) const override;
    /// Converts the stored attribute first; an empty pointer when it has no value.

    bool hasValue(const std::string& name) const override;

    std::size_t size() const override;
    /// The attributes converted so far, at least id and uri; loads nothing.

    const Data::AttributeValueBase* getValue(const std::string& name) const override;
    /// References come as they are stored, unresolved.

    std::string getName() const override;
    /// Empty when the object has no name or one that is no text.

    Poco::UUID getId() const override;
    Poco::URI getUri() const override;

    Poco::JSON::Object::Ptr toJSON(int level) const override;
    /// All attributes, with bare references replaced by the referenced objects.

    Poco::JSON::Object::Ptr toJSON(const std::vector<std::string>& names) const override;
    /// The named attributes; only their references are resolved.

    const DBData::XObject::Ptr& getBase() const { return m_base; }
    /// The stored object behind the view.

    void initialiseAttributes() const;
    /// Converts every stored attribute that has a value and is not converted yet.

    void initialiseAttribute(const std::string& name) const;
    /// Converts the stored attribute of that name unless it is converted or has no value.

private:
    void checkPointers() const;
    void storeIdentity(const Poco::URI& uri);
    void addConverted(const DBData::AttributeValue& value) const;

    void checkAndResolveObjRef(Data::AttributeValueBase& value) const;
    /// Replaces a bare reference, or each one of an array, by the object it names, read through the
    /// cache. A reference that cannot be read is logged and stays bare.

    DBData::XObject::Ptr m_base;
    JSONDataCache::JSONDataCache* m_cache;
    mutable Data::AttributeContainer m_attributes;
};

} // namespace Orvi::Service::DataAccess
