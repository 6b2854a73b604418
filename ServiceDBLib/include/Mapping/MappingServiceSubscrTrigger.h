#pragma once

#include "Command/UrlPath.h"
#include "Command/WebSocketResponseObject.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Message/MessageSync.h"
#include "SubscriptionHandling/SubscriptionRequest.h"
#include "SubscriptionHandling/SubscriptionSubscribingEventPayload.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

namespace Orvi::Mapping
{

/// Answers the subscription service from the data cache: whether an address may be subscribed to, and
/// what it holds now. The cache belongs to the worker thread, so a question from another thread travels
/// through the worker queue and its caller waits; on the worker itself it is answered at once.
class MappingServiceSubscrTrigger : public Service::SubscriptionTrigger
{
public:
    MappingServiceSubscrTrigger(Util::MessageSync& messageSync, ::Orvi::JSONDataCache::JSONDataCache* cache);
    /// Both are borrowed and must outlive the trigger; the cache may be null.

    ~MappingServiceSubscrTrigger() override;

    bool fetchData(const Service::SubscriptionRequest& request,
                   Command::WebSocketResponseObject& response) const override;
    /// Fills the response with the current content of the subscribed address. A deleted object is an
    /// update too: true with error 410. False without cache, when the queue refuses, or on another
    /// failure of the query.

    void checkNewSubscription(Service::SubscriptionSubscribingEventPayload& payload) override;
    /// Cancels a subscription to anything but an existing service, resource or object.

    virtual ::Orvi::JSONDataCache::JSONDataCache* getDataCache() const;
    /// The cache that the questions go to; a subclass may supply another.

    static bool fetchDataSync(::Orvi::JSONDataCache::JSONDataCache& cache,
                              const Service::SubscriptionRequest& request,
                              Command::WebSocketResponseObject& response);
    /// fetchData on the worker thread.

    static bool verifySubscriptionDestSync(::Orvi::JSONDataCache::JSONDataCache& cache,
                                           const Command::UrlPath& urlPath);
    /// True when the address names an existing service, resource or object; runs on the worker thread.

    bool verifySubscriptionDest(::Orvi::JSONDataCache::JSONDataCache& cache,
                                const Command::UrlPath& urlPath) const;
    /// verifySubscriptionDestSync from any thread; false also when the queue refuses.

private:
    Util::MessageSync& m_messageSync;
    ::Orvi::JSONDataCache::JSONDataCache* m_cache;
};

} // namespace Orvi::Mapping
