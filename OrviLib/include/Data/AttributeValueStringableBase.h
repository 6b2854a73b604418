#pragma once

#include "Data/AttributeValueBase.h"

#include <string>

namespace Orvi::Data
{

/// Branch of the values that have a text form: strings, URIs and UUIDs.
class AttributeValueStringableBase : public AttributeValueBase
{
public:
    ~AttributeValueStringableBase() override;

    virtual std::string toString() const = 0;
};

} // namespace Orvi::Data
