#include "Http/BufferedServerRequest.h"

#include "Http/BodyTooLargeException.h"
#include "TestSupport/FakeServerRequest.h"

#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/NetException.h>
#include <Poco/StreamCopier.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::Net::BufferedServerRequest;
using Poco::Net::HTTPRequest;
using ServiceDB::Test::FakeServerRequest;

std::string readAll(std::istream& stream)
{
    std::string text;
    Poco::StreamCopier::copyToString(stream, text);
    return text;
}

TEST(BufferedServerRequestTest, TakesTheHeadOfTheRequestItWasMadeFrom)
{
    FakeServerRequest request(HTTPRequest::HTTP_POST, "/vehicle/speed?$fields=value", "{}");
    request.set("Content-Encoding", "gzip");

    const BufferedServerRequest sut(request, 100);

    EXPECT_EQ(sut.getMethod(), "POST");
    EXPECT_EQ(sut.getURI(), "/vehicle/speed?$fields=value");
    EXPECT_EQ(sut.getVersion(), "HTTP/1.1");
    EXPECT_EQ(sut.get("Content-Encoding"), "gzip");
    EXPECT_EQ(sut.getContentLength(), 2);
}

TEST(BufferedServerRequestTest, GivesTheBodyAsSentThroughItsStream)
{
    FakeServerRequest request(HTTPRequest::HTTP_POST, "/vehicle/speed", "{\"value\":88}");

    BufferedServerRequest sut(request, 100);

    EXPECT_EQ(sut.body(), "{\"value\":88}");
    EXPECT_EQ(readAll(sut.stream()), "{\"value\":88}");
}

TEST(BufferedServerRequestTest, ReadsABodyOfExactlyTheLimit)
{
    FakeServerRequest request(HTTPRequest::HTTP_POST, "/vehicle/speed", "{\"value\":88}");

    const BufferedServerRequest sut(request, 12);

    EXPECT_EQ(sut.body(), "{\"value\":88}");
}

TEST(BufferedServerRequestTest, LeavesABodyAnnouncedLongerThanTheLimitUnreadForTheReceiverToRefuse)
{
    FakeServerRequest request(HTTPRequest::HTTP_POST, "/vehicle/speed", "{\"value\":88}");

    const BufferedServerRequest sut(request, 11);

    EXPECT_EQ(sut.body(), "");
    EXPECT_EQ(readAll(request.stream()), "{\"value\":88}");
}

TEST(BufferedServerRequestTest, RefusesChunksThatAddUpToMoreThanTheLimit)
{
    FakeServerRequest request(HTTPRequest::HTTP_POST, "/vehicle/speed", "{\"value\":88}");
    request.setContentLength(HTTPRequest::UNKNOWN_CONTENT_LENGTH);
    request.setChunkedTransferEncoding(true);

    try
    {
        const BufferedServerRequest sut(request, 11);
        FAIL() << "a body beyond the limit was accepted";
    }
    catch (const Orvi::Net::BodyTooLargeException& exception)
    {
        EXPECT_EQ(exception.message(), "more than 11 bytes");
    }
}

TEST(BufferedServerRequestTest, CallsABodyIncompleteThatEndsBeforeItsLength)
{
    FakeServerRequest request(HTTPRequest::HTTP_POST, "/vehicle/speed", "{\"value\":88}");
    request.setContentLength(100);

    try
    {
        const BufferedServerRequest sut(request, 1000);
        FAIL() << "a body shorter than announced was accepted";
    }
    catch (const Poco::Net::MessageException& exception)
    {
        EXPECT_EQ(exception.message(), "request body incomplete");
    }
}

TEST(BufferedServerRequestTest, PassesOnTheAddressesOfTheConnection)
{
    FakeServerRequest request(HTTPRequest::HTTP_POST, "/vehicle/speed", "{}");
    request.setClientAddress(Poco::Net::SocketAddress("127.0.0.1", 40123));
    request.setServerAddress(Poco::Net::SocketAddress("127.0.0.1", 8123));

    const BufferedServerRequest sut(request, 100);

    EXPECT_EQ(sut.clientAddress().toString(), "127.0.0.1:40123");
    EXPECT_EQ(sut.serverAddress().toString(), "127.0.0.1:8123");
    EXPECT_FALSE(sut.secure());
}

TEST(BufferedServerRequestTest, SeesABodyInAPositiveLengthOrInChunksOnly)
{
    HTTPRequest none(HTTPRequest::HTTP_POST, "/vehicle/speed");
    HTTPRequest empty(HTTPRequest::HTTP_POST, "/vehicle/speed");
    empty.setContentLength(0);
    HTTPRequest sized(HTTPRequest::HTTP_POST, "/vehicle/speed");
    sized.setContentLength(1);
    HTTPRequest chunked(HTTPRequest::HTTP_POST, "/vehicle/speed");
    chunked.setChunkedTransferEncoding(true);

    EXPECT_FALSE(BufferedServerRequest::hasBody(none));
    EXPECT_FALSE(BufferedServerRequest::hasBody(empty));
    EXPECT_TRUE(BufferedServerRequest::hasBody(sized));
    EXPECT_TRUE(BufferedServerRequest::hasBody(chunked));
}

} // namespace
