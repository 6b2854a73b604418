#include "RegistryHandlerFactory.h"

#include "LiveRegistryFixture.h"
#include "TestWebSocketClient.h"

#include <Poco/Net/HTTPRequest.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Poco::Net::HTTPRequest;
using ServiceDB::Registry::Test::Answer;
using ServiceDB::Test::TestWebSocketClient;
using ServiceDB::Test::withoutTimestamp;

class RegistryHandlerFactoryLive : public ServiceDB::Registry::Test::LiveRegistryFixture
{
protected:
    /// Subscribes to the registered services and checks the answer; gives the first update.
    std::string subscribe(TestWebSocketClient& client)
    {
        client.send(ServiceDB::Test::subscribeMessage(SERVICES));
        EXPECT_EQ(client.receive(),
                  std::string("{\"event\":\"") + SERVICES + "\",\"status\":\"ok\",\"type\":\"subscribe\"}");
        return withoutTimestamp(client.receive());
    }

    static std::string update(const std::string& objects)
    {
        return std::string("{\"data\":[") + objects + "],\"event\":\"" + SERVICES +
               "\",\"status\":\"ok\",\"timestamp\":0,\"type\":\"data\"}";
    }

    static std::string listed(const std::string& uuid)
    {
        return "{\"host\":\"127.0.0.1\",\"id\":\"" + uuid + "\",\"name\":\"cabin\",\"port\":8080,\"uri\":\"" +
               SERVICES + "/" + uuid + "\"}";
    }
};

TEST_F(RegistryHandlerFactoryLive, HandsAnUpgradeToTheSubscriptionServiceWhichAnswersWithTheEmptyListAtOnce)
{
    TestWebSocketClient client(server->port());

    const std::string first = subscribe(client);

    EXPECT_EQ(first, update(""));
}

TEST_F(RegistryHandlerFactoryLive, TellsASubscriberOfTheServicesOfARegistration)
{
    TestWebSocketClient client(server->port());
    subscribe(client);

    const std::string uuid = uuidOf(registerService("cabin", "127.0.0.1", 8080));

    EXPECT_EQ(withoutTimestamp(client.receive()), update(listed(uuid)));
}

TEST_F(RegistryHandlerFactoryLive, TellsASubscriberOfTheServicesOfAnUnregistration)
{
    const Answer registered = registerService("cabin", "127.0.0.1", 8080);
    TestWebSocketClient client(server->port());
    subscribe(client);

    send(HTTPRequest::HTTP_DELETE, registered.location);

    EXPECT_EQ(withoutTimestamp(client.receive()), update(""));
}

TEST_F(RegistryHandlerFactoryLive, GivesOrdinaryExchangesToTheRegistryHandler)
{
    registerService("cabin", "127.0.0.1", 8080);

    const Answer answer = registerService("cabin", "127.0.0.1", 8080);

    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(answer.body, errorBody(409, "service already registered"));
}

} // namespace
