#pragma once

#include "Command/HttpRequest.h"
#include "Command/UrlPath.h"
#include "SubscriptionHandling/ISubscriptionChangeSink.h"
#include "SubscriptionHandling/ISubscriptionInterface.h"

#include <Poco/JSON/Object.h>

#include <shared_mutex>
#include <string>

namespace Orvi::Service
{

/// The database's side of subscriptions: turns changes into the addresses they touch, for the
/// subscription service to update, and sends one subscription its current content. A subclass says
/// what may be subscribed to and where the content comes from.
class SubscriptionTrigger : public ISubscriptionInterface
{
public:
    SubscriptionTrigger();
    ~SubscriptionTrigger() override;

    SubscriptionTrigger(const SubscriptionTrigger&) = delete;
    SubscriptionTrigger& operator=(const SubscriptionTrigger&) = delete;

    void sendUpdate(SubscriptionObject*& subscription) override;
    /// Fetches the content of the subscription's address and hands it to the subscription; sends
    /// nothing when fetchData() gives false or the pointer is null.

    virtual void byRequest(const Command::HttpRequest& request) const;
    /// Notifies the subscribers of what a POST to this address changed: one object, or objects of a
    /// resource (a creation or a batch).

    virtual void byDeleteRequest(const Command::HttpRequest& request,
                                 const Poco::JSON::Object* deleted) const;
    /// The same for a DELETE; deleted is the object as it was, or null.

    virtual void manualTrigger(const Command::HttpRequest::RequestType& type, const Command::UrlPath& urlPath,
                               const Poco::JSON::Object* obj);
    /// Notifies the subscribers of an address: an object, or the objects of a resource. Other
    /// addresses have no subscribers to tell.

    virtual void changedResourceCollection(Command::HttpRequest::RequestType type, const std::string& service,
                                           const std::string& resource, const Poco::JSON::Object* obj) const;
    /// The collection of a resource changed: an object came or went.

    virtual void changedElement(Command::HttpRequest::RequestType type, const std::string& service,
                                const std::string& resource, const std::string& element,
                                const Poco::JSON::Object* obj) const;
    /// One object changed or went; its subscribers and those of its collection hear of it.

    void setChangeSink(ISubscriptionChangeSink* sink);
    /// The subscription service that hears of changes; null detaches. Not owned. Blocks until no
    /// change is being reported to the previous one.

    bool hasChangeSink() const;

private:
    void notify(ISubscriptionChangeSink::Scope scope, const std::string& service, const std::string& resource,
                const std::string& element) const;
    void notifyAddress(const Command::UrlPath& urlPath) const;

    mutable std::shared_mutex m_sinkMutex;
    ISubscriptionChangeSink* m_sink = nullptr;
};

} // namespace Orvi::Service
