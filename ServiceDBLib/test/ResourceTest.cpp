#include "JSONDataCache/DBData/Resource.h"

#include "JSONDataCache/DBData/Service.h"

#include <Poco/Exception.h>
#include <Poco/SharedPtr.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::Element;
using Orvi::DBData::Endpoint;
using Orvi::DBData::Resource;
using Orvi::DBData::ResourcePtr;
using Orvi::DBData::Service;
using Orvi::DBData::UUID;
using testing::HasSubstr;
using testing::StartsWith;

const std::string SERVICE_UUID = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";
const std::string RESOURCE_UUID = "123e4567-e89b-42d3-a456-426614174000";
const std::string SCRATCH_RESOURCE_UUID = "00000000-0000-4000-8000-000000000001";

Endpoint makeEndpoint(const std::string& attributeName)
{
    Endpoint endpoint;
    endpoint.setGet(true);
    endpoint.setAttribute(new Attribute(attributeName));
    return endpoint;
}

TEST(Resource, IsEmptyAfterConstruction)
{
    Service service;

    const Resource sut(service);

    EXPECT_EQ(&sut.getService(), &service);
    EXPECT_TRUE(sut.getElement().isNull());
    EXPECT_EQ(sut.getDescription(), "");
    EXPECT_EQ(sut.getSpec(), "");
    EXPECT_TRUE(sut.getEndpoints().empty());
    EXPECT_EQ(sut.getDBID(), -1);
    EXPECT_EQ(sut.getName(), "");
}

TEST(Resource, AttachesAnElementBuiltOnIt)
{
    Service service;
    Resource sut(service);
    const Element::Ptr element(new Element(sut));

    sut.setElement(element);

    EXPECT_EQ(sut.getElement().get(), element.get());
}

TEST(Resource, IgnoresANullElementAndKeepsThePresentOne)
{
    Service service;
    Resource sut(service);
    const Element::Ptr element(new Element(sut));
    sut.setElement(element);

    sut.setElement(Element::Ptr());

    EXPECT_EQ(sut.getElement().get(), element.get());
}

TEST(Resource, RefusesAnElementOfAnotherResourceWithABugcheck)
{
    Service service;
    Resource sut(service);
    Resource other(service);
    const Element::Ptr foreign(new Element(other));

    try
    {
        sut.setElement(foreign);
        FAIL() << "no bugcheck";
    }
    catch (const Poco::BugcheckException& e)
    {
        EXPECT_THAT(e.message(), StartsWith("Can not add element with different parent in file \""));
        EXPECT_THAT(e.message(), HasSubstr("Resource.cpp\", line "));
    }
    EXPECT_TRUE(sut.getElement().isNull());
}

TEST(Resource, SetsDescriptionAndSpecInAllForms)
{
    Service service;
    Resource sut(service);
    const std::string copied = "copied";
    std::string movedDescription = "moved";
    std::string movedSpec = "{\"moved\":true}";

    sut.setDescription(copied);
    sut.setSpec(copied);
    EXPECT_EQ(sut.getDescription(), "copied");
    EXPECT_EQ(sut.getSpec(), "copied");

    sut.setDescription(std::move(movedDescription));
    sut.setSpec(std::move(movedSpec));
    EXPECT_EQ(sut.getDescription(), "moved");
    EXPECT_EQ(sut.getSpec(), "{\"moved\":true}");

    sut.setDescription("literal");
    sut.setSpec("{}");
    EXPECT_EQ(sut.getDescription(), "literal");
    EXPECT_EQ(sut.getSpec(), "{}");
}

TEST(Resource, SetsEndpointsByCopyAndByMove)
{
    Service service;
    Resource sut(service);
    const std::vector<Endpoint> copied{makeEndpoint("a")};

    sut.setEndpoints(copied);
    ASSERT_EQ(sut.getEndpoints().size(), 1u);
    EXPECT_EQ(sut.getEndpoints()[0].getAttribute()->getName(), "a");

    sut.setEndpoints(std::vector<Endpoint>{makeEndpoint("b"), makeEndpoint("c")});
    ASSERT_EQ(sut.getEndpoints().size(), 2u);
    EXPECT_EQ(sut.getEndpoints()[1].getAttribute()->getName(), "c");
}

