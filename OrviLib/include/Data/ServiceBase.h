#pragma once

#include "Data/AttributeValueArray.h"
#include "Data/DataTypes.h"
#include "Data/ResourceBase.h"
#include "Data/XObjectBase.h"

#include <Poco/SharedPtr.h>
#include <Poco/UUID.h>

#include <string>
#include <vector>

namespace Orvi::Data
{

/// A typed view of a service: what a registry needs to know of it, and its resources.
class ServiceBase : public XObjectBase
{
public:
    using Ptr = Poco::SharedPtr<ServiceBase>;

    static const std::string KEY_DESCRIPTION;
    static const std::string KEY_PORT;
    static const std::string KEY_PRIVILEGES;
    static const std::string KEY_CATEGORIES;
    static const std::string KEY_VERSIONS;

    explicit ServiceBase(XObjectId id = -1);
    ServiceBase(const ServiceBase&) = default;
    ServiceBase(ServiceBase&&) = default;
    ServiceBase& operator=(const ServiceBase&) = default;
    ServiceBase& operator=(ServiceBase&&) = default;
    ~ServiceBase() override;

    virtual AttributeValueStringArray getPrivileges() const = 0;
    virtual AttributeValueStringArray getServiceCategories() const = 0;
    virtual AttributeValueStringArray getVersions() const = 0;
    virtual std::string getDescription() const = 0;
    virtual unsigned int getPort() const = 0;

    virtual std::string getSpecification() const = 0;
    /// The service's definition text.

    virtual void updateServiceId(const Poco::UUID& id) = 0;
    /// Stores id under KEY_ID, e.g. the one that the service registry assigned.

    virtual std::vector<unsigned int> getAllPorts() const = 0;
    /// Every port on which the service answers.

    virtual std::vector<Poco::SharedPtr<ResourceBase>> getResources() const = 0;
};

} // namespace Orvi::Data
