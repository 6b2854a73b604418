#include "ExampleHandlerFactory.h"

#include "ExampleHandler.h"
#include "Explorer/ExplorerRequestHandler.h"
#include "SubscriptionHandling/SubscriptionRequestHandler.h"

namespace Orvi::Example
{

ExampleHandlerFactory::ExampleHandlerFactory(Util::MessageSync& worker,
                                             Mapping::MappingServiceJSONDataCache& cache,
                                             const Service::SubscriptionTrigger& trigger,
                                             Service::SubscriptionService* subscriptions)
    : m_worker(worker)
    , m_cache(cache)
    , m_trigger(trigger)
    , m_subscriptions(subscriptions)
{
}

Poco::Net::HTTPRequestHandler*
ExampleHandlerFactory::createRequestHandler(const Poco::Net::HTTPServerRequest& request)
{
    if (m_subscriptions != nullptr && Service::SubscriptionRequestHandler::isUpgradeRequest(request))
    {
        return new Service::SubscriptionRequestHandler(*m_subscriptions);
    }
    if (Explorer::ExplorerRequestHandler::isExplorerRequest(request))
    {
        return new Explorer::ExplorerRequestHandler;
    }
    return createStoreHandler(m_worker, m_cache, m_trigger);
}

HttpRequestHandlerBase*
ExampleHandlerFactory::createStoreHandler(Util::MessageSync& worker,
                                          Mapping::MappingServiceJSONDataCache& cache,
                                          const Service::SubscriptionTrigger& trigger) const
{
    return new ExampleHandler(worker, cache, trigger);
}

} // namespace Orvi::Example
