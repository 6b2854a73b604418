#pragma once

#include "Command/HttpRequest.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"
#include "TestSupport/JsonText.h"

#include <Poco/JSON/Object.h>

#include <functional>
#include <string>
#include <vector>

namespace ServiceDB::Test
{

// A subscription trigger that records which subscribers it is told to notify, in order, as lines:
//   changedElement POST fleet.cars <uuid> {"seats":4}
//   changedResourceCollection POST fleet.cars -
// where the last part is the JSON object as it stood at the call, or "-" for none. It sends nothing.
class RecordingSubscriptionTrigger : public Orvi::Service::SubscriptionTrigger
{
public:
    bool fetchData(const Orvi::Service::SubscriptionRequest&,
                   Orvi::Command::WebSocketResponseObject&) const override
    {
        return false;
    }

    void checkNewSubscription(Orvi::Service::SubscriptionSubscribingEventPayload&) override {}

    void changedResourceCollection(Orvi::Command::HttpRequest::RequestType type, const std::string& service,
                                   const std::string& resource, const Poco::JSON::Object* obj) const override
    {
        record("changedResourceCollection " + typeName(type) + " " + service + "." + resource + " " +
               describe(obj));
    }

    void changedElement(Orvi::Command::HttpRequest::RequestType type, const std::string& service,
                        const std::string& resource, const std::string& element,
                        const Poco::JSON::Object* obj) const override
    {
        record("changedElement " + typeName(type) + " " + service + "." + resource + " " + element + " " +
               describe(obj));
    }

    const std::vector<std::string>& lines() const { return m_lines; }

    std::function<void(const std::string&)> onCall;
    // Runs inside each call after it was recorded, so that a test can look at the world at that moment.

private:
    static std::string typeName(Orvi::Command::HttpRequest::RequestType type)
    {
        switch (type)
        {
        case Orvi::Command::HttpRequest::GET:
            return "GET";
        case Orvi::Command::HttpRequest::HEAD:
            return "HEAD";
        case Orvi::Command::HttpRequest::POST:
            return "POST";
        case Orvi::Command::HttpRequest::PUT:
            return "PUT";
        case Orvi::Command::HttpRequest::DELETE:
            return "DELETE";
        default:
            return "UNSUPPORTED";
        }
    }

    static std::string describe(const Poco::JSON::Object* obj)
    {
        return obj == nullptr ? "-" : toJson(Poco::JSON::Object::Ptr(new Poco::JSON::Object(*obj)));
    }

    void record(const std::string& line) const
    {
        m_lines.push_back(line);
        if (onCall)
        {
            onCall(line);
        }
    }

    mutable std::vector<std::string> m_lines;
};

} // namespace ServiceDB::Test
