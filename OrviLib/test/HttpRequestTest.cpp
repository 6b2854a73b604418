#include "Command/HttpRequest.h"

#include "Http/HTTPEncoderDecoder.h"
#include "TestSupport/FakeServerRequest.h"

#include <Poco/DeflatingStream.h>
#include <Poco/Exception.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/SocketAddress.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using Orvi::Command::HttpRequest;
using Orvi::Command::UrlPath;

namespace
{

// Method, address and the bytes of a body as they come from the socket.
using ServiceDB::Test::FakeServerRequest;

std::string compressed(const std::string& text, Poco::DeflatingStreamBuf::StreamType type)
{
    std::ostringstream bytes;
    Poco::DeflatingOutputStream deflater(bytes, type);
    deflater << text;
    deflater.close();
    return bytes.str();
}

const std::string JSON_BODY = R"({"color":"red","name":"door"})";

std::string thrownBy(const std::string& uri)
{
    FakeServerRequest request("GET", uri);
    try
    {
        const HttpRequest sut(request);
    }
    catch (const Poco::URISyntaxException& error)
    {
        return error.displayText();
    }
    return "nothing thrown";
}

std::string thrownWhileReading(const std::string& body, const std::string& coding)
{
    FakeServerRequest request("POST", "/s/r", body);
    request.set("Content-Encoding", coding);
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    try
    {
        const HttpRequest sut(request, coder);
    }
    catch (const Poco::IOException& error)
    {
        return error.displayText();
    }
    return "nothing thrown";
}

} // namespace

TEST(HttpRequest, TakesMethodAndAddressAsTheyStand)
{
    FakeServerRequest request("GET", "/s/r/e");

    const HttpRequest sut(request);

    EXPECT_EQ(sut.getType(), HttpRequest::GET);
    EXPECT_EQ(sut.getUri().toString(), "/s/r/e");
    EXPECT_EQ(sut.getUrlPath().getCharacteristic(), UrlPath::SERVICE_RESOURCE_OBJECT);
    EXPECT_EQ(sut.getUrlPath().getElement(), "e");
    EXPECT_EQ(&sut.getHttpRequest(), &request);
}

TEST(HttpRequest, HasNoMessageWithoutBody)
{
    FakeServerRequest request("POST", "/s/r");

    const HttpRequest sut(request);

    EXPECT_FALSE(sut.hasMessage());
    EXPECT_EQ(sut.getMessage(), "");
}

TEST(HttpRequest, NumbersTheRequestTypes)
{
    EXPECT_EQ(HttpRequest::UNSUPPORTED, 0);
    EXPECT_EQ(HttpRequest::GET, 1);
    EXPECT_EQ(HttpRequest::HEAD, 2);
    EXPECT_EQ(HttpRequest::POST, 3);
    EXPECT_EQ(HttpRequest::PUT, 4);
    EXPECT_EQ(HttpRequest::DELETE, 5);
}

TEST(HttpRequest, KnowsEachSupportedMethod)
{
    FakeServerRequest head("HEAD", "/");
    FakeServerRequest post("POST", "/");
    FakeServerRequest put("PUT", "/");
    FakeServerRequest remove("DELETE", "/");

    EXPECT_EQ(HttpRequest(head).getType(), HttpRequest::HEAD);
    EXPECT_EQ(HttpRequest(post).getType(), HttpRequest::POST);
    EXPECT_EQ(HttpRequest(put).getType(), HttpRequest::PUT);
    EXPECT_EQ(HttpRequest(remove).getType(), HttpRequest::DELETE);
}

TEST(HttpRequest, CallsOtherMethodsUnsupported)
{
    FakeServerRequest options("OPTIONS", "/");
    FakeServerRequest patch("PATCH", "/");
    FakeServerRequest lowerCase("get", "/");
    FakeServerRequest empty("", "/");

    EXPECT_EQ(HttpRequest(options).getType(), HttpRequest::UNSUPPORTED);
    EXPECT_EQ(HttpRequest(patch).getType(), HttpRequest::UNSUPPORTED);
    EXPECT_EQ(HttpRequest(lowerCase).getType(), HttpRequest::UNSUPPORTED);
    EXPECT_EQ(HttpRequest(empty).getType(), HttpRequest::UNSUPPORTED);
}

TEST(HttpRequest, HasNoCriteriaWithoutQuery)
{
    FakeServerRequest request("GET", "/s/r");

    const HttpRequest sut(request);

    EXPECT_FALSE(sut.hasAnyCriteria());
}

TEST(HttpRequest, ReadsTheCriteriaOfTheQuery)
{
    FakeServerRequest request("GET", "/s/r?$q=door&color=red");

    const HttpRequest sut(request);

    EXPECT_TRUE(sut.hasFreetextCriteria());
    EXPECT_TRUE(sut.hasAttributeCriteria());
    EXPECT_FALSE(sut.hasRenderCriteria());
}

