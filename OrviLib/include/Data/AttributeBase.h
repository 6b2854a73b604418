#pragma once

#include "Data/AttributeValueBase.h"
#include "Data/DataTypes.h"

#include <Poco/SharedPtr.h>

#include <string>
#include <typeinfo>

namespace Orvi::Data
{

/// A named attribute of a typed object, holding at most one value.
class AttributeBase
{
public:
    using Ptr = Poco::SharedPtr<AttributeBase>;

    explicit AttributeBase(XObjectId parentId);
    AttributeBase(const AttributeBase&) = default;
    AttributeBase(AttributeBase&&) = default;
    AttributeBase& operator=(const AttributeBase&) = default;
    AttributeBase& operator=(AttributeBase&&) = default;
    virtual ~AttributeBase();

    XObjectId parent() const;
    /// The id of the object that the attribute belongs to.

    virtual const std::type_info& type() const = 0;
    /// The class of the value that the attribute holds or would hold.

    virtual const std::string& getName() const = 0;

    virtual AttributeValueBase* getValueBase() const = 0;
    /// The value, or null when the attribute is not set; the attribute keeps ownership.

    virtual bool isXObjReference() const = 0;
    virtual bool isArray() const = 0;

    virtual Ptr copy(XObjectId parentId) const = 0;
    /// A new attribute of the given parent with the same name and an own copy of the value. Raises
    /// Poco::InvalidAccessException for an attribute that is not set.

    bool isEmpty() const;
    /// True when the attribute has no value.

protected:
    XObjectId m_parentId;
};

} // namespace Orvi::Data
