#pragma once

#include "Data/ElementBase.h"
#include "Data/ResourceBase.h"
#include "Data/ServiceBase.h"
#include "DataAccess/ServiceDataAccessPoint.h"
#include "JSONDataCache/JSONDataCache.h"

#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <map>
#include <string>
#include <vector>

namespace Orvi::Service
{

/// Typed access to one in-memory database. Views of services and resources are made on first request
/// and kept for the lifetime of the access point, so services and resources added later stay unseen.
/// Objects are read anew on every request. Takes no lock: one thread at a time.
class DBDataAccessPoint : public ServiceDataAccessPoint
{
public:
    using ServiceDataAccessPoint::deleteElement;
    using ServiceDataAccessPoint::getElement;
    using ServiceDataAccessPoint::insertElement;
    using ServiceDataAccessPoint::updateElement;

    explicit DBDataAccessPoint(JSONDataCache::JSONDataCache& cache);
    /// The cache must outlive the access point.

    ~DBDataAccessPoint() override;

    Data::ServiceBase::Ptr getService(const std::string& name) const override;
    /// The service of that name, or an empty pointer.

    std::vector<Data::ServiceBase::Ptr> getServices() const override;
    /// Every service in name order.

    Data::ResourceBase::Ptr getResource(const std::string& service,
                                        const std::string& resource) const override;
    /// The resource, or an empty pointer when the service or the resource is missing.

    std::vector<Data::ResourceBase::Ptr> getResources(const std::string& service) const override;
    /// The service's resources in name order; empty for an unknown service. Raises
    /// Poco::NullPointerException when one of them has no element.

    Data::ElementBase::Ptr getElement(Data::XObjectId id) const override;
    /// The object with that database id, or an empty pointer; service and resource come from its "uri".

    Data::ElementBase::Ptr getElement(const Poco::URI& uri) const override;
    /// The object at "/service/resource/object"; an empty pointer for any other address.

    Data::ElementBase::Ptr getElement(const std::string& service, const std::string& resource,
                                      const Poco::UUID& uuid) const override;

    Data::ElementBase::Ptr getElement(const std::string& service, const std::string& resource,
                                      const std::string& element) const override;
    /// The object of that UUID text in the resource, or an empty pointer.

    ElementCollection getElements(const std::string& service, const std::string& resource) const override;
    /// Every object of the resource; empty when the resource is missing.

    UpdateResult insertElement(const Data::ElementBase& element) override;
    /// Creates an object in the element's service and resource with a new UUID and the element's
    /// attributes except its UUID and URI. A failed write removes the object again.

    UpdateResult insertElement(const Poco::URI& uri, const Poco::JSON::Object::Ptr& json) override;
    /// Creates an object in the resource at "/service/resource"; INVALID_REQUEST for any other address.

    UpdateResult insertElement(const std::string& service, const std::string& resource,
                               const Poco::JSON::Object::Ptr& json) override;
    /// Creates an object with the values of json; a failed write removes the object again.

    UpdateResult updateElement(const Data::ElementBase& element) override;
    /// Writes the element's attributes except its UUID and URI into the stored object of the element's
    /// database id or, for id -1, of its UUID. Values already written stay when a later one fails.

    UpdateResult updateElement(Data::XObjectId id, const Poco::JSON::Object::Ptr& json) override;
    /// Writes the values of json into the object of that database id; NO_UPDATE when none changes.

    UpdateResult updateElement(const std::string& service, const std::string& resource,
                               const std::string& element, const Poco::JSON::Object::Ptr& json) override;
    /// Writes the values of json into the object of that UUID text in the resource.

    UpdateResult deleteElement(const Data::ElementBase& element) override;
    /// Removes the stored object of the element's UUID; NOT_FOUND when there is none.

private:
    void loadServices() const;
    /// Makes the views of all services unless there are some already.

    void loadResources(const std::string& service) const;
    /// Makes the views of the service's resources unless there are some already.

    JSONDataCache::JSONDataCache& m_cache;
    mutable std::vector<Data::ServiceBase::Ptr> m_serviceList;
    mutable std::map<std::string, std::vector<Data::ResourceBase::Ptr>> m_resourceList;
};

} // namespace Orvi::Service
