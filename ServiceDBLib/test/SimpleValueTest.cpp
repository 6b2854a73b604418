#include "JSONDataCache/DBData/Index/SimpleValue.h"

#include "JSONDataCache/DBData/Attribute.h"

#include <Poco/RegularExpression.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::Index::SimpleValue;
using Poco::Dynamic::Var;

TEST(SimpleValue, HoldsTheValue)
{
    const SimpleValue sut(Var(12));

    EXPECT_EQ(sut.value.convert<int>(), 12);
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
}

TEST(SimpleValue, WritesABooleanAsAnAttributeValueIsWritten)
{
    const SimpleValue sut(Var(false));

    EXPECT_TRUE(sut.match(Poco::RegularExpression("f.*")));
    EXPECT_TRUE(sut.match(Poco::RegularExpression("false")));
    EXPECT_FALSE(sut.match(Poco::RegularExpression("0")));
}

TEST(SimpleValue, NeverMatchesARegularExpressionOnNull)
{
    const SimpleValue sut{Var()};

    EXPECT_FALSE(sut.match(Poco::RegularExpression(".*")));
    EXPECT_FALSE(sut.match(Poco::RegularExpression("")));
}

TEST(SimpleValue, NeverMatchesARegularExpressionOnTheEmptyText)
{
    const SimpleValue sut{Var(std::string())};

    EXPECT_FALSE(sut.match(Poco::RegularExpression(".*")));
    EXPECT_FALSE(sut.match(Poco::RegularExpression("^$")));
}

TEST(SimpleValue, MatchesAnAnchoredPatternOnlyOnTheWholeTextNotBeforeAFinalLineEnd)
{
    const SimpleValue sut(Var(std::string("v\n")));

    EXPECT_FALSE(sut.match(Poco::RegularExpression("^v$")));
    EXPECT_TRUE(sut.match(Poco::RegularExpression("^v\n$")));
    EXPECT_FALSE(sut.match(Poco::RegularExpression("^v$|^v\n$")));
}

TEST(SimpleValue, IsWrittenAsTheTextOfAnAttributeValue)
{
    EXPECT_TRUE(SimpleValue(Var(Attribute::Integer(-42))).isWrittenAs("-42"));
    EXPECT_TRUE(SimpleValue(Var(Attribute::IntegerUnsigned(18446744073709551615ULL)))
                    .isWrittenAs("18446744073709551615"));
    EXPECT_TRUE(SimpleValue(Var(Attribute::Number(2.5))).isWrittenAs("2.5"));
    EXPECT_TRUE(SimpleValue(Var(Attribute::Number(1e20))).isWrittenAs("1e+20"));
    EXPECT_TRUE(SimpleValue(Var(false)).isWrittenAs("false"));
    EXPECT_TRUE(SimpleValue(Var(std::string("v\n"))).isWrittenAs("v\n"));
    EXPECT_TRUE(SimpleValue(Var(std::string())).isWrittenAs(""));
}

TEST(SimpleValue, IsWrittenAsNoOtherText)
{
    EXPECT_FALSE(SimpleValue(Var(Attribute::Integer(42))).isWrittenAs("042"));
    EXPECT_FALSE(SimpleValue(Var(Attribute::Number(2.0))).isWrittenAs("2.0"));
    EXPECT_FALSE(SimpleValue(Var(false)).isWrittenAs("0"));
    EXPECT_FALSE(SimpleValue(Var(std::string("v\n"))).isWrittenAs("v"));
    EXPECT_FALSE(SimpleValue(Var(std::string("v"))).isWrittenAs("v\n"));
    EXPECT_FALSE(SimpleValue(Var()).isWrittenAs(""));
}

TEST(SimpleValue, IsWrittenAsSortedForNullAndTheHeldTypesOfTheAttributeTypes)
{
    EXPECT_TRUE(SimpleValue(Var()).isWrittenAsSorted());
    EXPECT_TRUE(SimpleValue(Var(std::string("x"))).isWrittenAsSorted());
    EXPECT_TRUE(SimpleValue(Var(Attribute::Integer(1))).isWrittenAsSorted());
    EXPECT_TRUE(SimpleValue(Var(Attribute::IntegerUnsigned(1))).isWrittenAsSorted());
    EXPECT_TRUE(SimpleValue(Var(Attribute::Number(0.1))).isWrittenAsSorted());
    EXPECT_TRUE(SimpleValue(Var(true)).isWrittenAsSorted());
    EXPECT_FALSE(SimpleValue(Var(1)).isWrittenAsSorted());
    EXPECT_FALSE(SimpleValue(Var(0.1F)).isWrittenAsSorted());
}

