#include "SubscriptionHandling/SubscriptionConnection.h"

#include "SubscriptionHandling/SubscriptionDispatcher.h"
#include "SubscriptionHandling/SubscriptionWriteWatcher.h"
#include "SubscriptionHandling/WebSocketSubscription.h"
#include "Support/InMemoryTrigger.h"
#include "Support/TestWebSocketClient.h"
#include "TestSupport/LocalHttpServer.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Net/WebSocket.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

using namespace ServiceDB::Test;
using Orvi::Service::SubscriptionConnection;
using Orvi::Service::SubscriptionLimits;
using Poco::Net::WebSocket;

namespace
{

const std::chrono::seconds WAIT(10);
const std::string SEAT = "/cabin/seats/driver";

// What the service gives a connection, with the connection itself as the HTTP server's handler made it.
class Harness
{
public:
    Harness(InMemoryTrigger& trigger, const SubscriptionLimits& limits)
        : trigger(trigger)
        , limits(limits)
        , dispatcher(trigger, 1)
    {
    }

    void serve(const WebSocket& socket)
    {
        const auto connection =
            std::make_shared<SubscriptionConnection>(socket, trigger, dispatcher, watcher, limits);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_connection = connection;
        }
        m_changed.notify_all();
        connection->serve();
        connection->close();
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ended = true;
        }
        m_changed.notify_all();
    }

    std::shared_ptr<SubscriptionConnection> waitForConnection()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, WAIT, [this] { return m_connection != nullptr; });
        return m_connection;
    }

    bool waitForEnd()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, WAIT, [this] { return m_ended; });
    }

    InMemoryTrigger& trigger;
    const SubscriptionLimits limits;
    Orvi::Service::SubscriptionWriteWatcher watcher;
    Orvi::Service::SubscriptionDispatcher dispatcher;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::shared_ptr<SubscriptionConnection> m_connection;
    bool m_ended = false;
};

class ServingHandler : public Poco::Net::HTTPRequestHandler
{
public:
    explicit ServingHandler(Harness& harness)
        : m_harness(harness)
    {
    }

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override
    {
        m_harness.serve(WebSocket(request, response));
    }

private:
    Harness& m_harness;
};

class ServingFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    explicit ServingFactory(Harness& harness)
        : m_harness(harness)
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new ServingHandler(m_harness);
    }

private:
    Harness& m_harness;
};

// A handshake written by hand, so that the test can then write frames that break off.
Poco::Net::StreamSocket openRawWebSocket(Poco::UInt16 port)
{
    Poco::Net::StreamSocket socket(Poco::Net::SocketAddress("127.0.0.1", port));
    socket.setReceiveTimeout(TestWebSocketClient::RECEIVE_TIMEOUT);
    const std::string request =
        "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n";
    socket.sendBytes(request.data(), static_cast<int>(request.size()));
    std::string head;
    char byte = 0;
    while (head.size() < 4 || head.compare(head.size() - 4, 4, "\r\n\r\n") != 0)
    {
        if (socket.receiveBytes(&byte, 1) != 1)
        {
            throw Poco::IOException("handshake answer incomplete");
        }
        head += byte;
    }
    return socket;
}

// A masked client text frame; the zero mask leaves the payload as it is.
std::string maskedTextFrame(const std::string& payload, std::size_t announcedLength)
{
    std::string frame;
    frame += static_cast<char>(0x81);
    frame += static_cast<char>(0x80 | announcedLength);
    frame += std::string(4, '\0');
    frame += payload;
    return frame;
}

std::string readRawTextFrame(Poco::Net::StreamSocket& socket)
{
    unsigned char header[2] = {0, 0};
    socket.receiveBytes(header, 2);
    std::size_t length = header[1] & 0x7F;
    if (length == 126)
    {
        unsigned char extended[2] = {0, 0};
        socket.receiveBytes(extended, 2);
        length = (static_cast<std::size_t>(extended[0]) << 8) | extended[1];
    }
    std::string payload(length, '\0');
    std::size_t received = 0;
    while (received < length)
    {
        received += static_cast<std::size_t>(
            socket.receiveBytes(&payload[received], static_cast<int>(length - received)));
    }
    return payload;
}

class SubscriptionConnectionTest : public ::testing::Test
{
protected:
    SubscriptionConnectionTest() { trigger.put(SEAT, R"({"heating":2})"); }

    InMemoryTrigger trigger;
};

} // namespace

