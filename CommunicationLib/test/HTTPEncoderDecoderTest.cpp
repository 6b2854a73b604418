#include "Http/HTTPEncoderDecoder.h"

#include "Http/BodyTooLargeException.h"

#include <Poco/DeflatingStream.h>
#include <Poco/Exception.h>
#include <Poco/InflatingStream.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/StreamCopier.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace
{

using Orvi::Net::HTTPEncoderDecoder;

const std::string BODY =
    R"({"data":[{"id":"9b2f","name":"door","open":false},{"id":"77c1","name":"trunk"}]})";

std::string compress(const std::string& bytes, Poco::DeflatingStreamBuf::StreamType type)
{
    std::ostringstream out;
    Poco::DeflatingOutputStream deflater(out, type);
    deflater << bytes;
    deflater.close();
    return out.str();
}

std::string expand(const std::string& bytes, Poco::InflatingStreamBuf::StreamType type)
{
    std::istringstream in(bytes);
    Poco::InflatingInputStream inflater(in, type);
    inflater.exceptions(std::ios::badbit);
    std::string result;
    Poco::StreamCopier::copyToString(inflater, result);
    return result;
}

Poco::Net::HTTPRequest requestAccepting(const std::string& acceptEncoding)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/cars/doors");
    request.set("Accept-Encoding", acceptEncoding);
    return request;
}

Poco::Net::HTTPRequest requestEncodedAs(const std::string& contentEncoding)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_POST, "/cars/doors");
    request.set("Content-Encoding", contentEncoding);
    return request;
}

std::string chosenCoding(const std::string& acceptEncoding)
{
    const Poco::Net::HTTPRequest request = requestAccepting(acceptEncoding);
    Poco::Net::HTTPResponse response;
    const HTTPEncoderDecoder sut(request, response);
    return sut.contentEncoding();
}

TEST(HTTPEncoderDecoder, ChoosesGzipBeforeDeflate)
{
    const Poco::Net::HTTPRequest request = requestAccepting("deflate, gzip");
    Poco::Net::HTTPResponse response;

    const HTTPEncoderDecoder sut(request, response);

    EXPECT_TRUE(sut.isEncodingResponse());
    EXPECT_EQ(sut.contentEncoding(), "gzip");
}

TEST(HTTPEncoderDecoder, ChoosesDeflateWhenGzipIsNotAccepted)
{
    EXPECT_EQ(chosenCoding("deflate"), "deflate");
    EXPECT_EQ(chosenCoding("br, deflate;q=0.5"), "deflate");
}

TEST(HTTPEncoderDecoder, HonoursARefusalByZeroQuality)
{
    EXPECT_EQ(chosenCoding("gzip;q=0, deflate"), "deflate");
    EXPECT_EQ(chosenCoding("gzip; q=0.000, deflate;Q=0"), "");
}

TEST(HTTPEncoderDecoder, TakesAnUnreadableQualityAsARefusal)
{
    EXPECT_EQ(chosenCoding("gzip;q=high"), "");
}

TEST(HTTPEncoderDecoder, AcceptsCodingsThroughTheWildcardUnlessNamedOtherwise)
{
    EXPECT_EQ(chosenCoding("*"), "gzip");
    EXPECT_EQ(chosenCoding("gzip;q=0, *"), "deflate");
    EXPECT_EQ(chosenCoding("*;q=0, deflate"), "deflate");
}

TEST(HTTPEncoderDecoder, ReadsCodingNamesWithoutRegardToCaseAndKnowsTheOldGzipName)
{
    EXPECT_EQ(chosenCoding("GZip"), "gzip");
    EXPECT_EQ(chosenCoding("x-gzip"), "gzip");
}

TEST(HTTPEncoderDecoder, SendsIdentityForUnknownCodings)
{
    EXPECT_EQ(chosenCoding("br, identity"), "");
}

