#include "ServiceRegistryConnection.h"

#include "TestSupport/FullBacklogListener.h"
#include "TestSupport/RegistryAddressGuard.h"

#include <Poco/Exception.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Timespan.h>

#include <gtest/gtest.h>

#include <string>

using Orvi::ServiceRegistryConnection;
using ServiceDB::Test::RegistryAddressGuard;

namespace
{

// Keeps the process-wide registry address of one test from leaking into the next.
class ServiceRegistryConnectionTest : public ::testing::Test
{
private:
    RegistryAddressGuard m_address;
};

const Poco::Timespan SHORT_WAIT(0, 200000);

std::string refusalText()
{
    try
    {
        ServiceRegistryConnection::connect();
    }
    catch (const Poco::Net::ConnectionRefusedException& error)
    {
        return error.displayText();
    }
    return "connected";
}

} // namespace

TEST_F(ServiceRegistryConnectionTest, PointsAtTheLocalRegistryByDefault)
{
    EXPECT_EQ(ServiceRegistryConnection::ADDRESS, "127.0.0.1");
    EXPECT_EQ(ServiceRegistryConnection::PORT, 7410);
    EXPECT_EQ(ServiceRegistryConnection::DEFAULT_PORT, 7410);
}

TEST_F(ServiceRegistryConnectionTest, ConnectsToTheConfiguredAddressAndPort)
{
    Poco::Net::ServerSocket server(Poco::Net::SocketAddress("127.0.0.1", 0));
    ServiceRegistryConnection::PORT = server.address().port();

    Poco::SharedPtr<Poco::Net::StreamSocket> sut = ServiceRegistryConnection::connect();

    ASSERT_FALSE(sut.isNull());
    EXPECT_EQ(sut->peerAddress().toString(), server.address().toString());
    Poco::Net::StreamSocket accepted = server.acceptConnection();
    const std::string greeting = "hello";
    sut->sendBytes(greeting.data(), static_cast<int>(greeting.size()));
    char received[5] = {};
    EXPECT_EQ(accepted.receiveBytes(received, sizeof(received)), 5);
    EXPECT_EQ(std::string(received, sizeof(received)), greeting);
}

TEST_F(ServiceRegistryConnectionTest, RaisesConnectionRefusedWhenNobodyListens)
{
    const Poco::UInt16 port = RegistryAddressGuard::closedPort();
    ServiceRegistryConnection::PORT = port;

    EXPECT_THROW(ServiceRegistryConnection::connect(), Poco::Net::ConnectionRefusedException);
    EXPECT_EQ(refusalText(), "Connection refused: 127.0.0.1:" + std::to_string(port));
}

TEST_F(ServiceRegistryConnectionTest, ConnectsWithinTheTimeoutToTheConfiguredAddressAndPort)
{
    Poco::Net::ServerSocket server(Poco::Net::SocketAddress("127.0.0.1", 0));
    ServiceRegistryConnection::PORT = server.address().port();

    Poco::SharedPtr<Poco::Net::StreamSocket> sut = ServiceRegistryConnection::connect(SHORT_WAIT);

    ASSERT_FALSE(sut.isNull());
    EXPECT_EQ(sut->peerAddress().toString(), server.address().toString());
    Poco::Net::StreamSocket accepted = server.acceptConnection();
    EXPECT_EQ(accepted.peerAddress().toString(), sut->address().toString());
}

TEST_F(ServiceRegistryConnectionTest, RaisesConnectionRefusedWithinTheTimeoutWhenNobodyListens)
{
    ServiceRegistryConnection::PORT = RegistryAddressGuard::closedPort();

    try
    {
        ServiceRegistryConnection::connect(SHORT_WAIT);
        FAIL() << "connected";
    }
    catch (const Poco::Net::ConnectionRefusedException& error)
    {
        EXPECT_EQ(error.displayText(), "Connection refused");
    }
}

TEST_F(ServiceRegistryConnectionTest, RaisesTimeoutWhenTheRegistryDoesNotAcceptInTime)
{
    ServiceDB::Test::FullBacklogListener listener;
    ServiceRegistryConnection::PORT = listener.port();

    try
    {
        ServiceRegistryConnection::connect(SHORT_WAIT);
        FAIL() << "connected";
    }
    catch (const Poco::TimeoutException& error)
    {
        EXPECT_EQ(error.displayText(),
                  "Timeout: connect timed out: 127.0.0.1:" + std::to_string(listener.port()));
    }
}
