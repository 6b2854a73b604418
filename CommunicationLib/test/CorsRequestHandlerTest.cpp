#include "Http/CorsRequestHandler.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/SocketAddress.h>

#include "TestSupport/FakeServerRequest.h"
#include "TestSupport/FakeServerResponse.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using Orvi::Net::CorsRequestHandler;
using Headers = std::map<std::string, std::string>;

using ServiceDB::Test::FakeServerResponse;

/// A request of the given method to the root.
class FakeServerRequest : public ServiceDB::Test::FakeServerRequest
{
public:
    explicit FakeServerRequest(const std::string& method)
        : ServiceDB::Test::FakeServerRequest(method, "/")
    {
    }
};

const std::string ORIGIN = "http://dashboard.vehicle.local:8080";

CorsRequestHandler makeHandler()
{
    CorsRequestHandler handler;
    handler.setAllowedMethods({"GET", "HEAD", "POST", "DELETE", "OPTIONS", "PATCH"});
    return handler;
}

class PreflightRequest : public FakeServerRequest
{
public:
    explicit PreflightRequest(const std::string& requestedMethod)
        : FakeServerRequest(Poco::Net::HTTPRequest::HTTP_OPTIONS)
    {
        set("Origin", ORIGIN);
        set("Access-Control-Request-Method", requestedMethod);
    }
};

TEST(CorsRequestHandler, AnswersAPreflightWithTheAllowedMethodsAndRequestedHeaders)
{
    const CorsRequestHandler sut = makeHandler();
    PreflightRequest request("POST");
    request.set("Access-Control-Request-Headers", "Content-Type, Authorization");
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_FALSE(goesOn);
    EXPECT_TRUE(response.sent());
    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getReason(), "OK");
    EXPECT_EQ(response.body(), "");
    const Headers expected = {{"Access-Control-Allow-Headers", "Content-Type, Authorization"},
                              {"Access-Control-Allow-Methods", "GET, HEAD, POST, DELETE, OPTIONS, PATCH"},
                              {"Access-Control-Allow-Origin", ORIGIN},
                              {"Access-Control-Expose-Headers", "Location, ETag"},
                              {"Content-Length", "0"},
                              {"Vary", "Origin"}};
    EXPECT_EQ(response.headers(), expected);
}

TEST(CorsRequestHandler, LeavesOutAllowHeadersWhenThePreflightAsksForNone)
{
    const CorsRequestHandler sut = makeHandler();
    PreflightRequest request("DELETE");
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_FALSE(goesOn);
    EXPECT_TRUE(response.sent());
    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_OK);
    const Headers expected = {{"Access-Control-Allow-Methods", "GET, HEAD, POST, DELETE, OPTIONS, PATCH"},
                              {"Access-Control-Allow-Origin", ORIGIN},
                              {"Access-Control-Expose-Headers", "Location, ETag"},
                              {"Content-Length", "0"},
                              {"Vary", "Origin"}};
    EXPECT_EQ(response.headers(), expected);
}

TEST(CorsRequestHandler, RefusesAPreflightForAMethodThatIsNotAllowed)
{
    const CorsRequestHandler sut = makeHandler();
    PreflightRequest request("PUT");
    request.set("Access-Control-Request-Headers", "Content-Type");
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_FALSE(goesOn);
    EXPECT_TRUE(response.sent());
    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(response.getReason(), "Forbidden");
    EXPECT_EQ(response.body(), "");
    const Headers expected = {{"Content-Length", "0"}};
    EXPECT_EQ(response.headers(), expected);
}

TEST(CorsRequestHandler, ComparesRequestedMethodsWithCase)
{
    const CorsRequestHandler sut = makeHandler();
    PreflightRequest request("post");
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_FALSE(goesOn);
    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_FORBIDDEN);
}

TEST(CorsRequestHandler, RefusesEveryPreflightBeforeMethodsAreSet)
{
    const CorsRequestHandler sut;
    PreflightRequest request("GET");
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_FALSE(goesOn);
    EXPECT_TRUE(response.sent());
    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_FORBIDDEN);
}

TEST(CorsRequestHandler, MarksANormalRequestWithAnOriginAndLetsItGoOn)
{
    const CorsRequestHandler sut = makeHandler();
    FakeServerRequest request(Poco::Net::HTTPRequest::HTTP_GET);
    request.set("Origin", ORIGIN);
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_TRUE(goesOn);
    EXPECT_FALSE(response.sent());
    const Headers expected = {{"Access-Control-Allow-Origin", ORIGIN},
                              {"Access-Control-Expose-Headers", "Location, ETag"},
                              {"Vary", "Origin"}};
    EXPECT_EQ(response.headers(), expected);
}

TEST(CorsRequestHandler, AddsOriginToAVaryHeaderThatIsAlreadySet)
{
    const CorsRequestHandler sut = makeHandler();
    FakeServerRequest request(Poco::Net::HTTPRequest::HTTP_POST);
    request.set("Origin", ORIGIN);
    FakeServerResponse response;
    response.set("Vary", "Accept-Encoding");

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_TRUE(goesOn);
    EXPECT_EQ(response.get("Vary"), "Accept-Encoding, Origin");
}

TEST(CorsRequestHandler, LeavesARequestWithoutOriginUntouched)
{
    const CorsRequestHandler sut = makeHandler();
    FakeServerRequest request(Poco::Net::HTTPRequest::HTTP_GET);
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_TRUE(goesOn);
    EXPECT_FALSE(response.sent());
    EXPECT_EQ(response.headers(), Headers());
}

TEST(CorsRequestHandler, PassesOnAnOptionsRequestWithoutPreflightHeaders)
{
    const CorsRequestHandler sut = makeHandler();
    FakeServerRequest request(Poco::Net::HTTPRequest::HTTP_OPTIONS);
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_TRUE(goesOn);
    EXPECT_FALSE(response.sent());
    EXPECT_EQ(response.headers(), Headers());
}

TEST(CorsRequestHandler, PassesOnAnOptionsRequestThatAsksForAMethodWithoutOrigin)
{
    const CorsRequestHandler sut = makeHandler();
    FakeServerRequest request(Poco::Net::HTTPRequest::HTTP_OPTIONS);
    request.set("Access-Control-Request-Method", "GET");
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_TRUE(goesOn);
    EXPECT_FALSE(response.sent());
    EXPECT_EQ(response.headers(), Headers());
}

TEST(CorsRequestHandler, TreatsAnOptionsRequestWithOnlyAnOriginAsANormalRequest)
{
    const CorsRequestHandler sut = makeHandler();
    FakeServerRequest request(Poco::Net::HTTPRequest::HTTP_OPTIONS);
    request.set("Origin", ORIGIN);
    FakeServerResponse response;

    const bool goesOn = sut.handleRequest(request, response);

    EXPECT_TRUE(goesOn);
    EXPECT_FALSE(response.sent());
    const Headers expected = {{"Access-Control-Allow-Origin", ORIGIN},
                              {"Access-Control-Expose-Headers", "Location, ETag"},
                              {"Vary", "Origin"}};
    EXPECT_EQ(response.headers(), expected);
}

} // namespace
