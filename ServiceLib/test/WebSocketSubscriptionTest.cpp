#include "SubscriptionHandling/WebSocketSubscription.h"

#include "SubscriptionHandling/ISubscriberChannel.h"
#include "Support/InMemoryTrigger.h"
#include "Support/TestWebSocketClient.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using Orvi::Service::SubscriptionRequest;
using Orvi::Service::WebSocketSubscription;
using ServiceDB::Test::withoutTimestamp;

namespace
{

class RecordingChannel : public Orvi::Service::ISubscriberChannel
{
public:
    void post(const std::string& text) override { texts.push_back(text); }

    bool postUpdate(WebSocketSubscription& subscription, const std::string& text, bool last) override
    {
        if (!subscription.takesUpdates())
        {
            return false;
        }
        if (last)
        {
            subscription.stopUpdates();
        }
        texts.push_back(withoutTimestamp(text));
        return true;
    }

    void postEnd(WebSocketSubscription& subscription, const std::string& text) override
    {
        subscription.stopUpdates();
        texts.push_back(text);
    }

    std::vector<std::string> texts;
};

SubscriptionRequest request(const std::string& message)
{
    return SubscriptionRequest(message, Poco::Net::SocketAddress("127.0.0.1", 4711),
                               Poco::Net::SocketAddress("127.0.0.1", 50001));
}

class WebSocketSubscriptionTest : public ::testing::Test
{
protected:
    WebSocketSubscriptionTest() { trigger.put("/cabin/seats/driver", R"({"heating":2})"); }

    ServiceDB::Test::InMemoryTrigger trigger;
    std::shared_ptr<RecordingChannel> channel = std::make_shared<RecordingChannel>();
};

} // namespace

TEST_F(WebSocketSubscriptionTest, AnUpdateSentByTheTriggerReachesTheChannelWithTheEventAsWritten)
{
    WebSocketSubscription sut(request(R"({"type":"subscribe","event":"/cabin/seats/driver#x"})"),
                              "/cabin/seats/driver#x", channel);
    Orvi::Service::SubscriptionObject* object = &sut;

    trigger.sendUpdate(object);

    EXPECT_EQ(channel->texts,
              std::vector<std::string>{R"({"data":{"heating":2},"event":"/cabin/seats/driver#x",)"
                                       R"("status":"ok","timestamp":0,"type":"data"})"});
}

TEST_F(WebSocketSubscriptionTest, AGoneObjectEndsTheSubscriptionAndTellsTheEndHandler)
{
    WebSocketSubscription sut(request(R"({"type":"subscribe","event":"/cabin/seats/rear"})"),
                              "/cabin/seats/rear", channel);
    int ended = 0;
    sut.setEndHandler([&ended](WebSocketSubscription&) { ++ended; });
    Orvi::Service::SubscriptionObject* object = &sut;

    trigger.sendUpdate(object);
    trigger.sendUpdate(object);

    EXPECT_EQ(channel->texts,
              std::vector<std::string>{R"({"code":410,"event":"/cabin/seats/rear",)"
                                       R"("message":"element has gone","status":"error","type":"error"})"});
    EXPECT_FALSE(sut.takesUpdates());
    EXPECT_EQ(ended, 1);
}

TEST_F(WebSocketSubscriptionTest, AnotherErrorPassesWithoutEndingTheSubscription)
{
    WebSocketSubscription sut(request(R"({"type":"subscribe","event":"/cabin/seats/driver"})"),
                              "/cabin/seats/driver", channel);
    Orvi::Command::WebSocketResponseObject busy;
    busy.setError(Poco::Net::HTTPResponse::HTTP_SERVICE_UNAVAILABLE, "busy");

    sut.send(busy);

    EXPECT_EQ(channel->texts.size(), 1U);
    EXPECT_TRUE(sut.takesUpdates());
}

TEST_F(WebSocketSubscriptionTest, TheContentKeyIsThePortAndTheAddressWithoutTag)
{
    const WebSocketSubscription sut(
        request(R"({"type":"subscribe","event":"/cabin/seats?$fields=heating#t"})"),
        "/cabin/seats?$fields=heating#t", channel);

    EXPECT_EQ(sut.contentKey(), "4711 /cabin/seats?$fields=heating");
    EXPECT_EQ(sut.event(), "/cabin/seats?$fields=heating#t");
}

TEST_F(WebSocketSubscriptionTest, IntervalAndUpdateLimitAreZeroUnlessAskedFor)
{
    const WebSocketSubscription plain(request(R"({"type":"subscribe","event":"/a/b"})"), "/a/b", channel);
    const WebSocketSubscription timed(
        request(R"({"type":"subscribe","event":"/a/b","interval":1000,"updatelimit":250})"), "/a/b", channel);

    EXPECT_EQ(plain.interval(), 0);
    EXPECT_EQ(plain.updateLimit(), 0);
    EXPECT_EQ(timed.interval(), 1000);
    EXPECT_EQ(timed.updateLimit(), 250);
}

TEST_F(WebSocketSubscriptionTest, TheQuotedEventIsAJsonString)
{
    const WebSocketSubscription sut(request(R"({"type":"subscribe","event":"/a/b#\"q\""})"), "/a/b#\"q\"",
                                    channel);

    EXPECT_EQ(sut.quotedEvent(), R"("/a/b#\"q\"")");
}
