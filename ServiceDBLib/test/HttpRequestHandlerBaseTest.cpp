#include "HttpRequestHandlerBase.h"

#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/JSONDataCache.h"
#include "JSONTools.h"
#include "Message/DataMessageBase.h"
#include "Message/MessageSync.h"
#include "TestSupport/FakeServerRequest.h"
#include "TestSupport/FakeServerResponse.h"
#include "TestSupport/LocalHttpServer.h"
#include "TestSupport/LogCapture.h"
#include "VersionCheck.h"

#include <Poco/DeflatingStream.h>
#include <Poco/Event.h>
#include <Poco/Exception.h>
#include <Poco/InflatingStream.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/StreamCopier.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using Orvi::Command::HttpRequest;
using Orvi::Command::HttpResponse;
using Poco::Net::HTTPRequest;
using Poco::Net::HTTPResponse;
using ServiceDB::Test::LogCapture;
using Status = HTTPResponse::HTTPStatus;
using Lines = std::vector<std::string>;
using Headers = std::map<std::string, std::string>;

constexpr long WAIT_LIMIT_MS = 10000;
const std::string VEHICLE_UUID = "0d4c1a6e-5b7f-4c2a-9e31-7a8b9c0d1e2f";
const std::string MEDIA_UUID = "6f1e2d3c-4b5a-4978-8695-a4b3c2d1e0f9";

using Processor = std::function<Status(const HttpRequest&, HttpResponse&)>;

/// What the test handlers do for POST and DELETE, and what they saw.
struct Script
{
    Processor post = [](const HttpRequest&, HttpResponse&) { return HTTPResponse::HTTP_CREATED; };
    Processor del = [](const HttpRequest&, HttpResponse&) { return HTTPResponse::HTTP_OK; };
    std::atomic<int> calls{0};
    std::size_t maxBodySize = Orvi::HttpRequestHandlerBase::DEFAULT_MAX_BODY_SIZE;
};

/// A microservice's handler: GET and HEAD read the catalogue on the port the request came in on,
/// after the version check; POST and DELETE run the script.
class CatalogueHandler : public Orvi::HttpRequestHandlerBase
{
public:
    CatalogueHandler(Orvi::Util::MessageSync& worker, Orvi::JSONDataCache::JSONDataCache& cache,
                     Script& script)
        : Orvi::HttpRequestHandlerBase(worker)
        , m_cache(cache)
        , m_script(script)
    {
        setMaxBodySize(script.maxBodySize);
    }

    using Orvi::HttpRequestHandlerBase::processRequestSync;

protected:
    Status processGetRequest(const HttpRequest& request, HttpResponse& response, const Poco::URI&,
                             const std::vector<std::string>&) override
    {
        ++m_script.calls;
        const std::string& serviceName = request.getUrlPath().getService();
        const Orvi::DBData::Service::Ptr service = m_cache.selectService(serviceName);
        if (service && !Orvi::Service::VersionCheck::acceptedVersionMatches(request.getHttpRequest(),
                                                                            service->getVersions()))
        {
            response.setMimetype("application/json");
            response.setDataFromText(Orvi::Service::VersionCheck::msgVersionNotImplemented, "text/plain");
            return HTTPResponse::HTTP_OK;
        }
        return m_cache.queryCache(request, response, request.getHttpRequest().serverAddress().port());
    }

    Status processHeadRequest(const HttpRequest& request, HttpResponse& response, const Poco::URI& uri,
                              const std::vector<std::string>& segments) override
    {
        return processGetRequest(request, response, uri, segments);
    }

    Status processPostRequest(const HttpRequest& request, HttpResponse& response, const Poco::URI&,
                              const std::vector<std::string>&) override
    {
        ++m_script.calls;
        return m_script.post(request, response);
    }

    Status processDeleteRequest(const HttpRequest& request, HttpResponse& response, const Poco::URI&,
                                const std::vector<std::string>&) override
    {
        ++m_script.calls;
        return m_script.del(request, response);
    }

private:
    Orvi::JSONDataCache::JSONDataCache& m_cache;
    Script& m_script;
};

class CatalogueHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    CatalogueHandlerFactory(Orvi::Util::MessageSync& worker, Orvi::JSONDataCache::JSONDataCache& cache,
                            Script& script)
        : m_worker(worker)
        , m_cache(cache)
        , m_script(script)
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new CatalogueHandler(m_worker, m_cache, m_script);
    }

private:
    Orvi::Util::MessageSync& m_worker;
    Orvi::JSONDataCache::JSONDataCache& m_cache;
    Script& m_script;
};

/// Holds the worker inside a message until the test opens the gate.
class GateMessage : public Orvi::Util::DataMessageBase
{
public:
    GateMessage(Poco::Event& entered, Poco::Event& open)
        : m_entered(entered)
        , m_open(open)
    {
    }

