#include "ExampleDataHandler.h"
#include "ExampleHandlerFactory.h"
#include "ExampleOptions.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Logging/Log.h"
#include "Logging/LogStream.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Mapping/MappingServiceSubscrTrigger.h"
#include "Message/MessageSync.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "SubscriptionHandling/SubscriptionLimits.h"
#include "SubscriptionHandling/SubscriptionService.h"
#include "VehicleLink.h"
#include "VehicleSimulation.h"

#include <Poco/AutoPtr.h>
#include <Poco/ConsoleChannel.h>
#include <Poco/Exception.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/Net/HTTPServer.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/PatternFormatter.h>
#include <Poco/ThreadPool.h>
#include <Poco/Timespan.h>
#include <Poco/Timestamp.h>

#include <csignal>
#include <iostream>
#include <memory>
#include <pthread.h>
#include <string>
#include <vector>

namespace
{

using Orvi::Example::ExampleOptions;

constexpr int EXIT_USAGE = 64;

// Worker queue and server pool are sized together: every busy server thread holds one waiting message,
// so the queue counts as full only well above the number of threads.
constexpr std::size_t CRITICAL_QUEUE_SIZE = 64;
constexpr int MAX_SERVER_THREADS = 16;
constexpr int MAX_QUEUED_CONNECTIONS = 64;
constexpr int KEEP_ALIVE_SECONDS = 5;
constexpr int MAX_KEEP_ALIVE_REQUESTS = 100;
constexpr std::size_t MAX_SUBSCRIBERS = 1000;

void configureLogging(const std::string& level)
{
    Poco::AutoPtr<Poco::PatternFormatter> formatter(new Poco::PatternFormatter("%t"));
    Poco::AutoPtr<Poco::FormattingChannel> channel(
        new Poco::FormattingChannel(formatter, new Poco::ConsoleChannel));
    Logging::Log::Logger().setChannel(channel);
    Logging::Log::SetLogLevel(static_cast<Poco::Message::Priority>(Poco::Logger::parseLevel(level)), "");
}

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

int serve(const ExampleOptions& options, const sigset_t& stopSignals)
{
    Orvi::DBData::ServiceMap services;
    Orvi::Loader::SchemaLoader().loadFiles(options.definitions, services);

    Poco::Net::ServerSocket socket(Poco::Net::SocketAddress("127.0.0.1", options.port));
    const Poco::UInt16 port = socket.address().port();
    // A service is answered only on its own port, so every service lives on the one we listen on.
    for (auto& entry : services)
    {
        entry.second->setPort(port);
    }

    // The handler comes first: the cache is built on it, and it delivers values back into the cache.
    Orvi::Util::MessageSync worker(CRITICAL_QUEUE_SIZE);
    Orvi::Example::ExampleDataHandler dataHandler(worker);
    Orvi::Mapping::MappingServiceJSONDataCache cache(services, &dataHandler);
    Orvi::Mapping::MappingServiceSubscrTrigger trigger(worker, &cache);
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
    worker.start();
    Orvi::Example::VehicleSimulation simulation(worker, vehicle, bundled ? options.vehicleRate : 0);

    Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
    params->setMaxThreads(MAX_SERVER_THREADS);
    params->setMaxQueued(MAX_QUEUED_CONNECTIONS);
    params->setKeepAlive(true);
    params->setKeepAliveTimeout(Poco::Timespan(KEEP_ALIVE_SECONDS, 0));
    params->setMaxKeepAliveRequests(MAX_KEEP_ALIVE_REQUESTS);
    Poco::ThreadPool pool(2, MAX_SERVER_THREADS);
    // Subscribers are served on the service's own threads; it goes before the worker, which it may wait for.
    auto subscriptions = std::make_unique<Orvi::Service::SubscriptionService>(
        trigger, Orvi::Service::SubscriptionLimits(MAX_SUBSCRIBERS));
    Poco::Net::HTTPServer server(
        new Orvi::Example::ExampleHandlerFactory(worker, cache, trigger, subscriptions.get()), pool, socket,
        params);
    server.start();
    simulation.start();
    LOG_INFO("Listening on http://127.0.0.1:" << port << "/");

    int signal = 0;
    sigwait(&stopSignals, &signal);
    LOG_INFO("Stopping on signal " << signal);
    simulation.stop();
    server.stopAll(true);
    pool.joinAll();
    subscriptions.reset();
    worker.stop();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    ExampleOptions options;
    try
    {
        options = ExampleOptions::parse(arguments,
                                        {std::string(SERVICEDB_EXAMPLE_DEFINITIONS_DIR) + "/cabin.json",
                                         std::string(SERVICEDB_EXAMPLE_DEFINITIONS_DIR) + "/audio.json"});
    }
    catch (const Poco::Exception& e)
    {
        std::cerr << "servicedb-example: " << e.message() << "\n" << ExampleOptions::usage();
        return EXIT_USAGE;
    }
    if (options.help)
    {
        std::cout << ExampleOptions::usage();
        return 0;
    }

    // Blocked before any thread starts, so that every thread inherits the mask and only sigwait sees them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    configureLogging(options.logLevel);
    try
    {
        return serve(options, stopSignals);
    }
    catch (const Poco::Exception& e)
    {
        std::cerr << "servicedb-example: " << e.displayText() << "\n";
        return 1;
    }
}
