#include "Http/HttpServer.h"

#include "TestSupport/LogCapture.h"

#include <Poco/Event.h>
#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/ThreadPool.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

constexpr long WAIT_LIMIT_MS = 10000;

/// Holds "/hold" until the test opens the gate; answers everything else at once with "ok".
class GateHandler : public Poco::Net::HTTPRequestHandler
{
public:
    GateHandler(Poco::Event& entered, Poco::Event& open)
        : m_entered(entered)
        , m_open(open)
    {
    }

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override
    {
        if (request.getURI() == "/hold")
        {
            m_entered.set();
            m_open.wait();
        }
        response.setContentLength(2);
        response.send() << "ok";
    }

private:
    Poco::Event& m_entered;
    Poco::Event& m_open;
};

class GateHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    GateHandlerFactory(Poco::Event& entered, Poco::Event& open)
        : m_entered(entered)
        , m_open(open)
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new GateHandler(m_entered, m_open);
    }

private:
    Poco::Event& m_entered;
    Poco::Event& m_open;
};

/// A server of one thread and a queue of one connection.
class HttpServerTest : public ::testing::Test
{
protected:
    HttpServerTest()
        : pool(1, 1)
        , sut(new GateHandlerFactory(entered, open), pool,
              Poco::Net::ServerSocket(Poco::Net::SocketAddress("127.0.0.1", 0)), makeParams())
    {
        sut.start();
    }

    ~HttpServerTest() override
    {
        open.set();
        sut.stopAll(true);
        pool.joinAll();
    }

    static Poco::Net::HTTPServerParams::Ptr makeParams()
    {
        Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
        params->setMaxThreads(1);
        params->setMaxQueued(1);
        params->setKeepAlive(true);
        return params;
    }

    Poco::Net::StreamSocket request(const std::string& uri) const
    {
        Poco::Net::StreamSocket socket(Poco::Net::SocketAddress("127.0.0.1", sut.port()));
        socket.setReceiveTimeout(Poco::Timespan(10, 0));
        const std::string bytes = "GET " + uri + " HTTP/1.1\r\nHost: localhost\r\n\r\n";
        socket.sendBytes(bytes.data(), static_cast<int>(bytes.size()));
        return socket;
    }

    /// Occupies the one thread with a held request and fills the queue with a second connection.
    void occupyThreadAndQueue()
    {
        held = request("/hold");
        ASSERT_TRUE(entered.tryWait(WAIT_LIMIT_MS));
        queued = request("/queued");
    }

    /// Reads one answer with its two bytes of body, or what comes until the server closes.
    static std::string receiveAnswer(Poco::Net::StreamSocket& socket)
    {
        std::string received;
        char buffer[4096];
        while (received.find("\r\n\r\nok") == std::string::npos)
        {
            const int length = socket.receiveBytes(buffer, sizeof buffer);
            if (length <= 0)
            {
                break;
            }
            received.append(buffer, static_cast<std::size_t>(length));
        }
        return received;
    }

    static std::string receiveAll(Poco::Net::StreamSocket& socket)
    {
        std::string received;
        char buffer[4096];
        int length = 0;
        while ((length = socket.receiveBytes(buffer, sizeof buffer)) > 0)
        {
            received.append(buffer, static_cast<std::size_t>(length));
        }
        return received;
    }

    static std::string statusLine(const std::string& answer) { return answer.substr(0, answer.find("\r\n")); }

    Poco::Event entered;
    Poco::Event open;
    Poco::ThreadPool pool;
    Orvi::Net::HttpServer sut;
    Poco::Net::StreamSocket held;
    Poco::Net::StreamSocket queued;
};

TEST_F(HttpServerTest, AnswersAConnectionBeyondTheQueueWith503AndItsReason)
{
    occupyThreadAndQueue();

    Poco::Net::StreamSocket refused = request("/refused");
    const std::string answer = receiveAll(refused);

    EXPECT_EQ(answer, "HTTP/1.1 503 Service Unavailable\r\n"
                      "Connection: Close\r\n"
                      "Content-Type: application/json; charset=utf-8\r\n"
                      "Content-Length: 67\r\n"
                      "\r\n"
                      "{\"code\":503,\"message\":\"connection queue overflow\",\"status\":\"error\"}");
}

