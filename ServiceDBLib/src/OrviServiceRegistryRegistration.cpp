#include "OrviServiceRegistryRegistration.h"

#include "ApplicationServices.h"
#include "Data/AttributeValueStringable.h"
#include "JSONDataCache/DBData/OrviDataConverter.h"
#include "Logging/LogStream.h"

#include <Poco/Any.h>
#include <Poco/Exception.h>
#include <Poco/SharedPtr.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <typeinfo>

namespace Orvi::Service
{

namespace
{

const std::string NO_CACHE = "No JSONDataCache available";
const std::string SELECTION_FAILED = "Selection of services failed.";
const std::string REGISTRATION_FAILED = "Registration of services failed.";
const std::string INVALID_SERVICE_POINTER = "Invalid service pointer";
const std::string WRONG_LOCATOR_ENTRY = "Failed to convert between Any types";

} // namespace

OrviServiceRegistryRegistration::OrviServiceRegistryRegistration() = default;

OrviServiceRegistryRegistration::~OrviServiceRegistryRegistration() = default;

void OrviServiceRegistryRegistration::setCache(JSONDataCache::JSONDataCache& cache)
{
    m_cache = &cache;
}

bool OrviServiceRegistryRegistration::registerServicesImpl()
{
    if (m_cache == nullptr)
    {
        locateCache();
    }
    std::vector<MicroServiceInfo> list;
    if (!getServiceListImpl(list))
    {
        return false;
    }
    if (m_cache == nullptr)
    {
        locateCache();
    }
    return registerServicesImpl(list);
}

bool OrviServiceRegistryRegistration::registerServicesImpl(std::vector<MicroServiceInfo>& list)
{
    if (m_cache == nullptr)
    {
        LOG_ERROR(NO_CACHE);
        return false;
    }
    if (list.empty())
    {
        return false;
    }
    if (!m_registry.registerServices(list))
    {
        LOG_ERROR(REGISTRATION_FAILED);
        return false;
    }
    m_microServiceInfoList.reserve(m_microServiceInfoList.size() + list.size());
    for (const MicroServiceInfo& info : list)
    {
        if (!m_cache->updateServiceUUID(info.getName(), info.getIdString()))
        {
            LOG_ERROR("Failed to update id of service '" << info.getName() << "'");
            return false;
        }
        // Copies of an info are deep: the entry shares no attribute with the caller's list.
        m_microServiceInfoList.push_back(info);
    }
    return true;
}

bool OrviServiceRegistryRegistration::getServiceListImpl(std::vector<MicroServiceInfo>& list) const
{
    if (m_cache == nullptr)
    {
        LOG_ERROR(NO_CACHE);
        return false;
    }
    std::vector<DBData::Service::Ptr> services;
    if (!m_cache->selectServices(services))
    {
        LOG_ERROR(SELECTION_FAILED);
        return false;
    }
    list.reserve(services.size());
    for (const DBData::Service::Ptr& service : services)
    {
        if (service.isNull())
        {
            throw Poco::NullPointerException(INVALID_SERVICE_POINTER);
        }
        MicroServiceInfo info(Poco::UUID(), Poco::URI(), service->getName(), service->getPort(),
                              service->getDescription());
        info.getAttributesRef().setValue(Data::XObjectBase::KEY_ID,
                                         Data::AttributeValueUUID(service->getId().get()));
        info.setVersions(DBData::OrviDataConverter::createStringArray(service->getVersions()));
        info.setPrivileges(DBData::OrviDataConverter::createStringArray(service->getPrivileges()));
        info.setServiceCategories(
            DBData::OrviDataConverter::createStringArray(service->getServiceCategories()));
        list.push_back(info);
    }
    return true;
}

void OrviServiceRegistryRegistration::locateCache()
{
    Util::ServiceLocator* locator = Util::ApplicationServices::getLocator();
    Poco::Any entry;
    if (locator == nullptr || !locator->find(&typeid(JSONDataCache::JSONDataCache), entry))
    {
        return;
    }
    // The pointer form of the cast fails without throwing, so that the message does not depend on Poco's
    // version or on mangled type names.
    auto* cache = Poco::AnyCast<Poco::SharedPtr<JSONDataCache::JSONDataCache>>(&entry);
    if (cache == nullptr)
    {
        throw Poco::BadCastException(WRONG_LOCATOR_ENTRY);
    }
    // The locator keeps the cache alive; this object only borrows it.
    m_cache = cache->get();
}

} // namespace Orvi::Service