struct StoredService
{
    StoredService()
    {
        service.setDBID(7);
        service.setName("vehicle");
        service.setUUID(UUID(SERVICE_UUID));
        service.setDescription("stored service");
        service.setPort(8090);
        service.setVisibility(Orvi::DBData::ServiceVisibility_Localhost);
        service.setPrivileges(Service::StringList{Poco::SharedPtr<std::string>(new std::string("read"))});
        service.setServiceCategories(
            Service::StringList{Poco::SharedPtr<std::string>(new std::string("cat"))});
        service.setVersions(Service::StringList{Poco::SharedPtr<std::string>(new std::string("1.0.0"))});
        service.setSpec("{\"service\":\"vehicle\"}");

        resource = new Resource(service);
        resource->setDBID(11);
        resource->setName("speed");
        resource->setUUID(UUID(RESOURCE_UUID));
        resource->setDescription("stored resource");
        resource->setSpec("{\"resource\":\"speed\"}");
        resource->setEndpoints(std::vector<Endpoint>{makeEndpoint("value")});
        element = new Element(*resource);
        resource->setElement(element);
        service.addResource(resource);
    }

    Service service;
    ResourcePtr resource;
    Element::Ptr element;
};

TEST(Resource, AssignmentFillsTheServiceBehindTheParent)
{
    const StoredService stored;
    Service scratch;
    Resource sut(scratch);

    sut = *stored.resource;

    EXPECT_EQ(scratch.getDBID(), 7);
    EXPECT_EQ(scratch.getName(), "vehicle");
    EXPECT_EQ(scratch.getUUID(), SERVICE_UUID);
    EXPECT_EQ(scratch.getDescription(), "stored service");
    EXPECT_EQ(scratch.getPort(), 8090);
    EXPECT_EQ(scratch.getVisibility(), Orvi::DBData::ServiceVisibility_Localhost);
    EXPECT_EQ(*scratch.getPrivileges().at(0), "read");
    EXPECT_EQ(*scratch.getServiceCategories().at(0), "cat");
    EXPECT_EQ(*scratch.getVersions().at(0), "1.0.0");
    EXPECT_EQ(scratch.getSpec(), "{\"service\":\"vehicle\"}");
    EXPECT_EQ(scratch.getResource("speed").get(), stored.resource.get());
}

TEST(Resource, AssignmentTakesElementDescriptionSpecAndEndpoints)
{
    const StoredService stored;
    Service scratch;
    Resource sut(scratch);

    sut = *stored.resource;

    EXPECT_EQ(sut.getElement().get(), stored.element.get());
    EXPECT_EQ(sut.getDescription(), "stored resource");
    EXPECT_EQ(sut.getSpec(), "{\"resource\":\"speed\"}");
    ASSERT_EQ(sut.getEndpoints().size(), 1u);
    EXPECT_EQ(sut.getEndpoints()[0].getAttribute()->getName(), "value");
    EXPECT_EQ(&sut.getService(), &scratch);
}

TEST(Resource, AssignmentKeepsTheTargetsOwnIdNameAndUUID)
{
    const StoredService stored;
    Service scratch;
    Resource sut(scratch);
    sut.setDBID(99);
    sut.setName("scratch");
    sut.setUUID(UUID(SCRATCH_RESOURCE_UUID));

    sut = *stored.resource;

    EXPECT_EQ(sut.getDBID(), 99);
    EXPECT_EQ(sut.getName(), "scratch");
    EXPECT_EQ(sut.getUUID(), SCRATCH_RESOURCE_UUID);
}

TEST(Resource, SelfAssignmentKeepsEverything)
{
    StoredService stored;
    Resource& sut = *stored.resource;
    const Resource& same = sut;

    sut = same;

    EXPECT_EQ(sut.getElement().get(), stored.element.get());
    EXPECT_EQ(sut.getDescription(), "stored resource");
    EXPECT_EQ(stored.service.getName(), "vehicle");
    EXPECT_EQ(stored.service.getResources().size(), 1u);
}

} // namespace
