#pragma once

#include "Data/AttributeValue.h"
#include "Data/AttributeValueArrayBase.h"
#include "Data/AttributeValueObjectBase.h"
#include "Data/AttributeValueStringable.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace Orvi::Data
{

/// An ordered list of values of the one class E. Copies copy every element.
template <typename E>
class AttributeValueArray : public AttributeValue<std::vector<E>, AttributeValueArrayBase>
{
public:
    using ElementType = E;
    using SimpleType = std::vector<typename E::ValueType>;
    using iterator = typename std::vector<E>::iterator;
    using const_iterator = typename std::vector<E>::const_iterator;

    using AttributeValue<std::vector<E>, AttributeValueArrayBase>::AttributeValue;

    void addElement(const E& element);
    /// Appends element at the end.

    bool hasElement(const E& element) const;
    /// True if an element compares equal to element.

    const E& getElement(std::uint32_t index) const;
    /// The element at index; raises Poco::RangeException beyond the end.

    E& getElement(std::uint32_t index);
    /// The element at index; raises Poco::RangeException beyond the end.

    bool removeElement(const E& element);
    /// Removes the first element that compares equal to element; false if there is none.

    const_iterator begin() const;
    const_iterator end() const;
    iterator begin();
    iterator end();
    bool isEmpty() const;

    SimpleType simplify() const;
    /// The plain values of the elements, in order.

    std::vector<const AttributeValueBase*> getValueArray() const override;
    std::vector<AttributeValueBase*> getValueArray() override;
    std::size_t size() const override;

    GenericValue asGeneric() const override;
    /// A Poco::Dynamic::Array of the elements' generic values.

    Poco::Dynamic::Var toJSON(int level) const override;
    /// A Poco::JSON::Array::Ptr of the elements' JSON forms at the same level.

    bool isXObjReference() const override;
    /// True for arrays of references.

private:
    void checkIndex(std::uint32_t index) const;
};

using AttributeValueStringArray = AttributeValueArray<AttributeValueString>;

template <typename E>
void AttributeValueArray<E>::addElement(const E& element)
{
    this->m_value.push_back(element);
}

template <typename E>
bool AttributeValueArray<E>::hasElement(const E& element) const
{
    for (const E& candidate : this->m_value)
    {
        if (candidate.compare(element) == 0)
        {
            return true;
        }
    }
    return false;
}

template <typename E>
const E& AttributeValueArray<E>::getElement(std::uint32_t index) const
{
    checkIndex(index);
    return this->m_value[index];
}

template <typename E>
E& AttributeValueArray<E>::getElement(std::uint32_t index)
{
    checkIndex(index);
    return this->m_value[index];
}

template <typename E>
bool AttributeValueArray<E>::removeElement(const E& element)
{
    for (auto it = this->m_value.begin(); it != this->m_value.end(); ++it)
    {
        if (it->compare(element) == 0)
        {
            this->m_value.erase(it);
            return true;
        }
    }
    return false;
}

template <typename E>
typename AttributeValueArray<E>::const_iterator AttributeValueArray<E>::begin() const
{
    return this->m_value.begin();
}

template <typename E>
typename AttributeValueArray<E>::const_iterator AttributeValueArray<E>::end() const
{
    return this->m_value.end();
}

template <typename E>
typename AttributeValueArray<E>::iterator AttributeValueArray<E>::begin()
{
    return this->m_value.begin();
}

template <typename E>
typename AttributeValueArray<E>::iterator AttributeValueArray<E>::end()
{
    return this->m_value.end();
}

template <typename E>
bool AttributeValueArray<E>::isEmpty() const
{
    return this->m_value.empty();
}

template <typename E>
typename AttributeValueArray<E>::SimpleType AttributeValueArray<E>::simplify() const
{
    SimpleType result;
    result.reserve(this->m_value.size());
    for (const E& element : this->m_value)
    {
        result.push_back(element.get());
    }
    return result;
}

template <typename E>
std::vector<const AttributeValueBase*> AttributeValueArray<E>::getValueArray() const
{
    std::vector<const AttributeValueBase*> result;
    result.reserve(this->m_value.size());
    for (const E& element : this->m_value)
    {
        result.push_back(&element);
    }
    return result;
}

template <typename E>
std::vector<AttributeValueBase*> AttributeValueArray<E>::getValueArray()
{
    std::vector<AttributeValueBase*> result;
    result.reserve(this->m_value.size());
    for (E& element : this->m_value)
    {
        result.push_back(&element);
    }
    return result;
}

template <typename E>
std::size_t AttributeValueArray<E>::size() const
{
    return this->m_value.size();
}

template <typename E>
GenericValue AttributeValueArray<E>::asGeneric() const
{
    Poco::Dynamic::Array result;
    result.reserve(this->m_value.size());
    for (const E& element : this->m_value)
    {
        result.push_back(element.asGeneric());
    }
    return GenericValue(result);
}

template <typename E>
Poco::Dynamic::Var AttributeValueArray<E>::toJSON(int level) const
{
    Poco::JSON::Array::Ptr result = new Poco::JSON::Array();
    for (const E& element : this->m_value)
    {
        result->add(element.toJSON(level));
    }
    return Poco::Dynamic::Var(result);
}

template <typename E>
bool AttributeValueArray<E>::isXObjReference() const
{
    return std::is_base_of_v<AttributeValueObjectBase, E>;
}

template <typename E>
void AttributeValueArray<E>::checkIndex(std::uint32_t index) const
{
    if (index >= this->m_value.size())
    {
        throw Poco::RangeException("Index " + std::to_string(index) + " beyond an array of " +
                                   std::to_string(this->m_value.size()) + " elements");
    }
}

} // namespace Orvi::Data
