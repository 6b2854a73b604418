#include "Logging/Log.h"

#include <atomic>

namespace Logging
{

const std::string Log::DEFAULT_LOGGER_NAME = "ServiceDB";

namespace
{

// Poco::Logger::get() takes a global lock, so the logger in use is looked up once and kept.
std::atomic<Poco::Logger*>& currentLogger()
{
    static std::atomic<Poco::Logger*> logger{&Poco::Logger::get(Log::DEFAULT_LOGGER_NAME)};
    return logger;
}

} // namespace

bool Log::IsLogLevelActive(Poco::Message::Priority priority)
{
    return Logger().is(priority);
}

Poco::Logger& Log::Logger()
{
    return *currentLogger().load(std::memory_order_acquire);
}

void Log::ConfigureLogging(const std::string& loggerName)
{
    currentLogger().store(&Poco::Logger::get(loggerName), std::memory_order_release);
}

void Log::SetLogLevel(Poco::Message::Priority priority, const std::string& loggerName)
{
    Poco::Logger& logger = loggerName.empty() ? Logger() : Poco::Logger::get(loggerName);
    logger.setLevel(static_cast<int>(priority));
}

Poco::Message::Priority Log::GetLogLevel()
{
    return static_cast<Poco::Message::Priority>(Logger().getLevel());
}

std::string Log::logLevelToString(Poco::Message::Priority priority)
{
    switch (priority)
    {
    case Poco::Message::PRIO_FATAL:
        return "fatal";
    case Poco::Message::PRIO_CRITICAL:
        return "critical";
    case Poco::Message::PRIO_ERROR:
        return "error";
    case Poco::Message::PRIO_WARNING:
        return "warning";
    case Poco::Message::PRIO_NOTICE:
        return "notice";
    case Poco::Message::PRIO_INFORMATION:
        return "information";
    case Poco::Message::PRIO_DEBUG:
        return "debug";
    case Poco::Message::PRIO_TRACE:
        return "trace";
    }
    return "unknown";
}

} // namespace Logging
