#pragma once

#include <Poco/Net/PollSet.h>
#include <Poco/Net/Socket.h>

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace Orvi::Service
{

/// Waits, on a thread of its own, until sockets whose clients have stopped taking data can take more,
/// and then lets their owners write. With it all writes stay non-blocking: no sender thread ever waits
/// for a slow client.
class SubscriptionWriteWatcher
{
public:
    using WritableHandler = std::function<void()>;

    SubscriptionWriteWatcher();
    /// Starts the watcher thread.

    ~SubscriptionWriteWatcher();
    /// Stops and joins the watcher thread.

    SubscriptionWriteWatcher(const SubscriptionWriteWatcher&) = delete;
    SubscriptionWriteWatcher& operator=(const SubscriptionWriteWatcher&) = delete;

    void watch(const Poco::Net::Socket& socket, const WritableHandler& onWritable);
    /// Calls onWritable on the watcher thread, with no lock of the watcher held, whenever the socket can
    /// take data or has failed, until unwatch(). Watching a socket again replaces its handler.

    void unwatch(const Poco::Net::Socket& socket);
    /// A call of the handler that is already under way still completes; the handler must cope with it.

    std::size_t watchedCount() const;

    void stop();
    /// Stops and joins the watcher thread; handlers are no longer called.

private:
    void run();

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopping;
    Poco::Net::PollSet m_pollSet;
    std::map<Poco::Net::Socket, WritableHandler> m_handlers;
    std::thread m_thread;
};

} // namespace Orvi::Service
