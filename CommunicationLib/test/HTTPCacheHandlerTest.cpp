#include "Http/HTTPCacheHandler.h"

#include <Poco/Net/HTTPRequest.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Net::HTTPCacheHandler;

const std::vector<std::string> CONDITIONAL_HEADERS = {"If-None-Match", "If-Match", "If-Modified-Since",
                                                      "If-Unmodified-Since"};
const std::string SOME_DATE = "Tue, 04 Mar 2025 10:00:00 GMT";
const std::string ETAG = "\"3f1c2a9d0b7e4c55\"";

Poco::Net::HTTPRequest requestWithHeader(const std::string& method, const std::string& name)
{
    Poco::Net::HTTPRequest request(method, "/cars/doors");
    request.set(name, name.find("Since") != std::string::npos ? SOME_DATE : ETAG);
    return request;
}

Poco::Net::HTTPRequest requestWithIfNoneMatch(const std::string& value)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/cars/doors");
    request.set("If-None-Match", value);
    return request;
}

TEST(HTTPCacheHandler, FailsEveryConditionalHeaderOnWritingMethods)
{
    for (const std::string& method : {Poco::Net::HTTPRequest::HTTP_POST, Poco::Net::HTTPRequest::HTTP_DELETE,
                                      Poco::Net::HTTPRequest::HTTP_PUT})
    {
        for (const std::string& header : CONDITIONAL_HEADERS)
        {
            SCOPED_TRACE(method + " with " + header);
            const Poco::Net::HTTPRequest request = requestWithHeader(method, header);

            const HTTPCacheHandler::PreconditionResult result = HTTPCacheHandler::checkRequestHeader(request);

            EXPECT_EQ(result, HTTPCacheHandler::PRECONDITION_FAILED);
        }
    }
}

TEST(HTTPCacheHandler, FailsAConditionalHeaderOnAnyOtherMethod)
{
    for (const std::string& method :
         {Poco::Net::HTTPRequest::HTTP_PATCH, Poco::Net::HTTPRequest::HTTP_OPTIONS})
    {
        SCOPED_TRACE(method);
        const Poco::Net::HTTPRequest request = requestWithHeader(method, "If-Match");

        EXPECT_EQ(HTTPCacheHandler::checkRequestHeader(request), HTTPCacheHandler::PRECONDITION_FAILED);
    }
}

TEST(HTTPCacheHandler, AcceptsEveryConditionalHeaderOnReadingMethods)
{
    for (const std::string& method : {Poco::Net::HTTPRequest::HTTP_GET, Poco::Net::HTTPRequest::HTTP_HEAD})
    {
        for (const std::string& header : CONDITIONAL_HEADERS)
        {
            SCOPED_TRACE(method + " with " + header);
            const Poco::Net::HTTPRequest request = requestWithHeader(method, header);

            const HTTPCacheHandler::PreconditionResult result = HTTPCacheHandler::checkRequestHeader(request);

            EXPECT_EQ(result, HTTPCacheHandler::PRECONDITION_VALID);
        }
    }
}

TEST(HTTPCacheHandler, AcceptsWritingMethodsWithoutConditionalHeaders)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_POST, "/cars/doors");
    request.set("Cache-Control", "no-cache");

    EXPECT_EQ(HTTPCacheHandler::checkRequestHeader(request), HTTPCacheHandler::PRECONDITION_VALID);
}

TEST(HTTPCacheHandler, KeepsTheNumbersOfItsResults)
{
    EXPECT_EQ(static_cast<int>(HTTPCacheHandler::PRECONDITION_VALID), 0);
    EXPECT_EQ(static_cast<int>(HTTPCacheHandler::PRECONDITION_FAILED), 1);
    EXPECT_EQ(static_cast<int>(HTTPCacheHandler::CONTENT_CHANGED), 0);
    EXPECT_EQ(static_cast<int>(HTTPCacheHandler::CONTENT_UNCHANGED), 1);
}

