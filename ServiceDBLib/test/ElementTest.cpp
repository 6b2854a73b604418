#include "JSONDataCache/DBData/Element.h"

#include "JSONDataCache/DBData/AttributeIndex.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Exception.h>
#include <Poco/UUID.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeIndex;
using Orvi::DBData::AttributeMap;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::DbId;
using Orvi::DBData::Element;
using Orvi::DBData::Endpoint;
using Orvi::DBData::Resource;
using Orvi::DBData::Service;
using Orvi::DBData::UUID;
using Orvi::DBData::XObject;
using Orvi::DBData::Index::ArrayValue;
using Orvi::DBData::Index::IndexEntry;
using Orvi::DBData::Index::IndexGroup;
using Orvi::DBData::Index::SimpleValue;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

using Orvi::DBData::AttrType_Integer;
using Orvi::DBData::AttrType_String;

const std::string FIRST_UUID = "30000000-0000-4000-8000-000000000001";
const std::string SECOND_UUID = "10000000-0000-4000-8000-000000000002";
const std::string THIRD_UUID = "20000000-0000-4000-8000-000000000003";

Endpoint makeEndpoint(const std::string& attributeName)
{
    Endpoint endpoint;
    endpoint.setPost(true);
    endpoint.setAttribute(new Attribute(attributeName));
    return endpoint;
}

// An object row as the registry sees it: only its id and UUID matter.
XObject::Ptr makeObject(DbId id, const std::string& uuid)
{
    XObject::Ptr object(new XObject(Element::Ptr()));
    object->setDBID(id);
    object->setId(UUID(uuid));
    return object;
}

// An element named "doors" with the integer attribute "count" and the string array "tags".
struct DoorSchema
{
    DoorSchema()
        : resource(service)
        , sut(resource)
    {
        sut.setName("doors");
        sut.setAttributes(AttributeMap{{"count", count}, {"tags", tags}});
    }

    Service service;
    Resource resource;
    Element sut;
    Attribute::Ptr count{new Attribute("count", AttrType_Integer, false)};
    Attribute::Ptr tags{new Attribute("tags", AttrType_String, true)};
};

std::vector<std::pair<DbId, DbId>> cellsOf(const IndexGroup& group)
{
    std::vector<std::pair<DbId, DbId>> cells;
    for (const IndexEntry& entry : group)
    {
        cells.emplace_back(entry.idXObj, entry.idAttrValue);
    }
    return cells;
}

// Construction, name and endpoints

