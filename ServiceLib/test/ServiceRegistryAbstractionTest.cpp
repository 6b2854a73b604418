#include "ServiceRegistryAbstraction.h"

#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueStringable.h"
#include "Data/MicroServiceInfo.h"
#include "Support/RawReplyServer.h"
#include "TestSupport/FullBacklogListener.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RegistryAddressGuard.h"
#include "TestSupport/TestServiceRegistry.h"

#include <Poco/Net/HTTPResponse.h>
#include <Poco/Timespan.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

using Orvi::MicroServiceInfo;
using Orvi::Service::ServiceRegistryAbstraction;
using ServiceDB::Test::FullBacklogListener;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::RawReplyServer;
using ServiceDB::Test::RegistryAddressGuard;
using ServiceDB::Test::TestServiceRegistry;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Request = TestServiceRegistry::Request;
using Status = Poco::Net::HTTPResponse::HTTPStatus;

namespace
{

const std::string PATH = "/registry/services";
const std::string LOCAL_ID = "0c1d2e3f-4a5b-4c6d-8e7f-901a2b3c4d5e";
const std::string OK_BODY = "{ \"status\" : \"ok\" }";
const std::string OUT_OF_ORDER = "{\"code\":500,\"message\":\"registry out of order\",\"status\":\"error\"}";

const std::string CABIN_BODY =
    "{\"name\":\"cabin\",\"host\":\"127.0.0.1\",\"port\":8080,"
    "\"description\":\"Climate zones, seats, doors and windows\","
    "\"versions\":[\"1.0.0\"],\"privileges\":[],\"categories\":[\"comfort\",\"body\"]}";
const std::string MEDIA_BODY = "{\"name\":\"media\",\"host\":\"127.0.0.1\",\"port\":8081,"
                               "\"description\":\"Audio sources and volume\","
                               "\"versions\":[\"1.0.0\",\"1.1.0\"],\"privileges\":[\"media.control\"],"
                               "\"categories\":[\"infotainment\"]}";

Orvi::Data::AttributeValueStringArray texts(std::initializer_list<std::string> values)
{
    Orvi::Data::AttributeValueStringArray result;
    for (const std::string& value : values)
    {
        result.addElement(Orvi::Data::AttributeValueString(value));
    }
    return result;
}

MicroServiceInfo cabin()
{
    MicroServiceInfo info(Poco::UUID(LOCAL_ID), Poco::URI(), "cabin", 8080,
                          "Climate zones, seats, doors and windows");
    info.setVersions(texts({"1.0.0"}));
    info.setServiceCategories(texts({"comfort", "body"}));
    return info;
}

MicroServiceInfo media()
{
    MicroServiceInfo info(Poco::UUID(LOCAL_ID), Poco::URI(), "media", 8081, "Audio sources and volume");
    info.setVersions(texts({"1.0.0", "1.1.0"}));
    info.setPrivileges(texts({"media.control"}));
    info.setServiceCategories(texts({"infotainment"}));
    return info;
}

MicroServiceInfo lights()
{
    return MicroServiceInfo(Poco::UUID(LOCAL_ID), Poco::URI(), "lights", 8082, "Interior lights");
}

MicroServiceInfo registered(MicroServiceInfo info, const std::string& id)
{
    info.updateServiceId(Poco::UUID(id));
    return info;
}

// Points the registry address at the test registry and restores the process-wide address afterwards.
class ServiceRegistryAbstractionTest : public ::testing::Test
{
protected:
    // The start of every failure line, naming the registry that the test talks to.
    static std::string registering(const std::string& name)
    {
        return "Error: Registering service '" + name +
               "' at service registry 127.0.0.1:" + std::to_string(ServiceRegistryAbstraction::PORT) +
               " failed: ";
    }

    static std::string unregistering(const std::string& name)
    {
        return "Error: Unregistering service '" + name +
               "' at service registry 127.0.0.1:" + std::to_string(ServiceRegistryAbstraction::PORT) +
               " failed: ";
    }

    TestServiceRegistry registry;
    RegistryAddressGuard address{registry.port()};
    LogCapture log;
    ServiceRegistryAbstraction sut;
};

} // namespace

TEST_F(ServiceRegistryAbstractionTest, WaitsTwoSecondsToConnectAndFiveForEachReadByDefault)
{
    EXPECT_EQ(ServiceRegistryAbstraction::DEFAULT_CONNECT_TIMEOUT, Poco::Timespan(2, 0));
    EXPECT_EQ(ServiceRegistryAbstraction::DEFAULT_RECEIVE_TIMEOUT, Poco::Timespan(5, 0));
    EXPECT_EQ(sut.getConnectTimeout(), Poco::Timespan(2, 0));
    EXPECT_EQ(sut.getReceiveTimeout(), Poco::Timespan(5, 0));
}

