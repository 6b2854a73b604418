#include "RegistryHandler.h"

#include "RecordingTrigger.h"
#include "RegistryFixture.h"
#include "RegistryHandlerFactory.h"
#include "TestSupport/LocalHttpServer.h"

#include <Poco/Net/HTTPRequest.h>
#include <Poco/RegularExpression.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Poco::Net::HTTPRequest;
using ServiceDB::Registry::Test::Answer;

const std::string CABIN = "{\"name\":\"cabin\",\"host\":\"127.0.0.1\",\"port\":8080,"
                          "\"description\":\"Climate zones, seats, doors and windows\","
                          "\"versions\":[\"1.0.0\"],\"privileges\":[],\"categories\":[\"comfort\",\"body\"]}";

std::string listed(const std::string& uuid, const std::string& name, const std::string& port)
{
    return "{\"host\":\"127.0.0.1\",\"id\":\"" + uuid + "\",\"name\":\"" + name + "\",\"port\":" + port +
           ",\"uri\":\"/registry/services/" + uuid + "\"}";
}

std::string listOf(const std::string& objects)
{
    return "200 {\"data\":[" + objects + "],\"status\":\"ok\"}";
}

class RegistryHandlerOverHttp : public ServiceDB::Registry::Test::RegistryFixture
{
protected:
    RegistryHandlerOverHttp()
        : server(new Orvi::Registry::RegistryHandlerFactory(worker, cache, trigger))
    {
        serveOn(server.port());
    }

    ServiceDB::Example::Test::RecordingTrigger trigger;
    ServiceDB::Test::LocalHttpServer server;
};

// ---- registering ----

TEST_F(RegistryHandlerOverHttp, RegistersAServiceAndAnswersItsLocation)
{
    const Answer answer = send(HTTPRequest::HTTP_POST, SERVICES, CABIN);

    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_TRUE(Poco::RegularExpression(
                    "^/registry/services/[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}$")
                    .match(answer.location))
        << answer.location;
}

TEST_F(RegistryHandlerOverHttp, ListsTheRegistrationWithItsValues)
{
    const std::string uuid = uuidOf(send(HTTPRequest::HTTP_POST, SERVICES, CABIN));

    const std::string text = listing();

    // An empty list is no value to the store: the privileges are left out.
    EXPECT_EQ(text,
              listOf("{\"categories\":[\"comfort\",\"body\"],"
                     "\"description\":\"Climate zones, seats, doors and windows\",\"host\":\"127.0.0.1\","
                     "\"id\":\"" +
                     uuid + "\",\"name\":\"cabin\",\"port\":8080,\"uri\":\"/registry/services/" + uuid +
                     "\",\"versions\":[\"1.0.0\"]}"));
}

TEST_F(RegistryHandlerOverHttp, FindsARegistrationByTheNameOfItsService)
{
    const std::string cabin = uuidOf(registerService("cabin", "127.0.0.1", 8080));
    registerService("audio", "127.0.0.1", 8081);

    const std::string text = textOf(std::string(SERVICES) + "?name=cabin");

    EXPECT_EQ(text, listOf(listed(cabin, "cabin", "8080")));
}

TEST_F(RegistryHandlerOverHttp, TellsTheSubscribersOfARegistration)
{
    registerService("cabin", "127.0.0.1", 8080);

    EXPECT_EQ(trigger.changes(), std::vector<std::string>{"request POST /registry/services"});
}

TEST_F(RegistryHandlerOverHttp, RefusesTheSameNameHostAndPortAgainAndRegistersNothing)
{
    registerService("cabin", "127.0.0.1", 8080);
    const std::string before = listing();
    trigger.clear();

    const Answer answer = send(HTTPRequest::HTTP_POST, SERVICES, CABIN);

    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(answer.body, "{\"code\":409,\"message\":\"service already registered\",\"status\":\"error\"}");
    EXPECT_EQ(answer.location, "");
    EXPECT_EQ(listing(), before);
    EXPECT_EQ(trigger.changes(), std::vector<std::string>{});
}

TEST_F(RegistryHandlerOverHttp, AcceptsTheSameNameOnAnotherPort)
{
    const std::string first = uuidOf(registerService("cabin", "127.0.0.1", 8080));

    const Answer answer = registerService("cabin", "127.0.0.1", 8090);

    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.body, OK_BODY);
    const std::string second = uuidOf(answer);
    EXPECT_EQ(textOf(std::string(SERVICES) + "/" + second),
              "200 {\"data\":" + listed(second, "cabin", "8090") + ",\"status\":\"ok\"}");
    EXPECT_EQ(textOf(std::string(SERVICES) + "/" + first),
              "200 {\"data\":" + listed(first, "cabin", "8080") + ",\"status\":\"ok\"}");
}

TEST_F(RegistryHandlerOverHttp, AcceptsAnotherNameOnTheSameHostAndPort)
{
    registerService("cabin", "127.0.0.1", 8080);

    const Answer answer = registerService("audio", "127.0.0.1", 8080);

    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(textOf(answer.location),
              "200 {\"data\":" + listed(uuidOf(answer), "audio", "8080") + ",\"status\":\"ok\"}");
}

