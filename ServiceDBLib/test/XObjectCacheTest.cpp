#include "JSONDataCache/DBData/XObjectCache.h"

#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/UUID.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

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
using Orvi::DBData::XObjectCache;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using testing::IsEmpty;

using Orvi::DBData::AttrType_Integer;

const std::string FIRST_UUID = "6ba7b810-9dad-41d1-80b4-00c04fd430c8";
const std::string SECOND_UUID = "123e4567-e89b-42d3-a456-426614174000";
const std::string THIRD_UUID = "3f2504e0-4f89-41d3-9a0c-0305e82c3301";
constexpr DbId LARGEST_ID = 9223372036854775806;

// A store whose allocation cursor can be placed anywhere, and whose maps can be corrupted.
class PlacedCursorCache : public XObjectCache
{
public:
    void placeCursor(DbId id) { m_nextId = id; }
    void enterNullObject(DbId id) { m_idMap[id] = XObject::Ptr(); }
};

// The schema of a "doors" resource, with the attributes name and count.
struct DoorSchema
{
    DoorSchema()
        : resource(service)
        , element(new Element(resource))
    {
    }

    // An object with the cells name (1) and count (2).
    XObject::Ptr makeDoor(DbId id, const std::string& uuid, const std::string& doorName = "front") const
    {
        XObject::Ptr door(new XObject(element));
        door->setDBID(id);
        door->setName(doorName);
        door->setId(UUID(uuid));
        AttributeValuePtr nameCell(new AttributeValue(id, nameAttribute, 1));
        nameCell->setValue(Var(doorName), false);
        AttributeValuePtr countCell(new AttributeValue(id, countAttribute, 2));
        countCell->setValue(Var(Poco::Int64(2)), false);
        door->setAttributeValues({nameCell, countCell});
        return door;
    }

    Service service;
    Resource resource;
    Element::Ptr element;
    Attribute::Ptr nameAttribute{new Attribute("name")};
    Attribute::Ptr countAttribute{new Attribute("count", AttrType_Integer, false)};
};

void insertAllocated(XObjectCache& sut, const DoorSchema& schema, const std::string& uuid)
{
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(sut.getNextId(), uuid)));
}

// Allocation of ids

TEST(XObjectCache, GivesTheFirstIdUntilAnObjectWithItIsStored)
{
    const DoorSchema schema;
    XObjectCache sut;

    EXPECT_EQ(sut.getNextId(), 1);
    EXPECT_EQ(sut.getNextId(), 1);

    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    EXPECT_EQ(sut.getNextId(), 2);
}

TEST(XObjectCache, AcceptsAnIdThatItDidNotHandOut)
{
    const DoorSchema schema;
    XObjectCache sut;

    const bool inserted = sut.insertObject(*schema.makeDoor(42, FIRST_UUID));

    EXPECT_TRUE(inserted);
    EXPECT_TRUE(sut.exists(DbId(42)));
    EXPECT_EQ(sut.getNextId(), 1);
}

TEST(XObjectCache, StepsOverARunOfTakenIds)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(2, FIRST_UUID)));
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(3, SECOND_UUID)));
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, THIRD_UUID)));

    EXPECT_EQ(sut.getNextId(), 4);
}

TEST(XObjectCache, ReusesAFreedIdOnlyAfterWrapping)
{
    const DoorSchema schema;
    XObjectCache sut;
    insertAllocated(sut, schema, FIRST_UUID);
    insertAllocated(sut, schema, SECOND_UUID);
    insertAllocated(sut, schema, THIRD_UUID);
    ASSERT_EQ(sut.getNextId(), 4);

    sut.removeObject(DbId(2));

    EXPECT_EQ(sut.getNextId(), 4);
}

TEST(XObjectCache, HandsOutTheIdOfTheLastObjectAgainWhenItIsRemovedAtOnce)
{
    const DoorSchema schema;
    XObjectCache sut;
    insertAllocated(sut, schema, FIRST_UUID);
    insertAllocated(sut, schema, SECOND_UUID);

    sut.removeObject(DbId(2));

    EXPECT_EQ(sut.getNextId(), 2);
}

TEST(XObjectCache, KeepsItsCursorWhenCleared)
{
    const DoorSchema schema;
    XObjectCache sut;
    for (int number = 1; number <= 6; ++number)
    {
        insertAllocated(sut, schema, "00000000-0000-4000-8000-00000000000" + std::to_string(number));
    }
    ASSERT_EQ(sut.getNextId(), 7);

    sut.clear();

    EXPECT_FALSE(sut.exists(DbId(1)));
    EXPECT_EQ(sut.getNextId(), 7);
}