TEST(SimpleValue, WritesAFloatAsTheNumberItIsNotAsItSorts)
{
    const SimpleValue sut(Var(0.1F));

    EXPECT_TRUE(sut.isWrittenAs("0.10000000149011612"));
    EXPECT_FALSE(sut.isWrittenAs("0.1"));
    EXPECT_FALSE(SimpleValue(Var("0.1")) < sut);
    EXPECT_FALSE(sut < SimpleValue(Var("0.1")));
    EXPECT_TRUE(sut.match(Poco::RegularExpression("0\\.10+149011612")));
}

// The lookup of a written text relies on it: each value of the held types of the attribute types sorts
// as the text that converting it to a string attribute value gives.
TEST(SimpleValue, SortsEveryValueOfTheAttributeTypesAsItIsWritten)
{
    std::vector<Var> values{Var(true), Var(false)};
    for (const Attribute::Integer integer :
         {std::numeric_limits<Attribute::Integer>::min(), Attribute::Integer(-1), Attribute::Integer(0),
          std::numeric_limits<Attribute::Integer>::max()})
    {
        values.emplace_back(integer);
    }
    for (const Attribute::IntegerUnsigned integer :
         {Attribute::IntegerUnsigned(0), std::numeric_limits<Attribute::IntegerUnsigned>::max()})
    {
        values.emplace_back(integer);
    }
    for (const Attribute::Number number :
         {0.0, -0.0, 0.1, 1.0 / 3.0, 1e15, 1e16, 1e-15, 1e-16, -123456.789, 5e-324,
          std::numeric_limits<Attribute::Number>::max(), std::numeric_limits<Attribute::Number>::infinity(),
          -std::numeric_limits<Attribute::Number>::infinity(),
          std::numeric_limits<Attribute::Number>::quiet_NaN()})
    {
        values.emplace_back(number);
    }
    std::mt19937_64 engine(7);
    for (int i = 0; i < 2000; ++i)
    {
        const std::uint64_t bits = engine();
        Attribute::Number number = 0;
        std::memcpy(&number, &bits, sizeof(number));
        values.emplace_back(number);
        values.emplace_back(static_cast<Attribute::Integer>(bits));
        values.emplace_back(static_cast<Attribute::IntegerUnsigned>(bits >> (i % 64)));
    }

    for (const Var& value : values)
    {
        Var written(value);
        Attribute::convertToString(written);
        const std::string text = written.extract<std::string>();
        const SimpleValue sut(value);
        const SimpleValue probe{Var(text)};

        EXPECT_TRUE(sut.isWrittenAsSorted()) << text;
        EXPECT_TRUE(sut.isWrittenAs(text)) << text;
        EXPECT_FALSE(sut < probe) << text;
        EXPECT_FALSE(probe < sut) << text;
    }
}

TEST(SimpleValue, CopyOfATextKeySortsByItsOwnTextAfterTheOriginalIsGone)
{
    auto original = std::make_unique<SimpleValue>(Var(std::string("beta")));
    ASSERT_TRUE(*original < SimpleValue(Var("gamma")));

    const SimpleValue sut(*original);
    original.reset();

    EXPECT_TRUE(sut < SimpleValue(Var("gamma")));
    EXPECT_FALSE(sut < SimpleValue(Var("alpha")));
    EXPECT_TRUE(sut.isWrittenAs("beta"));
}

TEST(SimpleValue, MovedKeyKeepsItsValueAndTextAndLeavesNull)
{
    SimpleValue original(Var(std::string("beta")));
    ASSERT_TRUE(original < SimpleValue(Var("gamma")));
    const void* holderText = &original.value.extract<std::string>();

    const SimpleValue sut(std::move(original));

    EXPECT_EQ(&sut.value.extract<std::string>(), holderText);
    EXPECT_TRUE(sut < SimpleValue(Var("gamma")));
    EXPECT_FALSE(sut < SimpleValue(Var("alpha")));
    EXPECT_TRUE(original.value.isEmpty());
}

TEST(SimpleValue, AssignedKeySortsByTheAssignedValue)
{
    const SimpleValue number(Var(Attribute::Integer(10)));
    const SimpleValue text(Var(std::string("9")));
    SimpleValue sut(Var(std::string("zeta")));
    ASSERT_FALSE(sut < SimpleValue(Var("a")));

    sut = text;
    EXPECT_TRUE(sut < SimpleValue(Var("a")));
    EXPECT_TRUE(number < sut);

    sut = number;
    EXPECT_TRUE(sut < text);
    EXPECT_TRUE(sut == SimpleValue(Var("10")));

    sut = SimpleValue(Var(std::string("zeta")));
    EXPECT_FALSE(sut < SimpleValue(Var("a")));
}

} // namespace