TEST(Element, IsBoundToItsResourceAndEmptyAfterConstruction)
{
    Service service;
    Resource resource(service);

    const Element sut(resource);

    EXPECT_EQ(&sut.getResource(), &resource);
    EXPECT_EQ(sut.getName(), "");
    EXPECT_TRUE(sut.getEndpoints().empty());
    EXPECT_TRUE(sut.getAttributes().empty());
    EXPECT_TRUE(sut.getIndexes().empty());
    EXPECT_TRUE(sut.getXObjectIds().empty());
    EXPECT_TRUE(sut.getAllXObjectIds().empty());
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

// Attributes and indexes

TEST(Element, GivesAnArrayAttributeAnArrayIndexAndASingleOneASimpleIndex)
{
    const DoorSchema schema;

    const auto& indexes = schema.sut.getIndexes();

    ASSERT_EQ(indexes.size(), 2u);
    ASSERT_EQ(indexes.count("count"), 1u);
    ASSERT_EQ(indexes.count("tags"), 1u);
    EXPECT_NE(dynamic_cast<const AttributeIndex<SimpleValue>*>(indexes.at("count").get()), nullptr);
    EXPECT_EQ(dynamic_cast<const AttributeIndex<ArrayValue>*>(indexes.at("count").get()), nullptr);
    EXPECT_NE(dynamic_cast<const AttributeIndex<ArrayValue>*>(indexes.at("tags").get()), nullptr);
    EXPECT_EQ(dynamic_cast<const AttributeIndex<SimpleValue>*>(indexes.at("tags").get()), nullptr);
}

TEST(Element, CopiesAGivenAttributeMapAndSharesItsDefinitions)
{
    Service service;
    Resource resource(service);
    Element sut(resource);
    const Attribute::Ptr count(new Attribute("count", AttrType_Integer, false));
    const AttributeMap given{{"count", count}};

    sut.setAttributes(given);

    EXPECT_EQ(given.size(), 1u);
    ASSERT_EQ(sut.getAttributes().size(), 1u);
    EXPECT_EQ(sut.getAttributes().at("count").get(), count.get());
    EXPECT_EQ(sut.getIndexes().size(), 1u);
}

TEST(Element, TakesOverAMovedAttributeMap)
{
    Service service;
    Resource resource(service);
    Element sut(resource);
    const Attribute::Ptr name(new Attribute("name"));
    AttributeMap given{{"name", name}};

    sut.setAttributes(std::move(given));

    ASSERT_EQ(sut.getAttributes().size(), 1u);
    EXPECT_EQ(sut.getAttributes().at("name").get(), name.get());
    EXPECT_EQ(sut.getIndexes().count("name"), 1u);
}

TEST(Element, ReplacesAttributesAndIndexesTogetherWithEmptyIndexes)
{
    DoorSchema schema;
    const AttributeValue cell(7, schema.count, 1);
    ASSERT_TRUE(schema.sut.updateIndex(cell, Var(4)));
    const Attribute::Ptr color(new Attribute("color"));

    schema.sut.setAttributes(AttributeMap{{"color", color}, {"count", schema.count}});

    EXPECT_THAT(schema.sut.getAttributes(), ElementsAre(Pair("color", color), Pair("count", schema.count)));
    ASSERT_EQ(schema.sut.getIndexes().size(), 2u);
    EXPECT_EQ(schema.sut.getIndexes().count("tags"), 0u);
    EXPECT_THAT(schema.sut.getIndexes().at("count")->find(Var(4)), IsEmpty());
}

TEST(Element, RefusesANullAttributeWithABugcheck)
{
    Service service;
    Resource resource(service);
    Element sut(resource);

    try
    {
        sut.setAttributes(AttributeMap{{"broken", Attribute::Ptr()}});
        FAIL() << "no bugcheck";
    }
    catch (const Poco::BugcheckException& e)
    {
        EXPECT_THAT(e.message(), StartsWith("in file \""));
        EXPECT_THAT(e.message(), HasSubstr("Element.cpp\", line "));
    }
    EXPECT_TRUE(sut.getIndexes().empty());
}

TEST(Element, FilesACellInTheIndexOfItsAttribute)
{
    DoorSchema schema;
    const AttributeValue cell(7, schema.count, 1);

    const bool updated = schema.sut.updateIndex(cell, Var(4));

    EXPECT_TRUE(updated);
    EXPECT_THAT(cellsOf(schema.sut.getIndexes().at("count")->find(Var(4))), ElementsAre(Pair(7, 1)));
    EXPECT_THAT(schema.sut.getIndexes().at("tags")->find(Var(4)), IsEmpty());
}

TEST(Element, TakesACellOutOfTheIndexOfItsAttribute)
{
    DoorSchema schema;
    const AttributeValue cell(7, schema.count, 1);
    ASSERT_TRUE(schema.sut.updateIndex(cell, Var(4)));

    const bool removed = schema.sut.removeFromIndex(cell);

    EXPECT_TRUE(removed);
    EXPECT_THAT(schema.sut.getIndexes().at("count")->find(Var(4)), IsEmpty());
}

TEST(Element, GivesFalseForACellOfAnAttributeWithoutIndex)
{
    DoorSchema schema;
    const AttributeValue cell(7, new Attribute("color"), 1);
    LogCapture capture;

    EXPECT_FALSE(schema.sut.updateIndex(cell, Var("red")));
    EXPECT_FALSE(schema.sut.removeFromIndex(cell));
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(Element, GivesFalseWhenTheIndexRefusesACellOfAnotherType)
{
    DoorSchema schema;
    const AttributeValue cell(7, new Attribute("count", AttrType_String, false), 1);
    LogCapture capture;

    EXPECT_FALSE(schema.sut.updateIndex(cell, Var("four")));
    EXPECT_FALSE(schema.sut.removeFromIndex(cell));
    EXPECT_THAT(
        capture.lines(),
        ElementsAre("Error: Failed to update index for attribute count with value for attribute count",
                    "Error: Failed to remove index for attribute count"));
}

// Object registry

TEST(Element, RegistersAnObjectByIdAndByUuid)
{
    DoorSchema schema;
    XObject::Ptr object = makeObject(5, FIRST_UUID);
    LogCapture capture;

    const bool added = schema.sut.addXObject(*object);

    EXPECT_TRUE(added);
    EXPECT_TRUE(schema.sut.hasXObject(5));
    EXPECT_EQ(schema.sut.getXObjectId(Poco::UUID(FIRST_UUID)), 5);
    EXPECT_EQ(schema.sut.getXObjectId(UUID(FIRST_UUID)), 5);
    EXPECT_EQ(schema.sut.getXObjectId(FIRST_UUID), 5);
    EXPECT_THAT(schema.sut.getXObjectIds(), ElementsAre(Pair(5, Poco::UUID(FIRST_UUID))));
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(Element, FindsAnObjectByAnotherSpellingOfItsUuid)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, "3F2504E0-4F89-41D3-9A0C-0305E82C3301")));

    EXPECT_EQ(schema.sut.getXObjectId("3f2504e0-4f89-41d3-9a0c-0305e82c3301"), 5);
}

