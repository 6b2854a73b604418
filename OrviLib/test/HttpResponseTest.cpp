#include "Command/HttpResponse.h"
#include "Http/HTTPEncoderDecoder.h"

#include <Poco/Exception.h>
#include <Poco/InflatingStream.h>
#include <Poco/JSON/Object.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/StreamCopier.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <utility>

using Orvi::Command::HttpResponse;
using Orvi::Command::ResponseObject;
using Poco::Net::HTTPResponse;

namespace
{

using ServiceDB::Test::toJson;

Poco::JSON::Object::Ptr makeObject(const std::string& key, const std::string& value)
{
    Poco::JSON::Object::Ptr object = new Poco::JSON::Object();
    object->set(key, value);
    return object;
}

// Records what goes on the wire, as the server's response does for a GET: send() writes the header and
// gives the body stream, sendBuffer() sets Content-Length to its bytes and writes header and bytes.
class RecordingServerResponse : public Poco::Net::HTTPServerResponse
{
public:
    RecordingServerResponse() { setVersion(HTTP_1_1); }

    void sendContinue() override { throw Poco::NotImplementedException("sendContinue"); }
    std::ostream& send() override
    {
        startSending();
        write(m_wire);
        return m_wire;
    }
    void sendFile(const std::string&, const std::string&) override
    {
        throw Poco::NotImplementedException("sendFile");
    }
    void sendBuffer(const void* buffer, std::size_t length) override
    {
        startSending();
        setContentLength64(static_cast<Poco::Int64>(length));
        setChunkedTransferEncoding(false);
        write(m_wire);
        m_wire.write(static_cast<const char*>(buffer), static_cast<std::streamsize>(length));
    }
    void redirect(const std::string&, HTTPStatus) override
    {
        throw Poco::NotImplementedException("redirect");
    }
    void requireAuthentication(const std::string&) override
    {
        throw Poco::NotImplementedException("requireAuthentication");
    }
    bool sent() const override { return m_sent; }

    std::string wire() const { return m_wire.str(); }
    std::string head() const
    {
        const std::string all = wire();
        return all.substr(0, all.find("\r\n\r\n") + 4);
    }
    std::string body() const
    {
        const std::string all = wire();
        return all.substr(all.find("\r\n\r\n") + 4);
    }

private:
    void startSending()
    {
        if (m_sent)
        {
            throw Poco::IllegalStateException("response already sent");
        }
        m_sent = true;
    }

    std::ostringstream m_wire;
    bool m_sent = false;
};

Poco::Net::HTTPRequest requestAccepting(const std::string& codings)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, "/s/r");
    if (!codings.empty())
    {
        request.set("Accept-Encoding", codings);
    }
    return request;
}

std::string inflated(const std::string& bytes, Poco::InflatingStreamBuf::StreamType type)
{
    std::istringstream compressed(bytes);
    Poco::InflatingInputStream inflater(compressed, type);
    std::string text;
    Poco::StreamCopier::copyToString(inflater, text);
    return text;
}

const std::string DOOR_JSON = R"({"name":"door"})";

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

TEST(HttpResponse, RendersAJsonBodyIntoTextOfTheSameBytesAndMediaType)
{
    HttpResponse sut;
    sut.setDataFromObject(makeObject("name", "door"));

    sut.renderBody();

    EXPECT_TRUE(sut.getJsonMsg().isNull());
    EXPECT_EQ(sut.getTextMsg(), R"({"name":"door"})");
    EXPECT_EQ(sut.getMimetype(), "application/json; charset=utf-8");
    EXPECT_EQ(sut.getBody(), R"({"name":"door"})");
}

TEST(HttpResponse, GivesTheHeldTextAsItsBodyBytesWithoutACopy)
{
    HttpResponse sut;
    sut.setDataFromText("plain", "text/plain");
    std::string rendered;

    const std::string& bytes = sut.bodyBytes(rendered);

    EXPECT_EQ(&bytes, &sut.getTextMsg());
    EXPECT_EQ(bytes, "plain");
    EXPECT_EQ(rendered, "");
}

