#include "RegistryDataHandler.h"

#include "Data/XObjectBase.h"
#include "DataLayer/JSONProcessingContext.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/LogStream.h"

#include <Poco/JSON/Object.h>

namespace Orvi::Registry
{

using Mapping::OperationResult;

void RegistryDataHandler::attach(Mapping::MappingServiceJSONDataCache& cache)
{
    m_cache = &cache;
}

OperationResult::Enum RegistryDataHandler::updateToDb(const std::string&, const std::string&,
                                                      const Mapping::XObject&, Mapping::ProcessingData&)
{
    return OperationResult::ObjectUpdated;
}

OperationResult::Enum RegistryDataHandler::updateToMapper(const std::string& service,
                                                          const std::string& resource,
                                                          const Mapping::XObject& xobject,
                                                          Mapping::ProcessingData& data)
{
    const std::string uuid = xobject.getId().toString();
    if (m_cache != nullptr && data.orgJsonObj != nullptr)
    {
        // The store reloads the registration by its UUID and takes the posted members into it.
        DBData::XObject registration{DBData::Element::Ptr()};
        registration.setId(DBData::UUID(uuid));
        if (!OperationResult::isFailure(m_cache->updateCacheXObjectWithJSON(
                DataLayer::JSONProcessingContext::InputContext_IPC, service, resource, registration,
                Poco::JSON::Object::Ptr(new Poco::JSON::Object(*data.orgJsonObj)))))
        {
            return OperationResult::ObjectUpdated;
        }
    }
    LOG_WARNING("Registration " << Mapping::MappingServiceJSONDataCache::getLocation(service, resource, uuid)
                                << " could not be stored");
    return OperationResult::ErrorOnUpdate;
}

OperationResult::Enum RegistryDataHandler::beforeDeleteObject(const std::string&, const std::string&,
                                                              const Mapping::XObject&)
{
    return OperationResult::ObjectUpdated;
}

void RegistryDataHandler::afterDeleteObject(const std::string&, const std::string&, const Mapping::XObject&)
{
    // Nothing outside the store knows of a registration.
}

OperationResult::Enum RegistryDataHandler::beforeDeleteAttributes(const std::string& service,
                                                                  const std::string& resource,
                                                                  const Mapping::XObject& xobject,
                                                                  const std::vector<std::string>&)
{
    LOG_WARNING(
        "Cannot clear attributes of the registration "
        << Mapping::MappingServiceJSONDataCache::getLocation(service, resource, xobject.getId().toString()));
    return OperationResult::ErrorOnUpdate;
}

void RegistryDataHandler::afterDeleteAttributes(const std::string&, const std::string&,
                                                const Mapping::XObject&, const std::vector<std::string>&)
{
}

} // namespace Orvi::Registry
