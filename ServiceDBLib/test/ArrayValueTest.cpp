#include "JSONDataCache/DBData/Index/ArrayValue.h"

#include "JSONDataCache/DBData/AttributeValue.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

namespace
{

using Orvi::DBData::AttributeValue;
using Orvi::DBData::Index::ArrayValue;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using Lines = std::vector<std::string>;

Var makeArray(const std::vector<Var>& elements)
{
    return Var(AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray(elements)));
}

std::vector<std::string> texts(const ArrayValue& array)
{
    std::vector<std::string> result;
    for (const auto& element : array.values)
    {
        result.push_back(element.value.convert<std::string>());
    }
    return result;
}

TEST(ArrayValue, TakesOneKeyPerElementInOrder)
{
    const ArrayValue sut(makeArray({Var(3), Var("b"), Var(1.5)}));

    EXPECT_EQ(texts(sut), (std::vector<std::string>{"3", "b", "1.5"}));
}

TEST(ArrayValue, IsEmptyForANullValue)
{
    LogCapture capture;

    const ArrayValue sut{Var()};

    EXPECT_TRUE(sut.values.empty());
    EXPECT_EQ(capture.lines(), Lines{"Trace: Initialise ArrayValue with empty value"});
}

TEST(ArrayValue, IsEmptyForANullArrayPointer)
{
    LogCapture capture;

    const ArrayValue sut{Var(AttributeValue::ValueArrayPtr())};

    EXPECT_TRUE(sut.values.empty());
    EXPECT_EQ(capture.lines(), Lines{"Trace: Initialise ArrayValue with empty value"});
}

TEST(ArrayValue, RefusesAValueThatIsNotAnArray)
{
    const Var scalar(Orvi::DBData::Attribute::Integer(5));

    try
    {
        ArrayValue sut(scalar);
        FAIL() << "no exception";
    }
    catch (const Poco::BadCastException& e)
    {
        EXPECT_EQ(e.message(), "Can not convert " +
                                   std::string(typeid(Orvi::DBData::Attribute::Integer).name()) + " to " +
                                   std::string(typeid(AttributeValue::ValueArrayPtr).name()) + ".");
    }
}

TEST(ArrayValue, OrdersElementByElementInTextOrder)
{
    const ArrayValue sut(makeArray({Var(1), Var(10)}));

    EXPECT_TRUE(sut < ArrayValue(makeArray({Var(1), Var(9)})));
    EXPECT_FALSE(ArrayValue(makeArray({Var(1), Var(9)})) < sut);
    EXPECT_TRUE(ArrayValue(makeArray({Var(0), Var(99)})) < sut);
}

TEST(ArrayValue, SortsAPrefixFirst)
{
    const ArrayValue sut(makeArray({Var(1)}));

    EXPECT_TRUE(sut < ArrayValue(makeArray({Var(1), Var(2)})));
    EXPECT_FALSE(ArrayValue(makeArray({Var(1), Var(2)})) < sut);
    EXPECT_TRUE(ArrayValue(Var()) < sut);
}

TEST(ArrayValue, SortsANullElementAfterEveryValue)
{
    const ArrayValue sut(makeArray({Var(), Var(1)}));

    EXPECT_TRUE(ArrayValue(makeArray({Var("z"), Var(1)})) < sut);
}

TEST(ArrayValue, GivesTheOrderFromItsEqualityOperator)
{
    const ArrayValue sut(makeArray({Var(1)}));
    const ArrayValue same(makeArray({Var(1)}));
    const ArrayValue greater(makeArray({Var(2)}));

    EXPECT_FALSE(sut == same);
    EXPECT_TRUE(sut == greater);
    EXPECT_FALSE(greater == sut);
}

} // namespace
