#pragma once

#include "Command/UrlPath.h"
#include "SubscriptionHandling/ISubscriptionChangeSink.h"
#include "SubscriptionHandling/ISubscriptionDataSource.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <queue>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Orvi::Service
{

class WebSocketSubscription;

/// Knows every live subscription by the content it watches and decides when each is due an update: at
/// once after subscribing, after a change of its address (no sooner than its update limit allows, so
/// that changes in between merge into the last state) and at its interval. Its sender threads fetch the
/// content once for all subscriptions of an address that are due together and hand the update to their
/// channels; the thread that reports a change only marks and wakes.
class SubscriptionDispatcher
{
public:
    SubscriptionDispatcher(const ISubscriptionDataSource& source, std::size_t senderThreads);
    /// Starts the sender threads. The source must outlive the dispatcher.

    ~SubscriptionDispatcher();
    /// Stops and joins the sender threads.

    SubscriptionDispatcher(const SubscriptionDispatcher&) = delete;
    SubscriptionDispatcher& operator=(const SubscriptionDispatcher&) = delete;

    void add(const std::shared_ptr<WebSocketSubscription>& subscription);
    /// Registers the subscription and makes its first update due at once.

    void remove(const WebSocketSubscription& subscription);
    /// Forgets the subscription. An update already being fetched may still reach its channel, which
    /// drops it once the subscription has ended there.

    void addressChanged(ISubscriptionChangeSink::Scope scope, const std::string& service,
                        const std::string& resource, const std::string& element);
    /// Marks the addresses that the change touches and wakes a sender; never fetches or sends.

    std::size_t subscriptionCount() const;

    std::uint64_t fetchCount() const;
    /// How often content has been fetched so far; subscriptions due together share one fetch.

    void stop();
    /// Stops and joins the sender threads; updates due afterwards are not sent.

private:
    using Clock = std::chrono::steady_clock;

    struct Topic;

    // One subscription as the scheduler sees it; guarded by m_mutex.
    struct Entry
    {
        std::shared_ptr<WebSocketSubscription> subscription;
        std::weak_ptr<Topic> topic;
        bool registered = true;
        bool due = false;
        bool changeDeferred = false;
        Clock::time_point nextChangeAllowed;
        Clock::time_point nextInterval;
    };

    // One content key and the subscriptions that share its fetches, in the order they came.
    struct Topic
    {
        std::string key;
        Command::UrlPath::Characteristic characteristic = Command::UrlPath::INVALID;
        std::string service;
        std::string resource;
        std::string element;
        std::vector<std::shared_ptr<Entry>> entries;
        bool registered = true;
        bool changed = false;
        bool queued = false;
        bool busy = false;
    };

    struct Timer
    {
        Clock::time_point at;
        std::weak_ptr<Entry> entry;
        bool interval;
    };

    struct TimerLater
    {
        bool operator()(const Timer& left, const Timer& right) const { return left.at > right.at; }
    };

    // The topics of one resource that changes of it touch.
    struct ResourceWatch
    {
        std::vector<std::shared_ptr<Topic>> collections;
        std::unordered_map<std::string, std::vector<std::shared_ptr<Topic>>> elements;
    };

    using ResourceKey = std::pair<std::string, std::string>;

    void runSender();
    void serveTopic(std::unique_lock<std::mutex>& lock, const std::shared_ptr<Topic>& topic);
    void fetchAndDeliver(const std::string& key, const std::vector<std::shared_ptr<Entry>>& targets,
                         std::vector<std::shared_ptr<Entry>>& out_ended);
    void fireTimers(Clock::time_point now);
    void markChanged(Entry& entry, const std::shared_ptr<Entry>& shared, Clock::time_point now);
    void markTopicChanged(const std::shared_ptr<Topic>& topic);
    void queueTopic(const std::shared_ptr<Topic>& topic);
    void pushTimer(Clock::time_point at, const std::shared_ptr<Entry>& entry, bool interval);
    void unregister(const std::shared_ptr<Entry>& entry);
    void indexTopic(const std::shared_ptr<Topic>& topic);
    void unindexTopic(const Topic& topic);

    const ISubscriptionDataSource& m_source;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopping;
    std::uint64_t m_fetches;
    std::unordered_map<std::string, std::shared_ptr<Topic>> m_topics;
    std::unordered_map<const WebSocketSubscription*, std::shared_ptr<Entry>> m_entries;
    std::map<ResourceKey, ResourceWatch> m_resources;
    std::deque<std::shared_ptr<Topic>> m_ready;
    std::priority_queue<Timer, std::vector<Timer>, TimerLater> m_timers;
    std::vector<std::thread> m_senders;
};

} // namespace Orvi::Service
