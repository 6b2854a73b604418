#include "TestSupport/RegistryAddressGuard.h"

#include "ServiceRegistryConnection.h"

#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>

namespace ServiceDB::Test
{

using Orvi::ServiceRegistryConnection;

RegistryAddressGuard::RegistryAddressGuard()
    : m_address(ServiceRegistryConnection::ADDRESS)
    , m_port(ServiceRegistryConnection::PORT)
{
}

RegistryAddressGuard::RegistryAddressGuard(Poco::UInt16 port)
    : RegistryAddressGuard()
{
    ServiceRegistryConnection::ADDRESS = "127.0.0.1";
    ServiceRegistryConnection::PORT = port;
}

RegistryAddressGuard::~RegistryAddressGuard()
{
    ServiceRegistryConnection::ADDRESS = m_address;
    ServiceRegistryConnection::PORT = m_port;
}

Poco::UInt16 RegistryAddressGuard::closedPort()
{
    Poco::Net::ServerSocket server(Poco::Net::SocketAddress("127.0.0.1", 0));
    const Poco::UInt16 port = server.address().port();
    server.close();
    return port;
}

} // namespace ServiceDB::Test
