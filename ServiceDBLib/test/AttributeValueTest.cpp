#include "JSONDataCache/DBData/AttributeValue.h"

#include "JSONDataCache/DBData/ConstraintEnum.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <typeinfo>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeType;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValueList;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::ConstraintEnum;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using Lines = std::vector<std::string>;
namespace Util = Orvi::Util;
namespace DBData = Orvi::DBData;

const std::string SCALAR_AGAINST_ARRAY_LINE =
    "Warning: DBData::AttributeValue: Can not compare single value with array of values";

Attribute::Ptr makeAttribute(const std::string& name, AttributeType type, bool isArray = false)
{
    return new Attribute(name, type, isArray);
}

AttributeValue::ValueArrayPtr makeArray(const std::vector<Var>& elements)
{
    return new AttributeValue::ValueArray(elements);
}

const AttributeValue::ValueArray& heldArray(const AttributeValue& cell)
{
    return *cell.getValue().extract<AttributeValue::ValueArrayPtr>();
}

TEST(AttributeValue, KnowsItsObjectItsIdAndItsDefinition)
{
    const AttributeValue sut(7, makeAttribute("speed", DBData::AttrType_Number, true), 3);

    EXPECT_EQ(sut.getParent(), 7);
    EXPECT_EQ(sut.getDBID(), 3);
    EXPECT_EQ(sut.getName(), "speed");
    EXPECT_EQ(sut.getType(), DBData::AttrType_Number);
    EXPECT_TRUE(sut.isArray());
    EXPECT_FALSE(sut.hasValue());
    EXPECT_TRUE(sut.getValue().isEmpty());
}

TEST(AttributeValue, RefusesConstructionWithoutAnAttribute)
{
    LogCapture capture;

    try
    {
        AttributeValue sut(1, Attribute::Ptr(), 2);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "unset Attribute in AttributeValue");
    }
    EXPECT_EQ(capture.lines(), Lines{"Error: AttributeValue needs a Attribute!"});
}

TEST(AttributeValue, ListsHoldSharedCells)
{
    const AttributeValuePtr cell(new AttributeValue(1, makeAttribute("speed", DBData::AttrType_Integer), 2));

    AttributeValueList sut{cell, cell};

    EXPECT_EQ(sut[0].get(), sut[1].get());
    EXPECT_EQ(cell.referenceCount(), 3);
}

TEST(AttributeValue, ConvertsAScalarToTheCanonicalType)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Integer), 2);

    const bool stored = sut.setValue(Var("42"));

    EXPECT_TRUE(stored);
    ASSERT_EQ(sut.getValue().type(), typeid(Attribute::Integer));
    EXPECT_EQ(sut.getValue().extract<Attribute::Integer>(), 42);
    EXPECT_TRUE(sut.hasValue());
}

TEST(AttributeValue, ClearsTheCellWhenSetToNull)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Integer), 2);
    sut.setValue(Var(5));

    EXPECT_TRUE(sut.setValue(Var()));

    EXPECT_FALSE(sut.hasValue());
}

TEST(AttributeValue, ClearsAnArrayCellWhenSetToNull)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);
    sut.setValue(Var(makeArray({Var(1), Var(2)})));

    EXPECT_TRUE(sut.setValue(Var()));

    EXPECT_FALSE(sut.hasValue());
}

TEST(AttributeValue, KeepsTheOldValueWhenAScalarFailsConversion)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Number), 2);
    sut.setValue(Var(1.5));
    LogCapture capture;

    const bool stored = sut.setValue(Var("fast"));

    EXPECT_FALSE(stored);
    EXPECT_EQ(sut.getValue().extract<double>(), 1.5);
    EXPECT_EQ(
        capture.lines(),
        (Lines{"Error: Attribute::setValue trying to set double type failed converting: parsing failed",
               "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime exception: "
               "Attribute::setValue trying to set double type failed converting: parsing failed",
               "Error: Failed to set invalid value for attribute speed (2)"}));
}

