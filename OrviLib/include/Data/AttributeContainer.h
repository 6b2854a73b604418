#pragma once

#include "Data/Attribute.h"
#include "Data/AttributeBase.h"
#include "Data/AttributeValueBase.h"
#include "Data/DataTypes.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Orvi::Data
{

/// The named attributes of one typed object, ordered by name. Every stored attribute has a value.
/// Copies of a container share the attributes; deepCopy() gives independent ones.
class AttributeContainer
{
public:
    explicit AttributeContainer(XObjectId parentId = -1);

    XObjectId parent() const;
    /// The id of the object that owns the container.

    bool contains(const std::string& name) const;
    std::size_t size() const;
    void clear();

    AttributeMap::const_iterator begin() const;
    AttributeMap::const_iterator end() const;
    AttributeMap::iterator begin();
    AttributeMap::iterator end();

    const AttributeMap& getAttributes() const;

    AttributeBase::Ptr getAttribute(const std::string& name) const;
    /// The attribute, or an empty pointer.

    bool setAttribute(const AttributeBase& attribute);
    /// Stores a copy of attribute made for this container's parent, replacing one of the same name.
    /// An attribute without a value is refused with false, so that the container never holds one.

    bool setAttribute(AttributeBase::Ptr&& attribute);
    /// Stores the attribute itself, replacing one of the same name. An empty pointer or an attribute
    /// without a value is refused with false.

    AttributeValueBase* getValue(const std::string& name);
    /// The value of the attribute, or null if there is none.

    const AttributeValueBase* getValue(const std::string& name) const;
    /// The value of the attribute, or null if there is none.

    template <typename V>
    const V& getValue(const std::string& name) const;
    /// The value of an Attribute<V>. Raises Poco::InvalidAccessException when there is none, or when the
    /// attribute has another class.

    template <typename V>
    V& getValue(const std::string& name);
    /// The value of an Attribute<V> for changing it in place; raises as the const form.

    template <typename V>
    void setValue(const std::string& name, const V& value);
    /// Stores a new Attribute<V> with value, replacing one of the same class. Raises
    /// Poco::InvalidAccessException when an attribute of that name has another class.

    bool removeValue(const std::string& name);
    /// False if there was no attribute of that name.

    Poco::JSON::Object::Ptr toJSON(int level) const;
    /// Every attribute under its name, as AttributeValueBase::toJSON(level) renders it.

    Poco::JSON::Object::Ptr toJSON(const std::vector<std::string>& names) const;
    /// The named attributes that exist, rendered at level 0.

    static AttributeContainer deepCopy(const AttributeContainer& other);
    /// A container of the same parent holding copies of all attributes and values.

private:
    template <typename V>
    const Attribute<V>& typedAttribute(const std::string& name) const;

    static std::string notSetMessage(const std::string& name);
    static std::string invalidTypeMessage(const std::string& name);

    AttributeMap m_attrMap;
    XObjectId m_parentId;
};

template <typename V>
const V& AttributeContainer::getValue(const std::string& name) const
{
    return typedAttribute<V>(name).getValue();
}

template <typename V>
V& AttributeContainer::getValue(const std::string& name)
{
    // Only the lookup is const: the container owns its attributes and may hand them out for change.
    return const_cast<V&>(typedAttribute<V>(name).getValue());
}

template <typename V>
void AttributeContainer::setValue(const std::string& name, const V& value)
{
    const auto found = m_attrMap.find(name);
    if (found != m_attrMap.end() && !found->second.isNull() &&
        dynamic_cast<const Attribute<V>*>(found->second.get()) == nullptr)
    {
        throw Poco::InvalidAccessException(invalidTypeMessage(name));
    }
    m_attrMap[name] = AttributeBase::Ptr(new Attribute<V>(m_parentId, name, value));
}

template <typename V>
const Attribute<V>& AttributeContainer::typedAttribute(const std::string& name) const
{
    const auto found = m_attrMap.find(name);
    if (found == m_attrMap.end() || found->second.isNull() || found->second->isEmpty())
    {
        throw Poco::InvalidAccessException(notSetMessage(name));
    }
    const auto* typed = dynamic_cast<const Attribute<V>*>(found->second.get());
    if (typed == nullptr)
    {
        throw Poco::InvalidAccessException(invalidTypeMessage(name));
    }
    return *typed;
}

} // namespace Orvi::Data
