#include "CompareHelper.h"

#include <gtest/gtest.h>

using Orvi::Util::CompareHelper;
using Orvi::Util::CompareResult;

TEST(CompareHelper, ComparesLongsThreeWays)
{
    EXPECT_EQ(CompareHelper::compare<long>(1, 2), Orvi::Util::LESS);
    EXPECT_EQ(CompareHelper::compare<long>(2, 1), Orvi::Util::GREATER);
    EXPECT_EQ(CompareHelper::compare<long>(-7, -7), Orvi::Util::EQUAL);
}
