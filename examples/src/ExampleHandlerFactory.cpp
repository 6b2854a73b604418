#include "ExampleHandlerFactory.h"

#include "ExampleHandler.h"
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
    return new ExampleHandler(m_worker, m_cache, m_trigger);
}

} // namespace Orvi::Example
