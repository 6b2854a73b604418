#pragma once

#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Types.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ServiceDB::Test
{

/// A TCP server on 127.0.0.1, on a port the OS picks, for clients that must cope with a peer that does
/// not answer in HTTP. It serves one connection at a time: reads the request head, sends the reply bytes,
/// then closes its sending side or stays silent, and waits until the client goes.
class RawReplyServer
{
public:
    enum class Ending
    {
        Close,
        StaySilent
    };

    static constexpr int WAIT_LIMIT_S = 10;
    /// The longest it waits for a client to send or to go.

    RawReplyServer(const std::string& reply, Ending ending);
    ~RawReplyServer();

    RawReplyServer(const RawReplyServer&) = delete;
    RawReplyServer& operator=(const RawReplyServer&) = delete;

    Poco::UInt16 port() const;

    std::vector<std::string> requestLines(std::size_t count) const;
    /// The first lines of the request heads received, oldest first, once count of them have arrived or
    /// WAIT_LIMIT_S has passed.

private:
    void run();
    void serve(Poco::Net::StreamSocket& connection);
    void record(const std::string& head);

    const std::string m_reply;
    const Ending m_ending;
    Poco::Net::ServerSocket m_listener;
    std::atomic<bool> m_stopping{false};
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_arrived;
    std::vector<std::string> m_requestLines;
    std::thread m_thread;
};

} // namespace ServiceDB::Test
