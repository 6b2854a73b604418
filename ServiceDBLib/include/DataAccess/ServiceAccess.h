#pragma once

#include "Data/MicroServiceInfo.h"
#include "Data/ResourceBase.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/JSONDataCache.h"

#include <Poco/SharedPtr.h>

#include <string>
#include <vector>

namespace Orvi::Service::DataAccess
{

/// A typed, read-only view of one service: its registry description, read at construction, and views
/// of its resources, made on the first request.
class ServiceAccess : public MicroServiceInfo
{
public:
    ServiceAccess(const DBData::Service::Ptr& base, JSONDataCache::JSONDataCache& cache);
    /// Raises Poco::NullPointerException for an empty pointer.

    ServiceAccess(const ServiceAccess&) = default;
    ServiceAccess(ServiceAccess&&) = default;
    ~ServiceAccess() override;

    std::string getSpecification() const override;

    std::vector<Poco::SharedPtr<Data::ResourceBase>> getResources() const override;
    /// Views of the resources in the order of their names; raises Poco::NullPointerException for a
    /// resource without element.

    const DBData::Service::Ptr& getBase() const { return m_base; }
    /// The stored service behind the view.

private:
    void initAttributes();
    const DBData::Service& row() const;

    DBData::Service::Ptr m_base;
    JSONDataCache::JSONDataCache& m_cache;
    mutable std::vector<Poco::SharedPtr<Data::ResourceBase>> m_resources;
};

} // namespace Orvi::Service::DataAccess
