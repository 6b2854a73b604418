#include "ExampleDataHandler.h"

#include "ControllerConfirmation.h"
#include "Data/XObjectBase.h"
#include "DataLayer/JSONProcessingContext.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/LogStream.h"
#include "Message/MessagePriority.h"

namespace Orvi::Example
{

using Mapping::OperationResult;

const std::string ExampleDataHandler::AUDIO = "audio";
const std::string ExampleDataHandler::CABIN = "cabin";
const std::string ExampleDataHandler::PLAYLISTS = "playlists";

namespace
{

std::string uuidOf(const Mapping::XObject& xobject)
{
    return xobject.getId().toString();
}

std::string addressOf(const std::string& service, const std::string& resource,
                      const Mapping::XObject& xobject)
{
    return Mapping::MappingServiceJSONDataCache::getLocation(service, resource, uuidOf(xobject));
}

} // namespace

ExampleDataHandler::ExampleDataHandler(Util::MessageSync& worker)
    : m_worker(worker)
{
}

void ExampleDataHandler::attach(Mapping::MappingServiceJSONDataCache& cache, VehicleLink& vehicle)
{
    m_cache = &cache;
    m_vehicle = &vehicle;
}

OperationResult::Enum ExampleDataHandler::updateToDb(const std::string& service, const std::string& resource,
                                                     const Mapping::XObject& xobject,
                                                     Mapping::ProcessingData&)
{
    if (service == AUDIO && resource == PLAYLISTS)
    {
        return OperationResult::ObjectUpdated;
    }
    LOG_WARNING("Cannot create " << addressOf(service, resource, xobject) << ": only playlists are created");
    return OperationResult::ErrorOnUpdate;
}

OperationResult::Enum ExampleDataHandler::updateToMapper(const std::string& service,
                                                         const std::string& resource,
                                                         const Mapping::XObject& xobject,
                                                         Mapping::ProcessingData& data)
{
    const std::string address = addressOf(service, resource, xobject);
    if (m_cache == nullptr || m_vehicle == nullptr || data.orgJsonObj == nullptr)
    {
        LOG_WARNING("Cannot take the change of " << address << " without a cache and its values");
        return OperationResult::ErrorOnUpdate;
    }
    // A copy: the request's JSON object is gone once this call returns.
    Poco::JSON::Object::Ptr values(new Poco::JSON::Object(*data.orgJsonObj));

    if (service == AUDIO)
    {
        DBData::XObject object{DBData::Element::Ptr()};
        object.setId(DBData::UUID(uuidOf(xobject)));
        const OperationResult::Enum result = m_cache->updateCacheXObjectWithJSON(
            DataLayer::JSONProcessingContext::InputContext_IPC, service, resource, object, values);
        if (OperationResult::isFailure(result))
        {
            LOG_WARNING("Audio library could not store " << address);
            return OperationResult::ErrorOnUpdate;
        }
        return OperationResult::ObjectUpdated;
    }
    if (service == CABIN)
    {
        if (!m_worker.enqueueDataMessage(
                new ControllerConfirmation(*m_vehicle, service, resource, uuidOf(xobject), values),
                Util::MESSAGE_PRIO_NORMAL))
        {
            LOG_WARNING("Controller cannot be reached for " << address);
            return OperationResult::ServiceErrorOnUpdate;
        }
        return OperationResult::ObjectProcessed;
    }
    LOG_WARNING("No part of the vehicle owns " << address);
    return OperationResult::ErrorOnUpdate;
}

OperationResult::Enum ExampleDataHandler::beforeDeleteObject(const std::string& service,
                                                             const std::string& resource,
                                                             const Mapping::XObject& xobject)
{
    if (service == AUDIO && resource == PLAYLISTS)
    {
        return OperationResult::ObjectUpdated;
    }
    LOG_WARNING("Cannot delete " << addressOf(service, resource, xobject) << ": only playlists are deleted");
    return OperationResult::ErrorOnUpdate;
}

void ExampleDataHandler::afterDeleteObject(const std::string&, const std::string&, const Mapping::XObject&)
{
    // Nothing else holds the playlist.
}

OperationResult::Enum ExampleDataHandler::beforeDeleteAttributes(const std::string& service,
                                                                 const std::string& resource,
                                                                 const Mapping::XObject& xobject,
                                                                 const std::vector<std::string>&)
{
    LOG_WARNING("Cannot clear attributes of " << addressOf(service, resource, xobject));
    return OperationResult::ErrorOnUpdate;
}

void ExampleDataHandler::afterDeleteAttributes(const std::string&, const std::string&,
                                               const Mapping::XObject&, const std::vector<std::string>&)
{
}

} // namespace Orvi::Example
