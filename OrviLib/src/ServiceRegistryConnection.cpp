#include "ServiceRegistryConnection.h"

#include <Poco/Net/SocketAddress.h>

namespace Orvi
{

std::string ServiceRegistryConnection::ADDRESS = "127.0.0.1";
Poco::UInt16 ServiceRegistryConnection::PORT = ServiceRegistryConnection::DEFAULT_PORT;

Poco::SharedPtr<Poco::Net::StreamSocket> ServiceRegistryConnection::connect()
{
    Poco::SharedPtr<Poco::Net::StreamSocket> socket = new Poco::Net::StreamSocket();
    socket->connect(Poco::Net::SocketAddress(ADDRESS, PORT));
    return socket;
}

Poco::SharedPtr<Poco::Net::StreamSocket> ServiceRegistryConnection::connect(const Poco::Timespan& timeout)
{
    Poco::SharedPtr<Poco::Net::StreamSocket> socket = new Poco::Net::StreamSocket();
    socket->connect(Poco::Net::SocketAddress(ADDRESS, PORT), timeout);
    return socket;
}

} // namespace Orvi
