#include "ExampleHandlerFactory.h"

#include "ExampleHandler.h"

namespace Orvi::Example
{

ExampleHandlerFactory::ExampleHandlerFactory(Util::MessageSync& worker,
                                             Mapping::MappingServiceJSONDataCache& cache,
                                             const Service::SubscriptionTrigger& trigger)
    : m_worker(worker)
    , m_cache(cache)
    , m_trigger(trigger)
{
}

Poco::Net::HTTPRequestHandler*
ExampleHandlerFactory::createRequestHandler(const Poco::Net::HTTPServerRequest&)
{
    return new ExampleHandler(m_worker, m_cache, m_trigger);
}

} // namespace Orvi::Example
