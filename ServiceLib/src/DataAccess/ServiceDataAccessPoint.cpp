#include "DataAccess/ServiceDataAccessPoint.h"

#include "Command/UrlPath.h"

#include <utility>

namespace Orvi::Service
{

ServiceDataAccessPoint::UpdateResult::UpdateResult(Value value, Data::XObjectBase::Ptr createdObject,
                                                   std::string message)
    : created(std::move(createdObject))
    , m_value(value)
    , m_message(std::move(message))
{
}

bool ServiceDataAccessPoint::UpdateResult::success() const
{
    return m_value < NOT_FOUND;
}

ServiceDataAccessPoint::UpdateResult::Value ServiceDataAccessPoint::UpdateResult::value() const
{
    return m_value;
}

const std::string& ServiceDataAccessPoint::UpdateResult::message() const
{
    return m_message;
}

ServiceDataAccessPoint::~ServiceDataAccessPoint() = default;

ServiceDataAccessPoint::UpdateResult
ServiceDataAccessPoint::updateElement(const Poco::URI& uri, const Poco::JSON::Object::Ptr& json)
{
    const Command::UrlPath path(uri);
    if (path.getCharacteristic() != Command::UrlPath::SERVICE_RESOURCE_OBJECT)
    {
        return UpdateResult(UpdateResult::INVALID_REQUEST);
    }
    return updateElement(path.getService(), path.getResource(), path.getElement(), json);
}

ServiceDataAccessPoint::UpdateResult
ServiceDataAccessPoint::updateElement(const std::string& service, const std::string& resource,
                                      const Poco::UUID& uuid, const Poco::JSON::Object::Ptr& json)
{
    return updateElement(service, resource, uuid.toString(), json);
}

ServiceDataAccessPoint::UpdateResult ServiceDataAccessPoint::deleteElement(Data::XObjectId id)
{
    const Data::ElementBase::Ptr element = getElement(id);
    if (element.isNull())
    {
        return UpdateResult(UpdateResult::NOT_FOUND);
    }
    return deleteElement(*element);
}

ServiceDataAccessPoint::UpdateResult ServiceDataAccessPoint::deleteElement(const Poco::URI& uri)
{
    const Command::UrlPath path(uri);
    if (path.getCharacteristic() != Command::UrlPath::SERVICE_RESOURCE_OBJECT)
    {
        return UpdateResult(UpdateResult::INVALID_REQUEST);
    }
    return deleteElement(path.getService(), path.getResource(), path.getElement());
}

ServiceDataAccessPoint::UpdateResult ServiceDataAccessPoint::deleteElement(const std::string& service,
                                                                           const std::string& resource,
                                                                           const Poco::UUID& uuid)
{
    return deleteElement(service, resource, uuid.toString());
}

ServiceDataAccessPoint::UpdateResult ServiceDataAccessPoint::deleteElement(const std::string& service,
                                                                           const std::string& resource,
                                                                           const std::string& element)
{
    const Data::ElementBase::Ptr found = getElement(service, resource, element);
    if (found.isNull())
    {
        return UpdateResult(UpdateResult::NOT_FOUND);
    }
    return deleteElement(*found);
}

} // namespace Orvi::Service
