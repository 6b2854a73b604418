#include "Command/ResponseObject.h"

#include "Timestamp.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using Orvi::Command::ResponseObject;

namespace
{

using ServiceDB::Test::toJson;

Poco::JSON::Object::Ptr makeObject(const std::string& key, const std::string& value)
{
    Poco::JSON::Object::Ptr object = new Poco::JSON::Object();
    object->set(key, value);
    return object;
}

} // namespace

TEST(ResponseObject, HasTheAgreedConstantTexts)
{
    EXPECT_EQ(ResponseObject::FIELD_PAGING, "paging");
    EXPECT_EQ(ResponseObject::FIELD_PAGING_OFFSET_ID, "offsetId");
    EXPECT_EQ(ResponseObject::FIELD_PAGING_OFFSET, "offset");
    EXPECT_EQ(ResponseObject::FIELD_PAGING_LIMIT, "limit");
    EXPECT_EQ(ResponseObject::FIELD_PAGING_TOTAL, "total");
    EXPECT_EQ(ResponseObject::FIELD_PAGING_TOTAL_PAGES, "totalPages");
    EXPECT_EQ(ResponseObject::FIELD_PAGING_PREVIOUS, "previous");
    EXPECT_EQ(ResponseObject::FIELD_PAGING_NEXT, "next");
    EXPECT_EQ(ResponseObject::FIELD_TIMESTAMP, "timestamp");
    EXPECT_EQ(ResponseObject::FIELD_DATA, "data");
    EXPECT_EQ(ResponseObject::FIELD_SERVICE, "service");
}

TEST(ResponseObject, StartsAsSuccess)
{
    const ResponseObject sut;

    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}

TEST(ResponseObject, GivesSuccessForA2xxCodeWithoutMessage)
{
    const ResponseObject sut(200, "");

    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}

TEST(ResponseObject, GivesSuccessWithMessageForA2xxCode)
{
    const ResponseObject sut(201, "created");

    EXPECT_EQ(toJson(sut.JSONObject), R"({"message":"created","status":"ok"})");
}

TEST(ResponseObject, GivesSuccessForTheLast2xxCode)
{
    const ResponseObject sut(299, "");

    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}

TEST(ResponseObject, GivesAnErrorForA4xxCode)
{
    const ResponseObject sut(404, "not found");

    EXPECT_EQ(toJson(sut.JSONObject), R"({"code":404,"message":"not found","status":"error"})");
}

TEST(ResponseObject, GivesAnErrorForCodesBeside2xx)
{
    EXPECT_EQ(toJson(ResponseObject(199, "early").JSONObject),
              R"({"code":199,"message":"early","status":"error"})");
    EXPECT_EQ(toJson(ResponseObject(300, "").JSONObject), R"({"code":300,"message":"","status":"error"})");
    EXPECT_EQ(toJson(ResponseObject(503, "busy").JSONObject),
              R"({"code":503,"message":"busy","status":"error"})");
}

TEST(ResponseObject, SetsAnObjectAsData)
{
    ResponseObject sut;

    sut.setData(makeObject("name", "door"));

    EXPECT_EQ(toJson(sut.JSONObject), R"({"data":{"name":"door"},"status":"ok"})");
}

TEST(ResponseObject, SetsAnArrayAsData)
{
    ResponseObject sut;
    Poco::JSON::Array::Ptr data = new Poco::JSON::Array();
    data->add(makeObject("name", "a"));
    data->add(makeObject("name", "b"));

    sut.setData(data);

    EXPECT_EQ(toJson(sut.JSONObject), R"({"data":[{"name":"a"},{"name":"b"}],"status":"ok"})");
}

TEST(ResponseObject, ReplacesTheDataWhenSetAgain)
{
    ResponseObject sut;
    sut.setData(makeObject("name", "a"));

    sut.setData(Poco::JSON::Array::Ptr(new Poco::JSON::Array()));

    EXPECT_EQ(toJson(sut.JSONObject), R"({"data":[],"status":"ok"})");
}

TEST(ResponseObject, RemovesTheDataForANullObject)
{
    ResponseObject sut;
    sut.setData(makeObject("name", "a"));

    sut.setData(Poco::JSON::Object::Ptr());

    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}

TEST(ResponseObject, RemovesTheDataForANullArray)
{
    ResponseObject sut;
    sut.setData(makeObject("name", "a"));

    sut.setData(Poco::JSON::Array::Ptr());

    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}

TEST(ResponseObject, SetsThePaging)
{
    ResponseObject sut;
    Poco::JSON::Object::Ptr paging = new Poco::JSON::Object();
    paging->set(ResponseObject::FIELD_PAGING_OFFSET, 0);
    paging->set(ResponseObject::FIELD_PAGING_LIMIT, 2);
    paging->set(ResponseObject::FIELD_PAGING_TOTAL, 5);
    paging->set(ResponseObject::FIELD_PAGING_TOTAL_PAGES, 3);
    paging->set(ResponseObject::FIELD_PAGING_NEXT, "/s/r?$offset=2&$limit=2");

    sut.setPaging(paging);

    EXPECT_EQ(toJson(sut.JSONObject), R"({"paging":{"limit":2,"next":"/s/r?$offset=2&$limit=2","offset":0,)"
                                      R"("total":5,"totalPages":3},"status":"ok"})");
}

TEST(ResponseObject, RemovesThePagingForANullObject)
{
    ResponseObject sut;
    sut.setPaging(makeObject("offset", "x"));

    sut.setPaging(Poco::JSON::Object::Ptr());

    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}

TEST(ResponseObject, SetsTheTimestampInMillisecondsSinceStart)
{
    ResponseObject sut;
    const Poco::Int64 before = Orvi::Timestamp::createTimestamp().asMilliseconds();

    sut.setTimestamp();

    const Poco::Int64 after = Orvi::Timestamp::createTimestamp().asMilliseconds();
    ASSERT_TRUE(sut.JSONObject->has(ResponseObject::FIELD_TIMESTAMP));
    const Poco::Int64 stamp = sut.JSONObject->getValue<Poco::Int64>(ResponseObject::FIELD_TIMESTAMP);
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, after);
    sut.JSONObject->remove(ResponseObject::FIELD_TIMESTAMP);
    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}
