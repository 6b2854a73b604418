#include "DataAccess/ServiceAccess.h"

#include "DataAccess/ResourceAccess.h"
#include "JSONDataCache/DBData/OrviDataConverter.h"
#include "JSONDataCache/DBData/Resource.h"

#include <Poco/Exception.h>

#include <string>
#include <vector>

namespace Orvi::Service::DataAccess
{

namespace
{

const std::string INVALID_SERVICE_POINTER = "Invalid service pointer";

} // namespace

ServiceAccess::ServiceAccess(const DBData::Service::Ptr& base, JSONDataCache::JSONDataCache& cache)
    : MicroServiceInfo(base.isNull() ? -1 : base->getDBID())
    , m_base(base)
    , m_cache(cache)
{
    if (m_base.isNull())
    {
        throw Poco::NullPointerException(INVALID_SERVICE_POINTER);
    }
    initAttributes();
}

ServiceAccess::~ServiceAccess() = default;

std::string ServiceAccess::getSpecification() const
{
    return row().getSpec();
}

std::vector<Poco::SharedPtr<Data::ResourceBase>> ServiceAccess::getResources() const
{
    const DBData::Service& service = row();
    if (m_resources.empty())
    {
        // Filled aside, so that a resource that cannot be shown leaves no half list behind.
        std::vector<Poco::SharedPtr<Data::ResourceBase>> resources;
        resources.reserve(service.getResources().size());
        for (const auto& entry : service.getResources())
        {
            if (!entry.second.isNull())
            {
                resources.emplace_back(new ResourceAccess(entry.second, service.getName(), m_cache));
            }
        }
        m_resources.swap(resources);
    }
    return m_resources;
}

void ServiceAccess::initAttributes()
{
    setName(m_base->getName());
    updateServiceId(m_base->getId().get());
    setPort(m_base->getPort());
    setDescription(m_base->getDescription());
    setPrivileges(DBData::OrviDataConverter::createStringArray(m_base->getPrivileges()));
    setVersions(DBData::OrviDataConverter::createStringArray(m_base->getVersions()));
    setServiceCategories(DBData::OrviDataConverter::createStringArray(m_base->getServiceCategories()));
}

const DBData::Service& ServiceAccess::row() const
{
    if (m_base.isNull())
    {
        throw Poco::NullPointerException(INVALID_SERVICE_POINTER);
    }
    return *m_base;
}

} // namespace Orvi::Service::DataAccess
