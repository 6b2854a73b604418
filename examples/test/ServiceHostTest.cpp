#include "ServiceHost.h"

#include "ExampleDataHandler.h"
#include "ExampleHandlerFactory.h"
#include "ExampleOptions.h"
#include "HttpClient.h"
#include "Logging/Log.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "RecordingTrigger.h"
#include "SchemaLoader/SchemaLoader.h"
#include "TestSupport/LogCapture.h"
#include "WorkerBarrier.h"

#include <Poco/Event.h>
#include <Poco/Exception.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Net/WebSocket.h>

#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <pthread.h>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

using Orvi::Example::ExampleOptions;
using Orvi::Example::ServiceHost;
using Strings = std::vector<std::string>;

const std::string DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;
constexpr long TIME_LIMIT_MS = 5000;

ExampleOptions parseWithoutDefinitions(const Strings& arguments)
{
    return ExampleOptions::parse(arguments, {});
}

/// A host blocks the stop signals of its thread for good, so every host of these tests runs on a thread
/// of its own and the test's thread stays as it was.
void onThreadOfItsOwn(const std::function<void()>& work)
{
    std::thread thread(work);
    thread.join();
}

// ---- serving ----

/// The example's store behind a host, served on a thread of its own until that thread gets SIGTERM.
class ServiceHostServing : public ::testing::Test
{
protected:
    ServiceHostServing()
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
    }

    ~ServiceHostServing() override { stopHost(); }

    void startHost()
    {
        host = std::thread([this] { serve(); });
        EXPECT_TRUE(serving.tryWait(TIME_LIMIT_MS));
    }

    /// The signal goes to the host's thread alone, which blocks it and takes it in its wait.
    void stopHost()
    {
        if (host.joinable())
        {
            pthread_kill(host.native_handle(), SIGTERM);
            host.join();
        }
    }

    void serve()
    {
        try
        {
            ServiceHost sut;
            port = sut.listen(services, 0);
            Orvi::Example::ExampleDataHandler dataHandler(sut.worker());
            Orvi::Mapping::MappingServiceJSONDataCache cache(services, &dataHandler);
            sut.serve(
                trigger,
                [&](Orvi::Service::SubscriptionService* subscriptions)
                {
                    events.push_back(subscriptions != nullptr ? "factory with subscriptions"
                                                              : "factory alone");
                    return new Orvi::Example::ExampleHandlerFactory(sut.worker(), cache, trigger,
                                                                    subscriptions);
                },
                [&]
                {
                    events.push_back("serving");
                    serving.set();
                },
                [&] { events.push_back("stopping"); });
            events.push_back(ServiceDB::Example::Test::WorkerBarrier::passed(sut.worker())
                                 ? "worker runs"
                                 : "worker stopped");
        }
        catch (const Poco::Exception& e)
        {
            events.push_back("raised " + e.displayText());
            serving.set();
        }
    }

    Orvi::DBData::ServiceMap services;
    ServiceDB::Example::Test::RecordingTrigger trigger;
    Poco::Event serving;
    Poco::UInt16 port = 0;
    Strings events;
    std::thread host;
};

TEST_F(ServiceHostServing, GivesEveryServiceThePortThatTheSystemPicked)
{
    startHost();

    EXPECT_NE(port, 0);
    EXPECT_EQ(services.at("cabin")->getPort(), port);
    EXPECT_EQ(services.at("audio")->getPort(), port);
}

TEST_F(ServiceHostServing, AnswersHttpOnThePortListenedOnThroughTheFactoryMade)
{
    startHost();

    ServiceDB::Example::Test::Request request;
    request.method = Poco::Net::HTTPRequest::HTTP_GET;
    request.uri = "/audio/playlists";
    const ServiceDB::Example::Test::Answer answer = ServiceDB::Example::Test::exchangeWith(port, request);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"data\":[],\"status\":\"ok\"}");
}

TEST_F(ServiceHostServing, HandsAWebSocketUpgradeToItsSubscriptionService)
{
    startHost();
    Poco::Net::HTTPClientSession session("127.0.0.1", port);
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/", Poco::Net::HTTPRequest::HTTP_1_1);
    Poco::Net::HTTPResponse response;

    Poco::Net::WebSocket client(session, request, response);

    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_SWITCHING_PROTOCOLS);
}

