#include "SubscriptionHandling/SubscriptionUpdateText.h"

#include "SubscriptionHandling/SubscriptionMessages.h"
#include "Support/TestWebSocketClient.h"
#include "TestSupport/JsonText.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <string>

using Orvi::Command::WebSocketResponseObject;
using Orvi::Service::SubscriptionMessages;
using Orvi::Service::SubscriptionUpdateText;
using ServiceDB::Test::parseObject;
using ServiceDB::Test::withoutTimestamp;

namespace
{

std::string quoted(const std::string& event)
{
    return SubscriptionMessages::quote(event);
}

} // namespace

TEST(SubscriptionUpdateTextTest, ADataUpdateIsTheBodyWithTypeTimestampAndEventInKeyOrder)
{
    WebSocketResponseObject update;
    update.setData(parseObject(R"({"heating":2,"name":"driver"})"));

    const SubscriptionUpdateText sut(update);

    EXPECT_FALSE(sut.isError());
    EXPECT_EQ(withoutTimestamp(sut.withEvent(quoted("/cabin/seats/driver#1"))),
              R"({"data":{"heating":2,"name":"driver"},"event":"/cabin/seats/driver#1","status":"ok",)"
              R"("timestamp":0,"type":"data"})");
}

TEST(SubscriptionUpdateTextTest, ItIsTheTextThatTheWholeMessageWouldStringifyTo)
{
    WebSocketResponseObject update;
    Poco::JSON::Array::Ptr items = new Poco::JSON::Array;
    items->add(parseObject(R"({"id":"a"})"));
    update.setData(items);
    update.setPaging(parseObject(R"({"limit":1,"total":2})"));

    const SubscriptionUpdateText sut(update);

    const Poco::JSON::Object::Ptr whole = parseObject(sut.withEvent(quoted("/audio/tracks?$limit=1")));
    EXPECT_EQ(sut.withEvent(quoted("/audio/tracks?$limit=1")), ServiceDB::Test::toJson(whole));
    EXPECT_EQ(whole->getValue<std::string>("event"), "/audio/tracks?$limit=1");
}

TEST(SubscriptionUpdateTextTest, AnUpdateWithoutDataIsStillOneObject)
{
    const WebSocketResponseObject update;

    const SubscriptionUpdateText sut(update);

    EXPECT_EQ(withoutTimestamp(sut.withEvent(quoted("/cabin"))),
              R"({"event":"/cabin","status":"ok","timestamp":0,"type":"data"})");
}

TEST(SubscriptionUpdateTextTest, OneTextServesEverySubscriberWithItsOwnEvent)
{
    WebSocketResponseObject update;
    update.setData(parseObject(R"({"on":true})"));

    const SubscriptionUpdateText sut(update);

    const std::string first = sut.withEvent(quoted("/cabin/lamps/l1#a"));
    const std::string second = sut.withEvent(quoted("/cabin/lamps/l1#b"));
    EXPECT_EQ(parseObject(first)->getValue<Poco::Int64>("timestamp"),
              parseObject(second)->getValue<Poco::Int64>("timestamp"));
    EXPECT_EQ(parseObject(second)->getValue<std::string>("event"), "/cabin/lamps/l1#b");
}

TEST(SubscriptionUpdateTextTest, AGoneObjectBecomesAnErrorMessage)
{
    WebSocketResponseObject update;
    update.setData(parseObject(R"({"stale":true})"));
    update.setError(Poco::Net::HTTPResponse::HTTP_GONE, "element has gone");

    const SubscriptionUpdateText sut(update);

    EXPECT_TRUE(sut.isError());
    EXPECT_EQ(sut.errorCode(), 410);
    EXPECT_EQ(sut.withEvent(quoted("/cabin/seats/s1")),
              SubscriptionMessages::error("/cabin/seats/s1", 410, "element has gone"));
}

TEST(SubscriptionUpdateTextTest, AnErrorWrittenWithoutStatusGetsTheKeysOfEveryErrorMessage)
{
    WebSocketResponseObject update;
    update.setErrorCode(503);
    update.setMessage("busy");
    update.setTimestamp();

    const SubscriptionUpdateText sut(update);

    EXPECT_EQ(sut.withEvent(quoted("/x/y")),
              R"({"code":503,"event":"/x/y","message":"busy","status":"error","type":"error"})");
}
