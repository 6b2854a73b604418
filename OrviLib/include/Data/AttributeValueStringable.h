#pragma once

#include "Data/AttributeValue.h"
#include "Data/AttributeValueStringableBase.h"

#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <string>

namespace Orvi::Data
{

/// A value with a text form: std::string, Poco::URI or Poco::UUID. Generic and JSON forms are the text.
template <typename T>
class AttributeValueStringable : public AttributeValue<T, AttributeValueStringableBase>
{
public:
    using AttributeValue<T, AttributeValueStringableBase>::AttributeValue;

    std::string toString() const override;
    GenericValue asGeneric() const override;
    Poco::Dynamic::Var toJSON(int level) const override;

private:
    static std::string text(const std::string& value);
    static std::string text(const Poco::URI& value);
    static std::string text(const Poco::UUID& value);
};

using AttributeValueString = AttributeValueStringable<std::string>;
using AttributeValueURI = AttributeValueStringable<Poco::URI>;
using AttributeValueUUID = AttributeValueStringable<Poco::UUID>;

template <typename T>
std::string AttributeValueStringable<T>::toString() const
{
    return text(this->m_value);
}

template <typename T>
GenericValue AttributeValueStringable<T>::asGeneric() const
{
    return GenericValue(toString());
}

template <typename T>
Poco::Dynamic::Var AttributeValueStringable<T>::toJSON(int) const
{
    return Poco::Dynamic::Var(toString());
}

template <typename T>
std::string AttributeValueStringable<T>::text(const std::string& value)
{
    return value;
}

template <typename T>
std::string AttributeValueStringable<T>::text(const Poco::URI& value)
{
    return value.toString();
}

template <typename T>
std::string AttributeValueStringable<T>::text(const Poco::UUID& value)
{
    return value.toString();
}

} // namespace Orvi::Data
