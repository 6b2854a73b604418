#include "ExampleHandlerFactory.h"

#include "ExampleDataHandler.h"
#include "HttpClient.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Mapping/MappingServiceSubscrTrigger.h"
#include "Message/MessageSync.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "SubscriptionHandling/SubscriptionService.h"
#include "TestSupport/LocalHttpServer.h"
#include "VehicleLink.h"
#include "VehicleStep.h"
#include "WorkerBarrier.h"

#include <Poco/Buffer.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/WebSocket.h>
#include <Poco/RegularExpression.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace
{

using Orvi::Example::SampleData;
using Poco::Net::HTTPRequest;
using ServiceDB::Example::Test::WorkerBarrier;

const std::string DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;
const Poco::Timespan TIME_LIMIT(5, 0);

// The example as main() builds it, with the subscription service behind the same port as HTTP.
class ExampleHandlerFactoryLive : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 16;
    static constexpr std::size_t TRACKS = 12;

    ExampleHandlerFactoryLive()
        : worker(CRITICAL_QUEUE_SIZE)
        , dataHandler(worker)
        , cache(services, &dataHandler)
        , trigger(worker, &cache)
        , vehicle(cache, &trigger)
        , subscriptions(trigger)
        , server(new Orvi::Example::ExampleHandlerFactory(worker, cache, trigger, &subscriptions))
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
        for (auto& entry : services)
        {
            entry.second->setPort(server.port());
        }
        dataHandler.attach(cache, vehicle);
        SampleData data(cache);
        data.fillCabin();
        data.fillAudio(TRACKS);
        vehicle.connect();
        worker.start();
    }

    ~ExampleHandlerFactoryLive() override
    {
        client.reset();
        worker.stop();
    }

    /// Opens the WebSocket connection, subscribes and checks the answer; gives the first update.
    std::string subscribe(const std::string& event)
    {
        Poco::Net::HTTPClientSession session("127.0.0.1", server.port());
        HTTPRequest request(HTTPRequest::HTTP_GET, "/", HTTPRequest::HTTP_1_1);
        Poco::Net::HTTPResponse response;
        client = std::make_unique<Poco::Net::WebSocket>(session, request, response);
        client->setReceiveTimeout(TIME_LIMIT);
        const std::string message = "{\"type\":\"subscribe\",\"event\":\"" + event + "\"}";
        client->sendFrame(message.data(), static_cast<int>(message.size()));
        EXPECT_EQ(receive(), "{\"event\":\"" + event + "\",\"status\":\"ok\",\"type\":\"subscribe\"}");
        return receive();
    }

    /// The next message, with the value of its timestamp replaced by 0.
    std::string receive()
    {
        Poco::Buffer<char> buffer(0);
        int flags = 0;
        const int length = client->receiveFrame(buffer, flags);
        std::string text(buffer.begin(), static_cast<std::size_t>(length));
        Poco::RegularExpression("\"timestamp\":[0-9]+").subst(text, "\"timestamp\":0");
        return text;
    }

    ServiceDB::Example::Test::Answer send(const std::string& method, const std::string& uri,
                                          const std::string& body = "")
    {
        ServiceDB::Example::Test::Request request;
        request.method = method;
        request.uri = uri;
        request.body = body;
        return ServiceDB::Example::Test::exchangeWith(server.port(), request);
    }

    static std::string update(const std::string& event, const std::string& data)
    {
        return "{\"data\":" + data + ",\"event\":\"" + event +
               "\",\"status\":\"ok\",\"timestamp\":0,\"type\":\"data\"}";
    }

    static std::string zoneData(const std::string& fields)
    {
        const std::string uuid = SampleData::cabinUuid(0);
        return "{\"id\":\"" + uuid + "\",\"name\":\"Driver\"," + fields + ",\"uri\":\"/cabin/zones/" + uuid +
               "\"}";
    }

    static std::string zone() { return "/cabin/zones/" + SampleData::cabinUuid(0); }
    static std::string playlist() { return "/audio/playlists/" + SampleData::playlistUuid(0); }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Example::ExampleDataHandler dataHandler;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    Orvi::Mapping::MappingServiceSubscrTrigger trigger;
    Orvi::Example::VehicleLink vehicle;
    Orvi::Service::SubscriptionService subscriptions;
    ServiceDB::Test::LocalHttpServer server;
    std::unique_ptr<Poco::Net::WebSocket> client;
};

