#include "SubscriptionHandling/SubscriptionDispatcher.h"

#include "Logging/LogStream.h"
#include "SubscriptionHandling/SubscriptionUpdateText.h"
#include "SubscriptionHandling/WebSocketSubscription.h"

#include <Poco/Exception.h>

#include <algorithm>
#include <exception>

namespace Orvi::Service
{

namespace
{

template <class T>
void eraseValue(std::vector<T>& values, const T& value)
{
    values.erase(std::remove(values.begin(), values.end(), value), values.end());
}

} // namespace

SubscriptionDispatcher::SubscriptionDispatcher(const ISubscriptionDataSource& source,
                                               std::size_t senderThreads)
    : m_source(source)
    , m_stopping(false)
    , m_fetches(0)
{
    m_senders.reserve(senderThreads);
    for (std::size_t i = 0; i < senderThreads; ++i)
    {
        m_senders.emplace_back(&SubscriptionDispatcher::runSender, this);
    }
}

SubscriptionDispatcher::~SubscriptionDispatcher()
{
    stop();
}

void SubscriptionDispatcher::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    for (std::thread& sender : m_senders)
    {
        if (sender.joinable())
        {
            sender.join();
        }
    }
}

void SubscriptionDispatcher::add(const std::shared_ptr<WebSocketSubscription>& subscription)
{
    const Clock::time_point now = Clock::now();
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::shared_ptr<Topic>& topic = m_topics[subscription->contentKey()];
    if (!topic)
    {
        const Command::UrlPath& urlPath = subscription->request().getUrlPath();
        topic = std::make_shared<Topic>();
        topic->key = subscription->contentKey();
        topic->characteristic = urlPath.getCharacteristic();
        topic->service = urlPath.getService();
        topic->resource = urlPath.getResource();
        topic->element = urlPath.getElement();
        indexTopic(topic);
    }

    auto entry = std::make_shared<Entry>();
    entry->subscription = subscription;
    entry->topic = topic;
    entry->due = true;
    if (subscription->interval() > 0)
    {
        entry->nextInterval = now + std::chrono::milliseconds(subscription->interval());
        pushTimer(entry->nextInterval, entry, true);
    }
    topic->entries.push_back(entry);
    m_entries[subscription.get()] = entry;
    queueTopic(topic);
}

void SubscriptionDispatcher::remove(const WebSocketSubscription& subscription)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_entries.find(&subscription);
    if (found != m_entries.end())
    {
        // A copy: unregister() erases the map's own.
        const std::shared_ptr<Entry> entry = found->second;
        unregister(entry);
    }
}

void SubscriptionDispatcher::addressChanged(ISubscriptionChangeSink::Scope scope, const std::string& service,
                                            const std::string& resource, const std::string& element)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_resources.find(ResourceKey(service, resource));
    if (found == m_resources.end())
    {
        return;
    }
    ResourceWatch& watch = found->second;
    // Every scope touches the collection; an element change its own object, a resource change all.
    for (const std::shared_ptr<Topic>& topic : watch.collections)
    {
        markTopicChanged(topic);
    }
    if (scope == ISubscriptionChangeSink::Scope::Element)
    {
        const auto objects = watch.elements.find(element);
        if (objects != watch.elements.end())
        {
            for (const std::shared_ptr<Topic>& topic : objects->second)
            {
                markTopicChanged(topic);
            }
        }
    }
    else if (scope == ISubscriptionChangeSink::Scope::Resource)
    {
        for (const auto& objects : watch.elements)
        {
            for (const std::shared_ptr<Topic>& topic : objects.second)
            {
                markTopicChanged(topic);
            }
        }
    }
}

std::size_t SubscriptionDispatcher::subscriptionCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_entries.size();
}

std::uint64_t SubscriptionDispatcher::fetchCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_fetches;
}

