#pragma once

#include "SubscriptionHandling/ISubscriptionChangeSink.h"
#include "SubscriptionHandling/SubscriptionDispatcher.h"
#include "SubscriptionHandling/SubscriptionLimits.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"
#include "SubscriptionHandling/SubscriptionWriteWatcher.h"

#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Orvi::Service
{

class SubscriptionConnection;

/// The WebSocket subscription service of one process, on the port of its HTTP server: clients subscribe
/// to addresses of the database and get their content at once, after every change and at their
/// intervals. Each connection is read by a thread of the service, started at the handshake, so WebSocket
/// clients hold no thread of the HTTP server; senderThreads threads fetch and fan out the updates, and
/// one more waits for slow clients' sockets to take data.
class SubscriptionService : public ISubscriptionChangeSink
{
public:
    static const std::string TEXT_TOO_MANY_CONNECTIONS;
    /// The body of the HTTP 503 that refuses a handshake beyond maxConnections.

    explicit SubscriptionService(SubscriptionTrigger& trigger,
                                 const SubscriptionLimits& limits = SubscriptionLimits());
    /// Attaches itself to the trigger, which must outlive it, as the sink of its changes.

    ~SubscriptionService() override;
    /// Detaches from the trigger, closes every connection with 1001 and joins all threads. Destroy it after
    /// the HTTP server that hands it upgrade requests has stopped, and before the database worker that
    /// answers checkNewSubscription() and fetchData(): a connection may be waiting for it.

    SubscriptionService(const SubscriptionService&) = delete;
    SubscriptionService& operator=(const SubscriptionService&) = delete;

    void addressChanged(Scope scope, const std::string& service, const std::string& resource,
                        const std::string& element) override;
    /// Marks the subscriptions that the change touches; the sender threads do the rest.

    void accept(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response);
    /// Completes the handshake of an upgrade request and serves the connection on a thread of the
    /// service; returns at once. Refuses with HTTP 503 beyond maxConnections or while stopping, with HTTP
    /// 426 for a WebSocket version other than 13, and with HTTP 400 for any other invalid handshake.

    bool waitForConnectionCount(std::size_t count, std::chrono::milliseconds timeout) const;
    /// Waits until exactly count connections are being served; false if that did not happen in time.

    std::size_t connectionCount() const;

    std::size_t subscriptionCount() const;

    std::uint64_t fetchCount() const;
    /// How often content has been fetched; subscriptions of one address due together share a fetch.

    const SubscriptionLimits& limits() const { return m_limits; }

private:
    struct Served
    {
        std::shared_ptr<SubscriptionConnection> connection;
        std::thread reader;
    };

    void start(const std::shared_ptr<SubscriptionConnection>& connection);
    void run(const std::shared_ptr<SubscriptionConnection>& connection);
    void release();
    void reapFinished();
    static void refuse(Poco::Net::HTTPServerResponse& response, Poco::Net::HTTPResponse::HTTPStatus status,
                       const std::string& text);

    SubscriptionTrigger& m_trigger;
    const SubscriptionLimits m_limits;
    SubscriptionWriteWatcher m_watcher;
    SubscriptionDispatcher m_dispatcher;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    bool m_stopping;
    std::size_t m_admitted; // connections being served or in their handshake
    std::map<const SubscriptionConnection*, Served> m_connections;
    std::vector<std::thread> m_finished;
};

} // namespace Orvi::Service
