#include "CompareHelper.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::Util::CompareHelper;

TEST(CompareHelper, OrdersLongsThreeWays)
{
    EXPECT_EQ(CompareHelper::compare<long>(1, 2), Orvi::Util::LESS);
    EXPECT_EQ(CompareHelper::compare<long>(2, 1), Orvi::Util::GREATER);
    EXPECT_EQ(CompareHelper::compare<long>(-7, -7), Orvi::Util::EQUAL);
}

TEST(CompareHelper, OrdersUnsignedLongsWithoutSignConfusion)
{
    EXPECT_EQ(CompareHelper::compare<unsigned long>(0UL, ~0UL), Orvi::Util::LESS);
}

TEST(CompareHelper, OrdersFalseBeforeTrue)
{
    EXPECT_EQ(CompareHelper::compare<bool>(false, true), Orvi::Util::LESS);
    EXPECT_EQ(CompareHelper::compare<bool>(true, true), Orvi::Util::EQUAL);
}

TEST(CompareHelper, OrdersDoubles)
{
    EXPECT_EQ(CompareHelper::compare<double>(0.5, -0.5), Orvi::Util::GREATER);
}

TEST(CompareHelper, OrdersStringsByBytes)
{
    EXPECT_EQ(CompareHelper::compare<std::string>("B", "a"), Orvi::Util::LESS);
    EXPECT_EQ(CompareHelper::compare<std::string>("ab", "a"), Orvi::Util::GREATER);
}

TEST(CompareHelper, OrdersUrisByTheirText)
{
    const Poco::URI a("/cars/doors/");
    const Poco::URI b("/cars/wheels/");

    EXPECT_EQ(CompareHelper::compare(a, b), Orvi::Util::LESS);
    EXPECT_EQ(CompareHelper::compare(b, a), Orvi::Util::GREATER);
    EXPECT_EQ(CompareHelper::compare(a, Poco::URI("/cars/doors/")), Orvi::Util::EQUAL);
}

TEST(CompareHelper, ConvertsResultsToNumbers)
{
    EXPECT_EQ(CompareHelper::convertResult(Orvi::Util::LESS), -1);
    EXPECT_EQ(CompareHelper::convertResult(Orvi::Util::EQUAL), 0);
    EXPECT_EQ(CompareHelper::convertResult(Orvi::Util::GREATER), 1);
    EXPECT_EQ(CompareHelper::convertResult(Orvi::Util::UNKNOWN), 2);
}

TEST(CompareHelper, ConvertsNumbersToResultsBySign)
{
    EXPECT_EQ(CompareHelper::convertResult(-42), Orvi::Util::LESS);
    EXPECT_EQ(CompareHelper::convertResult(0), Orvi::Util::EQUAL);
    EXPECT_EQ(CompareHelper::convertResult(7), Orvi::Util::GREATER);
}

TEST(CompareHelper, CheckPointerSettlesNullsAndIdentity)
{
    const int a = 1;
    const int b = 1;

    EXPECT_EQ(CompareHelper::checkPointer(nullptr, nullptr), Orvi::Util::EQUAL);
    EXPECT_EQ(CompareHelper::checkPointer(&a, &a), Orvi::Util::EQUAL);
    EXPECT_EQ(CompareHelper::checkPointer(nullptr, &b), Orvi::Util::GREATER);
    EXPECT_EQ(CompareHelper::checkPointer(&a, nullptr), Orvi::Util::LESS);
    EXPECT_EQ(CompareHelper::checkPointer(&a, &b), Orvi::Util::UNKNOWN);
}

} // namespace
