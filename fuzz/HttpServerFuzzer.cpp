// The whole HTTP front end: raw bytes written into a real connection to 127.0.0.1, served by the example's
// handler over its definitions and a small sample data set. One server serves the whole fuzzing process.
#include "ExampleDataHandler.h"
#include "ExampleHandlerFactory.h"
#include "Http/HttpServer.h"
#include "Logging/Log.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Mapping/MappingServiceSubscrTrigger.h"
#include "Message/MessageSync.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "SubscriptionHandling/SubscriptionService.h"
#include "VehicleLink.h"

#include <Poco/AutoPtr.h>
#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/NullChannel.h>
#include <Poco/ThreadPool.h>
#include <Poco/Timespan.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace
{

const std::string DEFINITIONS = FUZZ_EXAMPLE_DEFINITIONS_DIR;
constexpr std::size_t TRACKS = 12;
// Far above any honest answer of this small store; scripts/fuzz.sh gives libFuzzer's own -timeout more.
const Poco::Timespan ANSWER_TIMEOUT(10, 0);

// Starts serving the factory's handlers on the socket, as the example does. The one place that knows the
// server class.
std::unique_ptr<Orvi::Net::HttpServer> startServer(Poco::Net::HTTPRequestHandlerFactory* factory,
                                                   const Poco::Net::ServerSocket& socket)
{
    Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
    params->setMaxThreads(4);
    params->setKeepAlive(true);
    auto server =
        std::make_unique<Orvi::Net::HttpServer>(factory, Poco::ThreadPool::defaultPool(), socket, params);
    server->start();
    return server;
}

// The example as its main() puts it together, on a port the system picks. It lives as long as the fuzzing
// process and stops in the order of the example's own host.
struct Example
{
    Example()
        : worker(64)
        , dataHandler(worker)
        , cache(services, &dataHandler)
        , trigger(worker, &cache)
        , vehicle(cache, &trigger)
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
        socket.bind(Poco::Net::SocketAddress("127.0.0.1", 0), true);
        socket.listen();
        port = socket.address().port();
        for (auto& entry : services)
        {
            entry.second->setPort(port);
        }
        dataHandler.attach(cache, vehicle);
        Orvi::Example::SampleData data(cache);
        data.fillCabin();
        data.fillAudio(TRACKS);
        vehicle.connect();
        subscriptions = std::make_unique<Orvi::Service::SubscriptionService>(trigger);
        worker.start();
        server = startServer(
            new Orvi::Example::ExampleHandlerFactory(worker, cache, trigger, subscriptions.get()), socket);
    }

    ~Example()
    {
        server->stopAll(true);
        server.reset();
        subscriptions.reset();
        worker.stop();
    }

    Example(const Example&) = delete;
    Example& operator=(const Example&) = delete;

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Example::ExampleDataHandler dataHandler;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    Orvi::Mapping::MappingServiceSubscrTrigger trigger;
    Orvi::Example::VehicleLink vehicle;
    std::unique_ptr<Orvi::Service::SubscriptionService> subscriptions;
    Poco::Net::ServerSocket socket;
    Poco::UInt16 port = 0;
    std::unique_ptr<Orvi::Net::HttpServer> server;
};

// Writes the bytes, half-closes, and reads until the server closes: so every request in them is answered
// and the connection ends however the server took them.
std::string sendAndReceive(Poco::UInt16 port, const std::string& bytes)
{
    Poco::Net::StreamSocket socket;
    socket.connect(Poco::Net::SocketAddress("127.0.0.1", port), ANSWER_TIMEOUT);
    socket.setSendTimeout(ANSWER_TIMEOUT);
    socket.setReceiveTimeout(ANSWER_TIMEOUT);
    std::string answer;
    try
    {
        for (std::size_t sent = 0; sent < bytes.size();)
        {
            sent += static_cast<std::size_t>(
                socket.sendBytes(bytes.data() + sent, static_cast<int>(bytes.size() - sent)));
        }
        socket.shutdownSend();
        char buffer[4096];
        for (int got = socket.receiveBytes(buffer, sizeof buffer); got > 0;
             got = socket.receiveBytes(buffer, sizeof buffer))
        {
            answer.append(buffer, static_cast<std::size_t>(got));
        }
    }
    catch (const Poco::TimeoutException&)
    {
        std::fprintf(stderr, "HttpServerFuzzer: no answer within %d s; the server hangs\n",
                     static_cast<int>(ANSWER_TIMEOUT.totalSeconds()));
        std::abort();
    }
    catch (const Poco::Net::NetException&)
    {
        // The server may close before it has read everything, e.g. after refusing a request.
    }
    return answer;
}

