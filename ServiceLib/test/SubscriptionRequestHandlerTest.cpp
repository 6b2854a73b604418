#include "SubscriptionHandling/SubscriptionRequestHandler.h"

#include "SubscriptionHandling/SubscriptionService.h"
#include "Support/InMemoryTrigger.h"
#include "Support/TestWebSocketClient.h"
#include "Support/UpgradeHandlerFactory.h"
#include "TestSupport/LocalHttpServer.h"

#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/StreamCopier.h>

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <string>

using Orvi::Service::SubscriptionRequestHandler;
using Poco::Net::HTTPRequest;

namespace
{

HTTPRequest upgrade(const std::string& method, const std::string& connection, const std::string& upgradeTo)
{
    HTTPRequest request(method, "/", Poco::Net::HTTPMessage::HTTP_1_1);
    request.set("Connection", connection);
    request.set("Upgrade", upgradeTo);
    return request;
}

// Sends a handshake by hand and gives the status and body of the answer.
std::string handshakeAnswer(Poco::UInt16 port, const std::string& version, const std::string& key,
                            Poco::Net::HTTPResponse& response)
{
    Poco::Net::HTTPClientSession session("127.0.0.1", port);
    // Without keep-alive the session would rewrite "Connection" to "close".
    session.setKeepAlive(true);
    HTTPRequest request = upgrade(HTTPRequest::HTTP_GET, "Upgrade", "websocket");
    request.set("Sec-WebSocket-Version", version);
    if (!key.empty())
    {
        request.set("Sec-WebSocket-Key", key);
    }
    session.sendRequest(request);
    std::ostringstream body;
    Poco::StreamCopier::copyStream(session.receiveResponse(response), body);
    return body.str();
}

} // namespace

TEST(SubscriptionRequestHandlerTest, AGetThatAsksForWebSocketIsAnUpgradeRequest)
{
    EXPECT_TRUE(SubscriptionRequestHandler::isUpgradeRequest(upgrade("GET", "Upgrade", "websocket")));
    EXPECT_TRUE(
        SubscriptionRequestHandler::isUpgradeRequest(upgrade("GET", "keep-alive, upgrade", "WebSocket")));
}

TEST(SubscriptionRequestHandlerTest, OtherRequestsAreNoUpgradeRequests)
{
    EXPECT_FALSE(SubscriptionRequestHandler::isUpgradeRequest(upgrade("POST", "Upgrade", "websocket")));
    EXPECT_FALSE(SubscriptionRequestHandler::isUpgradeRequest(upgrade("GET", "keep-alive", "websocket")));
    EXPECT_FALSE(SubscriptionRequestHandler::isUpgradeRequest(upgrade("GET", "Upgrade", "h2c")));
    EXPECT_FALSE(SubscriptionRequestHandler::isUpgradeRequest(HTTPRequest("GET", "/cabin/seats")));
}

TEST(SubscriptionRequestHandlerTest, ItHandsTheUpgradeToTheServiceAndReturns)
{
    ServiceDB::Test::InMemoryTrigger trigger;
    Orvi::Service::SubscriptionService service(trigger);
    ServiceDB::Test::LocalHttpServer server(new ServiceDB::Test::UpgradeHandlerFactory(service));

    ServiceDB::Test::TestWebSocketClient client(server.port());

    EXPECT_TRUE(service.waitForConnectionCount(1, std::chrono::seconds(10)));
}

TEST(SubscriptionRequestHandlerTest, AHandshakeWithoutKeyIsRefusedWith400)
{
    ServiceDB::Test::InMemoryTrigger trigger;
    Orvi::Service::SubscriptionService service(trigger);
    ServiceDB::Test::LocalHttpServer server(new ServiceDB::Test::UpgradeHandlerFactory(service));
    Poco::Net::HTTPResponse response;

    const std::string body = handshakeAnswer(server.port(), "13", "", response);

    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(body, "Missing Sec-WebSocket-Key in handshake request");
    EXPECT_EQ(service.connectionCount(), 0U);
}

TEST(SubscriptionRequestHandlerTest, AnotherProtocolVersionIsRefusedWith426NamingVersion13)
{
    ServiceDB::Test::InMemoryTrigger trigger;
    Orvi::Service::SubscriptionService service(trigger);
    ServiceDB::Test::LocalHttpServer server(new ServiceDB::Test::UpgradeHandlerFactory(service));
    Poco::Net::HTTPResponse response;

    handshakeAnswer(server.port(), "8", "dGhlIHNhbXBsZSBub25jZQ==", response);

    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_UPGRADE_REQUIRED);
    EXPECT_EQ(response.get("Sec-WebSocket-Version", ""), "13");
}
