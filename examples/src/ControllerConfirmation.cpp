#include "ControllerConfirmation.h"

#include "Logging/LogStream.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "OperationResult.h"

#include <utility>

namespace Orvi::Example
{

ControllerConfirmation::ControllerConfirmation(VehicleLink& vehicle, const std::string& service,
                                               const std::string& resource, const std::string& uuid,
                                               Poco::JSON::Object::Ptr values)
    : m_vehicle(vehicle)
    , m_service(service)
    , m_resource(resource)
    , m_uuid(uuid)
    , m_values(std::move(values))
{
}

ControllerConfirmation::~ControllerConfirmation() = default;

void ControllerConfirmation::processData()
{
    const std::string address =
        Mapping::MappingServiceJSONDataCache::getLocation(m_service, m_resource, m_uuid);
    const Mapping::OperationResult::Enum result = m_vehicle.confirm(m_service, m_resource, m_uuid, m_values);
    if (result < Mapping::OperationResult::ObjectUpdated)
    {
        LOG_WARNING("Controller could not apply " << address);
        return;
    }
    LOG_INFO("Controller confirmed " << address);
}

} // namespace Orvi::Example
