#include "JSONDataCache/DBData/Index/SimpleValue.h"

#include "JSONDataCache/DBData/Attribute.h"

#include <typeinfo>

namespace Orvi::DBData::Index
{

namespace
{

bool isText(const Poco::Dynamic::Var& value)
{
    return !value.isEmpty() && value.type() == typeid(std::string);
}

} // namespace

SimpleValue::SimpleValue(const Poco::Dynamic::Var& keyValue)
    : value(keyValue)
{
}

SimpleValue::SimpleValue(const SimpleValue& other)
    : value(other.value)
    // The copy's value has a holder of its own, which the original's text must not point into.
    , sortText(isText(other.value) ? nullptr : other.sortText)
{
}

SimpleValue::SimpleValue(SimpleValue&& other) noexcept
    : sortText(std::move(other.sortText))
{
    value.swap(other.value);
}

SimpleValue& SimpleValue::operator=(const SimpleValue& other)
{
    SimpleValue copy(other);
    return *this = std::move(copy);
}

SimpleValue& SimpleValue::operator=(SimpleValue&& other) noexcept
{
    value.swap(other.value);
    sortText.swap(other.sortText);
    return *this;
}

SimpleValue::~SimpleValue() = default;

const std::string& SimpleValue::text() const
{
    // Computed once per key, since the index compares keys in every lookup and scan: a text value is
    // its own text, anything else is converted the way Var compares.
    if (!sortText)
    {
        if (isText(value))
        {
            sortText = std::shared_ptr<const std::string>(std::shared_ptr<const std::string>(),
                                                          &value.extract<std::string>());
        }
        else
        {
            sortText = std::make_shared<const std::string>(value.convert<std::string>());
        }
    }
    return *sortText;
}

const std::string& SimpleValue::writtenText(std::string& buffer) const
{
    if (isWrittenAsSorted())
    {
        return text();
    }
    Poco::Dynamic::Var copy(value);
    Attribute::convertToString(copy);
    buffer = copy.convert<std::string>();
    return buffer;
}

bool SimpleValue::isWrittenAsSorted() const
{
    if (value.isEmpty())
    {
        return true;
    }
    // Var writes these as an attribute value is written: integers in decimal, numbers in the same
    // shortest form, booleans as true and false.
    const std::type_info& type = value.type();
    return type == typeid(std::string) || type == typeid(Attribute::Integer) ||
           type == typeid(Attribute::IntegerUnsigned) || type == typeid(Attribute::Number) ||
           type == typeid(bool);
}

bool SimpleValue::match(const Poco::RegularExpression& regex) const
{
    // Null is written as the empty text, and a match is never empty.
    if (value.isEmpty())
    {
        return false;
    }
    std::string buffer;
    return regex.match(writtenText(buffer), 0);
}

bool SimpleValue::isWrittenAs(const std::string& written) const
{
    if (value.isEmpty())
    {
        return false;
    }
    std::string buffer;
    return writtenText(buffer) == written;
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
