#include "Data/AttributeValue.h"

#include "Data/AttributeValueStringable.h"

#include <Poco/Types.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace Orvi::Data;

TEST(AttributeValue, GivesABooleanAsBoolInGenericAndJSONForm)
{
    const AttributeValueBoolean sut(true);

    EXPECT_EQ(sut.type(), typeid(bool));
    EXPECT_EQ(sut.asGeneric().type(), typeid(bool));
    EXPECT_TRUE(sut.asGeneric().extract<bool>());
    EXPECT_EQ(sut.toJSON(1).type(), typeid(bool));
    EXPECT_TRUE(sut.toJSON(1).extract<bool>());
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValue, GivesAnIntegerAsInt64InGenericAndJSONForm)
{
    const AttributeValueInteger sut(std::numeric_limits<Poco::Int64>::min());

    EXPECT_EQ(sut.type(), typeid(Poco::Int64));
    EXPECT_EQ(sut.asGeneric().type(), typeid(Poco::Int64));
    EXPECT_EQ(sut.asGeneric().extract<Poco::Int64>(), std::numeric_limits<Poco::Int64>::min());
    EXPECT_EQ(sut.toJSON(1).type(), typeid(Poco::Int64));
    EXPECT_EQ(sut.toJSON(1).extract<Poco::Int64>(), std::numeric_limits<Poco::Int64>::min());
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValue, GivesAnUnsignedIntegerAsUInt64InGenericAndJSONForm)
{
    const AttributeValueIntegerUnsigned sut(std::numeric_limits<Poco::UInt64>::max());

    EXPECT_EQ(sut.type(), typeid(Poco::UInt64));
    EXPECT_EQ(sut.asGeneric().type(), typeid(Poco::UInt64));
    EXPECT_EQ(sut.asGeneric().extract<Poco::UInt64>(), std::numeric_limits<Poco::UInt64>::max());
    EXPECT_EQ(sut.toJSON(1).type(), typeid(Poco::UInt64));
    EXPECT_EQ(sut.toJSON(1).extract<Poco::UInt64>(), std::numeric_limits<Poco::UInt64>::max());
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValue, GivesANumberAsDoubleInGenericAndJSONForm)
{
    const AttributeValueNumber sut(21.5);

    EXPECT_EQ(sut.type(), typeid(double));
    EXPECT_EQ(sut.asGeneric().type(), typeid(double));
    EXPECT_DOUBLE_EQ(sut.asGeneric().extract<double>(), 21.5);
    EXPECT_EQ(sut.toJSON(1).type(), typeid(double));
    EXPECT_DOUBLE_EQ(sut.toJSON(1).extract<double>(), 21.5);
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValue, OrdersFalseBeforeTrue)
{
    const AttributeValueBoolean sut(false);

    EXPECT_EQ(sut.compare(AttributeValueBoolean(true)), -1);
    EXPECT_EQ(AttributeValueBoolean(true).compare(sut), 1);
    EXPECT_EQ(sut.compare(AttributeValueBoolean(false)), 0);
}

TEST(AttributeValue, OrdersIntegersByTheirNumericValue)
{
    const AttributeValueInteger sut(9);

    EXPECT_EQ(sut.compare(AttributeValueInteger(10)), -1);
    EXPECT_EQ(sut.compare(AttributeValueInteger(-10)), 1);
    EXPECT_EQ(sut.compare(AttributeValueInteger(9)), 0);
}

TEST(AttributeValue, OrdersUnsignedIntegersByTheirNumericValue)
{
    const AttributeValueIntegerUnsigned sut(9);

    EXPECT_EQ(sut.compare(AttributeValueIntegerUnsigned(10)), -1);
    EXPECT_EQ(sut.compare(AttributeValueIntegerUnsigned(1)), 1);
    EXPECT_EQ(sut.compare(AttributeValueIntegerUnsigned(9)), 0);
}

TEST(AttributeValue, OrdersNumbersByTheirNumericValue)
{
    const AttributeValueNumber sut(9.5);

    EXPECT_EQ(sut.compare(AttributeValueNumber(10.0)), -1);
    EXPECT_EQ(sut.compare(AttributeValueNumber(-9.5)), 1);
    EXPECT_EQ(sut.compare(AttributeValueNumber(9.5)), 0);
}

TEST(AttributeValue, ComparesAnIntegerWithANumberByTheGenericPath)
{
    const AttributeValueInteger sut(10);
    const AttributeValueNumber number(9.5);

    // Natively 10 is the greater; the generic values order by their texts "10" and "9.5".
    EXPECT_EQ(sut.compare(number), -1);
    EXPECT_EQ(number.compare(sut), 1);
}

TEST(AttributeValue, TakesOverTheValueOfTheSameClass)
{
    AttributeValueInteger sut(1);

    const bool result = sut.setValue(AttributeValueInteger(2));

    EXPECT_TRUE(result);
    EXPECT_EQ(sut.get(), 2);
}

TEST(AttributeValue, RefusesTheValueOfAnotherClassAndKeepsItsOwn)
{
    AttributeValueInteger sut(1);

    const bool result = sut.setValue(AttributeValueIntegerUnsigned(2));

    EXPECT_FALSE(result);
    EXPECT_EQ(sut.get(), 1);
}

TEST(AttributeValue, RefusesAStringForANumber)
{
    AttributeValueNumber sut(1.5);

    const bool result = sut.setValue(AttributeValueString(std::string("2.5")));

    EXPECT_FALSE(result);
    EXPECT_DOUBLE_EQ(sut.get(), 1.5);
}

TEST(AttributeValue, SetsAndConvertsToItsValue)
{
    AttributeValueIntegerUnsigned sut;

    sut.set(8080);
    const Poco::UInt64& value = sut;

    EXPECT_EQ(value, 8080U);
    EXPECT_EQ(sut.get(), 8080U);
}

TEST(AttributeValue, StartsWithAZeroValue)
{
    const AttributeValueNumber sut;

    EXPECT_DOUBLE_EQ(sut.get(), 0.0);
}

TEST(AttributeValue, AppliesTheNativeOrderToItsOperators)
{
    const AttributeValueInteger sut(3);

    EXPECT_TRUE(sut == AttributeValueInteger(3));
    EXPECT_FALSE(sut == AttributeValueInteger(4));
    EXPECT_TRUE(sut < AttributeValueInteger(4));
    EXPECT_FALSE(sut < AttributeValueInteger(3));
    EXPECT_TRUE(sut > AttributeValueInteger(2));
    EXPECT_FALSE(sut > AttributeValueInteger(3));
}