TEST(XObjectCache, WrapsToTheFirstFreeIdAfterTheLargestOne)
{
    const DoorSchema schema;
    PlacedCursorCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(LARGEST_ID, SECOND_UUID)));
    sut.placeCursor(LARGEST_ID);

    const DbId next = sut.getNextId();

    EXPECT_EQ(next, 2);
}

TEST(XObjectCache, HandsOutTheLargestIdWhileItIsFree)
{
    PlacedCursorCache sut;
    sut.placeCursor(LARGEST_ID);

    EXPECT_EQ(sut.getNextId(), LARGEST_ID);
}

// Insertion

TEST(XObjectCache, StoresACopyThatSharesNoCellWithTheGivenObject)
{
    const DoorSchema schema;
    XObjectCache sut;
    XObject::Ptr door = schema.makeDoor(1, FIRST_UUID);

    ASSERT_TRUE(sut.insertObject(*door));
    door->getValue("name")->setValue(Var("changed"), false);

    const XObject::Ptr stored = sut.get(DbId(1));
    ASSERT_FALSE(stored.isNull());
    EXPECT_NE(stored.get(), door.get());
    EXPECT_EQ(stored->getName(), "front");
    EXPECT_EQ(stored->getUUID(), FIRST_UUID);
    EXPECT_EQ(stored->getElement().get(), schema.element.get());
    ASSERT_EQ(stored->getAttributeValues().size(), 2u);
    EXPECT_NE(stored->getAttributeValues()[0].get(), door->getAttributeValues()[0].get());
    EXPECT_EQ(stored->getValue("name")->getValue(), Var("front"));
    EXPECT_EQ(stored->getValue("count")->getValue(), Var(Poco::Int64(2)));
}

TEST(XObjectCache, FindsAnObjectByIdAndByUuidAsOneObject)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));

    EXPECT_TRUE(sut.exists(DbId(1)));
    EXPECT_TRUE(sut.exists(Poco::UUID(FIRST_UUID)));
    EXPECT_TRUE(sut.exists(FIRST_UUID));
    EXPECT_EQ(sut.get(DbId(1)).get(), sut.get(Poco::UUID(FIRST_UUID)).get());
    EXPECT_EQ(sut.get(DbId(1)).get(), sut.get(FIRST_UUID).get());
    EXPECT_EQ(sut.find(DbId(1)), sut.get(FIRST_UUID).get());
}

TEST(XObjectCache, RefusesAnObjectWithoutId)
{
    const DoorSchema schema;
    XObjectCache sut;

    EXPECT_FALSE(sut.insertObject(*schema.makeDoor(-1, FIRST_UUID)));

    EXPECT_FALSE(sut.exists(FIRST_UUID));
    EXPECT_FALSE(sut.exists(DbId(-1)));
    EXPECT_EQ(sut.getNextId(), 1);
}

TEST(XObjectCache, RefusesAnObjectWithoutUuid)
{
    const DoorSchema schema;
    XObjectCache sut;

    EXPECT_FALSE(sut.insertObject(*schema.makeDoor(1, "")));

    EXPECT_FALSE(sut.exists(DbId(1)));
    EXPECT_FALSE(sut.exists(Poco::UUID::null()));
    EXPECT_EQ(sut.getNextId(), 1);
}

TEST(XObjectCache, RefusesAnObjectWithTheAllZeroUuid)
{
    const DoorSchema schema;
    XObjectCache sut;
    XObject::Ptr door = schema.makeDoor(1, FIRST_UUID);
    door->setId(UUID(Poco::UUID::null()));

    EXPECT_FALSE(sut.insertObject(*door));

    EXPECT_FALSE(sut.exists(DbId(1)));
}

TEST(XObjectCache, RefusesASecondObjectWithAUsedId)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));

    EXPECT_FALSE(sut.insertObject(*schema.makeDoor(1, SECOND_UUID, "back")));

    EXPECT_FALSE(sut.exists(SECOND_UUID));
    EXPECT_EQ(sut.get(DbId(1))->getName(), "front");
    EXPECT_EQ(sut.getNextId(), 2);
}

TEST(XObjectCache, RefusesASecondObjectWithAUsedUuid)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));

    EXPECT_FALSE(sut.insertObject(*schema.makeDoor(2, FIRST_UUID, "back")));

    EXPECT_FALSE(sut.exists(DbId(2)));
    EXPECT_EQ(sut.get(FIRST_UUID)->getName(), "front");
    EXPECT_EQ(sut.get(FIRST_UUID)->getDBID(), 1);
    EXPECT_EQ(sut.getNextId(), 2);
}