TEST(AttributeValue, KeepsTheOldValueWhenAScalarFailsItsConstraint)
{
    Attribute::Ptr attribute = makeAttribute("gear", DBData::AttrType_String);
    Poco::SharedPtr<ConstraintEnum> gears(new ConstraintEnum);
    gears->setEnumValues({"P", "D"});
    attribute->setConstraints({gears});
    AttributeValue sut(1, attribute, 2);
    sut.setValue(Var("P"));
    LogCapture capture;

    const bool stored = sut.setValue(Var("X"));

    EXPECT_FALSE(stored);
    EXPECT_EQ(sut.getValue().extract<std::string>(), "P");
    EXPECT_EQ(capture.lines(), (Lines{"Warning: checkAttributeStringValue: unknown enum value 'X'",
                                      "Error: Failed to set invalid value for attribute gear (0)"}));
}

TEST(AttributeValue, DropsNullsFromAJsonArray)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);
    Poco::JSON::Array::Ptr input(new Poco::JSON::Array);
    input->add("1");
    input->add(Var());
    input->add(3);
    LogCapture capture;

    const bool stored = sut.setValue(Var(input));

    EXPECT_TRUE(stored);
    const AttributeValue::ValueArray& held = heldArray(sut);
    ASSERT_EQ(held.size(), 2u);
    EXPECT_EQ(held[0].type(), typeid(Attribute::Integer));
    EXPECT_EQ(held[0].extract<Attribute::Integer>(), 1);
    EXPECT_EQ(held[1].extract<Attribute::Integer>(), 3);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Array must not contain null values!"});
}

TEST(AttributeValue, TakesEveryFormOfArray)
{
    Poco::JSON::Array jsonArray;
    jsonArray.add(1);
    Poco::JSON::Array::Ptr jsonArrayPtr(new Poco::JSON::Array);
    jsonArrayPtr->add(2);
    const AttributeValue::ValueArray valueArray{Var(3)};
    const std::vector<Var> inputs{Var(jsonArray), Var(jsonArrayPtr), Var(valueArray),
                                  Var(makeArray({Var(4)}))};
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Number, true), 2);

    std::vector<double> stored;
    for (const Var& input : inputs)
    {
        ASSERT_TRUE(sut.setValue(input));
        stored.push_back(heldArray(sut).at(0).extract<double>());
    }

    EXPECT_EQ(stored, (std::vector<double>{1.0, 2.0, 3.0, 4.0}));
}

TEST(AttributeValue, KeepsTheOldArrayWhenAnElementFailsConversion)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);
    sut.setValue(Var(makeArray({Var(1), Var(2)})));
    const Var before = sut.getValue();
    LogCapture capture;

    const bool stored = sut.setValue(Var(makeArray({Var(5), Var("many")})));

    EXPECT_FALSE(stored);
    EXPECT_EQ(sut.getValue().extract<AttributeValue::ValueArrayPtr>().get(),
              before.extract<AttributeValue::ValueArrayPtr>().get());
    ASSERT_EQ(heldArray(sut).size(), 2u);
    EXPECT_EQ(heldArray(sut)[1].extract<Attribute::Integer>(), 2);
    EXPECT_EQ(
        capture.lines(),
        (Lines{
            "Error: Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
            "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime exception: "
            "Attribute::setValue trying to set 64bit integer type failed converting: parsing failed"}));
}

TEST(AttributeValue, RefusesAScalarForAnArrayAttribute)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);
    LogCapture capture;

    const bool stored = sut.setValue(Var(5));

    EXPECT_FALSE(stored);
    EXPECT_FALSE(sut.hasValue());
    EXPECT_EQ(capture.lines(), Lines{"Error: Trying to set value with invalid type for array attribute"});
}

TEST(AttributeValue, RefusesANullArrayPointer)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);

    try
    {
        sut.setValue(Var(Poco::JSON::Array::Ptr()));
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Invalid array value");
    }
    EXPECT_FALSE(sut.hasValue());
}