    void processData() override
    {
        m_entered.set();
        m_open.wait();
    }

private:
    Poco::Event& m_entered;
    Poco::Event& m_open;
};

class IdleMessage : public Orvi::Util::DataMessageBase
{
public:
    void processData() override {}
};

struct Answer
{
    int status = 0;
    std::string reason;
    Headers headers;
    std::string body;

    std::string header(const std::string& name) const
    {
        const auto found = headers.find(name);
        return found == headers.end() ? std::string() : found->second;
    }
};

Orvi::DBData::Service::StringList makeList(const std::vector<std::string>& texts)
{
    Orvi::DBData::Service::StringList list;
    for (const std::string& text : texts)
    {
        list.emplace_back(new std::string(text));
    }
    return list;
}

std::string inflate(const std::string& bytes, Poco::InflatingStreamBuf::StreamType type)
{
    std::istringstream compressed(bytes);
    Poco::InflatingInputStream inflater(compressed, type);
    std::string plain;
    Poco::StreamCopier::copyToString(inflater, plain);
    return plain;
}

std::string gzip(const std::string& plain)
{
    std::ostringstream compressed;
    Poco::DeflatingOutputStream deflater(compressed, Poco::DeflatingStreamBuf::STREAM_GZIP);
    deflater << plain;
    deflater.close();
    return compressed.str();
}

std::string errorBody(int code, const std::string& message)
{
    return "{\"code\":" + std::to_string(code) + ",\"message\":\"" + message + "\",\"status\":\"error\"}";
}

