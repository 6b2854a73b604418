#pragma once

#include "HttpRequestHandlerBase.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "SubscriptionHandling/SubscriptionService.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <Poco/Net/HTTPRequestHandlerFactory.h>

namespace Orvi::Example
{

/// Gives the server one ExampleHandler per exchange, and hands WebSocket upgrades on any path to the
/// subscription service.
class ExampleHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    ExampleHandlerFactory(Util::MessageSync& worker, Mapping::MappingServiceJSONDataCache& cache,
                          const Service::SubscriptionTrigger& trigger,
                          Service::SubscriptionService* subscriptions = nullptr);
    /// All must outlive the factory and its handlers. Without a subscription service an upgrade request
    /// is answered as any GET.

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest& request) override;

protected:
    virtual HttpRequestHandlerBase* createStoreHandler(Util::MessageSync& worker,
                                                       Mapping::MappingServiceJSONDataCache& cache,
                                                       const Service::SubscriptionTrigger& trigger) const;
    /// The handler of an exchange that is no upgrade: an ExampleHandler.

private:
    Util::MessageSync& m_worker;
    Mapping::MappingServiceJSONDataCache& m_cache;
    const Service::SubscriptionTrigger& m_trigger;
    Service::SubscriptionService* m_subscriptions;
};

} // namespace Orvi::Example