TEST(XObjectCache, FindsAnUpperCaseUuidByItsLowerCaseSpelling)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, "3F2504E0-4F89-41D3-9A0C-0305E82C3301")));

    const XObject::Ptr found = sut.get(THIRD_UUID);

    ASSERT_FALSE(found.isNull());
    EXPECT_TRUE(sut.exists(THIRD_UUID));
    EXPECT_EQ(found->getUUID(), "3F2504E0-4F89-41D3-9A0C-0305E82C3301");
}

// Lookups

TEST(XObjectCache, KnowsNoTextThatIsNotAUuid)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    XObject target{Element::Ptr()};

    EXPECT_FALSE(sut.exists("front"));
    EXPECT_FALSE(sut.exists(""));
    EXPECT_TRUE(sut.get("front").isNull());
    EXPECT_FALSE(sut.get("front", target, true));
    EXPECT_EQ(target.getDBID(), -1);
}

TEST(XObjectCache, GivesNullOrFalseForUnknownObjects)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    XObject target{Element::Ptr()};
    target.setName("untouched");

    EXPECT_FALSE(sut.exists(DbId(2)));
    EXPECT_FALSE(sut.exists(SECOND_UUID));
    EXPECT_TRUE(sut.get(DbId(2)).isNull());
    EXPECT_TRUE(sut.get(Poco::UUID(SECOND_UUID)).isNull());
    EXPECT_TRUE(sut.get(SECOND_UUID).isNull());
    EXPECT_EQ(sut.find(DbId(2)), nullptr);
    EXPECT_FALSE(sut.get(DbId(2), target, true));
    EXPECT_FALSE(sut.get(SECOND_UUID, target, true));
    EXPECT_EQ(target.getName(), "untouched");
    EXPECT_TRUE(target.getAttributeValues().empty());
}

TEST(XObjectCache, GivesASkeletonCopyWithoutValues)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    XObject target{Element::Ptr()};

    ASSERT_TRUE(sut.get(DbId(1), target, false));

    EXPECT_EQ(target.getDBID(), 1);
    EXPECT_EQ(target.getUUID(), FIRST_UUID);
    EXPECT_EQ(target.getElement().get(), schema.element.get());
    ASSERT_EQ(target.getAttributeValues().size(), 2u);
    EXPECT_EQ(target.getAttributeValues()[0]->getName(), "name");
    EXPECT_EQ(target.getAttributeValues()[1]->getDBID(), 2);
    EXPECT_FALSE(target.getAttributeValues()[0]->hasValue());
    EXPECT_FALSE(target.getAttributeValues()[1]->hasValue());
    EXPECT_EQ(sut.get(DbId(1))->getValue("name")->getValue(), Var("front"));
}

TEST(XObjectCache, GivesASnapshotWhoseChangesDoNotReachTheStore)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    XObject target{Element::Ptr()};
    ASSERT_TRUE(sut.get(FIRST_UUID, target, true));
    ASSERT_EQ(target.getValue("name")->getValue(), Var("front"));

    target.getValue("name")->setValue(Var("back"), false);

    EXPECT_EQ(sut.get(DbId(1))->getValue("name")->getValue(), Var("front"));
}

TEST(XObjectCache, SharesTheStoredObjectThroughItsPointer)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));

    sut.get(DbId(1))->getValue("name")->setValue(Var("back"), false);

    EXPECT_EQ(sut.get(FIRST_UUID)->getValue("name")->getValue(), Var("back"));
}

TEST(XObjectCache, RaisesANullPointerErrorForANullEntry)
{
    PlacedCursorCache sut;
    sut.enterNullObject(5);
    XObject target{Element::Ptr()};

    try
    {
        sut.get(DbId(5), target, true);
        FAIL() << "nothing thrown";
    }
    catch (const Poco::Exception& e)
    {
        EXPECT_EQ(typeid(e), typeid(Poco::NullPointerException));
        EXPECT_EQ(e.displayText(), "Null pointer");
    }
}

// Values

TEST(XObjectCache, WritesAValueAsItStandsIntoTheCellOfThatId)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));

    const bool updated = sut.updateValue(1, 2, Var("many"));

    EXPECT_TRUE(updated);
    const Var& stored = sut.get(DbId(1))->getValue("count")->getValue();
    EXPECT_EQ(stored.type(), typeid(std::string));
    EXPECT_EQ(stored, Var("many"));
    EXPECT_EQ(sut.get(DbId(1))->getValue("name")->getValue(), Var("front"));
}

