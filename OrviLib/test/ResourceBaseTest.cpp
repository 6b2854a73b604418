#include "Data/ResourceBase.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

using namespace Orvi::Data;

namespace
{

const std::string RESOURCE_ID = "5b1d2e3f-4a5b-4c6d-8e7f-901a2b3c4d5e";

using GenericResource = GenericObject<ResourceBase>;

} // namespace

TEST(ResourceBase, NamesItsDescriptionKey)
{
    EXPECT_EQ(ResourceBase::KEY_DESCRIPTION, "description");
}

TEST(ResourceBase, ReadsTheDescriptionFromItsAttributes)
{
    GenericResource sut("seats", Poco::UUID(RESOURCE_ID), Poco::URI("/cabin" + RESOURCE_ID), 4);
    sut.getAttributesRef().setValue(ResourceBase::KEY_DESCRIPTION,
                                    AttributeValueString(std::string("Seats of the cabin")));

    EXPECT_EQ(sut.getDescription(), "Seats of the cabin");
}

TEST(ResourceBase, GivesAnEmptyDescriptionWithoutOne)
{
    const GenericResource sut(4);

    EXPECT_EQ(sut.getDescription(), "");
}

TEST(ResourceBase, RaisesInvalidAccessForADescriptionThatIsNoText)
{
    GenericResource sut(4);
    sut.getAttributesRef().setValue(ResourceBase::KEY_DESCRIPTION, AttributeValueInteger(1));

    try
    {
        sut.getDescription();
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Invalid type for attribute description in AttributeContainer");
    }
}

TEST(ResourceBase, KnowsNoSpecificationAndNoElementsByDefault)
{
    const GenericResource sut(4);

    EXPECT_EQ(sut.getSpecification(), "");
    EXPECT_FALSE(sut.hasElement(1));
    EXPECT_TRUE(sut.getElement(1).isNull());
    EXPECT_TRUE(sut.getElements().empty());
}

TEST(ResourceBase, RendersItsAttributesAsAnyObject)
{
    GenericResource sut("seats", Poco::UUID(RESOURCE_ID), Poco::URI("/cabin" + RESOURCE_ID), 4);
    sut.getAttributesRef().setValue(ResourceBase::KEY_DESCRIPTION,
                                    AttributeValueString(std::string("Seats")));

    const Poco::JSON::Object::Ptr json = sut.toJSON(0);

    EXPECT_EQ(json->size(), 4U);
    EXPECT_EQ(json->getValue<std::string>("uri"), "/cabin" + RESOURCE_ID);
    EXPECT_EQ(json->getValue<std::string>("description"), "Seats");
}
