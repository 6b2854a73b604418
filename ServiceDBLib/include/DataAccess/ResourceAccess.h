#pragma once

#include "Data/DataTypes.h"
#include "Data/ElementBase.h"
#include "Data/GenericObject.h"
#include "Data/ResourceBase.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/JSONDataCache.h"

#include <Poco/SharedPtr.h>

#include <string>
#include <vector>

namespace Orvi::Service::DataAccess
{

/// A typed, read-only view of one resource; its objects are read through the cache when asked for.
class ResourceAccess : public Data::GenericObject<Data::ResourceBase>
{
public:
    ResourceAccess(const DBData::Resource::Ptr& base, const std::string& service,
                   JSONDataCache::JSONDataCache& cache);
    /// Raises Poco::NullPointerException for an empty pointer and for a resource without element.

    ResourceAccess(const ResourceAccess&) = default;
    ResourceAccess(ResourceAccess&&) = default;
    ResourceAccess& operator=(const ResourceAccess&) = default;
    ResourceAccess& operator=(ResourceAccess&&) = default;
    ~ResourceAccess() override;

    std::string getDescription() const override;
    std::string getSpecification() const override;

    bool hasElement(Data::XObjectId id) const override;
    /// True when the object of that id belongs to this resource.

    Poco::SharedPtr<Data::ElementBase> getElement(Data::XObjectId id) const override;
    /// A view of the object, or an empty pointer when it is not one of this resource's objects.

    std::vector<Poco::SharedPtr<Data::ElementBase>> getElements() const override;
    /// Views of all objects in the order of their UUIDs; raises Poco::NotFoundException when one of
    /// them cannot be read.

    const DBData::Resource::Ptr& getBase() const { return m_base; }
    /// The stored resource behind the view.

private:
    void initAttributes();
    const DBData::Resource& row() const;

    std::string m_serviceName;
    DBData::Resource::Ptr m_base;
    JSONDataCache::JSONDataCache* m_cache;
};

} // namespace Orvi::Service::DataAccess
