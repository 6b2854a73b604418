#include "JSONDataCache/DBData/Attribute.h"

#include "JSONDataCache/DBData/ConstraintEnum.h"
#include "JSONDataCache/DBData/ConstraintFormat.h"
#include "JSONDataCache/DBData/ConstraintOneOf.h"
#include "JSONDataCache/DBData/ConstraintResolution.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Dynamic/VarHolder.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/URI.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace
{

// Numbers whose conversion fails inside Var, to reach the handlers for failing conversions.
struct PocoFailingNumber
{
};

struct StdFailingInteger
{
};

} // namespace

namespace Poco::Dynamic
{

template <>
class VarHolderImpl<PocoFailingNumber> : public VarHolder
{
public:
    explicit VarHolderImpl(const PocoFailingNumber& value)
        : m_value(value)
    {
    }

    const std::type_info& type() const override { return typeid(PocoFailingNumber); }
    VarHolder* clone(Placeholder<VarHolder>* holder = nullptr) const override
    {
        return cloneHolder(holder, m_value);
    }
    const PocoFailingNumber& value() const { return m_value; }

    bool isNumeric() const override { return true; }
    bool isInteger() const override { return false; }
    void convert(double&) const override { throw Poco::RangeException("no double here"); }

private:
    PocoFailingNumber m_value;
};

template <>
class VarHolderImpl<StdFailingInteger> : public VarHolder
{
public:
    explicit VarHolderImpl(const StdFailingInteger& value)
        : m_value(value)
    {
    }

    const std::type_info& type() const override { return typeid(StdFailingInteger); }
    VarHolder* clone(Placeholder<VarHolder>* holder = nullptr) const override
    {
        return cloneHolder(holder, m_value);
    }
    const StdFailingInteger& value() const { return m_value; }

    bool isNumeric() const override { return true; }
    bool isInteger() const override { return true; }
    bool isSigned() const override { return true; }
    void convert(Poco::Int64&) const override { throw std::overflow_error("no integer here"); }
    void convert(Poco::UInt64&) const override { throw std::overflow_error("no integer here"); }

private:
    StdFailingInteger m_value;
};

} // namespace Poco::Dynamic

