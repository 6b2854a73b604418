#include "Command/Query/QueryParameter.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

using Orvi::Command::QueryParameter;

TEST(QueryParameter, NamesTheIdentifyingKeys)
{
    EXPECT_EQ(QueryParameter::KEY_ID, "id");
    EXPECT_EQ(QueryParameter::KEY_NAME, "name");
    EXPECT_EQ(QueryParameter::KEY_URI, "uri");
}

TEST(QueryParameter, FindsAnObjectHeldByPointer)
{
    Poco::JSON::Object::Ptr object = new Poco::JSON::Object();
    const Poco::Dynamic::Var value(object);

    const Poco::JSON::Object* sut = QueryParameter::jsonObjectOf(value);

    EXPECT_EQ(sut, object.get());
}

TEST(QueryParameter, FindsAnObjectHeldByValue)
{
    Poco::JSON::Object object;
    object.set("id", "x");
    const Poco::Dynamic::Var value(object);

    const Poco::JSON::Object* sut = QueryParameter::jsonObjectOf(value);

    ASSERT_NE(sut, nullptr);
    EXPECT_EQ(sut->get("id").toString(), "x");
}

TEST(QueryParameter, FindsNoObjectInOtherValues)
{
    EXPECT_EQ(QueryParameter::jsonObjectOf(Poco::Dynamic::Var("text")), nullptr);
    EXPECT_EQ(QueryParameter::jsonObjectOf(Poco::Dynamic::Var()), nullptr);
    EXPECT_EQ(QueryParameter::jsonObjectOf(Poco::Dynamic::Var(Poco::JSON::Object::Ptr())), nullptr);
    EXPECT_EQ(
        QueryParameter::jsonObjectOf(Poco::Dynamic::Var(Poco::JSON::Array::Ptr(new Poco::JSON::Array()))),
        nullptr);
}

TEST(QueryParameter, FindsAnArrayHeldByPointer)
{
    Poco::JSON::Array::Ptr array = new Poco::JSON::Array();
    const Poco::Dynamic::Var value(array);

    const Poco::JSON::Array* sut = QueryParameter::jsonArrayOf(value);

    EXPECT_EQ(sut, array.get());
}

TEST(QueryParameter, FindsNoArrayInOtherValues)
{
    EXPECT_EQ(QueryParameter::jsonArrayOf(Poco::Dynamic::Var(7)), nullptr);
    EXPECT_EQ(QueryParameter::jsonArrayOf(Poco::Dynamic::Var(Poco::JSON::Array::Ptr())), nullptr);
    EXPECT_EQ(
        QueryParameter::jsonArrayOf(Poco::Dynamic::Var(Poco::JSON::Object::Ptr(new Poco::JSON::Object()))),
        nullptr);
}

TEST(QueryParameter, GivesTheMemberOfAnObjectAndNothingForOtherValues)
{
    Poco::JSON::Object::Ptr object(new Poco::JSON::Object);
    object->set("id", "a1");

    EXPECT_EQ(QueryParameter::memberOf(Poco::Dynamic::Var(object), "id").convert<std::string>(), "a1");
    EXPECT_TRUE(QueryParameter::memberOf(Poco::Dynamic::Var(object), "name").isEmpty());
    EXPECT_TRUE(QueryParameter::memberOf(Poco::Dynamic::Var("id"), "id").isEmpty());
    EXPECT_TRUE(QueryParameter::memberOf(Poco::Dynamic::Var(), "id").isEmpty());
}