class HttpRequestHandlerBaseTest : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 2;

    HttpRequestHandlerBaseTest()
        : worker(CRITICAL_QUEUE_SIZE)
        , cache(services)
        , server(new CatalogueHandlerFactory(worker, cache, script))
    {
        addService("vehicle", VEHICLE_UUID, server.port(), "Vehicle data", {"1.0.3"});
        addService("media", MEDIA_UUID, static_cast<Poco::UInt16>(server.port() + 1), "Media player",
                   {"2.0.0"});
        Orvi::DBData::Resource::Ptr speed = new Orvi::DBData::Resource(*services["vehicle"]);
        speed->setName("speed");
        speed->setDescription("Current speed");
        services["vehicle"]->addResource(speed);
        worker.start();
    }

    void addService(const std::string& name, const std::string& uuid, Poco::UInt16 port,
                    const std::string& description, const std::vector<std::string>& versions)
    {
        Orvi::DBData::Service::Ptr service = new Orvi::DBData::Service;
        service->setName(name);
        service->setUUID(Orvi::DBData::UUID(uuid));
        service->setPort(port);
        service->setDescription(description);
        service->setVersions(makeList(versions));
        service->setPrivileges(makeList({"read"}));
        services[name] = service;
    }

    Answer exchange(const std::string& method, const std::string& uri, const Headers& headers = {},
                    const std::string& body = "")
    {
        Poco::Net::HTTPClientSession session("127.0.0.1", server.port());
        session.setTimeout(Poco::Timespan(10, 0));
        HTTPRequest request(method, uri, HTTPRequest::HTTP_1_1);
        for (const auto& [name, value] : headers)
        {
            request.set(name, value);
        }
        if (!body.empty())
        {
            request.setContentLength(static_cast<std::streamsize>(body.size()));
        }
        session.sendRequest(request) << body;
        HTTPResponse response;
        std::istream& in = session.receiveResponse(response);
        Answer answer;
        answer.status = response.getStatus();
        answer.reason = response.getReason();
        for (const auto& [name, value] : response)
        {
            answer.headers[name] = value;
        }
        Poco::StreamCopier::copyToString(in, answer.body);
        return answer;
    }

    /// Sends the bytes as they are and reads what comes back until the server closes the connection.
    std::string exchangeRaw(const std::string& bytes)
    {
        Poco::Net::StreamSocket socket = openExchange("");
        return finishExchange(socket, bytes);
    }

    /// Opens a connection and sends the first bytes of an exchange.
    Poco::Net::StreamSocket openExchange(const std::string& bytes)
    {
        Poco::Net::StreamSocket socket(Poco::Net::SocketAddress("127.0.0.1", server.port()));
        socket.setReceiveTimeout(Poco::Timespan(10, 0));
        socket.sendBytes(bytes.data(), static_cast<int>(bytes.size()));
        return socket;
    }

    /// Sends the rest of an exchange and reads what comes back until the server closes the connection.
    static std::string finishExchange(Poco::Net::StreamSocket& socket, const std::string& bytes)
    {
        socket.sendBytes(bytes.data(), static_cast<int>(bytes.size()));
        std::string received;
        char buffer[4096];
        int length = 0;
        while ((length = socket.receiveBytes(buffer, sizeof buffer)) > 0)
        {
            received.append(buffer, static_cast<std::size_t>(length));
        }
        return received;
    }

    /// Expects the raw answer to be an error answer with the given status line and body that closes the
    /// connection.
    void expectRefusedAndClosed(const std::string& received, const std::string& statusLine, int code,
                                const std::string& message)
    {
        EXPECT_EQ(received.substr(0, received.find("\r\n")), statusLine);
        EXPECT_NE(received.find("\r\nConnection: Close\r\n"), std::string::npos) << received;
        EXPECT_EQ(received.substr(received.find("\r\n\r\n") + 4), errorBody(code, message));
    }

    void expectTheServerToAnswerTheNextClient()
    {
        EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, "/").status, HTTPResponse::HTTP_OK);
    }

    /// Runs one exchange on this thread, as the worker would, into a response that records it.
    ServiceDB::Test::FakeServerResponse answerDirectly(const std::string& method, const std::string& uri)
    {
        ServiceDB::Test::FakeServerRequest request(method, uri);
        request.setServerAddress(Poco::Net::SocketAddress("127.0.0.1", server.port()));
        ServiceDB::Test::FakeServerResponse response;
        CatalogueHandler sut(worker, cache, script);
        sut.processRequestSync(request, response);
        return response;
    }

    std::string vehicleRootRecord() const
    {
        return "{\"description\":\"Vehicle data\",\"id\":\"" + VEHICLE_UUID +
               "\",\"name\":\"vehicle\",\"port\":" + std::to_string(server.port()) +
               ",\"serviceCategories\":[],\"uri\":\"/vehicle/\",\"versions\":[\"1.0.3\"]}";
    }

    std::string rootBody() const
    {
        return "{\"data\":[{\"description\":\"Media player\",\"id\":\"" + MEDIA_UUID +
               "\",\"name\":\"media\",\"port\":" + std::to_string(server.port() + 1) +
               ",\"serviceCategories\":[],\"uri\":\"/media/\",\"versions\":[\"2.0.0\"]}," +
               vehicleRootRecord() + "],\"status\":\"ok\"}";
    }

    /// Occupies the worker and fills the queue up to its critical size.
    void fillTheQueue()
    {
        worker.enqueueDataMessage(new GateMessage(gateEntered, gateOpen), Orvi::Util::MESSAGE_PRIO_NORMAL);
        ASSERT_TRUE(gateEntered.tryWait(WAIT_LIMIT_MS));
        for (std::size_t i = 0; i < CRITICAL_QUEUE_SIZE; ++i)
        {
            worker.enqueueDataMessage(new IdleMessage, Orvi::Util::MESSAGE_PRIO_NORMAL);
        }
        ASSERT_TRUE(worker.isCriticalQueueSizeReached());
    }

    ~HttpRequestHandlerBaseTest() override
    {
        // The gate message must be done before the events it waits on are destroyed.
        gateOpen.set();
        worker.stop();
    }

    Orvi::DBData::ServiceMap services;
    Script script;
    Orvi::Util::MessageSync worker;
    Orvi::JSONDataCache::JSONDataCache cache;
    Poco::Event gateEntered;
    Poco::Event gateOpen;
    ServiceDB::Test::LocalHttpServer server;
};

