#include "SubscriptionHandling/SubscriptionService.h"

#include "Support/InMemoryTrigger.h"
#include "Support/TestWebSocketClient.h"
#include "Support/UpgradeHandlerFactory.h"
#include "TestSupport/LocalHttpServer.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/WebSocket.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

using namespace ServiceDB::Test;
using Orvi::Command::HttpRequest;
using Orvi::Service::SubscriptionLimits;
using Orvi::Service::SubscriptionService;

namespace
{

const std::chrono::milliseconds WAIT(10000);
const std::string SEAT = "/cabin/seats/driver";
const std::string SEAT_DATA = R"({"heating":2})";

std::string dataMessage(const std::string& event, const std::string& data)
{
    return R"({"data":)" + data + R"(,"event":")" + event + R"(","status":"ok","timestamp":0,"type":"data"})";
}

std::string answer(const std::string& type, const std::string& event)
{
    return R"({"event":")" + event + R"(","status":"ok","type":")" + type + R"("})";
}

std::string errorMessage(const std::string& event, int code, const std::string& message)
{
    return R"({"code":)" + std::to_string(code) + R"(,"event":")" + event + R"(","message":")" + message +
           R"(","status":"error","type":"error"})";
}

void changeSeat(InMemoryTrigger& trigger, const std::string& data)
{
    trigger.put(SEAT, data);
    trigger.changedElement(HttpRequest::PUT, "cabin", "seats", "driver", nullptr);
}

// Subscribes and takes the answer and the first update, which every subscription begins with.
void subscribe(TestWebSocketClient& client, const std::string& message)
{
    client.send(message);
    client.receive();
    client.receive();
}

// An unsubscribe of what nobody subscribed to is answered at once: what came before it has been sent.
void expectNothingMoreBeforeTheSentinel(TestWebSocketClient& client)
{
    client.send(unsubscribeMessage("/sentinel/none/x"));
    EXPECT_EQ(client.receive(), errorMessage("/sentinel/none/x", 404, "not subscribed to this event"));
}

class SubscriptionServiceTest : public ::testing::Test
{
protected:
    SubscriptionServiceTest() { trigger.put(SEAT, SEAT_DATA); }

    InMemoryTrigger trigger;
};

} // namespace

TEST_F(SubscriptionServiceTest, ItAttachesItselfToTheTriggerForItsLifetime)
{
    {
        SubscriptionService sut(trigger);

        EXPECT_TRUE(trigger.hasChangeSink());
    }

    EXPECT_FALSE(trigger.hasChangeSink());
}

TEST_F(SubscriptionServiceTest, AHandshakeOnAnyPathOpensAConnection)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));

    TestWebSocketClient atRoot(server.port(), "/");
    TestWebSocketClient elsewhere(server.port(), "/any/path");

    EXPECT_TRUE(sut.waitForConnectionCount(2, WAIT));
}

TEST_F(SubscriptionServiceTest, ASubscribeIsAnsweredAndFollowedByTheFirstUpdateAtOnce)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());

    client.send(R"({"type":"subscribe","event":"/cabin/seats/driver#front"})");

    EXPECT_EQ(client.receive(), R"({"event":"/cabin/seats/driver#front","status":"ok","type":"subscribe"})");
    EXPECT_EQ(
        withoutTimestamp(client.receive()),
        R"({"data":{"heating":2},"event":"/cabin/seats/driver#front","status":"ok","timestamp":0,"type":"data"})");
}

TEST_F(SubscriptionServiceTest, AChangeOfTheObjectSendsAnUpdateWithTheNewContent)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    subscribe(client, subscribeMessage(SEAT));

    changeSeat(trigger, R"({"heating":3})");

    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage(SEAT, R"({"heating":3})"));
}

TEST_F(SubscriptionServiceTest, ADeletedObjectIsReportedWith410AndItsSubscriptionEnds)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    subscribe(client, subscribeMessage(SEAT + "#t"));

    trigger.erase(SEAT);
    trigger.changedElement(HttpRequest::DELETE, "cabin", "seats", "driver", nullptr);

    EXPECT_EQ(client.receive(), errorMessage(SEAT + "#t", 410, "element has gone"));
    client.send(unsubscribeMessage(SEAT + "#t"));
    EXPECT_EQ(client.receive(), errorMessage(SEAT + "#t", 404, "not subscribed to this event"));
}

