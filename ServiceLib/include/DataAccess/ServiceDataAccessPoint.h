#pragma once

#include "Data/DataTypes.h"
#include "Data/ElementBase.h"
#include "Data/ResourceBase.h"
#include "Data/ServiceBase.h"
#include "Data/XObjectBase.h"

#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <string>
#include <vector>

namespace Orvi::Service
{

/// Typed access of a microservice's own code to its database: views to read, and writes that tell how
/// they went. The forms that address an object by URI, by UUID or by database id reduce to the forms
/// by names and by element, which a database implements.
class ServiceDataAccessPoint
{
public:
    /// The outcome of one write. OK and NO_UPDATE count as success.
    class UpdateResult
    {
    public:
        enum Value
        {
            OK = 0,
            NO_UPDATE = 1,
            NOT_FOUND = 2,
            DUPLICATE = 3,
            INVALID_REQUEST = 4,
            INVALID_OBJECT = 5,
            PROCESSING_ERROR = 6
        };

        explicit UpdateResult(Value value, Data::XObjectBase::Ptr createdObject = {},
                              std::string message = {});
        UpdateResult(UpdateResult&&) = default;
        UpdateResult& operator=(UpdateResult&&) = default;
        UpdateResult(const UpdateResult&) = delete;
        UpdateResult& operator=(const UpdateResult&) = delete;

        bool success() const;
        /// True for OK and NO_UPDATE.

        Value value() const;
        const std::string& message() const;

        Data::XObjectBase::Ptr created;
        /// The new object of an insert that worked; empty otherwise.

    private:
        Value m_value;
        std::string m_message;
    };

    using ElementCollection = std::vector<Data::ElementBase::Ptr>;

    ServiceDataAccessPoint() = default;
    ServiceDataAccessPoint(const ServiceDataAccessPoint&) = delete;
    ServiceDataAccessPoint& operator=(const ServiceDataAccessPoint&) = delete;
    virtual ~ServiceDataAccessPoint();

    virtual Data::ServiceBase::Ptr getService(const std::string& name) const = 0;
    /// The service of that name, or an empty pointer.

    virtual std::vector<Data::ServiceBase::Ptr> getServices() const = 0;

    virtual Data::ResourceBase::Ptr getResource(const std::string& service,
                                                const std::string& resource) const = 0;
    /// The resource, or an empty pointer when the service or the resource is missing.

    virtual std::vector<Data::ResourceBase::Ptr> getResources(const std::string& service) const = 0;

    virtual Data::ElementBase::Ptr getElement(Data::XObjectId id) const = 0;
    /// The object with that database id, or an empty pointer.

    virtual Data::ElementBase::Ptr getElement(const Poco::URI& uri) const = 0;
    /// The object at "/service/resource/object"; an empty pointer for any other address.

    virtual Data::ElementBase::Ptr getElement(const std::string& service, const std::string& resource,
                                              const Poco::UUID& uuid) const = 0;

    virtual Data::ElementBase::Ptr getElement(const std::string& service, const std::string& resource,
                                              const std::string& element) const = 0;

    virtual ElementCollection getElements(const std::string& service, const std::string& resource) const = 0;
    /// Every object of the resource; empty when the resource is missing.

    virtual UpdateResult insertElement(const Data::ElementBase& element) = 0;
    /// Creates an object in the element's service and resource with the element's attributes.

    virtual UpdateResult insertElement(const Poco::URI& uri, const Poco::JSON::Object::Ptr& json) = 0;
    /// Creates an object in the resource at "/service/resource" with the values of json.

    virtual UpdateResult insertElement(const std::string& service, const std::string& resource,
                                       const Poco::JSON::Object::Ptr& json) = 0;

    virtual UpdateResult updateElement(const Data::ElementBase& element) = 0;
    /// Writes the element's attributes into the stored object of the same id.

    virtual UpdateResult updateElement(Data::XObjectId id, const Poco::JSON::Object::Ptr& json) = 0;

    virtual UpdateResult updateElement(const Poco::URI& uri, const Poco::JSON::Object::Ptr& json);
    /// INVALID_REQUEST unless uri addresses one object.

    virtual UpdateResult updateElement(const std::string& service, const std::string& resource,
                                       const Poco::UUID& uuid, const Poco::JSON::Object::Ptr& json);

    virtual UpdateResult updateElement(const std::string& service, const std::string& resource,
                                       const std::string& element, const Poco::JSON::Object::Ptr& json) = 0;

    virtual UpdateResult deleteElement(const Data::ElementBase& element) = 0;

    virtual UpdateResult deleteElement(Data::XObjectId id);
    /// NOT_FOUND when no object has that database id.

    virtual UpdateResult deleteElement(const Poco::URI& uri);
    /// INVALID_REQUEST unless uri addresses one object; NOT_FOUND when there is none.

    virtual UpdateResult deleteElement(const std::string& service, const std::string& resource,
                                       const Poco::UUID& uuid);

    virtual UpdateResult deleteElement(const std::string& service, const std::string& resource,
                                       const std::string& element);
    /// NOT_FOUND when there is no such object.
};

} // namespace Orvi::Service