TEST(AttributeValue, ReusesTheSharedVectorOnASecondSet)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);
    sut.setValue(Var(makeArray({Var(1)})));
    const Var copyBefore = sut.getValue();

    sut.setValue(Var(makeArray({Var(7), Var(8)})));

    const AttributeValue::ValueArray& seenByCopy = *copyBefore.extract<AttributeValue::ValueArrayPtr>();
    ASSERT_EQ(seenByCopy.size(), 2u);
    EXPECT_EQ(seenByCopy[0].extract<Attribute::Integer>(), 7);
    EXPECT_EQ(seenByCopy[1].extract<Attribute::Integer>(), 8);
    EXPECT_EQ(&seenByCopy, &heldArray(sut));
}

TEST(AttributeValue, DoesNotShareTheVectorItWasGiven)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);
    const AttributeValue::ValueArrayPtr input = makeArray({Var(1)});

    sut.setValue(Var(input));

    EXPECT_NE(&heldArray(sut), input.get());
    EXPECT_EQ(input->at(0).extract<int>(), 1);
}

TEST(AttributeValue, AppendsConvertedElementsToAnArray)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);

    EXPECT_TRUE(sut.appendArrayValue(Var("4"), true));
    EXPECT_TRUE(sut.appendArrayValue(Var(5), true));

    ASSERT_EQ(heldArray(sut).size(), 2u);
    EXPECT_EQ(heldArray(sut)[0].type(), typeid(Attribute::Integer));
    EXPECT_EQ(heldArray(sut)[0].extract<Attribute::Integer>(), 4);
    EXPECT_EQ(heldArray(sut)[1].extract<Attribute::Integer>(), 5);
}

TEST(AttributeValue, LeavesTheArrayAsItWasWhenAnAppendedElementFails)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);
    sut.setValue(Var(makeArray({Var(1)})));
    LogCapture capture;

    const bool appended = sut.appendArrayValue(Var("lots"), true);

    EXPECT_FALSE(appended);
    ASSERT_EQ(heldArray(sut).size(), 1u);
    EXPECT_EQ(heldArray(sut)[0].extract<Attribute::Integer>(), 1);
    EXPECT_EQ(
        capture.lines(),
        (Lines{
            "Error: Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
            "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime exception: "
            "Attribute::setValue trying to set 64bit integer type failed converting: parsing failed"}));
}

TEST(AttributeValue, AppendsAnyElementUncheckedWithoutTypeConversion)
{
    AttributeValue sut(1, makeAttribute("speeds", DBData::AttrType_Integer, true), 2);

    EXPECT_TRUE(sut.appendArrayValue(Var("lots"), false));
    EXPECT_TRUE(sut.appendArrayValue(Var(), false));

    ASSERT_EQ(heldArray(sut).size(), 2u);
    EXPECT_EQ(heldArray(sut)[0].extract<std::string>(), "lots");
    EXPECT_TRUE(heldArray(sut)[1].isEmpty());
}

TEST(AttributeValue, RefusesToAppendToAScalar)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Number), 2);
    LogCapture capture;

    const bool appended = sut.appendArrayValue(Var(1.0), true);

    EXPECT_FALSE(appended);
    EXPECT_FALSE(sut.hasValue());
    EXPECT_EQ(capture.lines(), Lines{"Error: Trying to append value to non-array value 2."});
}

TEST(AttributeValue, StoresAnyValueAsItStandsWithoutTypeConversion)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Integer), 2);
    LogCapture capture;

    sut.setValue(Var(Poco::URI("/a/b/c")), false);

    ASSERT_EQ(sut.getValue().type(), typeid(Poco::URI));
    EXPECT_EQ(sut.getValue().extract<Poco::URI>().getPath(), "/a/b/c");
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(AttributeValue, ConvertsWithTypeConversion)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Integer), 2);

    sut.setValue(Var("12"), true);

    EXPECT_EQ(sut.getValue().extract<Attribute::Integer>(), 12);
}

