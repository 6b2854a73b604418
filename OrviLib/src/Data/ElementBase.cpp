#include "Data/ElementBase.h"

#include <Poco/Exception.h>

#include <vector>

namespace Orvi::Data
{

ElementBase::ElementBase(XObjectId id)
    : XObjectBase(id)
{
}

ElementBase::~ElementBase() = default;

const std::string& ElementBase::service() const
{
    return m_serviceName;
}

const std::string& ElementBase::resource() const
{
    return m_resourceName;
}

void ElementBase::initialize(const std::string& service, const std::string& resource)
{
    m_serviceName = service;
    m_resourceName = resource;
}

void ElementBase::initialize(const Poco::URI& uri, std::string* out_objectId)
{
    std::vector<std::string> segments;
    uri.getPathSegments(segments);
    if (segments.size() < 2 || segments.size() > 3)
    {
        throw Poco::InvalidArgumentException("Invalid element URI '" + uri.toString() +
                                             "': expected /service/resource or /service/resource/object");
    }
    initialize(segments[0], segments[1]);
    if (out_objectId != nullptr)
    {
        *out_objectId = segments.size() == 3 ? segments[2] : std::string();
    }
}

} // namespace Orvi::Data
