#include "Http/RequestFraming.h"

#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::Net::RequestFraming;
using Poco::Net::HTTPRequest;
using Poco::Net::HTTPResponse;
using Headers = std::vector<std::pair<std::string, std::string>>;

struct Verdict
{
    int status;
    std::string message;
};

Verdict check(const std::string& version, const Headers& headers = {})
{
    HTTPRequest request(HTTPRequest::HTTP_POST, "/vehicle/speed", version);
    for (const auto& [name, value] : headers)
    {
        request.add(name, value);
    }
    std::string message;
    const int status = RequestFraming::check(request, message);
    return {status, message};
}

void expectRefused(const Verdict& verdict, int status, const std::string& message)
{
    EXPECT_EQ(verdict.status, status);
    EXPECT_EQ(verdict.message, message);
}

TEST(RequestFraming, AcceptsVersionsOneOneAndOneZeroWithoutABody)
{
    for (const std::string version : {"HTTP/1.1", "HTTP/1.0"})
    {
        const Verdict verdict = check(version);

        EXPECT_EQ(verdict.status, HTTPResponse::HTTP_OK) << version;
        EXPECT_EQ(verdict.message, "") << version;
    }
}

TEST(RequestFraming, AcceptsAnotherMinorVersionOfOne)
{
    EXPECT_EQ(check("HTTP/1.7").status, HTTPResponse::HTTP_OK);
}

TEST(RequestFraming, RefusesAVersionOfAnotherProtocolAsMalformed)
{
    expectRefused(check("FOO/1.1"), 400, "malformed HTTP version");
}

TEST(RequestFraming, RefusesAVersionWhoseNumbersAreNotDigitsAsMalformed)
{
    expectRefused(check("HTTP/x.y"), 400, "malformed HTTP version");
}

TEST(RequestFraming, RefusesAMissingVersionAsMalformed)
{
    expectRefused(check(""), 400, "malformed HTTP version");
}

TEST(RequestFraming, RefusesAVersionWithMoreDigitsAsMalformed)
{
    expectRefused(check("HTTP/1.10"), 400, "malformed HTTP version");
}

TEST(RequestFraming, RefusesTheProtocolNameInLowerCaseAsMalformed)
{
    expectRefused(check("http/1.1"), 400, "malformed HTTP version");
}

TEST(RequestFraming, AnswersAnotherMajorVersionWith505)
{
    expectRefused(check("HTTP/2.0"), 505, "HTTP version not supported");
}

TEST(RequestFraming, AcceptsAContentLengthOfDigits)
{
    EXPECT_EQ(check("HTTP/1.1", {{"Content-Length", "42"}}).status, HTTPResponse::HTTP_OK);
}

TEST(RequestFraming, AcceptsTheLargestContentLengthOfSixtyThreeBits)
{
    EXPECT_EQ(check("HTTP/1.1", {{"Content-Length", "9223372036854775807"}}).status, HTTPResponse::HTTP_OK);
}

TEST(RequestFraming, RefusesAContentLengthBeyondSixtyThreeBits)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "9223372036854775808"}}), 400,
                  "malformed Content-Length");
}

TEST(RequestFraming, RefusesAContentLengthBeyondSixtyFourBits)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "18446744073709551616"}}), 400,
                  "malformed Content-Length");
}

TEST(RequestFraming, RefusesANegativeContentLength)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "-5"}}), 400, "malformed Content-Length");
}

TEST(RequestFraming, RefusesAContentLengthWithASign)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "+5"}}), 400, "malformed Content-Length");
}

TEST(RequestFraming, RefusesAContentLengthOfText)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "five"}}), 400, "malformed Content-Length");
}

TEST(RequestFraming, RefusesAContentLengthWithTextAfterItsDigits)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "12abc"}}), 400, "malformed Content-Length");
}

TEST(RequestFraming, RefusesAnEmptyContentLength)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", ""}}), 400, "malformed Content-Length");
}

TEST(RequestFraming, RefusesTwoContentLengthsThatDiffer)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "5"}, {"Content-Length", "6"}}), 400,
                  "conflicting body lengths");
}

TEST(RequestFraming, RefusesTwoContentLengthsThatDifferInTheCaseOfTheirNames)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "5"}, {"content-length", "6"}}), 400,
                  "conflicting body lengths");
}

TEST(RequestFraming, AcceptsTheSameContentLengthTwice)
{
    EXPECT_EQ(check("HTTP/1.1", {{"Content-Length", "5"}, {"Content-Length", "5"}}).status,
              HTTPResponse::HTTP_OK);
}

TEST(RequestFraming, RefusesAMalformedSecondContentLength)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "5"}, {"Content-Length", "x"}}), 400,
                  "malformed Content-Length");
}

TEST(RequestFraming, RefusesAContentLengthBesideATransferEncoding)
{
    expectRefused(check("HTTP/1.1", {{"Content-Length", "5"}, {"Transfer-Encoding", "chunked"}}), 400,
                  "conflicting body lengths");
}

TEST(RequestFraming, AcceptsAChunkedBodyWithoutContentLength)
{
    EXPECT_EQ(check("HTTP/1.1", {{"Transfer-Encoding", "chunked"}}).status, HTTPResponse::HTTP_OK);
}

TEST(RequestFraming, JudgesTheVersionBeforeTheLength)
{
    expectRefused(check("FOO/1.1", {{"Content-Length", "-5"}}), 400, "malformed HTTP version");
}

TEST(RequestFramingTest, RefusesAHeaderNameOutsideAscii)
{
    // A name with an umlaut and a sharp s, in UTF-8.
    const std::string name = std::string("X-F\xc3\xbc\xc3\x9f") + "e";

    expectRefused(check("HTTP/1.1", {{name, "1"}}), 400, "malformed header name");
}

TEST(RequestFramingTest, RefusesAHeaderNameWithASpace)
{
    expectRefused(check("HTTP/1.1", {{"X Field", "1"}}), 400, "malformed header name");
}

TEST(RequestFramingTest, RefusesAnEmptyHeaderName)
{
    expectRefused(check("HTTP/1.1", {{"", "1"}}), 400, "malformed header name");
}

TEST(RequestFramingTest, AcceptsHeaderNamesOfEveryTokenCharacter)
{
    const Verdict verdict = check("HTTP/1.1", {{"!#$%&'*+-.^_`|~09azAZ", "1"}});

    EXPECT_EQ(verdict.status, 200);
    EXPECT_EQ(verdict.message, "");
}

} // namespace
