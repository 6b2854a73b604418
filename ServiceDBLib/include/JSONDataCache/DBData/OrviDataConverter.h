#pragma once

#include "Data/Attribute.h"
#include "Data/AttributeBase.h"
#include "Data/AttributeValueArray.h"
#include "Data/DataTypes.h"
#include "Data/GenericObject.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <utility>
#include <vector>

namespace Orvi::DBData
{

/// Turns stored objects and their cells into the typed objects of program code.
struct OrviDataConverter
{
    static Data::XObjectGeneric createXObjectGeneric(const XObject& object);
    /// A typed copy of the object: its identity and every cell that holds a value. Raises
    /// Poco::DataException for a cell that cannot be converted and for a URI that does not name the
    /// object's UUID.

    static Data::AttributeBase* createAttribute(Data::XObjectId parentId, const AttributeValue& value);
    /// A new attribute of the value class that fits the cell's definition, owned by the caller; null
    /// when there is nothing to convert.

    template <typename V>
    static Data::AttributeBase* createAttribute(Data::XObjectId parentId, const AttributeValue& value);
    /// A new Attribute<V>, or Attribute<AttributeValueArray<V>> for an array cell; null for a cell
    /// without definition or value, and for an array cell without a vector.

    static Data::AttributeValueStringArray createStringArray(const Service::StringList& texts);
    /// The texts of a service row's list, in order; an empty entry holds no text and is left out.

    template <typename T>
    static T extractValue(const Poco::Dynamic::Var& var);
    /// One stored value, or one element of a stored array, as T.
};

template <typename V>
Data::AttributeBase* OrviDataConverter::createAttribute(Data::XObjectId parentId, const AttributeValue& value)
{
    using ValueType = typename V::ValueType;

    if (value.getAttribute().isNull() || !value.hasValue())
    {
        return nullptr;
    }
    if (!value.isArray())
    {
        return new Data::Attribute<V>(parentId, value.getName(),
                                      V(extractValue<ValueType>(value.getValue())));
    }

    const AttributeValue::ValueArrayPtr& stored = value.getValue().extract<AttributeValue::ValueArrayPtr>();
    if (stored.isNull())
    {
        return nullptr;
    }
    std::vector<V> elements;
    elements.reserve(stored->size());
    for (const Poco::Dynamic::Var& element : *stored)
    {
        elements.emplace_back(extractValue<ValueType>(element));
    }
    return new Data::Attribute<Data::AttributeValueArray<V>>(
        parentId, value.getName(), Data::AttributeValueArray<V>(std::move(elements)));
}

template <typename T>
T OrviDataConverter::extractValue(const Poco::Dynamic::Var& var)
{
    return var.convert<T>();
}

template <>
Poco::UUID OrviDataConverter::extractValue<Poco::UUID>(const Poco::Dynamic::Var& var);
/// Parses the text; raises Poco::SyntaxException for one that is no UUID.

template <>
Poco::URI OrviDataConverter::extractValue<Poco::URI>(const Poco::Dynamic::Var& var);

template <>
Data::XObjectGeneric OrviDataConverter::extractValue<Data::XObjectGeneric>(const Poco::Dynamic::Var& var);
/// A selected object in full; any other form of a reference as a bare object of id -1 with UUID, URI
/// and name.

} // namespace Orvi::DBData
