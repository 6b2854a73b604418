#pragma once

#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/XObjectBase.h"

#include <Poco/SharedPtr.h>
#include <Poco/Types.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Orvi::DBData
{

enum _ServiceVisibility
{
    ServiceVisibility_Default = 0,
    ServiceVisibility_Localhost = 1
};
using ServiceVisibility_t = _ServiceVisibility;

/// A microservice of the process: its resources and what is announced about it.
class Service : public XObjectBase
{
public:
    using Ptr = Poco::SharedPtr<Service>;
    using StringList = std::vector<Poco::SharedPtr<std::string>>;

    Service() = default;
    Service(const Service&) = default;
    Service& operator=(const Service&) = default;
    ~Service() override;

    const ResourceMap& getResources() const { return resources; }

    ResourcePtr getResource(const std::string& resourceName) const;
    /// Null when no resource has the name.

    void addResource(const ResourcePtr& resource);
    /// Ignores null and keeps the first of two resources with one name; a resource built on another
    /// service is a bugcheck.

    Poco::UInt16 getPort() const { return port; }
    void setPort(Poco::UInt16 newPort) { port = newPort; }

    ServiceVisibility_t getVisibility() const { return visibility; }
    void setVisibility(const ServiceVisibility_t& newVisibility) { visibility = newVisibility; }

    const std::string& getDescription() const { return description; }
    void setDescription(const std::string& text) { description = text; }
    void setDescription(std::string&& text) { description = std::move(text); }
    void setDescription(const char* text) { description = text; }

    const std::string& getSpec() const { return schema; }
    void setSpec(const std::string& text) { schema = text; }
    void setSpec(std::string&& text) { schema = std::move(text); }
    void setSpec(const char* text) { schema = text; }

    const StringList& getPrivileges() const { return privileges; }
    void setPrivileges(const StringList& list) { privileges = list; }
    void setPrivileges(StringList&& list) { privileges = std::move(list); }

    const StringList& getServiceCategories() const { return serviceCategories; }

    bool setServiceCategories(const StringList& list);
    /// Replaces the list; always true, no category is refused.

    bool setServiceCategories(StringList&& list);
    /// Replaces the list; always true, no category is refused.

    const StringList& getVersions() const { return versions; }
    void setVersions(const StringList& list) { versions = list; }
    void setVersions(StringList&& list) { versions = std::move(list); }

private:
    ResourceMap resources;
    std::string description;
    Poco::UInt16 port = 0;
    ServiceVisibility_t visibility = ServiceVisibility_Default;
    StringList privileges;
    StringList serviceCategories;
    StringList versions;
    std::string schema;
};

using ServiceMap = std::map<std::string, Service::Ptr>;
/// The services of a process by name, in byte order.

} // namespace Orvi::DBData
