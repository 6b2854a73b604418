#pragma once

#include "SubscriptionHandling/ISubscriberChannel.h"
#include "SubscriptionHandling/ISubscriptionInterface.h"
#include "SubscriptionHandling/SubscriptionLimits.h"

#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/WebSocket.h>
#include <Poco/Timespan.h>
#include <Poco/Types.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace Orvi::Service
{

class SubscriptionDispatcher;
class SubscriptionWriteWatcher;
class WebSocketSubscription;

/// One WebSocket client of the subscription service. serve() reads and answers its messages on the
/// calling thread; everything sent to it is queued and written without ever blocking, from whichever
/// thread queues it, and by the write watcher once a full socket can take more. A client that lets
/// more than maxUnsentUpdates messages pile up is disconnected. Its subscriptions end with it.
class SubscriptionConnection : public ISubscriberChannel,
                               public std::enable_shared_from_this<SubscriptionConnection>
{
public:
    static const Poco::Timespan FRAME_TIMEOUT;
    /// 10 s: a frame once begun must arrive within it, or the connection is closed with 1008.

    static const Poco::Timespan CLOSE_TIMEOUT;
    /// 1 s: how long the messages still queued at the end, with the close frame, get to leave.

    SubscriptionConnection(const Poco::Net::WebSocket& socket, ISubscriptionInterface& checker,
                           SubscriptionDispatcher& dispatcher, SubscriptionWriteWatcher& watcher,
                           const SubscriptionLimits& limits);
    /// Takes a socket right after the server side of the handshake. Create it with std::make_shared;
    /// the other arguments must outlive it.

    ~SubscriptionConnection() override;

    SubscriptionConnection(const SubscriptionConnection&) = delete;
    SubscriptionConnection& operator=(const SubscriptionConnection&) = delete;

    void serve();
    /// Reads and answers the client's messages until it closes, the connection fails or goAway() is
    /// called; then ends its subscriptions and lets the queued messages leave (CLOSE_TIMEOUT at most).
    /// Call it once, and close() after it.

    void close();
    /// Closes the socket; nothing is sent afterwards.

    void goAway();
    /// From any thread: queues a close frame with 1001 and makes serve() return.

    void post(const std::string& text) override;

    bool postUpdate(WebSocketSubscription& subscription, const std::string& text, bool last) override;

    void postEnd(WebSocketSubscription& subscription, const std::string& text) override;

    const Poco::Net::SocketAddress& peerAddress() const { return m_peerAddress; }

    std::size_t subscriptionCount() const;

    std::size_t unsentCount() const;
    /// Messages queued and not yet wholly taken by the socket.

private:
    enum class State
    {
        Open,    // messages are queued and written
        Closing, // the close frame is queued; nothing more is taken
        Closed   // the socket is closed or broken; everything is dropped
    };

    bool readMessage();
    bool handleMessage(int opcode, const std::string& payload);
    void handleText(const std::string& text);
    void subscribe(SubscriptionRequest& request, const std::string& event);
    void unsubscribe(const std::string& event);
    void endSubscriptions();
    void waitUntilSent(const Poco::Timespan& timeout);
    void closeWith(Poco::UInt16 status, const std::string& reason);
    void endLocked(WebSocketSubscription& subscription);
    void queueFrameLocked(std::string&& frame);
    void closeLocked(Poco::UInt16 status, const std::string& reason);
    void flushLocked();
    void abortLocked();
    void onWritable();

    static std::string encodeFrame(int opcode, const std::string& payload);

    Poco::Net::WebSocket m_socket;
    const int m_fd;
    const Poco::Net::SocketAddress m_localAddress;
    const Poco::Net::SocketAddress m_peerAddress;
    ISubscriptionInterface& m_checker;
    SubscriptionDispatcher& m_dispatcher;
    SubscriptionWriteWatcher& m_watcher;
    const SubscriptionLimits& m_limits;

    mutable std::mutex m_mutex;
    std::condition_variable m_sent;
    State m_state;
    std::deque<std::string> m_frames;
    std::size_t m_frontOffset;
    bool m_watched;
    std::map<std::string, std::shared_ptr<WebSocketSubscription>> m_subscriptions;

    // Read and written by the thread of serve() only.
    int m_fragmentOpcode;
    std::string m_fragments;
};

} // namespace Orvi::Service