namespace
{

using Orvi::DBData::aConstraint;
using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeType;
using Orvi::DBData::ConstraintEnum;
using Orvi::DBData::ConstraintFormat;
using Orvi::DBData::ConstraintOneOf;
using Orvi::DBData::ConstraintResolution;
using Orvi::DBData::Element;
using Orvi::DBData::Resource;
using Orvi::DBData::Service;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using Orvi::DBData::AttrType_Boolean;
using Orvi::DBData::AttrType_Integer;
using Orvi::DBData::AttrType_IntegerUnsigned;
using Orvi::DBData::AttrType_Number;
using Orvi::DBData::AttrType_Object;
using Orvi::DBData::AttrType_String;

const std::vector<AttributeType> ALL_TYPES{AttrType_String,  AttrType_Integer, AttrType_Number,
                                           AttrType_Boolean, AttrType_Object,  AttrType_IntegerUnsigned};

// The display text of the exception that the action throws; the exception has to be of class
// Expected exactly.
template <typename Expected, typename Action>
std::string thrownText(Action action)
{
    try
    {
        action();
    }
    catch (const Poco::Exception& e)
    {
        EXPECT_TRUE(typeid(e) == typeid(Expected)) << "thrown: " << e.className();
        return e.displayText();
    }
    return "nothing thrown";
}

template <typename Converter>
std::string conversionError(Converter convert, Var& value)
{
    return thrownText<Poco::RuntimeException>([&] { convert(value); });
}

Poco::SharedPtr<aConstraint> enumOf(const std::set<std::string>& values)
{
    Poco::SharedPtr<ConstraintEnum> constraint(new ConstraintEnum);
    constraint->setEnumValues(values);
    return constraint;
}

Poco::SharedPtr<aConstraint> formatOf(const std::string& format)
{
    Poco::SharedPtr<ConstraintFormat> constraint(new ConstraintFormat);
    constraint->setFormat(format);
    return constraint;
}

Poco::SharedPtr<aConstraint> oneOf(const std::vector<std::string>& classes)
{
    Poco::SharedPtr<ConstraintOneOf> constraint(new ConstraintOneOf);
    constraint->setClasses(classes);
    return constraint;
}

Poco::SharedPtr<aConstraint> rangeOf(const Var& minimum, const Var& maximum, const Var& resolution = Var())
{
    Poco::SharedPtr<ConstraintResolution> constraint(new ConstraintResolution);
    constraint->setMinimum(minimum);
    constraint->setMaximum(maximum);
    constraint->setResolution(resolution);
    return constraint;
}

Poco::JSON::Object::Ptr jsonWithUri(const std::string& uri)
{
    Poco::JSON::Object::Ptr object(new Poco::JSON::Object(0));
    object->set("uri", uri);
    return object;
}

const std::string OBJECT_URI = "/car/doors/6f1c2a3e-4b5d-4e6f-8a7b-9c0d1e2f3a4b";

// Construction and definition

TEST(Attribute, KeepsNameTypeAndArrayFlagItWasBuiltWith)
{
    const Attribute sut("speed", AttrType_Number, true);

    EXPECT_EQ(sut.getName(), "speed");
    EXPECT_EQ(sut.getType(), AttrType_Number);
    EXPECT_TRUE(sut.isArray());
    EXPECT_THAT(sut.getConstraints(), IsEmpty());
    EXPECT_EQ(sut.getDBID(), -1);
}

TEST(Attribute, IsASingleStringWhenBuiltWithANameOnly)
{
    const Attribute sut("label");

    EXPECT_EQ(sut.getName(), "label");
    EXPECT_EQ(sut.getType(), AttrType_String);
    EXPECT_FALSE(sut.isArray());
}

TEST(Attribute, AcceptsAnElementAtConstructionWithoutKeepingIt)
{
    Service service;
    Resource resource(service);
    const Poco::SharedPtr<Element> element(new Element(resource));

    const Attribute sut("doors", element, AttrType_Integer, false);

    EXPECT_EQ(element.referenceCount(), 1);
    EXPECT_EQ(sut.getName(), "doors");
    EXPECT_EQ(sut.getType(), AttrType_Integer);
    EXPECT_FALSE(sut.isArray());
}

TEST(Attribute, ReplacesNameTypeAndArrayFlag)
{
    Attribute sut("speed", AttrType_Number, false);

    sut.setName("rpm");
    sut.setType(AttrType_IntegerUnsigned);
    sut.setIsArray(true);

    EXPECT_EQ(sut.getName(), "rpm");
    EXPECT_EQ(sut.getType(), AttrType_IntegerUnsigned);
    EXPECT_TRUE(sut.isArray());
}

TEST(Attribute, CopiesConstraintsAndLeavesTheGivenListAlone)
{
    Attribute sut("mode");
    const Attribute::ConstraintList constraints{enumOf({"on"}), formatOf("x")};

    sut.setConstraints(constraints);

    ASSERT_EQ(sut.getConstraints().size(), 2u);
    EXPECT_EQ(sut.getConstraints()[0].get(), constraints[0].get());
    EXPECT_EQ(sut.getConstraints()[1].get(), constraints[1].get());
    EXPECT_EQ(constraints.size(), 2u);
}

TEST(Attribute, TakesOverAMovedConstraintList)
{
    Attribute sut("mode");
    Attribute::ConstraintList constraints{enumOf({"on"})};
    const aConstraint* first = constraints[0].get();

    sut.setConstraints(std::move(constraints));

    ASSERT_EQ(sut.getConstraints().size(), 1u);
    EXPECT_EQ(sut.getConstraints()[0].get(), first);
}

TEST(Attribute, EqualsAnAttributeOfSameNameTypeAndArrayFlagWhateverItsConstraints)
{
    Attribute sut("speed", AttrType_Number, true);
    sut.setConstraints({rangeOf(0, 10)});
    const Attribute other("speed", AttrType_Number, true);

    EXPECT_TRUE(sut == other);
}

TEST(Attribute, DiffersFromAnAttributeOfAnotherNameTypeOrArrayFlag)
{
    const Attribute sut("speed", AttrType_Number, true);

    EXPECT_FALSE(sut == Attribute("rpm", AttrType_Number, true));
    EXPECT_FALSE(sut == Attribute("speed", AttrType_Integer, true));
    EXPECT_FALSE(sut == Attribute("speed", AttrType_Number, false));
}

TEST(Attribute, KnowsTheThreeDefaultAttributesOfEveryObject)
{
    EXPECT_TRUE(Attribute::isDefaultAttribute("id"));
    EXPECT_TRUE(Attribute::isDefaultAttribute("name"));
    EXPECT_TRUE(Attribute::isDefaultAttribute("uri"));
    EXPECT_FALSE(Attribute::isDefaultAttribute("ID"));
    EXPECT_FALSE(Attribute::isDefaultAttribute("uuid"));
    EXPECT_FALSE(Attribute::isDefaultAttribute(""));
}

// Dispatch by type

TEST(Attribute, ConvertsByItsOwnType)
{
    Var text(42);
    Var integer(std::string("42"));
    Var number(std::string("2.5"));
    Var boolean(std::string("yes"));
    Var reference(OBJECT_URI);
    Var unsignedInteger(std::string("7"));

    Attribute("a", AttrType_String).convertValue(text);
    Attribute("a", AttrType_Integer).convertValue(integer);
    Attribute("a", AttrType_Number).convertValue(number);
    Attribute("a", AttrType_Boolean).convertValue(boolean);
    Attribute("a", AttrType_Object).convertValue(reference);
    Attribute("a", AttrType_IntegerUnsigned).convertValue(unsignedInteger);

    EXPECT_EQ(text.extract<std::string>(), "42");
    EXPECT_EQ(integer.extract<Poco::Int64>(), 42);
    EXPECT_EQ(number.extract<double>(), 2.5);
    EXPECT_TRUE(boolean.extract<bool>());
    EXPECT_EQ(reference.extract<Poco::URI>(), Poco::URI(OBJECT_URI));
    EXPECT_EQ(unsignedInteger.extract<Poco::UInt64>(), 7u);
}

TEST(Attribute, RefusesToConvertForATypeOutsideTheEnumeration)
{
    LogCapture capture;
    Var value(1);

    const std::string text =
        conversionError([](Var& v) { Attribute::convertValue(static_cast<AttributeType>(7), v); }, value);

    EXPECT_EQ(text, "Runtime exception: unknown attribute type");
    EXPECT_THAT(capture.lines(), ElementsAre("Error: unknown attribute type 7"));
    EXPECT_EQ(value.extract<int>(), 1);
}

// Integers

TEST(Attribute, ReadsTheLeadingNumberOfATextAsInteger)
{
    Var value(std::string("12abc"));

    Attribute::convertToInteger(value);

    EXPECT_EQ(value.type(), typeid(Poco::Int64));
    EXPECT_EQ(value.extract<Poco::Int64>(), 12);
}

TEST(Attribute, ReadsLeadingWhiteSpaceAndSignAsInteger)
{
    Var value(std::string("  -42"));

    Attribute::convertToInteger(value);

    EXPECT_EQ(value.extract<Poco::Int64>(), -42);
}

TEST(Attribute, StopsAnIntegerTextAtTheThousandsSeparator)
{
    Var value(std::string("1,000"));

    Attribute::convertToInteger(value);

    EXPECT_EQ(value.extract<Poco::Int64>(), 1);
}

TEST(Attribute, RefusesAnIntegerTextOutOfRangeAsParsingFailure)
{
    LogCapture capture;
    Var value(std::string(20, '9'));

    const std::string text = conversionError(Attribute::convertToInteger, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set 64bit integer type failed converting: "
              "parsing failed");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set 64bit integer type failed "
                            "converting: parsing failed"));
    EXPECT_EQ(value.extract<std::string>(), std::string(20, '9'));
}

