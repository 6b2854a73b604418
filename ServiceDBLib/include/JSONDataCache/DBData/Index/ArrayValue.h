#pragma once

#include "JSONDataCache/DBData/Index/SimpleValue.h"

#include <Poco/Dynamic/Var.h>

#include <vector>

namespace Orvi::DBData::Index
{

/// The key form of an array value in an attribute index: one simple key per element.
class ArrayValue
{
public:
    explicit ArrayValue(const Poco::Dynamic::Var& arrayValue);
    /// Takes a null value as an empty array; any other value has to hold AttributeValue::ValueArrayPtr,
    /// else Poco::BadCastException.

    bool operator<(const ArrayValue& other) const;
    /// Element by element in the order of SimpleValue; a prefix sorts first.

    bool operator==(const ArrayValue& other) const;
    /// Gives operator< and not an equality; nothing may rely on it as equality.

    std::vector<SimpleValue> values;
};

} // namespace Orvi::DBData::Index
