#include "Data/MicroServiceInfo.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueStringable.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Orvi::MicroServiceInfo;
using namespace Orvi::Data;
using ServiceDB::Test::toJson;

namespace
{

const std::string SERVICE_ID = "0c1d2e3f-4a5b-4c6d-8e7f-901a2b3c4d5e";
const std::string REGISTRY_ID = "9e8d7c6b-5a49-4382-9170-6f5e4d3c2b1a";

AttributeValueStringArray texts(const std::vector<std::string>& values)
{
    AttributeValueStringArray result;
    for (const std::string& value : values)
    {
        result.addElement(AttributeValueString(value));
    }
    return result;
}

MicroServiceInfo cabin()
{
    MicroServiceInfo result(Poco::UUID(SERVICE_ID), Poco::URI("/cabin/" + SERVICE_ID), "cabin", 8080,
                            "Cabin comfort");
    result.setPrivileges(texts({"cabin.read"}));
    result.setServiceCategories(texts({"comfort", "body"}));
    result.setVersions(texts({"1.2.0"}));
    return result;
}

} // namespace

TEST(MicroServiceInfo, StoresWhatItIsConstructedWith)
{
    const MicroServiceInfo sut(Poco::UUID(SERVICE_ID), Poco::URI("/cabin/" + SERVICE_ID), "cabin", 8080,
                               "Cabin comfort");

    EXPECT_EQ(sut.getId(), Poco::UUID(SERVICE_ID));
    EXPECT_EQ(sut.getUri().toString(), "/cabin/" + SERVICE_ID);
    EXPECT_EQ(sut.getName(), "cabin");
    EXPECT_EQ(sut.getPort(), 8080U);
    EXPECT_EQ(sut.getDescription(), "Cabin comfort");
    EXPECT_EQ(sut.id(), -1);
    EXPECT_EQ(sut.size(), 5U);
}

TEST(MicroServiceInfo, StartsEmptyWithTheIdOfItsServiceRow)
{
    const MicroServiceInfo sut(12);

    EXPECT_EQ(sut.id(), 12);
    EXPECT_EQ(sut.size(), 0U);
    EXPECT_EQ(sut.getPort(), 0U);
}

TEST(MicroServiceInfo, RaisesDataExceptionWhenTheURIDoesNotHoldTheUUID)
{
    try
    {
        MicroServiceInfo(Poco::UUID(SERVICE_ID), Poco::URI("/cabin/" + REGISTRY_ID), "cabin", 8080, "Cabin");
        FAIL() << "no exception";
    }
    catch (const Poco::DataException& e)
    {
        EXPECT_EQ(e.message(), "Invalid XObject - URI and UUID mismatch");
    }
}

TEST(MicroServiceInfo, AcceptsANullUUIDWithAnEmptyURI)
{
    const MicroServiceInfo sut(Poco::UUID(), Poco::URI(), "cabin", 8080, "Cabin");

    EXPECT_EQ(sut.getIdString(), "00000000-0000-0000-0000-000000000000");
    EXPECT_TRUE(sut.getUri().empty());
}

TEST(MicroServiceInfo, ReadsAsEmptyWhenDefaultConstructed)
{
    const MicroServiceInfo sut;

    EXPECT_EQ(sut.size(), 0U);
    EXPECT_EQ(sut.getPort(), 0U);
    EXPECT_EQ(sut.getDescription(), "");
    EXPECT_TRUE(sut.getPrivileges().isEmpty());
    EXPECT_TRUE(sut.getServiceCategories().isEmpty());
    EXPECT_TRUE(sut.getVersions().isEmpty());
    EXPECT_TRUE(sut.getAllPorts().empty());
}

TEST(MicroServiceInfo, RaisesInvalidAccessForTheIdStringWithoutId)
{
    const MicroServiceInfo sut;

    try
    {
        sut.getIdString();
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Attribute id is not set");
    }
}

TEST(MicroServiceInfo, RaisesInvalidAccessForANameOfAnotherClass)
{
    MicroServiceInfo sut;
    sut.getAttributesRef().setValue(XObjectBase::KEY_NAME, AttributeValueInteger(1));

    try
    {
        sut.getName();
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Invalid type for attribute name in AttributeContainer");
    }
}

TEST(MicroServiceInfo, RaisesInvalidAccessForAPortOfAnotherClass)
{
    MicroServiceInfo sut;
    sut.getAttributesRef().setValue(ServiceBase::KEY_PORT, AttributeValueString(std::string("8080")));

    try
    {
        sut.getPort();
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Invalid type for attribute port in AttributeContainer");
    }
}

TEST(MicroServiceInfo, SetsItsFields)
{
    MicroServiceInfo sut;

    sut.setPrivileges(texts({"cabin.read", "cabin.write"}));
    sut.setServiceCategories(texts({"comfort"}));
    sut.setVersions(texts({"1.2.0", "1.1.3"}));
    sut.setDescription("Cabin comfort");
    sut.setPort(8081);

    EXPECT_EQ(sut.getPrivileges().simplify(), (std::vector<std::string>{"cabin.read", "cabin.write"}));
    EXPECT_EQ(sut.getServiceCategories().simplify(), std::vector<std::string>{"comfort"});
    EXPECT_EQ(sut.getVersions().simplify(), (std::vector<std::string>{"1.2.0", "1.1.3"}));
    EXPECT_EQ(sut.getDescription(), "Cabin comfort");
    EXPECT_EQ(sut.getPort(), 8081U);
    EXPECT_EQ(sut.getAllPorts(), std::vector<unsigned int>{8081});
}

TEST(MicroServiceInfo, ReplacesTheServiceIdAndItsText)
{
    MicroServiceInfo sut = cabin();

    sut.updateServiceId(Poco::UUID(REGISTRY_ID));

    EXPECT_EQ(sut.getId(), Poco::UUID(REGISTRY_ID));
    EXPECT_EQ(sut.getIdString(), REGISTRY_ID);
}

TEST(MicroServiceInfo, HasNoSpecificationAndNoResources)
{
    const MicroServiceInfo sut = cabin();

    EXPECT_EQ(sut.getSpecification(), "");
    EXPECT_TRUE(sut.getResources().empty());
}

TEST(MicroServiceInfo, ShowsItsFieldsInJSON)
{
    const MicroServiceInfo sut = cabin();

    EXPECT_EQ(toJson(sut.toJSON(0)),
              R"({"categories":["comfort","body"],"description":"Cabin comfort","id":")" + SERVICE_ID +
                  R"(","name":"cabin","port":8080,"privileges":["cabin.read"],)" + R"("uri":"/cabin/)" +
                  SERVICE_ID + R"(","versions":["1.2.0"]})");
}

TEST(MicroServiceInfo, CopiesDeeply)
{
    MicroServiceInfo sut = cabin();

    const MicroServiceInfo copy(sut);
    MicroServiceInfo assigned;
    assigned = sut;
    sut.getAttributesRef()
        .getValue<AttributeValueStringArray>(ServiceBase::KEY_VERSIONS)
        .getElement(0)
        .set("2.0.0");
    sut.setPort(9090);
    sut.updateServiceId(Poco::UUID(REGISTRY_ID));

    EXPECT_EQ(copy.getVersions().simplify(), std::vector<std::string>{"1.2.0"});
    EXPECT_EQ(copy.getPort(), 8080U);
    EXPECT_EQ(copy.getIdString(), SERVICE_ID);
    EXPECT_EQ(assigned.getVersions().simplify(), std::vector<std::string>{"1.2.0"});
    EXPECT_EQ(assigned.getIdString(), SERVICE_ID);
}
