#include "JSONDataCache/DBData/Element.h"

#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::Element;
using Orvi::DBData::Endpoint;
using Orvi::DBData::Resource;
using Orvi::DBData::Service;

Endpoint makeEndpoint(const std::string& attributeName)
{
    Endpoint endpoint;
    endpoint.setPost(true);
    endpoint.setAttribute(new Attribute(attributeName));
    return endpoint;
}

TEST(Element, IsBoundToItsResourceAndEmptyAfterConstruction)
{
    Service service;
    Resource resource(service);

    const Element sut(resource);

    EXPECT_EQ(&sut.getResource(), &resource);
    EXPECT_EQ(sut.getName(), "");
    EXPECT_TRUE(sut.getEndpoints().empty());
    EXPECT_EQ(sut.getDBID(), -1);
}

TEST(Element, SetsItsNameFromStringAndFromCharacters)
{
    Service service;
    Resource resource(service);
    Element sut(resource);
    const std::string name = "speedValue";

    sut.setName(name);
    EXPECT_EQ(sut.getName(), "speedValue");

    sut.setName("rpmValue");
    EXPECT_EQ(sut.getName(), "rpmValue");
}

TEST(Element, SetsEndpointsByCopyAndByMove)
{
    Service service;
    Resource resource(service);
    Element sut(resource);
    const std::vector<Endpoint> copied{makeEndpoint("a")};

    sut.setEndpoints(copied);
    ASSERT_EQ(sut.getEndpoints().size(), 1u);
    EXPECT_EQ(sut.getEndpoints()[0].getAttribute()->getName(), "a");

    sut.setEndpoints(std::vector<Endpoint>{makeEndpoint("b"), Endpoint()});
    ASSERT_EQ(sut.getEndpoints().size(), 2u);
    EXPECT_EQ(sut.getEndpoints()[0].getAttribute()->getName(), "b");
    EXPECT_TRUE(sut.getEndpoints()[1].isGlobal());
}

} // namespace
