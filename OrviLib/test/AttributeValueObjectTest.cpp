#include "Data/AttributeValueObject.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"

#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <string>

using namespace Orvi::Data;
using ServiceDB::Test::toJson;

namespace
{

const std::string SEAT_ID = "3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c01";
const std::string ZONE_ID = "3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c02";

XObjectGeneric zone()
{
    XObjectGeneric result("front left", Poco::UUID(ZONE_ID), Poco::URI("/cabin/zones/" + ZONE_ID), 3);
    result.getAttributesRef().setValue("setPoint", AttributeValueNumber(21.5));
    return result;
}

XObjectGeneric seat()
{
    XObjectGeneric result("driver seat", Poco::UUID(SEAT_ID), Poco::URI("/cabin/seats/" + SEAT_ID), 7);
    result.getAttributesRef().setValue("heating", AttributeValueIntegerUnsigned(2));
    result.getAttributesRef().setValue("zone", AttributeValueObject<XObjectGeneric>(zone()));
    return result;
}

} // namespace

TEST(AttributeValueObject, GivesTheObjectAsItsGenericValue)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());

    const GenericValue generic = sut.asGeneric();

    EXPECT_EQ(sut.type(), typeid(XObjectGeneric));
    ASSERT_EQ(generic.type(), typeid(XObjectGeneric));
    EXPECT_EQ(generic.extract<XObjectGeneric>().getId(), Poco::UUID(SEAT_ID));
    EXPECT_EQ(generic.extract<XObjectGeneric>().size(), 5U);
}

TEST(AttributeValueObject, IsAReferenceAndNoArray)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());

    EXPECT_TRUE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValueObject, GivesItsObjectAndTheNumberOfItsAttributes)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());

    EXPECT_EQ(sut.getObject(), &sut.get());
    EXPECT_EQ(sut.size(), 5U);
}

TEST(AttributeValueObject, RendersTheWholeContainerAboveLevelZero)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());

    const Poco::Dynamic::Var json = sut.toJSON(2);

    EXPECT_EQ(json.type(), typeid(Poco::JSON::Object::Ptr));
    EXPECT_EQ(toJson(json),
              R"({"heating":2,"id":")" + SEAT_ID + R"(","name":"driver seat","uri":"/cabin/seats/)" +
                  SEAT_ID + R"(","zone":{"id":")" + ZONE_ID +
                  R"(","name":"front left","setPoint":21.5,"uri":"/cabin/zones/)" + ZONE_ID + R"("}})");
}

TEST(AttributeValueObject, RendersNestedReferencesOneLevelLower)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());

    const Poco::Dynamic::Var json = sut.toJSON(1);

    EXPECT_EQ(toJson(json), R"({"heating":2,"id":")" + SEAT_ID +
                                R"(","name":"driver seat","uri":"/cabin/seats/)" + SEAT_ID +
                                R"(","zone":{"id":")" + ZONE_ID +
                                R"(","name":"front left","uri":"/cabin/zones/)" + ZONE_ID + R"("}})");
}

TEST(AttributeValueObject, RendersOnlyIdUriAndNameAtLevelZero)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());

    const Poco::Dynamic::Var json = sut.toJSON(0);

    EXPECT_EQ(toJson(json),
              R"({"id":")" + SEAT_ID + R"(","name":"driver seat","uri":"/cabin/seats/)" + SEAT_ID + R"("})");
}

TEST(AttributeValueObject, OrdersObjectsByTheirUUID)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());
    const AttributeValueObject<XObjectGeneric> other(zone());

    EXPECT_EQ(sut.compare(other), -1);
    EXPECT_EQ(other.compare(sut), 1);
}

TEST(AttributeValueObject, ComparesObjectsWithTheSameUUIDAndNameAsEqual)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());
    XObjectGeneric bare("driver seat", Poco::UUID(SEAT_ID), Poco::URI(), -1);

    EXPECT_EQ(sut.compare(AttributeValueObject<XObjectGeneric>(bare)), 0);
}

TEST(AttributeValueObject, TakesOverADeepCopyOfAnotherObjectValue)
{
    AttributeValueObject<XObjectGeneric> sut(zone());
    AttributeValueObject<XObjectGeneric> source(seat());

    const bool result = sut.setValue(source);
    source.get().getAttributesRef().getValue<AttributeValueIntegerUnsigned>("heating").set(0);
    source.get().getAttributesRef().getValue<AttributeValueObject<XObjectGeneric>>("zone").get().setName(
        "rear");

    EXPECT_TRUE(result);
    EXPECT_EQ(sut.get().getId(), Poco::UUID(SEAT_ID));
    EXPECT_EQ(sut.get().getAttributesRef().getValue<AttributeValueIntegerUnsigned>("heating").get(), 2U);
    EXPECT_EQ(
        sut.get().getAttributesRef().getValue<AttributeValueObject<XObjectGeneric>>("zone").get().getName(),
        "front left");
}

TEST(AttributeValueObject, RefusesAValueOfAnotherClass)
{
    AttributeValueObject<XObjectGeneric> sut(zone());

    const bool result = sut.setValue(AttributeValueString(SEAT_ID));

    EXPECT_FALSE(result);
    EXPECT_EQ(sut.get().getId(), Poco::UUID(ZONE_ID));
}
