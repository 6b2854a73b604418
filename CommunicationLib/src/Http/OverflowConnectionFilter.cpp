#include "Http/OverflowConnectionFilter.h"

#include "Http/ErrorAnswer.h"
#include "Logging/LogStream.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/PollSet.h>
#include <Poco/Net/SocketStream.h>
#include <Poco/Timestamp.h>

#include <list>
#include <ostream>

namespace Orvi::Net
{

const std::string OverflowConnectionFilter::MSG_CONNECTION_QUEUE_OVERFLOW = "connection queue overflow";
const Poco::Timespan OverflowConnectionFilter::WAIT_LIMIT(1, 0);

namespace
{

constexpr std::size_t MAX_HEAD_SIZE = 16 * 1024;
const Poco::Timespan POLL_SLICE(0, 50000);

std::string describe(const Poco::Net::StreamSocket& socket)
{
    try
    {
        return socket.peerAddress().toString();
    }
    catch (const Poco::Exception&)
    {
        return "a client that left";
    }
}

/// One refused connection: it is given time to send its head, is answered, and is given time to send
/// the rest of what it was sending. An answer sent while the request still comes in would be lost:
/// closing a socket with unread data resets the connection.
class Refusal
{
public:
    explicit Refusal(const Poco::Net::StreamSocket& socket)
        : m_socket(socket)
        , m_deadline(Poco::Timestamp() + OverflowConnectionFilter::WAIT_LIMIT)
    {
    }

    const Poco::Net::StreamSocket& socket() const { return m_socket; }

    /// Takes what the client sent; false once the connection is done with.
    bool receive()
    {
        char buffer[4096];
        const int length = m_socket.receiveBytes(buffer, sizeof buffer);
        if (length <= 0)
        {
            answer();
            return false;
        }
        if (!m_answered)
        {
            m_head.append(buffer, static_cast<std::size_t>(length));
            if (m_head.size() >= MAX_HEAD_SIZE || m_head.find("\r\n\r\n") != std::string::npos)
            {
                answer();
            }
        }
        // Once answered, the connection may close as soon as nothing it sent is left unread.
        return !m_answered || m_socket.available() > 0;
    }

    /// False once the connection is done with.
    bool keepWaiting(const Poco::Timestamp& now)
    {
        if (now < m_deadline)
        {
            return true;
        }
        if (m_answered)
        {
            return false;
        }
        answer();
        return true;
    }

private:
    void answer()
    {
        if (m_answered)
        {
            return;
        }
        m_answered = true;
        m_deadline = Poco::Timestamp() + OverflowConnectionFilter::WAIT_LIMIT;
        LOG_WARNING("Refused connection from " << describe(m_socket) << ": "
                                               << OverflowConnectionFilter::MSG_CONNECTION_QUEUE_OVERFLOW);
        Poco::Net::HTTPResponse response;
        const std::string body =
            ErrorAnswer::prepare(response, Poco::Net::HTTPResponse::HTTP_SERVICE_UNAVAILABLE,
                                 OverflowConnectionFilter::MSG_CONNECTION_QUEUE_OVERFLOW);
        Poco::Net::SocketOutputStream out(m_socket);
        response.write(out);
        out << body << std::flush;
        m_socket.shutdownSend();
    }

    Poco::Net::StreamSocket m_socket;
    Poco::Timestamp m_deadline;
    std::string m_head;
    bool m_answered = false;
};

} // namespace

OverflowConnectionFilter::OverflowConnectionFilter(const Poco::Net::TCPServer& server)
    : m_server(server)
    , m_thread([this] { answerAll(); })
{
}

OverflowConnectionFilter::~OverflowConnectionFilter()
{
    stop();
}

bool OverflowConnectionFilter::accept(const Poco::Net::StreamSocket& socket)
{
    // The acceptor thread alone adds to the queue, so room seen here is still there when it enqueues.
    if (m_server.queuedConnections() < m_server.params().getMaxQueued())
    {
        return true;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stopping || m_taken >= MAX_PENDING)
    {
        LOG_WARNING("Closed connection from " << describe(socket)
                                              << " unanswered: " << MSG_CONNECTION_QUEUE_OVERFLOW);
        return false;
    }
    ++m_taken;
    m_pending.push_back(socket);
    m_wakeUp.notify_one();
    return false;
}

void OverflowConnectionFilter::stop()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wakeUp.notify_one();
    if (m_thread.joinable())
    {
        m_thread.join();
    }
}

void OverflowConnectionFilter::answerAll()
{
    // Refused connections are served side by side, so that one slow client delays no other answer.
    std::list<Refusal> refusals;
    Poco::Net::PollSet polled;
    while (true)
    {
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_wakeUp.wait(lock, [&] { return m_stopping || !m_pending.empty() || !refusals.empty(); });
            if (m_stopping)
            {
                // The server goes: closing is quicker than waiting for each client.
                m_pending.clear();
                return;
            }
            for (const Poco::Net::StreamSocket& socket : m_pending)
            {
                refusals.emplace_back(socket);
                polled.add(socket, Poco::Net::PollSet::POLL_READ);
            }
            m_pending.clear();
        }
        const Poco::Net::PollSet::SocketModeMap ready = polled.poll(POLL_SLICE);
        const Poco::Timestamp now;
        std::size_t finished = 0;
        for (auto refusal = refusals.begin(); refusal != refusals.end();)
        {
            bool open = true;
            try
            {
                open =
                    (ready.count(refusal->socket()) == 0 || refusal->receive()) && refusal->keepWaiting(now);
            }
            catch (const Poco::Exception&)
            {
                open = false; // the client gave up first
            }
            if (open)
            {
                ++refusal;
                continue;
            }
            polled.remove(refusal->socket());
            refusal = refusals.erase(refusal);
            ++finished;
        }
        std::lock_guard<std::mutex> lock(m_mutex);
        m_taken -= finished;
    }
}

} // namespace Orvi::Net
