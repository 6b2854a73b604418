#include "Http/OverflowConnectionFilter.h"

#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Net/TCPServer.h>
#include <Poco/Net/TCPServerConnection.h>
#include <Poco/Net/TCPServerConnectionFactory.h>
#include <Poco/Net/TCPServerParams.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

class IdleConnection : public Poco::Net::TCPServerConnection
{
public:
    using Poco::Net::TCPServerConnection::TCPServerConnection;

    void run() override {}
};

std::string receiveAll(Poco::Net::StreamSocket& socket)
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

class OverflowConnectionFilterTest : public ::testing::Test
{
protected:
    /// A connection as the server would have accepted it, and its client's end.
    void connect()
    {
        client.connect(listener.address());
        client.setReceiveTimeout(Poco::Timespan(10, 0));
        accepted = listener.acceptConnection();
    }

    Poco::Net::ServerSocket listener{Poco::Net::SocketAddress("127.0.0.1", 0)};
    Poco::Net::StreamSocket client;
    Poco::Net::StreamSocket accepted;
};

TEST_F(OverflowConnectionFilterTest, LetsAConnectionInWhileTheServersQueueHasRoom)
{
    Poco::Net::TCPServerParams::Ptr params = new Poco::Net::TCPServerParams;
    params->setMaxQueued(1);
    Poco::Net::TCPServer server(new Poco::Net::TCPServerConnectionFactoryImpl<IdleConnection>, listener,
                                params);
    Orvi::Net::OverflowConnectionFilter sut(server);
    connect();

    EXPECT_TRUE(sut.accept(accepted));
}

TEST_F(OverflowConnectionFilterTest, AnswersAConnectionThatFindsTheQueueFullWith503AfterItsHead)
{
    Poco::Net::TCPServerParams::Ptr params = new Poco::Net::TCPServerParams;
    params->setMaxQueued(0);
    Poco::Net::TCPServer server(new Poco::Net::TCPServerConnectionFactoryImpl<IdleConnection>, listener,
                                params);
    Orvi::Net::OverflowConnectionFilter sut(server);
    connect();

    const bool letIn = sut.accept(accepted);
    accepted = Poco::Net::StreamSocket();
    const std::string head = "GET /speed HTTP/1.1\r\nHost: localhost\r\n\r\n";
    client.sendBytes(head.data(), static_cast<int>(head.size()));

    const std::string answer = receiveAll(client);
    client.close();

    EXPECT_FALSE(letIn);
    EXPECT_EQ(answer, "HTTP/1.1 503 Service Unavailable\r\n"
                      "Connection: Close\r\n"
                      "Content-Type: application/json; charset=utf-8\r\n"
                      "Content-Length: 67\r\n"
                      "\r\n"
                      "{\"code\":503,\"message\":\"connection queue overflow\",\"status\":\"error\"}");
}

TEST_F(OverflowConnectionFilterTest, ClosesAConnectionThatFindsTheQueueFullOnceStopped)
{
    Poco::Net::TCPServerParams::Ptr params = new Poco::Net::TCPServerParams;
    params->setMaxQueued(0);
    Poco::Net::TCPServer server(new Poco::Net::TCPServerConnectionFactoryImpl<IdleConnection>, listener,
                                params);
    Orvi::Net::OverflowConnectionFilter sut(server);
    sut.stop();
    connect();

    const bool letIn = sut.accept(accepted);
    accepted = Poco::Net::StreamSocket();

    EXPECT_FALSE(letIn);
    EXPECT_EQ(receiveAll(client), "");
}

} // namespace
