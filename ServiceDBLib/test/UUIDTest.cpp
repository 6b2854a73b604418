#include "JSONDataCache/DBData/UUID.h"

#include <Poco/Exception.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::DBData::UUID;

const std::string LOWER_TEXT = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";
const std::string UPPER_TEXT = "6BA7B810-9DAD-11D1-80B4-00C04FD430C8";
const std::string OTHER_TEXT = "123e4567-e89b-42d3-a456-426614174000";

TEST(UUID, IsEmptyAfterDefaultConstruction)
{
    const UUID sut;

    EXPECT_TRUE(sut.isEmpty());
    EXPECT_EQ(sut.toString(), "");
    EXPECT_EQ(sut.get(), Poco::UUID::null());
}

TEST(UUID, ConstructedFromEmptyTextIsEmpty)
{
    const UUID sut(std::string(""));

    EXPECT_TRUE(sut.isEmpty());
    EXPECT_EQ(sut.toString(), "");
}

TEST(UUID, KeepsTheGivenTextVerbatim)
{
    const UUID sut(UPPER_TEXT);

    EXPECT_EQ(sut.toString(), UPPER_TEXT);
    EXPECT_EQ(sut.get(), Poco::UUID(LOWER_TEXT));
    EXPECT_FALSE(sut.isEmpty());
}

TEST(UUID, ConstructorThrowsSyntaxExceptionForTextThatDoesNotParse)
{
    try
    {
        const UUID sut(std::string("not-a-uuid"));
        FAIL() << "no exception";
    }
    catch (const Poco::SyntaxException& e)
    {
        EXPECT_EQ(e.message(), "Invalid UUID string: not-a-uuid");
        EXPECT_EQ(e.displayText(), "Syntax error: Invalid UUID string: not-a-uuid");
    }
}

TEST(UUID, AssignOfTextThatDoesNotParseGivesFalseAndKeepsTheFormerValue)
{
    UUID sut(OTHER_TEXT);

    const bool result = sut.assign("123e4567-zzzz");

    EXPECT_FALSE(result);
    EXPECT_EQ(sut.toString(), OTHER_TEXT);
    EXPECT_EQ(sut.get(), Poco::UUID(OTHER_TEXT));
}

TEST(UUID, AssignOfEmptyTextClearsBothForms)
{
    UUID sut(OTHER_TEXT);

    const bool result = sut.assign(std::string());

    EXPECT_TRUE(result);
    EXPECT_TRUE(sut.isEmpty());
    EXPECT_EQ(sut.toString(), "");
}

TEST(UUID, AssignFromPocoUUIDStoresTheCanonicalText)
{
    UUID sut;

    const bool result = sut.assign(Poco::UUID(UPPER_TEXT));

    EXPECT_TRUE(result);
    EXPECT_EQ(sut.toString(), LOWER_TEXT);
}

TEST(UUID, AssignFromNullPocoUUIDGivesTheAllZeroText)
{
    UUID sut;

    sut.assign(Poco::UUID::null());

    EXPECT_EQ(sut.toString(), "00000000-0000-0000-0000-000000000000");
    EXPECT_TRUE(sut.isEmpty());
}

TEST(UUID, ConstructedFromPocoUUIDHoldsItsCanonicalText)
{
    const UUID sut{Poco::UUID(UPPER_TEXT)};

    EXPECT_EQ(sut.toString(), LOWER_TEXT);
    EXPECT_EQ(sut.get(), Poco::UUID(LOWER_TEXT));
}

TEST(UUID, ConvertsToItsTextAndItsValue)
{
    const UUID sut(UPPER_TEXT);

    const std::string& text = sut;
    const Poco::UUID& value = sut;

    EXPECT_EQ(text, UPPER_TEXT);
    EXPECT_EQ(value, Poco::UUID(LOWER_TEXT));
}

TEST(UUID, IsEmptyLooksAtTheValueOnly)
{
    UUID sut;
    sut.svalue = LOWER_TEXT;

    EXPECT_TRUE(sut.isEmpty());
}

TEST(UUID, SwapExchangesBothForms)
{
    UUID sut(UPPER_TEXT);
    UUID other(OTHER_TEXT);

    sut.swap(other);

    EXPECT_EQ(sut.toString(), OTHER_TEXT);
    EXPECT_EQ(sut.get(), Poco::UUID(OTHER_TEXT));
    EXPECT_EQ(other.toString(), UPPER_TEXT);
    EXPECT_EQ(other.get(), Poco::UUID(LOWER_TEXT));
}

TEST(UUID, ParsesTheDashedFormAndTheFormWithoutDashes)
{
    Poco::UUID dashed;
    Poco::UUID plain;

    EXPECT_TRUE(Orvi::DBData::UUID::parse("a0000003-0000-4000-8000-00000000000f", dashed));
    EXPECT_TRUE(Orvi::DBData::UUID::parse("a000000300004000800000000000000f", plain));
    EXPECT_EQ(dashed, plain);
    EXPECT_EQ(dashed.toString(), "a0000003-0000-4000-8000-00000000000f");
}

TEST(UUID, ParseRefusesTextAfterTheUuid)
{
    Poco::UUID parsed;

    EXPECT_FALSE(Orvi::DBData::UUID::parse("a0000003-0000-4000-8000-00000000000fzzz", parsed));
    EXPECT_FALSE(
        Orvi::DBData::UUID::parse(std::string("a0000003-0000-4000-8000-00000000000f\0", 37), parsed));
    EXPECT_FALSE(Orvi::DBData::UUID::parse("a000000300004000800000000000000f0000", parsed));
}

TEST(UUID, ParseRefusesDashesOutOfPlace)
{
    Poco::UUID parsed;

    EXPECT_FALSE(Orvi::DBData::UUID::parse("a00000030-000-4000-8000-00000000000f", parsed));
}

TEST(UUID, AssignRefusesTextAfterTheUuid)
{
    Orvi::DBData::UUID sut;

    EXPECT_FALSE(sut.assign("a0000003-0000-4000-8000-00000000000fzzz"));
    EXPECT_TRUE(sut.isEmpty());
}

} // namespace
