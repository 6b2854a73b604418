#include "JSONDataCache/DBData/Index/SimpleValue.h"

#include "JSONDataCache/DBData/Attribute.h"

#include <typeinfo>

namespace Orvi::DBData::Index
{

SimpleValue::SimpleValue(const Poco::Dynamic::Var& keyValue)
    : value(keyValue)
{
}

const std::string& SimpleValue::text() const
{
    // A text value is its own text; anything else is converted the way Var compares, once per key,
    // since the index compares keys in every lookup and scan.
    if (value.type() == typeid(std::string))
    {
        return value.extract<std::string>();
    }
    if (!sortText)
    {
        sortText = std::make_shared<const std::string>(value.convert<std::string>());
    }
    return *sortText;
}

bool SimpleValue::match(const Poco::RegularExpression& regex) const
{
    if (svalue.isNull())
    {
        Poco::Dynamic::Var copy(value);
        Attribute::convertToString(copy);
        svalue = copy.isEmpty() ? std::string() : copy.convert<std::string>();
    }
    return regex.match(svalue.value(), 0);
}

bool SimpleValue::match(const Poco::Dynamic::Var& other) const
{
    return value == other;
}

bool SimpleValue::match(const SimpleValue& probe) const
{
    if (value.isEmpty() || probe.value.isEmpty())
    {
        return value.isEmpty() == probe.value.isEmpty();
    }
    return text() == probe.text();
}

bool SimpleValue::operator<(const SimpleValue& other) const
{
    if (other.value.isEmpty())
    {
        return !value.isEmpty();
    }
    if (value.isEmpty())
    {
        return false;
    }
    return text() < other.text();
}

bool SimpleValue::operator==(const SimpleValue& other) const
{
    return value == other.value;
}

} // namespace Orvi::DBData::Index
