#include "BundledDefinitions.h"
#include "ExampleDataHandler.h"
#include "ExampleHandlerFactory.h"
#include "ExampleOptions.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Logging/LogStream.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Mapping/MappingServiceSubscrTrigger.h"
#include "OrviServiceRegistryRegistration.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "ServiceHost.h"
#include "ServiceRegistryConnection.h"
#include "SubscriptionHandling/SubscriptionService.h"
#include "VehicleLink.h"
#include "VehicleSimulation.h"

#include <Poco/Timestamp.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Example::ExampleOptions;
using Orvi::Example::ServiceHost;

void fillSampleData(Orvi::JSONDataCache::JSONDataCache& cache, const Orvi::DBData::ServiceMap& services,
                    std::size_t tracks)
{
    const Poco::Timestamp started;
    Orvi::Example::SampleData data(cache);
    if (services.count("cabin") != 0)
    {
        data.fillCabin();
    }
    if (services.count("audio") != 0)
    {
        const Orvi::Example::SampleData::Counts counts = data.fillAudio(tracks);
        LOG_INFO("Generated " << counts.tracks << " tracks, " << counts.albums << " albums, "
                              << counts.artists << " artists and " << counts.playlists << " playlists in "
                              << started.elapsed() / 1000 << " ms");
    }
}

ExampleOptions parseOptions(const std::vector<std::string>& arguments)
{
    const std::string definitions = Orvi::Example::BundledDefinitions::directory(
        SERVICEDB_EXAMPLE_INSTALLED_DEFINITIONS_DIR, SERVICEDB_EXAMPLE_DEFINITIONS_DIR);
    return ExampleOptions::parse(arguments, {definitions + "/cabin.json", definitions + "/audio.json"});
}

void serve(const ExampleOptions& options, ServiceHost& host)
{
    Orvi::DBData::ServiceMap services;
    Orvi::Loader::SchemaLoader().loadFiles(options.definitions, services);
    host.listen(services, options.port);

    // The handler comes first: the cache is built on it, and it delivers values back into the cache.
    Orvi::Example::ExampleDataHandler dataHandler(host.worker());
    Orvi::Mapping::MappingServiceJSONDataCache cache(services, &dataHandler);
    Orvi::Mapping::MappingServiceSubscrTrigger trigger(host.worker(), &cache);
    Orvi::Example::VehicleLink vehicle(cache, &trigger);
    dataHandler.attach(cache, vehicle);
    fillSampleData(cache, services, options.tracks);
    // The simulated vehicle knows the bundled services only.
    const bool bundled = services.count(Orvi::Example::ExampleDataHandler::CABIN) != 0 &&
                         services.count(Orvi::Example::ExampleDataHandler::AUDIO) != 0;
    if (bundled)
    {
        vehicle.connect();
    }
    Orvi::Example::VehicleSimulation simulation(host.worker(), vehicle, bundled ? options.vehicleRate : 0);

    // Registered before the worker runs, since the assigned ids are written into the store; the socket
    // listens already, so clients that find the services early wait for the server instead of failing.
    Orvi::Service::OrviServiceRegistryRegistration registration;
    if (!options.registryHost.empty())
    {
        Orvi::ServiceRegistryConnection::ADDRESS = options.registryHost;
        Orvi::ServiceRegistryConnection::PORT = options.registryPort;
        registration.setCache(cache);
        if (registration.registerServicesImpl())
        {
            LOG_INFO("Registered " << registration.getRegisteredServices().size() << " services at "
                                   << options.registryHost << ":" << options.registryPort);
        }
    }
    host.serve(
        trigger,
        [&](Orvi::Service::SubscriptionService* subscriptions)
        { return new Orvi::Example::ExampleHandlerFactory(host.worker(), cache, trigger, subscriptions); },
        [&] { simulation.start(); },
        [&]
        {
            simulation.stop();
            registration.unregisterServices();
        });
}

} // namespace

int main(int argc, char** argv)
{
    return ServiceHost::main<ExampleOptions>(
        "servicedb-example", std::vector<std::string>(argv + 1, argv + argc), parseOptions, serve);
}
