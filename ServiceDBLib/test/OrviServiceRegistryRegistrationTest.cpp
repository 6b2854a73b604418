#include "OrviServiceRegistryRegistration.h"

#include "AnnouncedService.h"
#include "ApplicationServices.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueStringable.h"
#include "Data/MicroServiceInfo.h"
#include "DataAccess/ServiceAccess.h"
#include "FleetServiceMap.h"
#include "IdRefusingCache.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/JSONDataCache.h"
#include "ServiceLocator.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RegistryAddressGuard.h"
#include "TestSupport/TestServiceRegistry.h"

#include <Poco/Exception.h>
#include <Poco/SharedPtr.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using Orvi::MicroServiceInfo;
using Orvi::DBData::ServiceMap;
using Orvi::JSONDataCache::JSONDataCache;
using Orvi::Service::OrviServiceRegistryRegistration;
using Orvi::Util::ApplicationServices;
using Orvi::Util::ServiceLocator;
using ServiceDB::Test::AnnouncedService;
using ServiceDB::Test::IdRefusingCache;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::RegistryAddressGuard;
using ServiceDB::Test::TestServiceRegistry;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Request = TestServiceRegistry::Request;

namespace
{

const std::string PATH = "/registry/services";
const std::string FLEET_ID = "f1ee7000-0000-4000-8000-000000000001";
const std::string GARAGE_ID = "6a2a6e00-0000-4000-8000-000000000002";
const std::string WORKSHOP_ID = "3025b000-0000-4000-8000-000000000003";

const std::string FLEET_BODY =
    "{\"name\":\"fleet\",\"host\":\"127.0.0.1\",\"port\":8090,"
    "\"description\":\"Cars and their drivers\",\"versions\":[\"1.0.0\",\"1.1.0\"],"
    "\"privileges\":[\"fleet.read\"],\"categories\":[\"logistics\"]}";
const std::string GARAGE_BODY = "{\"name\":\"garage\",\"host\":\"127.0.0.1\",\"port\":8091,"
                                "\"description\":\"Parking spots\",\"versions\":[],\"privileges\":[],"
                                "\"categories\":[]}";
const std::string WORKSHOP_BODY = "{\"name\":\"workshop\",\"host\":\"127.0.0.1\",\"port\":8092,"
                                  "\"description\":\"Repairs\",\"versions\":[],\"privileges\":[],"
                                  "\"categories\":[]}";

Orvi::DBData::Service::StringList strings(const std::vector<std::string>& texts)
{
    Orvi::DBData::Service::StringList result;
    for (const std::string& text : texts)
    {
        result.push_back(new std::string(text));
    }
    return result;
}

// The fleet's two services as the registry should see them, each with a UUID of its own.
ServiceMap describedFleet()
{
    ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    Orvi::DBData::Service& fleet = *services.at("fleet");
    fleet.setUUID(Orvi::DBData::UUID(FLEET_ID));
    fleet.setDescription("Cars and their drivers");
    fleet.setVersions(strings({"1.0.0", "1.1.0"}));
    fleet.setPrivileges(strings({"fleet.read"}));
    fleet.setServiceCategories(strings({"logistics"}));
    Orvi::DBData::Service& garage = *services.at("garage");
    garage.setUUID(Orvi::DBData::UUID(GARAGE_ID));
    garage.setDescription("Parking spots");
    return services;
}

std::string texts(const Orvi::Data::AttributeValueStringArray& array)
{
    std::string text = "[";
    for (const Orvi::Data::AttributeValueString& element : array)
    {
        text += (text.size() > 1 ? "," : "") + element.get();
    }
    return text + "]";
}

// A description as "name port id uri 'description' versions privileges categories".
std::string describe(const MicroServiceInfo& info)
{
    return info.getName() + " " + std::to_string(info.getPort()) + " " + info.getIdString() + " " +
           info.getUri().toString() + " '" + info.getDescription() + "' " + texts(info.getVersions()) + " " +
           texts(info.getPrivileges()) + " " + texts(info.getServiceCategories());
}

template <typename Info>
std::vector<std::string> describeAll(const std::vector<Info>& infos)
{
    std::vector<std::string> result;
    for (const Info& info : infos)
    {
        result.push_back(describe(info));
    }
    return result;
}

// Points the registry address at the test registry and takes the application's locator away; both are
// restored afterwards.
class OrviServiceRegistryRegistrationTest : public ::testing::Test
{
protected:
    OrviServiceRegistryRegistrationTest()
        : m_locator(ApplicationServices::getLocator())
    {
        ApplicationServices::setLocator(nullptr);
    }

    ~OrviServiceRegistryRegistrationTest() override { ApplicationServices::setLocator(m_locator); }

    std::string uuidOf(const std::string& service) { return cache->selectService(service)->getUUID(); }

