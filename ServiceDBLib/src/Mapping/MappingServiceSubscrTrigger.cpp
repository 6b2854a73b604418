#include "Mapping/MappingServiceSubscrTrigger.h"

#include "DataMessages/RSISubscriptionUpdateMessage.h"
#include "DataMessages/RSISubscriptionVerifyMessage.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/LogStream.h"
#include "Message/MessagePriority.h"
#include "SubscriptionHandling/SubscriptionError.h"

#include <Poco/Net/HTTPResponse.h>
#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>
#include <Poco/Thread.h>
#include <Poco/URI.h>

namespace Orvi::Mapping
{

using Cache = ::Orvi::JSONDataCache::JSONDataCache;

MappingServiceSubscrTrigger::MappingServiceSubscrTrigger(Util::MessageSync& messageSync, Cache* cache)
    : m_messageSync(messageSync)
    , m_cache(cache)
{
}

MappingServiceSubscrTrigger::~MappingServiceSubscrTrigger() = default;

Cache* MappingServiceSubscrTrigger::getDataCache() const
{
    return m_cache;
}

bool MappingServiceSubscrTrigger::fetchData(const Service::SubscriptionRequest& request,
                                            Command::WebSocketResponseObject& response) const
{
    Cache* cache = getDataCache();
    if (cache == nullptr)
    {
        LOG_ERROR("JSONDataCache subsystem not found.");
        return false;
    }

    // The worker must not queue to itself: it would wait for a message that only it can run.
    if (Poco::Thread::currentTid() == m_messageSync.getWorkerTID())
    {
        LOG_TRACE("fetchData with direct access");
        return fetchDataSync(*cache, request, response);
    }

    LOG_TRACE("fetchData using EventQueue");
    Poco::SharedPtr<Poco::SynchronizedObject> event(new Poco::SynchronizedObject);
    RSISubscriptionUpdateMessage::Parameter params(*cache, request, response);
    auto* message = new RSISubscriptionUpdateMessage(params, event);
    if (!m_messageSync.enqueueDataMessage(message, Util::MESSAGE_PRIO_NORMAL))
    {
        LOG_WARNING("fetchData"
                    << " Could not enqueue message!");
        return false;
    }
    // No time limit: the message refers to params and to the caller's request and response.
    event->wait();
    return params.result;
}

bool MappingServiceSubscrTrigger::fetchDataSync(Cache& cache, const Service::SubscriptionRequest& request,
                                                Command::WebSocketResponseObject& response)
{
    const Command::HTTPStatus status = cache.queryCache(request, response, request.address().port());
    if (status == Poco::Net::HTTPResponse::HTTP_OK)
    {
        return true;
    }
    // A subscribed object that was deleted is news for the subscriber, not a failure.
    if (request.getUrlPath().getCharacteristic() == Command::UrlPath::SERVICE_RESOURCE_OBJECT &&
        status == Poco::Net::HTTPResponse::HTTP_NOT_FOUND)
    {
        response.setError(Poco::Net::HTTPResponse::HTTP_GONE, "element has gone");
        return true;
    }
    LOG_ERROR("Cache query returned: " << Poco::Net::HTTPResponse::getReasonForStatus(status));
    return false;
}

void MappingServiceSubscrTrigger::checkNewSubscription(Service::SubscriptionSubscribingEventPayload& payload)
{
    Cache* cache = getDataCache();
    if (cache == nullptr)
    {
        LOG_ERROR("JSONDataCache subsystem not found.");
        payload.request.cancel(Service::SubscriptionError::maximum_number_of_event_subscriptions_reached,
                               "internal server error");
        return;
    }

    const Command::UrlPath urlPath(Poco::URI(payload.request.getUri()));
    if (!verifySubscriptionDest(*cache, urlPath))
    {
        payload.request.cancel(Service::SubscriptionError::event_name_unknown,
                               "No such target for this port.");
    }
}

bool MappingServiceSubscrTrigger::verifySubscriptionDest(Cache& cache, const Command::UrlPath& urlPath) const
{
    if (Poco::Thread::currentTid() == m_messageSync.getWorkerTID())
    {
        LOG_TRACE("verifyObjectExists with direct access");
        return verifySubscriptionDestSync(cache, urlPath);
    }

    LOG_TRACE("verifyObjectExists using EventQueue");
    Poco::SharedPtr<Poco::SynchronizedObject> event(new Poco::SynchronizedObject);
    bool result = false;
    auto* message = new RSISubscriptionVerifyMessage(cache, urlPath, event, result);
    // Ahead of data fetches, so that a new subscriber learns soon whether it is accepted.
    if (!m_messageSync.enqueueDataMessage(message, Util::MESSAGE_PRIO_HIGH))
    {
        LOG_WARNING("verifySubscriptionDest"
                    << " Could not enqueue message!");
        return false;
    }
    event->wait();
    return result;
}

bool MappingServiceSubscrTrigger::verifySubscriptionDestSync(Cache& cache, const Command::UrlPath& urlPath)
{
    // A scratch service: selecting a resource fills the service behind it.
    DBData::Service service;
    if (!cache.selectService(urlPath.getService(), service))
    {
        return false;
    }

    switch (urlPath.getCharacteristic())
    {
    case Command::UrlPath::SERVICE:
        return true;
    case Command::UrlPath::SERVICE_RESOURCE:
    {
        DBData::Resource resourceObject(service);
        return cache.selectResource(urlPath.getService(), urlPath.getResource(), resourceObject, false);
    }
    case Command::UrlPath::SERVICE_RESOURCE_OBJECT:
    {
        DBData::XObject object{DBData::Element::Ptr()};
        return cache.selectXObjectByUUID(urlPath.getService(), urlPath.getResource(), urlPath.getElement(),
                                         object, 0, false);
    }
    default:
        return false;
    }
}

} // namespace Orvi::Mapping
