#include "Command/Query/AttributeValueSearch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Orvi::Command::AttributeValueSearch;

TEST(AttributeValueSearch, KeepsTheAttributeNameAndTheValues)
{
    const AttributeValueSearch sut("color", "red,blue");

    EXPECT_EQ(sut.getAttributeName(), "color");
    EXPECT_EQ(sut.getQueryValue(), "red,blue");
    EXPECT_EQ(sut.getSearchValues(), (std::vector<std::string>{"red", "blue"}));
    EXPECT_TRUE(sut.isValid());
}

TEST(AttributeValueSearch, MatchesAValueThatEqualsOneOfTheValues)
{
    const AttributeValueSearch sut("color", "red,blue");

    EXPECT_TRUE(sut.match(std::string("blue")));
    EXPECT_FALSE(sut.match(std::string("Blue")));
    EXPECT_FALSE(sut.match(std::string("blueish")));
}

TEST(AttributeValueSearch, MatchesPartsOnlyThroughWildcards)
{
    const AttributeValueSearch sut("color", "bl%");

    EXPECT_TRUE(sut.match(std::string("blueish")));
    EXPECT_FALSE(sut.match(std::string("sky blue")));
}

TEST(AttributeValueSearch, IsInvalidWithoutAnAttributeName)
{
    const AttributeValueSearch sut("", "red");

    EXPECT_FALSE(sut.isValid());
}
