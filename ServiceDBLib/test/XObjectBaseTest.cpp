#include "JSONDataCache/DBData/XObjectBase.h"

#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::DBData::UUID;
using Orvi::DBData::XObjectBase;

const std::string UPPER_TEXT = "6BA7B810-9DAD-11D1-80B4-00C04FD430C8";

TEST(XObjectBase, IsEmptyAfterConstruction)
{
    const XObjectBase sut;

    EXPECT_EQ(sut.getName(), "");
    EXPECT_TRUE(sut.getId().isEmpty());
    EXPECT_EQ(sut.getUUID(), "");
    EXPECT_EQ(sut.getDBID(), -1);
}

TEST(XObjectBase, ReplacesItsName)
{
    XObjectBase sut;

    sut.setName("speed");

    EXPECT_EQ(sut.getName(), "speed");
}

TEST(XObjectBase, SetIdTakesBothFormsUnchanged)
{
    XObjectBase sut;
    UUID inconsistent(UPPER_TEXT);
    inconsistent.svalue = "free text";

    sut.setId(inconsistent);

    EXPECT_EQ(sut.getUUID(), "free text");
    EXPECT_EQ(sut.getId().get(), Poco::UUID(UPPER_TEXT));
}

TEST(XObjectBase, SetUUIDKeepsTheTextAsGiven)
{
    XObjectBase sut;

    sut.setUUID(UUID(UPPER_TEXT));

    EXPECT_EQ(sut.getUUID(), UPPER_TEXT);
}

TEST(XObjectBase, GenerateIdMakesARandomUUIDWithCanonicalText)
{
    XObjectBase sut;

    sut.generateId();

    EXPECT_FALSE(sut.getId().isEmpty());
    EXPECT_EQ(sut.getId().get().version(), Poco::UUID::UUID_RANDOM);
    EXPECT_EQ(sut.getUUID(), sut.getId().get().toString());
}

TEST(XObjectBase, GenerateIdGivesEachRowItsOwnUUID)
{
    XObjectBase sut;
    XObjectBase other;

    sut.generateId();
    other.generateId();

    EXPECT_NE(sut.getUUID(), other.getUUID());
}

} // namespace