TEST(Attribute, RefusesATextWithoutDigitsAsInteger)
{
    Var value(std::string("abc"));

    const std::string text = conversionError(Attribute::convertToInteger, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set 64bit integer type failed converting: "
              "parsing failed");
}

TEST(Attribute, RefusesAFractionalNumberAsIntegerWithWrongValue)
{
    LogCapture capture;
    Var value(1.5);

    const std::string text = conversionError(Attribute::convertToInteger, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set 64bit integer type with wrong value");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set 64bit integer type with wrong value"));
    EXPECT_EQ(value.extract<double>(), 1.5);
}

TEST(Attribute, WidensASmallerIntegerToInteger)
{
    Var value(7);

    Attribute::convertToInteger(value);

    EXPECT_EQ(value.type(), typeid(Poco::Int64));
    EXPECT_EQ(value.extract<Poco::Int64>(), 7);
}

TEST(Attribute, KeepsAValueThatAlreadyHoldsAnInteger)
{
    LogCapture capture;
    Var value(Poco::Int64(-3));

    Attribute::convertToInteger(value);

    EXPECT_EQ(value.extract<Poco::Int64>(), -3);
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(Attribute, RefusesAnUnsignedNumberBeyondTheIntegerRangeAsInvalid)
{
    LogCapture capture;
    Var value(std::numeric_limits<Poco::UInt64>::max());

    const std::string text = conversionError(Attribute::convertToInteger, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set 64bit integer type failed converting: invalid");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set 64bit integer type failed "
                            "converting: invalid (Value too large.)"));
    EXPECT_EQ(value.extract<Poco::UInt64>(), std::numeric_limits<Poco::UInt64>::max());
}

TEST(Attribute, ReportsAStandardExceptionOfANumericConversionAsInvalid)
{
    LogCapture capture;
    Var value(StdFailingInteger{});

    const std::string text = conversionError(Attribute::convertToInteger, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set 64bit integer type failed converting: invalid");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set 64bit integer type failed "
                            "converting: invalid (no integer here)"));
}

TEST(Attribute, RefusesAJsonObjectAsInteger)
{
    Var value(jsonWithUri(OBJECT_URI));

    const std::string text = conversionError(Attribute::convertToInteger, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set 64bit integer type with wrong value");
}

// Unsigned integers

TEST(Attribute, RefusesTrailingTextForUnsignedInteger)
{
    LogCapture capture;
    Var value(std::string("12abc"));

    const std::string text = conversionError(Attribute::convertToIntegerUnsigned, value);

    EXPECT_EQ(text, "Runtime exception: Attribute::setValue trying to set 64bit unsigned integer type failed "
                    "converting: parsing failed");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set 64bit unsigned integer type "
                            "failed converting: parsing failed"));
}

TEST(Attribute, ReadsAnUnsignedIntegerWithThousandsSeparators)
{
    Var value(std::string("1,000"));

    Attribute::convertToIntegerUnsigned(value);

    EXPECT_EQ(value.type(), typeid(Poco::UInt64));
    EXPECT_EQ(value.extract<Poco::UInt64>(), 1000u);
}

TEST(Attribute, ReadsTheLargestUnsignedIntegerFromText)
{
    Var value(std::string("18446744073709551615"));

    Attribute::convertToIntegerUnsigned(value);

    EXPECT_EQ(value.extract<Poco::UInt64>(), std::numeric_limits<Poco::UInt64>::max());
}

TEST(Attribute, RefusesANegativeTextAsUnsignedInteger)
{
    Var value(std::string("-1"));

    const std::string text = conversionError(Attribute::convertToIntegerUnsigned, value);

    EXPECT_EQ(text, "Runtime exception: Attribute::setValue trying to set 64bit unsigned integer type failed "
                    "converting: parsing failed");
}

TEST(Attribute, RefusesUnsignedTextsJustBeyondItsRangeAsParsingFailure)
{
    for (const char* tooLarge :
         {"18446744073709551616", "18446744073709551619", "+18,446,744,073,709,551,617"})
    {
        Var value{std::string(tooLarge)};

        const std::string text = conversionError(Attribute::convertToIntegerUnsigned, value);

        EXPECT_EQ(text,
                  "Runtime exception: Attribute::setValue trying to set 64bit unsigned integer type failed "
                  "converting: parsing failed")
            << tooLarge;
    }
}

TEST(Attribute, RefusesUnsignedTextsFarBeyondItsRangeAsParsingFailure)
{
    for (const char* tooLarge : {"18446744073709551620", "99999999999999999999", "184467440737095516150"})
    {
        Var value{std::string(tooLarge)};

        const std::string text = conversionError(Attribute::convertToIntegerUnsigned, value);

        EXPECT_EQ(text,
                  "Runtime exception: Attribute::setValue trying to set 64bit unsigned integer type failed "
                  "converting: parsing failed")
            << tooLarge;
    }
}

TEST(Attribute, ReadsSmallUnsignedTextsWithLeadingZerosAndSeparators)
{
    Var zeros(std::string("0003"));
    Var grouped(std::string("0,000,002"));
    Var zero(std::string("0"));

    Attribute::convertToIntegerUnsigned(zeros);
    Attribute::convertToIntegerUnsigned(grouped);
    Attribute::convertToIntegerUnsigned(zero);

    EXPECT_EQ(zeros.extract<Poco::UInt64>(), 3u);
    EXPECT_EQ(grouped.extract<Poco::UInt64>(), 2u);
    EXPECT_EQ(zero.extract<Poco::UInt64>(), 0u);
}

