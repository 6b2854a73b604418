#include "Explorer/ExplorerRequestHandler.h"

#include "Http/HTTPCacheHandler.h"
#include "TestSupport/FakeServerRequest.h"
#include "TestSupport/LocalHttpServer.h"

#include <Poco/InflatingStream.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/StreamCopier.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace
{

using Orvi::Explorer::ExplorerRequestHandler;
using Poco::Net::HTTPRequest;
using Poco::Net::HTTPResponse;

const std::string EXPLORER_DIR = SERVICEDB_EXPLORER_DIR;

std::string readFile(const std::string& name)
{
    std::ifstream in(EXPLORER_DIR + "/" + name, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

bool isExplorerRequest(const std::string& uri)
{
    return ExplorerRequestHandler::isExplorerRequest(ServiceDB::Test::FakeServerRequest("GET", uri));
}

// Serves the explorer on every address, as a factory that asked isExplorerRequest would for its own.
class ExplorerOnly : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new ExplorerRequestHandler;
    }
};

struct Answer
{
    HTTPResponse response;
    std::string body;
};

class ExplorerRequestHandlerTest : public ::testing::Test
{
protected:
    Answer exchange(HTTPRequest& request)
    {
        Poco::Net::HTTPClientSession session("127.0.0.1", server.port());
        session.setTimeout(Poco::Timespan(10, 0));
        session.sendRequest(request);
        Answer answer;
        std::istream& in = session.receiveResponse(answer.response);
        Poco::StreamCopier::copyToString(in, answer.body);
        return answer;
    }

    Answer get(const std::string& uri, const std::string& method = HTTPRequest::HTTP_GET)
    {
        HTTPRequest request(method, uri, HTTPRequest::HTTP_1_1);
        return exchange(request);
    }

    ServiceDB::Test::LocalHttpServer server{new ExplorerOnly};
};

TEST(ExplorerRequestHandlerAddress, TakesItsBaseAddressWithAndWithoutTheClosingSlash)
{
    EXPECT_TRUE(isExplorerRequest("/$explorer/"));
    EXPECT_TRUE(isExplorerRequest("/$explorer"));
    EXPECT_TRUE(isExplorerRequest("/$explorer?x=1"));
}

TEST(ExplorerRequestHandlerAddress, TakesEveryAddressUnderItsBase)
{
    EXPECT_TRUE(isExplorerRequest("/$explorer/explorer.js"));
    EXPECT_TRUE(isExplorerRequest("/$explorer/no/such/file"));
}

TEST(ExplorerRequestHandlerAddress, LeavesTheServicesAndTheRootToTheStore)
{
    EXPECT_FALSE(isExplorerRequest("/"));
    EXPECT_FALSE(isExplorerRequest("/explorer/"));
    EXPECT_FALSE(isExplorerRequest("/$explorers/"));
    EXPECT_FALSE(isExplorerRequest("/audio/tracks?q=/$explorer/"));
    EXPECT_FALSE(isExplorerRequest("/$id"));
}

TEST_F(ExplorerRequestHandlerTest, AnswersItsBaseAddressWithThePage)
{
    const Answer answer = get("/$explorer/");

    EXPECT_EQ(HTTPResponse::HTTP_OK, answer.response.getStatus());
    EXPECT_EQ("text/html; charset=utf-8", answer.response.getContentType());
    EXPECT_EQ(readFile("index.html"), answer.body);
    EXPECT_EQ("no-cache", answer.response.get("Cache-Control"));
    EXPECT_EQ("nosniff", answer.response.get("X-Content-Type-Options"));
    EXPECT_EQ("default-src 'self'; connect-src 'self'; img-src 'self' data:; frame-ancestors 'none'",
              answer.response.get("Content-Security-Policy"));
}

TEST_F(ExplorerRequestHandlerTest, AnswersTheScriptAndTheStyleByTheirNames)
{
    const Answer script = get("/$explorer/explorer.js");
    const Answer style = get("/$explorer/explorer.css?v=2");

    EXPECT_EQ(HTTPResponse::HTTP_OK, script.response.getStatus());
    EXPECT_EQ("text/javascript; charset=utf-8", script.response.getContentType());
    EXPECT_EQ(readFile("explorer.js"), script.body);
    EXPECT_EQ(HTTPResponse::HTTP_OK, style.response.getStatus());
    EXPECT_EQ("text/css; charset=utf-8", style.response.getContentType());
    EXPECT_EQ(readFile("explorer.css"), style.body);
}

TEST_F(ExplorerRequestHandlerTest, AnswersThePageByItsFileNameToo)
{
    const Answer answer = get("/$explorer/index.html");

    EXPECT_EQ(HTTPResponse::HTTP_OK, answer.response.getStatus());
    EXPECT_EQ(readFile("index.html"), answer.body);
}

TEST_F(ExplorerRequestHandlerTest, RedirectsTheBaseAddressWithoutItsSlashToTheBase)
{
    const Answer answer = get("/$explorer");

    EXPECT_EQ(HTTPResponse::HTTP_MOVED_PERMANENTLY, answer.response.getStatus());
    EXPECT_EQ("/$explorer/", answer.response.get("Location"));
    EXPECT_EQ("", answer.body);
}

TEST_F(ExplorerRequestHandlerTest, AnswersAnUnknownFile404)
{
    const Answer answer = get("/$explorer/secret.txt");

    EXPECT_EQ(HTTPResponse::HTTP_NOT_FOUND, answer.response.getStatus());
    EXPECT_EQ(R"({"code":404,"message":"no such file of the explorer","status":"error"})", answer.body);
}

TEST_F(ExplorerRequestHandlerTest, AnswersAFileInAFolder404)
{
    const Answer answer = get("/$explorer/../explorer.js");

    EXPECT_EQ(HTTPResponse::HTTP_NOT_FOUND, answer.response.getStatus());
}

TEST_F(ExplorerRequestHandlerTest, RefusesAWrite405WithTheAllowedMethods)
{
    HTTPRequest request(HTTPRequest::HTTP_POST, "/$explorer/", HTTPRequest::HTTP_1_1);
    request.setContentLength(0);

    const Answer answer = exchange(request);

    EXPECT_EQ(HTTPResponse::HTTP_METHOD_NOT_ALLOWED, answer.response.getStatus());
    EXPECT_EQ("GET, HEAD", answer.response.get("Allow"));
    EXPECT_EQ(R"({"code":405,"message":"the explorer is only read","status":"error"})", answer.body);
}

TEST_F(ExplorerRequestHandlerTest, AnswersHeadWithTheHeadersOfGetAndNoBody)
{
    const Answer get = this->get("/$explorer/");
    const Answer head = this->get("/$explorer/", HTTPRequest::HTTP_HEAD);

    EXPECT_EQ(HTTPResponse::HTTP_OK, head.response.getStatus());
    EXPECT_EQ(get.response.getContentLength64(), head.response.getContentLength64());
    EXPECT_EQ(get.response.get("ETag"), head.response.get("ETag"));
    EXPECT_EQ("", head.body);
}

TEST_F(ExplorerRequestHandlerTest, TagsEachFileByItsBytes)
{
    const Answer answer = get("/$explorer/explorer.js");

    EXPECT_EQ(Orvi::Net::HTTPCacheHandler::computeETag(readFile("explorer.js")), answer.response.get("ETag"));
}

TEST_F(ExplorerRequestHandlerTest, AnswersAMatchingTag304WithoutBody)
{
    const std::string etag = get("/$explorer/").response.get("ETag");
    HTTPRequest request(HTTPRequest::HTTP_GET, "/$explorer/", HTTPRequest::HTTP_1_1);
    request.set("If-None-Match", etag);

    const Answer answer = exchange(request);

    EXPECT_EQ(HTTPResponse::HTTP_NOT_MODIFIED, answer.response.getStatus());
    EXPECT_EQ(etag, answer.response.get("ETag"));
    EXPECT_EQ("", answer.body);
}

TEST_F(ExplorerRequestHandlerTest, CompressesTheFileWhenTheClientAcceptsGzip)
{
    HTTPRequest request(HTTPRequest::HTTP_GET, "/$explorer/explorer.js", HTTPRequest::HTTP_1_1);
    request.set("Accept-Encoding", "gzip");

    const Answer answer = exchange(request);

    EXPECT_EQ("gzip", answer.response.get("Content-Encoding"));
    std::istringstream compressed(answer.body);
    Poco::InflatingInputStream inflating(compressed, Poco::InflatingStreamBuf::STREAM_GZIP);
    std::string bytes;
    Poco::StreamCopier::copyToString(inflating, bytes);
    EXPECT_EQ(readFile("explorer.js"), bytes);
}

} // namespace
