#include "JSONDataCache/DBData/Service.h"

#include <Poco/Exception.h>
#include <Poco/SharedPtr.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::DBData::Resource;
using Orvi::DBData::ResourcePtr;
using Orvi::DBData::Service;
using testing::HasSubstr;
using testing::StartsWith;

Service::StringList makeList(const std::vector<std::string>& texts)
{
    Service::StringList list;
    for (const std::string& text : texts)
    {
        list.emplace_back(new std::string(text));
    }
    return list;
}

std::vector<std::string> texts(const Service::StringList& list)
{
    std::vector<std::string> result;
    for (const auto& entry : list)
    {
        result.push_back(*entry);
    }
    return result;
}

ResourcePtr makeResource(Service& service, const std::string& name, const std::string& description = "")
{
    ResourcePtr resource(new Resource(service));
    resource->setName(name);
    resource->setDescription(description);
    return resource;
}

TEST(Service, IsEmptyAfterConstruction)
{
    const Service sut;

    EXPECT_EQ(sut.getDBID(), -1);
    EXPECT_EQ(sut.getName(), "");
    EXPECT_TRUE(sut.getId().isEmpty());
    EXPECT_TRUE(sut.getResources().empty());
    EXPECT_EQ(sut.getDescription(), "");
    EXPECT_EQ(sut.getSpec(), "");
    EXPECT_EQ(sut.getPort(), 0);
    EXPECT_EQ(sut.getVisibility(), Orvi::DBData::ServiceVisibility_Default);
    EXPECT_TRUE(sut.getPrivileges().empty());
    EXPECT_TRUE(sut.getServiceCategories().empty());
    EXPECT_TRUE(sut.getVersions().empty());
}

TEST(Service, AddsAResourceUnderItsName)
{
    Service sut;
    const ResourcePtr resource = makeResource(sut, "speed");

    sut.addResource(resource);

    ASSERT_EQ(sut.getResources().size(), 1u);
    EXPECT_EQ(sut.getResource("speed").get(), resource.get());
}

TEST(Service, GivesNullForAnUnknownResource)
{
    Service sut;
    sut.addResource(makeResource(sut, "speed"));

    EXPECT_TRUE(sut.getResource("rpm").isNull());
}

TEST(Service, IgnoresANullResource)
{
    Service sut;

    sut.addResource(ResourcePtr());

    EXPECT_TRUE(sut.getResources().empty());
}

TEST(Service, KeepsTheFirstOfTwoResourcesWithOneName)
{
    Service sut;
    sut.addResource(makeResource(sut, "speed", "first"));

    sut.addResource(makeResource(sut, "speed", "second"));

    ASSERT_EQ(sut.getResources().size(), 1u);
    EXPECT_EQ(sut.getResource("speed")->getDescription(), "first");
}

TEST(Service, RefusesAResourceOfAnotherServiceWithABugcheck)
{
    Service sut;
    Service other;
    const ResourcePtr foreign = makeResource(other, "speed");

    try
    {
        sut.addResource(foreign);
        FAIL() << "no bugcheck";
    }
    catch (const Poco::BugcheckException& e)
    {
        EXPECT_THAT(e.message(), StartsWith("Can not add resource with different parent in file \""));
        EXPECT_THAT(e.message(), HasSubstr("Service.cpp\", line "));
    }
    EXPECT_TRUE(sut.getResources().empty());
}

TEST(Service, OrdersResourcesByTheBytesOfTheirNames)
{
    Service sut;
    sut.addResource(makeResource(sut, "b"));
    sut.addResource(makeResource(sut, "a"));
    sut.addResource(makeResource(sut, "C"));

    std::vector<std::string> names;
    for (const auto& entry : sut.getResources())
    {
        names.push_back(entry.first);
    }

    EXPECT_EQ(names, (std::vector<std::string>{"C", "a", "b"}));
}

TEST(Service, SetsDescriptionInAllForms)
{
    Service sut;
    const std::string copied = "copied";
    std::string moved = "moved";

    sut.setDescription(copied);
    EXPECT_EQ(sut.getDescription(), "copied");
    sut.setDescription(std::move(moved));
    EXPECT_EQ(sut.getDescription(), "moved");
    sut.setDescription("literal");
    EXPECT_EQ(sut.getDescription(), "literal");
}

TEST(Service, SetsSpecInAllForms)
{
    Service sut;
    const std::string copied = "{\"a\":1}";
    std::string moved = "{\"b\":2}";

    sut.setSpec(copied);
    EXPECT_EQ(sut.getSpec(), "{\"a\":1}");
    sut.setSpec(std::move(moved));
    EXPECT_EQ(sut.getSpec(), "{\"b\":2}");
    sut.setSpec("{}");
    EXPECT_EQ(sut.getSpec(), "{}");
}

TEST(Service, SetsPortAndVisibility)
{
    Service sut;
    const Orvi::DBData::ServiceVisibility_t visibility = Orvi::DBData::ServiceVisibility_Localhost;

    sut.setPort(8081);
    sut.setVisibility(visibility);

    EXPECT_EQ(sut.getPort(), 8081);
    EXPECT_EQ(sut.getVisibility(), Orvi::DBData::ServiceVisibility_Localhost);
}

TEST(Service, SetsPrivilegesAndVersionsByCopyAndByMove)
{
    Service sut;
    const Service::StringList privileges = makeList({"read", "write"});

    sut.setPrivileges(privileges);
    sut.setVersions(makeList({"1.0.0", "1.1.0"}));

    EXPECT_EQ(texts(sut.getPrivileges()), (std::vector<std::string>{"read", "write"}));
    EXPECT_EQ(sut.getPrivileges()[0].get(), privileges[0].get());
    EXPECT_EQ(texts(sut.getVersions()), (std::vector<std::string>{"1.0.0", "1.1.0"}));

    const Service::StringList versions = makeList({"2.0.0"});
    Service::StringList movedPrivileges = makeList({"admin"});
    sut.setVersions(versions);
    sut.setPrivileges(std::move(movedPrivileges));

    EXPECT_EQ(texts(sut.getVersions()), (std::vector<std::string>{"2.0.0"}));
    EXPECT_EQ(texts(sut.getPrivileges()), (std::vector<std::string>{"admin"}));
}

TEST(Service, SetServiceCategoriesReplacesTheListAndGivesTrue)
{
    Service sut;
    const Service::StringList categories = makeList({"vehicle", "body"});

    const bool copied = sut.setServiceCategories(categories);

    EXPECT_TRUE(copied);
    EXPECT_EQ(texts(sut.getServiceCategories()), (std::vector<std::string>{"vehicle", "body"}));

    const bool moved = sut.setServiceCategories(makeList({"media"}));

    EXPECT_TRUE(moved);
    EXPECT_EQ(texts(sut.getServiceCategories()), (std::vector<std::string>{"media"}));
}

TEST(Service, SetServiceCategoriesGivesTrueForAnEmptyList)
{
    Service sut;
    sut.setServiceCategories(makeList({"vehicle"}));
    const Service::StringList empty;

    const bool result = sut.setServiceCategories(empty);

    EXPECT_TRUE(result);
    EXPECT_TRUE(sut.getServiceCategories().empty());
}

} // namespace
