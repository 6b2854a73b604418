#include "Http/ChunkedBodyReader.h"

#include "Http/BodyTooLargeException.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerSession.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::Net::ChunkedBodyReader;

/// A connection of the server, as a session, and the client's end of it.
class ChunkedBodyReaderTest : public ::testing::Test
{
protected:
    ChunkedBodyReaderTest()
        : listener(Poco::Net::SocketAddress("127.0.0.1", 0))
    {
        client.connect(listener.address());
        Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
        params->setTimeout(Poco::Timespan(0, 200000));
        session = std::make_unique<Poco::Net::HTTPServerSession>(listener.acceptConnection(), params);
    }

    void send(const std::string& bytes) { client.sendBytes(bytes.data(), static_cast<int>(bytes.size())); }

    std::string read(std::size_t maxBodySize = 100)
    {
        ChunkedBodyReader sut(*session);
        return sut.read(maxBodySize);
    }

    /// The message of the Poco::Net::MessageException that reading raises, or what else happened.
    std::string refusal(std::size_t maxBodySize = 100)
    {
        try
        {
            return "read \"" + read(maxBodySize) + "\"";
        }
        catch (const Poco::Net::MessageException& exception)
        {
            return exception.message();
        }
    }

    Poco::Net::ServerSocket listener;
    Poco::Net::StreamSocket client;
    std::unique_ptr<Poco::Net::HTTPServerSession> session;
};

TEST_F(ChunkedBodyReaderTest, JoinsTheChunksOfABody)
{
    send("5\r\nhello\r\n6\r\n world\r\n0\r\n\r\n");

    EXPECT_EQ(read(), "hello world");
}

TEST_F(ChunkedBodyReaderTest, ReadsSizesInEitherCaseAndPassesOverExtensionsAndTrailers)
{
    send("A;name=value\r\n0123456789\r\nb\r\nabcdefghijk\r\n0\r\nX-Checksum: 1\r\n\r\n");

    EXPECT_EQ(read(), "0123456789abcdefghijk");
}

TEST_F(ChunkedBodyReaderTest, RefusesAChunkSizeThatIsNotHexadecimal)
{
    send("zz\r\nhello\r\n0\r\n\r\n");

    EXPECT_EQ(refusal(), "malformed chunked body");
}

TEST_F(ChunkedBodyReaderTest, RefusesAnEmptyChunkSize)
{
    send("\r\nhello\r\n0\r\n\r\n");

    EXPECT_EQ(refusal(), "malformed chunked body");
}

TEST_F(ChunkedBodyReaderTest, RefusesAChunkSizeOfMoreThanFifteenDigits)
{
    send("0000000000000005\r\nhello\r\n0\r\n\r\n");

    EXPECT_EQ(refusal(), "malformed chunked body");
}

TEST_F(ChunkedBodyReaderTest, RefusesAChunkLongerThanItsSize)
{
    send("3\r\nhello\r\n0\r\n\r\n");

    EXPECT_EQ(refusal(), "malformed chunked body");
}

TEST_F(ChunkedBodyReaderTest, RefusesALineEndedByALineFeedAlone)
{
    send("5\nhello\r\n0\r\n\r\n");

    EXPECT_EQ(refusal(), "malformed chunked body");
}

TEST_F(ChunkedBodyReaderTest, CallsABodyIncompleteWhoseConnectionEndsBeforeTheLastChunk)
{
    send("5\r\nhello\r\n");
    client.shutdownSend();

    EXPECT_EQ(refusal(), "request body incomplete");
}

TEST_F(ChunkedBodyReaderTest, CallsABodyIncompleteWhoseConnectionEndsWithinAChunk)
{
    send("5\r\nhel");
    client.shutdownSend();

    EXPECT_EQ(refusal(), "request body incomplete");
}

TEST_F(ChunkedBodyReaderTest, RefusesChunksAddingUpToMoreThanTheLimitByMessage)
{
    send("5\r\nhello\r\n6\r\n world\r\n0\r\n\r\n");

    try
    {
        read(10);
        FAIL() << "a body beyond the limit was read";
    }
    catch (const Orvi::Net::BodyTooLargeException& exception)
    {
        EXPECT_EQ(exception.message(), "more than 10 bytes");
    }
}

TEST_F(ChunkedBodyReaderTest, ReadsABodyOfExactlyTheLimit)
{
    send("5\r\nhello\r\n6\r\n world\r\n0\r\n\r\n");

    EXPECT_EQ(read(11), "hello world");
}

TEST_F(ChunkedBodyReaderTest, GivesUpOnAClientThatStallsLongerThanTheSessionsTimeOut)
{
    send("5\r\nhel");

    EXPECT_THROW(read(), Poco::TimeoutException);
}

} // namespace
