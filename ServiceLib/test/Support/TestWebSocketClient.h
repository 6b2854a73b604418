#pragma once

#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/WebSocket.h>
#include <Poco/Timespan.h>
#include <Poco/Types.h>

#include <memory>
#include <string>

namespace ServiceDB::Test
{

/// A WebSocket client on 127.0.0.1 for subscription tests. Every receive waits at most RECEIVE_TIMEOUT
/// and throws Poco::TimeoutException after it, so a test never hangs.
class TestWebSocketClient
{
public:
    struct Frame
    {
        int flags;
        std::string payload;

        int opcode() const { return flags & Poco::Net::WebSocket::FRAME_OP_BITMASK; }
        Poco::UInt16 closeStatus() const;
        /// The status of a close frame; 0 when it carries none.
    };

    static const Poco::Timespan RECEIVE_TIMEOUT;

    explicit TestWebSocketClient(Poco::UInt16 port, const std::string& path = "/");
    /// Completes the handshake; throws Poco::Net::WebSocketException when the server refuses it.

    void send(const std::string& text);

    void sendFrame(const std::string& payload, int flags);

    std::string receive();
    /// The next message, which must be a text frame.

    Frame receiveFrame();
    /// The next frame of any kind; flags 0 and no payload when the server has closed the connection.

    bool receivesEndOfStream();
    /// Reads and drops everything until the server closes the connection; false on timeout.

    Poco::Net::SocketAddress address() const { return m_socket->address(); }
    /// The local end, which is the peer address in the server's log lines.

    Poco::Net::WebSocket& socket() { return *m_socket; }

private:
    Poco::Net::HTTPClientSession m_session;
    std::unique_ptr<Poco::Net::WebSocket> m_socket;
};

std::string withoutTimestamp(const std::string& message);
/// The message with the value of its "timestamp" replaced by 0, for comparing whole texts.

std::string subscribeMessage(const std::string& event);
/// {"event":...,"type":"subscribe"}.

std::string unsubscribeMessage(const std::string& event);

} // namespace ServiceDB::Test
