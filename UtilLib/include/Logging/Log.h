#pragma once

#include <Poco/Logger.h>
#include <Poco/Message.h>

#include <string>

namespace Logging
{

/// The process-wide entry to the library's logger: one named Poco::Logger that every line goes to.
class Log
{
public:
    static const std::string DEFAULT_LOGGER_NAME;
    /// "ServiceDB".

    static bool IsLogLevelActive(Poco::Message::Priority priority);
    /// True when a line of this priority would be written; lines are composed only then.

    static Poco::Logger& Logger();
    /// The logger that all lines go to.

    static void ConfigureLogging(const std::string& loggerName);
    /// Directs all further lines to the Poco::Logger of this name.

    static void SetLogLevel(Poco::Message::Priority priority, const std::string& loggerName);
    /// Sets the level of the named logger; an empty name means the logger of Logger().

    static Poco::Message::Priority GetLogLevel();
    /// The level of Logger().

    static std::string logLevelToString(Poco::Message::Priority priority);
    /// "fatal", "critical", "error", "warning", "notice", "information", "debug" or "trace".
};

} // namespace Logging
