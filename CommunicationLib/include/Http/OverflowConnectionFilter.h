#pragma once

#include <Poco/Net/StreamSocket.h>
#include <Poco/Net/TCPServer.h>
#include <Poco/Timespan.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace Orvi::Net
{

/// Lets a connection into the server's queue while there is room in it, and answers the others 503 on a
/// thread of its own instead of closing them unanswered. Each answer waits for the request's head and
/// closes gently, so that the client reads it rather than a reset; all are served side by side.
class OverflowConnectionFilter : public Poco::Net::TCPServerConnectionFilter
{
public:
    static const std::string MSG_CONNECTION_QUEUE_OVERFLOW;
    /// "connection queue overflow"

    static constexpr std::size_t MAX_PENDING = 1024;
    /// Connections beyond this many taken over and not yet done with are closed at once.

    static const Poco::Timespan WAIT_LIMIT;
    /// How long a refused connection is given to send its head, and to close after the answer: 1 s.

    explicit OverflowConnectionFilter(const Poco::Net::TCPServer& server);
    /// The server must outlive the filter's use; stop() before it goes.

    ~OverflowConnectionFilter() override;

    OverflowConnectionFilter(const OverflowConnectionFilter&) = delete;
    OverflowConnectionFilter& operator=(const OverflowConnectionFilter&) = delete;

    bool accept(const Poco::Net::StreamSocket& socket) override;
    /// True while the server's queue has room; otherwise the connection is taken over and answered.

    void stop();
    /// Closes the connections not yet answered and ends the filter's thread.

private:
    void answerAll();

    const Poco::Net::TCPServer& m_server;
    std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    std::deque<Poco::Net::StreamSocket> m_pending;
    std::size_t m_taken = 0;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace Orvi::Net
