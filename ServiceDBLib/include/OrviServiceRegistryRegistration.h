#pragma once

#include "Data/MicroServiceInfo.h"
#include "JSONDataCache/JSONDataCache.h"
#include "ServiceRegistrationHelper.h"

#include <cstddef>
#include <type_traits>
#include <vector>

namespace Orvi::Service
{

/// Announces the services of a database at the service registry and writes the ids that the registry
/// assigned back into the database, so that the services answer under them.
class OrviServiceRegistryRegistration : public ServiceRegistrationHelper
{
public:
    OrviServiceRegistryRegistration();
    ~OrviServiceRegistryRegistration() override;

    void setCache(JSONDataCache::JSONDataCache& cache);
    /// The cache must outlive this object. Without one, registration looks it up in the application's
    /// service locator.

    bool registerServicesImpl();
    /// Registers every service of the cache; false without cache or services, or when the registry
    /// refuses.

    bool registerServicesImpl(std::vector<MicroServiceInfo>& list);
    /// Registers the list and takes each assigned id as the UUID of the service of that name.

    bool getServiceListImpl(std::vector<MicroServiceInfo>& list) const;
    /// Appends a description of every service of the cache.

    template <typename Info = MicroServiceInfo>
    bool registerServices(std::vector<Info>& list);
    /// As registerServicesImpl(list), for descriptions of any class derived from MicroServiceInfo; the
    /// assigned ids are written into the entries given.

    template <typename Info = MicroServiceInfo>
    bool getServiceList(std::vector<Info>& list) const;
    /// As getServiceListImpl, for a class that can be made from a MicroServiceInfo.

private:
    void locateCache();

    JSONDataCache::JSONDataCache* m_cache = nullptr;
};

template <typename Info>
bool OrviServiceRegistryRegistration::registerServices(std::vector<Info>& list)
{
    static_assert(std::is_base_of_v<MicroServiceInfo, Info>, "a service description is a MicroServiceInfo");
    if constexpr (std::is_same_v<Info, MicroServiceInfo>)
    {
        return registerServicesImpl(list);
    }
    else
    {
        std::vector<MicroServiceInfo> infos(list.begin(), list.end());
        const bool registered = registerServicesImpl(infos);
        for (std::size_t i = 0; registered && i < list.size(); ++i)
        {
            list[i].updateServiceId(infos[i].getId());
        }
        return registered;
    }
}

template <typename Info>
bool OrviServiceRegistryRegistration::getServiceList(std::vector<Info>& list) const
{
    static_assert(std::is_constructible_v<Info, const MicroServiceInfo&>,
                  "a service description is made from a MicroServiceInfo");
    if constexpr (std::is_same_v<Info, MicroServiceInfo>)
    {
        return getServiceListImpl(list);
    }
    else
    {
        std::vector<MicroServiceInfo> infos;
        if (!getServiceListImpl(infos))
        {
            return false;
        }
        list.reserve(list.size() + infos.size());
        for (const MicroServiceInfo& info : infos)
        {
            list.emplace_back(info);
        }
        return true;
    }
}

} // namespace Orvi::Service
