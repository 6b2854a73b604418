#pragma once

#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <Poco/JSON/Object.h>

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>

namespace ServiceDB::Test
{

/// A database for subscription tests: objects held by address ("/cabin/zones/a1") as JSON, and
/// collections made of the objects one level below them. It answers like the real one: an unknown
/// target is cancelled with 404, a deleted object is fetched as 410 "element has gone".
class InMemoryTrigger : public Orvi::Service::SubscriptionTrigger
{
public:
    static const std::string NO_SUCH_TARGET;
    static const std::string ACCESS_DENIED;
    static const std::string ELEMENT_GONE;

    void put(const std::string& address, const std::string& json);
    /// Stores or replaces the object; does not report the change.

    void erase(const std::string& address);

    void denyToken(const std::string& token);
    /// Subscriptions with this authorization are refused with 403.

    void holdFetches();
    /// Makes every fetch wait in the middle, having read the content, until releaseFetches().

    void releaseFetches();

    bool waitForHeldFetch();
    /// Waits (bounded) until a fetch waits in holdFetches(); false on timeout.

    bool fetchData(const Orvi::Service::SubscriptionRequest& request,
                   Orvi::Command::WebSocketResponseObject& response) const override;

    void checkNewSubscription(Orvi::Service::SubscriptionSubscribingEventPayload& payload) override;

    int fetchCount() const { return m_fetches.load(); }

private:
    bool holdsCollection(const std::string& address) const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_held;
    std::map<std::string, Poco::JSON::Object::Ptr> m_objects;
    std::set<std::string> m_deniedTokens;
    bool m_holding = false;
    mutable int m_waiting = 0;
    mutable std::atomic<int> m_fetches{0};
};

} // namespace ServiceDB::Test
