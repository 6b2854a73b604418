#include "Data/AttributeContainer.h"

#include "Data/Attribute.h"
#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace Orvi::Data;
using ServiceDB::Test::toJson;

namespace
{

const std::string ZONE_ID = "3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c02";

using ObjectValue = AttributeValueObject<XObjectGeneric>;

XObjectGeneric zone()
{
    XObjectGeneric result("front left", Poco::UUID(ZONE_ID), Poco::URI("/cabin/zones/" + ZONE_ID), 3);
    result.getAttributesRef().setValue("setPoint", AttributeValueNumber(21.5));
    return result;
}

AttributeContainer seat()
{
    AttributeContainer result(7);
    result.setValue("heated", AttributeValueBoolean(true));
    result.setValue("position", AttributeValueInteger(-3));
    result.setValue("label", AttributeValueString(std::string("driver")));
    result.setValue("tilt", AttributeValueNumber(0.5));
    return result;
}

template <typename Call>
std::string invalidAccessMessage(Call call)
{
    try
    {
        call();
    }
    catch (const Poco::InvalidAccessException& e)
    {
        return e.message();
    }
    return "no exception";
}

} // namespace

TEST(AttributeContainer, StartsEmptyWithItsParent)
{
    const AttributeContainer sut(7);

    EXPECT_EQ(sut.parent(), 7);
    EXPECT_EQ(sut.size(), 0U);
    EXPECT_TRUE(sut.begin() == sut.end());
    EXPECT_EQ(toJson(sut.toJSON(1)), "{}");
}

TEST(AttributeContainer, StoresValuesUnderTheirNamesInNameOrder)
{
    const AttributeContainer sut = seat();
    std::vector<std::string> names;

    for (const auto& entry : sut)
    {
        names.push_back(entry.first);
    }

    EXPECT_EQ(names, (std::vector<std::string>{"heated", "label", "position", "tilt"}));
    EXPECT_EQ(sut.size(), 4U);
    EXPECT_TRUE(sut.contains("label"));
    EXPECT_FALSE(sut.contains("colour"));
    EXPECT_EQ(sut.getAttributes().size(), 4U);
}

TEST(AttributeContainer, MakesTheAttributesItCreatesChildrenOfItsParent)
{
    const AttributeContainer sut = seat();

    const AttributeBase::Ptr attribute = sut.getAttribute("position");

    ASSERT_FALSE(attribute.isNull());
    EXPECT_EQ(attribute->parent(), 7);
    EXPECT_EQ(attribute->getName(), "position");
}

TEST(AttributeContainer, GivesAnEmptyPointerForAMissingAttribute)
{
    const AttributeContainer sut = seat();

    EXPECT_TRUE(sut.getAttribute("colour").isNull());
}

TEST(AttributeContainer, GivesNullForTheValueOfAMissingAttribute)
{
    AttributeContainer sut = seat();

    EXPECT_EQ(sut.getValue("colour"), nullptr);
    EXPECT_EQ(std::as_const(sut).getValue("colour"), nullptr);
}

TEST(AttributeContainer, GivesTheValueOfAnAttributeThroughTheBase)
{
    AttributeContainer sut = seat();

    AttributeValueBase* value = sut.getValue("position");

    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->compare(AttributeValueInteger(-3)), 0);
    EXPECT_EQ(std::as_const(sut).getValue("position"), value);
}

TEST(AttributeContainer, GivesTypedValues)
{
    AttributeContainer sut = seat();

    sut.getValue<AttributeValueInteger>("position").set(4);

    EXPECT_EQ(std::as_const(sut).getValue<AttributeValueInteger>("position").get(), 4);
    EXPECT_TRUE(sut.getValue<AttributeValueBoolean>("heated").get());
}

TEST(AttributeContainer, RaisesInvalidAccessForTheTypedValueOfAMissingAttribute)
{
    const AttributeContainer sut = seat();

    const std::string message = invalidAccessMessage([&] { sut.getValue<AttributeValueInteger>("speed"); });

    EXPECT_EQ(message, "Attribute speed is not set");
}

