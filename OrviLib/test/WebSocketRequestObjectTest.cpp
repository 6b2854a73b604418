#include "Command/WebSocketRequestObject.h"

#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

using Orvi::Command::UrlPath;
using Orvi::Command::WebSocketRequestObject;

namespace
{

const std::string FULL_SUBSCRIPTION =
    R"({"type":"subscribe","event":"/s/r?$q=door#tag1","interval":1000,"updatelimit":250,)"
    R"("authorization":"token-1","autosubscribe":true})";

std::string withEvent(const std::string& event)
{
    return R"({"type":"subscribe","event":")" + event + R"("})";
}

std::string withField(const std::string& field, const std::string& jsonValue)
{
    return R"({"type":"subscribe","event":"/s/r",")" + field + R"(":)" + jsonValue + "}";
}

// What every result must satisfy, valid or not.
::testing::AssertionResult isConsistent(const WebSocketRequestObject& sut)
{
    if (!sut.isValid())
    {
        return ::testing::AssertionSuccess();
    }
    if (sut.getData().isNull())
    {
        return ::testing::AssertionFailure() << "valid without message";
    }
    if (sut.getData()->getValue<std::string>(WebSocketRequestObject::FIELD_TYPE) != sut.getType())
    {
        return ::testing::AssertionFailure() << "type differs from the message";
    }
    if (Poco::URI(sut.getData()->getValue<std::string>(WebSocketRequestObject::FIELD_EVENT)) !=
        sut.getEvent())
    {
        return ::testing::AssertionFailure() << "event differs from the message";
    }
    if (sut.getUri() != sut.getEvent())
    {
        return ::testing::AssertionFailure() << "address differs from the event";
    }
    if ((!sut.getInterval().isNull() && sut.getInterval().value() < 0) ||
        (!sut.getUpdateLimit().isNull() && sut.getUpdateLimit().value() < 0))
    {
        return ::testing::AssertionFailure() << "negative time";
    }
    return ::testing::AssertionSuccess();
}

} // namespace

TEST(WebSocketRequestObject, HasTheAgreedConstantTexts)
{
    EXPECT_EQ(WebSocketRequestObject::TYPE_SUBSCRIBE, "subscribe");
    EXPECT_EQ(WebSocketRequestObject::TYPE_UNSUBSCRIBE, "unsubscribe");
    EXPECT_EQ(WebSocketRequestObject::TYPE_DATA, "data");
    EXPECT_EQ(WebSocketRequestObject::FIELD_TYPE, "type");
    EXPECT_EQ(WebSocketRequestObject::FIELD_EVENT, "event");
    EXPECT_EQ(WebSocketRequestObject::FIELD_SUBSCRIPTION_INTERVAL, "interval");
    EXPECT_EQ(WebSocketRequestObject::FIELD_SUBSCRIPTION_UPDATE_LIMIT, "updatelimit");
    EXPECT_EQ(WebSocketRequestObject::FIELD_AUTHORIZATION, "authorization");
    EXPECT_EQ(WebSocketRequestObject::FIELD_AUTOSUBSCRIBE, "autosubscribe");
    EXPECT_EQ(WebSocketRequestObject::FIELD_DATA, "data");
    EXPECT_EQ(WebSocketRequestObject::FIELD_ERROR, "error");
}

TEST(WebSocketRequestObject, ReadsAFullSubscription)
{
    const WebSocketRequestObject sut(FULL_SUBSCRIPTION);

    ASSERT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getType(), "subscribe");
    EXPECT_EQ(sut.getEvent().toString(), "/s/r?$q=door#tag1");
    ASSERT_FALSE(sut.getInterval().isNull());
    EXPECT_EQ(sut.getInterval().value(), 1000);
    ASSERT_FALSE(sut.getUpdateLimit().isNull());
    EXPECT_EQ(sut.getUpdateLimit().value(), 250);
    EXPECT_EQ(sut.getAuthorization(), "token-1");
    EXPECT_TRUE(sut.getAutosubscribe());
    ASSERT_FALSE(sut.getData().isNull());
    EXPECT_EQ(sut.getData()->getValue<std::string>("authorization"), "token-1");
}

TEST(WebSocketRequestObject, KeepsTheTagOfTheEvent)
{
    const WebSocketRequestObject sut(withEvent("/s/r/e#my-tag"));

    ASSERT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getEvent().getFragment(), "my-tag");
    EXPECT_EQ(sut.getEvent().toString(), "/s/r/e#my-tag");
    EXPECT_EQ(sut.getUrlPath().getCharacteristic(), UrlPath::SERVICE_RESOURCE_OBJECT);
    EXPECT_EQ(sut.getUrlPath().getElement(), "e");
}

TEST(WebSocketRequestObject, ReadsTheCriteriaOfTheEvent)
{
    const WebSocketRequestObject sut(FULL_SUBSCRIPTION);

    EXPECT_TRUE(sut.hasFreetextCriteria());
    EXPECT_FALSE(sut.hasAttributeCriteria());
    EXPECT_EQ(sut.getUrlPath().getCharacteristic(), UrlPath::SERVICE_RESOURCE);
}

