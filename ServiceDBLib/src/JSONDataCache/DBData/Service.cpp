#include "JSONDataCache/DBData/Service.h"

#include <Poco/Bugcheck.h>

namespace Orvi::DBData
{

Service::~Service() = default;

ResourcePtr Service::getResource(const std::string& resourceName) const
{
    const auto found = resources.find(resourceName);
    return found == resources.end() ? ResourcePtr() : found->second;
}

void Service::addResource(const ResourcePtr& resource)
{
    if (resource.isNull())
    {
        return;
    }
    if (&resource->getService() != this)
    {
        poco_bugcheck_msg("Can not add resource with different parent");
    }
    resources.emplace(resource->getName(), resource);
}

bool Service::setServiceCategories(const StringList& list)
{
    StringList copy(list);
    return setServiceCategories(std::move(copy));
}

bool Service::setServiceCategories(StringList&& list)
{
    serviceCategories = std::move(list);
    return true;
}

} // namespace Orvi::DBData