    std::vector<std::string> memberList() const { return describeAll(sut.getRegisteredServices()); }

    TestServiceRegistry registry;
    RegistryAddressGuard address{registry.port()};
    LogCapture log;
    ServiceMap services = describedFleet();
    Poco::SharedPtr<JSONDataCache> cache = new JSONDataCache(services);
    ServiceLocator locator;
    OrviServiceRegistryRegistration sut;

private:
    Orvi::Util::ServiceLocator* m_locator;
};

} // namespace

TEST_F(OrviServiceRegistryRegistrationTest, FailsWithoutCacheAndWithoutLocatorWithOneLine)
{
    const bool result = sut.registerServicesImpl();

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(), ElementsAre("Error: No JSONDataCache available"));
    EXPECT_THAT(registry.requests(), IsEmpty());
}

TEST_F(OrviServiceRegistryRegistrationTest, FailsWithoutCacheWhenTheLocatorHoldsNone)
{
    ApplicationServices::setLocator(&locator);

    const bool result = sut.registerServicesImpl();

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(), ElementsAre("Error: No JSONDataCache available"));
    EXPECT_THAT(registry.requests(), IsEmpty());
}

TEST_F(OrviServiceRegistryRegistrationTest, RegistersTheServicesOfTheCacheFoundThroughTheLocator)
{
    locator.registerService<JSONDataCache>(cache);
    ApplicationServices::setLocator(&locator);

    const bool result = sut.registerServicesImpl();

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, FLEET_BODY}, Request{"POST", PATH, GARAGE_BODY}));
    EXPECT_EQ(uuidOf("fleet"), TestServiceRegistry::idOf(1));
    EXPECT_EQ(uuidOf("garage"), TestServiceRegistry::idOf(2));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(OrviServiceRegistryRegistrationTest, LeavesTheCacheFoundThroughTheLocatorToTheLocator)
{
    locator.registerService<JSONDataCache>(cache);
    ApplicationServices::setLocator(&locator);

    sut.registerServicesImpl();

    EXPECT_EQ(cache.referenceCount(), 2);
}

TEST_F(OrviServiceRegistryRegistrationTest, RaisesBadCastForALocatorEntryOfAnotherType)
{
    ServiceMap others = ServiceDB::Test::Fleet::makeFleet();
    // typeid ignores the qualifier, so the entry holds another pointer type under the cache's key.
    locator.registerService<volatile JSONDataCache>(
        Poco::SharedPtr<volatile JSONDataCache>(new JSONDataCache(others)));
    ApplicationServices::setLocator(&locator);

    try
    {
        sut.registerServicesImpl();
        FAIL() << "no exception";
    }
    catch (const Poco::BadCastException& error)
    {
        EXPECT_EQ(error.message(), "Failed to convert between Any types");
    }
    EXPECT_THAT(registry.requests(), IsEmpty());
}

TEST_F(OrviServiceRegistryRegistrationTest, PrefersTheCacheItWasGivenToTheLocators)
{
    ServiceMap others = ServiceDB::Test::Fleet::makeFleet();
    others.erase("fleet");
    locator.registerService<JSONDataCache>(Poco::SharedPtr<JSONDataCache>(new JSONDataCache(others)));
    ApplicationServices::setLocator(&locator);
    sut.setCache(*cache);

    const bool result = sut.registerServicesImpl();

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, FLEET_BODY}, Request{"POST", PATH, GARAGE_BODY}));
}