TEST(XObjectCache, WritesTheFirstCellOfAnIdOnly)
{
    const DoorSchema schema;
    XObjectCache sut;
    XObject::Ptr door = schema.makeDoor(1, FIRST_UUID);
    AttributeValueList cells = door->getAttributeValues();
    cells.emplace_back(new AttributeValue(1, schema.countAttribute, 2));
    door->setAttributeValues(cells);
    ASSERT_TRUE(sut.insertObject(*door));

    ASSERT_TRUE(sut.updateValue(1, 2, Var(Poco::Int64(5))));

    const AttributeValueList& stored = sut.get(DbId(1))->getAttributeValues();
    EXPECT_EQ(stored[1]->getValue(), Var(Poco::Int64(5)));
    EXPECT_FALSE(stored[2]->hasValue());
}

TEST(XObjectCache, GivesFalseForAValueOfAnUnknownObjectOrCell)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    LogCapture capture;

    EXPECT_FALSE(sut.updateValue(2, 1, Var("x")));
    EXPECT_FALSE(sut.updateValue(1, 3, Var("x")));
    EXPECT_FALSE(sut.removeValue(2, 1));
    EXPECT_FALSE(sut.removeValue(1, 3));
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(XObjectCache, EmptiesARemovedValueAndKeepsItsCell)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));

    const bool removed = sut.removeValue(1, 1);

    EXPECT_TRUE(removed);
    const XObject::Ptr stored = sut.get(DbId(1));
    ASSERT_EQ(stored->getAttributeValues().size(), 2u);
    const AttributeValuePtr cell = stored->getValue("name");
    ASSERT_FALSE(cell.isNull());
    EXPECT_FALSE(cell->hasValue());
    EXPECT_EQ(cell->getDBID(), 1);
}

TEST(XObjectCache, EmptiesOnlyTheGivenCellOfTheGivenObject)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(2, SECOND_UUID)));
    ASSERT_TRUE(sut.removeValue(1, 1));

    ASSERT_TRUE(sut.removeValue(2, 2));

    EXPECT_FALSE(sut.get(DbId(1))->getValue("name")->hasValue());
    EXPECT_FALSE(sut.get(DbId(2))->getValue("count")->hasValue());
    EXPECT_TRUE(sut.get(DbId(2))->getValue("name")->hasValue());
}

// Removal of objects

TEST(XObjectCache, RemovesAnObjectByIdFromBothMaps)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(2, SECOND_UUID)));

    sut.removeObject(DbId(1));

    EXPECT_FALSE(sut.exists(DbId(1)));
    EXPECT_FALSE(sut.exists(FIRST_UUID));
    EXPECT_TRUE(sut.exists(DbId(2)));
    EXPECT_TRUE(sut.exists(SECOND_UUID));
}

TEST(XObjectCache, RemovesAnObjectByUuidFromBothMaps)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(2, SECOND_UUID)));

    sut.removeObject(Poco::UUID(FIRST_UUID));

    EXPECT_FALSE(sut.exists(DbId(1)));
    EXPECT_FALSE(sut.exists(FIRST_UUID));
    EXPECT_TRUE(sut.exists(DbId(2)));
}

TEST(XObjectCache, RemovesAnObjectByUuidText)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));

    sut.removeObject("6BA7B810-9DAD-41D1-80B4-00C04FD430C8");

    EXPECT_FALSE(sut.exists(DbId(1)));
    EXPECT_FALSE(sut.exists(FIRST_UUID));
}

TEST(XObjectCache, IgnoresTheRemovalOfUnknownObjectsAndOfTextThatIsNoUuid)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));

    sut.removeObject(DbId(2));
    sut.removeObject(Poco::UUID(SECOND_UUID));
    sut.removeObject(SECOND_UUID);
    sut.removeObject("front");

    EXPECT_TRUE(sut.exists(DbId(1)));
    EXPECT_TRUE(sut.exists(FIRST_UUID));
}

TEST(XObjectCache, KeepsARemovedObjectAliveForWhoeverHoldsIt)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    const XObject::Ptr held = sut.get(DbId(1));

    sut.removeObject(DbId(1));

    EXPECT_TRUE(sut.get(DbId(1)).isNull());
    EXPECT_EQ(held->getName(), "front");
    EXPECT_EQ(held->getValue("count")->getValue(), Var(Poco::Int64(2)));
}

TEST(XObjectCache, EmptiesBothMapsOnClear)
{
    const DoorSchema schema;
    XObjectCache sut;
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
    ASSERT_TRUE(sut.insertObject(*schema.makeDoor(2, SECOND_UUID)));

    sut.clear();

    EXPECT_FALSE(sut.exists(DbId(1)));
    EXPECT_FALSE(sut.exists(DbId(2)));
    EXPECT_FALSE(sut.exists(FIRST_UUID));
    EXPECT_FALSE(sut.exists(SECOND_UUID));
    EXPECT_TRUE(sut.insertObject(*schema.makeDoor(1, FIRST_UUID)));
}

} // namespace
