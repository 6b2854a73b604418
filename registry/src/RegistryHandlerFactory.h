#pragma once

#include "ExampleHandlerFactory.h"

namespace Orvi::Registry
{

/// Gives the server one RegistryHandler per exchange, and hands WebSocket upgrades on any path to the
/// subscription service, as the example's factory does.
class RegistryHandlerFactory : public Example::ExampleHandlerFactory
{
public:
    using Example::ExampleHandlerFactory::ExampleHandlerFactory;

protected:
    HttpRequestHandlerBase* createStoreHandler(Util::MessageSync& worker,
                                               Mapping::MappingServiceJSONDataCache& cache,
                                               const Service::SubscriptionTrigger& trigger) const override;
};

} // namespace Orvi::Registry
