#pragma once

#include "Logging/Log.h"

#include <Poco/LogStream.h>

#include <ostream>

namespace Logging
{

/// A Poco::LogStream that can put the source position in front of a line.
class LogStream : public Poco::LogStream
{
public:
    LogStream(Poco::Logger& logger, Poco::Message::Priority priority);

    LogStream& addDefaultOutput(const char* file, int line);
    /// Writes "[<file name>:<line>] " into the line and returns the stream.
};

} // namespace Logging

/// Writes one line of the given priority and prefix; the text is an expression for operator<<, evaluated
/// only when the level is active.
#define SERVICEDB_LOG(priority, prefix, text)                                                                \
    do                                                                                                       \
    {                                                                                                        \
        if (::Logging::Log::IsLogLevelActive(priority))                                                      \
        {                                                                                                    \
            ::Logging::LogStream servicedbLogStream_(::Logging::Log::Logger(), priority);                    \
            servicedbLogStream_.addDefaultOutput(__FILE__, __LINE__) << prefix << text << std::endl;         \
        }                                                                                                    \
    } while (false)

#define LOG_FATAL(text) SERVICEDB_LOG(::Poco::Message::PRIO_FATAL, "Fatal: ", text)
#define LOG_ERROR(text) SERVICEDB_LOG(::Poco::Message::PRIO_ERROR, "Error: ", text)
#define LOG_WARNING(text) SERVICEDB_LOG(::Poco::Message::PRIO_WARNING, "Warning: ", text)
#define LOG_INFO(text) SERVICEDB_LOG(::Poco::Message::PRIO_INFORMATION, "Info: ", text)
#define LOG_DEBUG(text) SERVICEDB_LOG(::Poco::Message::PRIO_DEBUG, "Debug: ", text)
#define LOG_TRACE(text) SERVICEDB_LOG(::Poco::Message::PRIO_TRACE, "Trace: ", text)
