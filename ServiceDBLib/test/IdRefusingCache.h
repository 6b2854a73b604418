#pragma once

#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/JSONDataCache.h"

#include <string>

namespace ServiceDB::Test
{

// A cache that will not give the one named service a new UUID, as if its row could not be written.
class IdRefusingCache : public Orvi::JSONDataCache::JSONDataCache
{
public:
    IdRefusingCache(Orvi::DBData::ServiceMap& services, const std::string& refusedService)
        : Orvi::JSONDataCache::JSONDataCache(services)
        , m_refusedService(refusedService)
    {
    }

    bool updateServiceUUID(const std::string& serviceName, const std::string& newuuid) override
    {
        return serviceName != m_refusedService &&
               Orvi::JSONDataCache::JSONDataCache::updateServiceUUID(serviceName, newuuid);
    }

private:
    std::string m_refusedService;
};

} // namespace ServiceDB::Test
