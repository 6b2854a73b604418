#include "ServiceRegistrationHelper.h"

#include "Logging/LogStream.h"

#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <algorithm>

namespace Orvi::Service
{

ServiceRegistrationHelper::ServiceRegistrationHelper() = default;

ServiceRegistrationHelper::~ServiceRegistrationHelper() = default;

bool ServiceRegistrationHelper::registerService(Data::ServiceBase& service)
{
    // A service that has no id yet gets one from the registry all the same.
    const Poco::UUID id = service.hasValue(Data::XObjectBase::KEY_ID) ? service.getId() : Poco::UUID();
    MicroServiceInfo info(id, Poco::URI(), service.getName(), service.getPort(), service.getDescription());
    info.setVersions(service.getVersions());
    info.setPrivileges(service.getPrivileges());
    info.setServiceCategories(service.getServiceCategories());

    std::vector<MicroServiceInfo> list{info};
    if (!m_registry.registerServices(list))
    {
        return false;
    }
    service.updateServiceId(list.front().getId());
    m_microServiceInfoList.push_back(list.front());
    return true;
}

bool ServiceRegistrationHelper::unregisterService(const std::string& name, Poco::UInt16 port)
{
    const auto found = std::find_if(m_microServiceInfoList.begin(), m_microServiceInfoList.end(),
                                    [&](const MicroServiceInfo& info)
                                    { return info.getName() == name && info.getPort() == port; });
    if (found == m_microServiceInfoList.end())
    {
        LOG_WARNING("No registration of service '" << name << "' on port " << port << " to take back");
        return false;
    }
    if (!m_registry.unregisterService(*found))
    {
        return false;
    }
    m_microServiceInfoList.erase(found);
    return true;
}

bool ServiceRegistrationHelper::unregisterServices()
{
    std::vector<MicroServiceInfo> kept;
    for (const MicroServiceInfo& info : m_microServiceInfoList)
    {
        if (!m_registry.unregisterService(info))
        {
            kept.push_back(info);
        }
    }
    m_microServiceInfoList = std::move(kept);
    return m_microServiceInfoList.empty();
}

} // namespace Orvi::Service
