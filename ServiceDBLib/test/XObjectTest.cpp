#include "JSONDataCache/DBData/XObject.h"

#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"

#include <Poco/Dynamic/Var.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValueList;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::DbId;
using Orvi::DBData::Element;
using Orvi::DBData::Resource;
using Orvi::DBData::Service;
using Orvi::DBData::UUID;
using Orvi::DBData::XObject;
using Poco::Dynamic::Var;

using Orvi::DBData::AttrType_Integer;
using Orvi::DBData::AttrType_String;

const std::string DOOR_UUID = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";
const std::string OTHER_UUID = "6ba7b810-9dad-41d1-80b4-00c04fd430c8";

// A door object of id 12 with the cells name (1), count (2) and a second count (3).
struct Door
{
    Door()
        : resource(service)
        , element(new Element(resource))
        , sut(element)
    {
        sut.setDBID(12);
        sut.setName("front door");
        sut.setId(UUID(DOOR_UUID));
        name->setValue(Var("front"), false);
        count->setValue(Var(Poco::Int64(2)), false);
        secondCount->setValue(Var(Poco::Int64(3)), false);
        sut.setAttributeValues({name, count, secondCount});
    }

    Service service;
    Resource resource;
    Element::Ptr element;
    XObject sut;
    Attribute::Ptr nameAttribute{new Attribute("name")};
    Attribute::Ptr countAttribute{new Attribute("count", AttrType_Integer, false)};
    AttributeValuePtr name{new AttributeValue(12, nameAttribute, 1)};
    AttributeValuePtr count{new AttributeValue(12, countAttribute, 2)};
    AttributeValuePtr secondCount{new AttributeValue(12, countAttribute, 3)};
};

// The elements of an array cell as texts.
std::vector<std::string> textsOf(const AttributeValue& cell)
{
    std::vector<std::string> texts;
    for (const Var& element : *cell.getValue().extract<AttributeValue::ValueArrayPtr>())
    {
        texts.push_back(element.convert<std::string>());
    }
    return texts;
}

TEST(XObject, IsEmptyAfterConstructionAndKeepsItsElement)
{
    Service service;
    Resource resource(service);
    const Element::Ptr element(new Element(resource));

    const XObject sut(element);

    EXPECT_EQ(sut.getElement().get(), element.get());
    EXPECT_EQ(sut.getDBID(), -1);
    EXPECT_EQ(sut.getName(), "");
    EXPECT_EQ(sut.getUUID(), "");
    EXPECT_TRUE(sut.getId().isEmpty());
    EXPECT_TRUE(sut.getAttributeValues().empty());
}

TEST(XObject, CanBeMadeWithoutElement)
{
    const XObject sut{Element::Ptr()};

    EXPECT_TRUE(sut.getElement().isNull());
}

TEST(XObject, SharesTheCellsOfTheGivenList)
{
    Door door;
    const AttributeValueList given{door.count};

    door.sut.setAttributeValues(given);

    ASSERT_EQ(door.sut.getAttributeValues().size(), 1u);
    EXPECT_EQ(door.sut.getAttributeValues()[0].get(), door.count.get());
}

TEST(XObject, GivesTheFirstCellOfAnAttributeName)
{
    const Door door;

    const AttributeValuePtr found = door.sut.getValue("count");

    EXPECT_EQ(found.get(), door.count.get());
}

TEST(XObject, SkipsNullCellsWhenLookingForAValue)
{
    Door door;
    door.sut.setAttributeValues({AttributeValuePtr(), door.secondCount});

    const AttributeValuePtr found = door.sut.getValue("count");

    EXPECT_EQ(found.get(), door.secondCount.get());
}

TEST(XObject, GivesNullForAnUnknownOrDifferentlySpelledName)
{
    const Door door;

    EXPECT_TRUE(door.sut.getValue("colour").isNull());
    EXPECT_TRUE(door.sut.getValue("Count").isNull());
}

