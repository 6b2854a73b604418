#pragma once

#include <Poco/Net/StreamSocket.h>
#include <Poco/SharedPtr.h>
#include <Poco/Timespan.h>
#include <Poco/Types.h>

#include <string>

namespace Orvi
{

/// Where the central service registry listens, and the connection to it.
class ServiceRegistryConnection
{
public:
    static std::string ADDRESS;
    /// Host of the registry; "127.0.0.1" unless the embedding process sets another before it registers.

    static Poco::UInt16 PORT;
    /// TCP port of the registry; DEFAULT_PORT unless the embedding process sets another before it
    /// registers.

    static constexpr Poco::UInt16 DEFAULT_PORT = 7410;
    /// The port the registry listens on unless the vehicle's setup says otherwise.

    static Poco::SharedPtr<Poco::Net::StreamSocket> connect();
    /// A socket connected to ADDRESS:PORT. Throws Poco::Net::NetException or a subclass of it:
    /// Poco::Net::ConnectionRefusedException when nobody listens, Poco::Net::HostNotFoundException for a
    /// name that does not resolve.

    static Poco::SharedPtr<Poco::Net::StreamSocket> connect(const Poco::Timespan& timeout);
    /// As connect(), waiting at most timeout for the connection; Poco::TimeoutException when it runs out.
};

} // namespace Orvi
