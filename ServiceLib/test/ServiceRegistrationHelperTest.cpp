#include "ServiceRegistrationHelper.h"

#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueStringable.h"
#include "Data/MicroServiceInfo.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RegistryAddressGuard.h"
#include "TestSupport/TestServiceRegistry.h"

#include <Poco/Net/HTTPResponse.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using Orvi::MicroServiceInfo;
using Orvi::Service::ServiceRegistrationHelper;
using Orvi::Service::ServiceRegistryAbstraction;
using ServiceDB::Test::LogCapture;
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

MicroServiceInfo service(const std::string& name, unsigned int port, const std::string& description)
{
    MicroServiceInfo info(Poco::UUID(LOCAL_ID), Poco::URI(), name, port, description);
    Orvi::Data::AttributeValueStringArray versions;
    versions.addElement(Orvi::Data::AttributeValueString("1.0.0"));
    info.setVersions(versions);
    Orvi::Data::AttributeValueStringArray privileges;
    privileges.addElement(Orvi::Data::AttributeValueString(name + ".read"));
    info.setPrivileges(privileges);
    Orvi::Data::AttributeValueStringArray categories;
    categories.addElement(Orvi::Data::AttributeValueString("comfort"));
    info.setServiceCategories(categories);
    return info;
}

std::string postBody(const std::string& name, unsigned int port, const std::string& description)
{
    return "{\"name\":\"" + name + "\",\"host\":\"127.0.0.1\",\"port\":" + std::to_string(port) +
           ",\"description\":\"" + description + "\",\"versions\":[\"1.0.0\"],\"privileges\":[\"" + name +
           ".read\"],\"categories\":[\"comfort\"]}";
}

// An entry of the member list as "name port id versions privileges categories".
std::string describe(const MicroServiceInfo& info)
{
    std::string text = info.getName() + " " + std::to_string(info.getPort()) + " " + info.getIdString();
    for (const auto& texts : {info.getVersions(), info.getPrivileges(), info.getServiceCategories()})
    {
        text += " [";
        for (const Orvi::Data::AttributeValueString& element : texts)
        {
            text += element.get();
        }
        text += "]";
    }
    return text;
}

// Points the registry address at the test registry and restores the process-wide address afterwards.
class ServiceRegistrationHelperTest : public ::testing::Test
{
protected:
    std::vector<std::string> memberList() const
    {
        std::vector<std::string> result;
        for (const MicroServiceInfo& info : sut.getRegisteredServices())
        {
            result.push_back(describe(info));
        }
        return result;
    }

    // Registers through the helper under test, for the tests of taking back.
    void registerAll(std::vector<MicroServiceInfo> services)
    {
        for (MicroServiceInfo& info : services)
        {
            ASSERT_TRUE(sut.registerService(info));
        }
    }

    TestServiceRegistry registry;
    RegistryAddressGuard address{registry.port()};
    LogCapture log;
    ServiceRegistrationHelper sut;
    MicroServiceInfo cabin = service("cabin", 8080, "Seats and doors");
    MicroServiceInfo media = service("media", 8081, "Audio sources");
    MicroServiceInfo lights = service("lights", 8082, "Interior lights");
};

} // namespace

TEST_F(ServiceRegistrationHelperTest, StartsWithoutRegistrations)
{
    EXPECT_THAT(sut.getRegisteredServices(), IsEmpty());
    EXPECT_EQ(sut.registry().getReceiveTimeout(), ServiceRegistryAbstraction::DEFAULT_RECEIVE_TIMEOUT);
}

TEST_F(ServiceRegistrationHelperTest, RegistersAServiceAndWritesTheAssignedIdIntoIt)
{
    const bool result = sut.registerService(cabin);

    EXPECT_TRUE(result);
    EXPECT_EQ(cabin.getIdString(), TestServiceRegistry::idOf(1));
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, postBody("cabin", 8080, "Seats and doors")}));
    EXPECT_THAT(memberList(), ElementsAre("cabin 8080 " + TestServiceRegistry::idOf(1) +
                                          " [1.0.0] [cabin.read] [comfort]"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ServiceRegistrationHelperTest, RegistersAServiceThatHasNoIdYet)
{
    MicroServiceInfo fresh;
    fresh.setName("cabin");
    fresh.setPort(8080);
    fresh.setDescription("Seats and doors");

    const bool result = sut.registerService(fresh);

    EXPECT_TRUE(result);
    EXPECT_EQ(fresh.getIdString(), TestServiceRegistry::idOf(1));
    EXPECT_THAT(
        registry.requests(),
        ElementsAre(Request{"POST", PATH,
                            "{\"name\":\"cabin\",\"host\":\"127.0.0.1\",\"port\":8080,\"description\":"
                            "\"Seats and doors\",\"versions\":[],\"privileges\":[],\"categories\":[]}"}));
    EXPECT_THAT(memberList(), ElementsAre("cabin 8080 " + TestServiceRegistry::idOf(1) + " [] [] []"));
}

TEST_F(ServiceRegistrationHelperTest, KeepsNothingWhenTheRegistryRefuses)
{
    registry.add("cabin", "127.0.0.1", 8080);

    const bool result = sut.registerService(cabin);

    EXPECT_FALSE(result);
    EXPECT_EQ(cabin.getIdString(), LOCAL_ID);
    EXPECT_THAT(memberList(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("Error: Registering service 'cabin' at service registry 127.0.0.1:" +
                                         std::to_string(registry.port()) +
                                         " failed: answered 409 Conflict: service already registered"));
}

TEST_F(ServiceRegistrationHelperTest, UnregistersTheServiceOfThatNameAndPort)
{
    registerAll({cabin, media});

    const bool result = sut.unregisterService("cabin", 8080);

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, postBody("cabin", 8080, "Seats and doors")},
                            Request{"POST", PATH, postBody("media", 8081, "Audio sources")},
                            Request{"DELETE", PATH + "/" + TestServiceRegistry::idOf(1), ""}));
    EXPECT_THAT(memberList(), ElementsAre("media 8081 " + TestServiceRegistry::idOf(2) +
                                          " [1.0.0] [media.read] [comfort]"));
    EXPECT_THAT(registry.registrations(),
                ElementsAre(TestServiceRegistry::idOf(2) + " media 127.0.0.1:8081"));
}