TEST(AttributeContainer, RaisesInvalidAccessForATypedValueOfAnotherClass)
{
    AttributeContainer sut = seat();

    const std::string message = invalidAccessMessage([&] { sut.getValue<AttributeValueNumber>("position"); });

    EXPECT_EQ(message, "Invalid type for attribute position in AttributeContainer");
}

TEST(AttributeContainer, ReplacesAValueOfTheSameClass)
{
    AttributeContainer sut = seat();

    sut.setValue("position", AttributeValueInteger(9));

    EXPECT_EQ(sut.getValue<AttributeValueInteger>("position").get(), 9);
    EXPECT_EQ(sut.size(), 4U);
}

TEST(AttributeContainer, RaisesInvalidAccessWhenSettingAValueOfAnotherClass)
{
    AttributeContainer sut = seat();

    const std::string message =
        invalidAccessMessage([&] { sut.setValue("position", AttributeValueString(std::string("up"))); });

    EXPECT_EQ(message, "Invalid type for attribute position in AttributeContainer");
    EXPECT_EQ(sut.getValue<AttributeValueInteger>("position").get(), -3);
}

TEST(AttributeContainer, StoresACopyOfAnAttributeForItsOwnParent)
{
    AttributeContainer sut(7);
    Attribute<AttributeValueInteger> attribute(99, "volume", AttributeValueInteger(12));

    const bool result = sut.setAttribute(attribute);
    attribute.getAttributeValue()->set(30);

    EXPECT_TRUE(result);
    ASSERT_FALSE(sut.getAttribute("volume").isNull());
    EXPECT_EQ(sut.getAttribute("volume")->parent(), 7);
    EXPECT_EQ(sut.getValue<AttributeValueInteger>("volume").get(), 12);
}

TEST(AttributeContainer, RefusesAnAttributeWithoutValue)
{
    AttributeContainer sut(7);

    const bool byReference = sut.setAttribute(Attribute<AttributeValueInteger>(7, "volume"));
    const bool byPointer =
        sut.setAttribute(AttributeBase::Ptr(new Attribute<AttributeValueInteger>(7, "volume")));

    EXPECT_FALSE(byReference);
    EXPECT_FALSE(byPointer);
    EXPECT_FALSE(sut.contains("volume"));
}

TEST(AttributeContainer, RefusesAnEmptyPointer)
{
    AttributeContainer sut(7);

    const bool result = sut.setAttribute(AttributeBase::Ptr());

    EXPECT_FALSE(result);
    EXPECT_EQ(sut.size(), 0U);
}

TEST(AttributeContainer, StoresTheAttributeItselfThatItIsHandedByPointer)
{
    AttributeContainer sut(7);
    AttributeBase::Ptr attribute =
        new Attribute<AttributeValueInteger>(7, "volume", AttributeValueInteger(12));
    AttributeBase* const raw = attribute.get();

    const bool result = sut.setAttribute(std::move(attribute));

    EXPECT_TRUE(result);
    EXPECT_EQ(sut.getAttribute("volume").get(), raw);
}

TEST(AttributeContainer, ReplacesAnAttributeOfTheSameName)
{
    AttributeContainer sut = seat();

    const bool result = sut.setAttribute(
        Attribute<AttributeValueString>(7, "position", AttributeValueString(std::string("up"))));

    EXPECT_TRUE(result);
    EXPECT_EQ(sut.getValue<AttributeValueString>("position").get(), "up");
}

TEST(AttributeContainer, RemovesValues)
{
    AttributeContainer sut = seat();

    const bool removed = sut.removeValue("tilt");
    const bool removedAgain = sut.removeValue("tilt");

    EXPECT_TRUE(removed);
    EXPECT_FALSE(removedAgain);
    EXPECT_FALSE(sut.contains("tilt"));
    EXPECT_EQ(sut.size(), 3U);
}

TEST(AttributeContainer, ClearsAllValues)
{
    AttributeContainer sut = seat();

    sut.clear();

    EXPECT_EQ(sut.size(), 0U);
    EXPECT_EQ(sut.parent(), 7);
}

TEST(AttributeContainer, RendersItsValuesAsJSONWithSortedKeys)
{
    const AttributeContainer sut = seat();

    EXPECT_EQ(toJson(sut.toJSON(0)), R"({"heated":true,"label":"driver","position":-3,"tilt":0.5})");
}