void SubscriptionDispatcher::runSender()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stopping)
    {
        fireTimers(Clock::now());
        if (!m_ready.empty())
        {
            const std::shared_ptr<Topic> topic = std::move(m_ready.front());
            m_ready.pop_front();
            topic->queued = false;
            serveTopic(lock, topic);
            continue;
        }
        if (m_timers.empty())
        {
            m_wake.wait(lock);
        }
        else
        {
            m_wake.wait_until(lock, m_timers.top().at);
        }
    }
}

void SubscriptionDispatcher::serveTopic(std::unique_lock<std::mutex>& lock,
                                        const std::shared_ptr<Topic>& topic)
{
    const Clock::time_point now = Clock::now();
    if (topic->changed)
    {
        topic->changed = false;
        for (const std::shared_ptr<Entry>& entry : topic->entries)
        {
            markChanged(*entry, entry, now);
        }
    }
    std::vector<std::shared_ptr<Entry>> targets;
    for (const std::shared_ptr<Entry>& entry : topic->entries)
    {
        if (entry->due)
        {
            entry->due = false;
            targets.push_back(entry);
        }
    }
    if (targets.empty())
    {
        return;
    }

    // One fetch at a time per topic keeps each subscriber's updates in the order of the content.
    topic->busy = true;
    ++m_fetches;
    lock.unlock();
    std::vector<std::shared_ptr<Entry>> ended;
    fetchAndDeliver(topic->key, targets, ended);
    const Clock::time_point delivered = Clock::now();
    lock.lock();

    for (const std::shared_ptr<Entry>& entry : targets)
    {
        entry->changeDeferred = false;
        entry->nextChangeAllowed = delivered + std::chrono::milliseconds(entry->subscription->updateLimit());
    }
    for (const std::shared_ptr<Entry>& entry : ended)
    {
        if (entry->registered)
        {
            unregister(entry);
        }
    }
    topic->busy = false;
    const bool moreDue = std::any_of(topic->entries.begin(), topic->entries.end(),
                                     [](const std::shared_ptr<Entry>& entry) { return entry->due; });
    if (topic->changed || moreDue)
    {
        queueTopic(topic);
    }
}

void SubscriptionDispatcher::fetchAndDeliver(const std::string& key,
                                             const std::vector<std::shared_ptr<Entry>>& targets,
                                             std::vector<std::shared_ptr<Entry>>& out_ended)
{
    // A failing source or subscriber must not end the sender thread: it serves everyone else too.
    try
    {
        Command::WebSocketResponseObject response;
        if (!m_source.fetchData(targets.front()->subscription->request(), response))
        {
            LOG_DEBUG("No content for the subscribers of " << key);
            return;
        }
        const SubscriptionUpdateText update(response);
        for (const std::shared_ptr<Entry>& entry : targets)
        {
            if (entry->subscription->deliver(update))
            {
                out_ended.push_back(entry);
            }
        }
    }
    catch (const Poco::Exception& e)
    {
        LOG_ERROR("Update of the subscribers of " << key << " failed: " << e.displayText());
    }
    catch (const std::exception& e)
    {
        LOG_ERROR("Update of the subscribers of " << key << " failed: " << e.what());
    }
}

void SubscriptionDispatcher::fireTimers(Clock::time_point now)
{
    while (!m_timers.empty() && m_timers.top().at <= now)
    {
        const Timer timer = m_timers.top();
        m_timers.pop();
        const std::shared_ptr<Entry> entry = timer.entry.lock();
        if (!entry || !entry->registered)
        {
            continue;
        }
        if (timer.interval)
        {
            // A timer of an interval that has since moved on is stale.
            if (timer.at != entry->nextInterval)
            {
                continue;
            }
            const std::chrono::milliseconds interval(entry->subscription->interval());
            entry->nextInterval += interval;
            if (entry->nextInterval <= now)
            {
                // Ticks missed under load are skipped rather than sent in a burst.
                entry->nextInterval = now + interval;
            }
            pushTimer(entry->nextInterval, entry, true);
        }
        else
        {
            // Cleared when an update went out meanwhile: that one carried the change already.
            if (!entry->changeDeferred)
            {
                continue;
            }
            entry->changeDeferred = false;
        }
        entry->due = true;
        if (const std::shared_ptr<Topic> topic = entry->topic.lock())
        {
            queueTopic(topic);
        }
    }
}

