#pragma once

#include "Data/DataTypes.h"

#include <typeinfo>

namespace Orvi::Data
{

/// Root of the typed values that attributes of the typed objects hold.
class AttributeValueBase
{
public:
    AttributeValueBase() = default;
    AttributeValueBase(const AttributeValueBase&) = default;
    AttributeValueBase(AttributeValueBase&&) = default;
    AttributeValueBase& operator=(const AttributeValueBase&) = default;
    AttributeValueBase& operator=(AttributeValueBase&&) = default;
    virtual ~AttributeValueBase();

    virtual const std::type_info& type() const = 0;
    /// The C++ type of the held value.

    virtual GenericValue asGeneric() const = 0;
    /// The value as an untyped Var, the way the database and the generic comparison see it.

    virtual Poco::Dynamic::Var toJSON(int level) const;
    /// The value ready for a Poco::JSON::Object; level limits how deep referenced objects are rendered.
    /// Gives asGeneric() unless a subclass knows better.

    virtual bool isXObjReference() const;
    /// True when the value refers to objects (alone or as elements of an array).

    virtual bool isArray() const;

    virtual bool setValue(const AttributeValueBase& other) = 0;
    /// Takes over the value of other if it has the same class; false leaves this value as it was.

    virtual int compare(const AttributeValueBase& other) const;
    /// Negative, zero or positive as this value orders before, with or after other. Here the generic
    /// path: asGeneric() of both sides compared by Var's operator< in both directions. Values that Var
    /// cannot order (it raises a Poco::Exception, e.g. for an object) compare as equal, so that sorting
    /// mixed values never throws.
};

} // namespace Orvi::Data
