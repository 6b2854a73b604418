// Live updates end to end: values enter through executeMappingToDb on the worker, the subscription
// service fetches and fans them out, and N WebSocket clients on 127.0.0.1 receive them. Measures the
// delivered updates a second at full speed, and the latency from the call to the client's receipt at a
// fixed rate of changes.
//
// usage: servicedb-subscription-bench [--clients 1,100,1000] [--seconds S] [--rate CHANGES_PER_SECOND]

#include "Logging/Log.h"
#include "Mapping/DataHandler/ServiceDataHandlerOutputBaseImplDBData.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Mapping/MappingServiceSubscrTrigger.h"
#include "MappingServiceManager.h"
#include "Message/DataMessageBase.h"
#include "Message/MessageSync.h"
#include "SchemaLoader/SchemaLoader.h"
#include "SubscriptionHandling/SubscriptionLimits.h"
#include "SubscriptionHandling/SubscriptionRequestHandler.h"
#include "SubscriptionHandling/SubscriptionService.h"

#include <Poco/Buffer.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/HTTPServer.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/PollSet.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/WebSocket.h>
#include <Poco/NumberParser.h>
#include <Poco/StringTokenizer.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

const std::string DEFINITION = R"({
    "name": "bench",
    "description": "One sensor that changes as fast as it is told",
    "port": 8080,
    "versions": ["1.0.0"],
    "resources": {
        "sensors": {
            "description": "Sensors",
            "element": "sensor",
            "attributes": { "value": { "type": "integer" } },
            "access": { "resource": { "get": true }, "objects": { "get": true } }
        }
    }
})";

constexpr Poco::Int32 SENSOR_ID = 1;
constexpr std::size_t CRITICAL_QUEUE_SIZE = 256;
constexpr std::size_t READER_THREADS = 2;

/// Runs a function on the worker.
class Call : public Orvi::Util::DataMessageBase
{
public:
    explicit Call(std::function<void()> function)
        : m_function(std::move(function))
    {
    }

    void processData() override { m_function(); }

private:
    std::function<void()> m_function;
};

class UpgradeFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    explicit UpgradeFactory(Orvi::Service::SubscriptionService& service)
        : m_service(service)
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new Orvi::Service::SubscriptionRequestHandler(m_service);
    }

private:
    Orvi::Service::SubscriptionService& m_service;
};

/// The database side: schema, cache, worker, trigger, subscription service, HTTP server, and the
/// data handler bridge that the changes go through.
struct Database
{
    explicit Database(std::size_t clients)
        : worker(CRITICAL_QUEUE_SIZE)
        , cache(services, nullptr)
        , trigger(worker, &cache)
        , subscriptions(trigger, Orvi::Service::SubscriptionLimits(clients + 8))
        , socket(Poco::Net::SocketAddress("127.0.0.1", 0))
        , output(&cache, &trigger)
    {
        Orvi::Loader::SchemaLoader().loadText(DEFINITION, "bench.json", services);
        services.begin()->second->setPort(socket.address().port());
        output.setMappingServiceManager(&manager);
        Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
        params->setMaxThreads(4);
        server = std::make_unique<Poco::Net::HTTPServer>(new UpgradeFactory(subscriptions), socket, params);
        worker.start();
        server->start();
        change(0, true);
    }

    ~Database()
    {
        server->stopAll(true);
        server.reset();
    }