TEST(HttpRequest, KeepsAnAddressOfNoKnownKind)
{
    FakeServerRequest request("GET", "/s/r/e/x");

    const HttpRequest sut(request);

    EXPECT_FALSE(sut.getUrlPath().isValid());
    EXPECT_EQ(sut.getUri().toString(), "/s/r/e/x");
}

TEST(HttpRequest, RejectsAPathThatDoesNotDecode)
{
    FakeServerRequest request("GET", "/s%zz");

    EXPECT_THROW(HttpRequest sut(request), Poco::URISyntaxException);
    EXPECT_EQ(thrownBy("/s%zz"), "Bad URI syntax: URI encoding: not a hex digit");
}

TEST(HttpRequest, RejectsAQueryThatDoesNotDecode)
{
    FakeServerRequest request("GET", "/s/r?name=%zz");

    EXPECT_THROW(HttpRequest sut(request), Poco::URISyntaxException);
    EXPECT_EQ(thrownBy("/s/r?name=%zz"), "Bad URI syntax: URI encoding: not a hex digit");
}

TEST(HttpRequest, RejectsAnAddressWithABadPort)
{
    EXPECT_EQ(thrownBy("http://host:port/s"), "Bad URI syntax: bad or invalid port number: port");
}

TEST(HttpRequest, RejectsAMalformedReservedParameter)
{
    FakeServerRequest request("GET", "/s/r?$limit=abc");

    EXPECT_THROW(HttpRequest sut(request), Poco::URISyntaxException);
    EXPECT_EQ(thrownBy("/s/r?$limit=abc"), "Bad URI syntax: invalid value of $limit: abc");
}

TEST(HttpRequest, ReadsAPlainBodyThroughTheCoder)
{
    FakeServerRequest request("POST", "/s/r", JSON_BODY);
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);

    const HttpRequest sut(request, coder);

    EXPECT_TRUE(sut.hasMessage());
    EXPECT_EQ(sut.getMessage(), JSON_BODY);
    EXPECT_EQ(sut.getType(), HttpRequest::POST);
    EXPECT_EQ(sut.getUrlPath().getCharacteristic(), UrlPath::SERVICE_RESOURCE);
    EXPECT_EQ(&sut.getHttpRequest(), &request);
}

TEST(HttpRequest, DecodesAGzipBody)
{
    FakeServerRequest request("POST", "/s/r", compressed(JSON_BODY, Poco::DeflatingStreamBuf::STREAM_GZIP));
    request.set("Content-Encoding", "gzip");
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);

    const HttpRequest sut(request, coder);

    EXPECT_EQ(sut.getMessage(), JSON_BODY);
}

TEST(HttpRequest, DecodesADeflateBody)
{
    FakeServerRequest request("POST", "/s/r", compressed(JSON_BODY, Poco::DeflatingStreamBuf::STREAM_ZLIB));
    request.set("Content-Encoding", "deflate");
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);

    const HttpRequest sut(request, coder);

    EXPECT_EQ(sut.getMessage(), JSON_BODY);
}

TEST(HttpRequest, HasNoMessageForAnEmptyCompressedBody)
{
    FakeServerRequest request("DELETE", "/s/r/e");
    request.set("Content-Encoding", "gzip");
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);

    const HttpRequest sut(request, coder);

    EXPECT_FALSE(sut.hasMessage());
    EXPECT_EQ(sut.getType(), HttpRequest::DELETE);
}

TEST(HttpRequest, RaisesAnIOErrorForACorruptCompressedBody)
{
    FakeServerRequest request("POST", "/s/r", "this is not gzip");
    request.set("Content-Encoding", "gzip");
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);

    EXPECT_THROW(HttpRequest sut(request, coder), Poco::IOException);
    EXPECT_EQ(thrownWhileReading("this is not gzip", "gzip"), "I/O error: data error");
}

TEST(HttpRequest, ParsesTheAddressBeforeReadingTheBody)
{
    FakeServerRequest request("POST", "/s/r?$limit=abc", "this is not gzip");
    request.set("Content-Encoding", "gzip");
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);

    EXPECT_THROW(HttpRequest sut(request, coder), Poco::URISyntaxException);
    EXPECT_EQ(request.stream().tellg(), 0);
}

TEST(HttpRequest, ReadsCriteriaAlongWithTheBody)
{
    FakeServerRequest request("POST", "/s/r?$fields=name", JSON_BODY);
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);

    const HttpRequest sut(request, coder);

    EXPECT_TRUE(sut.hasFieldsCriteria());
    EXPECT_EQ(sut.getMessage(), JSON_BODY);
}

TEST(HttpRequest, ReadsNoBodyWhenTheRequestGivesNoLength)
{
    FakeServerRequest request("POST", "/s/r", JSON_BODY);
    request.setContentLength(Poco::Net::HTTPMessage::UNKNOWN_CONTENT_LENGTH);
    Poco::Net::HTTPResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);

    const HttpRequest sut(request, coder);

    EXPECT_FALSE(sut.hasMessage());
}
