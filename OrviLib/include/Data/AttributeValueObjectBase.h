#pragma once

#include "Data/AttributeValueBase.h"

#include <cstddef>

namespace Orvi::Data
{

/// Branch of the values that hold a referenced object.
class AttributeValueObjectBase : public AttributeValueBase
{
public:
    ~AttributeValueObjectBase() override;

    bool isXObjReference() const override;

    virtual const XObjectBase* getObject() const = 0;

    virtual std::size_t size() const = 0;
    /// The number of attributes of the object; a bare reference has at most id, uri and name.
};

} // namespace Orvi::Data