TEST(Attribute, RefusesANegativeNumberAsUnsignedIntegerWithInvalidConversion)
{
    LogCapture capture;
    Var value(-1);

    const std::string text = conversionError(Attribute::convertToIntegerUnsigned, value);

    EXPECT_EQ(text, "Runtime exception: Attribute::setValue trying to set 64bit unsigned integer type failed "
                    "converting: invalid");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set 64bit unsigned integer type "
                            "failed converting: invalid (Value too small.)"));
    EXPECT_EQ(value.extract<int>(), -1);
}

TEST(Attribute, WidensAnIntegerToUnsignedInteger)
{
    Var value(5);

    Attribute::convertToIntegerUnsigned(value);

    EXPECT_EQ(value.type(), typeid(Poco::UInt64));
    EXPECT_EQ(value.extract<Poco::UInt64>(), 5u);
}

TEST(Attribute, RefusesAWholeDoubleAsUnsignedIntegerWithWrongValue)
{
    Var value(2.0);

    const std::string text = conversionError(Attribute::convertToIntegerUnsigned, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set 64bit unsigned integer type with wrong "
              "value");
}

// Numbers

TEST(Attribute, TurnsAnIntegerIntoANumber)
{
    Var value(3);

    Attribute::convertToNumber(value);

    EXPECT_EQ(value.type(), typeid(double));
    EXPECT_EQ(value.extract<double>(), 3.0);
}

TEST(Attribute, TurnsAFloatIntoANumber)
{
    Var value(1.5f);

    Attribute::convertToNumber(value);

    EXPECT_EQ(value.type(), typeid(double));
    EXPECT_EQ(value.extract<double>(), 1.5);
}

TEST(Attribute, ReadsDecimalAndExponentTextAsNumber)
{
    Var decimal(std::string("-2.25"));
    Var exponent(std::string("1e3"));
    Var grouped(std::string("1,000.5"));

    Attribute::convertToNumber(decimal);
    Attribute::convertToNumber(exponent);
    Attribute::convertToNumber(grouped);

    EXPECT_EQ(decimal.extract<double>(), -2.25);
    EXPECT_EQ(exponent.extract<double>(), 1000.0);
    EXPECT_EQ(grouped.extract<double>(), 1000.5);
}

TEST(Attribute, RefusesTrailingTextForNumber)
{
    LogCapture capture;
    Var value(std::string("12abc"));

    const std::string text = conversionError(Attribute::convertToNumber, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set double type failed converting: parsing failed");
    EXPECT_THAT(
        capture.lines(),
        ElementsAre(
            "Error: Attribute::setValue trying to set double type failed converting: parsing failed"));
}

TEST(Attribute, RefusesTheTextInfAsNumber)
{
    Var value(std::string("inf"));

    const std::string text = conversionError(Attribute::convertToNumber, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set double type failed converting: parsing failed");
}

TEST(Attribute, RefusesAUriAsNumberWithWrongValue)
{
    Var value{Poco::URI(OBJECT_URI)};

    const std::string text = conversionError(Attribute::convertToNumber, value);

    EXPECT_EQ(text, "Runtime exception: Attribute::setValue trying to set double type with wrong value");
}

TEST(Attribute, ReportsAFailingConversionToNumberAsInvalid)
{
    LogCapture capture;
    Var value(PocoFailingNumber{});

    const std::string text = conversionError(Attribute::convertToNumber, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set double type failed converting: invalid");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set double type failed converting: invalid "
                            "(no double here)"));
}

// Booleans

TEST(Attribute, RefusesADoubleAsBoolean)
{
    LogCapture capture;
    Var value(1.0);

    const std::string text = conversionError(Attribute::convertToBoolean, value);

    EXPECT_EQ(text, "Runtime exception: Attribute::setValue trying to set boolean type with wrong value");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set boolean type with wrong value"));
    EXPECT_EQ(value.extract<double>(), 1.0);
}

TEST(Attribute, TurnsZeroIntoFalseAndOtherIntegersIntoTrue)
{
    Var zero(0);
    Var five(Poco::Int64(5));
    Var minusOne(-1);

    Attribute::convertToBoolean(zero);
    Attribute::convertToBoolean(five);
    Attribute::convertToBoolean(minusOne);

    EXPECT_EQ(zero.type(), typeid(bool));
    EXPECT_FALSE(zero.extract<bool>());
    EXPECT_TRUE(five.extract<bool>());
    EXPECT_TRUE(minusOne.extract<bool>());
}

TEST(Attribute, ReadsBooleanTexts)
{
    Var yes(std::string("yes"));
    Var off(std::string("OFF"));
    Var trueText(std::string("true"));
    Var zeroText(std::string("0"));

    Attribute::convertToBoolean(yes);
    Attribute::convertToBoolean(off);
    Attribute::convertToBoolean(trueText);
    Attribute::convertToBoolean(zeroText);

    EXPECT_TRUE(yes.extract<bool>());
    EXPECT_FALSE(off.extract<bool>());
    EXPECT_TRUE(trueText.extract<bool>());
    EXPECT_FALSE(zeroText.extract<bool>());
}

TEST(Attribute, RefusesAnUnknownBooleanText)
{
    LogCapture capture;
    Var value(std::string("maybe"));

    const std::string text = conversionError(Attribute::convertToBoolean, value);

    EXPECT_EQ(text, "Runtime exception: Attribute::setValue trying to set boolean type with wrong value");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set boolean type with wrong value"));
    EXPECT_EQ(value.extract<std::string>(), "maybe");
}

// Strings

TEST(Attribute, WritesAnIntegerAsDecimalText)
{
    Var value(1);

    Attribute::convertToString(value);

    EXPECT_EQ(value.type(), typeid(std::string));
    EXPECT_EQ(value.extract<std::string>(), "1");
}

TEST(Attribute, WritesTheExtremeIntegersWithoutPaddingOrSeparator)
{
    Var smallest(std::numeric_limits<Poco::Int64>::min());
    Var largest(std::numeric_limits<Poco::UInt64>::max());

    Attribute::convertToString(smallest);
    Attribute::convertToString(largest);

    EXPECT_EQ(smallest.extract<std::string>(), "-9223372036854775808");
    EXPECT_EQ(largest.extract<std::string>(), "18446744073709551615");
}

TEST(Attribute, WritesBooleansAsTrueAndFalse)
{
    Var yes(true);
    Var no(false);

    Attribute::convertToString(yes);
    Attribute::convertToString(no);

    EXPECT_EQ(yes.extract<std::string>(), "true");
    EXPECT_EQ(no.extract<std::string>(), "false");
}

TEST(Attribute, WritesADoubleAsItsShortestText)
{
    Var whole(3.0);
    Var tenth(0.1);
    Var negative(-2.5);

    Attribute::convertToString(whole);
    Attribute::convertToString(tenth);
    Attribute::convertToString(negative);

    EXPECT_EQ(whole.extract<std::string>(), "3");
    EXPECT_EQ(tenth.extract<std::string>(), "0.1");
    EXPECT_EQ(negative.extract<std::string>(), "-2.5");
}

TEST(Attribute, WritesADoubleInExponentFormOutsideFifteenDecimalPlaces)
{
    Var large(1e15);
    Var belowLarge(1e14);
    Var small(1e-15);
    Var belowSmall(1e-16);

    Attribute::convertToString(large);
    Attribute::convertToString(belowLarge);
    Attribute::convertToString(small);
    Attribute::convertToString(belowSmall);

    EXPECT_EQ(large.extract<std::string>(), "1e+15");
    EXPECT_EQ(belowLarge.extract<std::string>(), "100000000000000");
    EXPECT_EQ(small.extract<std::string>(), "0.000000000000001");
    EXPECT_EQ(belowSmall.extract<std::string>(), "1e-16");
}

TEST(Attribute, RefusesAJsonObjectAsString)
{
    LogCapture capture;
    Var value(jsonWithUri(OBJECT_URI));

    const std::string text = conversionError(Attribute::convertToString, value);

    EXPECT_EQ(text, "Runtime exception: Attribute::setValue trying to set string type with wrong value");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set string type with wrong value"));
}

TEST(Attribute, ReportsAFailingNumberToStringConversionInTheIntegerWords)
{
    LogCapture capture;
    Var value(PocoFailingNumber{});

    const std::string text = conversionError(Attribute::convertToString, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set string type failed converting: invalid");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set 64 bit integer type failed "
                            "converting: invalid (no double here)"));
}