TEST_F(HttpRequestHandlerBaseTest, AnswersAGetOfTheRootWithTheCatalogueOfAllPorts)
{
    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.header("Content-Type"), "application/json; charset=utf-8");
    EXPECT_EQ(answer.body, rootBody());
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAGetOfAServiceWithItsResources)
{
    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/vehicle/");

    EXPECT_EQ(answer.status, 200);
    Poco::JSON::Object::Ptr body;
    ASSERT_TRUE(Orvi::Util::JSONTools::parseJSONString(answer.body, body));
    body->remove("timestamp");
    std::ostringstream text;
    body->stringify(text);
    EXPECT_EQ(text.str(), "{\"data\":[{\"description\":\"Current speed\",\"id\":\"\",\"name\":\"speed\","
                          "\"uri\":\"/vehicle/speed/\"}],\"status\":\"ok\"}");
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAKeywordAsPlainText)
{
    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/vehicle/$id");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.header("Content-Type"), "text/plain");
    EXPECT_EQ(answer.body, VEHICLE_UUID);
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAServiceOfAnotherPortWith404AndAnErrorBody)
{
    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/media");

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404, ""));
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAnUnknownResourceWith500AndTheErrorLine)
{
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/vehicle/nothing");

    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, errorBody(500, ""));
    EXPECT_EQ(capture.lines(), Lines{"Error: Error in processRequest. Message: Null pointer"});
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAtOnceWith503WhileTheQueueIsAtItsCriticalSize)
{
    fillTheQueue();
    LogCapture capture;

    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/");

    EXPECT_EQ(answer.status, 503);
    EXPECT_EQ(answer.body, errorBody(503, "message data queue overflow"));
    EXPECT_EQ(script.calls, 0);
    EXPECT_EQ(worker.queueSize(), CRITICAL_QUEUE_SIZE);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(HttpRequestHandlerBaseTest, WritesNoAnswerWhenTheQueueRefusesTheMessage)
{
    worker.stop();
    LogCapture capture;

    EXPECT_THROW(exchange(HTTPRequest::HTTP_GET, "/"), Poco::Net::NoMessageException);

    EXPECT_EQ(capture.lines(), Lines{"Warning: handleRequest Could not enqueue message!"});
}

TEST_F(HttpRequestHandlerBaseTest, LeavesTheStatusAt500WhenTheQueueRefusesTheMessage)
{
    worker.stop();
    ServiceDB::Test::FakeServerRequest request(HTTPRequest::HTTP_GET, "/");
    ServiceDB::Test::FakeServerResponse response;
    CatalogueHandler sut(worker, cache, script);

    sut.handleRequest(request, response);

    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_FALSE(response.sent());
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAMalformedQueryWith400ForEveryMethodBeforeAnyProcessing)
{
    for (const std::string& method :
         {HTTPRequest::HTTP_GET, HTTPRequest::HTTP_POST, HTTPRequest::HTTP_DELETE})
    {
        LogCapture capture;

        const Answer answer = exchange(method, "/vehicle?$limit=abc");

        EXPECT_EQ(answer.status, 400) << method;
        EXPECT_EQ(answer.body, errorBody(400, "wrong URI syntax")) << method;
        ASSERT_FALSE(capture.lines().empty()) << method;
        EXPECT_EQ(capture.lines().back(), "Warning: Failed to parse URI (/vehicle?$limit=abc)") << method;
    }
    const ServiceDB::Test::FakeServerResponse head =
        answerDirectly(HTTPRequest::HTTP_HEAD, "/vehicle?$limit=abc");
    EXPECT_EQ(head.getStatus(), HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(head.body(), errorBody(400, "wrong URI syntax"));
    EXPECT_EQ(script.calls, 0);
}

TEST_F(HttpRequestHandlerBaseTest, LogsTheClientAndTheUnparsableAddressWordForWord)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const ServiceDB::Test::FakeServerResponse response =
        answerDirectly(HTTPRequest::HTTP_GET, "/vehicle?$expand=9");

    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), (Lines{"Info: Request from 127.0.0.1:40000",
                                      "Warning: Failed to parse URI (/vehicle?$expand=9)"}));
}

TEST_F(HttpRequestHandlerBaseTest, AnswersPatchWith405AndAnEmptyMessage)
{
    const Answer answer = exchange(HTTPRequest::HTTP_PATCH, "/vehicle");

    EXPECT_EQ(answer.status, 405);
    EXPECT_EQ(answer.body, errorBody(405, ""));
    EXPECT_EQ(script.calls, 0);
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAPreflightInTheCorsHandlerAndAnnouncesPatch)
{
    const Answer answer =
        exchange(HTTPRequest::HTTP_OPTIONS, "/vehicle",
                 {{"Origin", "http://hmi.local"}, {"Access-Control-Request-Method", "PATCH"}});

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.header("Access-Control-Allow-Origin"), "http://hmi.local");
    EXPECT_EQ(answer.header("Access-Control-Allow-Methods"), "GET, HEAD, POST, DELETE, OPTIONS, PATCH");
    EXPECT_EQ(answer.body, "");
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAnOptionsThatCorsPassesOnWith405)
{
    const Answer answer = exchange(HTTPRequest::HTTP_OPTIONS, "/vehicle", {{"Origin", "http://hmi.local"}});

    EXPECT_EQ(answer.status, 405);
    EXPECT_EQ(answer.header("Access-Control-Allow-Origin"), "http://hmi.local");
    EXPECT_EQ(answer.body, errorBody(405, ""));
}

TEST_F(HttpRequestHandlerBaseTest, RefusesAConditionalPostWith412BeforeTheBodyIsRead)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const Answer answer = exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {{"If-Match", "\"abc\""}}, "{}");

    EXPECT_EQ(answer.status, 412);
    EXPECT_EQ(answer.reason, "Precondition Failed");
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(script.calls, 0);
    EXPECT_EQ(capture.lines(),
              Lines{"Warning: HTTP Cache Requests are only allowed for GET and HEAD requests."});
}

