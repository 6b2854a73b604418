#include "Command/WebSocketResponseObject.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/Net/HTTPResponse.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using Orvi::Command::WebSocketResponseObject;

namespace
{

using ServiceDB::Test::toJson;

} // namespace

TEST(WebSocketResponseObject, HasTheAgreedConstantTexts)
{
    EXPECT_EQ(WebSocketResponseObject::FIELD_TYPE, "type");
    EXPECT_EQ(WebSocketResponseObject::FIELD_EVENT, "event");
}

TEST(WebSocketResponseObject, StartsAsSuccess)
{
    const WebSocketResponseObject sut;

    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}

TEST(WebSocketResponseObject, AnswersASubscription)
{
    WebSocketResponseObject sut;

    sut.setType("subscribe");
    sut.setEvent("/s/r?$fields=a#tag");

    EXPECT_EQ(toJson(sut.JSONObject), R"({"event":"/s/r?$fields=a#tag","status":"ok","type":"subscribe"})");
}

TEST(WebSocketResponseObject, DropsDataAndPagingOnError)
{
    WebSocketResponseObject sut;
    sut.setType("data");
    sut.setEvent("/s/r");
    Poco::JSON::Array::Ptr data = new Poco::JSON::Array();
    data->add(1);
    sut.setData(data);
    Poco::JSON::Object::Ptr paging = new Poco::JSON::Object();
    paging->set("total", 1);
    sut.setPaging(paging);

    sut.setError(Poco::Net::HTTPResponse::HTTP_GONE, "element has gone");

    EXPECT_EQ(toJson(sut.JSONObject),
              R"({"code":410,"event":"/s/r","message":"element has gone","status":"error","type":"data"})");
}

TEST(WebSocketResponseObject, ReportsAnErrorWithItsType)
{
    WebSocketResponseObject sut;

    sut.setError(Poco::Net::HTTPResponse::HTTP_BAD_REQUEST, "bad request");
    sut.setType("error");
    sut.setEvent("/s/$x");

    EXPECT_EQ(toJson(sut.JSONObject),
              R"({"code":400,"event":"/s/$x","message":"bad request","status":"error","type":"error"})");
}
