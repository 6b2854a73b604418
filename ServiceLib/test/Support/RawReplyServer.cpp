#include "RawReplyServer.h"

#include <Poco/Exception.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Timespan.h>

#include <chrono>

namespace ServiceDB::Test
{

RawReplyServer::RawReplyServer(const std::string& reply, Ending ending)
    : m_reply(reply)
    , m_ending(ending)
    , m_listener(Poco::Net::SocketAddress("127.0.0.1", 0))
    , m_thread([this] { run(); })
{
}

// A connection of its own wakes the thread from accepting, so that it sees it must stop.
RawReplyServer::~RawReplyServer()
{
    m_stopping = true;
    try
    {
        Poco::Net::StreamSocket wakeUp(m_listener.address());
    }
    catch (const Poco::Exception&)
    {
    }
    m_thread.join();
}

Poco::UInt16 RawReplyServer::port() const
{
    return m_listener.address().port();
}

std::vector<std::string> RawReplyServer::requestLines(std::size_t count) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_arrived.wait_for(lock, std::chrono::seconds(WAIT_LIMIT_S),
                       [&] { return m_requestLines.size() >= count; });
    return m_requestLines;
}

void RawReplyServer::run()
{
    while (!m_stopping)
    {
        try
        {
            Poco::Net::StreamSocket connection = m_listener.acceptConnection();
            if (m_stopping)
            {
                return;
            }
            serve(connection);
        }
        catch (const Poco::Exception&)
        {
            // A client that went away early ends its own connection only.
        }
    }
}

void RawReplyServer::serve(Poco::Net::StreamSocket& connection)
{
    connection.setReceiveTimeout(Poco::Timespan(WAIT_LIMIT_S, 0));
    std::string head;
    char buffer[1024];
    while (head.find("\r\n\r\n") == std::string::npos)
    {
        const int received = connection.receiveBytes(buffer, sizeof(buffer));
        if (received <= 0)
        {
            return;
        }
        head.append(buffer, static_cast<std::size_t>(received));
    }
    record(head);

    if (!m_reply.empty())
    {
        connection.sendBytes(m_reply.data(), static_cast<int>(m_reply.size()));
    }
    if (m_ending == Ending::Close)
    {
        connection.shutdownSend();
    }
    // Reading on until the client closes leaves nothing unread, so closing sends no reset.
    while (connection.receiveBytes(buffer, sizeof(buffer)) > 0)
    {
    }
}

void RawReplyServer::record(const std::string& head)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requestLines.push_back(head.substr(0, head.find("\r\n")));
    }
    m_arrived.notify_all();
}

} // namespace ServiceDB::Test