TEST_F(RegistryHandlerOverHttp, AcceptsTheSameNameAndPortOnAnotherHost)
{
    registerService("cabin", "127.0.0.1", 8080);

    const Answer answer = registerService("cabin", "192.168.1.20", 8080);

    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.body, OK_BODY);
}

TEST_F(RegistryHandlerOverHttp, RegistersAServiceAgainOnceItsRegistrationIsGone)
{
    const Answer first = registerService("cabin", "127.0.0.1", 8080);
    send(HTTPRequest::HTTP_DELETE, first.location);

    const Answer answer = registerService("cabin", "127.0.0.1", 8080);

    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(listing(), listOf(listed(uuidOf(answer), "cabin", "8080")));
}

// ---- registrations that are refused ----

TEST_F(RegistryHandlerOverHttp, RefusesARegistrationWithoutNameAndRegistersNothing)
{
    const Answer answer = send(HTTPRequest::HTTP_POST, SERVICES, "{\"host\":\"127.0.0.1\",\"port\":8080}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "POST is invalid (missing attribute)"));
    EXPECT_EQ(answer.location, "");
    EXPECT_EQ(listing(), listOf(""));
}

TEST_F(RegistryHandlerOverHttp, RefusesARegistrationWithoutHostAndRegistersNothing)
{
    const Answer answer = send(HTTPRequest::HTTP_POST, SERVICES, "{\"name\":\"cabin\",\"port\":8080}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "POST is invalid (missing attribute)"));
    EXPECT_EQ(listing(), listOf(""));
}

TEST_F(RegistryHandlerOverHttp, RefusesARegistrationWithoutPortAndRegistersNothing)
{
    const Answer answer =
        send(HTTPRequest::HTTP_POST, SERVICES, "{\"name\":\"cabin\",\"host\":\"127.0.0.1\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "POST is invalid (missing attribute)"));
    EXPECT_EQ(listing(), listOf(""));
}

TEST_F(RegistryHandlerOverHttp, RefusesPortZeroAndRegistersNothing)
{
    const Answer answer = registerService("cabin", "127.0.0.1", 0);

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(listing(), listOf(""));
}

TEST_F(RegistryHandlerOverHttp, RefusesAPortBeyondTheLastAndRegistersNothing)
{
    const Answer answer = registerService("cabin", "127.0.0.1", 65536);

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(listing(), listOf(""));
}

TEST_F(RegistryHandlerOverHttp, RefusesAPortWrittenAsTextAsTheSameAsTheNumberRegistered)
{
    registerService("cabin", "127.0.0.1", 8080);
    const std::string before = listing();

    const Answer answer = send(HTTPRequest::HTTP_POST, SERVICES,
                               "{\"name\":\"cabin\",\"host\":\"127.0.0.1\",\"port\":\"8080\"}");

    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(answer.body, errorBody(409, "service already registered"));
    EXPECT_EQ(listing(), before);
}

TEST_F(RegistryHandlerOverHttp, LeavesAPortThatIsNoNumberToTheStoreToRefuse)
{
    const Answer answer = send(HTTPRequest::HTTP_POST, SERVICES,
                               "{\"name\":\"cabin\",\"host\":\"127.0.0.1\",\"port\":\"eighty\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(listing(), listOf(""));
}

TEST_F(RegistryHandlerOverHttp, RefusesAnAttributeThatARegistrationDoesNotHave)
{
    const Answer answer =
        send(HTTPRequest::HTTP_POST, SERVICES,
             "{\"name\":\"cabin\",\"host\":\"127.0.0.1\",\"port\":8080,\"owner\":\"body\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403, "POST is not allowed (forbidden attribute)"));
    EXPECT_EQ(listing(), listOf(""));
}

TEST_F(RegistryHandlerOverHttp, RefusesToChangeARegistration)
{
    const Answer registered = registerService("cabin", "127.0.0.1", 8080);
    const std::string before = listing();

    const Answer answer = send(HTTPRequest::HTTP_POST, registered.location, "{\"port\":8081}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(listing(), before);
}

// ---- unregistering ----

TEST_F(RegistryHandlerOverHttp, UnregistersAServiceAndTellsTheSubscribers)
{
    const Answer registered = registerService("cabin", "127.0.0.1", 8080);
    trigger.clear();

    const Answer answer = send(HTTPRequest::HTTP_DELETE, registered.location);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(textOf(registered.location), "404 " + errorBody(404));
    EXPECT_EQ(listing(), listOf(""));
    EXPECT_EQ(trigger.changes(), std::vector<std::string>{"delete " + registered.location});
}

TEST_F(RegistryHandlerOverHttp, AnswersTheUnregistrationOfAnUnknownUuidWithNotFound)
{
    registerService("cabin", "127.0.0.1", 8080);
    const std::string before = listing();

    const Answer answer =
        send(HTTPRequest::HTTP_DELETE, std::string(SERVICES) + "/d0000000-0000-4000-8000-000000000000");

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(listing(), before);
}

TEST_F(RegistryHandlerOverHttp, RefusesToClearAnAttributeOfARegistrationByItsAccessRules)
{
    const Answer registered = send(HTTPRequest::HTTP_POST, SERVICES, CABIN);
    const std::string before = listing();

    const Answer answer = send(HTTPRequest::HTTP_DELETE, registered.location + "?$fields=description");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(listing(), before);
}

} // namespace