TEST_F(ServiceRegistrationHelperTest, WarnsWhenNoServiceOfThatNameAndPortIsRegistered)
{
    registerAll({cabin});

    const bool result = sut.unregisterService("cabin", 9090);

    EXPECT_FALSE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, postBody("cabin", 8080, "Seats and doors")}));
    EXPECT_THAT(memberList(), ElementsAre("cabin 8080 " + TestServiceRegistry::idOf(1) +
                                          " [1.0.0] [cabin.read] [comfort]"));
    EXPECT_THAT(log.lines(),
                ElementsAre("Warning: No registration of service 'cabin' on port 9090 to take back"));
}

TEST_F(ServiceRegistrationHelperTest, KeepsTheRegistrationWhenTheRegistryCannotBeReached)
{
    registerAll({cabin});
    ServiceRegistryAbstraction::PORT = RegistryAddressGuard::closedPort();

    const bool result = sut.unregisterService("cabin", 8080);

    EXPECT_FALSE(result);
    EXPECT_THAT(memberList(), ElementsAre("cabin 8080 " + TestServiceRegistry::idOf(1) +
                                          " [1.0.0] [cabin.read] [comfort]"));
    EXPECT_THAT(log.lines(),
                ElementsAre("Error: Unregistering service 'cabin' at service registry 127.0.0.1:" +
                            std::to_string(ServiceRegistryAbstraction::PORT) +
                            " failed: no connection (Connection refused)"));
}

TEST_F(ServiceRegistrationHelperTest, UnregistersEveryServiceInTheOrderOfRegistration)
{
    registerAll({lights, cabin, media});

    const bool result = sut.unregisterServices();

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, postBody("lights", 8082, "Interior lights")},
                            Request{"POST", PATH, postBody("cabin", 8080, "Seats and doors")},
                            Request{"POST", PATH, postBody("media", 8081, "Audio sources")},
                            Request{"DELETE", PATH + "/" + TestServiceRegistry::idOf(1), ""},
                            Request{"DELETE", PATH + "/" + TestServiceRegistry::idOf(2), ""},
                            Request{"DELETE", PATH + "/" + TestServiceRegistry::idOf(3), ""}));
    EXPECT_THAT(memberList(), IsEmpty());
    EXPECT_THAT(registry.registrations(), IsEmpty());
}

TEST_F(ServiceRegistrationHelperTest, KeepsTheServicesThatCouldNotBeUnregistered)
{
    registerAll({cabin, media, lights});
    registry.answerDeleteOf(TestServiceRegistry::idOf(2),
                            {Status::HTTP_SERVICE_UNAVAILABLE, "",
                             "{\"code\":503,\"message\":\"try again later\",\"status\":\"error\"}"});

    const bool result = sut.unregisterServices();

    EXPECT_FALSE(result);
    EXPECT_THAT(memberList(), ElementsAre("media 8081 " + TestServiceRegistry::idOf(2) +
                                          " [1.0.0] [media.read] [comfort]"));
    EXPECT_THAT(registry.registrations(),
                ElementsAre(TestServiceRegistry::idOf(2) + " media 127.0.0.1:8081"));
    EXPECT_THAT(log.lines(),
                ElementsAre("Error: Unregistering service 'media' at service registry 127.0.0.1:" +
                            std::to_string(registry.port()) +
                            " failed: answered 503 Service Unavailable: try again later"));
}

TEST_F(ServiceRegistrationHelperTest, UnregistersNothingWithoutARequestWhenNothingIsRegistered)
{
    const bool result = sut.unregisterServices();

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(), IsEmpty());
}