TEST_F(ServiceRegistryAbstractionTest, TakesTheTimeoutsItIsGiven)
{
    sut.setTimeouts(Poco::Timespan(0, 300000), Poco::Timespan(1, 0));

    EXPECT_EQ(sut.getConnectTimeout(), Poco::Timespan(0, 300000));
    EXPECT_EQ(sut.getReceiveTimeout(), Poco::Timespan(1, 0));
}

TEST_F(ServiceRegistryAbstractionTest, RegistersAServiceWithOnePostAndTakesTheAssignedId)
{
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_TRUE(result);
    EXPECT_EQ(list[0].getIdString(), TestServiceRegistry::idOf(1));
    EXPECT_THAT(registry.requests(), ElementsAre(Request{"POST", PATH, CABIN_BODY}));
    EXPECT_THAT(registry.registrations(),
                ElementsAre(TestServiceRegistry::idOf(1) + " cabin 127.0.0.1:8080"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ServiceRegistryAbstractionTest, RegistersEveryServiceOfTheListInItsOrder)
{
    std::vector<MicroServiceInfo> list{media(), cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_TRUE(result);
    EXPECT_EQ(list[0].getIdString(), TestServiceRegistry::idOf(1));
    EXPECT_EQ(list[1].getIdString(), TestServiceRegistry::idOf(2));
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, MEDIA_BODY}, Request{"POST", PATH, CABIN_BODY}));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ServiceRegistryAbstractionTest, RegistersAnEmptyListWithoutARequest)
{
    std::vector<MicroServiceInfo> list;

    const bool result = sut.registerServices(list);

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ServiceRegistryAbstractionTest, FailsForADuplicateWithTheRegistrysMessage)
{
    registry.add("cabin", "127.0.0.1", 8080);
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_EQ(list[0].getIdString(), LOCAL_ID);
    EXPECT_THAT(registry.requests(), ElementsAre(Request{"POST", PATH, CABIN_BODY}));
    EXPECT_THAT(log.lines(),
                ElementsAre(registering("cabin") + "answered 409 Conflict: service already registered"));
}

TEST_F(ServiceRegistryAbstractionTest, TakesBackTheServicesRegisteredBeforeARefusal)
{
    const std::string mediaId = registry.add("media", "127.0.0.1", 8081);
    std::vector<MicroServiceInfo> list{cabin(), media(), lights()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, CABIN_BODY}, Request{"POST", PATH, MEDIA_BODY},
                            Request{"DELETE", PATH + "/" + TestServiceRegistry::idOf(2), ""}));
    EXPECT_THAT(registry.registrations(), ElementsAre(mediaId + " media 127.0.0.1:8081"));
    EXPECT_EQ(list[0].getIdString(), TestServiceRegistry::idOf(2));
    EXPECT_THAT(log.lines(),
                ElementsAre(registering("media") + "answered 409 Conflict: service already registered"));
}

TEST_F(ServiceRegistryAbstractionTest, TakesBackInTheOrderOfRegistration)
{
    registry.answerPostOf("lights", {Status::HTTP_BAD_REQUEST, "", "not json"});
    std::vector<MicroServiceInfo> list{cabin(), media(), lights()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, CABIN_BODY}, Request{"POST", PATH, MEDIA_BODY},
                            Request{"POST", PATH,
                                    "{\"name\":\"lights\",\"host\":\"127.0.0.1\",\"port\":8082,"
                                    "\"description\":\"Interior lights\",\"versions\":[],\"privileges\":[],"
                                    "\"categories\":[]}"},
                            Request{"DELETE", PATH + "/" + TestServiceRegistry::idOf(1), ""},
                            Request{"DELETE", PATH + "/" + TestServiceRegistry::idOf(2), ""}));
    EXPECT_THAT(registry.registrations(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(registering("lights") + "answered 400 Bad Request"));
}

