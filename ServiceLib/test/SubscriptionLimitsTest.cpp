#include "SubscriptionHandling/SubscriptionLimits.h"

#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <climits>

using Orvi::Service::SubscriptionLimits;

TEST(SubscriptionLimitsTest, TheDefaultsSuitAProcessWithAFewDozenClients)
{
    const SubscriptionLimits sut;

    EXPECT_EQ(sut.maxConnections(), 64U);
    EXPECT_EQ(sut.maxSubscriptionsPerConnection(), 1000U);
    EXPECT_EQ(sut.maxUnsentUpdates(), 1000U);
    EXPECT_EQ(sut.maxFrameSize(), 65536U);
    EXPECT_EQ(sut.senderThreads(), 2U);
}

TEST(SubscriptionLimitsTest, ItKeepsTheLimitsItWasGiven)
{
    const SubscriptionLimits sut(3, 4, 5, 6, 7);

    EXPECT_EQ(sut.maxConnections(), 3U);
    EXPECT_EQ(sut.maxSubscriptionsPerConnection(), 4U);
    EXPECT_EQ(sut.maxUnsentUpdates(), 5U);
    EXPECT_EQ(sut.maxFrameSize(), 6U);
    EXPECT_EQ(sut.senderThreads(), 7U);
}

TEST(SubscriptionLimitsTest, ALimitOfZeroIsRefused)
{
    EXPECT_THROW(SubscriptionLimits(0), Poco::InvalidArgumentException);
    EXPECT_THROW(SubscriptionLimits(1, 0), Poco::InvalidArgumentException);
    EXPECT_THROW(SubscriptionLimits(1, 1, 0), Poco::InvalidArgumentException);
    EXPECT_THROW(SubscriptionLimits(1, 1, 1, 0), Poco::InvalidArgumentException);
    EXPECT_THROW(SubscriptionLimits(1, 1, 1, 1, 0), Poco::InvalidArgumentException);
}

TEST(SubscriptionLimitsTest, AFrameSizeBeyondWhatAFrameReaderCountsIsRefused)
{
    const std::size_t largest = static_cast<std::size_t>(INT_MAX);

    EXPECT_NO_THROW(SubscriptionLimits(1, 1, 1, largest));
    EXPECT_THROW(SubscriptionLimits(1, 1, 1, largest + 1), Poco::InvalidArgumentException);
}