TEST(Attribute, ReportsAStandardExceptionOfAStringConversionInTheIntegerWords)
{
    LogCapture capture;
    Var value(StdFailingInteger{});

    const std::string text = conversionError(Attribute::convertToString, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set string type failed converting: invalid");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set 64 bit integer type failed "
                            "converting: invalid (no integer here)"));
}

TEST(Attribute, KeepsAText)
{
    Var value(std::string("12abc"));

    Attribute::convertToString(value);

    EXPECT_EQ(value.extract<std::string>(), "12abc");
}

TEST(Attribute, PassesAnEmptyValueThroughEveryConversionUnchanged)
{
    LogCapture capture;
    Var integer, unsignedInteger, number, text, boolean, reference;

    Attribute::convertToInteger(integer);
    Attribute::convertToIntegerUnsigned(unsignedInteger);
    Attribute::convertToNumber(number);
    Attribute::convertToString(text);
    Attribute::convertToBoolean(boolean);
    Attribute::convertToObjectRef(reference);

    EXPECT_TRUE(integer.isEmpty());
    EXPECT_TRUE(unsignedInteger.isEmpty());
    EXPECT_TRUE(number.isEmpty());
    EXPECT_TRUE(text.isEmpty());
    EXPECT_TRUE(boolean.isEmpty());
    EXPECT_TRUE(reference.isEmpty());
    EXPECT_THAT(capture.lines(), IsEmpty());
}

// Object references

TEST(Attribute, TurnsTheTextOfAnObjectAddressIntoAUri)
{
    Var value(OBJECT_URI);

    Attribute::convertToObjectRef(value);

    EXPECT_EQ(value.type(), typeid(Poco::URI));
    EXPECT_EQ(value.extract<Poco::URI>().toString(), OBJECT_URI);
}

TEST(Attribute, AcceptsAnAbsoluteUriOfAnObject)
{
    Var value(std::string("http://localhost:8080") + OBJECT_URI);

    Attribute::convertToObjectRef(value);

    EXPECT_EQ(value.extract<Poco::URI>().toString(), "http://localhost:8080" + OBJECT_URI);
}

TEST(Attribute, KeepsAUriOfAnObject)
{
    Var value{Poco::URI(OBJECT_URI)};

    Attribute::convertToObjectRef(value);

    EXPECT_EQ(value.extract<Poco::URI>(), Poco::URI(OBJECT_URI));
}

TEST(Attribute, TakesTheUriOfAJsonObject)
{
    Var value(jsonWithUri(OBJECT_URI));

    Attribute::convertToObjectRef(value);

    EXPECT_EQ(value.type(), typeid(Poco::URI));
    EXPECT_EQ(value.extract<Poco::URI>().toString(), OBJECT_URI);
}

TEST(Attribute, RefusesAJsonObjectWithoutUri)
{
    LogCapture capture;
    Poco::JSON::Object::Ptr object(new Poco::JSON::Object(0));
    object->set("id", "6f1c2a3e-4b5d-4e6f-8a7b-9c0d1e2f3a4b");
    Var value(object);

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set object reference type without 'uri' "
              "attribute");
    EXPECT_THAT(capture.lines(), ElementsAre("Error: Missing 'uri' attribute in object reference!"));
    EXPECT_EQ(value.extract<Poco::JSON::Object::Ptr>().get(), object.get());
}