TEST_F(HttpRequestHandlerBaseTest, TracesTheHeadersOfAPreconditionFailure)
{
    LogCapture capture;
    ServiceDB::Test::FakeServerRequest request(HTTPRequest::HTTP_DELETE, "/vehicle");
    request.set("If-None-Match", "*");
    ServiceDB::Test::FakeServerResponse response;
    CatalogueHandler sut(worker, cache, script);

    sut.processRequestSync(request, response);

    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_PRECONDITION_FAILED);
    EXPECT_EQ(response.body(), "");
    EXPECT_EQ(capture.lines(),
              (Lines{"Info: Request from 127.0.0.1:40000",
                     "Warning: HTTP Cache Requests are only allowed for GET and HEAD requests.",
                     "Trace: HTTP Response:\t{\"Vary\"=\"Accept-Encoding\", \"Content-Length\"=\"0\"}"}));
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAGetWhoseEntityTagMatchesWith304AndNoBody)
{
    const Answer first = exchange(HTTPRequest::HTTP_GET, "/");
    ASSERT_FALSE(first.header("ETag").empty());

    const Answer second = exchange(HTTPRequest::HTTP_GET, "/", {{"If-None-Match", first.header("ETag")}});

    EXPECT_EQ(second.status, 304);
    EXPECT_EQ(second.body, "");
    EXPECT_EQ(second.header("ETag"), first.header("ETag"));
}

TEST_F(HttpRequestHandlerBaseTest, TracesTheHeadersOfANotModifiedAnswer)
{
    const ServiceDB::Test::FakeServerResponse first = answerDirectly(HTTPRequest::HTTP_GET, "/$id");
    LogCapture capture;
    ServiceDB::Test::FakeServerRequest request(HTTPRequest::HTTP_GET, "/$id");
    request.set("If-None-Match", first.get("ETag"));
    ServiceDB::Test::FakeServerResponse response;
    CatalogueHandler sut(worker, cache, script);

    sut.processRequestSync(request, response);

    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_NOT_MODIFIED);
    EXPECT_EQ(response.body(), "");
    EXPECT_EQ(capture.lines(), (Lines{"Info: Request from 127.0.0.1:40000",
                                      "Trace: HTTP Response:\t{\"Vary\"=\"Accept-Encoding\", \"ETag\"=\"" +
                                          first.get("ETag") + "\"}"}));
}

TEST_F(HttpRequestHandlerBaseTest, EncodesAnswersWithGzipOrDeflateAsTheClientAccepts)
{
    const Answer gzipped = exchange(HTTPRequest::HTTP_GET, "/", {{"Accept-Encoding", "deflate, gzip"}});
    const Answer deflated = exchange(HTTPRequest::HTTP_GET, "/", {{"Accept-Encoding", "deflate"}});

    EXPECT_EQ(gzipped.header("Content-Encoding"), "gzip");
    EXPECT_EQ(inflate(gzipped.body, Poco::InflatingStreamBuf::STREAM_GZIP), rootBody());
    EXPECT_EQ(deflated.header("Content-Encoding"), "deflate");
    EXPECT_EQ(inflate(deflated.body, Poco::InflatingStreamBuf::STREAM_ZLIB), rootBody());
}

TEST_F(HttpRequestHandlerBaseTest, DecodesAGzipEncodedRequestBodyForPost)
{
    std::string received;
    script.post = [&received](const HttpRequest& request, HttpResponse& response)
    {
        received = request.getMessage();
        response.setLocation("/vehicle/speed/1");
        return HTTPResponse::HTTP_CREATED;
    };

    const Answer answer = exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {{"Content-Encoding", "gzip"}},
                                   gzip("{\"value\":88}"));

    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(received, "{\"value\":88}");
}

TEST_F(HttpRequestHandlerBaseTest, AcceptsOneMegabyteOfBodyByDefault)
{
    const CatalogueHandler sut(worker, cache, script);

    EXPECT_EQ(sut.getMaxBodySize(), 1048576U);
}

TEST_F(HttpRequestHandlerBaseTest, AcceptsABodyOfExactlyTheLimit)
{
    script.maxBodySize = 12;
    std::string received;
    script.post = [&received](const HttpRequest& request, HttpResponse&)
    {
        received = request.getMessage();
        return HTTPResponse::HTTP_OK;
    };

    const Answer answer = exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {}, "{\"value\":88}");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(received, "{\"value\":88}");
}

TEST_F(HttpRequestHandlerBaseTest, RefusesABodyAnnouncedLongerThanTheLimitWithoutReadingIt)
{
    script.maxBodySize = 11;
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const Answer answer = exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {}, "{\"value\":88}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "request body too large"));
    EXPECT_EQ(answer.header("Connection"), "Close");
    EXPECT_EQ(script.calls, 0);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Request body too large (/vehicle/speed): 12 bytes announced"});
}