TEST(HTTPCacheHandler, ComputesTheQuotedFnv1aHashAsETag)
{
    EXPECT_EQ(HTTPCacheHandler::computeETag(""), "\"cbf29ce484222325\"");
    EXPECT_EQ(HTTPCacheHandler::computeETag("a"), "\"af63dc4c8601ec8c\"");
    EXPECT_EQ(HTTPCacheHandler::computeETag("foobar"), "\"85944171f73967e8\"");
}

TEST(HTTPCacheHandler, ComputesTheSameETagForTheSameBytes)
{
    const std::string body = R"({"data":{"id":"9b2f","open":true}})";

    EXPECT_EQ(HTTPCacheHandler::computeETag(body), HTTPCacheHandler::computeETag(std::string(body)));
}

TEST(HTTPCacheHandler, ComputesDifferentETagsForDifferentBytes)
{
    EXPECT_NE(HTTPCacheHandler::computeETag(R"({"open":true})"),
              HTTPCacheHandler::computeETag(R"({"open":false})"));
    EXPECT_NE(HTTPCacheHandler::computeETag("ab"), HTTPCacheHandler::computeETag("ba"));
}

TEST(HTTPCacheHandler, MatchesNothingWithoutIfNoneMatch)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/cars/doors");

    EXPECT_FALSE(HTTPCacheHandler::matchesIfNoneMatch(request, ETAG));
}

TEST(HTTPCacheHandler, MatchesTheSameTag)
{
    EXPECT_TRUE(HTTPCacheHandler::matchesIfNoneMatch(requestWithIfNoneMatch(ETAG), ETAG));
}

TEST(HTTPCacheHandler, DoesNotMatchAnotherTag)
{
    EXPECT_FALSE(HTTPCacheHandler::matchesIfNoneMatch(requestWithIfNoneMatch("\"3f1c2a9d0b7e4c56\""), ETAG));
}

TEST(HTTPCacheHandler, MatchesATagInAList)
{
    const Poco::Net::HTTPRequest request = requestWithIfNoneMatch("\"aaaa\", " + ETAG + " , \"bbbb\"");

    EXPECT_TRUE(HTTPCacheHandler::matchesIfNoneMatch(request, ETAG));
    EXPECT_FALSE(HTTPCacheHandler::matchesIfNoneMatch(request, "\"cccc\""));
}

TEST(HTTPCacheHandler, MatchesEveryTagWithTheWildcard)
{
    EXPECT_TRUE(HTTPCacheHandler::matchesIfNoneMatch(requestWithIfNoneMatch(" * "), ETAG));
}

TEST(HTTPCacheHandler, ComparesWeakTagsWeakly)
{
    EXPECT_TRUE(HTTPCacheHandler::matchesIfNoneMatch(requestWithIfNoneMatch("W/" + ETAG), ETAG));
    EXPECT_TRUE(HTTPCacheHandler::matchesIfNoneMatch(requestWithIfNoneMatch(ETAG), "W/" + ETAG));
    EXPECT_FALSE(HTTPCacheHandler::matchesIfNoneMatch(requestWithIfNoneMatch("W/\"other\""), ETAG));
}

TEST(HTTPCacheHandler, KeepsACommaInsideAQuotedTag)
{
    const Poco::Net::HTTPRequest request = requestWithIfNoneMatch("\"x,y\", \"z\"");

    EXPECT_TRUE(HTTPCacheHandler::matchesIfNoneMatch(request, "\"x,y\""));
    EXPECT_FALSE(HTTPCacheHandler::matchesIfNoneMatch(request, "\"x\""));
}

TEST(HTTPCacheHandler, DoesNotMatchAnUnquotedTag)
{
    EXPECT_FALSE(HTTPCacheHandler::matchesIfNoneMatch(requestWithIfNoneMatch("3f1c2a9d0b7e4c55"), ETAG));
}

TEST(HTTPCacheHandler, SearchesEveryIfNoneMatchLine)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/cars/doors");
    request.add("If-None-Match", "\"aaaa\"");
    request.add("if-none-match", ETAG);

    EXPECT_TRUE(HTTPCacheHandler::matchesIfNoneMatch(request, ETAG));
}

} // namespace