TEST(Attribute, RefusesANullJsonObjectAsMissingUri)
{
    Var value(Poco::JSON::Object::Ptr{});

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set object reference type without 'uri' "
              "attribute");
}

// An object row of the "doors" resource with the given cells.
Orvi::DBData::XObject::Ptr objectRow(const Orvi::DBData::AttributeValueList& cells)
{
    Orvi::DBData::XObject::Ptr row(new Orvi::DBData::XObject(Element::Ptr()));
    row->setDBID(3);
    row->setAttributeValues(cells);
    return row;
}

Orvi::DBData::AttributeValuePtr cellOf(const std::string& attributeName, const Var& value)
{
    Orvi::DBData::AttributeValuePtr cell(
        new Orvi::DBData::AttributeValue(3, new Attribute(attributeName), 1));
    cell->setValue(value, false);
    return cell;
}

TEST(Attribute, TakesTheUriOfAnObjectRow)
{
    Var value(objectRow({cellOf("name", Var("front")), cellOf("uri", Var(OBJECT_URI))}));

    Attribute::convertToObjectRef(value);

    EXPECT_EQ(value.type(), typeid(Poco::URI));
    EXPECT_EQ(value.extract<Poco::URI>().toString(), OBJECT_URI);
}

TEST(Attribute, RefusesAnObjectRowWithoutUri)
{
    LogCapture capture;
    const Orvi::DBData::XObject::Ptr row = objectRow({cellOf("name", Var("front"))});
    Var value(row);

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set object reference type without 'uri' "
              "attribute");
    EXPECT_THAT(capture.lines(), ElementsAre("Error: Missing 'uri' attribute in object reference!"));
    EXPECT_EQ(value.extract<Orvi::DBData::XObject::Ptr>().get(), row.get());
}

TEST(Attribute, RefusesANullObjectRowAsMissingUri)
{
    Var value(Orvi::DBData::XObject::Ptr{});

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(text,
              "Runtime exception: Attribute::setValue trying to set object reference type without 'uri' "
              "attribute");
}

TEST(Attribute, RefusesAnObjectRowWhoseUriAddressesAWholeResource)
{
    Var value(objectRow({cellOf("uri", Var("/car/doors"))}));

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set object reference type with invalid value");
}

TEST(Attribute, RefusesAUriWithASyntaxErrorAsInvalidValue)
{
    LogCapture capture;
    Var value(std::string("http://localhost:port") + OBJECT_URI);

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set object reference type with invalid value");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Invalid URI value for object reference: Bad URI syntax: bad or "
                            "invalid port number: port",
                            "Error: Invalid URI value for object reference"));
    EXPECT_EQ(value.type(), typeid(std::string));
}

TEST(Attribute, RefusesTheAddressOfAWholeResourceAsInvalidValue)
{
    LogCapture capture;
    Var value(std::string("/car/doors"));

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set object reference type with invalid value");
    EXPECT_THAT(capture.lines(), ElementsAre("Error: Invalid URI value for object reference"));
}

TEST(Attribute, RefusesAKeywordAddressUnderAResourceAsInvalidValue)
{
    Var value(std::string("/car/doors/$id"));

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set object reference type with invalid value");
}

TEST(Attribute, RefusesAnIntegerAsObjectReferenceWithUnhandledType)
{
    LogCapture capture;
    Var value(5);

    const std::string text = conversionError(Attribute::convertToObjectRef, value);

    EXPECT_EQ(
        text,
        "Runtime exception: Attribute::setValue trying to set object reference type with unhandled value "
        "type");
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Attribute::setValue trying to set object reference type with "
                            "unhandled value type"));
}

// Checks of a value's content

TEST(Attribute, AcceptsAnEmptyValueOfEveryTypeWhenNullIsAllowed)
{
    LogCapture capture;

    for (const AttributeType type : ALL_TYPES)
    {
        Var value;
        EXPECT_TRUE(Attribute::checkAttributeValueContent(type, value, nullptr, true)) << "type " << type;
        EXPECT_TRUE(value.isEmpty());
    }
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(Attribute, RefusesAnEmptyValueWhenNullIsNotAllowed)
{
    LogCapture capture;
    Var value;
    const Poco::SharedPtr<aConstraint> constraint = enumOf({"a"});

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_String, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(), ElementsAre("Warning: Null value is not allowed."));
}

TEST(Attribute, ConvertsTheValueInPlaceWhenThereIsNoConstraint)
{
    Var value(std::string("12abc"));

    const bool result = Attribute::checkAttributeValueContent(AttrType_Integer, value, nullptr, false);

    EXPECT_TRUE(result);
    EXPECT_EQ(value.extract<Poco::Int64>(), 12);
}

TEST(Attribute, FailsTheCheckOfAValueThatDoesNotConvert)
{
    LogCapture capture;
    Var value(std::string("abc"));

    const bool result = Attribute::checkAttributeValueContent(AttrType_Integer, value, nullptr, false);

    EXPECT_FALSE(result);
    EXPECT_THAT(
        capture.lines(),
        ElementsAre("Error: Attribute::setValue trying to set 64bit integer type failed converting: parsing "
                    "failed",
                    "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime "
                    "exception: Attribute::setValue trying to set 64bit integer type failed converting: "
                    "parsing failed"));
    EXPECT_EQ(value.extract<std::string>(), "abc");
}

TEST(Attribute, FailsTheCheckForATypeOutsideTheEnumeration)
{
    LogCapture capture;
    Var value(1);

    const bool result =
        Attribute::checkAttributeValueContent(static_cast<AttributeType>(9), value, nullptr, true);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: unknown attribute type 9",
                            "Error: Attribute::checkAttributeValueContent: Failed to convert value "
                            "- Runtime exception: unknown attribute type"));
}

