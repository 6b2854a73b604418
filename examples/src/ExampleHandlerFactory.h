#pragma once

#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <Poco/Net/HTTPRequestHandlerFactory.h>

namespace Orvi::Example
{

/// Gives the server one ExampleHandler per exchange.
class ExampleHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    ExampleHandlerFactory(Util::MessageSync& worker, Mapping::MappingServiceJSONDataCache& cache,
                          const Service::SubscriptionTrigger& trigger);
    /// All three must outlive the factory and its handlers.

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest& request) override;

private:
    Util::MessageSync& m_worker;
    Mapping::MappingServiceJSONDataCache& m_cache;
    const Service::SubscriptionTrigger& m_trigger;
};

} // namespace Orvi::Example