TEST(HTTPEncoderDecoder, SendsTheBodyAsItIsWithoutAcceptEncoding)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/cars/doors");
    Poco::Net::HTTPResponse response;

    const HTTPEncoderDecoder sut(request, response);

    EXPECT_FALSE(sut.isEncodingResponse());
    EXPECT_EQ(sut.contentEncoding(), "");
    EXPECT_EQ(sut.encodeBody(BODY), BODY);
}

TEST(HTTPEncoderDecoder, EncodesAnAnswerAsGzip)
{
    const Poco::Net::HTTPRequest request = requestAccepting("gzip, deflate");
    Poco::Net::HTTPResponse response;
    const HTTPEncoderDecoder sut(request, response);

    const std::string encoded = sut.encodeBody(BODY);

    ASSERT_GE(encoded.size(), 2U);
    EXPECT_EQ(encoded.substr(0, 2), "\x1f\x8b");
    EXPECT_EQ(expand(encoded, Poco::InflatingStreamBuf::STREAM_GZIP), BODY);
}

TEST(HTTPEncoderDecoder, EncodesAnAnswerAsDeflateInTheZlibFormat)
{
    const Poco::Net::HTTPRequest request = requestAccepting("deflate");
    Poco::Net::HTTPResponse response;
    const HTTPEncoderDecoder sut(request, response);

    const std::string encoded = sut.encodeBody(BODY);

    ASSERT_FALSE(encoded.empty());
    EXPECT_EQ(encoded[0], '\x78');
    EXPECT_EQ(expand(encoded, Poco::InflatingStreamBuf::STREAM_ZLIB), BODY);
}

TEST(HTTPEncoderDecoder, StreamsAnEncodedAnswerThatTheDestructorCompletes)
{
    const Poco::Net::HTTPRequest request = requestAccepting("gzip");
    Poco::Net::HTTPResponse response;
    std::ostringstream out;

    {
        HTTPEncoderDecoder sut(request, response);
        sut.encodingStream(out) << BODY;
    }

    EXPECT_EQ(expand(out.str(), Poco::InflatingStreamBuf::STREAM_GZIP), BODY);
}

TEST(HTTPEncoderDecoder, CompletesAStreamedAnswerOnFinish)
{
    const Poco::Net::HTTPRequest request = requestAccepting("deflate");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::ostringstream out;
    sut.encodingStream(out) << BODY;

    sut.finishEncoding();

    EXPECT_EQ(expand(out.str(), Poco::InflatingStreamBuf::STREAM_ZLIB), BODY);
}

TEST(HTTPEncoderDecoder, StreamsAnIdentityAnswerIntoTheGivenStream)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/cars/doors");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::ostringstream out;

    std::ostream& stream = sut.encodingStream(out);

    EXPECT_EQ(&stream, &out);
}

TEST(HTTPEncoderDecoder, AddsAcceptEncodingToVary)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/cars/doors");
    Poco::Net::HTTPResponse response;

    const HTTPEncoderDecoder sut(request, response);

    EXPECT_EQ(response.get("Vary"), "Accept-Encoding");
}

TEST(HTTPEncoderDecoder, AddsAcceptEncodingToAVaryHeaderThatIsAlreadySet)
{
    const Poco::Net::HTTPRequest request = requestAccepting("gzip");
    Poco::Net::HTTPResponse response;
    response.set("Vary", "Origin");

    const HTTPEncoderDecoder sut(request, response);

    EXPECT_EQ(response.get("Vary"), "Origin, Accept-Encoding");
}

TEST(HTTPEncoderDecoder, DoesNotRepeatAcceptEncodingInVary)
{
    const Poco::Net::HTTPRequest request = requestAccepting("gzip");
    Poco::Net::HTTPResponse response;
    response.set("Vary", "Origin, accept-encoding");

    const HTTPEncoderDecoder sut(request, response);

    EXPECT_EQ(response.get("Vary"), "Origin, accept-encoding");
}

TEST(HTTPEncoderDecoder, DecodesAGzipEncodedBody)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("gzip");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body(compress(BODY, Poco::DeflatingStreamBuf::STREAM_GZIP));

    const std::string decoded = sut.readBody(body);

    EXPECT_TRUE(sut.isDecodingRequest());
    EXPECT_EQ(decoded, BODY);
}