TEST_F(SubscriptionConnectionTest, APingIsAnsweredWithAPongOfTheSamePayload)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    client.sendFrame("are you there", WebSocket::FRAME_FLAG_FIN | WebSocket::FRAME_OP_PING);

    const TestWebSocketClient::Frame pong = client.receiveFrame();
    EXPECT_EQ(pong.opcode(), WebSocket::FRAME_OP_PONG);
    EXPECT_EQ(pong.payload, "are you there");
}

TEST_F(SubscriptionConnectionTest, ACloseIsAnsweredWithACloseOfTheSameStatusAndTheConnectionEnds)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    client.socket().shutdown(WebSocket::WS_NORMAL_CLOSE, "bye");

    const TestWebSocketClient::Frame close = client.receiveFrame();
    EXPECT_EQ(close.opcode(), WebSocket::FRAME_OP_CLOSE);
    EXPECT_EQ(close.closeStatus(), WebSocket::WS_NORMAL_CLOSE);
    EXPECT_TRUE(client.receivesEndOfStream());
    EXPECT_TRUE(harness.waitForEnd());
}

TEST_F(SubscriptionConnectionTest, ABinaryFrameIsAnswered400AndTheConnectionStaysOpen)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    client.sendFrame(subscribeMessage(SEAT), WebSocket::FRAME_BINARY);
    client.send(subscribeMessage(SEAT));

    EXPECT_EQ(
        client.receive(),
        R"({"code":400,"event":"","message":"binary frames are not supported","status":"error","type":"error"})");
    EXPECT_EQ(client.receive(), R"({"event":"/cabin/seats/driver","status":"ok","type":"subscribe"})");
}

TEST_F(SubscriptionConnectionTest, AFrameAboveTheLimitClosesTheConnectionWith1009)
{
    Harness harness(trigger, SubscriptionLimits(4, 10, 10, 1024));
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    client.send(std::string(1025, ' '));

    const TestWebSocketClient::Frame close = client.receiveFrame();
    EXPECT_EQ(close.opcode(), WebSocket::FRAME_OP_CLOSE);
    EXPECT_EQ(close.closeStatus(), WebSocket::WS_PAYLOAD_TOO_BIG);
    EXPECT_EQ(close.payload.substr(2), "message too big");
    EXPECT_TRUE(client.receivesEndOfStream());
    EXPECT_TRUE(harness.waitForEnd());
}

TEST_F(SubscriptionConnectionTest, AFrameOfExactlyTheLimitIsRead)
{
    const std::string message = subscribeMessage(SEAT);
    Harness harness(trigger, SubscriptionLimits(4, 10, 10, message.size()));
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    client.send(message);

    EXPECT_EQ(client.receive(), R"({"event":"/cabin/seats/driver","status":"ok","type":"subscribe"})");
}

TEST_F(SubscriptionConnectionTest, AMessageInFragmentsIsReadAsOne)
{
    const std::string message = subscribeMessage(SEAT + "#parts");
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    client.sendFrame(message.substr(0, 10), WebSocket::FRAME_OP_TEXT);
    client.sendFrame(message.substr(10, 10), WebSocket::FRAME_OP_CONT);
    client.sendFrame(message.substr(20), WebSocket::FRAME_FLAG_FIN | WebSocket::FRAME_OP_CONT);

    EXPECT_EQ(client.receive(), R"({"event":"/cabin/seats/driver#parts","status":"ok","type":"subscribe"})");
}

TEST_F(SubscriptionConnectionTest, FragmentsAboveTheLimitTogetherCloseTheConnectionWith1009)
{
    Harness harness(trigger, SubscriptionLimits(4, 10, 10, 100));
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    client.sendFrame(std::string(60, ' '), WebSocket::FRAME_OP_TEXT);
    client.sendFrame(std::string(60, ' '), WebSocket::FRAME_FLAG_FIN | WebSocket::FRAME_OP_CONT);

    EXPECT_EQ(client.receiveFrame().closeStatus(), WebSocket::WS_PAYLOAD_TOO_BIG);
    EXPECT_TRUE(harness.waitForEnd());
}

TEST_F(SubscriptionConnectionTest, AContinuationWithoutABeginningClosesTheConnectionWith1002)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    client.sendFrame("stray", WebSocket::FRAME_FLAG_FIN | WebSocket::FRAME_OP_CONT);

    EXPECT_EQ(client.receiveFrame().closeStatus(), WebSocket::WS_PROTOCOL_ERROR);
    EXPECT_TRUE(harness.waitForEnd());
}