TEST(WebSocketRequestObject, LeavesOptionalFieldsUnset)
{
    const WebSocketRequestObject sut(R"({"type":"unsubscribe","event":"/s/r"})");

    ASSERT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getType(), "unsubscribe");
    EXPECT_TRUE(sut.getInterval().isNull());
    EXPECT_TRUE(sut.getUpdateLimit().isNull());
    EXPECT_EQ(sut.getAuthorization(), "");
    EXPECT_FALSE(sut.getAutosubscribe());
    EXPECT_FALSE(sut.hasAnyCriteria());
}

TEST(WebSocketRequestObject, AcceptsTheLimitsOfTheTimes)
{
    const WebSocketRequestObject sut(R"({"type":"subscribe","event":"/s","interval":0,)"
                                     R"("updatelimit":9223372036854775807})");

    ASSERT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getInterval().value(), 0);
    EXPECT_EQ(sut.getUpdateLimit().value(), 9223372036854775807LL);
}

TEST(WebSocketRequestObject, AcceptsAnyTypeWord)
{
    const WebSocketRequestObject sut(R"({"type":"ping","event":"/"})");

    EXPECT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getType(), "ping");
}

TEST(WebSocketRequestObject, LeavesTheKindOfTheEventToTheCaller)
{
    const WebSocketRequestObject sut(withEvent("/s/r/e/x"));

    EXPECT_TRUE(sut.isValid());
    EXPECT_FALSE(sut.getUrlPath().isValid());
}

TEST(WebSocketRequestObject, IgnoresUnknownFields)
{
    const WebSocketRequestObject sut(withField("extra", R"({"a":[1,2]})"));

    EXPECT_TRUE(sut.isValid());
}

TEST(WebSocketRequestObject, RejectsTextThatIsNoJsonObject)
{
    const std::vector<std::string> texts{
        "",          "   ", "not json", "[]", R"(["type","subscribe"])",
        R"("text")", "42",  "null",     "{",  R"({"type":"subscribe","event":"/s"} trailing)"};

    for (const std::string& text : texts)
    {
        const WebSocketRequestObject sut(text);

        EXPECT_FALSE(sut.isValid()) << text;
        EXPECT_TRUE(sut.getData().isNull()) << text;
    }
}

TEST(WebSocketRequestObject, RejectsAMissingOrWrongType)
{
    EXPECT_FALSE(WebSocketRequestObject(R"({"event":"/s/r"})").isValid());
    EXPECT_FALSE(WebSocketRequestObject(R"({"type":1,"event":"/s/r"})").isValid());
    EXPECT_FALSE(WebSocketRequestObject(R"({"type":null,"event":"/s/r"})").isValid());
    EXPECT_FALSE(WebSocketRequestObject(R"({"type":["subscribe"],"event":"/s/r"})").isValid());
}

TEST(WebSocketRequestObject, RejectsAMissingOrWrongEvent)
{
    EXPECT_FALSE(WebSocketRequestObject(R"({"type":"subscribe"})").isValid());
    EXPECT_FALSE(WebSocketRequestObject(R"({"type":"subscribe","event":7})").isValid());
    EXPECT_FALSE(WebSocketRequestObject(R"({"type":"subscribe","event":{"uri":"/s"}})").isValid());
}

TEST(WebSocketRequestObject, RejectsAnEventThatDoesNotParse)
{
    EXPECT_FALSE(WebSocketRequestObject(withEvent("/s%zz")).isValid());
    EXPECT_FALSE(WebSocketRequestObject(withEvent("http://host:port/s")).isValid());
}

TEST(WebSocketRequestObject, RejectsAnEventWithAQueryThatDoesNotDecode)
{
    const WebSocketRequestObject sut(withEvent("/s/r?name=%zz"));

    EXPECT_FALSE(sut.isValid());
    EXPECT_EQ(sut.getType(), "subscribe");
}

TEST(WebSocketRequestObject, RejectsAnEventWithAMalformedReservedParameter)
{
    EXPECT_FALSE(WebSocketRequestObject(withEvent("/s/r?$limit=abc")).isValid());
    EXPECT_FALSE(WebSocketRequestObject(withEvent("/s/r?$expand=9")).isValid());
    EXPECT_FALSE(WebSocketRequestObject(withEvent("/s/r?$unknown=1")).isValid());
}

TEST(WebSocketRequestObject, RejectsTimesThatAreNoNonNegativeIntegers)
{
    for (const std::string& field : {WebSocketRequestObject::FIELD_SUBSCRIPTION_INTERVAL,
                                     WebSocketRequestObject::FIELD_SUBSCRIPTION_UPDATE_LIMIT})
    {
        for (const char* value : {"-1", "1.5", "100.0", R"("100")", "true", "null", "[100]", "{}",
                                  "18446744073709551615", "9223372036854775808"})
        {
            EXPECT_FALSE(WebSocketRequestObject(withField(field, value)).isValid()) << field << "=" << value;
        }
    }
}