TEST_F(SubscriptionServiceTest, AnUnsubscribeIsAnsweredAndNoUpdateFollowsIt)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    subscribe(client, subscribeMessage(SEAT + "#gone"));
    subscribe(client, subscribeMessage(SEAT + "#kept"));

    client.send(unsubscribeMessage(SEAT + "#gone"));
    const std::string unsubscribed = client.receive();
    changeSeat(trigger, R"({"heating":0})");

    EXPECT_EQ(unsubscribed, answer("unsubscribe", SEAT + "#gone"));
    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage(SEAT + "#kept", R"({"heating":0})"));
    expectNothingMoreBeforeTheSentinel(client);
}

TEST_F(SubscriptionServiceTest, AnUnsubscribeOfWhatWasNotSubscribedIsAnswered404)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    subscribe(client, subscribeMessage(SEAT + "#a"));

    client.send(unsubscribeMessage(SEAT + "#b"));

    EXPECT_EQ(client.receive(), errorMessage(SEAT + "#b", 404, "not subscribed to this event"));
}

TEST_F(SubscriptionServiceTest, AnIntervalSendsTheCurrentContentPeriodically)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());

    client.send(R"({"type":"subscribe","event":"/cabin/seats/driver","interval":40})");

    EXPECT_EQ(client.receive(), answer("subscribe", SEAT));
    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage(SEAT, SEAT_DATA));
    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage(SEAT, SEAT_DATA));
    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage(SEAT, SEAT_DATA));
}

TEST_F(SubscriptionServiceTest, ChangesInsideTheUpdateLimitMergeIntoOneUpdateWithTheLastState)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    subscribe(client, R"({"type":"subscribe","event":"/cabin/seats/driver","updatelimit":500})");

    changeSeat(trigger, R"({"heating":1})");
    changeSeat(trigger, R"({"heating":2})");
    changeSeat(trigger, R"({"heating":3})");

    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage(SEAT, R"({"heating":3})"));
    expectNothingMoreBeforeTheSentinel(client);
}

TEST_F(SubscriptionServiceTest, TwoSubscribersOfOneAddressHearOfAChangeFromOneFetch)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient first(server.port());
    TestWebSocketClient second(server.port());
    subscribe(first, subscribeMessage(SEAT));
    subscribe(second, subscribeMessage(SEAT + "#mirror"));
    const auto fetchesBefore = sut.fetchCount();

    changeSeat(trigger, R"({"heating":1})");

    EXPECT_EQ(withoutTimestamp(first.receive()), dataMessage(SEAT, R"({"heating":1})"));
    EXPECT_EQ(withoutTimestamp(second.receive()), dataMessage(SEAT + "#mirror", R"({"heating":1})"));
    EXPECT_EQ(sut.fetchCount(), fetchesBefore + 1);
}

TEST_F(SubscriptionServiceTest, TheSameAddressWithTwoTagsIsTwoSubscriptions)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    subscribe(client, subscribeMessage(SEAT + "#left"));

    client.send(subscribeMessage(SEAT + "#right"));

    EXPECT_EQ(client.receive(), answer("subscribe", SEAT + "#right"));
    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage(SEAT + "#right", SEAT_DATA));
    EXPECT_EQ(sut.subscriptionCount(), 2U);
}

TEST_F(SubscriptionServiceTest, ASecondSubscribeOfTheSameEventIsAnswered400)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    subscribe(client, subscribeMessage(SEAT + "#x"));

    client.send(subscribeMessage(SEAT + "#x"));

    EXPECT_EQ(client.receive(), errorMessage(SEAT + "#x", 400, "already subscribed to this event"));
}

TEST_F(SubscriptionServiceTest, ACollectionSubscriberHearsOfAChangeOfOneOfItsObjects)
{
    trigger.put("/cabin/seats/rear", R"({"heating":0})");
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    client.send(subscribeMessage("/cabin/seats"));
    client.receive();
    const std::string first = withoutTimestamp(client.receive());

    changeSeat(trigger, R"({"heating":3})");

    EXPECT_EQ(first, R"({"data":[{"heating":2},{"heating":0}],"event":"/cabin/seats","paging":{"total":2},)"
                     R"("status":"ok","timestamp":0,"type":"data"})");
    EXPECT_EQ(withoutTimestamp(client.receive()),
              R"({"data":[{"heating":3},{"heating":0}],"event":"/cabin/seats","paging":{"total":2},)"
              R"("status":"ok","timestamp":0,"type":"data"})");
}

TEST_F(SubscriptionServiceTest, AnObjectSubscriberHearsOfAChangeOfItsWholeResource)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    subscribe(client, subscribeMessage(SEAT));

    trigger.put(SEAT, R"({"heating":1})");
    trigger.manualTrigger(HttpRequest::POST, Orvi::Command::UrlPath(Poco::URI("/cabin/seats")), nullptr);

    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage(SEAT, R"({"heating":1})"));
}

