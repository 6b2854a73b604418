#include "ExampleHandlerFactory.h"

#include "ExampleHandler.h"

namespace Orvi::Example
{

ExampleHandlerFactory::ExampleHandlerFactory(Util::MessageSync& worker,
                                             Mapping::MappingServiceJSONDataCache& cache)
    : m_worker(worker)
    , m_cache(cache)
{
}

Poco::Net::HTTPRequestHandler*
ExampleHandlerFactory::createRequestHandler(const Poco::Net::HTTPServerRequest&)
{
    return new ExampleHandler(m_worker, m_cache);
}

} // namespace Orvi::Example