TEST(AttributeValue, ThrowsWhenTypeConversionFails)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Boolean), 2);
    sut.setValue(Var(true));

    try
    {
        sut.setValue(Var(1.5), true);
        FAIL() << "no exception";
    }
    catch (const Poco::RuntimeException& e)
    {
        EXPECT_EQ(e.message(), "AttributeValue::setValue: operation failed.");
    }
    EXPECT_TRUE(sut.getValue().extract<bool>());
}

TEST(AttributeValue, StoresAReferenceAsTheTextItCameAs)
{
    AttributeValue sut(1, makeAttribute("owner", DBData::AttrType_Object), 2);

    ASSERT_TRUE(sut.setValue(Var("/fleet/cars/4f2a")));

    ASSERT_EQ(sut.getValue().type(), typeid(std::string));
    EXPECT_EQ(sut.compareValue(Var(Poco::URI("/fleet/cars/4f2a"))), Util::EQUAL);
}

TEST(AttributeValue, ComparesAReferenceByItsPathAlone)
{
    const Var local(Poco::URI("http://localhost:8080/fleet/cars/4f2a?x=1#top"));
    const Var remote(Poco::URI("https://example.org/fleet/cars/4f2a"));

    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Object, local, remote), Util::EQUAL);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Object, local, Var(Poco::URI("/fleet/cars/5"))),
              Util::LESS);
}

TEST(AttributeValue, SortsNullAfterEveryValue)
{
    const Var null;
    const Var value(3);

    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, null, value), Util::GREATER);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, value, null), Util::LESS);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, null, Var()), Util::EQUAL);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_String, Var(makeArray({})), null), Util::LESS);
}

TEST(AttributeValue, ComparesEachTypeInItsOwnOrder)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();

    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_String, Var("B"), Var("a")), Util::LESS);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_String, Var("b"), Var("b")), Util::EQUAL);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Boolean, Var(true), Var(false)), Util::GREATER);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, Var(Attribute::Integer(-2)),
                                            Var(Attribute::Integer(1))),
              Util::LESS);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_IntegerUnsigned,
                                            Var(Attribute::IntegerUnsigned(10)),
                                            Var(Attribute::IntegerUnsigned(9))),
              Util::GREATER);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Number, Var(0.5), Var(0.25)), Util::GREATER);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Number, Var(nan), Var(1.0)), Util::EQUAL);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Number, Var(1.0), Var(nan)), Util::EQUAL);
}

TEST(AttributeValue, ConvertsBeforeComparingOtherHeldTypes)
{
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, Var("10"), Var(9)), Util::GREATER);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, Var(9), Var("10")), Util::LESS);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Number, Var("1.5"), Var(1.5)), Util::EQUAL);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Boolean, Var("false"), Var(1)), Util::LESS);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_String, Var(10), Var("9")), Util::LESS);
}

TEST(AttributeValue, LetsAFailedConversionEscapeTheComparison)
{
    try
    {
        AttributeValue::compareValues(DBData::AttrType_Integer, Var("ten"), Var(9));
        FAIL() << "no exception";
    }
    catch (const Poco::RuntimeException& e)
    {
        EXPECT_EQ(e.message(),
                  "Attribute::setValue trying to set 64bit integer type failed converting: parsing failed");
    }
}

TEST(AttributeValue, CannotCompareASingleValueWithAnArray)
{
    const Var array(makeArray({Var(1)}));
    LogCapture capture;

    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, Var(1), array), Util::UNKNOWN);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, array, Var(1)), Util::UNKNOWN);
    EXPECT_EQ(capture.lines(), (Lines{SCALAR_AGAINST_ARRAY_LINE, SCALAR_AGAINST_ARRAY_LINE}));
}

