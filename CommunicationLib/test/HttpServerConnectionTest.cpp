#include "Http/HttpServerConnection.h"

#include "Http/HttpServer.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Exception.h>
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

#include <atomic>
#include <string>
#include <vector>

namespace
{

using Lines = std::vector<std::string>;
using ServiceDB::Test::LogCapture;

/// Answers "/fail" by throwing, and everything else with the request's address as text.
class EchoHandler : public Poco::Net::HTTPRequestHandler
{
public:
    explicit EchoHandler(std::atomic<int>& calls)
        : m_calls(calls)
    {
    }

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override
    {
        ++m_calls;
        if (request.getURI() == "/fail")
        {
            throw Poco::IllegalStateException("the handler broke");
        }
        response.setContentType("text/plain");
        response.setContentLength(static_cast<std::streamsize>(request.getURI().size()));
        response.send() << request.getURI();
    }

private:
    std::atomic<int>& m_calls;
};

class EchoHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    explicit EchoHandlerFactory(std::atomic<int>& calls)
        : m_calls(calls)
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new EchoHandler(m_calls);
    }

private:
    std::atomic<int>& m_calls;
};

class HttpServerConnectionTest : public ::testing::Test
{
protected:
    HttpServerConnectionTest()
        : pool(1, 4)
        , server(new EchoHandlerFactory(calls), pool,
                 Poco::Net::ServerSocket(Poco::Net::SocketAddress("127.0.0.1", 0)), makeParams())
    {
        server.start();
    }

    ~HttpServerConnectionTest() override
    {
        server.stopAll(true);
        pool.joinAll();
    }

    static Poco::Net::HTTPServerParams::Ptr makeParams()
    {
        Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
        params->setMaxThreads(4);
        params->setMaxQueued(4);
        params->setKeepAlive(true);
        params->setTimeout(Poco::Timespan(0, 300000));
        return params;
    }

    Poco::Net::StreamSocket connect() const
    {
        Poco::Net::StreamSocket socket(Poco::Net::SocketAddress("127.0.0.1", server.port()));
        socket.setReceiveTimeout(Poco::Timespan(10, 0));
        return socket;
    }

    static void send(Poco::Net::StreamSocket& socket, const std::string& bytes)
    {
        socket.sendBytes(bytes.data(), static_cast<int>(bytes.size()));
    }

    /// Reads until the server closes the connection.
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

    /// Reads one answer whose body is the given number of bytes long.
    static std::string receiveAnswer(Poco::Net::StreamSocket& socket, std::size_t bodyLength)
    {
        std::string received;
        char buffer[4096];
        while (received.find("\r\n\r\n") == std::string::npos ||
               received.size() < received.find("\r\n\r\n") + 4 + bodyLength)
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

    std::string exchange(const std::string& bytes) const
    {
        Poco::Net::StreamSocket socket = connect();
        send(socket, bytes);
        return receiveAll(socket);
    }

    static std::string statusLine(const std::string& answer) { return answer.substr(0, answer.find("\r\n")); }

    static std::string body(const std::string& answer) { return answer.substr(answer.find("\r\n\r\n") + 4); }

    static bool closes(const std::string& answer)
    {
        return answer.find("\r\nConnection: Close\r\n") != std::string::npos;
    }

    std::atomic<int> calls{0};
    Poco::ThreadPool pool;
    Orvi::Net::HttpServer server;
};

class HttpServerConnectionContentLengthTest : public HttpServerConnectionTest,
                                              public ::testing::WithParamInterface<std::string>
{
};

TEST_P(HttpServerConnectionContentLengthTest, AnswersALengthThatIsNotANumberWith400AndCloses)
{
    const std::string answer =
        exchange("POST /speed HTTP/1.1\r\nHost: localhost\r\nContent-Length: " + GetParam() + "\r\n\r\n{}");

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 400 Bad Request");
    EXPECT_TRUE(closes(answer)) << answer;
    EXPECT_EQ(body(answer), "{\"code\":400,\"message\":\"malformed Content-Length\",\"status\":\"error\"}");
    EXPECT_EQ(calls, 0);
}

INSTANTIATE_TEST_SUITE_P(NotANumber, HttpServerConnectionContentLengthTest,
                         ::testing::Values("five", "12abc", "0x10", "1 2"));

TEST_F(HttpServerConnectionTest, LogsARefusedRequestWithTheClientsAddress)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);
    Poco::Net::StreamSocket socket = connect();

    send(socket, "POST /speed HTTP/1.1\r\nHost: localhost\r\nContent-Length: five\r\n\r\n");
    receiveAll(socket);

    EXPECT_EQ(capture.lines(), Lines{"Warning: Refused request from " + socket.address().toString() +
                                     ": malformed Content-Length"});
}