TEST(AttributeContainer, RendersOnlyTheNamedValuesThatExist)
{
    const AttributeContainer sut = seat();

    const Poco::JSON::Object::Ptr json = sut.toJSON(std::vector<std::string>{"tilt", "colour", "heated"});

    EXPECT_EQ(toJson(json), R"({"heated":true,"tilt":0.5})");
}

TEST(AttributeContainer, RendersAReferenceInFullAboveLevelZero)
{
    AttributeContainer sut(7);
    sut.setValue("zone", ObjectValue(zone()));

    EXPECT_EQ(toJson(sut.toJSON(1)), R"({"zone":{"id":")" + ZONE_ID +
                                         R"(","name":"front left","setPoint":21.5,"uri":"/cabin/zones/)" +
                                         ZONE_ID + R"("}})");
}

TEST(AttributeContainer, RendersAReferenceByIdUriAndNameAtLevelZero)
{
    AttributeContainer sut(7);
    sut.setValue("zone", ObjectValue(zone()));

    EXPECT_EQ(toJson(sut.toJSON(0)), R"({"zone":{"id":")" + ZONE_ID +
                                         R"(","name":"front left","uri":"/cabin/zones/)" + ZONE_ID +
                                         R"("}})");
    EXPECT_EQ(toJson(sut.toJSON(std::vector<std::string>{"zone"})),
              R"({"zone":{"id":")" + ZONE_ID + R"(","name":"front left","uri":"/cabin/zones/)" + ZONE_ID +
                  R"("}})");
}

TEST(AttributeContainer, RendersAReferenceInsideAReferenceOneLevelLower)
{
    XObjectGeneric outer = zone();
    outer.getAttributesRef().setValue("next", ObjectValue(zone()));
    AttributeContainer sut(7);
    sut.setValue("zone", ObjectValue(outer));

    const std::string json = toJson(sut.toJSON(1));

    EXPECT_EQ(json, R"({"zone":{"id":")" + ZONE_ID + R"(","name":"front left","next":{"id":")" + ZONE_ID +
                        R"(","name":"front left","uri":"/cabin/zones/)" + ZONE_ID +
                        R"("},"setPoint":21.5,"uri":"/cabin/zones/)" + ZONE_ID + R"("}})");
}

TEST(AttributeContainer, SharesAttributesWithACopyButNotWithADeepCopy)
{
    AttributeContainer sut = seat();

    AttributeContainer shallow = sut;
    AttributeContainer deep = AttributeContainer::deepCopy(sut);
    sut.getValue<AttributeValueInteger>("position").set(8);

    EXPECT_EQ(shallow.getValue<AttributeValueInteger>("position").get(), 8);
    EXPECT_EQ(deep.getValue<AttributeValueInteger>("position").get(), -3);
    EXPECT_EQ(deep.parent(), 7);
    EXPECT_EQ(deep.size(), 4U);
    EXPECT_EQ(toJson(deep.toJSON(0)), R"({"heated":true,"label":"driver","position":-3,"tilt":0.5})");
}

TEST(AttributeContainer, DeepCopiesReferencedObjects)
{
    AttributeContainer sut(7);
    sut.setValue("zone", ObjectValue(zone()));

    AttributeContainer deep = AttributeContainer::deepCopy(sut);
    sut.getValue<ObjectValue>("zone")
        .get()
        .getAttributesRef()
        .getValue<AttributeValueNumber>("setPoint")
        .set(18.0);

    EXPECT_DOUBLE_EQ(deep.getValue<ObjectValue>("zone")
                         .get()
                         .getAttributesRef()
                         .getValue<AttributeValueNumber>("setPoint")
                         .get(),
                     21.5);
}

TEST(AttributeContainer, KeepsAnEmptyArrayAsAnAttribute)
{
    AttributeContainer sut(7);

    sut.setValue("presets", AttributeValueArray<AttributeValueInteger>());

    EXPECT_TRUE(sut.contains("presets"));
    EXPECT_EQ(toJson(sut.toJSON(0)), R"({"presets":[]})");
}
