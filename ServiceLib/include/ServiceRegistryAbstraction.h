#pragma once

#include "Data/MicroServiceInfo.h"
#include "ServiceRegistryConnection.h"

#include <Poco/Timespan.h>

#include <string>
#include <vector>

namespace Orvi::Service
{

/// The client of the service registry at ServiceRegistryConnection::ADDRESS and PORT. It speaks the
/// registry's HTTP/JSON protocol: a POST per service to register, a DELETE to take it back. Every
/// failure gives false and one log line; nothing waits longer than the time-outs.
class ServiceRegistryAbstraction : public ServiceRegistryConnection
{
public:
    static const std::string REGISTRY_PATH;
    /// "/registry/services", the resource of registered services.

    static const Poco::Timespan DEFAULT_CONNECT_TIMEOUT;
    /// 2 s.
    static const Poco::Timespan DEFAULT_RECEIVE_TIMEOUT;
    /// 5 s, for each read and write of an exchange.

    ServiceRegistryAbstraction();
    virtual ~ServiceRegistryAbstraction();

    void setTimeouts(const Poco::Timespan& connect, const Poco::Timespan& receive);

    const Poco::Timespan& getConnectTimeout() const { return m_connectTimeout; }
    const Poco::Timespan& getReceiveTimeout() const { return m_receiveTimeout; }

    virtual bool registerServices(std::vector<MicroServiceInfo>& list);
    /// Registers every service of the list; on true each entry holds the id that the registry assigned.
    /// All or nothing: when one is refused, those registered before it are unregistered again and the
    /// entries keep their ids.

    virtual bool unregisterService(const MicroServiceInfo& info);
    /// Removes the registration under the info's id. True as well when the registry no longer knows it.

private:
    Poco::Timespan m_connectTimeout;
    Poco::Timespan m_receiveTimeout;
};

} // namespace Orvi::Service