TEST(Attribute, PassesAnyReferenceWithoutConstraintUnlookedAt)
{
    LogCapture capture;
    Var value(5);

    const bool result = Attribute::checkAttributeValueContent(AttrType_Object, value, nullptr, false);

    EXPECT_TRUE(result);
    EXPECT_EQ(value.type(), typeid(int));
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(Attribute, ChecksAnAllowedReferenceOnACopyAndLeavesTheValueAsItCame)
{
    const Poco::SharedPtr<aConstraint> constraint = oneOf({"car.doors.door"});
    Var value(OBJECT_URI);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Object, value, constraint.get(), false);

    EXPECT_TRUE(result);
    EXPECT_EQ(value.type(), typeid(std::string));
    EXPECT_EQ(value.extract<std::string>(), OBJECT_URI);
}

TEST(Attribute, FailsAReferenceOutsideTheAllowedTargets)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = oneOf({"car.windows.window"});
    Var value(OBJECT_URI);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Object, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(), ElementsAre("Error: Object reference '" + OBJECT_URI + "' is not allowed"));
}

TEST(Attribute, FailsAConstrainedReferenceThatDoesNotConvert)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = oneOf({"car.doors.door"});
    Var value(std::string("/car/doors"));

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Object, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Invalid URI value for object reference",
                            "Warning: Attribute check has failed: Runtime exception: "
                            "Attribute::setValue trying to set object reference type with invalid "
                            "value"));
    EXPECT_EQ(value.extract<std::string>(), "/car/doors");
}

TEST(Attribute, FailsAReferenceUnderAConstraintOfAnotherKind)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = enumOf({OBJECT_URI});
    Var value(OBJECT_URI);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Object, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(), ElementsAre("Error: Unhandled constraint type for object references 1"));
}

TEST(Attribute, FailsAReferenceUnderAOneOfTypeOfAnotherClass)
{
    LogCapture capture;
    const aConstraint constraint(Orvi::DBData::ConstraintType_OneOf);

    const bool result = Attribute::checkAttributeObjectRefValue(Poco::URI(OBJECT_URI), constraint);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(), ElementsAre("Error: Invalid constraint type for object references!"));
}

TEST(Attribute, AcceptsABooleanUnderAnyConstraint)
{
    LogCapture capture;
    const std::vector<Poco::SharedPtr<aConstraint>> constraints{enumOf({"x"}), formatOf("x"),
                                                                oneOf({"a.b.c"}), rangeOf(5, 6, 1)};

    for (const auto& constraint : constraints)
    {
        Var value(std::string("false"));
        EXPECT_TRUE(Attribute::checkAttributeValueContent(AttrType_Boolean, value, constraint.get(), false));
        EXPECT_FALSE(value.extract<bool>());
    }
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(Attribute, ChecksATextAgainstAnEnum)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = enumOf({"open", "closed"});
    Var known(std::string("open"));
    Var unknown(std::string("ajar"));

    EXPECT_TRUE(Attribute::checkAttributeValueContent(AttrType_String, known, constraint.get(), false));
    EXPECT_FALSE(Attribute::checkAttributeValueContent(AttrType_String, unknown, constraint.get(), false));
    EXPECT_THAT(capture.lines(),
                ElementsAre("Warning: checkAttributeStringValue: unknown enum value 'ajar'"));
}

TEST(Attribute, ChecksTheTextOfAConvertedNumberAgainstAnEnum)
{
    const Poco::SharedPtr<aConstraint> constraint = enumOf({"1", "2"});
    Var value(2);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_String, value, constraint.get(), false);

    EXPECT_TRUE(result);
    EXPECT_EQ(value.extract<std::string>(), "2");
}

TEST(Attribute, ChecksThatAFormatMatchesTheWholeText)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = formatOf("[a-z]+");
    Var whole(std::string("abc"));
    Var partial(std::string("abc1"));

    EXPECT_TRUE(Attribute::checkAttributeValueContent(AttrType_String, whole, constraint.get(), false));
    EXPECT_FALSE(Attribute::checkAttributeValueContent(AttrType_String, partial, constraint.get(), false));
    EXPECT_THAT(capture.lines(),
                ElementsAre("Warning: checkAttributeStringValue: 'abc1' doesn't match format [a-z]+"));
}

TEST(Attribute, FailsTheCheckWhenTheFormatDoesNotCompile)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = formatOf("(");
    Var value(std::string("x"));

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_String, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(),
                ElementsAre("Warning: Attribute check has failed: Error in regular expression: missing "
                            ") (at offset 1)"));
}

TEST(Attribute, RefusesARangeConstraintForAText)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = rangeOf(0, 1);

    const bool result = Attribute::checkAttributeStringValue("x", *constraint);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(), ElementsAre("Error: Unsupported constraint type 3 for string attribute"));
}

TEST(Attribute, RefusesAnEnumTypeOfAnotherClassForATextWithABugcheck)
{
    const aConstraint constraint(Orvi::DBData::ConstraintType_Enum);

    try
    {
        Attribute::checkAttributeStringValue("x", constraint);
        FAIL() << "no bugcheck";
    }
    catch (const Poco::BugcheckException& e)
    {
        EXPECT_THAT(e.message(), StartsWith("constraint type does not match class in file \""));
        EXPECT_THAT(e.message(), HasSubstr("Attribute.cpp\", line "));
    }
}

TEST(Attribute, RefusesAFormatTypeOfAnotherClassForATextWithABugcheck)
{
    const aConstraint constraint(Orvi::DBData::ConstraintType_Format);

    const std::string text =
        thrownText<Poco::BugcheckException>([&] { Attribute::checkAttributeStringValue("x", constraint); });

    EXPECT_THAT(text, StartsWith("Bugcheck: constraint type does not match class in file \""));
}

TEST(Attribute, ReportsABugcheckInsideTheContentCheckAsFailedCheck)
{
    LogCapture capture;
    const aConstraint constraint(Orvi::DBData::ConstraintType_Enum);
    Var value(std::string("x"));

    const bool result = Attribute::checkAttributeValueContent(AttrType_String, value, &constraint, false);

    EXPECT_FALSE(result);
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_THAT(
        capture.lines()[0],
        StartsWith("Warning: Attribute check has failed: Bugcheck: constraint type does not match class"));
}

