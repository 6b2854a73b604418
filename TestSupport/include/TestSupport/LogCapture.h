#pragma once

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>
#include <Poco/Message.h>
#include <Poco/Mutex.h>

#include <string>
#include <vector>

namespace ServiceDB::Test
{

/// Records every line written to the library's logger while it lives, and restores the logger's
/// channel and level afterwards. Lines are kept as written, less the source position in front.
class LogCapture
{
public:
    explicit LogCapture(Poco::Message::Priority level = Poco::Message::PRIO_TRACE);
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const;
    /// The captured lines, oldest first, each like "Warning: text".

    std::vector<std::string> linesStartingWith(const std::string& prefix) const;
    /// The captured lines that begin with the prefix, such as "Error: ", oldest first.

    std::vector<std::string> rawLines() const;
    /// The captured lines as the logger got them, with the source position.

    void clear();

    static std::string stripPosition(const std::string& line);
    /// Removes a leading "[file:line] ".

private:
    class RecordingChannel;

    Poco::AutoPtr<RecordingChannel> m_channel;
    Poco::Channel::Ptr m_previousChannel;
    int m_previousLevel;
};

} // namespace ServiceDB::Test
