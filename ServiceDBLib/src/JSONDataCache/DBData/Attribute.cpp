#include "JSONDataCache/DBData/Attribute.h"

#include "Command/UrlPath.h"
#include "JSONDataCache/DBData/ConstraintEnum.h"
#include "JSONDataCache/DBData/ConstraintFormat.h"
#include "JSONDataCache/DBData/ConstraintOneOf.h"
#include "JSONDataCache/DBData/ConstraintResolution.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/NumberParser.h>
#include <Poco/NumericString.h>

#include <exception>
#include <set>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Orvi
{

namespace
{

using Poco::Dynamic::Var;

const std::string SET_VALUE_PREFIX = "Attribute::setValue trying to set ";
const std::string TYPE_NAME_INTEGER = "64bit integer";
const std::string TYPE_NAME_INTEGER_UNSIGNED = "64bit unsigned integer";
const std::string TYPE_NAME_NUMBER = "double";
const std::string KEY_URI = "uri";

// Shortest text of a double; the exponent form starts below 1e-15 and from 1e15 on.
constexpr int DOUBLE_TEXT_LOWEST_DECIMAL_EXPONENT = -15;
constexpr int DOUBLE_TEXT_HIGHEST_DECIMAL_EXPONENT = 15;

// The text of a value that isString(): a reference to the held string when it is one, else a copy.
const std::string& textOf(const Var& value, std::string& buffer)
{
    if (value.type() == typeid(std::string))
    {
        return value.extract<std::string>();
    }
    buffer = value.convert<std::string>();
    return buffer;
}

// Brings a numeric input to the held type T: numbers by the range-checked conversion of Var, text by
// the parser of the type.
template <typename T, typename Parser>
void convertTo(Var& value, const std::string& typeName, Parser parse)
{
    if (value.isEmpty() || value.type() == typeid(T))
    {
        return;
    }

    if (value.isInteger() || (std::is_floating_point_v<T> && value.isNumeric()))
    {
        T converted{};
        try
        {
            converted = value.convert<T>();
        }
        catch (const Poco::Exception& e)
        {
            LOG_ERROR(SET_VALUE_PREFIX << typeName << " type failed converting: invalid (" << e.message()
                                       << ")");
            throw Poco::RuntimeException(SET_VALUE_PREFIX + typeName + " type failed converting: invalid");
        }
        catch (const std::exception& e)
        {
            LOG_ERROR(SET_VALUE_PREFIX << typeName << " type failed converting: invalid (" << e.what()
                                       << ")");
            throw Poco::RuntimeException(SET_VALUE_PREFIX + typeName + " type failed converting: invalid");
        }
        value = converted;
        return;
    }

    if (value.isString())
    {
        std::string buffer;
        T parsed{};
        if (!parse(textOf(value, buffer), parsed))
        {
            LOG_ERROR(SET_VALUE_PREFIX << typeName << " type failed converting: parsing failed");
            throw Poco::RuntimeException(SET_VALUE_PREFIX + typeName +
                                         " type failed converting: parsing failed");
        }
        value = parsed;
        return;
    }

    LOG_ERROR(SET_VALUE_PREFIX << typeName << " type with wrong value");
    throw Poco::RuntimeException(SET_VALUE_PREFIX + typeName + " type with wrong value");
}

// Like std::stoll: leading white space and a sign are read, text after the digits is ignored.
bool parseInteger(const std::string& text, DBData::Attribute::Integer& result)
{
    static_assert(sizeof(long long) == sizeof(DBData::Attribute::Integer));
    try
    {
        result = std::stoll(text, nullptr, 10);
        return true;
    }
    catch (const std::exception&)
    {
        return false;
    }
}

std::size_t significantDigits(const std::string& text)
{
    std::size_t count = 0;
    for (const char c : text)
    {
        if (c >= '0' && c <= '9' && (count != 0 || c != '0'))
        {
            ++count;
        }
    }
    return count;
}

bool parseIntegerUnsigned(const std::string& text, DBData::Attribute::IntegerUnsigned& result)
{
    if (!Poco::NumberParser::tryParseUnsigned64(text, result, ','))
    {
        return false;
    }
    // The parser wraps round for the texts 18446744073709551616 to ...619 and gives 0 to 3; a result
    // below 10 from more than one significant digit is such an out-of-range text.
    return result >= 10 || significantDigits(text) <= 1;
}

bool parseNumber(const std::string& text, DBData::Attribute::Number& result)
{
    return Poco::NumberParser::tryParseFloat(text, result, '.', ',');
}

template <typename C>
const C& constraintAs(const DBData::aConstraint& aconst)
{
    const C* typed = dynamic_cast<const C*>(&aconst);
    if (typed == nullptr)
    {
        poco_bugcheck_msg("constraint type does not match class");
    }
    return *typed;
}

template <typename T>
bool checkNumericValue(T& value, const DBData::aConstraint& aconst)
{
    if (aconst.getType() == DBData::ConstraintType_Resolution)
    {
        return constraintAs<DBData::ConstraintResolution>(aconst).checkValue(value);
    }
    LOG_ERROR("Unsupported constraint type " << static_cast<int>(aconst.getType())
                                             << " for numeric attribute type");
    return false;
}

// Checks a converted numeric value on a local copy; only a passed check writes the rounded value back.
template <typename T>
bool checkAndStoreNumericValue(Var& value, const DBData::aConstraint& aconst)
{
    T local = value.extract<T>();
    if (!checkNumericValue(local, aconst))
    {
        return false;
    }
    value = local;
    return true;
}

// Reads the address out of a reference value; false when the value has no "uri".
bool readReferenceUri(const Var& value, Poco::URI& retUri)
{
    if (value.type() == typeid(DBData::XObject::Ptr))
    {
        const DBData::XObject::Ptr& object = value.extract<DBData::XObject::Ptr>();
        if (object.isNull())
        {
            return false;
        }
        const DBData::AttributeValuePtr uriValue = object->getValue(KEY_URI);
        if (uriValue.isNull())
        {
            return false;
        }
        retUri = uriValue->getValue().convert<std::string>();
        return true;
    }
    if (value.type() == typeid(Poco::JSON::Object::Ptr))
    {
        const Poco::JSON::Object::Ptr& object = value.extract<Poco::JSON::Object::Ptr>();
        if (object.isNull() || !object->has(KEY_URI))
        {
            return false;
        }
        retUri = object->get(KEY_URI).convert<std::string>();
        return true;
    }
    if (value.type() == typeid(Poco::URI))
    {
        retUri = value.extract<Poco::URI>();
        return true;
    }
    if (value.isString())
    {
        std::string buffer;
        retUri = textOf(value, buffer);
        return true;
    }
    LOG_ERROR("Attribute::setValue trying to set object reference type with unhandled value type");
    throw Poco::RuntimeException(
        "Attribute::setValue trying to set object reference type with unhandled value type");
}

} // namespace

namespace DBData
{

Attribute::Attribute(const std::string& attributeName, const AttributeType& attributeType, bool isArrayValue)
    : name(attributeName)
    , type(attributeType)
    , isArrayAttribute(isArrayValue)
{
}

Attribute::Attribute(const std::string& attributeName, Poco::SharedPtr<Element> /*element*/,
                     const AttributeType& attributeType, bool isArrayValue)
    : Attribute(attributeName, attributeType, isArrayValue)
{
}

Attribute::~Attribute() = default;

void Attribute::setConstraints(const ConstraintList& newConstraints)
{
    constraints = newConstraints;
}

void Attribute::setConstraints(ConstraintList&& newConstraints)
{
    constraints = std::move(newConstraints);
}

bool Attribute::operator==(const Attribute& other) const
{
    return type == other.type && isArrayAttribute == other.isArrayAttribute && name == other.name;
}

void Attribute::convertValue(Poco::Dynamic::Var& val) const
{
    convertValue(type, val);
}

bool Attribute::checkAttributeValueContent(Poco::Dynamic::Var& value, bool allowNullValue) const
{
    const aConstraint* first = constraints.empty() ? nullptr : constraints.front().get();
    return checkAttributeValueContent(type, value, first, allowNullValue);
}

bool Attribute::isDefaultAttribute(const std::string& attributeName)
{
    // Built once, under the guard of function-local statics, and only read afterwards.
    static const std::set<std::string> xobjAttributes{"id", "name", "uri"};
    return xobjAttributes.count(attributeName) != 0;
}

void Attribute::convertValue(AttributeType attributeType, Poco::Dynamic::Var& var)
{
    switch (attributeType)
    {
    case AttrType_String:
        convertToString(var);
        return;
    case AttrType_Integer:
        convertToInteger(var);
        return;
    case AttrType_Number:
        convertToNumber(var);
        return;
    case AttrType_Boolean:
        convertToBoolean(var);
        return;
    case AttrType_Object:
        convertToObjectRef(var);
        return;
    case AttrType_IntegerUnsigned:
        convertToIntegerUnsigned(var);
        return;
    }
    LOG_ERROR("unknown attribute type " << static_cast<int>(attributeType));
    throw Poco::RuntimeException("unknown attribute type");
}

void Attribute::convertToInteger(Poco::Dynamic::Var& value)
{
    convertTo<Integer>(value, TYPE_NAME_INTEGER, parseInteger);
}

void Attribute::convertToIntegerUnsigned(Poco::Dynamic::Var& value)
{
    convertTo<IntegerUnsigned>(value, TYPE_NAME_INTEGER_UNSIGNED, parseIntegerUnsigned);
}

void Attribute::convertToNumber(Poco::Dynamic::Var& value)
{
    convertTo<Number>(value, TYPE_NAME_NUMBER, parseNumber);
}

void Attribute::convertToString(Poco::Dynamic::Var& value)
{
    if (value.isEmpty() || value.isString())
    {
        return;
    }
    if (value.isBoolean())
    {
        value = std::string(value.convert<bool>() ? "true" : "false");
        return;
    }
    if (value.isNumeric())
    {
        std::string text;
        try
        {
            if (!value.isInteger())
            {
                char buffer[POCO_MAX_FLT_STRING_LEN];
                Poco::doubleToStr(buffer, POCO_MAX_FLT_STRING_LEN, value.convert<Number>(),
                                  DOUBLE_TEXT_LOWEST_DECIMAL_EXPONENT, DOUBLE_TEXT_HIGHEST_DECIMAL_EXPONENT);
                text = buffer;
            }
            else if (value.isSigned())
            {
                text = std::to_string(value.convert<Integer>());
            }
            else
            {
                text = std::to_string(value.convert<IntegerUnsigned>());
            }
        }
        catch (const Poco::Exception& e)
        {
            LOG_ERROR("Attribute::setValue trying to set 64 bit integer type failed converting: invalid ("
                      << e.message() << ")");
            throw Poco::RuntimeException(
                "Attribute::setValue trying to set string type failed converting: invalid");
        }
        catch (const std::exception& e)
        {
            LOG_ERROR("Attribute::setValue trying to set 64 bit integer type failed converting: invalid ("
                      << e.what() << ")");
            throw Poco::RuntimeException(
                "Attribute::setValue trying to set string type failed converting: invalid");
        }
        value = text;
        return;
    }
    LOG_ERROR("Attribute::setValue trying to set string type with wrong value");
    throw Poco::RuntimeException("Attribute::setValue trying to set string type with wrong value");
}

void Attribute::convertToBoolean(Poco::Dynamic::Var& value)
{
    if (value.isEmpty() || value.type() == typeid(bool))
    {
        return;
    }
    if (value.isInteger())
    {
        value = value.convert<bool>();
        return;
    }
    if (value.isString())
    {
        std::string buffer;
        bool parsed = false;
        if (Poco::NumberParser::tryParseBool(textOf(value, buffer), parsed))
        {
            value = parsed;
            return;
        }
    }
    LOG_ERROR("Attribute::setValue trying to set boolean type with wrong value");
    throw Poco::RuntimeException("Attribute::setValue trying to set boolean type with wrong value");
}

void Attribute::convertToObjectRef(Poco::Dynamic::Var& value)
{
    if (value.isEmpty())
    {
        return;
    }

    Poco::URI uri;
    Command::UrlPath path;
    try
    {
        if (!readReferenceUri(value, uri))
        {
            LOG_ERROR("Missing 'uri' attribute in object reference!");
            throw Poco::RuntimeException(
                "Attribute::setValue trying to set object reference type without 'uri' attribute");
        }
        path = Command::UrlPath(uri);
    }
    catch (const Poco::SyntaxException& e)
    {
        LOG_ERROR("Invalid URI value for object reference: " << e.displayText());
        path.setCharacteristicInvalid();
    }

    if (path.isValid() && path.getCharacteristic() == Command::UrlPath::SERVICE_RESOURCE_ELEMENT)
    {
        value = uri;
        return;
    }
    LOG_ERROR("Invalid URI value for object reference");
    throw Poco::RuntimeException(
        "Attribute::setValue trying to set object reference type with invalid value");
}

bool Attribute::checkAttributeValueContent(AttributeType attributeType, Poco::Dynamic::Var& value,
                                           const aConstraint* aconst, bool allowNullValue)
{
    try
    {
        if (value.isEmpty())
        {
            if (allowNullValue)
            {
                return true;
            }
            LOG_WARNING("Null value is not allowed.");
            return false;
        }

        if (attributeType == AttrType_Object)
        {
            if (aconst == nullptr)
            {
                return true;
            }
            // A reference keeps the form it came in; only a copy is converted for the check.
            Poco::Dynamic::Var reference(value);
            convertToObjectRef(reference);
            return checkAttributeObjectRefValue(reference.extract<ObjectRef>(), *aconst);
        }

        try
        {
            convertValue(attributeType, value);
        }
        catch (const Poco::Exception& e)
        {
            LOG_ERROR("Attribute::checkAttributeValueContent: Failed to convert value - " << e.displayText());
            return false;
        }

        if (aconst == nullptr)
        {
            return true;
        }

        switch (attributeType)
        {
        case AttrType_Boolean:
            return true;
        case AttrType_String:
            return checkAttributeStringValue(value.extract<String>(), *aconst);
        case AttrType_Integer:
            return checkAndStoreNumericValue<Integer>(value, *aconst);
        case AttrType_IntegerUnsigned:
            return checkAndStoreNumericValue<IntegerUnsigned>(value, *aconst);
        case AttrType_Number:
            return checkAndStoreNumericValue<Number>(value, *aconst);
        default:
            LOG_ERROR("Invalid attr type: " << static_cast<int>(attributeType));
            return false;
        }
    }
    catch (const Poco::Exception& e)
    {
        LOG_WARNING("Attribute check has failed: " << e.displayText());
        return false;
    }
}

bool Attribute::checkAttributeStringValue(const String& value, const aConstraint& aconst)
{
    switch (aconst.getType())
    {
    case ConstraintType_Enum:
        if (constraintAs<ConstraintEnum>(aconst).getEnumValues().count(value) != 0)
        {
            return true;
        }
        LOG_WARNING("checkAttributeStringValue: unknown enum value '" << value << "'");
        return false;
    case ConstraintType_Format:
    {
        const auto& formatConstraint = constraintAs<ConstraintFormat>(aconst);
        if (formatConstraint.matches(value))
        {
            return true;
        }
        LOG_WARNING("checkAttributeStringValue: '" << value << "' doesn't match format "
                                                   << formatConstraint.getFormat());
        return false;
    }
    default:
        LOG_ERROR("Unsupported constraint type " << static_cast<int>(aconst.getType())
                                                 << " for string attribute");
        return false;
    }
}

bool Attribute::checkAttributeIntegerValue(Integer& value, const aConstraint& aconst)
{
    return checkNumericValue(value, aconst);
}

bool Attribute::checkAttributeIntegerValue(IntegerUnsigned& value, const aConstraint& aconst)
{
    return checkNumericValue(value, aconst);
}

bool Attribute::checkAttributeNumberValue(Number& value, const aConstraint& aconst)
{
    return checkNumericValue(value, aconst);
}

bool Attribute::checkAttributeObjectRefValue(const ObjectRef& value, const aConstraint& aconst)
{
    if (aconst.getType() == ConstraintType_OneOf)
    {
        const auto* oneOf = dynamic_cast<const ConstraintOneOf*>(&aconst);
        if (oneOf == nullptr)
        {
            LOG_ERROR("Invalid constraint type for object references!");
            return false;
        }
        if (!oneOf->checkUrlPath(Command::UrlPath(value)))
        {
            LOG_ERROR("Object reference '" << value.toString() << "' is not allowed");
            return false;
        }
        return true;
    }
    LOG_ERROR("Unhandled constraint type for object references " << static_cast<int>(aconst.getType()));
    return false;
}

} // namespace DBData

} // namespace Orvi