TEST(Attribute, StoresARoundedIntegerAfterAPassedCheck)
{
    const Poco::SharedPtr<aConstraint> constraint = rangeOf(0, 100, 10);
    Var value(std::string("14"));

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Integer, value, constraint.get(), false);

    EXPECT_TRUE(result);
    EXPECT_EQ(value.extract<Poco::Int64>(), 10);
}

TEST(Attribute, KeepsTheUnroundedIntegerWhenTheRangeCheckFails)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = rangeOf(0, 100, 10);
    Var value(std::string("106"));

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Integer, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_EQ(value.type(), typeid(Poco::Int64));
    EXPECT_EQ(value.extract<Poco::Int64>(), 106);
    EXPECT_THAT(capture.lines(), ElementsAre("Debug: Value 110 not between 0 and 100."));
}

TEST(Attribute, StoresARoundedUnsignedIntegerAfterAPassedCheck)
{
    const Poco::SharedPtr<aConstraint> constraint = rangeOf(0, 100, 4);
    Var value(6);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_IntegerUnsigned, value, constraint.get(), false);

    EXPECT_TRUE(result);
    EXPECT_EQ(value.extract<Poco::UInt64>(), 8u);
}

TEST(Attribute, StoresARoundedNumberAfterAPassedCheck)
{
    const Poco::SharedPtr<aConstraint> constraint = rangeOf(0.0, 2.0, 0.5);
    Var value(1.3);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Number, value, constraint.get(), false);

    EXPECT_TRUE(result);
    EXPECT_EQ(value.extract<double>(), 1.5);
}

TEST(Attribute, KeepsTheUnroundedNumberWhenTheRoundedOneIsOutOfRange)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = rangeOf(0.0, 1.4, 0.5);
    Var value(1.3);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Number, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_EQ(value.extract<double>(), 1.3);
    EXPECT_THAT(capture.lines(), ElementsAre("Debug: Value 1.5 not between 0 and 1.4."));
}

TEST(Attribute, FailsAnIntegerCheckWithoutBoundsAsFailedCheck)
{
    LogCapture capture;
    Poco::SharedPtr<ConstraintResolution> constraint(new ConstraintResolution);
    constraint->setMaximum(100);
    Var value(std::string("5"));

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Integer, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(),
                ElementsAre("Warning: Attribute check has failed: Out of range: Value too small."));
    EXPECT_EQ(value.extract<Poco::Int64>(), 5);
}

TEST(Attribute, FailsANumberCheckWithAZeroResolutionAsFailedCheck)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = rangeOf(0.0, 1.0, 0.0);
    Var value(0.5);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Number, value, constraint.get(), false);

    EXPECT_FALSE(result);
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_THAT(capture.lines()[0],
                StartsWith("Warning: Attribute check has failed: Bugcheck: invalid resolution"));
}

TEST(Attribute, RefusesAnEnumForANumber)
{
    LogCapture capture;
    const Poco::SharedPtr<aConstraint> constraint = enumOf({"1"});
    Var value(1);

    const bool result =
        Attribute::checkAttributeValueContent(AttrType_Integer, value, constraint.get(), false);

    EXPECT_FALSE(result);
    EXPECT_THAT(capture.lines(),
                ElementsAre("Error: Unsupported constraint type 1 for numeric attribute type"));
}

TEST(Attribute, ChecksEachNumericTypeAgainstAResolution)
{
    const Poco::SharedPtr<aConstraint> constraint = rangeOf(-100, 100, 10);
    const Poco::SharedPtr<aConstraint> unsignedConstraint = rangeOf(0, 100, 10);
    Poco::Int64 integer = -15;
    Poco::UInt64 unsignedInteger = 15;
    double number = 14.0;

    EXPECT_TRUE(Attribute::checkAttributeIntegerValue(integer, *constraint));
    EXPECT_TRUE(Attribute::checkAttributeIntegerValue(unsignedInteger, *unsignedConstraint));
    EXPECT_TRUE(Attribute::checkAttributeNumberValue(number, *constraint));
    EXPECT_EQ(integer, -20);
    EXPECT_EQ(unsignedInteger, 20u);
    EXPECT_EQ(number, 10.0);
}

TEST(Attribute, RefusesAResolutionTypeOfAnotherClassForANumberWithABugcheck)
{
    const aConstraint constraint(Orvi::DBData::ConstraintType_Resolution);
    double value = 1.0;

    const std::string text =
        thrownText<Poco::BugcheckException>([&] { Attribute::checkAttributeNumberValue(value, constraint); });

    EXPECT_THAT(text, StartsWith("Bugcheck: constraint type does not match class in file \""));
}

TEST(Attribute, ChecksAgainstItsFirstConstraintOnly)
{
    Attribute sut("mode", AttrType_String, false);
    sut.setConstraints({enumOf({"eco"}), enumOf({"sport"})});
    Var first(std::string("eco"));
    Var second(std::string("sport"));

    EXPECT_TRUE(sut.checkAttributeValueContent(first, false));
    EXPECT_FALSE(sut.checkAttributeValueContent(second, false));
}

TEST(Attribute, ChecksWithoutConstraintWhenItHasNone)
{
    const Attribute sut("level", AttrType_Integer, false);
    Var value(std::string("99"));

    EXPECT_TRUE(sut.checkAttributeValueContent(value, false));
    EXPECT_EQ(value.extract<Poco::Int64>(), 99);
}

TEST(Attribute, ChecksNullByTheGivenFlag)
{
    const Attribute sut("level", AttrType_Integer, false);
    Var allowed;
    Var refused;

    EXPECT_TRUE(sut.checkAttributeValueContent(allowed, true));
    EXPECT_FALSE(sut.checkAttributeValueContent(refused, false));
}

} // namespace