TEST(HTTPEncoderDecoder, ReadsABodyOfExactlyTheLimit)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("gzip");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body(compress(BODY, Poco::DeflatingStreamBuf::STREAM_GZIP));

    const std::string decoded = sut.readBody(body, BODY.size());

    EXPECT_EQ(decoded, BODY);
}

TEST(HTTPEncoderDecoder, RaisesBodyTooLargeForABodyThatDecodesBeyondTheLimit)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("gzip");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body(compress(std::string(20000, 'x'), Poco::DeflatingStreamBuf::STREAM_GZIP));

    try
    {
        sut.readBody(body, 19999);
        FAIL() << "no exception";
    }
    catch (const Orvi::Net::BodyTooLargeException& e)
    {
        EXPECT_EQ(e.displayText(), "Request body too large: more than 19999 bytes");
    }
}

TEST(HTTPEncoderDecoder, RaisesBodyTooLargeForAPlainBodyBeyondTheLimit)
{
    const Poco::Net::HTTPRequest request;
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body("12345");

    EXPECT_THROW(sut.readBody(body, 4), Orvi::Net::BodyTooLargeException);
}

TEST(HTTPEncoderDecoder, DecodesADeflateEncodedBody)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("Deflate");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body(compress(BODY, Poco::DeflatingStreamBuf::STREAM_ZLIB));

    const std::string decoded = sut.readBody(body);

    EXPECT_TRUE(sut.isDecodingRequest());
    EXPECT_EQ(decoded, BODY);
}

TEST(HTTPEncoderDecoder, DecodesThroughTheDecodingStream)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("gzip");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body(compress(BODY, Poco::DeflatingStreamBuf::STREAM_GZIP));

    std::string decoded;
    Poco::StreamCopier::copyToString(sut.decodingStream(body), decoded);

    EXPECT_EQ(decoded, BODY);
}

TEST(HTTPEncoderDecoder, ReadsAnUnencodedBodyAsItIs)
{
    const Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_POST, "/cars/doors");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body(BODY);

    std::istream& stream = sut.decodingStream(body);
    const std::string decoded = sut.readBody(body);

    EXPECT_FALSE(sut.isDecodingRequest());
    EXPECT_EQ(&stream, &body);
    EXPECT_EQ(decoded, BODY);
}

TEST(HTTPEncoderDecoder, ReadsABodyOfAnUnknownCodingAsItIs)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("br");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body("\x0b\x02\x80raw");

    const std::string decoded = sut.readBody(body);

    EXPECT_FALSE(sut.isDecodingRequest());
    EXPECT_EQ(decoded, "\x0b\x02\x80raw");
}

TEST(HTTPEncoderDecoder, ReadsAnEmptyEncodedBodyAsEmpty)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("gzip");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body("");

    EXPECT_EQ(sut.readBody(body), "");
}

TEST(HTTPEncoderDecoder, RaisesOnACorruptGzipBody)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("gzip");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    std::istringstream body(BODY);
    std::string message;

    EXPECT_THROW(
        {
            try
            {
                sut.readBody(body);
            }
            catch (const Poco::IOException& e)
            {
                message = e.displayText();
                throw;
            }
        },
        Poco::IOException);
    EXPECT_EQ(message, "I/O error: data error");
}

TEST(HTTPEncoderDecoder, RaisesOnATruncatedDeflateBody)
{
    const Poco::Net::HTTPRequest request = requestEncodedAs("deflate");
    Poco::Net::HTTPResponse response;
    HTTPEncoderDecoder sut(request, response);
    const std::string encoded = compress(BODY, Poco::DeflatingStreamBuf::STREAM_ZLIB);
    std::istringstream body(encoded.substr(0, encoded.size() / 2));
    std::string message;

    EXPECT_THROW(
        {
            try
            {
                sut.readBody(body);
            }
            catch (const Poco::IOException& e)
            {
                message = e.displayText();
                throw;
            }
        },
        Poco::IOException);
    EXPECT_EQ(message, "I/O error: buffer error");
}

} // namespace
