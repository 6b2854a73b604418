#include "JSONDataCache/DBData/ConstraintFormat.h"

#include <Poco/Exception.h>
#include <Poco/RegularExpression.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <utility>

namespace
{

using Orvi::DBData::ConstraintFormat;

std::string matchError(const ConstraintFormat& sut, const std::string& value)
{
    try
    {
        sut.matches(value);
    }
    catch (const Poco::Exception& e)
    {
        EXPECT_TRUE(typeid(e) == typeid(Poco::RegularExpressionException)) << e.className();
        return e.displayText();
    }
    return "nothing thrown";
}

TEST(ConstraintFormat, IsAFormatConstraintWithAnEmptyFormatAtFirst)
{
    const ConstraintFormat sut;

    EXPECT_EQ(sut.getType(), Orvi::DBData::ConstraintType_Format);
    EXPECT_EQ(sut.getFormat(), "");
}

TEST(ConstraintFormat, TakesTheFormatInEachForm)
{
    ConstraintFormat sut;
    const std::string copied = "[0-9]+";
    std::string moved = "[a-f]+";

    sut.setFormat(copied);
    EXPECT_EQ(sut.getFormat(), "[0-9]+");
    EXPECT_TRUE(sut.matches("42"));

    sut.setFormat(std::move(moved));
    EXPECT_EQ(sut.getFormat(), "[a-f]+");
    EXPECT_TRUE(sut.matches("beef"));

    sut.setFormat("[A-Z]{2}");
    EXPECT_EQ(sut.getFormat(), "[A-Z]{2}");
    EXPECT_TRUE(sut.matches("DE"));
}

TEST(ConstraintFormat, MatchesOnlyTheWholeText)
{
    ConstraintFormat sut;
    sut.setFormat("[a-z]+");

    EXPECT_TRUE(sut.matches("abc"));
    EXPECT_FALSE(sut.matches("abc1"));
    EXPECT_FALSE(sut.matches("1abc"));
}

TEST(ConstraintFormat, MatchesAnEmptyTextOnlyWhenTheFormatAllowsIt)
{
    ConstraintFormat anything;
    anything.setFormat(".*");
    ConstraintFormat letters;
    letters.setFormat("[a-z]+");

    EXPECT_TRUE(anything.matches(""));
    EXPECT_FALSE(letters.matches(""));
}

TEST(ConstraintFormat, JudgesTheFirstMatchFoundNotTheLongest)
{
    ConstraintFormat sut;
    sut.setFormat("a|ab");

    EXPECT_FALSE(sut.matches("ab"));
    EXPECT_TRUE(sut.matches("a"));
}

TEST(ConstraintFormat, MatchesAsTheRegularExpressionItself)
{
    ConstraintFormat sut;
    sut.setFormat("V[0-9]+\\.[0-9]+");

    for (const std::string value : {"V1.2", "V10.0", "V1x2", "v1.2", "V1.2 ", ""})
    {
        EXPECT_EQ(sut.matches(value), Poco::RegularExpression::match(value, sut.getFormat(), 0)) << value;
    }
}

TEST(ConstraintFormat, RaisesTheRegularExpressionErrorOfAFormatThatDoesNotCompileOnEveryMatch)
{
    ConstraintFormat sut;

    sut.setFormat("(");

    EXPECT_EQ(matchError(sut, "x"), "Error in regular expression: missing ) (at offset 1)");
    EXPECT_EQ(matchError(sut, "("), "Error in regular expression: missing ) (at offset 1)");
}

TEST(ConstraintFormat, MatchesAgainAfterABrokenFormatIsReplaced)
{
    ConstraintFormat sut;
    sut.setFormat("(");

    sut.setFormat("(a|b)");

    EXPECT_TRUE(sut.matches("b"));
}

TEST(ConstraintFormat, KeepsMatchingInACopy)
{
    ConstraintFormat original;
    original.setFormat("[0-9]{3}");

    const ConstraintFormat sut(original);

    EXPECT_EQ(sut.getFormat(), "[0-9]{3}");
    EXPECT_TRUE(sut.matches("123"));
    EXPECT_FALSE(sut.matches("12"));
}

} // namespace
