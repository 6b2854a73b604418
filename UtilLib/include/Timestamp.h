#pragma once

#include <Poco/Timestamp.h>
#include <Poco/Types.h>

namespace Orvi
{

/// A point in time of this process: the wall-clock time and the monotonic time since start-up.
class Timestamp
{
public:
    using timestamp_t = Poco::Timestamp::TimeDiff;

    static Timestamp createTimestamp();
    /// The current time.

    Poco::Int64 asMilliseconds() const;
    /// Milliseconds since the process started, from a monotonic clock.

    timestamp_t epochMicroseconds() const { return m_timestamp; }
    /// Wall-clock microseconds since the Unix epoch.

    static const Poco::Timestamp m_systemStartupTime;
    /// Wall-clock time at which the process started.

private:
    Timestamp(timestamp_t timestamp, Poco::Int64 interval);

    timestamp_t m_timestamp;
    Poco::Int64 m_interval; // monotonic microseconds since start-up
};

} // namespace Orvi