TEST_F(SubscriptionServiceTest, AnUnknownTargetIsRefusedWith404AndTheTextOfTheCheck)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());

    client.send(subscribeMessage("/cabin/doors/left#d"));

    EXPECT_EQ(client.receive(), errorMessage("/cabin/doors/left#d", 404, "No such target for this port."));
    EXPECT_EQ(sut.subscriptionCount(), 0U);
}

TEST_F(SubscriptionServiceTest, ASubscriptionThatTheCheckDeniesIsRefusedWith403)
{
    trigger.denyToken("expired");
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());

    client.send(R"({"type":"subscribe","event":"/cabin/seats/driver","authorization":"expired"})");

    EXPECT_EQ(client.receive(), errorMessage(SEAT, 403, "access denied"));
}

TEST_F(SubscriptionServiceTest, MalformedJsonIsAnswered400WithoutEvent)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());

    client.send(R"({"type":"subscribe","event":)");

    EXPECT_EQ(client.receive(), errorMessage("", 400, "message is not a JSON object"));
}

TEST_F(SubscriptionServiceTest, AMessageThatIsNoObjectIsAnswered400)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());

    client.send(R"(["subscribe","/cabin/seats/driver"])");

    EXPECT_EQ(client.receive(), errorMessage("", 400, "message is not a JSON object"));
}

TEST_F(SubscriptionServiceTest, AnUnknownTypeIsAnswered400WithTheEvent)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());

    client.send(R"({"type":"publish","event":"/cabin/seats/driver#p"})");

    EXPECT_EQ(client.receive(), errorMessage(SEAT + "#p", 400, "unknown message type"));
}

TEST_F(SubscriptionServiceTest, FieldsOfTheWrongTypeAreAnswered400)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    const std::string invalid =
        R"(message needs \"type\" and \"event\" strings; \"interval\" and )"
        R"(\"updatelimit\" must be non-negative integers, \"authorization\" a string, )"
        R"(\"autosubscribe\" a boolean)";

    client.send(R"({"type":"subscribe","event":"/cabin/seats/driver","interval":"often"})");
    client.send(R"({"type":"subscribe","event":"/cabin/seats/driver","updatelimit":-5})");
    client.send(R"({"type":"subscribe","event":"/cabin/seats/driver","autosubscribe":"yes"})");
    client.send(R"({"type":"subscribe","event":42})");
    client.send(R"({"type":7,"event":"/cabin/seats/driver"})");

    EXPECT_EQ(client.receive(), errorMessage(SEAT, 400, invalid));
    EXPECT_EQ(client.receive(), errorMessage(SEAT, 400, invalid));
    EXPECT_EQ(client.receive(), errorMessage(SEAT, 400, invalid));
    EXPECT_EQ(client.receive(), errorMessage("", 400, invalid));
    EXPECT_EQ(client.receive(), errorMessage(SEAT, 400, invalid));
    EXPECT_EQ(sut.subscriptionCount(), 0U);
}

TEST_F(SubscriptionServiceTest, TenThousandSubscriptionsFitTheLimitAndOneMoreIsRefusedWith503)
{
    constexpr int COUNT = 10000;
    constexpr int BATCH = 500;
    for (int i = 0; i < COUNT; ++i)
    {
        trigger.put("/cabin/lamps/l" + std::to_string(i), R"({"on":false})");
    }
    SubscriptionService sut(trigger, SubscriptionLimits(4, COUNT, 2 * COUNT));
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient client(server.port());
    int answers = 0;
    int updates = 0;
    for (int batch = 0; batch < COUNT; batch += BATCH)
    {
        for (int i = batch; i < batch + BATCH; ++i)
        {
            client.send(subscribeMessage("/cabin/lamps/l" + std::to_string(i)));
        }
        for (int i = 0; i < 2 * BATCH; ++i)
        {
            (client.receive().find(R"("type":"subscribe")") != std::string::npos ? answers : updates)++;
        }
    }

    client.send(subscribeMessage(SEAT));
    const std::string refused = client.receive();
    trigger.put("/cabin/lamps/l4711", R"({"on":true})");
    trigger.changedElement(HttpRequest::PUT, "cabin", "lamps", "l4711", nullptr);

    EXPECT_EQ(answers, COUNT);
    EXPECT_EQ(updates, COUNT);
    EXPECT_EQ(refused, errorMessage(SEAT, 503, "maximum number of subscriptions on this connection reached"));
    EXPECT_EQ(withoutTimestamp(client.receive()), dataMessage("/cabin/lamps/l4711", R"({"on":true})"));
    EXPECT_EQ(sut.subscriptionCount(), static_cast<std::size_t>(COUNT));
}