    /// Has the worker write the value through the bridge; waits for it when asked to.
    void change(long value, bool wait)
    {
        auto done = std::make_shared<std::promise<void>>();
        std::future<void> finished = done->get_future();
        worker.enqueueDataMessage(new Call(
                                      [this, value, done]
                                      {
                                          Poco::JSON::Object::Ptr values(new Poco::JSON::Object);
                                          values->set("value", value);
                                          std::string uuid;
                                          output.executeMappingToDb(SENSOR_ID, "bench", "sensors", 0, values,
                                                                    uuid);
                                          if (sensorUuid.empty())
                                          {
                                              sensorUuid = uuid;
                                          }
                                          done->set_value();
                                      }),
                                  Orvi::Util::MESSAGE_PRIO_NORMAL);
        if (wait)
        {
            finished.wait();
        }
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    Orvi::Mapping::MappingServiceSubscrTrigger trigger;
    Orvi::Service::SubscriptionService subscriptions;
    Poco::Net::ServerSocket socket;
    Orvi::Mapping::MappingServiceManager manager;
    Orvi::Mapping::DataHandler::ServiceDataHandlerOutputBaseImplDBData output;
    std::unique_ptr<Poco::Net::HTTPServer> server;
    std::string sensorUuid;
};

/// N subscribed WebSocket clients, read by a few threads that poll their sockets.
class Clients
{
public:
    Clients(std::size_t count, Poco::UInt16 port, const std::string& address)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            Poco::Net::HTTPClientSession session("127.0.0.1", port);
            Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/",
                                           Poco::Net::HTTPRequest::HTTP_1_1);
            Poco::Net::HTTPResponse response;
            m_sockets.emplace_back(session, request, response);
            const std::string subscribe = R"({"type":"subscribe","event":")" + address + R"("})";
            m_sockets.back().sendFrame(subscribe.data(), static_cast<int>(subscribe.size()));
        }
        // Each client's answer and first update, before anything is measured.
        for (Poco::Net::WebSocket& socket : m_sockets)
        {
            Poco::Buffer<char> buffer(0);
            int flags = 0;
            for (int i = 0; i < 2; ++i)
            {
                buffer.resize(0);
                socket.receiveFrame(buffer, flags);
            }
        }
    }

    ~Clients()
    {
        stop();
        for (Poco::Net::WebSocket& socket : m_sockets)
        {
            socket.shutdown();
            socket.close();
        }
    }

    /// Starts reading; each data message's "value" and time of receipt go to the latency sink when set.
    void start(std::function<void(long, Clock::time_point)> sink)
    {
        m_sink = std::move(sink);
        m_stopping = false;
        for (std::size_t t = 0; t < READER_THREADS; ++t)
        {
            m_readers.emplace_back([this, t] { read(t); });
        }
    }

    void stop()
    {
        m_stopping = true;
        for (std::thread& reader : m_readers)
        {
            reader.join();
        }
        m_readers.clear();
    }

    std::uint64_t received() const { return m_received.load(); }

private:
    void read(std::size_t part)
    {
        Poco::Net::PollSet pollSet;
        for (std::size_t i = part; i < m_sockets.size(); i += READER_THREADS)
        {
            pollSet.add(m_sockets[i], Poco::Net::PollSet::POLL_READ);
        }
        Poco::Buffer<char> buffer(0);
        while (!m_stopping)
        {
            for (auto& ready : pollSet.poll(Poco::Timespan(0, 100000)))
            {
                Poco::Net::WebSocket socket(ready.first);
                int flags = 0;
                buffer.resize(0);
                const int length = socket.receiveFrame(buffer, flags);
                const Clock::time_point now = Clock::now();
                if (length <= 0)
                {
                    pollSet.remove(ready.first);
                    continue;
                }
                ++m_received;
                if (m_sink)
                {
                    const std::string text(buffer.begin(), static_cast<std::size_t>(length));
                    const std::size_t at = text.find("\"value\":");
                    if (at != std::string::npos)
                    {
                        m_sink(std::strtol(text.c_str() + at + 8, nullptr, 10), now);
                    }
                }
            }
        }
    }

    std::vector<Poco::Net::WebSocket> m_sockets;
    std::vector<std::thread> m_readers;
    std::atomic<bool> m_stopping{false};
    std::atomic<std::uint64_t> m_received{0};
    std::function<void(long, Clock::time_point)> m_sink;
};

