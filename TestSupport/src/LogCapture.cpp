#include "TestSupport/LogCapture.h"

#include "Logging/Log.h"

namespace ServiceDB::Test
{

class LogCapture::RecordingChannel : public Poco::Channel
{
public:
    void log(const Poco::Message& msg) override
    {
        Poco::FastMutex::ScopedLock lock(m_mutex);
        m_lines.push_back(msg.getText());
    }

    std::vector<std::string> lines() const
    {
        Poco::FastMutex::ScopedLock lock(m_mutex);
        return m_lines;
    }

    void clear()
    {
        Poco::FastMutex::ScopedLock lock(m_mutex);
        m_lines.clear();
    }

private:
    mutable Poco::FastMutex m_mutex;
    std::vector<std::string> m_lines;
};

LogCapture::LogCapture(Poco::Message::Priority level)
    : m_channel(new RecordingChannel)
    , m_previousChannel(Logging::Log::Logger().getChannel())
    , m_previousLevel(Logging::Log::Logger().getLevel())
{
    Logging::Log::Logger().setChannel(m_channel);
    Logging::Log::Logger().setLevel(static_cast<int>(level));
}

LogCapture::~LogCapture()
{
    Logging::Log::Logger().setChannel(m_previousChannel);
    Logging::Log::Logger().setLevel(m_previousLevel);
}

std::vector<std::string> LogCapture::lines() const
{
    std::vector<std::string> result = m_channel->lines();
    for (std::string& line : result)
    {
        line = stripPosition(line);
    }
    return result;
}

std::vector<std::string> LogCapture::linesStartingWith(const std::string& prefix) const
{
    std::vector<std::string> result;
    for (const std::string& line : lines())
    {
        if (line.compare(0, prefix.size(), prefix) == 0)
        {
            result.push_back(line);
        }
    }
    return result;
}

std::vector<std::string> LogCapture::rawLines() const
{
    return m_channel->lines();
}

void LogCapture::clear()
{
    m_channel->clear();
}

std::string LogCapture::stripPosition(const std::string& line)
{
    if (line.empty() || line.front() != '[')
    {
        return line;
    }
    const std::string::size_type end = line.find("] ");
    return end == std::string::npos ? line : line.substr(end + 2);
}

} // namespace ServiceDB::Test
