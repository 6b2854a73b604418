#include "Command/HttpResponse.h"

#include <Poco/JSON/Object.h>
#include <Poco/Net/HTTPResponse.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

using Orvi::Command::HttpResponse;
using Orvi::Command::ResponseObject;
using Poco::Net::HTTPResponse;

namespace
{

std::string toJson(const Poco::JSON::Object::Ptr& object)
{
    std::ostringstream text;
    object->stringify(text);
    return text.str();
}

Poco::JSON::Object::Ptr makeObject(const std::string& key, const std::string& value)
{
    Poco::JSON::Object::Ptr object = new Poco::JSON::Object();
    object->set(key, value);
    return object;
}

} // namespace

TEST(HttpResponse, NamesTheJsonMediaType)
{
    EXPECT_EQ(HttpResponse::MIMETYPE_JSON, "application/json; charset=utf-8");
}

TEST(HttpResponse, StartsEmptyWithStatusOk)
{
    const HttpResponse sut;

    EXPECT_EQ(sut.getStatus(), HTTPResponse::HTTP_OK);
    EXPECT_EQ(sut.getMimetype(), "");
    EXPECT_EQ(sut.getLocation(), "");
    EXPECT_TRUE(sut.getJsonMsg().isNull());
    EXPECT_EQ(sut.getTextMsg(), "");
    EXPECT_FALSE(sut.hasContent());
    EXPECT_EQ(sut.getBody(), "");
}

TEST(HttpResponse, KeepsStatusMimetypeAndLocation)
{
    HttpResponse sut;

    sut.setStatus(HTTPResponse::HTTP_CREATED);
    sut.setMimetype("text/plain");
    sut.setLocation("/s/r/e");

    EXPECT_EQ(sut.getStatus(), HTTPResponse::HTTP_CREATED);
    EXPECT_EQ(sut.getMimetype(), "text/plain");
    EXPECT_EQ(sut.getLocation(), "/s/r/e");
    EXPECT_FALSE(sut.hasContent());
}

TEST(HttpResponse, CountsOnly2xxAsSuccess)
{
    EXPECT_FALSE(HttpResponse::isSuccess(HTTPResponse::HTTP_CONTINUE));
    EXPECT_TRUE(HttpResponse::isSuccess(HTTPResponse::HTTP_OK));
    EXPECT_TRUE(HttpResponse::isSuccess(HTTPResponse::HTTP_CREATED));
    EXPECT_TRUE(HttpResponse::isSuccess(HTTPResponse::HTTP_ACCEPTED));
    EXPECT_TRUE(HttpResponse::isSuccess(HTTPResponse::HTTP_NO_CONTENT));
    EXPECT_TRUE(HttpResponse::isSuccess(static_cast<Orvi::Command::HTTPStatus>(299)));
    EXPECT_FALSE(HttpResponse::isSuccess(static_cast<Orvi::Command::HTTPStatus>(300)));
    EXPECT_FALSE(HttpResponse::isSuccess(HTTPResponse::HTTP_NOT_MODIFIED));
    EXPECT_FALSE(HttpResponse::isSuccess(HTTPResponse::HTTP_BAD_REQUEST));
    EXPECT_FALSE(HttpResponse::isSuccess(HTTPResponse::HTTP_PRECONDITION_FAILED));
    EXPECT_FALSE(HttpResponse::isSuccess(HTTPResponse::HTTP_INTERNAL_SERVER_ERROR));
    EXPECT_FALSE(HttpResponse::isSuccess(HTTPResponse::HTTP_SERVICE_UNAVAILABLE));
}

TEST(HttpResponse, SetsTextWithItsMediaType)
{
    HttpResponse sut;

    sut.setDataFromText("line one\nline two", "text/plain; charset=utf-8");

    EXPECT_TRUE(sut.hasContent());
    EXPECT_EQ(sut.getMimetype(), "text/plain; charset=utf-8");
    EXPECT_EQ(sut.getTextMsg(), "line one\nline two");
    EXPECT_EQ(sut.getBody(), "line one\nline two");
}

TEST(HttpResponse, HasNoContentForEmptyText)
{
    HttpResponse sut;

    sut.setDataFromText("", "text/plain");

    EXPECT_FALSE(sut.hasContent());
    EXPECT_EQ(sut.getMimetype(), "text/plain");
}

TEST(HttpResponse, DropsTheJsonWhenTextIsSet)
{
    HttpResponse sut;
    sut.setDataFromObject(makeObject("a", "b"));

    sut.setDataFromText("plain", "text/plain");

    EXPECT_TRUE(sut.getJsonMsg().isNull());
    EXPECT_EQ(sut.getMimetype(), "text/plain");
    EXPECT_EQ(sut.getBody(), "plain");
}