TEST(WebSocketRequestObject, RejectsAnAuthorizationThatIsNoString)
{
    EXPECT_FALSE(WebSocketRequestObject(withField("authorization", "12")).isValid());
    EXPECT_FALSE(WebSocketRequestObject(withField("authorization", "null")).isValid());
    EXPECT_TRUE(WebSocketRequestObject(withField("authorization", R"("")")).isValid());
}

TEST(WebSocketRequestObject, RejectsAnAutosubscribeThatIsNoBool)
{
    EXPECT_FALSE(WebSocketRequestObject(withField("autosubscribe", R"("true")")).isValid());
    EXPECT_FALSE(WebSocketRequestObject(withField("autosubscribe", "1")).isValid());
    EXPECT_FALSE(WebSocketRequestObject(withField("autosubscribe", "null")).isValid());
    EXPECT_TRUE(WebSocketRequestObject(withField("autosubscribe", "false")).isValid());
}

TEST(WebSocketRequestObject, ReadsAParsedMessage)
{
    Poco::JSON::Object::Ptr message = new Poco::JSON::Object();
    message->set("type", "subscribe");
    message->set("event", "/s/r/$id#t");
    message->set("interval", 50);
    message->set("autosubscribe", false);

    const WebSocketRequestObject sut(message);

    ASSERT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getData().get(), message.get());
    EXPECT_EQ(sut.getEvent().getPath(), "/s/r/$id");
    EXPECT_EQ(sut.getEvent().getFragment(), "t");
    EXPECT_EQ(sut.getUrlPath().getCharacteristic(), UrlPath::SERVICE_RESOURCE_ID);
    EXPECT_EQ(sut.getInterval().value(), 50);
    EXPECT_FALSE(sut.getAutosubscribe());
}

TEST(WebSocketRequestObject, RejectsANullMessage)
{
    const WebSocketRequestObject sut(Poco::JSON::Object::Ptr{});

    EXPECT_FALSE(sut.isValid());
    EXPECT_TRUE(sut.getData().isNull());
}

TEST(WebSocketRequestObject, RejectsEveryTruncationOfAValidMessage)
{
    for (std::size_t size = 0; size < FULL_SUBSCRIPTION.size(); ++size)
    {
        const WebSocketRequestObject sut(FULL_SUBSCRIPTION.substr(0, size));

        EXPECT_FALSE(sut.isValid()) << FULL_SUBSCRIPTION.substr(0, size);
    }
    EXPECT_TRUE(WebSocketRequestObject(FULL_SUBSCRIPTION).isValid());
}

TEST(WebSocketRequestObject, StaysConsistentForRandomMessages)
{
    // Pieces of messages joined at random, now and then a random byte.
    const std::vector<std::string> pieces{"{",
                                          "}",
                                          "[",
                                          "]",
                                          ",",
                                          ":",
                                          "\"",
                                          R"("type")",
                                          R"("event")",
                                          R"("interval")",
                                          R"("updatelimit")",
                                          R"("authorization")",
                                          R"("autosubscribe")",
                                          R"("subscribe")",
                                          R"("/s/r")",
                                          R"("/s/r?$q=a#t")",
                                          R"("/s%zz")",
                                          R"("/s?$limit=x")",
                                          "-1",
                                          "0",
                                          "12",
                                          "1.5",
                                          "true",
                                          "false",
                                          "null",
                                          "\\u0000",
                                          " "};
    std::mt19937 random(7u);
    std::uniform_int_distribution<std::size_t> count(0, 24);
    std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
    std::uniform_int_distribution<int> anyByte(0, 255);
    std::uniform_int_distribution<int> choice(0, 19);

    for (int i = 0; i < 2000; ++i)
    {
        std::string text;
        const std::size_t size = count(random);
        for (std::size_t j = 0; j < size; ++j)
        {
            text += choice(random) == 0 ? std::string(1, static_cast<char>(anyByte(random)))
                                        : pieces[pick(random)];
        }

        const WebSocketRequestObject sut(text);

        EXPECT_TRUE(isConsistent(sut)) << text;
    }
}

TEST(WebSocketRequestObject, StaysConsistentForMutatedMessages)
{
    std::mt19937 random(11u);
    std::uniform_int_distribution<std::size_t> edits(1, 3);
    std::uniform_int_distribution<int> anyByte(0, 255);
    std::uniform_int_distribution<int> kind(0, 2);
    int valid = 0;
    int invalid = 0;

    for (int i = 0; i < 2000; ++i)
    {
        std::string text = FULL_SUBSCRIPTION;
        for (std::size_t n = edits(random); n > 0; --n)
        {
            std::uniform_int_distribution<std::size_t> position(0, text.size() - 1);
            const char byte = static_cast<char>(anyByte(random));
            switch (kind(random))
            {
            case 0:
                text[position(random)] = byte;
                break;
            case 1:
                text.insert(position(random), 1, byte);
                break;
            default:
                text.erase(position(random), 1);
                break;
            }
        }

        const WebSocketRequestObject sut(text);

        EXPECT_TRUE(isConsistent(sut)) << text;
        ++(sut.isValid() ? valid : invalid);
    }

    EXPECT_GT(valid, 0);
    EXPECT_GT(invalid, 0);
}
