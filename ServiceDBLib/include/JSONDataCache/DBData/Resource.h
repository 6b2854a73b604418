#pragma once

#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Endpoint.h"
#include "JSONDataCache/DBData/XObjectBase.h"

#include <Poco/SharedPtr.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Orvi::DBData
{

class Service;

/// A resource of a service: the addressable collection of one element's objects.
class Resource : public XObjectBase
{
public:
    using Ptr = Poco::SharedPtr<Resource>;

    explicit Resource(Service& owner);
    /// The resource stays bound to this service for its whole life.

    Resource(const Resource&) = default;

    Resource& operator=(const Resource& other);
    /// Assigns the service behind this resource's parent from other's parent, then takes element,
    /// description, spec and endpoints; this resource's own id, name and UUID stay. Assigning to a
    /// resource bound to a scratch service thus yields a filled copy of the stored service.

    ~Resource() override;

    const Service& getService() const { return parent; }

    const Poco::SharedPtr<Element>& getElement() const { return element; }
    /// Null until an element is attached.

    void setElement(const Poco::SharedPtr<Element>& newElement);
    /// Ignores null; an element built on another resource is a bugcheck.

    const std::string& getDescription() const { return description; }
    void setDescription(const std::string& text) { description = text; }
    void setDescription(std::string&& text) { description = std::move(text); }
    void setDescription(const char* text) { description = text; }

    const std::string& getSpec() const { return spec; }
    void setSpec(const std::string& text) { spec = text; }
    void setSpec(std::string&& text) { spec = std::move(text); }
    void setSpec(const char* text) { spec = text; }

    const std::vector<Endpoint>& getEndpoints() const { return endpoints; }
    void setEndpoints(const std::vector<Endpoint>& newEndpoints) { endpoints = newEndpoints; }
    void setEndpoints(std::vector<Endpoint>&& newEndpoints) { endpoints = std::move(newEndpoints); }

private:
    Service& parent;
    Poco::SharedPtr<Element> element;
    std::string description;
    std::string spec;
    std::vector<Endpoint> endpoints;
};

using ResourcePtr = Resource::Ptr;
using ResourceMap = std::map<std::string, ResourcePtr>;
/// Resources of a service by name, in byte order.

} // namespace Orvi::DBData
