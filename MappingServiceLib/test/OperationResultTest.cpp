#include "OperationResult.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Mapping::OperationResult;

TEST(OperationResult, HasTheFixedNumbersInOneByte)
{
    EXPECT_EQ(sizeof(OperationResult::Enum), 1U);
    EXPECT_EQ(OperationResult::ErrorOnUpdate, 0);
    EXPECT_EQ(OperationResult::ServiceErrorOnUpdate, 1);
    EXPECT_EQ(OperationResult::ObjectUpdated, 2);
    EXPECT_EQ(OperationResult::ObjectCreated, 3);
    EXPECT_EQ(OperationResult::ObjectUnchanged, 4);
    EXPECT_EQ(OperationResult::ObjectProcessed, 5);
}

TEST(OperationResult, CountsOnlyTheValuesBelowTwoAsFailures)
{
    EXPECT_TRUE(OperationResult::isFailure(OperationResult::ErrorOnUpdate));
    EXPECT_TRUE(OperationResult::isFailure(OperationResult::ServiceErrorOnUpdate));
    EXPECT_FALSE(OperationResult::isFailure(OperationResult::ObjectUpdated));
    EXPECT_FALSE(OperationResult::isFailure(OperationResult::ObjectCreated));
    EXPECT_FALSE(OperationResult::isFailure(OperationResult::ObjectUnchanged));
    EXPECT_FALSE(OperationResult::isFailure(OperationResult::ObjectProcessed));
}

TEST(OperationResult, NamesEachValueForTheLog)
{
    EXPECT_EQ(OperationResult::toString(OperationResult::ErrorOnUpdate), "ErrorOnUpdate");
    EXPECT_EQ(OperationResult::toString(OperationResult::ServiceErrorOnUpdate), "ServiceErrorOnUpdate");
    EXPECT_EQ(OperationResult::toString(OperationResult::ObjectUpdated), "ObjectUpdated");
    EXPECT_EQ(OperationResult::toString(OperationResult::ObjectCreated), "ObjectCreated");
    EXPECT_EQ(OperationResult::toString(OperationResult::ObjectUnchanged), "ObjectUnchanged");
    EXPECT_EQ(OperationResult::toString(OperationResult::ObjectProcessed), "ObjectProcessed");
}

TEST(OperationResult, NamesANumberOutsideTheEnumerationUnknown)
{
    EXPECT_EQ(OperationResult::toString(static_cast<OperationResult::Enum>(6)), "Unknown");
    EXPECT_EQ(OperationResult::toString(static_cast<OperationResult::Enum>(255)), "Unknown");
}

} // namespace