TEST_F(HttpServerTest, LogsARefusedConnectionWithItsAddress)
{
    occupyThreadAndQueue();
    ServiceDB::Test::LogCapture capture(Poco::Message::PRIO_WARNING);

    Poco::Net::StreamSocket refused = request("/refused");
    receiveAll(refused);

    EXPECT_EQ(capture.lines(),
              std::vector<std::string>{"Warning: Refused connection from " + refused.address().toString() +
                                       ": connection queue overflow"});
}

TEST_F(HttpServerTest, EndsAKeptConnectionThatIdlesWhileAnotherConnectionWaitsForAThread)
{
    occupyThreadAndQueue();

    open.set();
    const std::string answer = receiveAll(held);

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 200 OK");
    EXPECT_EQ(answer.substr(answer.size() - 2), "ok");
}

TEST_F(HttpServerTest, AnnouncesTheCloseInAnAnswerBegunWhileAnotherConnectionWaits)
{
    held = request("/hold");
    ASSERT_TRUE(entered.tryWait(WAIT_LIMIT_MS));
    const std::string next = "GET /next HTTP/1.1\r\nHost: localhost\r\n\r\n";
    held.sendBytes(next.data(), static_cast<int>(next.size()));
    queued = request("/queued");
    Poco::Net::StreamSocket refused = request("/refused");
    ASSERT_EQ(statusLine(receiveAll(refused)), "HTTP/1.1 503 Service Unavailable");

    open.set();
    const std::string answers = receiveAll(held);

    const std::size_t second = answers.find("HTTP/1.1 200 OK", 1);
    ASSERT_NE(second, std::string::npos) << answers;
    EXPECT_NE(answers.find("\r\nConnection: Close\r\n", second), std::string::npos) << answers;
}

TEST_F(HttpServerTest, ServesAWaitingConnectionOnceAThreadIsFree)
{
    occupyThreadAndQueue();

    open.set();
    receiveAll(held);
    const std::string answer = receiveAnswer(queued);

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 200 OK");
    EXPECT_NE(answer.find("\r\nConnection: Keep-Alive\r\n"), std::string::npos) << answer;
}

TEST_F(HttpServerTest, HandsTheThreadOfAConnectionThatSendsNothingToAWaitingOne)
{
    // A queue with room for both, so that neither is refused.
    Poco::Net::HTTPServerParams::Ptr params = makeParams();
    params->setMaxQueued(4);
    Poco::ThreadPool onePool(1, 1);
    Orvi::Net::HttpServer roomy(new GateHandlerFactory(entered, open), onePool,
                                Poco::Net::ServerSocket(Poco::Net::SocketAddress("127.0.0.1", 0)), params);
    roomy.start();
    Poco::Net::StreamSocket silent(Poco::Net::SocketAddress("127.0.0.1", roomy.port()));
    silent.setReceiveTimeout(Poco::Timespan(10, 0));

    Poco::Net::StreamSocket waiting(Poco::Net::SocketAddress("127.0.0.1", roomy.port()));
    waiting.setReceiveTimeout(Poco::Timespan(10, 0));
    const std::string bytes = "GET /waiting HTTP/1.1\r\nHost: localhost\r\n\r\n";
    waiting.sendBytes(bytes.data(), static_cast<int>(bytes.size()));
    const std::string answer = receiveAnswer(waiting);
    const std::string silentGot = receiveAll(silent);
    roomy.stopAll(true);
    onePool.joinAll();

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 200 OK");
    EXPECT_EQ(silentGot, "");
}

TEST_F(HttpServerTest, KeepsAConnectionAliveWhileNoneWaits)
{
    Poco::Net::StreamSocket socket = request("/alone");

    const std::string answer = receiveAnswer(socket);

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 200 OK");
    EXPECT_NE(answer.find("\r\nConnection: Keep-Alive\r\n"), std::string::npos) << answer;
}

} // namespace