TEST_F(ServiceHostServing, AnswersEveryOneOfFiveHundredConnectionsOpenedAtOnceWith200Or503)
{
    startHost();
    std::vector<Poco::Net::StreamSocket> clients(500);
    for (Poco::Net::StreamSocket& client : clients)
    {
        client.connect(Poco::Net::SocketAddress("127.0.0.1", port));
        client.setReceiveTimeout(Poco::Timespan(30, 0));
    }
    const std::string request =
        "GET /audio/playlists HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";

    std::map<std::string, int> statusLines;
    for (Poco::Net::StreamSocket& client : clients)
    {
        client.sendBytes(request.data(), static_cast<int>(request.size()));
    }
    for (Poco::Net::StreamSocket& client : clients)
    {
        std::string answer;
        char buffer[4096];
        int length = 0;
        while ((length = client.receiveBytes(buffer, sizeof buffer)) > 0)
        {
            answer.append(buffer, static_cast<std::size_t>(length));
        }
        ++statusLines[answer.substr(0, answer.find("\r\n"))];
    }

    statusLines.erase("HTTP/1.1 200 OK");
    statusLines.erase("HTTP/1.1 503 Service Unavailable");
    EXPECT_EQ(statusLines, (std::map<std::string, int>{}));
}

TEST_F(ServiceHostServing, ServesUntilSigtermAndThenStopsItsWorker)
{
    startHost();

    stopHost();

    EXPECT_EQ(events, (Strings{"factory with subscriptions", "serving", "stopping", "worker stopped"}));
}

// ---- the process ----

TEST(ServiceHost, AnswersHelpWithTheUsageAndZeroWithoutServing)
{
    std::ostringstream out;
    std::ostringstream err;
    bool served = false;

    const int sut = ServiceHost::main<ExampleOptions>(
        "servicedb-example", {"--help"}, parseWithoutDefinitions,
        [&](const ExampleOptions&, ServiceHost&) { served = true; }, out, err);

    EXPECT_EQ(sut, 0);
    EXPECT_EQ(out.str(), ExampleOptions::usage());
    EXPECT_EQ(err.str(), "");
    EXPECT_FALSE(served);
}

TEST(ServiceHost, AnswersAFaultyCommandLineWithTheFaultAndTheUsage)
{
    std::ostringstream out;
    std::ostringstream err;
    bool served = false;

    const int sut = ServiceHost::main<ExampleOptions>(
        "servicedb-example", {"--verbose"}, parseWithoutDefinitions,
        [&](const ExampleOptions&, ServiceHost&) { served = true; }, out, err);

    EXPECT_EQ(sut, 64);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str(), "servicedb-example: unknown option \"--verbose\"\n" + ExampleOptions::usage());
    EXPECT_FALSE(served);
}

TEST(ServiceHost, ServesWithTheOptionsParsedAtTheirLogLevelAndAnswersZeroOnceServingEnds)
{
    const ServiceDB::Test::LogCapture restoresTheLog;
    std::ostringstream out;
    std::ostringstream err;
    Poco::UInt16 port = 0;
    Poco::Message::Priority level = Poco::Message::PRIO_TRACE;
    int sut = -1;

    onThreadOfItsOwn(
        [&]
        {
            sut = ServiceHost::main<ExampleOptions>(
                "servicedb-example", {"--port", "9090", "--log-level", "error"}, parseWithoutDefinitions,
                [&](const ExampleOptions& options, ServiceHost&)
                {
                    port = options.port;
                    level = Logging::Log::GetLogLevel();
                },
                out, err);
        });

    EXPECT_EQ(sut, 0);
    EXPECT_EQ(port, 9090);
    EXPECT_EQ(level, Poco::Message::PRIO_ERROR);
    EXPECT_EQ(out.str() + err.str(), "");
}

TEST(ServiceHost, AnswersAFailureToServeWithALineAndOne)
{
    const ServiceDB::Test::LogCapture restoresTheLog;
    std::ostringstream out;
    std::ostringstream err;
    int sut = -1;

    onThreadOfItsOwn(
        [&]
        {
            sut = ServiceHost::main<ExampleOptions>(
                "servicedb-example", {}, parseWithoutDefinitions,
                [](const ExampleOptions&, ServiceHost&) { throw Poco::FileNotFoundException("cabin.json"); },
                out, err);
        });

    EXPECT_EQ(sut, 1);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str(), "servicedb-example: File not found: cabin.json\n");
}

} // namespace
