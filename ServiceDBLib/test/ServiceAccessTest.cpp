#include "DataAccess/ServiceAccess.h"

#include "DataAccess/ResourceAccess.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/UUID.h"
#include "TypedFleet.h"

#include <Poco/Exception.h>
#include <Poco/SharedPtr.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::Data::ResourceBase;
using Orvi::DBData::Service;
using Orvi::Service::DataAccess::ResourceAccess;
using Orvi::Service::DataAccess::ServiceAccess;
using ServiceDB::Test::Fleet::addResource;
using ServiceDB::Test::Fleet::makeAttribute;
using ServiceDB::Test::Fleet::TypedFleet;
using Texts = std::vector<std::string>;

const std::string DEPOT_UUID = "e0000000-0000-4000-8000-000000000001";
const Orvi::DBData::DbId DEPOT_ID = 41;

Service::StringList listOf(const Texts& texts)
{
    Service::StringList list;
    for (const std::string& text : texts)
    {
        list.emplace_back(new std::string(text));
    }
    return list;
}

class ServiceAccessTest : public testing::Test
{
protected:
    // A service with two resources, added after the fleet, whose names sort against their order of
    // creation.
    ServiceAccessTest()
    {
        depot->setName("depot");
        depot->setDBID(DEPOT_ID);
        depot->setId(Orvi::DBData::UUID(DEPOT_UUID));
        depot->setPort(8092);
        depot->setDescription("Where the cars sleep");
        depot->setSpec("{\"depot\": {}}");
        depot->setPrivileges(listOf({"read", "write"}));
        depot->setVersions(listOf({"2.1.0", "1.0.0"}));
        depot->setServiceCategories(listOf({"vehicle", "parking"}));
        addResource(*depot, "lots", "lot", 5, {makeAttribute("id"), makeAttribute("uri")});
        addResource(*depot, "bays", "bay", 6, {makeAttribute("id"), makeAttribute("uri")});
        fleet.services["depot"] = depot;
    }

    static Texts textsOf(const Orvi::Data::AttributeValueStringArray& array)
    {
        Texts texts;
        for (const std::string& text : array.simplify())
        {
            texts.push_back(text);
        }
        return texts;
    }

    static Texts namesOf(const std::vector<Poco::SharedPtr<ResourceBase>>& resources)
    {
        Texts names;
        for (const Poco::SharedPtr<ResourceBase>& resource : resources)
        {
            names.push_back(resource->getName());
        }
        return names;
    }

    TypedFleet fleet;
    Service::Ptr depot = new Service;
};

TEST_F(ServiceAccessTest, TakesTheRegistryDescriptionFromTheRow)
{
    const ServiceAccess sut(depot, fleet.cache);

    EXPECT_EQ(sut.id(), DEPOT_ID);
    EXPECT_EQ(sut.getName(), "depot");
    EXPECT_EQ(sut.getId(), Poco::UUID(DEPOT_UUID));
    EXPECT_EQ(sut.getIdString(), DEPOT_UUID);
    EXPECT_EQ(sut.getPort(), 8092U);
    EXPECT_EQ(sut.getAllPorts(), std::vector<unsigned int>({8092U}));
    EXPECT_EQ(sut.getDescription(), "Where the cars sleep");
}

TEST_F(ServiceAccessTest, KeepsTheOrderOfTheRowsLists)
{
    const ServiceAccess sut(depot, fleet.cache);

    EXPECT_EQ(textsOf(sut.getPrivileges()), Texts({"read", "write"}));
    EXPECT_EQ(textsOf(sut.getVersions()), Texts({"2.1.0", "1.0.0"}));
    EXPECT_EQ(textsOf(sut.getServiceCategories()), Texts({"vehicle", "parking"}));
}

TEST_F(ServiceAccessTest, StoresEveryEntryOfTheRegistryDescription)
{
    const ServiceAccess sut(depot, fleet.cache);

    Texts keys;
    for (const auto& entry : sut.getAttributes())
    {
        keys.push_back(entry.first);
    }
    EXPECT_EQ(keys, Texts({"categories", "description", "id", "name", "port", "privileges", "versions"}));
}

TEST_F(ServiceAccessTest, GivesTheSpecificationOfTheRow)
{
    const ServiceAccess sut(depot, fleet.cache);

    EXPECT_EQ(sut.getSpecification(), "{\"depot\": {}}");
    EXPECT_EQ(sut.getBase().get(), depot.get());
}

TEST_F(ServiceAccessTest, RaisesNullPointerForAnEmptyService)
{
    try
    {
        ServiceAccess(Service::Ptr(), fleet.cache);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Invalid service pointer");
    }
}

TEST_F(ServiceAccessTest, GivesViewsOfTheResourcesInTheOrderOfTheirNames)
{
    const ServiceAccess sut(depot, fleet.cache);

    const std::vector<Poco::SharedPtr<ResourceBase>> resources = sut.getResources();

    EXPECT_EQ(namesOf(resources), Texts({"bays", "lots"}));
    ASSERT_NE(dynamic_cast<const ResourceAccess*>(resources.front().get()), nullptr);
    EXPECT_EQ(resources.front()->getUri().toString(), "/depot");
}

TEST_F(ServiceAccessTest, MakesTheResourceViewsOnlyOnce)
{
    const ServiceAccess sut(depot, fleet.cache);
    const std::vector<Poco::SharedPtr<ResourceBase>> first = sut.getResources();

    const std::vector<Poco::SharedPtr<ResourceBase>> second = sut.getResources();

    ASSERT_EQ(second.size(), 2U);
    EXPECT_EQ(second[0].get(), first[0].get());
    EXPECT_EQ(second[1].get(), first[1].get());
}

TEST_F(ServiceAccessTest, RaisesNullPointerForAResourceWithoutElement)
{
    const ServiceAccess sut(fleet.services["fleet"], fleet.cache);

    try
    {
        sut.getResources();
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Invalid resource pointer");
    }
}

TEST_F(ServiceAccessTest, CanBeCopiedAndMoved)
{
    const ServiceAccess original(depot, fleet.cache);
    ServiceAccess copy(original);

    const ServiceAccess sut(std::move(copy));

    EXPECT_EQ(sut.getName(), "depot");
    EXPECT_EQ(namesOf(sut.getResources()), Texts({"bays", "lots"}));
    EXPECT_EQ(original.getPort(), 8092U);
}

} // namespace
