#pragma once

#include "Data/DataTypes.h"
#include "Data/ElementBase.h"
#include "Data/XObjectBase.h"

#include <Poco/SharedPtr.h>

#include <string>
#include <vector>

namespace Orvi::Data
{

/// A typed view of a resource: a described collection of elements. The defaults here describe a
/// resource that knows no elements; views on the database override them.
class ResourceBase : public XObjectBase
{
public:
    using Ptr = Poco::SharedPtr<ResourceBase>;

    static const std::string KEY_DESCRIPTION;

    explicit ResourceBase(XObjectId id = -1);
    ResourceBase(const ResourceBase&) = default;
    ResourceBase(ResourceBase&&) = default;
    ResourceBase& operator=(const ResourceBase&) = default;
    ResourceBase& operator=(ResourceBase&&) = default;
    ~ResourceBase() override;

    virtual std::string getDescription() const;
    /// The text under KEY_DESCRIPTION, or an empty text without one.

    virtual std::string getSpecification() const;
    /// The resource's part of its service definition; empty here.

    virtual bool hasElement(XObjectId id) const;
    /// False here.

    virtual Poco::SharedPtr<ElementBase> getElement(XObjectId id) const;
    /// The element with the database id, or an empty pointer; always empty here.

    virtual std::vector<Poco::SharedPtr<ElementBase>> getElements() const;
    /// All elements in the order of their ids; none here.
};

} // namespace Orvi::Data
