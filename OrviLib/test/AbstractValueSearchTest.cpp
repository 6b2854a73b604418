#include "Command/Query/AbstractValueSearch.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Orvi::Command::AbstractValueSearch;

namespace
{

// Opens the protected parts and picks the comparison, as the two real searches do.
class ProbeSearch : public AbstractValueSearch
{
public:
    ProbeSearch(const std::string& queryValue, bool wholeValue)
        : AbstractValueSearch(queryValue, splitValues(queryValue),
                              wholeValue ? Comparison::WHOLE_VALUE : Comparison::CONTAINS_IGNORING_CASE)
    {
    }

    using AbstractValueSearch::createRegEx;
    using AbstractValueSearch::splitValues;
};

ProbeSearch whole(const std::string& queryValue)
{
    return ProbeSearch(queryValue, true);
}

Poco::Dynamic::Var json(const std::string& text)
{
    Poco::JSON::Parser parser;
    return parser.parse(text);
}

} // namespace

TEST(AbstractValueSearch, SplitsValuesAtCommasAndKeepsEmptyOnes)
{
    EXPECT_EQ(ProbeSearch::splitValues("a,,b"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(ProbeSearch::splitValues(""), (std::vector<std::string>{""}));
    EXPECT_EQ(ProbeSearch::splitValues("a,"), (std::vector<std::string>{"a", ""}));
}

TEST(AbstractValueSearch, KeepsTheQueryValueAndItsAlternatives)
{
    const ProbeSearch sut = whole("red,blue");

    EXPECT_EQ(sut.getQueryValue(), "red,blue");
    EXPECT_EQ(sut.getSearchValues(), (std::vector<std::string>{"red", "blue"}));
    EXPECT_TRUE(sut.isValid());
}

TEST(AbstractValueSearch, CreatesAPatternThatEscapesEverythingButLettersAndDigits)
{
    EXPECT_EQ(ProbeSearch::createRegEx("a.b1"), "a\\x2eb1");
    EXPECT_EQ(ProbeSearch::createRegEx(std::string("a\0b", 3)), "a\\x00b");
}

TEST(AbstractValueSearch, CreatesAPatternThatTakesMiddleLiteralsAtTheirFirstOccurrence)
{
    EXPECT_EQ(ProbeSearch::createRegEx("a%b%25c"), "a(?>.*?b).*c");
    EXPECT_EQ(ProbeSearch::createRegEx("%%x%"), "(?>.*?x).*");
    EXPECT_EQ(ProbeSearch::createRegEx("%"), ".*");
}

TEST(AbstractValueSearch, CreatesAnAlternationOfAllValues)
{
    EXPECT_EQ(ProbeSearch::createRegEx(std::vector<std::string>{"a", "b%"}), "(?:a|b.*)");
}

TEST(AbstractValueSearch, MatchesAWholeValueOnly)
{
    const ProbeSearch sut = whole("red");

    EXPECT_TRUE(sut.match(std::string("red")));
    EXPECT_FALSE(sut.match(std::string("reddish")));
    EXPECT_FALSE(sut.match(std::string("bored")));
    EXPECT_FALSE(sut.match(std::string("Red")));
}

TEST(AbstractValueSearch, MatchesAnyOfItsValues)
{
    const ProbeSearch sut = whole("red,blue");

    EXPECT_TRUE(sut.match(std::string("blue")));
    EXPECT_TRUE(sut.match(std::string("red")));
    EXPECT_FALSE(sut.match(std::string("red,blue")));
}

TEST(AbstractValueSearch, MatchesTheEmptyTextWithAnEmptyValue)
{
    const ProbeSearch sut = whole("");

    EXPECT_TRUE(sut.match(std::string()));
    EXPECT_FALSE(sut.match(std::string("x")));
}

TEST(AbstractValueSearch, LetsBothWildcardsStandForAnyRun)
{
    const ProbeSearch plain = whole("r%d");
    const ProbeSearch encoded = whole("r%25d");

    EXPECT_TRUE(plain.match(std::string("rd")));
    EXPECT_TRUE(plain.match(std::string("rose\nred")));
    EXPECT_FALSE(plain.match(std::string("rdx")));
    EXPECT_TRUE(encoded.match(std::string("rapid")));
    EXPECT_FALSE(encoded.match(std::string("r%25")));
}

TEST(AbstractValueSearch, FindsTheLastLiteralAtTheEndAfterEarlierOccurrences)
{
    const ProbeSearch sut = whole("a%b%c");

    EXPECT_TRUE(sut.match(std::string("abcbc")));
    EXPECT_TRUE(sut.match(std::string("aXbYbZc")));
    EXPECT_FALSE(sut.match(std::string("acb")));
}

TEST(AbstractValueSearch, TakesRegularExpressionSyntaxLiterally)
{
    const ProbeSearch sut = whole("a.c|(x)*[y]\\1$^");

    EXPECT_TRUE(sut.match(std::string("a.c|(x)*[y]\\1$^")));
    EXPECT_FALSE(sut.match(std::string("abc|(x)*[y]\\1$^")));
    EXPECT_FALSE(sut.match(std::string("a.c")));
}

TEST(AbstractValueSearch, TakesNulAndNonAsciiBytesLiterally)
{
    const ProbeSearch sut = whole(std::string("a\0\xc3\xa4", 4));

    EXPECT_TRUE(sut.match(std::string("a\0\xc3\xa4", 4)));
    EXPECT_FALSE(sut.match(std::string("a")));
}

TEST(AbstractValueSearch, MatchesPartsWithoutCaseWhenAskedTo)
{
    const ProbeSearch sut("ED%ISH", false);

    EXPECT_TRUE(sut.match(std::string("a reddish colour")));
    EXPECT_FALSE(sut.match(std::string("rd ish")));
}

TEST(AbstractValueSearch, StaysFastWithManyWildcards)
{
    const ProbeSearch sut = whole("%a%a%a%a%a%a%a%a%a%a%b");
    const std::string text(20000, 'a');

    EXPECT_FALSE(sut.match(text));
    EXPECT_TRUE(sut.match(text + "b"));
}

TEST(AbstractValueSearch, MatchesScalarsByTheirText)
{
    EXPECT_TRUE(whole("42").match(Poco::Dynamic::Var(42)));
    EXPECT_TRUE(whole("-7").match(Poco::Dynamic::Var(Poco::Int64(-7))));
    EXPECT_TRUE(whole("1.5").match(Poco::Dynamic::Var(1.5)));
    EXPECT_TRUE(whole("true").match(Poco::Dynamic::Var(true)));
    EXPECT_TRUE(whole("false").match(Poco::Dynamic::Var(false)));
    EXPECT_FALSE(whole("1").match(Poco::Dynamic::Var(true)));
    EXPECT_TRUE(whole("x").match(Poco::Dynamic::Var(std::string("x"))));
}

TEST(AbstractValueSearch, NeverMatchesNull)
{
    const ProbeSearch sut = whole("%");

    EXPECT_FALSE(sut.match(Poco::Dynamic::Var()));
    EXPECT_FALSE(sut.match(Poco::Dynamic::Var(Poco::JSON::Object::Ptr())));
}

TEST(AbstractValueSearch, MatchesAnArrayWhenAnyElementMatches)
{
    const ProbeSearch sut = whole("b");

    EXPECT_TRUE(sut.match(json(R"(["a", ["c", "b"]])")));
    EXPECT_FALSE(sut.match(json(R"(["a", "c"])")));
    EXPECT_FALSE(sut.match(json("[]")));
}

TEST(AbstractValueSearch, MatchesAnObjectByItsId)
{
    const ProbeSearch sut = whole("o1");

    EXPECT_TRUE(sut.match(json(R"({"id": "o1", "name": "x"})")));
    EXPECT_FALSE(sut.match(json(R"({"id": "o2", "name": "o1"})")));
    EXPECT_FALSE(sut.match(json(R"({"name": "o1"})")));
    EXPECT_TRUE(sut.match(json(R"([{"id": "o2"}, {"id": "o1"}])")));
}

TEST(AbstractValueSearch, IgnoresArraysNestedTooDeep)
{
    const ProbeSearch sut = whole("x");
    std::string deep = "\"x\"";
    for (int level = 0; level < 40; ++level)
    {
        deep = "[" + deep + "]";
    }

    EXPECT_TRUE(sut.match(json(R"([[["x"]]])")));
    EXPECT_FALSE(sut.match(json(deep)));
}

TEST(AbstractValueSearch, IsInvalidWhenTheValuesExceedTheExpressionEngine)
{
    const ProbeSearch sut = whole(std::string(70000, '.'));

    EXPECT_FALSE(sut.isValid());
    EXPECT_FALSE(sut.match(std::string(70000, '.')));
}
