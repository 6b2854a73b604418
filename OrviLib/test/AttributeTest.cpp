#include "Data/Attribute.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

using namespace Orvi::Data;

namespace
{

const std::string ZONE_ID = "3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c02";

using ObjectValue = AttributeValueObject<XObjectGeneric>;

XObjectGeneric zone()
{
    return XObjectGeneric("front left", Poco::UUID(ZONE_ID), Poco::URI("/cabin/zones/" + ZONE_ID), 3);
}

} // namespace

TEST(Attribute, HoldsItsNameParentAndValue)
{
    const Attribute<AttributeValueNumber> sut(5, "setPoint", AttributeValueNumber(21.5));

    EXPECT_EQ(sut.getName(), "setPoint");
    EXPECT_EQ(sut.parent(), 5);
    EXPECT_DOUBLE_EQ(sut.getValue().get(), 21.5);
    ASSERT_NE(sut.getAttributeValue(), nullptr);
    EXPECT_EQ(sut.getValueBase(), sut.getAttributeValue());
}

TEST(Attribute, GivesTheValueClassAsItsType)
{
    const Attribute<AttributeValueURI> sut(5, "zone");

    EXPECT_EQ(sut.type(), typeid(AttributeValueURI));
}

TEST(Attribute, TellsReferencesAndArraysByItsValueClass)
{
    const Attribute<AttributeValueInteger> scalar(1, "a");
    const Attribute<AttributeValueUUID> uuid(1, "b");
    const Attribute<ObjectValue> object(1, "c");
    const Attribute<AttributeValueArray<AttributeValueInteger>> numbers(1, "d");
    const Attribute<AttributeValueArray<ObjectValue>> objects(1, "e");

    EXPECT_FALSE(scalar.isXObjReference());
    EXPECT_FALSE(scalar.isArray());
    EXPECT_FALSE(uuid.isXObjReference());
    EXPECT_FALSE(uuid.isArray());
    EXPECT_TRUE(object.isXObjReference());
    EXPECT_FALSE(object.isArray());
    EXPECT_FALSE(numbers.isXObjReference());
    EXPECT_TRUE(numbers.isArray());
    EXPECT_TRUE(objects.isXObjReference());
    EXPECT_TRUE(objects.isArray());
}

TEST(Attribute, HasNoValueWhenMadeWithoutOne)
{
    const Attribute<AttributeValueBoolean> sut(5, "heated");

    EXPECT_EQ(sut.getAttributeValue(), nullptr);
    EXPECT_EQ(sut.getValueBase(), nullptr);
    EXPECT_TRUE(sut.isEmpty());
}

TEST(Attribute, RaisesInvalidAccessForTheValueOfAnUnsetAttribute)
{
    const Attribute<AttributeValueBoolean> sut(5, "heated");

    try
    {
        sut.getValue();
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Attribute heated is not set");
    }
}

TEST(Attribute, CopiesToANewParentWithTheSameNameAndAnOwnValue)
{
    Attribute<AttributeValueInteger> sut(5, "volume", AttributeValueInteger(12));

    const AttributeBase::Ptr copy = sut.copy(6);
    sut.getAttributeValue()->set(30);

    ASSERT_FALSE(copy.isNull());
    const auto* typed = dynamic_cast<const Attribute<AttributeValueInteger>*>(copy.get());
    ASSERT_NE(typed, nullptr);
    EXPECT_EQ(typed->parent(), 6);
    EXPECT_EQ(typed->getName(), "volume");
    EXPECT_EQ(typed->getValue().get(), 12);
}

TEST(Attribute, CopiesAReferencedObjectDeeply)
{
    Attribute<ObjectValue> sut(5, "zone", ObjectValue(zone()));

    const AttributeBase::Ptr copy = sut.copy(6);
    sut.getAttributeValue()->get().setName("rear");

    const auto* typed = dynamic_cast<const Attribute<ObjectValue>*>(copy.get());
    ASSERT_NE(typed, nullptr);
    EXPECT_EQ(typed->getValue().get().getName(), "front left");
}

TEST(Attribute, RaisesInvalidAccessWhenAnUnsetAttributeIsCopied)
{
    const Attribute<AttributeValueArray<AttributeValueString>> sut(5, "genres");

    try
    {
        sut.copy(6);
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Attribute genres is not set");
    }
}

TEST(Attribute, ReplacesItsValue)
{
    Attribute<AttributeValueString> sut(5, "label");

    sut.setValue(AttributeValueString(std::string("Seat")));

    EXPECT_EQ(sut.getValue().get(), "Seat");
}

TEST(Attribute, CopyConstructionAndAssignmentDoNotShareTheValue)
{
    Attribute<AttributeValueInteger> sut(5, "volume", AttributeValueInteger(1));
    Attribute<AttributeValueInteger> assigned(9, "other");

    Attribute<AttributeValueInteger> constructed(sut);
    assigned = sut;
    sut.getAttributeValue()->set(2);

    EXPECT_EQ(constructed.getValue().get(), 1);
    EXPECT_EQ(assigned.getValue().get(), 1);
    EXPECT_EQ(assigned.getName(), "volume");
    EXPECT_EQ(assigned.parent(), 5);
}

TEST(Attribute, KeepsAnEmptyArrayAsAValue)
{
    const Attribute<AttributeValueArray<AttributeValueInteger>> sut(
        5, "presets", AttributeValueArray<AttributeValueInteger>());

    EXPECT_FALSE(sut.isEmpty());
    EXPECT_TRUE(sut.getValue().isEmpty());
}
