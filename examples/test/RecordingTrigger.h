#pragma once

#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <mutex>
#include <string>
#include <vector>

namespace ServiceDB::Example::Test
{

/// A trigger that notes each change it hears of, in order: "element service/resource/uuid",
/// "collection service/resource", "request METHOD address" or "delete address"; it has no subscribers
/// to answer.
class RecordingTrigger : public Orvi::Service::SubscriptionTrigger
{
public:
    bool fetchData(const Orvi::Service::SubscriptionRequest&,
                   Orvi::Command::WebSocketResponseObject&) const override
    {
        return false;
    }

    void checkNewSubscription(Orvi::Service::SubscriptionSubscribingEventPayload&) override {}

    void byRequest(const Orvi::Command::HttpRequest& request) const override
    {
        record("request " + request.getHttpRequest().getMethod() + " " + request.getUri().toString());
    }

    void byDeleteRequest(const Orvi::Command::HttpRequest& request, const Poco::JSON::Object*) const override
    {
        record("delete " + request.getUri().toString());
    }

    void changedResourceCollection(Orvi::Command::HttpRequest::RequestType, const std::string& service,
                                   const std::string& resource, const Poco::JSON::Object*) const override
    {
        record("collection " + service + "/" + resource);
    }

    void changedElement(Orvi::Command::HttpRequest::RequestType, const std::string& service,
                        const std::string& resource, const std::string& element,
                        const Poco::JSON::Object*) const override
    {
        record("element " + service + "/" + resource + "/" + element);
    }

    std::vector<std::string> changes() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_changes;
    }

    void clear()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_changes.clear();
    }

private:
    void record(const std::string& change) const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_changes.push_back(change);
    }

    mutable std::mutex m_mutex;
    mutable std::vector<std::string> m_changes;
};

} // namespace ServiceDB::Example::Test