TEST_F(SubscriptionConnectionTest, AClientThatClosesInTheMiddleOfAFrameEndsTheConnectionAndItsSubscriptions)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    Poco::Net::StreamSocket raw = openRawWebSocket(server.port());
    const std::string subscribe = subscribeMessage(SEAT);
    const std::string frame = maskedTextFrame(subscribe, subscribe.size());
    raw.sendBytes(frame.data(), static_cast<int>(frame.size()));
    const std::string answer = readRawTextFrame(raw);
    readRawTextFrame(raw);
    const std::shared_ptr<SubscriptionConnection> sut = harness.waitForConnection();
    const std::size_t subscriptionsBefore = sut->subscriptionCount();

    const std::string broken = maskedTextFrame("{\"type\":", 100);
    raw.sendBytes(broken.data(), static_cast<int>(broken.size()));
    raw.close();

    EXPECT_EQ(answer, R"({"event":"/cabin/seats/driver","status":"ok","type":"subscribe"})");
    EXPECT_EQ(subscriptionsBefore, 1U);
    EXPECT_TRUE(harness.waitForEnd());
    EXPECT_EQ(sut->subscriptionCount(), 0U);
    EXPECT_EQ(harness.dispatcher.subscriptionCount(), 0U);
}

TEST_F(SubscriptionConnectionTest, AClientThatLetsMessagesPileUpIsClosedWithALogLine)
{
    Harness harness(trigger, SubscriptionLimits(4, 10, 3));
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());
    const std::shared_ptr<SubscriptionConnection> sut = harness.waitForConnection();
    const std::string bulk(512 * 1024, 'x');
    LogCapture log(Poco::Message::PRIO_WARNING);

    // Each message fills the socket a little more; once it is full they queue up.
    for (int message = 0; message < 1000 && log.lines().empty(); ++message)
    {
        sut->post(bulk);
    }

    EXPECT_THAT(log.lines(),
                ::testing::ElementsAre("Warning: Closing subscription connection of " +
                                       client.address().toString() + ": more than 3 updates unsent"));
    EXPECT_TRUE(harness.waitForEnd());
    EXPECT_EQ(sut->unsentCount(), 0U);
    EXPECT_TRUE(client.receivesEndOfStream());
}

TEST_F(SubscriptionConnectionTest, NothingIsQueuedOnceTheConnectionHasEnded)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    auto client = std::make_unique<TestWebSocketClient>(server.port());
    const std::shared_ptr<SubscriptionConnection> sut = harness.waitForConnection();
    client.reset();
    ASSERT_TRUE(harness.waitForEnd());

    sut->post(R"({"late":true})");

    EXPECT_EQ(sut->unsentCount(), 0U);
}

TEST_F(SubscriptionConnectionTest, AnUpdateOfAnEndedSubscriptionIsDropped)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());
    const std::shared_ptr<SubscriptionConnection> sut = harness.waitForConnection();
    const Orvi::Service::SubscriptionRequest request(subscribeMessage(SEAT), client.address(),
                                                     client.address());
    Orvi::Service::WebSocketSubscription subscription(request, SEAT, sut);
    sut->postEnd(subscription, R"({"end":true})");

    const bool taken = sut->postUpdate(subscription, R"({"late":true})", false);
    client.send(unsubscribeMessage("/none/x/y"));

    EXPECT_FALSE(taken);
    EXPECT_EQ(client.receive(), R"({"end":true})");
    EXPECT_EQ(client.receive(), R"({"code":404,"event":"/none/x/y","message":"not subscribed to this event",)"
                                R"("status":"error","type":"error"})");
}

TEST_F(SubscriptionConnectionTest, GoingAwaySendsACloseWith1001AndEndsTheConnection)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());
    const std::shared_ptr<SubscriptionConnection> sut = harness.waitForConnection();

    sut->goAway();

    const TestWebSocketClient::Frame close = client.receiveFrame();
    EXPECT_EQ(close.closeStatus(), WebSocket::WS_ENDPOINT_GOING_AWAY);
    EXPECT_EQ(close.payload.substr(2), "service stopping");
    EXPECT_TRUE(harness.waitForEnd());
    EXPECT_TRUE(client.receivesEndOfStream());
}

TEST_F(SubscriptionConnectionTest, ItKnowsItsPeer)
{
    Harness harness(trigger, SubscriptionLimits());
    LocalHttpServer server(new ServingFactory(harness));
    TestWebSocketClient client(server.port());

    const std::shared_ptr<SubscriptionConnection> sut = harness.waitForConnection();

    EXPECT_EQ(sut->peerAddress(), client.address());
}