TEST(Element, LeavesTheValuesOfAnAddedObjectOutOfTheIndexes)
{
    DoorSchema schema;
    XObject::Ptr object = makeObject(5, FIRST_UUID);
    Orvi::DBData::AttributeValuePtr cell(new AttributeValue(5, schema.count, 1));
    cell->setValue(Var(Poco::Int64(4)), false);
    object->setAttributeValues({cell});

    ASSERT_TRUE(schema.sut.addXObject(*object));

    EXPECT_THAT(schema.sut.getIndexes().at("count")->find(Var(Poco::Int64(4))), IsEmpty());
}

TEST(Element, RefusesAnObjectWithoutIdWhateverItsUuid)
{
    DoorSchema schema;
    XObject::Ptr withUuid = makeObject(-1, FIRST_UUID);
    XObject::Ptr withoutUuid = makeObject(-1, "");
    LogCapture capture;

    EXPECT_FALSE(schema.sut.addXObject(*withUuid));
    EXPECT_FALSE(schema.sut.addXObject(*withoutUuid));

    EXPECT_THAT(capture.lines(),
                ElementsAre("Warning: Unable to add XObject with invalid dbid to element doors",
                            "Warning: Unable to add XObject with invalid dbid to element doors"));
    EXPECT_TRUE(schema.sut.getXObjectIds().empty());
    EXPECT_EQ(schema.sut.getXObjectId(FIRST_UUID), -1);
}

TEST(Element, RefusesAnObjectWithAFreeIdAndARegisteredUuid)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    LogCapture capture;

    const bool added = schema.sut.addXObject(*makeObject(6, FIRST_UUID));

    EXPECT_FALSE(added);
    EXPECT_THAT(capture.lines(), ElementsAre("Warning: XObject with dbid 6 and uuid " + FIRST_UUID +
                                             " is already registered for element doors"));
    EXPECT_THAT(schema.sut.getXObjectIds(), ElementsAre(Pair(5, Poco::UUID(FIRST_UUID))));
    EXPECT_EQ(schema.sut.getAllXObjectIds(), std::vector<long>{5});
    EXPECT_FALSE(schema.sut.hasXObject(6));
}

