#include "SubscriptionHandling/SubscriptionTrigger.h"

#include "SubscriptionHandling/SubscriptionObject.h"

#include "TestSupport/FakeServerRequest.h"
#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Orvi;
using Orvi::Service::ISubscriptionChangeSink;

namespace
{

class RecordingSink : public ISubscriptionChangeSink
{
public:
    void addressChanged(Scope scope, const std::string& service, const std::string& resource,
                        const std::string& element) override
    {
        const char* name = scope == Scope::Element      ? "element"
                           : scope == Scope::Collection ? "collection"
                                                        : "resource";
        calls.push_back(std::string(name) + " " + service + "/" + resource + "/" + element);
    }

    std::vector<std::string> calls;
};

class FixedTrigger : public Service::SubscriptionTrigger
{
public:
    bool fetchData(const Service::SubscriptionRequest& request,
                   Command::WebSocketResponseObject& response) const override
    {
        ++fetches;
        if (!answer)
        {
            return false;
        }
        Poco::JSON::Object::Ptr data = new Poco::JSON::Object;
        data->set("address", request.getUri().getPath());
        response.setData(data);
        return true;
    }

    void checkNewSubscription(Service::SubscriptionSubscribingEventPayload&) override {}

    bool answer = true;
    mutable int fetches = 0;
};

class RecordingSubscription : public Service::SubscriptionObject
{
public:
    RecordingSubscription()
        : m_request(R"({"type":"subscribe","event":"/cabin/zones/a1"})",
                    Poco::Net::SocketAddress("127.0.0.1", 4000), Poco::Net::SocketAddress("127.0.0.1", 50000))
    {
    }

    const Service::SubscriptionRequest& request() const override { return m_request; }

    void send(Command::WebSocketResponseObject& update) override
    {
        sent.push_back(ServiceDB::Test::toJson(update.JSONObject));
    }

    std::vector<std::string> sent;

private:
    Service::SubscriptionRequest m_request;
};

void triggerByRequest(const Service::SubscriptionTrigger& trigger, const std::string& method,
                      const std::string& address)
{
    ServiceDB::Test::FakeServerRequest serverRequest(method, address);
    const Command::HttpRequest request(serverRequest);
    if (method == "DELETE")
    {
        trigger.byDeleteRequest(request, nullptr);
    }
    else
    {
        trigger.byRequest(request);
    }
}

} // namespace

TEST(SubscriptionTriggerTest, ChangedElementReportsTheObjectAddress)
{
    RecordingSink sink;
    FixedTrigger sut;
    sut.setChangeSink(&sink);

    sut.changedElement(Command::HttpRequest::POST, "cabin", "zones", "a1", nullptr);

    EXPECT_EQ(sink.calls, std::vector<std::string>{"element cabin/zones/a1"});
}

TEST(SubscriptionTriggerTest, ChangedResourceCollectionReportsTheCollection)
{
    RecordingSink sink;
    FixedTrigger sut;
    sut.setChangeSink(&sink);

    sut.changedResourceCollection(Command::HttpRequest::POST, "audio", "playlists", nullptr);

    EXPECT_EQ(sink.calls, std::vector<std::string>{"collection audio/playlists/"});
}

TEST(SubscriptionTriggerTest, ARequestOnAnObjectReportsTheObject)
{
    RecordingSink sink;
    FixedTrigger sut;
    sut.setChangeSink(&sink);

    triggerByRequest(sut, "POST", "/cabin/zones/a1?$fields=setpoint");
    triggerByRequest(sut, "DELETE", "/audio/playlists/p7");

    EXPECT_EQ(sink.calls, (std::vector<std::string>{"element cabin/zones/a1", "element audio/playlists/p7"}));
}

TEST(SubscriptionTriggerTest, ARequestOnAResourceReportsAllItsObjects)
{
    RecordingSink sink;
    FixedTrigger sut;
    sut.setChangeSink(&sink);

    triggerByRequest(sut, "POST", "/cabin/zones?name=front");
    sut.manualTrigger(Command::HttpRequest::DELETE, Command::UrlPath(Poco::URI("/audio/playlists")), nullptr);

    EXPECT_EQ(sink.calls, (std::vector<std::string>{"resource cabin/zones/", "resource audio/playlists/"}));
}

TEST(SubscriptionTriggerTest, AddressesWithoutSubscribersAreNotReported)
{
    RecordingSink sink;
    FixedTrigger sut;
    sut.setChangeSink(&sink);

    sut.manualTrigger(Command::HttpRequest::POST, Command::UrlPath(Poco::URI("/cabin")), nullptr);
    sut.manualTrigger(Command::HttpRequest::POST, Command::UrlPath(Poco::URI("/cabin/$spec")), nullptr);
    triggerByRequest(sut, "POST", "/");

    EXPECT_TRUE(sink.calls.empty());
}

TEST(SubscriptionTriggerTest, WithoutASinkChangesGoNowhere)
{
    RecordingSink sink;
    FixedTrigger sut;
    sut.setChangeSink(&sink);
    sut.setChangeSink(nullptr);

    sut.changedElement(Command::HttpRequest::POST, "cabin", "zones", "a1", nullptr);

    EXPECT_TRUE(sink.calls.empty());
    EXPECT_FALSE(sut.hasChangeSink());
}

TEST(SubscriptionTriggerTest, SendUpdateHandsTheFetchedContentToTheSubscription)
{
    FixedTrigger sut;
    RecordingSubscription subscription;
    Service::SubscriptionObject* pointer = &subscription;

    sut.sendUpdate(pointer);

    EXPECT_EQ(subscription.sent,
              std::vector<std::string>{R"({"data":{"address":"/cabin/zones/a1"},"status":"ok"})"});
}

TEST(SubscriptionTriggerTest, SendUpdateSendsNothingWhenThereIsNoData)
{
    FixedTrigger sut;
    sut.answer = false;
    RecordingSubscription subscription;
    Service::SubscriptionObject* pointer = &subscription;

    sut.sendUpdate(pointer);

    EXPECT_TRUE(subscription.sent.empty());
    EXPECT_EQ(sut.fetches, 1);
}

TEST(SubscriptionTriggerTest, SendUpdateOfANullSubscriptionFetchesNothing)
{
    FixedTrigger sut;
    Service::SubscriptionObject* pointer = nullptr;

    sut.sendUpdate(pointer);

    EXPECT_EQ(sut.fetches, 0);
}