TEST(XObject, EmptiesEveryCellOfANameAndKeepsTheCells)
{
    Door door;

    door.sut.removeValue("count");

    ASSERT_EQ(door.sut.getAttributeValues().size(), 3u);
    EXPECT_EQ(door.sut.getAttributeValues()[1].get(), door.count.get());
    EXPECT_EQ(door.sut.getAttributeValues()[2].get(), door.secondCount.get());
    EXPECT_FALSE(door.count->hasValue());
    EXPECT_FALSE(door.secondCount->hasValue());
    EXPECT_EQ(door.count->getDBID(), 2);
    EXPECT_EQ(door.sut.getValue("count").get(), door.count.get());
    EXPECT_EQ(door.name->getValue(), Var("front"));
}

TEST(XObject, CopiesIdentityElementAndFreshCellsWithValues)
{
    const Door door;
    XObject sut{Element::Ptr()};

    sut.copyFrom(door.sut, true);

    EXPECT_EQ(sut.getDBID(), 12);
    EXPECT_EQ(sut.getName(), "front door");
    EXPECT_EQ(sut.getUUID(), DOOR_UUID);
    EXPECT_EQ(sut.getId().get(), Poco::UUID(DOOR_UUID));
    EXPECT_EQ(sut.getElement().get(), door.element.get());
    const AttributeValueList& cells = sut.getAttributeValues();
    ASSERT_EQ(cells.size(), 3u);
    const AttributeValueList& sources = door.sut.getAttributeValues();
    for (std::size_t position = 0; position < cells.size(); ++position)
    {
        EXPECT_NE(cells[position].get(), sources[position].get());
        EXPECT_EQ(cells[position]->getAttribute().get(), sources[position]->getAttribute().get());
        EXPECT_EQ(cells[position]->getDBID(), sources[position]->getDBID());
        EXPECT_EQ(cells[position]->getParent(), 12);
        EXPECT_EQ(cells[position]->getValue(), sources[position]->getValue());
    }
}

TEST(XObject, CopiesValuesAsTheyStandWithoutConversion)
{
    Door door;
    door.count->setValue(Var("not a number"), false);
    XObject sut{Element::Ptr()};

    sut.copyFrom(door.sut, true);

    EXPECT_EQ(sut.getAttributeValues()[1]->getValue().type(), typeid(std::string));
    EXPECT_EQ(sut.getAttributeValues()[1]->getValue(), Var("not a number"));
}

TEST(XObject, TakesTheIdOfTheSourcePastTheWriteOnceRule)
{
    const Door door;
    XObject sut{Element::Ptr()};
    sut.setDBID(99);

    sut.copyFrom(door.sut, false);

    EXPECT_EQ(sut.getDBID(), 12);
    EXPECT_EQ(sut.getAttributeValues()[0]->getParent(), 12);
}

TEST(XObject, MakesADeepSnapshotThatDoesNotTouchTheSource)
{
    const Door door;
    XObject sut{Element::Ptr()};
    sut.copyFrom(door.sut, true);

    sut.getValue("name")->setValue(Var("back"), false);

    EXPECT_EQ(door.name->getValue(), Var("front"));
}

TEST(XObject, MakesADeepSnapshotWhoseArraysDoNotTouchTheSource)
{
    Door door;
    const Attribute::Ptr tagsAttribute(new Attribute("tags", AttrType_String, true));
    AttributeValuePtr tags(new AttributeValue(12, tagsAttribute, 4));
    tags->setValue(Var(AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray{Var("a")})), false);
    door.sut.setAttributeValues({door.name, tags});
    XObject sut{Element::Ptr()};
    sut.copyFrom(door.sut, true);

    ASSERT_TRUE(sut.getValue("tags")->appendArrayValue(Var("b"), true));

    EXPECT_EQ(textsOf(*tags), (std::vector<std::string>{"a"}));
    EXPECT_EQ(textsOf(*sut.getValue("tags")), (std::vector<std::string>{"a", "b"}));
}

