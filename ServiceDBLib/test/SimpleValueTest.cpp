#include "JSONDataCache/DBData/Index/SimpleValue.h"

#include "JSONDataCache/DBData/Attribute.h"

#include <Poco/RegularExpression.h>

#include <gtest/gtest.h>

namespace
{

using Orvi::DBData::Index::SimpleValue;
using Poco::Dynamic::Var;

TEST(SimpleValue, HoldsTheValueAndNoTextYet)
{
    const SimpleValue sut(Var(12));

    EXPECT_EQ(sut.value.convert<int>(), 12);
    EXPECT_TRUE(sut.svalue.isNull());
}

TEST(SimpleValue, SortsByTextNotByNumber)
{
    const SimpleValue ten(Var(10));
    const SimpleValue nine(Var(9));

    EXPECT_TRUE(ten < nine);
    EXPECT_FALSE(nine < ten);
}

TEST(SimpleValue, SortsNullAfterEveryValue)
{
    const SimpleValue null{Var()};
    const SimpleValue text(Var("zzz"));

    EXPECT_TRUE(text < null);
    EXPECT_FALSE(null < text);
    EXPECT_FALSE(null < SimpleValue(Var()));
}

TEST(SimpleValue, SortsTextsByTheirBytes)
{
    EXPECT_TRUE(SimpleValue(Var("B")) < SimpleValue(Var("a")));
    EXPECT_TRUE(SimpleValue(Var("a")) < SimpleValue(Var("ab")));
    EXPECT_FALSE(SimpleValue(Var("ab")) < SimpleValue(Var("ab")));
}

TEST(SimpleValue, ComparesValuesOfDifferentHeldTypesByTheirText)
{
    const SimpleValue sut(Var(Orvi::DBData::Attribute::Integer(10)));

    EXPECT_TRUE(sut == SimpleValue(Var("10")));
    EXPECT_FALSE(sut < SimpleValue(Var("10")));
    EXPECT_FALSE(SimpleValue(Var("10")) < sut);
    EXPECT_FALSE(sut == SimpleValue(Var()));
    EXPECT_TRUE(SimpleValue(Var()) == SimpleValue(Var()));
}

TEST(SimpleValue, MatchesAValueEqualInText)
{
    const SimpleValue sut(Var(true));

    EXPECT_TRUE(sut.match(Var("true")));
    EXPECT_FALSE(sut.match(Var(false)));
    EXPECT_FALSE(sut.match(Var()));
    EXPECT_TRUE(SimpleValue(Var()).match(Var()));
}

TEST(SimpleValue, MatchesAProbeAsItMatchesItsValue)
{
    const SimpleValue sut(Var(2.5));

    EXPECT_TRUE(sut.match(SimpleValue(Var("2.5"))));
    EXPECT_FALSE(sut.match(SimpleValue(Var(2.25))));
    EXPECT_FALSE(sut.match(SimpleValue(Var())));
    EXPECT_FALSE(SimpleValue(Var()).match(SimpleValue(Var(2.5))));
    EXPECT_TRUE(SimpleValue(Var()).match(SimpleValue(Var())));
}

TEST(SimpleValue, MatchesARegularExpressionAgainstTheWholeTextOfANumber)
{
    const SimpleValue sut(Var(1250.5));

    EXPECT_TRUE(sut.match(Poco::RegularExpression("12[0-9]+\\.5")));
    EXPECT_FALSE(sut.match(Poco::RegularExpression("12")));
    ASSERT_FALSE(sut.svalue.isNull());
    EXPECT_EQ(sut.svalue.value(), "1250.5");
}

TEST(SimpleValue, WritesABooleanAsAnAttributeValueIsWritten)
{
    const SimpleValue sut(Var(false));

    EXPECT_TRUE(sut.match(Poco::RegularExpression("f.*")));
    EXPECT_EQ(sut.svalue.value(), "false");
}

TEST(SimpleValue, KeepsTheTextOfTheFirstSearch)
{
    const SimpleValue sut(Var(42));
    sut.match(Poco::RegularExpression("4.*"));
    sut.svalue = std::string("kept");

    EXPECT_TRUE(sut.match(Poco::RegularExpression("kept")));
    EXPECT_FALSE(sut.match(Poco::RegularExpression("42")));
}

TEST(SimpleValue, NeverMatchesARegularExpressionOnNull)
{
    const SimpleValue sut{Var()};

    EXPECT_FALSE(sut.match(Poco::RegularExpression(".*")));
    ASSERT_FALSE(sut.svalue.isNull());
    EXPECT_EQ(sut.svalue.value(), "");
}

} // namespace
