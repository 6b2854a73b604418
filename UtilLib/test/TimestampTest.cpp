#include "Timestamp.h"

#include <gtest/gtest.h>

namespace
{

TEST(Timestamp, CountsMillisecondsFromTheProcessStart)
{
    const Poco::Int64 first = Orvi::Timestamp::createTimestamp().asMilliseconds();
    const Poco::Int64 second = Orvi::Timestamp::createTimestamp().asMilliseconds();

    EXPECT_GE(first, 0);
    EXPECT_GE(second, first);
}

TEST(Timestamp, KeepsTheWallClockTimeOfItsCreation)
{
    const Poco::Timestamp before;

    const Orvi::Timestamp sut = Orvi::Timestamp::createTimestamp();

    EXPECT_GE(sut.epochMicroseconds(), before.epochMicroseconds());
    EXPECT_GE(sut.epochMicroseconds(), Orvi::Timestamp::m_systemStartupTime.epochMicroseconds());
}

} // namespace