TEST_F(HttpRequestHandlerBaseTest, RefusesAGzipBodyThatDecodesBeyondTheLimit)
{
    script.maxBodySize = 200;
    const std::string compressed = gzip(std::string(100000, 'a'));
    ASSERT_LT(compressed.size(), 200U);
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const Answer answer =
        exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {{"Content-Encoding", "gzip"}}, compressed);

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "request body too large"));
    EXPECT_EQ(script.calls, 0);
    EXPECT_EQ(capture.lines(),
              Lines{"Warning: Request body too large (/vehicle/speed): more than 200 bytes"});
}

TEST_F(HttpRequestHandlerBaseTest, AnswersABodyThatIsNotTheGzipItClaimsWithAnInternalError)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const Answer answer =
        exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {{"Content-Encoding", "gzip"}}, "{\"value\":88}");

    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, errorBody(500, ""));
    EXPECT_EQ(script.calls, 0);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Unknown exception while parsing URI (/vehicle/speed)"});
}

TEST_F(HttpRequestHandlerBaseTest, GivesASuccessfulPostWithoutContentTheOkBodyAndDropsItsLocation)
{
    script.post = [](const HttpRequest&, HttpResponse& response)
    {
        response.setLocation("/vehicle/speed/1");
        return HTTPResponse::HTTP_CREATED;
    };

    const Answer answer = exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {}, "{\"value\":1}");

    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.body, "{\"status\":\"ok\"}");
    EXPECT_EQ(answer.headers.count("Location"), 0U);
}

TEST_F(HttpRequestHandlerBaseTest, ShowsADeleteNoBodyAlthoughItWasRead)
{
    bool sawBody = true;
    script.del = [&sawBody](const HttpRequest& request, HttpResponse&)
    {
        sawBody = request.hasMessage();
        return HTTPResponse::HTTP_OK;
    };

    const Answer answer =
        exchange(HTTPRequest::HTTP_DELETE, "/vehicle/speed", {}, "{\"fields\":[\"value\"]}");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"status\":\"ok\"}");
    EXPECT_FALSE(sawBody);
}

TEST_F(HttpRequestHandlerBaseTest, SendsNoBodyForASuccessfulHead)
{
    const ServiceDB::Test::FakeServerResponse response = answerDirectly(HTTPRequest::HTTP_HEAD, "/");

    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.body(), "");
    EXPECT_EQ(response.getContentLength(), static_cast<std::streamsize>(rootBody().size()));
}

TEST_F(HttpRequestHandlerBaseTest, SendsTheErrorBodyForAFailedHead)
{
    const ServiceDB::Test::FakeServerResponse response = answerDirectly(HTTPRequest::HTTP_HEAD, "/media");

    EXPECT_EQ(response.getStatus(), HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(response.body(), errorBody(404, ""));
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAThrowingHandlerWith500AndLogsWhatItThrew)
{
    struct Case
    {
        Processor post;
        std::string line;
    };
    const std::vector<Case> cases{
        {[](const HttpRequest&, HttpResponse&) -> Status { throw Poco::IllegalStateException("no engine"); },
         "Error: Error in processRequest. Message: Illegal state: no engine"},
        {[](const HttpRequest&, HttpResponse&) -> Status { throw std::runtime_error("bad cast"); },
         "Error: Error in processRequest. Message: bad cast"},
        {[](const HttpRequest&, HttpResponse&) -> Status { throw 7; },
         "Error: Unknown Error in processRequest"}};

    for (const Case& c : cases)
    {
        script.post = c.post;
        LogCapture capture(Poco::Message::PRIO_ERROR);

        const Answer answer = exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {}, "{}");

        EXPECT_EQ(answer.status, 500);
        EXPECT_EQ(answer.body, errorBody(500, ""));
        EXPECT_EQ(capture.lines(), Lines{c.line});
    }
}

TEST_F(HttpRequestHandlerBaseTest, KeepsTheContentOfAFailingHandler)
{
    script.post = [](const HttpRequest&, HttpResponse& response)
    {
        response = HttpResponse::createError(HTTPResponse::HTTP_FORBIDDEN, "attribute not writable");
        return HTTPResponse::HTTP_FORBIDDEN;
    };

    const Answer answer = exchange(HTTPRequest::HTTP_POST, "/vehicle/speed", {}, "{}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403, "attribute not writable"));
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAVersionThatDoesNotMatchWith200AndTheFixedText)
{
    const Answer answer =
        exchange(HTTPRequest::HTTP_GET, "/vehicle", {{"Accept", "application/vnd.servicedb.v2.0.0+json"}});

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.header("Content-Type"), "text/plain");
    EXPECT_EQ(answer.body, Orvi::Service::VersionCheck::msgVersionNotImplemented);
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAMatchingVersionWithTheService)
{
    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/vehicle/$id",
                                   {{"Accept", "application/vnd.servicedb.v1.0.2+json"}});

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, VEHICLE_UUID);
}

