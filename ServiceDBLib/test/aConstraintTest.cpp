#include "JSONDataCache/DBData/aConstraint.h"

#include <gtest/gtest.h>

namespace
{

using namespace Orvi::DBData;

TEST(aConstraint, NumbersTheKindsAsLogged)
{
    EXPECT_EQ(static_cast<int>(ConstraintType_OneOf), 0);
    EXPECT_EQ(static_cast<int>(ConstraintType_Enum), 1);
    EXPECT_EQ(static_cast<int>(ConstraintType_Format), 2);
    EXPECT_EQ(static_cast<int>(ConstraintType_Resolution), 3);
    EXPECT_EQ(static_cast<int>(ConstraintType_Init), 255);
}

TEST(aConstraint, KeepsTheKindItWasBuiltWith)
{
    const aConstraint sut(ConstraintType_Init);

    EXPECT_EQ(sut.getType(), ConstraintType_Init);
}

TEST(aConstraint, IsARowWithoutTableIdAtFirst)
{
    aConstraint sut(ConstraintType_Format);

    EXPECT_EQ(sut.getDBID(), -1);
    sut.setDBID(4);
    EXPECT_EQ(sut.getDBID(), 4);
}

} // namespace
