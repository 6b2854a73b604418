#pragma once

#include "Data/DataTypes.h"
#include "Data/XObjectBase.h"

#include <Poco/SharedPtr.h>
#include <Poco/URI.h>

#include <string>

namespace Orvi::Data
{

/// A typed object that knows the service and the resource it belongs to.
class ElementBase : public XObjectBase
{
public:
    using Ptr = Poco::SharedPtr<ElementBase>;

    explicit ElementBase(XObjectId id = -1);
    ElementBase(const ElementBase&) = default;
    ElementBase(ElementBase&&) = default;
    ElementBase& operator=(const ElementBase&) = default;
    ElementBase& operator=(ElementBase&&) = default;
    ~ElementBase() override;

    const std::string& service() const;
    const std::string& resource() const;

    void initialize(const std::string& service, const std::string& resource);

    void initialize(const Poco::URI& uri, std::string* out_objectId);
    /// Takes service and resource from the first two path segments of uri, "/service/resource" or
    /// "/service/resource/object". The third segment, or an empty text without one, goes to
    /// out_objectId unless it is null. Raises Poco::InvalidArgumentException for other paths and
    /// leaves the names as they were.

protected:
    std::string m_serviceName;
    std::string m_resourceName;
};

} // namespace Orvi::Data
