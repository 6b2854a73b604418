#include "ControllerConfirmation.h"

#include "DataLayer/JSONProcessingContext.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/LogStream.h"
#include "OperationResult.h"

#include <utility>

namespace Orvi::Example
{

ControllerConfirmation::ControllerConfirmation(Mapping::MappingServiceJSONDataCache& cache,
                                               const std::string& service, const std::string& resource,
                                               const std::string& uuid, Poco::JSON::Object::Ptr values)
    : m_cache(cache)
    , m_service(service)
    , m_resource(resource)
    , m_uuid(uuid)
    , m_values(std::move(values))
{
}

ControllerConfirmation::~ControllerConfirmation() = default;

void ControllerConfirmation::processData()
{
    // Only the UUID is needed: the cache reloads the object as it is stored now.
    DBData::XObject object{DBData::Element::Ptr()};
    object.setId(DBData::UUID(m_uuid));
    const std::string address =
        Mapping::MappingServiceJSONDataCache::getLocation(m_service, m_resource, m_uuid);
    const Mapping::OperationResult::Enum result = m_cache.updateCacheXObjectWithJSON(
        DataLayer::JSONProcessingContext::InputContext_IPC, m_service, m_resource, object, m_values);
    if (result < Mapping::OperationResult::ObjectUpdated)
    {
        LOG_WARNING("Controller could not apply " << address);
        return;
    }
    LOG_INFO("Controller confirmed " << address);
}

} // namespace Orvi::Example