TEST_F(ExampleHandlerFactoryLive, HandsAnUpgradeToTheSubscriptionServiceWhichAnswersWithTheContentAtOnce)
{
    const std::string event = zone() + "?$fields=setPoint#driver";

    const std::string first = subscribe(event);

    EXPECT_EQ(first, update(event, zoneData("\"setPoint\":21.5")));
}

TEST_F(ExampleHandlerFactoryLive, StillAnswersAnOrdinaryGetOverHttp)
{
    const ServiceDB::Example::Test::Answer answer = send(HTTPRequest::HTTP_GET, zone() + "?$fields=setPoint");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"data\":" + zoneData("\"setPoint\":21.5") + ",\"status\":\"ok\"}");
}

TEST_F(ExampleHandlerFactoryLive, ServesTheExplorerPageAtItsOwnAddress)
{
    const ServiceDB::Example::Test::Answer answer = send(HTTPRequest::HTTP_GET, "/$explorer/");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body.compare(0, 15, "<!DOCTYPE html>"), 0);
}

TEST_F(ExampleHandlerFactoryLive, LeavesAnyOtherAddressToTheStore)
{
    const ServiceDB::Example::Test::Answer answer = send(HTTPRequest::HTTP_GET, "/$explorers/");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, R"({"code":400,"message":"","status":"error"})");
}

TEST_F(ExampleHandlerFactoryLive, TellsASubscriberOfASetPointOnceTheControllerHasConfirmedIt)
{
    const std::string event = zone() + "?$fields=setPoint";
    subscribe(event);

    const ServiceDB::Example::Test::Answer answer =
        send(HTTPRequest::HTTP_POST, zone(), "{\"setPoint\":23.5}");

    EXPECT_EQ(answer.status, 202);
    EXPECT_EQ(receive(), update(event, zoneData("\"setPoint\":23.5")));
}

TEST_F(ExampleHandlerFactoryLive, TellsASubscriberOfAPlaylistRenamedOverHttp)
{
    const std::string event = playlist() + "?$fields=name";
    subscribe(event);

    const ServiceDB::Example::Test::Answer answer =
        send(HTTPRequest::HTTP_POST, playlist(), "{\"name\":\"Evening\"}");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(receive(), update(event, "{\"id\":\"" + SampleData::playlistUuid(0) +
                                           "\",\"name\":\"Evening\",\"uri\":\"" + playlist() + "\"}"));
}

TEST_F(ExampleHandlerFactoryLive, TellsASubscriberThatItsPlaylistHasGone)
{
    subscribe(playlist());

    const ServiceDB::Example::Test::Answer answer = send(HTTPRequest::HTTP_DELETE, playlist());

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(receive(), "{\"code\":410,\"event\":\"" + playlist() +
                             "\",\"message\":\"element has gone\",\"status\":\"error\",\"type\":\"error\"}");
}

TEST_F(ExampleHandlerFactoryLive, TellsASubscriberOfEachStepOfTheSimulatedVehicle)
{
    const std::string event = zone() + "?$fields=temperature";
    EXPECT_EQ(subscribe(event), update(event, zoneData("\"temperature\":19")));

    ASSERT_TRUE(
        worker.enqueueDataMessage(new Orvi::Example::VehicleStep(vehicle), Orvi::Util::MESSAGE_PRIO_NORMAL));

    EXPECT_EQ(receive(), update(event, zoneData("\"temperature\":19.1")));
}

TEST_F(ExampleHandlerFactoryLive, RefusesASubscriptionToAnAddressTheStoreDoesNotHold)
{
    Poco::Net::HTTPClientSession session("127.0.0.1", server.port());
    HTTPRequest request(HTTPRequest::HTTP_GET, "/", HTTPRequest::HTTP_1_1);
    Poco::Net::HTTPResponse response;
    client = std::make_unique<Poco::Net::WebSocket>(session, request, response);
    client->setReceiveTimeout(TIME_LIMIT);
    const std::string message = "{\"type\":\"subscribe\",\"event\":\"/audio/podcasts\"}";

    client->sendFrame(message.data(), static_cast<int>(message.size()));

    EXPECT_EQ(receive(), "{\"code\":404,\"event\":\"/audio/podcasts\",\"message\":\"No such target for this "
                         "port.\",\"status\":\"error\",\"type\":\"error\"}");
}

} // namespace
