#pragma once

#include "Data/AttributeValueBase.h"

#include <cstddef>
#include <vector>

namespace Orvi::Data
{

/// Branch of the values that hold a list of values of one class.
class AttributeValueArrayBase : public AttributeValueBase
{
public:
    ~AttributeValueArrayBase() override;

    bool isArray() const override;

    virtual std::vector<const AttributeValueBase*> getValueArray() const = 0;
    /// The elements in order; the pointers stay valid until the array changes.

    virtual std::vector<AttributeValueBase*> getValueArray() = 0;
    /// The elements in order, for changing them in place.

    virtual std::size_t size() const = 0;
};

} // namespace Orvi::Data