TEST_F(ServiceRegistryAbstractionTest, LogsATakeBackThatFailsAfterTheRefusal)
{
    registry.add("media", "127.0.0.1", 8081);
    registry.answerDeleteOf(TestServiceRegistry::idOf(2),
                            {Status::HTTP_INTERNAL_SERVER_ERROR, "", OUT_OF_ORDER});
    std::vector<MicroServiceInfo> list{cabin(), media()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, CABIN_BODY}, Request{"POST", PATH, MEDIA_BODY},
                            Request{"DELETE", PATH + "/" + TestServiceRegistry::idOf(2), ""}));
    EXPECT_THAT(
        log.lines(),
        ElementsAre(registering("media") + "answered 409 Conflict: service already registered",
                    unregistering("cabin") + "answered 500 Internal Server Error: registry out of order"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsWithoutConnectionWhenNobodyListens)
{
    ServiceRegistryAbstraction::PORT = RegistryAddressGuard::closedPort();
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_EQ(list[0].getIdString(), LOCAL_ID);
    EXPECT_THAT(log.lines(), ElementsAre(registering("cabin") + "no connection (Connection refused)"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsWithoutConnectionWhenTheHostIsNotFound)
{
    ServiceRegistryAbstraction::ADDRESS = "registry.invalid";
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(),
                ElementsAre("Error: Registering service 'cabin' at service registry registry.invalid:" +
                            std::to_string(registry.port()) +
                            " failed: no connection (Host not found: registry.invalid)"));
    EXPECT_THAT(registry.requests(), IsEmpty());
}

TEST_F(ServiceRegistryAbstractionTest, FailsWithoutConnectionWhenTheRegistryDoesNotAcceptInTime)
{
    FullBacklogListener listener;
    ServiceRegistryAbstraction::PORT = listener.port();
    sut.setTimeouts(Poco::Timespan(0, 200000), Poco::Timespan(5, 0));
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(),
                ElementsAre(registering("cabin") + "no connection (Timeout: connect timed out: 127.0.0.1:" +
                            std::to_string(listener.port()) + ")"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsWhenTheAnswerIsNotHttp)
{
    RawReplyServer server("hello registry\r\n", RawReplyServer::Ending::Close);
    ServiceRegistryAbstraction::PORT = server.port();
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(server.requestLines(1), ElementsAre("POST /registry/services HTTP/1.1"));
    EXPECT_THAT(log.lines(), ElementsAre(registering("cabin") + "the answer is not HTTP"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsWhenTheAnswerIsTheStatusLineOfAnotherProtocol)
{
    RawReplyServer server("RTSP/1.0 201 Created\r\nLocation: " + PATH + "/" + LOCAL_ID + "\r\n\r\n",
                          RawReplyServer::Ending::Close);
    ServiceRegistryAbstraction::PORT = server.port();
    std::vector<MicroServiceInfo> list{media()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(server.requestLines(1), ElementsAre("POST /registry/services HTTP/1.1"));
    EXPECT_THAT(log.lines(), ElementsAre(registering("media") + "the answer is not HTTP"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsWhenNoAnswerComesWithinTheReceiveTimeout)
{
    RawReplyServer server("", RawReplyServer::Ending::StaySilent);
    ServiceRegistryAbstraction::PORT = server.port();
    sut.setTimeouts(Poco::Timespan(2, 0), Poco::Timespan(0, 200000));
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(server.requestLines(1), ElementsAre("POST /registry/services HTTP/1.1"));
    EXPECT_THAT(log.lines(), ElementsAre(registering("cabin") + "no answer within 200 ms"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsWhenTheRegistryClosesWithoutAnswer)
{
    RawReplyServer server("", RawReplyServer::Ending::Close);
    ServiceRegistryAbstraction::PORT = server.port();
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(server.requestLines(1), ElementsAre("POST /registry/services HTTP/1.1"));
    EXPECT_THAT(log.lines(), ElementsAre(registering("cabin") + "the exchange failed (No message received)"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsForACreatedWithoutLocation)
{
    registry.answerPostOf("cabin", {Status::HTTP_CREATED, "", OK_BODY});
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_EQ(list[0].getIdString(), LOCAL_ID);
    EXPECT_THAT(registry.requests(), ElementsAre(Request{"POST", PATH, CABIN_BODY}));
    EXPECT_THAT(log.lines(), ElementsAre(registering("cabin") + "answered 201 without a Location"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsForACreatedWithALocationOutsideTheRegistry)
{
    registry.answerPostOf("cabin", {Status::HTTP_CREATED, "/elsewhere/" + LOCAL_ID, OK_BODY});
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(),
                ElementsAre(registering("cabin") + "answered 201 with the malformed Location '/elsewhere/" +
                            LOCAL_ID + "'"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsForACreatedWhoseLocationDoesNotEndInAUuid)
{
    registry.answerPostOf("cabin", {Status::HTTP_CREATED, PATH + "/" + LOCAL_ID + "/seats", OK_BODY});
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_EQ(list[0].getIdString(), LOCAL_ID);
    EXPECT_THAT(log.lines(), ElementsAre(registering("cabin") + "answered 201 with the malformed Location '" +
                                         PATH + "/" + LOCAL_ID + "/seats'"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsForAnotherStatusWithoutMessageWhenTheBodyIsNoErrorObject)
{
    registry.answerPostOf("cabin",
                          {Status::HTTP_INTERNAL_SERVER_ERROR, "", "{\"message\":\"not an error object\"}"});
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(), ElementsAre(registering("cabin") + "answered 500 Internal Server Error"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsWithTheStatusWhenTheBodyDoesNotArriveInTime)
{
    RawReplyServer server("HTTP/1.1 409 Conflict\r\nContent-Length: 100\r\n\r\n{\"code\":409",
                          RawReplyServer::Ending::StaySilent);
    ServiceRegistryAbstraction::PORT = server.port();
    sut.setTimeouts(Poco::Timespan(2, 0), Poco::Timespan(0, 200000));
    std::vector<MicroServiceInfo> list{cabin()};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(server.requestLines(1), ElementsAre("POST /registry/services HTTP/1.1"));
    EXPECT_THAT(log.lines(), ElementsAre(registering("cabin") + "answered 409 Conflict"));
}

TEST_F(ServiceRegistryAbstractionTest, RefusesAServiceWithoutNameWithoutARequest)
{
    MicroServiceInfo nameless;
    nameless.setPort(8080);
    std::vector<MicroServiceInfo> list{nameless};

    const bool result = sut.registerServices(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(registry.requests(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(registering("") + "the service has no name"));
}

TEST_F(ServiceRegistryAbstractionTest, UnregistersWithADeleteOfTheId)
{
    const std::string id = registry.add("cabin", "127.0.0.1", 8080);

    const bool result = sut.unregisterService(registered(cabin(), id));

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(), ElementsAre(Request{"DELETE", PATH + "/" + id, ""}));
    EXPECT_THAT(registry.registrations(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ServiceRegistryAbstractionTest, CountsAnIdUnknownToTheRegistryAsUnregisteredWithAWarning)
{
    const bool result = sut.unregisterService(cabin());

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(), ElementsAre(Request{"DELETE", PATH + "/" + LOCAL_ID, ""}));
    EXPECT_THAT(log.lines(),
                ElementsAre("Warning: Unregistering service 'cabin' at service registry 127.0.0.1:" +
                            std::to_string(registry.port()) + ": the registry does not know id " + LOCAL_ID +
                            "; counted as unregistered"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsToUnregisterWhenTheRegistryAnswersAnotherStatus)
{
    const std::string id = registry.add("cabin", "127.0.0.1", 8080);
    registry.answerDeleteOf(id, {Status::HTTP_INTERNAL_SERVER_ERROR, "", OUT_OF_ORDER});

    const bool result = sut.unregisterService(registered(cabin(), id));

    EXPECT_FALSE(result);
    EXPECT_THAT(registry.requests(), ElementsAre(Request{"DELETE", PATH + "/" + id, ""}));
    EXPECT_THAT(log.lines(), ElementsAre(unregistering("cabin") +
                                         "answered 500 Internal Server Error: registry out of order"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsToUnregisterWhenNobodyListens)
{
    ServiceRegistryAbstraction::PORT = RegistryAddressGuard::closedPort();

    const bool result = sut.unregisterService(cabin());

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(), ElementsAre(unregistering("cabin") + "no connection (Connection refused)"));
}

TEST_F(ServiceRegistryAbstractionTest, FailsToUnregisterWhenNoAnswerComesWithinTheReceiveTimeout)
{
    RawReplyServer server("", RawReplyServer::Ending::StaySilent);
    ServiceRegistryAbstraction::PORT = server.port();
    sut.setTimeouts(Poco::Timespan(2, 0), Poco::Timespan(0, 200000));

    const bool result = sut.unregisterService(cabin());

    EXPECT_FALSE(result);
    EXPECT_THAT(server.requestLines(1), ElementsAre("DELETE /registry/services/" + LOCAL_ID + " HTTP/1.1"));
    EXPECT_THAT(log.lines(), ElementsAre(unregistering("cabin") + "no answer within 200 ms"));
}

TEST_F(ServiceRegistryAbstractionTest, RefusesToUnregisterAServiceWithoutIdWithoutARequest)
{
    MicroServiceInfo withoutId;
    withoutId.setName("cabin");

    const bool result = sut.unregisterService(withoutId);

    EXPECT_FALSE(result);
    EXPECT_THAT(registry.requests(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(unregistering("cabin") + "the service has no id"));
}
