#pragma once

#include "JSONDataCache/DBData/Endpoint.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <Poco/SharedPtr.h>

#include <string>
#include <utility>
#include <vector>

namespace Orvi::DBData
{

class Resource;

/// The schema of one resource's objects.
class Element : public aDBTableEntry
{
public:
    using Ptr = Poco::SharedPtr<Element>;

    explicit Element(Resource& owner);
    /// The element stays bound to this resource for its whole life.

    ~Element() override;

    const Resource& getResource() const { return parent; }

    const std::string& getName() const { return name; }
    void setName(const std::string& newName) { name = newName; }
    void setName(const char* newName) { name = newName; }

    const std::vector<Endpoint>& getEndpoints() const { return endpoints; }
    void setEndpoints(const std::vector<Endpoint>& newEndpoints) { endpoints = newEndpoints; }
    void setEndpoints(std::vector<Endpoint>&& newEndpoints) { endpoints = std::move(newEndpoints); }

private:
    std::string name;
    Resource& parent;
    std::vector<Endpoint> endpoints;
};

} // namespace Orvi::DBData
