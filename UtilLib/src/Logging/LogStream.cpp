#include "Logging/LogStream.h"

#include <cstring>

namespace Logging
{

LogStream::LogStream(Poco::Logger& logger, Poco::Message::Priority priority)
    : Poco::LogStream(logger, priority)
{
}

LogStream& LogStream::addDefaultOutput(const char* file, int line)
{
    const char* fileName = std::strrchr(file, '/');
    *this << '[' << (fileName != nullptr ? fileName + 1 : file) << ':' << line << "] ";
    return *this;
}

} // namespace Logging
