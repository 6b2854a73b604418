#pragma once

#include "Data/AttributeBase.h"
#include "Data/AttributeValueArrayBase.h"
#include "Data/AttributeValueObjectBase.h"

#include <Poco/Exception.h>

#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace Orvi::Data
{

/// An attribute whose value has the class V; it owns its value, and copies copy it.
template <typename V>
class Attribute : public AttributeBase
{
public:
    using ValueClass = V;

    Attribute(XObjectId parentId, const std::string& name);
    /// An attribute that is not set.

    Attribute(XObjectId parentId, const std::string& name, const V& value);
    Attribute(const Attribute& other);
    Attribute(Attribute&&) = default;
    Attribute& operator=(const Attribute& other);
    Attribute& operator=(Attribute&&) = default;
    ~Attribute() override = default;

    const std::type_info& type() const override;
    /// typeid(V).

    const std::string& getName() const override;
    AttributeValueBase* getValueBase() const override;
    bool isXObjReference() const override;
    bool isArray() const override;
    AttributeBase::Ptr copy(XObjectId parentId) const override;

    const V& getValue() const;
    /// The value; raises Poco::InvalidAccessException when the attribute is not set.

    const V* getAttributeValue() const;
    /// The value, or null when the attribute is not set.

    V* getAttributeValue();
    /// The value for changing it in place, or null when the attribute is not set.

    void setValue(const V& value);

private:
    static constexpr bool refersToObjects();

    std::string notSetMessage() const;

    std::string m_name;
    std::unique_ptr<V> m_value;
};

template <typename V>
Attribute<V>::Attribute(XObjectId parentId, const std::string& name)
    : AttributeBase(parentId)
    , m_name(name)
{
}

template <typename V>
Attribute<V>::Attribute(XObjectId parentId, const std::string& name, const V& value)
    : AttributeBase(parentId)
    , m_name(name)
    , m_value(new V(value))
{
}

template <typename V>
Attribute<V>::Attribute(const Attribute& other)
    : AttributeBase(other)
    , m_name(other.m_name)
    , m_value(other.m_value ? new V(*other.m_value) : nullptr)
{
}

template <typename V>
Attribute<V>& Attribute<V>::operator=(const Attribute& other)
{
    if (this != &other)
    {
        AttributeBase::operator=(other);
        m_name = other.m_name;
        m_value.reset(other.m_value ? new V(*other.m_value) : nullptr);
    }
    return *this;
}

template <typename V>
const std::type_info& Attribute<V>::type() const
{
    return typeid(V);
}

template <typename V>
const std::string& Attribute<V>::getName() const
{
    return m_name;
}

template <typename V>
AttributeValueBase* Attribute<V>::getValueBase() const
{
    return m_value.get();
}

template <typename V>
bool Attribute<V>::isXObjReference() const
{
    return refersToObjects();
}

template <typename V>
bool Attribute<V>::isArray() const
{
    return std::is_base_of_v<AttributeValueArrayBase, V>;
}

template <typename V>
AttributeBase::Ptr Attribute<V>::copy(XObjectId parentId) const
{
    if (!m_value)
    {
        throw Poco::InvalidAccessException(notSetMessage());
    }
    return AttributeBase::Ptr(new Attribute(parentId, m_name, *m_value));
}

template <typename V>
const V& Attribute<V>::getValue() const
{
    if (!m_value)
    {
        throw Poco::InvalidAccessException(notSetMessage());
    }
    return *m_value;
}

template <typename V>
const V* Attribute<V>::getAttributeValue() const
{
    return m_value.get();
}

template <typename V>
V* Attribute<V>::getAttributeValue()
{
    return m_value.get();
}

template <typename V>
void Attribute<V>::setValue(const V& value)
{
    m_value.reset(new V(value));
}

template <typename V>
constexpr bool Attribute<V>::refersToObjects()
{
    if constexpr (std::is_base_of_v<AttributeValueObjectBase, V>)
    {
        return true;
    }
    else if constexpr (std::is_base_of_v<AttributeValueArrayBase, V>)
    {
        return std::is_base_of_v<AttributeValueObjectBase, typename V::ElementType>;
    }
    else
    {
        return false;
    }
}

template <typename V>
std::string Attribute<V>::notSetMessage() const
{
    return "Attribute " + m_name + " is not set";
}

} // namespace Orvi::Data
