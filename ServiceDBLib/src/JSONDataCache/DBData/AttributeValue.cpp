#include "JSONDataCache/DBData/AttributeValue.h"

#include "CompareHelper.h"
#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/URI.h>

#include <cstddef>
#include <typeinfo>

namespace Orvi
{

namespace
{

using DBData::AttributeType;
using DBData::AttributeValue;
using Poco::Dynamic::Var;

template <typename ArrayType>
bool checkAndConvert(const ArrayType* srcArray, std::vector<Var>& checkedArray, const AttributeValue& attr)
{
    if (srcArray == nullptr)
    {
        throw Poco::NullPointerException("Invalid array value");
    }
    checkedArray.clear();
    checkedArray.reserve(srcArray->size());
    for (const Var& element : *srcArray)
    {
        // Nulls are dropped, not refused: a client may send sparse arrays.
        if (element.isEmpty())
        {
            AttributeValue::printLogWarn("Array must not contain null values!");
            continue;
        }
        checkedArray.push_back(element);
        if (!attr.convertAndCheckValue(checkedArray.back()))
        {
            return false;
        }
    }
    return true;
}

template <typename T>
Util::CompareResult compareHeld(const T& lhs, const T& rhs)
{
    return Util::CompareHelper::compare(lhs, rhs);
}

template <>
Util::CompareResult compareHeld<Poco::URI>(const Poco::URI& lhs, const Poco::URI& rhs)
{
    // A reference is the object it addresses: the same path on another host is the same object.
    return Util::CompareHelper::compare(lhs.getPath(), rhs.getPath());
}

template <typename T>
Util::CompareResult compare(AttributeType type, const Var& lhs, const Var& rhs);

template <typename T>
Util::CompareResult compareArrays(AttributeType type, const Var& lhs, const Var& rhs)
{
    const std::type_info& arrayType = typeid(AttributeValue::ValueArrayPtr);
    if (lhs.type() != arrayType || rhs.type() != arrayType)
    {
        AttributeValue::printLogWarn(
            "DBData::AttributeValue: Can not compare single value with array of values");
        return Util::UNKNOWN;
    }
    const AttributeValue::ValueArrayPtr& lhsArray = lhs.extract<AttributeValue::ValueArrayPtr>();
    const AttributeValue::ValueArrayPtr& rhsArray = rhs.extract<AttributeValue::ValueArrayPtr>();
    const Util::CompareResult byPointer = Util::CompareHelper::checkPointer(lhsArray.get(), rhsArray.get());
    if (byPointer != Util::UNKNOWN)
    {
        return byPointer;
    }
    // Arrays of different lengths have no order.
    if (lhsArray->size() != rhsArray->size())
    {
        return Util::UNKNOWN;
    }
    for (std::size_t i = 0; i < lhsArray->size(); ++i)
    {
        const Util::CompareResult result = compare<T>(type, (*lhsArray)[i], (*rhsArray)[i]);
        if (result != Util::EQUAL)
        {
            return result;
        }
    }
    return Util::EQUAL;
}

template <typename T>
Util::CompareResult compare(AttributeType type, const Var& lhs, const Var& rhs)
{
    if (lhs.isEmpty())
    {
        return rhs.isEmpty() ? Util::EQUAL : Util::GREATER;
    }
    if (rhs.isEmpty())
    {
        return Util::LESS;
    }
    if (&lhs == &rhs)
    {
        return Util::EQUAL;
    }
    const std::type_info& arrayType = typeid(AttributeValue::ValueArrayPtr);
    if (lhs.type() == arrayType || rhs.type() == arrayType)
    {
        return compareArrays<T>(type, lhs, rhs);
    }

    const std::type_info& heldType = typeid(T);
    if (lhs.type() == heldType && rhs.type() == heldType)
    {
        return compareHeld(lhs.extract<T>(), rhs.extract<T>());
    }
    // Only a side that is not yet canonical is copied and converted.
    Var lhsConverted;
    Var rhsConverted;
    const Var* lhsCanonical = &lhs;
    const Var* rhsCanonical = &rhs;
    if (lhs.type() != heldType)
    {
        lhsConverted = lhs;
        DBData::Attribute::convertValue(type, lhsConverted);
        lhsCanonical = &lhsConverted;
    }
    if (rhs.type() != heldType)
    {
        rhsConverted = rhs;
        DBData::Attribute::convertValue(type, rhsConverted);
        rhsCanonical = &rhsConverted;
    }
    return compareHeld(lhsCanonical->extract<T>(), rhsCanonical->extract<T>());
}

} // namespace

namespace DBData
{

AttributeValue::AttributeValue(DbId parentObj, const Attribute::Ptr& definition, DbId dbid)
    : attribute(definition)
    , parent(parentObj)
{
    if (attribute.isNull())
    {
        LOG_ERROR("AttributeValue needs a Attribute!");
        throw Poco::NullPointerException("unset Attribute in AttributeValue");
    }
    db_id = dbid;
}

AttributeValue::~AttributeValue() = default;

AttributeValue::ValueArray& AttributeValue::sharedArray()
{
    if (value.isEmpty() || value.extract<ValueArrayPtr>().isNull())
    {
        value = ValueArrayPtr(new ValueArray);
    }
    // A Var hands out what it holds as const only; the vector behind the pointer is ours to change.
    return *const_cast<ValueArray*>(value.extract<ValueArrayPtr>().get());
}

bool AttributeValue::setValue(const Poco::Dynamic::Var& newValue)
{
    if (newValue.isEmpty())
    {
        clear();
        return true;
    }

    if (!isArray())
    {
        Poco::Dynamic::Var checked(newValue);
        if (!convertAndCheckValue(checked))
        {
            LOG_ERROR("Failed to set invalid value for attribute " << getName() << " ("
                                                                   << static_cast<int>(getType()) << ")");
            return false;
        }
        value.swap(checked);
        return true;
    }

    ValueArray checkedArray;
    bool checked = false;
    const std::type_info& heldType = newValue.type();
    if (heldType == typeid(Poco::JSON::Array::Ptr))
    {
        checked = checkAndConvert(newValue.extract<Poco::JSON::Array::Ptr>().get(), checkedArray, *this);
    }
    else if (heldType == typeid(Poco::JSON::Array))
    {
        checked = checkAndConvert(&newValue.extract<Poco::JSON::Array>(), checkedArray, *this);
    }
    else if (heldType == typeid(ValueArrayPtr))
    {
        checked = checkAndConvert(newValue.extract<ValueArrayPtr>().get(), checkedArray, *this);
    }
    else if (heldType == typeid(ValueArray))
    {
        checked = checkAndConvert(&newValue.extract<ValueArray>(), checkedArray, *this);
    }
    else
    {
        LOG_ERROR("Trying to set value with invalid type for array attribute");
        return false;
    }
    if (!checked)
    {
        return false;
    }

    // Swapped into the vector already held, so that every copy of the value sees the new contents.
    sharedArray().swap(checkedArray);
    return true;
}

void AttributeValue::setValue(const Poco::Dynamic::Var& newValue, bool typeConversion)
{
    if (!typeConversion)
    {
        value = newValue;
        return;
    }
    if (!setValue(newValue))
    {
        throw Poco::RuntimeException("AttributeValue::setValue: operation failed.");
    }
}

bool AttributeValue::appendArrayValue(const Poco::Dynamic::Var& val, bool typeConversion)
{
    if (!isArray())
    {
        LOG_ERROR("Trying to append value to non-array value " << static_cast<int>(getType()) << ".");
        return false;
    }
    ValueArray& array = sharedArray();
    array.push_back(val);
    if (typeConversion && !convertAndCheckValue(array.back()))
    {
        array.pop_back();
        return false;
    }
    return true;
}

void AttributeValue::convertValue(Poco::Dynamic::Var& toConvert) const
{
    attribute->convertValue(toConvert);
}

bool AttributeValue::convertAndCheckValue(Poco::Dynamic::Var& toCheck) const
{
    return attribute->checkAttributeValueContent(toCheck, false);
}

Util::CompareResult AttributeValue::compareValues(AttributeType type, const Poco::Dynamic::Var& lhs,
                                                  const Poco::Dynamic::Var& rhs)
{
    switch (type)
    {
    case AttrType_String:
        return compare<Attribute::String>(type, lhs, rhs);
    case AttrType_Integer:
        return compare<Attribute::Integer>(type, lhs, rhs);
    case AttrType_Number:
        return compare<Attribute::Number>(type, lhs, rhs);
    case AttrType_Boolean:
        return compare<bool>(type, lhs, rhs);
    case AttrType_Object:
        return compare<Attribute::ObjectRef>(type, lhs, rhs);
    case AttrType_IntegerUnsigned:
        return compare<Attribute::IntegerUnsigned>(type, lhs, rhs);
    }
    poco_unexpected();
    return Util::UNKNOWN;
}

Util::CompareResult AttributeValue::compareValue(const Poco::Dynamic::Var& other) const
{
    return compareValues(getType(), value, other);
}

bool AttributeValue::operator==(const AttributeValue& other) const
{
    if (attribute != other.attribute)
    {
        if (attribute.isNull() || other.attribute.isNull())
        {
            throw Poco::NullPointerException();
        }
        if (!(*attribute == *other.attribute))
        {
            return false;
        }
    }
    return compareValue(other.value) == Util::EQUAL;
}

void AttributeValue::printLogWarn(const std::string& msg)
{
    LOG_WARNING(msg);
}

} // namespace DBData

} // namespace Orvi
