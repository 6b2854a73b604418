#pragma once

#include <cstddef>

namespace Orvi::Service
{

/// How much the subscription service takes on: clients, subscriptions, unsent updates, message size
/// and the threads that send updates.
class SubscriptionLimits
{
public:
    static constexpr std::size_t DEFAULT_MAX_CONNECTIONS = 64;
    static constexpr std::size_t DEFAULT_MAX_SUBSCRIPTIONS_PER_CONNECTION = 1000;
    static constexpr std::size_t DEFAULT_MAX_UNSENT_UPDATES = 1000;
    static constexpr std::size_t DEFAULT_MAX_FRAME_SIZE = 64 * 1024;
    static constexpr std::size_t DEFAULT_SENDER_THREADS = 2;

    explicit SubscriptionLimits(
        std::size_t maxConnections = DEFAULT_MAX_CONNECTIONS,
        std::size_t maxSubscriptionsPerConnection = DEFAULT_MAX_SUBSCRIPTIONS_PER_CONNECTION,
        std::size_t maxUnsentUpdates = DEFAULT_MAX_UNSENT_UPDATES,
        std::size_t maxFrameSize = DEFAULT_MAX_FRAME_SIZE,
        std::size_t senderThreads = DEFAULT_SENDER_THREADS);
    /// Throws Poco::InvalidArgumentException for a limit of zero or a frame size above INT_MAX.

    std::size_t maxConnections() const { return m_maxConnections; }
    /// Open WebSocket connections; the handshake of one more is refused with HTTP 503.

    std::size_t maxSubscriptionsPerConnection() const { return m_maxSubscriptionsPerConnection; }
    /// Live subscriptions of one connection; one more is refused with error 503.

    std::size_t maxUnsentUpdates() const { return m_maxUnsentUpdates; }
    /// Messages queued for one client and not yet taken by its socket; one more closes the connection.

    std::size_t maxFrameSize() const { return m_maxFrameSize; }
    /// Bytes of one client message (all its fragments); a larger one closes the connection with 1009.

    std::size_t senderThreads() const { return m_senderThreads; }
    /// Threads that fetch content and hand updates to the connections.

private:
    std::size_t m_maxConnections;
    std::size_t m_maxSubscriptionsPerConnection;
    std::size_t m_maxUnsentUpdates;
    std::size_t m_maxFrameSize;
    std::size_t m_senderThreads;
};

} // namespace Orvi::Service