TEST(Element, RefusesAnObjectWithARegisteredIdAndAFreeUuid)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    LogCapture capture;

    const bool added = schema.sut.addXObject(*makeObject(5, SECOND_UUID));

    EXPECT_FALSE(added);
    EXPECT_THAT(capture.lines(), ElementsAre("Warning: XObject with dbid 5 and uuid " + SECOND_UUID +
                                             " is already registered for element doors"));
    EXPECT_THAT(schema.sut.getXObjectIds(), ElementsAre(Pair(5, Poco::UUID(FIRST_UUID))));
    EXPECT_EQ(schema.sut.getAllXObjectIds(), std::vector<long>{5});
    EXPECT_EQ(schema.sut.getXObjectId(SECOND_UUID), -1);
}

TEST(Element, ShowsTheCanonicalUuidTextInTheWarningOfARegisteredObject)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    LogCapture capture;

    EXPECT_FALSE(schema.sut.addXObject(*makeObject(5, "3F2504E0-4F89-41D3-9A0C-0305E82C3301")));

    EXPECT_THAT(capture.lines(), ElementsAre("Warning: XObject with dbid 5 and uuid "
                                             "3f2504e0-4f89-41d3-9a0c-0305e82c3301 is already registered for "
                                             "element doors"));
}

TEST(Element, UnregistersAnObjectFromBothSides)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(6, SECOND_UUID)));

    schema.sut.removeXObject(5);

    EXPECT_FALSE(schema.sut.hasXObject(5));
    EXPECT_EQ(schema.sut.getXObjectId(FIRST_UUID), -1);
    EXPECT_THAT(schema.sut.getXObjectIds(), ElementsAre(Pair(6, Poco::UUID(SECOND_UUID))));
    EXPECT_EQ(schema.sut.getAllXObjectIds(), std::vector<long>{6});
}

TEST(Element, TakesBackAnObjectAfterItsRemoval)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    schema.sut.removeXObject(5);

    EXPECT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    EXPECT_EQ(schema.sut.getXObjectId(FIRST_UUID), 5);
}

TEST(Element, IgnoresTheRemovalOfAnUnknownIdSilently)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    LogCapture capture;

    schema.sut.removeXObject(6);

    EXPECT_THAT(capture.lines(), IsEmpty());
    EXPECT_THAT(schema.sut.getXObjectIds(), ElementsAre(Pair(5, Poco::UUID(FIRST_UUID))));
    EXPECT_EQ(schema.sut.getXObjectId(FIRST_UUID), 5);
}

TEST(Element, LeavesTheIndexesAloneWhenAnObjectIsRemoved)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    const AttributeValue cell(5, schema.count, 1);
    ASSERT_TRUE(schema.sut.updateIndex(cell, Var(4)));

    schema.sut.removeXObject(5);

    EXPECT_THAT(cellsOf(schema.sut.getIndexes().at("count")->find(Var(4))), ElementsAre(Pair(5, 1)));
}

TEST(Element, DoesNotKnowAnObjectOfAnotherElement)
{
    DoorSchema schema;
    Resource otherResource(schema.service);
    Element other(otherResource);
    ASSERT_TRUE(other.addXObject(*makeObject(8, THIRD_UUID)));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));

    EXPECT_EQ(schema.sut.getXObjectId(THIRD_UUID), -1);
    EXPECT_EQ(schema.sut.getXObjectId(Poco::UUID(THIRD_UUID)), -1);
    EXPECT_EQ(schema.sut.getXObjectId(UUID(THIRD_UUID)), -1);
    EXPECT_FALSE(schema.sut.hasXObject(8));
}

TEST(Element, GivesMinusOneForTheEmptyUuidText)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));

    EXPECT_EQ(schema.sut.getXObjectId(""), -1);
}

TEST(Element, RaisesASyntaxErrorForAnIdLookupByTextThatIsNoUuid)
{
    DoorSchema schema;

    try
    {
        schema.sut.getXObjectId("not-a-uuid");
        FAIL() << "nothing thrown";
    }
    catch (const Poco::SyntaxException& e)
    {
        EXPECT_EQ(e.displayText(), "Syntax error: Invalid UUID string: not-a-uuid");
    }
}