TEST(XObject, MakesASkeletonWithEmptyCellsWithoutValues)
{
    const Door door;
    XObject sut{Element::Ptr()};

    sut.copyFrom(door.sut, false);

    const AttributeValueList& cells = sut.getAttributeValues();
    ASSERT_EQ(cells.size(), 3u);
    EXPECT_EQ(cells[0]->getName(), "name");
    EXPECT_EQ(cells[1]->getName(), "count");
    EXPECT_EQ(cells[2]->getDBID(), 3);
    for (const AttributeValuePtr& cell : cells)
    {
        EXPECT_FALSE(cell->hasValue());
    }
    EXPECT_EQ(door.name->getValue(), Var("front"));
    EXPECT_EQ(door.count->getValue(), Var(Poco::Int64(2)));
}

TEST(XObject, LeavesNullCellsOutOfACopy)
{
    Door door;
    door.sut.setAttributeValues({AttributeValuePtr(), door.name, AttributeValuePtr()});
    XObject sut{Element::Ptr()};

    sut.copyFrom(door.sut, true);

    ASSERT_EQ(sut.getAttributeValues().size(), 1u);
    EXPECT_EQ(sut.getAttributeValues()[0]->getName(), "name");
}

TEST(XObject, DropsItsFormerCellsOnACopy)
{
    const Door door;
    XObject sut{Element::Ptr()};
    const Attribute::Ptr colour(new Attribute("colour"));
    sut.setAttributeValues({AttributeValuePtr(new AttributeValue(-1, colour, 1))});

    sut.copyFrom(door.sut, true);

    EXPECT_TRUE(sut.getValue("colour").isNull());
    EXPECT_EQ(sut.getAttributeValues().size(), 3u);
}

TEST(XObject, LosesItsValuesWhenCopiedFromItself)
{
    Door door;

    door.sut.copyFrom(door.sut, true);

    EXPECT_TRUE(door.sut.getAttributeValues().empty());
    EXPECT_EQ(door.sut.getDBID(), 12);
    EXPECT_EQ(door.sut.getUUID(), DOOR_UUID);
    EXPECT_EQ(door.sut.getElement().get(), door.element.get());
}

TEST(XObject, SwapsIdentityElementAndCellsWithoutCopying)
{
    Door door;
    XObject other{Element::Ptr()};
    other.setDBID(40);
    other.setName("back door");
    other.setId(UUID(OTHER_UUID));
    const AttributeValuePtr otherCell(new AttributeValue(40, door.nameAttribute, 1));
    other.setAttributeValues({otherCell});

    door.sut.swap(other);

    EXPECT_EQ(door.sut.getDBID(), 40);
    EXPECT_EQ(door.sut.getName(), "back door");
    EXPECT_EQ(door.sut.getUUID(), OTHER_UUID);
    EXPECT_TRUE(door.sut.getElement().isNull());
    ASSERT_EQ(door.sut.getAttributeValues().size(), 1u);
    EXPECT_EQ(door.sut.getAttributeValues()[0].get(), otherCell.get());
    EXPECT_EQ(other.getDBID(), 12);
    EXPECT_EQ(other.getName(), "front door");
    EXPECT_EQ(other.getUUID(), DOOR_UUID);
    EXPECT_EQ(other.getElement().get(), door.element.get());
    ASSERT_EQ(other.getAttributeValues().size(), 3u);
    EXPECT_EQ(other.getAttributeValues()[0].get(), door.name.get());
}

TEST(XObject, LeavesTheParentOfSwappedCellsAlone)
{
    Door door;
    XObject other{Element::Ptr()};
    other.setDBID(40);
    other.setAttributeValues({AttributeValuePtr(new AttributeValue(77, door.nameAttribute, 1))});

    door.sut.swap(other);

    EXPECT_EQ(door.sut.getAttributeValues()[0]->getParent(), 77);
    EXPECT_EQ(other.getAttributeValues()[0]->getParent(), 12);
}

} // namespace
