#include "Timestamp.h"

#include <Poco/Clock.h>

namespace Orvi
{

namespace
{

const Poco::Clock& startupClock()
{
    static const Poco::Clock clock;
    return clock;
}

// Reads the start-up clock during static initialisation, so that it marks the start of the process
// and not the first timestamp taken.
const bool startupClockRead = (startupClock(), true);

} // namespace

const Poco::Timestamp Timestamp::m_systemStartupTime;

Timestamp::Timestamp(timestamp_t timestamp, Poco::Int64 interval)
    : m_timestamp(timestamp)
    , m_interval(interval)
{
}

Timestamp Timestamp::createTimestamp()
{
    return Timestamp(Poco::Timestamp().epochMicroseconds(), startupClock().elapsed());
}

Poco::Int64 Timestamp::asMilliseconds() const
{
    return m_interval / 1000;
}

} // namespace Orvi