TEST_F(HttpRequestHandlerBaseTest, AnswersARequestLineOfAnotherProtocolWith400InVersionOneOneAndCloses)
{
    const std::string received = exchangeRaw("GET / FOO/1.1\r\nHost: localhost\r\n\r\n");

    expectRefusedAndClosed(received, "HTTP/1.1 400 Bad Request", 400, "malformed HTTP version");
    expectTheServerToAnswerTheNextClient();
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAVersionWhoseNumbersAreNotDigitsWith400AndCloses)
{
    const std::string received = exchangeRaw("GET / HTTP/x.y\r\nHost: localhost\r\n\r\n");

    expectRefusedAndClosed(received, "HTTP/1.1 400 Bad Request", 400, "malformed HTTP version");
    expectTheServerToAnswerTheNextClient();
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAnotherMajorVersionWith505AndCloses)
{
    const std::string received = exchangeRaw("GET / HTTP/2.0\r\nHost: localhost\r\n\r\n");

    expectRefusedAndClosed(received, "HTTP/1.1 505 HTTP Version Not Supported", 505,
                           "HTTP version not supported");
    expectTheServerToAnswerTheNextClient();
}

TEST_F(HttpRequestHandlerBaseTest, AnswersANegativeContentLengthWith400BeforeTheWorkerSeesIt)
{
    const std::string received =
        exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\nContent-Length: -5\r\n\r\n{}");

    expectRefusedAndClosed(received, "HTTP/1.1 400 Bad Request", 400, "malformed Content-Length");
    EXPECT_EQ(script.calls, 0);
    expectTheServerToAnswerTheNextClient();
}

TEST_F(HttpRequestHandlerBaseTest, AnswersTwoContentLengthsThatDifferWith400BeforeTheWorkerSeesIt)
{
    const std::string received = exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                             "Content-Length: 2\r\nContent-Length: 3\r\n\r\n{}x");

    expectRefusedAndClosed(received, "HTTP/1.1 400 Bad Request", 400, "conflicting body lengths");
    EXPECT_EQ(script.calls, 0);
    expectTheServerToAnswerTheNextClient();
}

TEST_F(HttpRequestHandlerBaseTest, AnswersAContentLengthBesideChunkedTransferWith400)
{
    const std::string received = exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                             "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n"
                                             "2\r\n{}\r\n0\r\n\r\n");

    expectRefusedAndClosed(received, "HTTP/1.1 400 Bad Request", 400, "conflicting body lengths");
    EXPECT_EQ(script.calls, 0);
    expectTheServerToAnswerTheNextClient();
}

TEST_F(HttpRequestHandlerBaseTest, LogsARefusedRequestWithItsAddressWordForWord)
{
    LogCapture capture;

    exchangeRaw("GET /vehicle HTTP/x.y\r\nHost: localhost\r\n\r\n");

    EXPECT_EQ(capture.lines(), Lines{"Warning: Refused request (/vehicle): malformed HTTP version"});
}

TEST_F(HttpRequestHandlerBaseTest, AnswersOtherClientsWhileOneClientStallsInItsBody)
{
    Poco::Net::StreamSocket stalled = openExchange("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                                   "Content-Length: 12\r\n\r\n{\"val");

    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, rootBody());
    stalled.close();
}

TEST_F(HttpRequestHandlerBaseTest, GivesTheWorkerTheWholeBodyOfAClientThatSentItInParts)
{
    std::string received;
    script.post = [&received](const HttpRequest& request, HttpResponse&)
    {
        received = request.getMessage();
        return HTTPResponse::HTTP_CREATED;
    };
    Poco::Net::StreamSocket socket = openExchange("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                                  "Connection: close\r\nContent-Length: 12\r\n\r\n{\"val");
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, "/").status, 200);

    const std::string answer = finishExchange(socket, "ue\":88}");

    EXPECT_EQ(answer.substr(0, answer.find("\r\n")), "HTTP/1.1 201 Created");
    EXPECT_EQ(received, "{\"value\":88}");
}

TEST_F(HttpRequestHandlerBaseTest, RefusesAClientThatStallsInItsBodyWith408WhenTheServerTimesOut)
{
    ServiceDB::Test::LocalHttpServer impatient(new CatalogueHandlerFactory(worker, cache, script),
                                               Poco::Timespan(0, 200000));
    LogCapture capture(Poco::Message::PRIO_WARNING);
    Poco::Net::StreamSocket socket(Poco::Net::SocketAddress("127.0.0.1", impatient.port()));
    socket.setReceiveTimeout(Poco::Timespan(10, 0));
    const std::string head = "POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\nContent-Length: 12\r\n\r\n{";
    socket.sendBytes(head.data(), static_cast<int>(head.size()));

    const std::string received = finishExchange(socket, "");

    expectRefusedAndClosed(received, "HTTP/1.1 408 Request Time-out", 408, "request body timed out");
    EXPECT_EQ(script.calls, 0);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Refused request (/vehicle/speed): request body timed out"});
}