// A request of the harness's own, on a connection that ends with its answer.
std::string ownRequest(const std::string& method, const std::string& target)
{
    return method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";
}

// The objects that the bytes created, by the Location of each 201: deleted again, so that the store keeps
// its size however long the fuzzer runs (PlaylistSweep catches those whose Location was lost).
void deleteCreated(Poco::UInt16 port, const std::string& answer)
{
    static const std::string LOCATION = "\r\nLocation: ";
    for (std::size_t at = answer.find(LOCATION); at != std::string::npos; at = answer.find(LOCATION, at + 1))
    {
        const std::size_t begin = at + LOCATION.size();
        const std::string path = answer.substr(begin, answer.find("\r\n", begin) - begin);
        if (!path.empty() && path.front() == '/')
        {
            sendAndReceive(port, ownRequest("DELETE", path));
        }
    }
}

// The body of an answer to a GET that the harness sends itself, or an empty string.
std::string bodyOf(const std::string& answer)
{
    const std::size_t begin = answer.find("\r\n\r\n");
    return begin == std::string::npos ? std::string() : answer.substr(begin + 4);
}

// Playlists are the objects a client may create. An answer that the server cut short with a reset may
// have lost the Location of one, so now and then every playlist but those of the sample data is deleted:
// a store that grew with the run would make each input slower than the one before.
class PlaylistSweep
{
public:
    static constexpr unsigned EVERY = 256;

    explicit PlaylistSweep(Poco::UInt16 port)
        : m_port(port)
    {
        for (std::string& uri : list())
        {
            m_samples.insert(std::move(uri));
        }
    }

    void afterInput()
    {
        if (++m_inputs % EVERY != 0)
        {
            return;
        }
        for (const std::string& uri : list())
        {
            if (m_samples.count(uri) == 0)
            {
                sendAndReceive(m_port, ownRequest("DELETE", uri));
            }
        }
    }

private:
    // The addresses of the first thousand playlists; an empty list has no paging and may have no data. An
    // answer that is not such a list skips the sweep: judging answers is not the sweep's business.
    std::vector<std::string> list() const
    {
        const std::string answer =
            sendAndReceive(m_port, ownRequest("GET", "/audio/playlists?$fields=uri&$limit=1000"));
        std::vector<std::string> uris;
        try
        {
            const Poco::JSON::Array::Ptr data = Poco::JSON::Parser()
                                                    .parse(bodyOf(answer))
                                                    .extract<Poco::JSON::Object::Ptr>()
                                                    ->getArray("data");
            for (std::size_t i = 0; !data.isNull() && i < data->size(); ++i)
            {
                uris.push_back(data->getObject(static_cast<unsigned>(i))->getValue<std::string>("uri"));
            }
        }
        catch (const Poco::Exception&)
        {
            uris.clear();
        }
        return uris;
    }

    Poco::UInt16 m_port;
    std::set<std::string> m_samples;
    unsigned m_inputs = 0;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // A peer that closes early must not end the process by a signal, on either side.
    std::signal(SIGPIPE, SIG_IGN);
    Logging::Log::Logger().setChannel(Poco::AutoPtr<Poco::Channel>(new Poco::NullChannel));
    Logging::Log::SetLogLevel(Poco::Message::PRIO_TRACE, "");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Example example;
    static PlaylistSweep sweep(example.port);
    const std::string answer =
        sendAndReceive(example.port, std::string(reinterpret_cast<const char*>(data), size));
    if (!answer.empty() && answer.compare(0, 7, "HTTP/1.") != 0)
    {
        std::fprintf(stderr, "HttpServerFuzzer: the answer does not open with a status line\n");
        std::abort();
    }
    deleteCreated(example.port, answer);
    sweep.afterInput();
    return 0;
}
