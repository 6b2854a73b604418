#include "Net/OrviHttpCacheHandler.h"

#include "Command/HttpResponse.h"
#include "Http/HTTPCacheHandler.h"

#include <Poco/JSON/Object.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>

#include <gtest/gtest.h>

#include <string>

using Orvi::Command::HttpResponse;
using Orvi::Net::HTTPCacheHandler;
using Orvi::Net::OrviHttpCacheHandler;
using Poco::Net::HTTPResponse;

namespace
{

// The tags of these bodies are the 64-bit FNV-1a hashes of their bytes.
const std::string DOOR_TAG = "\"4257f819ed35e2ba\"";
const std::string WINDOW_TAG = "\"cc25a7ef999296e2\"";
const std::string EMPTY_TAG = "\"cbf29ce484222325\"";

HttpResponse answerNamed(const std::string& name)
{
    Poco::JSON::Object::Ptr object = new Poco::JSON::Object();
    object->set("name", name);
    HttpResponse answer;
    answer.setDataFromObject(object);
    return answer;
}

Poco::Net::HTTPRequest getWithIfNoneMatch(const std::string& tags)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/s/r");
    request.set("If-None-Match", tags);
    return request;
}

} // namespace

TEST(OrviHttpCacheHandler, SetsTheTagOfTheAnswerBytes)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/s/r");
    HTTPResponse response;

    OrviHttpCacheHandler::handleRequest(request, response, answerNamed("door"));

    EXPECT_EQ(response.get("ETag"), DOOR_TAG);
}

TEST(OrviHttpCacheHandler, GivesEqualAnswersTheSameTag)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/s/r");
    HTTPResponse first;
    HTTPResponse second;

    OrviHttpCacheHandler::handleRequest(request, first, answerNamed("door"));
    OrviHttpCacheHandler::handleRequest(request, second, answerNamed("door"));

    EXPECT_EQ(first.get("ETag"), second.get("ETag"));
}

TEST(OrviHttpCacheHandler, GivesDifferentAnswersDifferentTags)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/s/r");
    HTTPResponse response;

    OrviHttpCacheHandler::handleRequest(request, response, answerNamed("window"));

    EXPECT_EQ(response.get("ETag"), WINDOW_TAG);
}

TEST(OrviHttpCacheHandler, TagsTextAndEmptyAnswersByTheirBytes)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_HEAD, "/s/r");
    HttpResponse text;
    text.setDataFromText("version not served", "text/plain");
    HTTPResponse textResponse;
    HTTPResponse emptyResponse;

    OrviHttpCacheHandler::handleRequest(request, textResponse, text);
    OrviHttpCacheHandler::handleRequest(request, emptyResponse, HttpResponse());

    EXPECT_EQ(textResponse.get("ETag"), "\"1275da74e66fb8df\"");
    EXPECT_EQ(emptyResponse.get("ETag"), EMPTY_TAG);
}

TEST(OrviHttpCacheHandler, AnswersNotModifiedForAMatchingTag)
{
    const Poco::Net::HTTPRequest request = getWithIfNoneMatch(DOOR_TAG);
    HTTPResponse response;
    response.setStatus(HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);

    const HTTPCacheHandler::CacheRequestResult result =
        OrviHttpCacheHandler::handleRequest(request, response, answerNamed("door"));

    EXPECT_EQ(result, HTTPCacheHandler::CONTENT_UNCHANGED);
    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_NOT_MODIFIED);
    EXPECT_EQ(response.getReason(), "Not Modified");
    EXPECT_EQ(response.get("ETag"), DOOR_TAG);
}

TEST(OrviHttpCacheHandler, FindsTheTagInAListAndInWeakForm)
{
    const Poco::Net::HTTPRequest list = getWithIfNoneMatch(WINDOW_TAG + ", " + DOOR_TAG);
    const Poco::Net::HTTPRequest weak = getWithIfNoneMatch("W/" + DOOR_TAG);
    HTTPResponse listResponse;
    HTTPResponse weakResponse;

    EXPECT_EQ(OrviHttpCacheHandler::handleRequest(list, listResponse, answerNamed("door")),
              HTTPCacheHandler::CONTENT_UNCHANGED);
    EXPECT_EQ(OrviHttpCacheHandler::handleRequest(weak, weakResponse, answerNamed("door")),
              HTTPCacheHandler::CONTENT_UNCHANGED);
}

TEST(OrviHttpCacheHandler, AnswersNotModifiedForAnyTag)
{
    const Poco::Net::HTTPRequest request = getWithIfNoneMatch("*");
    HTTPResponse response;

    const HTTPCacheHandler::CacheRequestResult result =
        OrviHttpCacheHandler::handleRequest(request, response, answerNamed("door"));

    EXPECT_EQ(result, HTTPCacheHandler::CONTENT_UNCHANGED);
    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_NOT_MODIFIED);
}

TEST(OrviHttpCacheHandler, LeavesTheStatusAloneForAnotherTag)
{
    const Poco::Net::HTTPRequest request = getWithIfNoneMatch(WINDOW_TAG);
    HTTPResponse response;
    response.setStatusAndReason(HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);

    const HTTPCacheHandler::CacheRequestResult result =
        OrviHttpCacheHandler::handleRequest(request, response, answerNamed("door"));

    EXPECT_EQ(result, HTTPCacheHandler::CONTENT_CHANGED);
    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(response.getReason(), "Internal Server Error");
    EXPECT_EQ(response.get("ETag"), DOOR_TAG);
}

TEST(OrviHttpCacheHandler, GivesContentChangedWithoutIfNoneMatch)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/s/r");
    HTTPResponse response;

    const HTTPCacheHandler::CacheRequestResult result =
        OrviHttpCacheHandler::handleRequest(request, response, answerNamed("door"));

    EXPECT_EQ(result, HTTPCacheHandler::CONTENT_CHANGED);
    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_OK);
}

TEST(OrviHttpCacheHandler, IgnoresAnIfMatchHeader)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/s/r");
    request.set("If-Match", DOOR_TAG);
    HTTPResponse response;

    const HTTPCacheHandler::CacheRequestResult result =
        OrviHttpCacheHandler::handleRequest(request, response, answerNamed("door"));

    EXPECT_EQ(result, HTTPCacheHandler::CONTENT_CHANGED);
}

TEST(OrviHttpCacheHandler, ReplacesAnEarlierTag)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/s/r");
    HTTPResponse response;
    response.set("ETag", WINDOW_TAG);

    OrviHttpCacheHandler::handleRequest(request, response, answerNamed("door"));

    EXPECT_EQ(response.get("ETag"), DOOR_TAG);
    EXPECT_EQ(response.size(), 1U);
}
