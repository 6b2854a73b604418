#include "Command/Query/AnyValueSearch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Orvi::Command::AnyValueSearch;

TEST(AnyValueSearch, KeepsTheWholeTextAsOneValue)
{
    const AnyValueSearch sut("red,blue");

    EXPECT_EQ(sut.getQueryValue(), "red,blue");
    EXPECT_EQ(sut.getSearchValues(), (std::vector<std::string>{"red,blue"}));
    EXPECT_TRUE(sut.isValid());
}

TEST(AnyValueSearch, MatchesATextThatContainsItInAnyCase)
{
    const AnyValueSearch sut("Lamp");

    EXPECT_TRUE(sut.match(std::string("ceiling lamp")));
    EXPECT_TRUE(sut.match(std::string("LAMPS")));
    EXPECT_FALSE(sut.match(std::string("lam p")));
}

TEST(AnyValueSearch, AllowsWildcardsInsideTheText)
{
    const AnyValueSearch sut("front%door");

    EXPECT_TRUE(sut.match(std::string("the Front left Door")));
    EXPECT_FALSE(sut.match(std::string("door front")));
}

TEST(AnyValueSearch, MatchesNumbersByTheirText)
{
    const AnyValueSearch sut("23");

    EXPECT_TRUE(sut.match(Poco::Dynamic::Var(1234)));
    EXPECT_FALSE(sut.match(Poco::Dynamic::Var(32)));
}

TEST(AnyValueSearch, IsInvalidForAnEmptyText)
{
    const AnyValueSearch sut("");

    EXPECT_FALSE(sut.isValid());
}