TEST(HttpResponse, RendersAJsonBodyIntoTheGivenStringAsItsBodyBytes)
{
    HttpResponse sut;
    sut.setDataFromObject(makeObject("name", "door"));
    std::string rendered;

    const std::string& bytes = sut.bodyBytes(rendered);

    EXPECT_EQ(&bytes, &rendered);
    EXPECT_EQ(rendered, R"({"name":"door"})");
}

TEST(HttpResponse, KeepsATextBodyWhenRenderingIt)
{
    HttpResponse sut;
    sut.setDataFromText("plain", "text/plain");

    sut.renderBody();

    EXPECT_EQ(sut.getTextMsg(), "plain");
    EXPECT_EQ(sut.getMimetype(), "text/plain");
}

TEST(HttpResponse, StaysWithoutContentWhenRenderingNothing)
{
    HttpResponse sut;

    sut.renderBody();

    EXPECT_FALSE(sut.hasContent());
    EXPECT_EQ(sut.getBody(), "");
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

TEST(HttpResponse, NamesTheLocationHeader)
{
    EXPECT_EQ(HttpResponse::FIELD_LOCATION, "Location");
}

TEST(HttpResponse, SendsAJsonAnswerWithItsLength)
{
    const Poco::Net::HTTPRequest request = requestAccepting("");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setDataFromObject(makeObject("name", "door"));

    sut.send(response, coder, false);

    EXPECT_EQ(response.wire(), "HTTP/1.1 200 OK\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Content-Type: application/json; charset=utf-8\r\n"
                               "Content-Length: 15\r\n"
                               "\r\n"
                               R"({"name":"door"})");
}

TEST(HttpResponse, SendsTheStatusAndLocationOfACreatedObject)
{
    const Poco::Net::HTTPRequest request = requestAccepting("");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut = HttpResponse::createStatusOk(HTTPResponse::HTTP_CREATED);
    sut.setLocation("/s/r/4f1c");

    sut.send(response, coder, false);

    EXPECT_EQ(response.wire(), "HTTP/1.1 201 Created\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Location: /s/r/4f1c\r\n"
                               "Content-Type: application/json; charset=utf-8\r\n"
                               "Content-Length: 15\r\n"
                               "\r\n"
                               R"({"status":"ok"})");
}

TEST(HttpResponse, SendsAnErrorWithItsReason)
{
    const Poco::Net::HTTPRequest request = requestAccepting("");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    const HttpResponse sut = HttpResponse::createError(HTTPResponse::HTTP_NOT_FOUND, "no such service");

    sut.send(response, coder, false);

    EXPECT_EQ(response.wire(), "HTTP/1.1 404 Not Found\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Content-Type: application/json; charset=utf-8\r\n"
                               "Content-Length: 57\r\n"
                               "\r\n"
                               R"({"code":404,"message":"no such service","status":"error"})");
}

TEST(HttpResponse, SendsTextWithItsMediaType)
{
    const Poco::Net::HTTPRequest request = requestAccepting("");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setDataFromText("version not served", "text/plain; charset=utf-8");

    sut.send(response, coder, false);

    EXPECT_EQ(response.wire(), "HTTP/1.1 200 OK\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Content-Type: text/plain; charset=utf-8\r\n"
                               "Content-Length: 18\r\n"
                               "\r\n"
                               "version not served");
}

TEST(HttpResponse, SendsAnEmptyAnswerWithoutTypeAndWithLengthZero)
{
    const Poco::Net::HTTPRequest request = requestAccepting("gzip");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setStatus(HTTPResponse::HTTP_ACCEPTED);

    sut.send(response, coder, false);

    EXPECT_EQ(response.wire(), "HTTP/1.1 202 Accepted\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Content-Length: 0\r\n"
                               "\r\n");
}

TEST(HttpResponse, SendsTheLocationOfAnEmptyAnswer)
{
    const Poco::Net::HTTPRequest request = requestAccepting("");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setStatus(HTTPResponse::HTTP_CREATED);
    sut.setLocation("/s/r/4f1c");

    sut.send(response, coder, false);

    EXPECT_EQ(response.wire(), "HTTP/1.1 201 Created\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Location: /s/r/4f1c\r\n"
                               "Content-Length: 0\r\n"
                               "\r\n");
}

TEST(HttpResponse, SendsAGzipAnswerThatInflatesToTheJson)
{
    const Poco::Net::HTTPRequest request = requestAccepting("gzip, deflate");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setDataFromObject(makeObject("name", "door"));

    sut.send(response, coder, false);

    const std::string body = response.body();
    EXPECT_EQ(response.head(), "HTTP/1.1 200 OK\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Content-Type: application/json; charset=utf-8\r\n"
                               "Content-Encoding: gzip\r\n"
                               "Content-Length: " +
                                   std::to_string(body.size()) + "\r\n\r\n");
    EXPECT_EQ(inflated(body, Poco::InflatingStreamBuf::STREAM_GZIP), DOOR_JSON);
    EXPECT_EQ(body.substr(0, 2), "\x1f\x8b");
}

TEST(HttpResponse, SendsADeflateAnswerThatInflatesToTheJson)
{
    const Poco::Net::HTTPRequest request = requestAccepting("deflate");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setDataFromObject(makeObject("name", "door"));

    sut.send(response, coder, false);

    const std::string body = response.body();
    EXPECT_EQ(response.head(), "HTTP/1.1 200 OK\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Content-Type: application/json; charset=utf-8\r\n"
                               "Content-Encoding: deflate\r\n"
                               "Content-Length: " +
                                   std::to_string(body.size()) + "\r\n\r\n");
    EXPECT_EQ(inflated(body, Poco::InflatingStreamBuf::STREAM_ZLIB), DOOR_JSON);
}

TEST(HttpResponse, SendsOnlyTheHeadersForHead)
{
    const Poco::Net::HTTPRequest request = requestAccepting("");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setDataFromObject(makeObject("name", "door"));

    sut.send(response, coder, true);

    EXPECT_TRUE(response.sent());
    EXPECT_EQ(response.wire(), "HTTP/1.1 200 OK\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Content-Type: application/json; charset=utf-8\r\n"
                               "Content-Length: 15\r\n"
                               "\r\n");
}

TEST(HttpResponse, GivesHeadTheLengthOfTheCompressedAnswer)
{
    const Poco::Net::HTTPRequest request = requestAccepting("gzip");
    RecordingServerResponse full;
    Orvi::Net::HTTPEncoderDecoder fullCoder(request, full);
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setDataFromObject(makeObject("name", "door"));
    sut.send(full, fullCoder, false);

    sut.send(response, coder, true);

    EXPECT_EQ(response.wire(), full.head());
    EXPECT_EQ(response.get("Content-Length"), std::to_string(full.body().size()));
    EXPECT_EQ(response.get("Content-Encoding"), "gzip");
}

TEST(HttpResponse, SendsOnlyTheHeadersOfAnEmptyAnswerForHead)
{
    const Poco::Net::HTTPRequest request = requestAccepting("");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    const HttpResponse sut;

    sut.send(response, coder, true);

    EXPECT_EQ(response.wire(), "HTTP/1.1 200 OK\r\n"
                               "Vary: Accept-Encoding\r\n"
                               "Content-Length: 0\r\n"
                               "\r\n");
}

TEST(HttpResponse, SendsTheBodyAsItIsWhenTheClientRefusesEveryCoding)
{
    const Poco::Net::HTTPRequest request = requestAccepting("gzip;q=0, deflate;q=0");
    RecordingServerResponse response;
    Orvi::Net::HTTPEncoderDecoder coder(request, response);
    HttpResponse sut;
    sut.setDataFromObject(makeObject("name", "door"));

    sut.send(response, coder, false);

    EXPECT_FALSE(response.has("Content-Encoding"));
    EXPECT_EQ(response.body(), DOOR_JSON);
}
