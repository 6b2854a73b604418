#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::DBData::aDBTableEntry;

TEST(aDBTableEntry, HasNoIdAfterConstruction)
{
    const aDBTableEntry sut;

    EXPECT_EQ(sut.getDBID(), -1);
}

TEST(aDBTableEntry, TakesTheFirstId)
{
    aDBTableEntry sut;

    sut.setDBID(5);

    EXPECT_EQ(sut.getDBID(), 5);
}

TEST(aDBTableEntry, IgnoresASecondIdSilently)
{
    aDBTableEntry sut;
    sut.setDBID(3);

    sut.setDBID(5);

    EXPECT_EQ(sut.getDBID(), 3);
}

TEST(aDBTableEntry, CopiesTheIdOnCopyConstruction)
{
    aDBTableEntry original;
    original.setDBID(42);

    const aDBTableEntry sut(original);

    EXPECT_EQ(sut.getDBID(), 42);
}

} // namespace