TEST(Element, ListsAllIdsInTheOrderOfTheirUuids)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(1, FIRST_UUID)));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(2, SECOND_UUID)));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(3, THIRD_UUID)));

    const std::vector<long> ids = schema.sut.getAllXObjectIds();

    EXPECT_EQ(ids, (std::vector<long>{2, 3, 1}));
}

TEST(Element, GivesTheIdKeyedMapAsItsObjectIds)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(1, FIRST_UUID)));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(2, SECOND_UUID)));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(3, THIRD_UUID)));

    const Element::XObjectUuidMap& ids = schema.sut.getXObjectIds();

    EXPECT_THAT(ids, ElementsAre(Pair(1, Poco::UUID(FIRST_UUID)), Pair(2, Poco::UUID(SECOND_UUID)),
                                 Pair(3, Poco::UUID(THIRD_UUID))));
}

TEST(Element, ListsTheIdsOfItsObjectsInAscendingOrderWhateverTheOrderOfRegistration)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(7, "00000000-0000-4000-8000-000000000007")));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(3, "00000000-0000-4000-8000-000000000003")));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(9, "00000000-0000-4000-8000-000000000009")));
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, "00000000-0000-4000-8000-000000000005")));
    ASSERT_FALSE(schema.sut.addXObject(*makeObject(5, "00000000-0000-4000-8000-000000000055")));

    schema.sut.removeXObject(7);
    schema.sut.removeXObject(8);

    EXPECT_EQ(schema.sut.getXObjectIdList(), (std::vector<Orvi::DBData::DbId>{3, 5, 9}));
}

// Version

TEST(Element, ChangesItsVersionWithARegistrationAndAnUnregistration)
{
    DoorSchema schema;
    const Poco::UInt64 before = schema.sut.getVersion();

    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    const Poco::UInt64 afterAdding = schema.sut.getVersion();
    schema.sut.removeXObject(5);

    EXPECT_NE(afterAdding, before);
    EXPECT_NE(schema.sut.getVersion(), afterAdding);
    EXPECT_NE(schema.sut.getVersion(), before);
}

TEST(Element, ChangesItsVersionWithEveryIndexChangeEvenWhenTheIndexRefusesIt)
{
    DoorSchema schema;
    const AttributeValue cell(7, schema.count, 1);
    const AttributeValue foreign(7, new Attribute("count", AttrType_String, false), 2);
    LogCapture capture;
    std::vector<Poco::UInt64> versions{schema.sut.getVersion()};

    schema.sut.updateIndex(cell, Var(4));
    versions.push_back(schema.sut.getVersion());
    schema.sut.removeFromIndex(cell);
    versions.push_back(schema.sut.getVersion());
    schema.sut.updateIndex(foreign, Var("four"));
    versions.push_back(schema.sut.getVersion());
    schema.sut.removeFromIndex(foreign);
    versions.push_back(schema.sut.getVersion());

    std::sort(versions.begin(), versions.end());
    EXPECT_EQ(std::adjacent_find(versions.begin(), versions.end()), versions.end());
}

TEST(Element, KeepsItsVersionForRefusedRegistrationsAndUnknownRemovals)
{
    DoorSchema schema;
    ASSERT_TRUE(schema.sut.addXObject(*makeObject(5, FIRST_UUID)));
    LogCapture capture;
    const Poco::UInt64 before = schema.sut.getVersion();

    EXPECT_FALSE(schema.sut.addXObject(*makeObject(5, SECOND_UUID)));
    schema.sut.removeXObject(6);

    EXPECT_EQ(schema.sut.getVersion(), before);
}

TEST(Element, SharesNoVersionWithAnotherElement)
{
    DoorSchema first;
    DoorSchema second;

    EXPECT_NE(first.sut.getVersion(), second.sut.getVersion());
}

} // namespace
