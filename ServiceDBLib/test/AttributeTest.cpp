#include "JSONDataCache/DBData/Attribute.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::DBData::Attribute;

TEST(Attribute, KeepsTheNameItWasBuiltWith)
{
    const Attribute sut("speed");

    EXPECT_EQ(sut.getName(), "speed");
    EXPECT_EQ(sut.getDBID(), -1);
}

TEST(Attribute, ReplacesItsName)
{
    Attribute sut("speed");

    sut.setName("rpm");

    EXPECT_EQ(sut.getName(), "rpm");
}

} // namespace
