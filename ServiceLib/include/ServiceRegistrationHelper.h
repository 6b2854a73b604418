#pragma once

#include "Data/MicroServiceInfo.h"
#include "Data/ServiceBase.h"
#include "ServiceRegistryAbstraction.h"

#include <Poco/Types.h>

#include <string>
#include <vector>

namespace Orvi::Service
{

/// The services that this process has registered at the service registry, and the way to take them
/// back when it stops.
class ServiceRegistrationHelper
{
public:
    ServiceRegistrationHelper();
    ServiceRegistrationHelper(const ServiceRegistrationHelper&) = delete;
    ServiceRegistrationHelper& operator=(const ServiceRegistrationHelper&) = delete;
    virtual ~ServiceRegistrationHelper();

    bool registerService(Data::ServiceBase& service);
    /// Registers one service and writes the id that the registry assigned into it.

    bool unregisterService(const std::string& name, Poco::UInt16 port);
    /// Takes back the registration of that name and port; false when this process holds none or the
    /// registry cannot be reached, and then the registration is kept.

    bool unregisterServices();
    /// Takes back every registration of this process; true when none is left.

    const std::vector<MicroServiceInfo>& getRegisteredServices() const { return m_microServiceInfoList; }

    ServiceRegistryAbstraction& registry() { return m_registry; }
    /// The registry client, to set its time-outs.

protected:
    std::vector<MicroServiceInfo> m_microServiceInfoList;
    ServiceRegistryAbstraction m_registry;
};

} // namespace Orvi::Service
