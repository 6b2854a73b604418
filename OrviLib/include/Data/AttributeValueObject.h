#pragma once

#include "Data/AttributeValue.h"
#include "Data/AttributeValueObjectBase.h"
#include "Data/XObjectBase.h"

#include <Poco/JSON/Object.h>

#include <cstddef>

namespace Orvi::Data
{

/// A referenced object of class T (an XObjectBase), held by value. Copies copy the object deeply.
template <typename T>
class AttributeValueObject : public AttributeValue<T, AttributeValueObjectBase>
{
public:
    using AttributeValue<T, AttributeValueObjectBase>::AttributeValue;

    const XObjectBase* getObject() const override;
    std::size_t size() const override;

    Poco::Dynamic::Var toJSON(int level) const override;
    /// A Poco::JSON::Object::Ptr: the object's attributes at level - 1 when level is above 0, else only
    /// its "id", "uri" and "name", so that objects that refer to each other render in finite depth.
};

template <typename T>
const XObjectBase* AttributeValueObject<T>::getObject() const
{
    return &this->m_value;
}

template <typename T>
std::size_t AttributeValueObject<T>::size() const
{
    return this->m_value.size();
}

template <typename T>
Poco::Dynamic::Var AttributeValueObject<T>::toJSON(int level) const
{
    if (level > 0)
    {
        return Poco::Dynamic::Var(this->m_value.toJSON(level - 1));
    }
    return Poco::Dynamic::Var(this->m_value.toJSON(
        std::vector<std::string>{XObjectBase::KEY_ID, XObjectBase::KEY_URI, XObjectBase::KEY_NAME}));
}

} // namespace Orvi::Data
