#include "SubscriptionHandling/SubscriptionMessages.h"

#include "Command/WebSocketResponseObject.h"
#include "TestSupport/JsonText.h"

#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Orvi::Service::SubscriptionMessages;

namespace
{

std::vector<std::string> keysOf(const std::string& text)
{
    Poco::JSON::Parser parser;
    const Poco::JSON::Object::Ptr object = parser.parse(text).extract<Poco::JSON::Object::Ptr>();
    std::vector<std::string> keys;
    object->getNames(keys);
    return keys;
}

} // namespace

TEST(SubscriptionMessagesTest, AnAnswerNamesItsTypeAndTheEventAsWritten)
{
    const std::string sut = SubscriptionMessages::answer("subscribe", "/cabin/seats?$fields=heating#seat 1");

    EXPECT_EQ(sut, R"({"event":"/cabin/seats?$fields=heating#seat 1","status":"ok","type":"subscribe"})");
}

TEST(SubscriptionMessagesTest, AnErrorCarriesCodeMessageAndTheErrorStatus)
{
    const std::string sut =
        SubscriptionMessages::error("/cabin/doors/d1", 404, "No such target for this port.");

    EXPECT_EQ(sut, R"({"code":404,"event":"/cabin/doors/d1","message":"No such target for this port.",)"
                   R"("status":"error","type":"error"})");
    EXPECT_EQ(SubscriptionMessages::ERROR_STATUS, "error");
}

TEST(SubscriptionMessagesTest, AnErrorHasTheKeysOfAnErrorThatTheDataSourceWrites)
{
    Orvi::Command::WebSocketResponseObject fromSource;
    fromSource.setError(Poco::Net::HTTPResponse::HTTP_GONE, "element has gone");
    fromSource.setType(SubscriptionMessages::TYPE_ERROR);
    fromSource.setEvent("/cabin/seats/s1");

    const std::string sut = SubscriptionMessages::error("/cabin/seats/s1", 410, "element has gone");

    EXPECT_EQ(sut, ServiceDB::Test::toJson(fromSource.JSONObject));
    EXPECT_EQ(keysOf(sut), (std::vector<std::string>{"code", "event", "message", "status", "type"}));
}

TEST(SubscriptionMessagesTest, AnErrorAboutAMessageWithoutEventHasAnEmptyEvent)
{
    const std::string sut = SubscriptionMessages::error(SubscriptionMessages::NO_EVENT, 400,
                                                        SubscriptionMessages::TEXT_NOT_AN_OBJECT);

    EXPECT_EQ(
        sut,
        R"({"code":400,"event":"","message":"message is not a JSON object","status":"error","type":"error"})");
}

TEST(SubscriptionMessagesTest, QuotingEscapesWhatJsonRequiresAndKeepsSlashes)
{
    const std::string sut = SubscriptionMessages::quote("/a/b#say \"hi\"\\\n");

    EXPECT_EQ(sut, R"("/a/b#say \"hi\"\\\n")");
}

TEST(SubscriptionMessagesTest, TheFixedTextsReadAsTheyAreSent)
{
    EXPECT_EQ(SubscriptionMessages::TEXT_UNKNOWN_TYPE, "unknown message type");
    EXPECT_EQ(SubscriptionMessages::TEXT_BINARY_FRAME, "binary frames are not supported");
    EXPECT_EQ(SubscriptionMessages::TEXT_ALREADY_SUBSCRIBED, "already subscribed to this event");
    EXPECT_EQ(SubscriptionMessages::TEXT_NOT_SUBSCRIBED, "not subscribed to this event");
    EXPECT_EQ(SubscriptionMessages::TEXT_TOO_MANY_SUBSCRIPTIONS,
              "maximum number of subscriptions on this connection reached");
    EXPECT_EQ(SubscriptionMessages::TEXT_CHECK_FAILED, "subscription could not be checked");
}
