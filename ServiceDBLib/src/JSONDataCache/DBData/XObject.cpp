#include "JSONDataCache/DBData/XObject.h"

#include <typeinfo>
#include <utility>

namespace Orvi::DBData
{

XObject::XObject(const Element::Ptr& element)
    : element(element)
{
}

XObject::~XObject() = default;

AttributeValuePtr XObject::getValue(const std::string& attributeName) const
{
    for (const AttributeValuePtr& value : attributeValues)
    {
        if (!value.isNull() && value->getName() == attributeName)
        {
            return value;
        }
    }
    return AttributeValuePtr();
}

void XObject::removeValue(const std::string& attributeName)
{
    // The cell keeps its place and id, so that the object keeps its full set of attributes.
    for (AttributeValuePtr& value : attributeValues)
    {
        if (!value.isNull() && value->getName() == attributeName)
        {
            value->clear();
        }
    }
}

namespace
{

// An array value points to a vector that every copy of the Var shares and that an append changes in place;
// a copy gets a vector of its own, so that nothing done to it reaches the source.
Poco::Dynamic::Var ownValue(const Poco::Dynamic::Var& value)
{
    if (value.type() != typeid(AttributeValue::ValueArrayPtr))
    {
        return value;
    }
    const AttributeValue::ValueArrayPtr& array = value.extract<AttributeValue::ValueArrayPtr>();
    if (array.isNull())
    {
        return value;
    }
    return AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray(*array));
}

} // namespace

void XObject::copyFrom(const XObject& xobj, bool includeVals)
{
    // The id is copied past the write-once rule: a copy takes the identity of its source.
    db_id = xobj.db_id;
    name = xobj.name;
    uuid = xobj.uuid;
    element = xobj.element;

    attributeValues.clear();
    attributeValues.reserve(xobj.attributeValues.size());
    for (const AttributeValuePtr& source : xobj.attributeValues)
    {
        if (source.isNull())
        {
            continue;
        }
        AttributeValuePtr copy(new AttributeValue(db_id, source->getAttribute(), source->getDBID()));
        if (includeVals)
        {
            copy->setValue(ownValue(source->getValue()), false);
        }
        attributeValues.push_back(std::move(copy));
    }
}

void XObject::swap(XObject& other)
{
    std::swap(db_id, other.db_id);
    name.swap(other.name);
    uuid.swap(other.uuid);
    element.swap(other.element);
    attributeValues.swap(other.attributeValues);
}

} // namespace Orvi::DBData