void SubscriptionDispatcher::markChanged(Entry& entry, const std::shared_ptr<Entry>& shared,
                                         Clock::time_point now)
{
    if (entry.subscription->updateLimit() == 0 || now >= entry.nextChangeAllowed)
    {
        entry.due = true;
    }
    else if (!entry.changeDeferred)
    {
        // Further changes inside the limit merge into this one update, sent when the limit has passed.
        entry.changeDeferred = true;
        pushTimer(entry.nextChangeAllowed, shared, false);
    }
}

void SubscriptionDispatcher::markTopicChanged(const std::shared_ptr<Topic>& topic)
{
    topic->changed = true;
    queueTopic(topic);
}

void SubscriptionDispatcher::queueTopic(const std::shared_ptr<Topic>& topic)
{
    // A busy topic is queued again by its sender once the fetch in progress is delivered.
    if (topic->queued || topic->busy || !topic->registered)
    {
        return;
    }
    topic->queued = true;
    m_ready.push_back(topic);
    m_wake.notify_one();
}

void SubscriptionDispatcher::pushTimer(Clock::time_point at, const std::shared_ptr<Entry>& entry,
                                       bool interval)
{
    const bool earliest = m_timers.empty() || at < m_timers.top().at;
    m_timers.push(Timer{at, entry, interval});
    if (earliest)
    {
        // A waiting sender may sleep towards a later deadline.
        m_wake.notify_one();
    }
}

void SubscriptionDispatcher::unregister(const std::shared_ptr<Entry>& entry)
{
    entry->registered = false;
    m_entries.erase(entry->subscription.get());
    const std::shared_ptr<Topic> topic = entry->topic.lock();
    if (!topic)
    {
        return;
    }
    eraseValue(topic->entries, entry);
    if (topic->entries.empty())
    {
        topic->registered = false;
        unindexTopic(*topic);
        m_topics.erase(topic->key);
    }
}

void SubscriptionDispatcher::indexTopic(const std::shared_ptr<Topic>& topic)
{
    // Other addresses (a whole service) change with no report; they get first and periodic updates.
    if (topic->characteristic == Command::UrlPath::SERVICE_RESOURCE)
    {
        m_resources[ResourceKey(topic->service, topic->resource)].collections.push_back(topic);
    }
    else if (topic->characteristic == Command::UrlPath::SERVICE_RESOURCE_OBJECT)
    {
        m_resources[ResourceKey(topic->service, topic->resource)].elements[topic->element].push_back(topic);
    }
}

void SubscriptionDispatcher::unindexTopic(const Topic& topic)
{
    const auto found = m_resources.find(ResourceKey(topic.service, topic.resource));
    if (found == m_resources.end())
    {
        return;
    }
    ResourceWatch& watch = found->second;
    const auto matches = [&topic](const std::shared_ptr<Topic>& candidate)
    { return candidate.get() == &topic; };
    watch.collections.erase(std::remove_if(watch.collections.begin(), watch.collections.end(), matches),
                            watch.collections.end());
    const auto objects = watch.elements.find(topic.element);
    if (objects != watch.elements.end())
    {
        objects->second.erase(std::remove_if(objects->second.begin(), objects->second.end(), matches),
                              objects->second.end());
        if (objects->second.empty())
        {
            watch.elements.erase(objects);
        }
    }
    if (watch.collections.empty() && watch.elements.empty())
    {
        m_resources.erase(found);
    }
}

} // namespace Orvi::Service
