#include "BundledDefinitions.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Mapping/MappingServiceSubscrTrigger.h"
#include "RegistryDataHandler.h"
#include "RegistryHandlerFactory.h"
#include "RegistryOptions.h"
#include "SchemaLoader/SchemaLoader.h"
#include "ServiceHost.h"
#include "SubscriptionHandling/SubscriptionService.h"

#include <string>
#include <vector>

namespace
{

using Orvi::Example::ServiceHost;
using Orvi::Registry::RegistryOptions;

void serve(const RegistryOptions& options, ServiceHost& host)
{
    Orvi::DBData::ServiceMap services;
    const std::string definitions = Orvi::Example::BundledDefinitions::directory(
        SERVICEDB_REGISTRY_INSTALLED_DEFINITIONS_DIR, SERVICEDB_REGISTRY_DEFINITIONS_DIR);
    Orvi::Loader::SchemaLoader().loadFile(definitions + "/registry.json", services);
    host.listen(services, options.port);

    // The handler comes first: the cache is built on it, and it stores posted values into the cache.
    Orvi::Registry::RegistryDataHandler dataHandler;
    Orvi::Mapping::MappingServiceJSONDataCache cache(services, &dataHandler);
    dataHandler.attach(cache);
    Orvi::Mapping::MappingServiceSubscrTrigger trigger(host.worker(), &cache);
    host.serve(
        trigger, [&](Orvi::Service::SubscriptionService* subscriptions)
        { return new Orvi::Registry::RegistryHandlerFactory(host.worker(), cache, trigger, subscriptions); });
}

} // namespace

int main(int argc, char** argv)
{
    return ServiceHost::main<RegistryOptions>(
        "servicedb-registry", std::vector<std::string>(argv + 1, argv + argc), RegistryOptions::parse, serve);
}