TEST_F(OrviServiceRegistryRegistrationTest, FailsForADatabaseWithoutServicesWithoutARequest)
{
    ServiceMap none;
    JSONDataCache empty(none);
    sut.setCache(empty);

    const bool result = sut.registerServicesImpl();

    EXPECT_FALSE(result);
    EXPECT_THAT(registry.requests(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("Error: Selection of services failed."));
    EXPECT_THAT(memberList(), IsEmpty());
}

TEST_F(OrviServiceRegistryRegistrationTest, MakesTheAssignedIdsTheUUIDsOfTheServicesInTheCache)
{
    sut.setCache(*cache);

    const bool result = sut.registerServicesImpl();

    EXPECT_TRUE(result);
    Orvi::DBData::Service garage;
    ASSERT_TRUE(cache->selectService("garage", garage));
    EXPECT_EQ(garage.getUUID(), TestServiceRegistry::idOf(2));
    EXPECT_EQ(garage.getId().get(), Poco::UUID(TestServiceRegistry::idOf(2)));
    EXPECT_EQ(uuidOf("fleet"), TestServiceRegistry::idOf(1));
    EXPECT_THAT(memberList(),
                ElementsAre("fleet 8090 " + TestServiceRegistry::idOf(1) +
                                "  'Cars and their drivers' [1.0.0,1.1.0] [fleet.read] [logistics]",
                            "garage 8091 " + TestServiceRegistry::idOf(2) + "  'Parking spots' [] [] []"));
}

TEST_F(OrviServiceRegistryRegistrationTest, AppendsTheSameServicesAgainAtARegistryThatTakesDuplicates)
{
    registry.acceptDuplicates();
    sut.setCache(*cache);
    ASSERT_TRUE(sut.registerServicesImpl());

    const bool result = sut.registerServicesImpl();

    EXPECT_TRUE(result);
    EXPECT_THAT(memberList(),
                ElementsAre("fleet 8090 " + TestServiceRegistry::idOf(1) +
                                "  'Cars and their drivers' [1.0.0,1.1.0] [fleet.read] [logistics]",
                            "garage 8091 " + TestServiceRegistry::idOf(2) + "  'Parking spots' [] [] []",
                            "fleet 8090 " + TestServiceRegistry::idOf(3) +
                                "  'Cars and their drivers' [1.0.0,1.1.0] [fleet.read] [logistics]",
                            "garage 8091 " + TestServiceRegistry::idOf(4) + "  'Parking spots' [] [] []"));
    EXPECT_EQ(uuidOf("fleet"), TestServiceRegistry::idOf(3));
    EXPECT_EQ(uuidOf("garage"), TestServiceRegistry::idOf(4));
}

TEST_F(OrviServiceRegistryRegistrationTest, StopsAtTheServiceWhoseIdCannotBeWrittenAndKeepsThoseBefore)
{
    Orvi::DBData::Service::Ptr workshop(new Orvi::DBData::Service);
    workshop->setName("workshop");
    workshop->setUUID(Orvi::DBData::UUID(WORKSHOP_ID));
    workshop->setPort(8092);
    workshop->setDescription("Repairs");
    services.emplace("workshop", workshop);
    IdRefusingCache refusing(services, "garage");
    sut.setCache(refusing);

    const bool result = sut.registerServicesImpl();

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(), ElementsAre("Error: Failed to update id of service 'garage'"));
    EXPECT_THAT(memberList(),
                ElementsAre("fleet 8090 " + TestServiceRegistry::idOf(1) +
                            "  'Cars and their drivers' [1.0.0,1.1.0] [fleet.read] [logistics]"));
    EXPECT_EQ(refusing.selectService("fleet")->getUUID(), TestServiceRegistry::idOf(1));
    EXPECT_EQ(refusing.selectService("garage")->getUUID(), GARAGE_ID);
    EXPECT_EQ(refusing.selectService("workshop")->getUUID(), WORKSHOP_ID);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, FLEET_BODY}, Request{"POST", PATH, GARAGE_BODY},
                            Request{"POST", PATH, WORKSHOP_BODY}));
}

TEST_F(OrviServiceRegistryRegistrationTest, LogsARegistryThatRefusesAndChangesNothing)
{
    const std::string garageId = registry.add("garage", "127.0.0.1", 8091);
    sut.setCache(*cache);

    const bool result = sut.registerServicesImpl();

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(),
                ElementsAre("Error: Registering service 'garage' at service registry 127.0.0.1:" +
                                std::to_string(registry.port()) +
                                " failed: answered 409 Conflict: service already registered",
                            "Error: Registration of services failed."));
    EXPECT_THAT(memberList(), IsEmpty());
    EXPECT_EQ(uuidOf("fleet"), FLEET_ID);
    EXPECT_EQ(uuidOf("garage"), GARAGE_ID);
    EXPECT_THAT(registry.registrations(), ElementsAre(garageId + " garage 127.0.0.1:8091"));
}