TEST(HttpResponse, SetsJsonAndItsMediaTypeWhenNoneIsSet)
{
    HttpResponse sut;
    const Poco::JSON::Object::Ptr body = makeObject("name", "door");

    sut.setDataFromObject(body);

    EXPECT_TRUE(sut.hasContent());
    EXPECT_EQ(sut.getJsonMsg().get(), body.get());
    EXPECT_EQ(sut.getMimetype(), "application/json; charset=utf-8");
    EXPECT_EQ(sut.getBody(), R"({"name":"door"})");
}

TEST(HttpResponse, KeepsAMediaTypeThatIsSetWhenJsonIsSet)
{
    HttpResponse sut;
    sut.setMimetype("application/vnd.servicedb.v1.0.0+json");

    sut.setDataFromObject(makeObject("name", "door"));

    EXPECT_EQ(sut.getMimetype(), "application/vnd.servicedb.v1.0.0+json");
}

TEST(HttpResponse, DropsTheTextWhenJsonIsSet)
{
    HttpResponse sut;
    sut.setDataFromText("plain", "text/plain");

    sut.setDataFromObject(makeObject("a", "b"));

    EXPECT_EQ(sut.getTextMsg(), "");
    EXPECT_EQ(sut.getMimetype(), "text/plain");
    EXPECT_EQ(sut.getBody(), R"({"a":"b"})");
}

TEST(HttpResponse, TakesTheBodyOfAResponseObject)
{
    HttpResponse sut;
    ResponseObject answer;
    answer.setData(makeObject("name", "door"));

    sut.setDataFromObject(answer);

    EXPECT_EQ(sut.getJsonMsg().get(), answer.JSONObject.get());
    EXPECT_EQ(sut.getMimetype(), "application/json; charset=utf-8");
    EXPECT_EQ(sut.getBody(), R"({"data":{"name":"door"},"status":"ok"})");
}

TEST(HttpResponse, HasNoContentForANullObject)
{
    HttpResponse sut;

    sut.setDataFromObject(Poco::JSON::Object::Ptr());

    EXPECT_FALSE(sut.hasContent());
    EXPECT_EQ(sut.getBody(), "");
}

TEST(HttpResponse, WritesNonAsciiTextUnescaped)
{
    HttpResponse sut;

    sut.setDataFromObject(makeObject("name", "T\xC3\xBCr"));

    EXPECT_EQ(sut.getBody(), "{\"name\":\"T\xC3\xBCr\"}");
}

TEST(HttpResponse, CreatesASuccessAnswer)
{
    const HttpResponse sut = HttpResponse::createStatusOk(HTTPResponse::HTTP_CREATED);

    EXPECT_EQ(sut.getStatus(), HTTPResponse::HTTP_CREATED);
    EXPECT_EQ(sut.getMimetype(), "application/json; charset=utf-8");
    EXPECT_EQ(toJson(sut.getJsonMsg()), R"({"status":"ok"})");
    EXPECT_EQ(sut.getBody(), R"({"status":"ok"})");
}

TEST(HttpResponse, CreatesAnErrorAnswer)
{
    const HttpResponse sut = HttpResponse::createError(HTTPResponse::HTTP_NOT_FOUND, "no such service");

    EXPECT_EQ(sut.getStatus(), HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(sut.getMimetype(), "application/json; charset=utf-8");
    EXPECT_EQ(sut.getBody(), R"({"code":404,"message":"no such service","status":"error"})");
}

TEST(HttpResponse, CreatesAnErrorBodyEvenForASuccessStatus)
{
    const HttpResponse sut = HttpResponse::createError(HTTPResponse::HTTP_OK, "odd");

    EXPECT_EQ(sut.getBody(), R"({"code":200,"message":"odd","status":"error"})");
}

TEST(HttpResponse, CopiesItsFields)
{
    HttpResponse original = HttpResponse::createError(HTTPResponse::HTTP_BAD_REQUEST, "bad");
    original.setLocation("/s/r/e");

    const HttpResponse sut(original);

    EXPECT_EQ(sut.getStatus(), HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(sut.getMimetype(), "application/json; charset=utf-8");
    EXPECT_EQ(sut.getLocation(), "/s/r/e");
    EXPECT_EQ(sut.getBody(), R"({"code":400,"message":"bad","status":"error"})");
}

TEST(HttpResponse, MovesItsFields)
{
    HttpResponse original;
    original.setStatus(HTTPResponse::HTTP_ACCEPTED);
    original.setDataFromText("queued", "text/plain");

    HttpResponse sut;
    sut = std::move(original);

    EXPECT_EQ(sut.getStatus(), HTTPResponse::HTTP_ACCEPTED);
    EXPECT_EQ(sut.getMimetype(), "text/plain");
    EXPECT_EQ(sut.getTextMsg(), "queued");
}