TEST_F(HttpRequestHandlerBaseTest, GivesTheWorkerTheWholeBodyOfAChunkedPost)
{
    std::string received;
    script.post = [&received](const HttpRequest& request, HttpResponse&)
    {
        received = request.getMessage();
        return HTTPResponse::HTTP_CREATED;
    };

    const std::string answer = exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                           "Connection: close\r\nTransfer-Encoding: chunked\r\n\r\n"
                                           "5\r\n{\"val\r\n7\r\nue\":88}\r\n0\r\n\r\n");

    EXPECT_EQ(answer.substr(0, answer.find("\r\n")), "HTTP/1.1 201 Created");
    EXPECT_EQ(received, "{\"value\":88}");
}

TEST_F(HttpRequestHandlerBaseTest, RefusesChunksAddingUpBeyondTheLimitBeforeTheWorkerSeesThem)
{
    script.maxBodySize = 11;
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const std::string received = exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                             "Transfer-Encoding: chunked\r\n\r\n"
                                             "5\r\n{\"val\r\n7\r\nue\":88}\r\n0\r\n\r\n");

    expectRefusedAndClosed(received, "HTTP/1.1 400 Bad Request", 400, "request body too large");
    EXPECT_EQ(script.calls, 0);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Request body too large (/vehicle/speed): more than 11 bytes"});
    expectTheServerToAnswerTheNextClient();
}

TEST_F(HttpRequestHandlerBaseTest, LeavesTheBodyOfAConditionalPostUnread)
{
    const std::string received = exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                             "If-Match: \"1\"\r\nConnection: close\r\n"
                                             "Transfer-Encoding: chunked\r\n\r\nzz\r\n");

    EXPECT_EQ(received.substr(0, received.find("\r\n")), "HTTP/1.1 412 Precondition Failed");
    EXPECT_EQ(script.calls, 0);
}

TEST_F(HttpRequestHandlerBaseTest, RefusesABodyThatEndsBeforeItsLengthWith400BeforeTheWorkerSeesIt)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);
    Poco::Net::StreamSocket socket = openExchange("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                                  "Content-Length: 100\r\n\r\n{\"value\":88}");
    socket.shutdownSend();

    const std::string received = finishExchange(socket, "");

    expectRefusedAndClosed(received, "HTTP/1.1 400 Bad Request", 400, "request body incomplete");
    EXPECT_EQ(script.calls, 0);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Refused request (/vehicle/speed): request body incomplete"});
}

TEST_F(HttpRequestHandlerBaseTest, RefusesAChunkSizeThatIsNotHexadecimalWith400BeforeTheWorkerSeesIt)
{
    const std::string received = exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                             "Transfer-Encoding: chunked\r\n\r\nzz\r\n{}\r\n0\r\n\r\n");

    expectRefusedAndClosed(received, "HTTP/1.1 400 Bad Request", 400, "malformed chunked body");
    EXPECT_EQ(script.calls, 0);
    expectTheServerToAnswerTheNextClient();
}

TEST_F(HttpRequestHandlerBaseTest, ClosesTheConnectionAfterAChunkedRequest)
{
    const std::string received = exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n"
                                             "Transfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n"
                                             "DELETE /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n\r\n");

    EXPECT_EQ(received.substr(0, received.find("\r\n")), "HTTP/1.1 201 Created");
    EXPECT_NE(received.find("\r\nConnection: Close\r\n"), std::string::npos) << received;
    EXPECT_EQ(received.find("HTTP/1.1", 1), std::string::npos) << received;
    EXPECT_EQ(script.calls, 1);
}

TEST_F(HttpRequestHandlerBaseTest, ClosesTheConnectionAfterAPreconditionFailureLeftItsBodyUnread)
{
    const std::string received =
        exchangeRaw("POST /vehicle/speed HTTP/1.1\r\nHost: localhost\r\nIf-Match: *\r\n"
                    "Content-Length: 51\r\n\r\n"
                    "DELETE /vehicle/speed HTTP/1.1\r\nHost: localhost\r\n\r\n");

    EXPECT_EQ(received.substr(0, received.find("\r\n")), "HTTP/1.1 412 Precondition Failed");
    EXPECT_NE(received.find("\r\nConnection: Close\r\n"), std::string::npos) << received;
    EXPECT_EQ(received.find("HTTP/1.1", 1), std::string::npos) << received;
    EXPECT_EQ(script.calls, 0);
}

} // namespace
