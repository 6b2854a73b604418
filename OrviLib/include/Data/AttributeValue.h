#pragma once

#include "Data/AttributeValueBase.h"

#include <Poco/Types.h>
#include <Poco/URI.h>

#include <cstddef>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Orvi::Data
{

/// A value of type T under one of the branches of AttributeValueBase.
template <typename T, typename Base = AttributeValueBase>
class AttributeValue : public Base
{
public:
    using ValueType = T;

    AttributeValue() = default;
    AttributeValue(const T& value);
    AttributeValue(T&& value);
    AttributeValue(const AttributeValue&) = default;
    AttributeValue(AttributeValue&&) = default;
    AttributeValue& operator=(const AttributeValue&) = default;
    AttributeValue& operator=(AttributeValue&&) = default;
    ~AttributeValue() override = default;

    const T& get() const;
    T& get();
    void set(const T& value);
    operator const T&() const;

    bool operator==(const AttributeValue& other) const;
    /// Equal in the order of compare(), so two URIs with the same path are equal.

    bool operator<(const AttributeValue& other) const;
    bool operator>(const AttributeValue& other) const;

    const std::type_info& type() const override;
    /// typeid(T).

    GenericValue asGeneric() const override;
    bool setValue(const AttributeValueBase& other) override;

    int compare(const AttributeValueBase& other) const override;
    /// The native order of T when other has the same class, else the generic path of the base.

protected:
    T m_value{};

private:
    template <typename U>
    static int order(const U& left, const U& right);

    static int order(const Poco::URI& left, const Poco::URI& right);
    /// A reference URI names its target by the path; scheme, host and query take no part.

    template <typename E>
    static int order(const std::vector<E>& left, const std::vector<E>& right);
    /// Lexicographic by the elements' own compare(); a prefix orders first.
};

using AttributeValueBoolean = AttributeValue<bool>;
using AttributeValueInteger = AttributeValue<Poco::Int64>;
using AttributeValueIntegerUnsigned = AttributeValue<Poco::UInt64>;
using AttributeValueNumber = AttributeValue<double>;

template <typename T, typename Base>
AttributeValue<T, Base>::AttributeValue(const T& value)
    : m_value(value)
{
}

template <typename T, typename Base>
AttributeValue<T, Base>::AttributeValue(T&& value)
    : m_value(std::move(value))
{
}

template <typename T, typename Base>
const T& AttributeValue<T, Base>::get() const
{
    return m_value;
}

template <typename T, typename Base>
T& AttributeValue<T, Base>::get()
{
    return m_value;
}

template <typename T, typename Base>
void AttributeValue<T, Base>::set(const T& value)
{
    m_value = value;
}

template <typename T, typename Base>
AttributeValue<T, Base>::operator const T&() const
{
    return m_value;
}

template <typename T, typename Base>
bool AttributeValue<T, Base>::operator==(const AttributeValue& other) const
{
    return order(m_value, other.m_value) == 0;
}

template <typename T, typename Base>
bool AttributeValue<T, Base>::operator<(const AttributeValue& other) const
{
    return order(m_value, other.m_value) < 0;
}

template <typename T, typename Base>
bool AttributeValue<T, Base>::operator>(const AttributeValue& other) const
{
    return order(m_value, other.m_value) > 0;
}

template <typename T, typename Base>
const std::type_info& AttributeValue<T, Base>::type() const
{
    return typeid(T);
}

template <typename T, typename Base>
GenericValue AttributeValue<T, Base>::asGeneric() const
{
    return GenericValue(m_value);
}

template <typename T, typename Base>
bool AttributeValue<T, Base>::setValue(const AttributeValueBase& other)
{
    const auto* same = dynamic_cast<const AttributeValue*>(&other);
    if (same == nullptr)
    {
        return false;
    }
    if (same != this)
    {
        m_value = same->m_value;
    }
    return true;
}

template <typename T, typename Base>
int AttributeValue<T, Base>::compare(const AttributeValueBase& other) const
{
    const auto* same = dynamic_cast<const AttributeValue*>(&other);
    if (same == nullptr)
    {
        return AttributeValueBase::compare(other);
    }
    return order(m_value, same->m_value);
}

template <typename T, typename Base>
template <typename U>
int AttributeValue<T, Base>::order(const U& left, const U& right)
{
    if (left < right)
    {
        return -1;
    }
    if (right < left)
    {
        return 1;
    }
    return 0;
}

template <typename T, typename Base>
int AttributeValue<T, Base>::order(const Poco::URI& left, const Poco::URI& right)
{
    return order(left.getPath(), right.getPath());
}

template <typename T, typename Base>
template <typename E>
int AttributeValue<T, Base>::order(const std::vector<E>& left, const std::vector<E>& right)
{
    const std::size_t common = left.size() < right.size() ? left.size() : right.size();
    for (std::size_t i = 0; i < common; ++i)
    {
        const int result = left[i].compare(right[i]);
        if (result != 0)
        {
            return result < 0 ? -1 : 1;
        }
    }
    return order(left.size(), right.size());
}

} // namespace Orvi::Data