TEST_F(OrviServiceRegistryRegistrationTest, FailsForAnEmptyListWithoutLineAndWithoutRequest)
{
    sut.setCache(*cache);
    std::vector<MicroServiceInfo> list;

    const bool result = sut.registerServicesImpl(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(registry.requests(), IsEmpty());
}

TEST_F(OrviServiceRegistryRegistrationTest, FailsToRegisterAListWithoutCache)
{
    std::vector<MicroServiceInfo> list{
        MicroServiceInfo(Poco::UUID(FLEET_ID), Poco::URI(), "fleet", 8090, "Cars")};

    const bool result = sut.registerServicesImpl(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(log.lines(), ElementsAre("Error: No JSONDataCache available"));
    EXPECT_THAT(registry.requests(), IsEmpty());
}

TEST_F(OrviServiceRegistryRegistrationTest, KeepsCopiesThatShareNothingWithTheListGiven)
{
    sut.setCache(*cache);
    std::vector<MicroServiceInfo> list;
    ASSERT_TRUE(sut.getServiceListImpl(list));
    ASSERT_TRUE(sut.registerServicesImpl(list));

    list[0].getAttributesRef().getValue<Orvi::Data::AttributeValueString>(
        Orvi::Data::ServiceBase::KEY_DESCRIPTION) = Orvi::Data::AttributeValueString("Changed");

    EXPECT_EQ(list[0].getDescription(), "Changed");
    EXPECT_EQ(sut.getRegisteredServices()[0].getDescription(), "Cars and their drivers");
}

TEST_F(OrviServiceRegistryRegistrationTest, DescribesEveryServiceOfTheCacheInNameOrder)
{
    services.at("garage")->setVersions({Poco::SharedPtr<std::string>(), new std::string("2.0.0")});
    sut.setCache(*cache);
    std::vector<MicroServiceInfo> list;

    const bool result = sut.getServiceListImpl(list);

    EXPECT_TRUE(result);
    EXPECT_THAT(describeAll(list),
                ElementsAre("fleet 8090 " + FLEET_ID +
                                "  'Cars and their drivers' [1.0.0,1.1.0] [fleet.read] [logistics]",
                            "garage 8091 " + GARAGE_ID + "  'Parking spots' [2.0.0] [] []"));
    EXPECT_EQ(list[0].id(), -1);
    EXPECT_THAT(registry.requests(), IsEmpty());
}

TEST_F(OrviServiceRegistryRegistrationTest, FailsToDescribeWithoutCache)
{
    std::vector<MicroServiceInfo> list;

    const bool result = sut.getServiceListImpl(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(list, IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("Error: No JSONDataCache available"));
}

TEST_F(OrviServiceRegistryRegistrationTest, RaisesNullPointerForAnEmptyServiceRow)
{
    ServiceMap broken{{"ghost", Orvi::DBData::Service::Ptr()}};
    JSONDataCache brokenCache(broken);
    sut.setCache(brokenCache);
    std::vector<MicroServiceInfo> list;

    try
    {
        sut.getServiceListImpl(list);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& error)
    {
        EXPECT_EQ(error.message(), "Invalid service pointer");
    }
}

TEST_F(OrviServiceRegistryRegistrationTest, RegistersAListOfDescriptionsThroughTheTemplate)
{
    sut.setCache(*cache);
    std::vector<MicroServiceInfo> list;
    ASSERT_TRUE(sut.getServiceList(list));

    const bool result = sut.registerServices(list);

    EXPECT_TRUE(result);
    EXPECT_EQ(list[0].getIdString(), TestServiceRegistry::idOf(1));
    EXPECT_EQ(list[1].getIdString(), TestServiceRegistry::idOf(2));
    EXPECT_EQ(uuidOf("garage"), TestServiceRegistry::idOf(2));
}

TEST_F(OrviServiceRegistryRegistrationTest, RegistersViewsOfServicesThroughTheTemplate)
{
    sut.setCache(*cache);
    std::vector<Orvi::Service::DataAccess::ServiceAccess> views{{services.at("fleet"), *cache},
                                                                {services.at("garage"), *cache}};

    const bool result = sut.registerServices(views);

    EXPECT_TRUE(result);
    EXPECT_THAT(registry.requests(),
                ElementsAre(Request{"POST", PATH, FLEET_BODY}, Request{"POST", PATH, GARAGE_BODY}));
    EXPECT_EQ(views[0].getIdString(), TestServiceRegistry::idOf(1));
    EXPECT_EQ(views[1].getIdString(), TestServiceRegistry::idOf(2));
    EXPECT_EQ(uuidOf("fleet"), TestServiceRegistry::idOf(1));
}

TEST_F(OrviServiceRegistryRegistrationTest, LeavesTheIdsOfViewsAsTheyWereWhenTheRegistryRefuses)
{
    registry.add("fleet", "127.0.0.1", 8090);
    sut.setCache(*cache);
    std::vector<Orvi::Service::DataAccess::ServiceAccess> views{{services.at("fleet"), *cache}};

    const bool result = sut.registerServices(views);

    EXPECT_FALSE(result);
    EXPECT_EQ(views[0].getIdString(), FLEET_ID);
}

TEST_F(OrviServiceRegistryRegistrationTest, GivesTheDescriptionsAsADerivedClassThroughTheTemplate)
{
    sut.setCache(*cache);
    std::vector<AnnouncedService> list;

    const bool result = sut.getServiceList(list);

    EXPECT_TRUE(result);
    EXPECT_THAT(describeAll(list),
                ElementsAre("fleet 8090 " + FLEET_ID +
                                "  'Cars and their drivers' [1.0.0,1.1.0] [fleet.read] [logistics]",
                            "garage 8091 " + GARAGE_ID + "  'Parking spots' [] [] []"));
}

TEST_F(OrviServiceRegistryRegistrationTest, GivesNoDerivedDescriptionsWithoutCache)
{
    std::vector<AnnouncedService> list;

    const bool result = sut.getServiceList(list);

    EXPECT_FALSE(result);
    EXPECT_THAT(list, IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("Error: No JSONDataCache available"));
}