TEST_F(HttpServerConnectionTest, AnswersAHeadWithTooManyFieldsWith400AndCloses)
{
    std::string request = "GET /speed HTTP/1.1\r\n";
    for (int field = 0; field < 101; ++field)
    {
        request += "X-Field-" + std::to_string(field) + ": 1\r\n";
    }

    const std::string answer = exchange(request + "\r\n");

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 400 Bad Request");
    EXPECT_TRUE(closes(answer)) << answer;
    EXPECT_EQ(body(answer), "{\"code\":400,\"message\":\"malformed request head\",\"status\":\"error\"}");
    EXPECT_EQ(calls, 0);
}

TEST_F(HttpServerConnectionTest, RefusesAMalformedVersionBeforeAnyHandlerSeesTheRequest)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const std::string answer =
        exchange("GET /speed : 1GET / HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\n\r\n");

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 400 Bad Request");
    EXPECT_TRUE(closes(answer)) << answer;
    EXPECT_EQ(body(answer), "{\"code\":400,\"message\":\"malformed HTTP version\",\"status\":\"error\"}");
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Refused request (/speed): malformed HTTP version"});
}

TEST_F(HttpServerConnectionTest, AnswersAHeadThatStallsBeyondTheTimeOutWith408AndCloses)
{
    const std::string answer = exchange("GET /speed HTTP/1.1\r\nHost: local");

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 408 Request Time-out");
    EXPECT_TRUE(closes(answer)) << answer;
    EXPECT_EQ(body(answer), "{\"code\":408,\"message\":\"request head timed out\",\"status\":\"error\"}");
    EXPECT_EQ(calls, 0);
}

TEST_F(HttpServerConnectionTest, ClosesAConnectionWithoutAnswerWhenTheClientLeavesBeforeItsRequest)
{
    Poco::Net::StreamSocket socket = connect();

    socket.shutdownSend();

    EXPECT_EQ(receiveAll(socket), "");
    EXPECT_EQ(calls, 0);
}

TEST_F(HttpServerConnectionTest, AnswersAHandlerThatThrowsBeforeAnsweringWith500AndLogsWhatItThrew)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const std::string answer = exchange("GET /fail HTTP/1.1\r\nHost: localhost\r\n\r\n");

    EXPECT_EQ(statusLine(answer), "HTTP/1.1 500 Internal Server Error");
    EXPECT_TRUE(closes(answer)) << answer;
    EXPECT_EQ(body(answer), "{\"code\":500,\"message\":\"\",\"status\":\"error\"}");
    ASSERT_FALSE(capture.lines().empty());
    EXPECT_EQ(capture.lines().front(), "Warning: Request failed (/fail): Illegal state: the handler broke");
}

TEST_F(HttpServerConnectionTest, ServesTheRequestsOfAConnectionOneAfterTheOtherWhileNobodyWaits)
{
    Poco::Net::StreamSocket socket = connect();

    send(socket, "GET /first HTTP/1.1\r\nHost: localhost\r\n\r\n");
    const std::string first = receiveAnswer(socket, 6);
    send(socket, "GET /second HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
    const std::string second = receiveAll(socket);

    EXPECT_EQ(statusLine(first), "HTTP/1.1 200 OK");
    EXPECT_NE(first.find("\r\nConnection: Keep-Alive\r\n"), std::string::npos) << first;
    EXPECT_EQ(body(first), "/first");
    EXPECT_EQ(statusLine(second), "HTTP/1.1 200 OK");
    EXPECT_EQ(body(second), "/second");
    EXPECT_EQ(calls, 2);
}

TEST_F(HttpServerConnectionTest, EndsAnIdleConnectionWhenTheServerStops)
{
    Poco::Net::StreamSocket socket = connect();
    send(socket, "GET /first HTTP/1.1\r\nHost: localhost\r\n\r\n");
    receiveAnswer(socket, 6);

    server.stopAll(true);

    EXPECT_EQ(receiveAll(socket), "");
}

} // namespace