TEST(AttributeValue, CannotOrderArraysOfDifferentLengths)
{
    const Var shorter(makeArray({Var(1), Var(2)}));
    const Var longer(makeArray({Var(5), Var(2), Var(3)}));
    LogCapture capture;

    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, shorter, longer), Util::UNKNOWN);
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(AttributeValue, OrdersArraysOfEqualLengthByTheirFirstDifference)
{
    const Var oneTwo(makeArray({Var(1), Var(2)}));
    const Var oneThree(makeArray({Var(1), Var(3)}));
    const Var textOneTwo(makeArray({Var("1"), Var("2")}));

    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, oneTwo, oneThree), Util::LESS);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, oneThree, oneTwo), Util::GREATER);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, oneTwo, textOneTwo), Util::EQUAL);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, Var(makeArray({})), Var(makeArray({}))),
              Util::EQUAL);
}

TEST(AttributeValue, ComparesArraysByPointerFirst)
{
    const AttributeValue::ValueArrayPtr shared = makeArray({Var("not a number")});
    const Var nullArray(AttributeValue::ValueArrayPtr{});
    const Var someArray(makeArray({Var(1)}));

    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, Var(shared), Var(shared)), Util::EQUAL);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, nullArray, someArray), Util::GREATER);
    EXPECT_EQ(AttributeValue::compareValues(DBData::AttrType_Integer, someArray, nullArray), Util::LESS);
}

TEST(AttributeValue, GivesUnknownForATypeOutsideTheEnumeration)
{
    const auto unknownType = static_cast<AttributeType>(17);

    EXPECT_EQ(AttributeValue::compareValues(unknownType, Var(1), Var(2)), Util::UNKNOWN);
}

TEST(AttributeValue, ComparesItsValueByItsType)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Integer), 2);
    sut.setValue(Var(20));

    EXPECT_EQ(sut.compareValue(Var("3")), Util::GREATER);
    EXPECT_EQ(sut.compareValue(Var(sut.getValue())), Util::EQUAL);
    EXPECT_EQ(sut.compareValue(Var()), Util::LESS);
}

TEST(AttributeValue, EqualsACellOfAnotherRowWithEqualDefinitionAndValue)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Integer), 2);
    sut.setValue(Var(20));
    AttributeValue other(8, makeAttribute("speed", DBData::AttrType_Integer), 9);
    other.setValue(Var("20"));

    EXPECT_TRUE(sut == other);
}

TEST(AttributeValue, DiffersFromACellWithAnotherDefinitionOrValue)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Integer), 2);
    sut.setValue(Var(20));
    AttributeValue otherType(1, makeAttribute("speed", DBData::AttrType_IntegerUnsigned), 2);
    otherType.setValue(Var(20));
    AttributeValue otherArrayFlag(1, makeAttribute("speed", DBData::AttrType_Integer, true), 2);
    AttributeValue otherName(1, makeAttribute("rpm", DBData::AttrType_Integer), 2);
    otherName.setValue(Var(20));
    AttributeValue otherValue(1, sut.getAttribute(), 2);
    otherValue.setValue(Var(21));

    EXPECT_FALSE(sut == otherType);
    EXPECT_FALSE(sut == otherArrayFlag);
    EXPECT_FALSE(sut == otherName);
    EXPECT_FALSE(sut == otherValue);
}

TEST(AttributeValue, ConvertsAndChecksThroughItsAttribute)
{
    const AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Number), 2);
    Var converted("2.5");
    Var null;
    LogCapture capture;

    sut.convertValue(converted);
    const bool nullAccepted = sut.convertAndCheckValue(null);

    EXPECT_EQ(converted.type(), typeid(double));
    EXPECT_FALSE(nullAccepted);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Null value is not allowed."});
}

TEST(AttributeValue, ClearMakesTheValueNull)
{
    AttributeValue sut(1, makeAttribute("speed", DBData::AttrType_Number), 2);
    sut.setValue(Var(2.0));

    sut.clear();

    EXPECT_FALSE(sut.hasValue());
}

TEST(AttributeValue, LogsAWarningForOthers)
{
    LogCapture capture;

    AttributeValue::printLogWarn("cell is stale");

    EXPECT_EQ(capture.lines(), Lines{"Warning: cell is stale"});
}

} // namespace