TEST_F(SubscriptionServiceTest, AClientThatNeverReadsIsClosedWithALogLineWhileAnotherKeepsReceiving)
{
    constexpr std::size_t MAX_UNSENT = 4;
    constexpr int MAX_CHANGES = 2000;
    const std::string padding(256 * 1024, 'x');
    SubscriptionService sut(trigger, SubscriptionLimits(4, 10, MAX_UNSENT));
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    TestWebSocketClient stalled(server.port());
    TestWebSocketClient reader(server.port());
    stalled.send(subscribeMessage(SEAT));
    subscribe(reader, subscribeMessage(SEAT));
    const std::string expectedLine = "Warning: Closing subscription connection of " +
                                     stalled.address().toString() + ": more than 4 updates unsent";
    LogCapture log(Poco::Message::PRIO_WARNING);

    // The stalled client came first, so its update is queued before the reader gets its own.
    bool closed = false;
    for (int change = 0; change < MAX_CHANGES && !closed; ++change)
    {
        changeSeat(trigger, R"({"padding":")" + padding + R"(","change":)" + std::to_string(change) + "}");
        reader.receive();
        closed = !log.lines().empty();
    }
    changeSeat(trigger, R"({"heating":1})");

    EXPECT_THAT(log.lines(), ::testing::ElementsAre(expectedLine));
    EXPECT_EQ(withoutTimestamp(reader.receive()), dataMessage(SEAT, R"({"heating":1})"));
    EXPECT_TRUE(stalled.receivesEndOfStream());
    EXPECT_TRUE(sut.waitForConnectionCount(1, WAIT));
    EXPECT_EQ(sut.subscriptionCount(), 1U);
}

TEST_F(SubscriptionServiceTest, ASubscriptionEndsWithItsSocket)
{
    SubscriptionService sut(trigger);
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    auto client = std::make_unique<TestWebSocketClient>(server.port());
    subscribe(*client, subscribeMessage(SEAT));
    subscribe(*client, subscribeMessage("/cabin/seats"));

    client.reset();

    EXPECT_TRUE(sut.waitForConnectionCount(0, WAIT));
    EXPECT_EQ(sut.subscriptionCount(), 0U);
}

TEST_F(SubscriptionServiceTest, AHandshakeBeyondTheConnectionLimitIsRefusedWith503)
{
    SubscriptionService sut(trigger, SubscriptionLimits(2));
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    auto first = std::make_unique<TestWebSocketClient>(server.port());
    TestWebSocketClient second(server.port());
    LogCapture log(Poco::Message::PRIO_WARNING);
    Poco::Net::HTTPClientSession session("127.0.0.1", server.port());
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/", Poco::Net::HTTPMessage::HTTP_1_1);
    Poco::Net::HTTPResponse response;

    EXPECT_THROW(Poco::Net::WebSocket(session, request, response), Poco::Net::WebSocketException);

    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_SERVICE_UNAVAILABLE);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_THAT(log.lines().front(), ::testing::MatchesRegex("Warning: Refused subscription connection of "
                                                             "127\\.0\\.0\\.1:[0-9]+: 2 connections open"));
}

TEST_F(SubscriptionServiceTest, AConnectionThatEndedMakesRoomForANewOne)
{
    SubscriptionService sut(trigger, SubscriptionLimits(1));
    LocalHttpServer server(new UpgradeHandlerFactory(sut));
    auto first = std::make_unique<TestWebSocketClient>(server.port());
    first->socket().shutdown();
    ASSERT_TRUE(first->receivesEndOfStream());

    TestWebSocketClient second(server.port());
    subscribe(second, subscribeMessage(SEAT));

    EXPECT_EQ(sut.connectionCount(), 1U);
}

TEST_F(SubscriptionServiceTest, StoppingClosesEveryConnectionWith1001)
{
    auto sut = std::make_unique<SubscriptionService>(trigger);
    auto server = std::make_unique<LocalHttpServer>(new UpgradeHandlerFactory(*sut));
    TestWebSocketClient client(server->port());
    subscribe(client, subscribeMessage(SEAT));
    server.reset();

    sut.reset();

    const TestWebSocketClient::Frame frame = client.receiveFrame();
    EXPECT_EQ(frame.opcode(), Poco::Net::WebSocket::FRAME_OP_CLOSE);
    EXPECT_EQ(frame.closeStatus(), Poco::Net::WebSocket::WS_ENDPOINT_GOING_AWAY);
    EXPECT_TRUE(client.receivesEndOfStream());
    EXPECT_FALSE(trigger.hasChangeSink());
}
