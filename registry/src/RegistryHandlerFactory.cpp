#include "RegistryHandlerFactory.h"

#include "RegistryHandler.h"

namespace Orvi::Registry
{

HttpRequestHandlerBase*
RegistryHandlerFactory::createStoreHandler(Util::MessageSync& worker,
                                           Mapping::MappingServiceJSONDataCache& cache,
                                           const Service::SubscriptionTrigger& trigger) const
{
    return new RegistryHandler(worker, cache, trigger);
}

} // namespace Orvi::Registry