void throughput(std::size_t clientCount, double seconds)
{
    Database database(clientCount);
    Clients clients(clientCount, database.socket.address().port(), "/bench/sensors/" + database.sensorUuid);
    clients.start(nullptr);

    long value = 1;
    const Clock::time_point start = Clock::now();
    const Clock::time_point end =
        start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    while (Clock::now() < end)
    {
        if (database.worker.isCriticalQueueSizeReached())
        {
            std::this_thread::yield();
            continue;
        }
        database.change(value++, false);
    }
    database.change(value++, true);
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    const std::uint64_t delivered = clients.received();
    clients.stop();
    std::printf("| %zu | %.0f | %.0f | %llu |\n", clientCount, (value - 1) / elapsed, delivered / elapsed,
                static_cast<unsigned long long>(database.subscriptions.fetchCount()));
}

void latency(std::size_t clientCount, double seconds, std::size_t rate)
{
    Database database(clientCount);
    Clients clients(clientCount, database.socket.address().port(), "/bench/sensors/" + database.sensorUuid);
    const std::size_t changes = static_cast<std::size_t>(seconds * static_cast<double>(rate));
    std::vector<Clock::time_point> sent(changes + 2);
    std::vector<double> latencies;
    std::mutex latencyMutex;
    latencies.reserve(changes * clientCount);
    clients.start(
        [&](long value, Clock::time_point received)
        {
            if (value <= 0 || static_cast<std::size_t>(value) >= sent.size())
            {
                return;
            }
            const double microseconds =
                std::chrono::duration<double, std::micro>(received - sent[value]).count();
            const std::lock_guard<std::mutex> lock(latencyMutex);
            latencies.push_back(microseconds);
        });

    const auto period = std::chrono::nanoseconds(std::chrono::seconds(1)) / rate;
    Clock::time_point next = Clock::now();
    for (std::size_t i = 1; i <= changes; ++i)
    {
        std::this_thread::sleep_until(next);
        next += period;
        sent[i] = Clock::now();
        database.change(static_cast<long>(i), false);
    }
    database.change(0, true);
    // The last updates are still on their way.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    clients.stop();

    std::sort(latencies.begin(), latencies.end());
    const auto percentile = [&](double p)
    {
        return latencies.empty()
                   ? 0.0
                   : latencies[static_cast<std::size_t>(p * static_cast<double>(latencies.size() - 1))];
    };
    std::printf("| %zu | %zu | %zu | %.0f | %.0f | %.0f |\n", clientCount, rate, latencies.size(),
                percentile(0.5), percentile(0.99), latencies.empty() ? 0.0 : latencies.back());
}

std::vector<std::size_t> numbers(const std::string& text)
{
    std::vector<std::size_t> result;
    for (const std::string& token : Poco::StringTokenizer(text, ",", Poco::StringTokenizer::TOK_TRIM))
    {
        result.push_back(static_cast<std::size_t>(Poco::NumberParser::parseUnsigned64(token)));
    }
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::size_t> clientCounts{1, 100, 1000};
    double seconds = 5;
    std::size_t rate = 1000;
    for (int i = 1; i + 1 < argc; i += 2)
    {
        const std::string option = argv[i];
        if (option == "--clients")
        {
            clientCounts = numbers(argv[i + 1]);
        }
        else if (option == "--seconds")
        {
            seconds = Poco::NumberParser::parseFloat(argv[i + 1]);
        }
        else if (option == "--rate")
        {
            rate = static_cast<std::size_t>(Poco::NumberParser::parseUnsigned64(argv[i + 1]));
        }
    }
    Logging::Log::SetLogLevel(Poco::Message::PRIO_WARNING, "");

    std::printf("Changes at full speed\n\n| clients | changes/s | delivered updates/s | fetches "
                "|\n|---|---|---|---|\n");
    for (const std::size_t clients : clientCounts)
    {
        throughput(clients, seconds);
    }
    std::printf(
        "\nLatency from executeMappingToDb to the client's receipt\n\n"
        "| clients | changes/s | updates received | p50 µs | p99 µs | max µs |\n|---|---|---|---|---|---|\n");
    for (const std::size_t clients : clientCounts)
    {
        latency(clients, seconds, rate);
    }
    return 0;
}
