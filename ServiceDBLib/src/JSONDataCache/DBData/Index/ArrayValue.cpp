#include "JSONDataCache/DBData/Index/ArrayValue.h"

#include "JSONDataCache/DBData/AttributeValue.h"
#include "Logging/LogStream.h"

#include <algorithm>

namespace Orvi::DBData::Index
{

ArrayValue::ArrayValue(const Poco::Dynamic::Var& arrayValue)
{
    if (arrayValue.isEmpty())
    {
        LOG_TRACE("Initialise ArrayValue with empty value");
        return;
    }
    const AttributeValue::ValueArrayPtr& elements = arrayValue.extract<AttributeValue::ValueArrayPtr>();
    if (elements.isNull())
    {
        LOG_TRACE("Initialise ArrayValue with empty value");
        return;
    }
    values.reserve(elements->size());
    for (const Poco::Dynamic::Var& element : *elements)
    {
        values.emplace_back(element);
    }
}

bool ArrayValue::operator<(const ArrayValue& other) const
{
    return std::lexicographical_compare(values.begin(), values.end(), other.values.begin(),
                                        other.values.end());
}

bool ArrayValue::operator==(const ArrayValue& other) const
{
    return *this < other;
}

} // namespace Orvi::DBData::Index
