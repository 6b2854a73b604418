#include "JSONDataCache/JSONDataCache.h"

#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/ConstraintOneOf.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Index/IndexEntry.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Bugcheck.h>
#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

namespace
{

using Orvi::DBData::AttributeMap;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::AttrType_Integer;
using Orvi::DBData::AttrType_String;
using Orvi::DBData::DbId;
using Orvi::DBData::Element;
using Orvi::DBData::ServiceMap;
using Orvi::DBData::XObject;
using Orvi::DBData::Index::IndexEntry;
using Orvi::DBData::Index::IndexGroup;
using Orvi::JSONDataCache::extractUuid;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::Fleet::describe;
using ServiceDB::Test::Fleet::InspectableCache;
using ServiceDB::Test::Fleet::makeAttribute;
using ServiceDB::Test::Fleet::makeFleet;
using testing::StartsWith;
using Lines = std::vector<std::string>;
using ValueArray = AttributeValue::ValueArray;
using ValueArrayPtr = AttributeValue::ValueArrayPtr;

const std::string CAR_1 = "c0000000-0000-4000-8000-000000000001";
const std::string CAR_2 = "c0000000-0000-4000-8000-000000000002";
const std::string PERSON_1 = "b0000000-0000-4000-8000-000000000001";
const std::string PERSON_2 = "b0000000-0000-4000-8000-000000000002";
const std::string SPOT_1 = "d0000000-0000-4000-8000-000000000001";
const std::string UPPER_UUID = "C0FFEE00-0000-4000-8000-0000000000AB";
const std::string LOWER_UUID = "c0ffee00-0000-4000-8000-0000000000ab";

// What the attribute reports for a text that is no integer.
const Lines INVALID_INTEGER_LINES{
    "Error: Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
    "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime exception: "
    "Attribute::setValue trying to set 64bit integer type failed converting: parsing failed"};

const std::string EMPTY_ARRAY_TRACE = "Trace: Initialise ArrayValue with empty value";
// A new car indexes its three empty array values.
const Lines NEW_CAR_LINES{EMPTY_ARRAY_TRACE, EMPTY_ARRAY_TRACE, EMPTY_ARRAY_TRACE};

ValueArrayPtr makeArray(const std::vector<Var>& elements)
{
    return new ValueArray(elements);
}

class JSONDataCacheMutationTest : public testing::Test
{
protected:
    // Creates an object of the resource under the given UUID and gives its id.
    DbId insert(const std::string& resource, const std::string& uuid, const std::string& service = "fleet")
    {
        std::string newUUID = uuid;
        DbId newDBID = -1;
        EXPECT_TRUE(sut.insertXObject(service, resource, newUUID, newDBID)) << resource << " " << uuid;
        return newDBID;
    }

    XObject::Ptr stored(const std::string& uuid) { return sut.store().get(uuid); }

    std::string storedValue(const std::string& uuid, const std::string& attribute)
    {
        return describe(stored(uuid)->getValue(attribute)->getValue());
    }

    // A private copy of one value of the object, to be changed and written back.
    AttributeValuePtr copyOfValue(const std::string& uuid, const std::string& attribute)
    {
        m_copy = sut.selectXObject(uuid, -1);
        return m_copy->getValue(attribute);
    }

    // Writes a value as a caller does: into a private copy, then back through the cache.
    bool write(const std::string& uuid, const std::string& attribute, const Var& value,
               bool allowDelete = true)
    {
        AttributeValuePtr cell = copyOfValue(uuid, attribute);
        cell->setValue(value, false);
        return sut.updateCacheAttributeValueById(*cell, allowDelete);
    }

    Element& element(const std::string& resource, const std::string& service = "fleet")
    {
        Element::Ptr found = services.at(service)->getResource(resource)->getElement();
        return *found;
    }

    IndexGroup find(const std::string& resource, const std::string& attribute, const Var& value)
    {
        return element(resource).getIndexes().at(attribute)->find(value);
    }

    // Lets the attribute of cars name only the targets of the constraint.
    void constrain(const std::string& attribute, const Poco::SharedPtr<Orvi::DBData::aConstraint>& targets)
    {
        Orvi::DBData::Attribute::Ptr constrained = element("cars").getAttributes().at(attribute);
        constrained->setConstraints({targets});
    }

    ServiceMap services = makeFleet();
    InspectableCache sut{services};

private:
    XObject::Ptr m_copy;
};

TEST_F(JSONDataCacheMutationTest, InsertsAnObjectUnderTheGivenUUIDWithTheFirstId)
{
    std::string newUUID = CAR_1;
    DbId newDBID = -1;
    LogCapture capture;

    const bool result = sut.insertXObject("fleet", "cars", newUUID, newDBID);

    EXPECT_TRUE(result);
    EXPECT_EQ(newUUID, CAR_1);
    EXPECT_EQ(newDBID, 1);
    EXPECT_EQ(capture.lines(), NEW_CAR_LINES);
    EXPECT_TRUE(sut.store().exists(DbId(1)));
}

TEST_F(JSONDataCacheMutationTest, GivesANewObjectItsDefaultValuesAndNullForEveryOtherAttribute)
{
    insert("cars", CAR_1);

    const XObject::Ptr sutObject = stored(CAR_1);

    EXPECT_EQ(describe(*sutObject),
              "brand=null driver=null id=\"" + CAR_1 +
                  "\" loads=null mileage=null name=\"\" passengers=null seats=null tags=null "
                  "uri=\"/fleet/cars/" +
                  CAR_1 + "\"");
    EXPECT_EQ(sutObject->getElement().get(), &element("cars"));
}

TEST_F(JSONDataCacheMutationTest, NumbersTheValuesOfANewObjectFromOneInNameOrder)
{
    insert("cars", CAR_1);
    insert("cars", CAR_2);

    const XObject::Ptr sutObject = stored(CAR_2);

    std::string ids;
    for (const AttributeValuePtr& value : sutObject->getAttributeValues())
    {
        ids += value->getName() + ":" + std::to_string(value->getParent()) + "/" +
               std::to_string(value->getDBID()) + " ";
    }
    EXPECT_EQ(ids,
              "brand:2/1 driver:2/2 id:2/3 loads:2/4 mileage:2/5 name:2/6 passengers:2/7 seats:2/8 tags:2/9 "
              "uri:2/10 ");
}

TEST_F(JSONDataCacheMutationTest, EndsTheUriOfANewObjectInItsUUIDWithoutClosingSlash)
{
    insert("people", PERSON_1);

    EXPECT_EQ(storedValue(PERSON_1, "uri"), "\"/fleet/people/" + PERSON_1 + "\"");
}

TEST_F(JSONDataCacheMutationTest, RegistersANewObjectWithItsElementAndIndexesItsValues)
{
    insert("people", PERSON_1);

    EXPECT_EQ(element("people").getXObjectIds().size(), 1u);
    EXPECT_EQ(element("people").getXObjectIds().at(1), Poco::UUID(PERSON_1));
    EXPECT_EQ(find("people", "id", Var(PERSON_1)), IndexGroup{IndexEntry(1, 3)});
    EXPECT_EQ(find("people", "name", Var(std::string())), IndexGroup{IndexEntry(1, 4)});
    EXPECT_EQ(find("people", "uri", Var("/fleet/people/" + PERSON_1)), IndexGroup{IndexEntry(1, 5)});
}

TEST_F(JSONDataCacheMutationTest, NumbersObjectsOfAllElementsByOneCursor)
{
    const DbId first = insert("cars", CAR_1);
    const DbId second = insert("people", PERSON_1);
    const DbId third = insert("spots", SPOT_1, "garage");

    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(third, 3);
}

TEST_F(JSONDataCacheMutationTest, SwapsTheNewObjectIntoTheCallersObjectAndDropsItsFormerValues)
{
    XObject sutObject{Element::Ptr()};
    sutObject.setId(Orvi::DBData::UUID(PERSON_1));
    sutObject.getAttributeValues().push_back(new AttributeValue(7, makeAttribute("nickname"), 1));

    const bool result = sut.insertXObject("fleet", "people", sutObject);

    EXPECT_TRUE(result);
    EXPECT_EQ(sutObject.getDBID(), 1);
    EXPECT_EQ(sutObject.getUUID(), PERSON_1);
    EXPECT_EQ(sutObject.getElement().get(), &element("people"));
    EXPECT_EQ(describe(sutObject),
              "age=null buddy=null id=\"" + PERSON_1 + "\" name=\"\" uri=\"/fleet/people/" + PERSON_1 + "\"");
}

TEST_F(JSONDataCacheMutationTest, KeepsTheCallersObjectApartFromTheStoredOne)
{
    XObject sutObject{Element::Ptr()};
    sut.insertXObject("fleet", "people", sutObject);

    sutObject.getValue("age")->setValue(Var(40), false);

    EXPECT_EQ(storedValue(sutObject.getUUID(), "age"), "null");
}

TEST_F(JSONDataCacheMutationTest, GeneratesAUUIDForAnObjectWithoutOne)
{
    XObject sutObject{Element::Ptr()};

    const bool result = sut.insertXObject("fleet", "people", sutObject);

    EXPECT_TRUE(result);
    Poco::UUID generated;
    ASSERT_TRUE(generated.tryParse(sutObject.getUUID())) << sutObject.getUUID();
    EXPECT_EQ(generated.version(), Poco::UUID::UUID_RANDOM);
    EXPECT_TRUE(sut.store().exists(generated));
}

TEST_F(JSONDataCacheMutationTest, RefusesAUUIDInUseAndAllocatesNoId)
{
    insert("cars", CAR_1);
    std::string again = CAR_1;
    DbId refusedId = -1;
    LogCapture capture;

    const bool result = sut.insertXObject("fleet", "people", again, refusedId);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: Failed to insert XObject with pre-defined UUID " + CAR_1 +
                                     " as it is already in use!"});
    EXPECT_EQ(refusedId, -1);
    EXPECT_TRUE(element("people").getXObjectIds().empty());
    EXPECT_EQ(insert("cars", CAR_2), 2);
}

TEST_F(JSONDataCacheMutationTest, RefusesAUUIDInUseWrittenInOtherCase)
{
    insert("cars", LOWER_UUID);
    XObject sutObject{Element::Ptr()};
    sutObject.setId(Orvi::DBData::UUID(UPPER_UUID));
    LogCapture capture;

    const bool result = sut.insertXObject("fleet", "cars", sutObject);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: Failed to insert XObject with pre-defined UUID " + UPPER_UUID +
                                     " as it is already in use!"});
}

TEST_F(JSONDataCacheMutationTest, KeepsTheSpellingOfAUUIDGivenWithTheObject)
{
    XObject sutObject{Element::Ptr()};
    sutObject.setId(Orvi::DBData::UUID(UPPER_UUID));

    sut.insertXObject("fleet", "people", sutObject);

    EXPECT_EQ(stored(LOWER_UUID)->getUUID(), UPPER_UUID);
    EXPECT_EQ(storedValue(UPPER_UUID, "id"), "\"" + UPPER_UUID + "\"");
    EXPECT_EQ(storedValue(UPPER_UUID, "uri"), "\"/fleet/people/" + UPPER_UUID + "\"");
}

TEST_F(JSONDataCacheMutationTest, NormalisesAUUIDGivenAsText)
{
    std::string newUUID = UPPER_UUID;

    const bool result = sut.insertXObject("fleet", "people", newUUID);

    EXPECT_TRUE(result);
    EXPECT_EQ(newUUID, LOWER_UUID);
    EXPECT_EQ(stored(LOWER_UUID)->getUUID(), LOWER_UUID);
}

TEST_F(JSONDataCacheMutationTest, GeneratesAUUIDForTextThatIsNoUUID)
{
    std::string newUUID = "not-a-uuid";
    DbId newDBID = -1;
    LogCapture capture;

    const bool result = sut.insertXObject("fleet", "people", newUUID, newDBID);

    EXPECT_TRUE(result);
    Poco::UUID generated;
    ASSERT_TRUE(generated.tryParse(newUUID)) << newUUID;
    EXPECT_EQ(generated.version(), Poco::UUID::UUID_RANDOM);
    EXPECT_EQ(newDBID, 1);
    EXPECT_EQ(stored(newUUID)->getDBID(), 1);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheMutationTest, GeneratesAUUIDForTheNullUUID)
{
    std::string newUUID = Poco::UUID::null().toString();

    const bool result = sut.insertXObject("fleet", "people", newUUID);

    EXPECT_TRUE(result);
    EXPECT_NE(newUUID, Poco::UUID::null().toString());
    EXPECT_TRUE(sut.store().exists(newUUID));
}

TEST_F(JSONDataCacheMutationTest, RefusesToInsertIntoAnUnknownResourceOrOneWithoutElement)
{
    std::string newUUID = CAR_1;
    LogCapture capture;

    const bool unknown = sut.insertXObject("fleet", "nosuch", newUUID);
    const bool withoutElement = sut.insertXObject("fleet", "noelement", newUUID);

    EXPECT_FALSE(unknown);
    EXPECT_FALSE(withoutElement);
    EXPECT_EQ(capture.lines(), Lines({"Error: Tried to insert XObject for unknown element type",
                                      "Error: Tried to insert XObject for unknown element type"}));
    EXPECT_EQ(newUUID, CAR_1);
    EXPECT_FALSE(sut.store().exists(CAR_1));
}

TEST_F(JSONDataCacheMutationTest, DeletesAnObjectFromStoreElementAndIndexes)
{
    insert("cars", CAR_1);
    write(CAR_1, "brand", Var("Saab"));
    LogCapture capture;

    const bool result = sut.deleteXObject(CAR_1);

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(), Lines{"Debug: Deleting XObject - " + CAR_1 + " (1)"});
    EXPECT_FALSE(sut.store().exists(CAR_1));
    EXPECT_FALSE(sut.store().exists(DbId(1)));
    EXPECT_FALSE(element("cars").hasXObject(1));
    EXPECT_EQ(find("cars", "brand", Var("Saab")), IndexGroup{});
    EXPECT_EQ(find("cars", "id", Var(CAR_1)), IndexGroup{});
}

TEST_F(JSONDataCacheMutationTest, RefusesToDeleteAnUnknownObject)
{
    insert("cars", CAR_1);
    LogCapture capture;

    const bool unknown = sut.deleteXObject(CAR_2);
    const bool noUUID = sut.deleteXObject("car");

    EXPECT_FALSE(unknown);
    EXPECT_FALSE(noUUID);
    EXPECT_EQ(capture.lines(), Lines({"Warning: Failed to delete XObject " + CAR_2 + ". XObject not found",
                                      "Warning: Failed to delete XObject car. XObject not found"}));
    EXPECT_TRUE(sut.store().exists(CAR_1));
}

TEST_F(JSONDataCacheMutationTest, DeletesPastValuesThatItsIndexesDoNotKnow)
{
    insert("people", PERSON_1);
    // The schema loses two attributes while an object still holds values of them.
    element("people").setAttributes(AttributeMap{
        {"id", makeAttribute("id")}, {"name", makeAttribute("name")}, {"uri", makeAttribute("uri")}});
    LogCapture capture;

    const bool result = sut.deleteXObject(PERSON_1);

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(),
              Lines({"Debug: Deleting XObject - " + PERSON_1 + " (1)",
                     "Warning: Failed to remove attribute value from index (age - 1 / " + PERSON_1 + ")",
                     "Warning: Failed to remove attribute value from index (buddy - 1 / " + PERSON_1 + ")"}));
    EXPECT_FALSE(sut.store().exists(PERSON_1));
    EXPECT_FALSE(element("people").hasXObject(1));
}

TEST_F(JSONDataCacheMutationTest, LeavesReferencesToADeletedObjectUntilTheyAreRead)
{
    insert("people", PERSON_1);
    insert("cars", CAR_1);
    write(CAR_1, "driver", Var(Poco::URI("/fleet/people/" + PERSON_1)));

    sut.deleteXObject(PERSON_1);

    EXPECT_EQ(storedValue(CAR_1, "driver"), "\"" + PERSON_1 + "\"");
    EXPECT_EQ(find("cars", "driver", Var(PERSON_1)), IndexGroup{IndexEntry(2, 2)});
    sut.selectXObject(CAR_1, 0);
    EXPECT_EQ(storedValue(CAR_1, "driver"), "null");
    EXPECT_EQ(find("cars", "driver", Var(PERSON_1)), IndexGroup{});
}

TEST_F(JSONDataCacheMutationTest, DropsAServiceWithItsObjectsAndKeepsTheOthers)
{
    insert("cars", CAR_1);
    insert("people", PERSON_1);
    insert("spots", SPOT_1, "garage");
    LogCapture capture;

    const std::size_t result = sut.deleteAllServicesWithName("fleet");

    EXPECT_EQ(result, 1u);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_EQ(services.count("fleet"), 0u);
    EXPECT_FALSE(sut.store().exists(CAR_1));
    EXPECT_FALSE(sut.store().exists(PERSON_1));
    EXPECT_TRUE(sut.store().exists(SPOT_1));
}

TEST_F(JSONDataCacheMutationTest, CountsOneForAnUnknownServiceToo)
{
    LogCapture capture;

    const std::size_t result = sut.deleteAllServicesWithName("nosuch");

    EXPECT_EQ(result, 1u);
    EXPECT_EQ(capture.lines(),
              Lines{"Warning: Service nosuch was deleted from DB but could not be found in service cache."});
    EXPECT_EQ(services.size(), 2u);
}

TEST(JSONDataCacheExtractUuid, TakesTheUUIDOutOfAReferenceGivenAsURI)
{
    EXPECT_EQ(extractUuid(Var(Poco::URI("/fleet/people/" + PERSON_1))), PERSON_1);
}

TEST(JSONDataCacheExtractUuid, TakesTheUUIDOutOfAReferenceGivenAsText)
{
    EXPECT_EQ(extractUuid(Var("/fleet/people/" + PERSON_2)), PERSON_2);
}

TEST(JSONDataCacheExtractUuid, TakesTheUUIDOutOfTheUriOfAJSONObject)
{
    Poco::JSON::Object::Ptr reference(new Poco::JSON::Object(0));
    reference->set("uri", "/fleet/people/" + PERSON_1);

    EXPECT_EQ(extractUuid(Var(reference)), PERSON_1);
}

TEST(JSONDataCacheExtractUuid, KeepsTheSpellingOfTheUUID)
{
    EXPECT_EQ(extractUuid(Var("/fleet/people/" + UPPER_UUID)), UPPER_UUID);
}

TEST(JSONDataCacheExtractUuid, RaisesForAnEmptyValue)
{
    try
    {
        extractUuid(Var());
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Can not extract empty value.");
    }
}

TEST(JSONDataCacheExtractUuid, RaisesSyntaxExceptionForAnAddressThatDoesNotEndInAUUID)
{
    try
    {
        extractUuid(Var("/fleet/people/bob"));
        FAIL() << "no exception";
    }
    catch (const Poco::SyntaxException& e)
    {
        EXPECT_EQ(e.displayText(), "Syntax error: bob");
    }
}

TEST(JSONDataCacheExtractUuid, RefusesABareUUIDAsNoAddressOfAnObject)
{
    LogCapture capture;

    EXPECT_THROW(extractUuid(Var(PERSON_1)), Poco::RuntimeException);

    EXPECT_EQ(capture.lines(), Lines{"Error: Invalid URI value for object reference"});
}

TEST_F(JSONDataCacheMutationTest, WritesAConvertedValueToStoreAndIndex)
{
    insert("cars", CAR_1);
    AttributeValuePtr seats = copyOfValue(CAR_1, "seats");
    seats->setValue(Var("5"), false);
    LogCapture capture;

    const bool result = sut.updateCacheAttributeValueById(*seats, false);

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(), Lines{"Debug: Attribute update successful (seats,1 - XObj: " + CAR_1 + ")"});
    const Var& storedSeats = stored(CAR_1)->getValue("seats")->getValue();
    EXPECT_EQ(storedSeats.type(), typeid(Poco::Int64));
    EXPECT_EQ(storedSeats.extract<Poco::Int64>(), 5);
    EXPECT_EQ(seats->getValue().type(), typeid(Poco::Int64));
    EXPECT_EQ(find("cars", "seats", Var(Poco::Int64(5))), IndexGroup{IndexEntry(1, 8)});
}

TEST_F(JSONDataCacheMutationTest, MovesTheIndexEntryToTheNewValue)
{
    insert("cars", CAR_1);
    write(CAR_1, "brand", Var("Saab"));

    const bool result = write(CAR_1, "brand", Var("Volvo"));

    EXPECT_TRUE(result);
    EXPECT_EQ(storedValue(CAR_1, "brand"), "\"Volvo\"");
    EXPECT_EQ(find("cars", "brand", Var("Saab")), IndexGroup{});
    EXPECT_EQ(find("cars", "brand", Var("Volvo")), IndexGroup{IndexEntry(1, 1)});
}

TEST_F(JSONDataCacheMutationTest, RefusesAValueWithoutId)
{
    insert("cars", CAR_1);
    AttributeValue sutValue(1, makeAttribute("brand"), -1);
    sutValue.setValue(Var("Saab"), false);
    LogCapture capture;

    const bool result = sut.updateCacheAttributeValueById(sutValue, true);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: updateCacheAttributeValueById missing ID"});
    EXPECT_EQ(storedValue(CAR_1, "brand"), "null");
}

TEST_F(JSONDataCacheMutationTest, RefusesAnInvalidValueAndKeepsTheStoredOne)
{
    insert("cars", CAR_1);
    write(CAR_1, "seats", Var(4));
    LogCapture capture;

    const bool result = write(CAR_1, "seats", Var("many"));

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines({INVALID_INTEGER_LINES[0], INVALID_INTEGER_LINES[1],
                                      "Warning: attribute value 8 has invalid value."}));
    EXPECT_EQ(storedValue(CAR_1, "seats"), "4");
}

TEST_F(JSONDataCacheMutationTest, RefusesARemovalWithoutPermissionAndLogsTwice)
{
    insert("cars", CAR_1);
    write(CAR_1, "seats", Var(4));
    LogCapture capture;

    const bool result = write(CAR_1, "seats", Var(), false);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(),
              Lines({"Error: Removal of attribute value (seats,1) - XObj: " + CAR_1 + ") is not allowed",
                     "Warning: Attribute update failed (seats,1 - XObj: " + CAR_1 + ")"}));
    EXPECT_EQ(storedValue(CAR_1, "seats"), "4");
    EXPECT_EQ(find("cars", "seats", Var(Poco::Int64(4))), IndexGroup{IndexEntry(1, 8)});
}

TEST_F(JSONDataCacheMutationTest, RemovesAValueWithPermissionAndKeepsItsRow)
{
    insert("cars", CAR_1);
    write(CAR_1, "seats", Var(4));
    LogCapture capture;

    const bool result = write(CAR_1, "seats", Var(), true);

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(), Lines{"Debug: Attribute update successful (seats,1 - XObj: " + CAR_1 + ")"});
    const AttributeValuePtr row = stored(CAR_1)->getValue("seats");
    ASSERT_FALSE(row.isNull());
    EXPECT_FALSE(row->hasValue());
    EXPECT_EQ(row->getDBID(), 8);
    EXPECT_EQ(stored(CAR_1)->getAttributeValues().size(), 10u);
    EXPECT_EQ(find("cars", "seats", Var(Poco::Int64(4))), IndexGroup{});
}

TEST_F(JSONDataCacheMutationTest, StoresAReferenceGivenAsURIAsItsBareUUIDAndIndexesTheSame)
{
    insert("people", PERSON_1);
    insert("cars", CAR_1);
    AttributeValuePtr driver = copyOfValue(CAR_1, "driver");
    driver->setValue(Var(Poco::URI("/fleet/people/" + PERSON_1)), false);
    LogCapture capture;

    const bool result = sut.updateCacheAttributeValueById(*driver, true);

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(), Lines{"Debug: Attribute update successful (driver,4 - XObj: " + CAR_1 + ")"});
    EXPECT_EQ(storedValue(CAR_1, "driver"), "\"" + PERSON_1 + "\"");
    EXPECT_EQ(find("cars", "driver", Var(PERSON_1)), IndexGroup{IndexEntry(2, 2)});
}

TEST_F(JSONDataCacheMutationTest, WritesTheStoreBeforeTheIndexAndReportsARefusingIndex)
{
    insert("cars", CAR_1);
    // A cell of the same name and id but of another type, which the index of "seats" refuses.
    AttributeValue sutValue(1, makeAttribute("seats", AttrType_String), 8);
    sutValue.setValue(Var("four"), false);
    LogCapture capture;

    const bool result = sut.updateCacheAttributeValueById(sutValue, true);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(),
              Lines({"Error: Failed to update index for attribute seats with value for attribute seats",
                     "Warning: Attribute update failed (seats,0 - XObj: " + CAR_1 + ")"}));
    EXPECT_EQ(storedValue(CAR_1, "seats"), "\"four\"");
}

TEST_F(JSONDataCacheMutationTest, PassesAnArrayValueOnToTheArrayUpdate)
{
    insert("cars", CAR_1);
    LogCapture capture;

    const bool result = write(CAR_1, "tags", Var(makeArray({Var("red"), Var("fast")})));

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(),
              Lines{"Debug: Array attribute update successful (tags,0 (2) - XObj: " + CAR_1 + ")"});
    EXPECT_EQ(storedValue(CAR_1, "tags"), "[\"red\",\"fast\"]");
}

TEST_F(JSONDataCacheMutationTest, WritesAConvertedArrayThatSharesTheCallersVector)
{
    insert("cars", CAR_1);
    AttributeValuePtr loads = copyOfValue(CAR_1, "loads");
    const ValueArrayPtr elements = makeArray({Var("100"), Var(250)});
    loads->setValue(Var(elements), false);
    LogCapture capture;

    const bool result = sut.updateCacheArrayAttributeValueById(*loads, false);

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(),
              Lines{"Debug: Array attribute update successful (loads,1 (2) - XObj: " + CAR_1 + ")"});
    const Var& storedLoads = stored(CAR_1)->getValue("loads")->getValue();
    EXPECT_EQ(storedLoads.extract<ValueArrayPtr>().get(), elements.get());
    EXPECT_EQ(describe(storedLoads), "[100,250]");
    EXPECT_EQ(elements->at(0).type(), typeid(Poco::Int64));
    EXPECT_EQ(find("cars", "loads", Var(Poco::Int64(100))), IndexGroup{IndexEntry(1, 4)});
}

TEST_F(JSONDataCacheMutationTest, DropsNullElementsFromTheCallersVector)
{
    insert("cars", CAR_1);
    AttributeValuePtr tags = copyOfValue(CAR_1, "tags");
    const ValueArrayPtr elements = makeArray({Var("red"), Var(), Var("fast")});
    tags->setValue(Var(elements), false);
    LogCapture capture;

    const bool result = sut.updateCacheArrayAttributeValueById(*tags, true);

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(),
              Lines({"Warning: Array must not contain null values!",
                     "Debug: Array attribute update successful (tags,0 (2) - XObj: " + CAR_1 + ")"}));
    EXPECT_EQ(describe(Var(elements)), "[\"red\",\"fast\"]");
    EXPECT_EQ(storedValue(CAR_1, "tags"), "[\"red\",\"fast\"]");
}

TEST_F(JSONDataCacheMutationTest, TakesAnArrayOfNullsForARemoval)
{
    insert("cars", CAR_1);
    write(CAR_1, "tags", Var(makeArray({Var("red")})));
    LogCapture capture;

    const bool result = write(CAR_1, "tags", Var(makeArray({Var(), Var()})));

    EXPECT_TRUE(result);
    EXPECT_EQ(
        capture.lines(),
        Lines({"Warning: Array must not contain null values!", "Warning: Array must not contain null values!",
               "Debug: Array attribute update successful (tags,0 (0) - XObj: " + CAR_1 + ")"}));
    EXPECT_EQ(storedValue(CAR_1, "tags"), "null");
    EXPECT_EQ(find("cars", "tags", Var("red")), IndexGroup{});
}

TEST_F(JSONDataCacheMutationTest, TakesAnArrayOfLengthZeroForARemovalAndRefusesItWithoutPermission)
{
    insert("cars", CAR_1);
    write(CAR_1, "tags", Var(makeArray({Var("red")})));
    LogCapture capture;

    const bool result = write(CAR_1, "tags", Var(makeArray({})), false);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(),
              Lines({"Error: Removal of attribute value (tags,0) - XObj: " + CAR_1 + ") is not allowed",
                     "Warning: Array attribute update failed (tags,0 (0) - XObj: " + CAR_1 + ")"}));
    EXPECT_EQ(storedValue(CAR_1, "tags"), "[\"red\"]");
}

TEST_F(JSONDataCacheMutationTest, TakesANullArrayValueForARemoval)
{
    insert("cars", CAR_1);
    write(CAR_1, "tags", Var(makeArray({Var("red")})));

    const bool result = write(CAR_1, "tags", Var());

    EXPECT_TRUE(result);
    EXPECT_EQ(storedValue(CAR_1, "tags"), "null");
    EXPECT_EQ(stored(CAR_1)->getAttributeValues().size(), 10u);
}

TEST_F(JSONDataCacheMutationTest, ChangesNothingForAnArrayWithOneInvalidElement)
{
    insert("cars", CAR_1);
    write(CAR_1, "loads", Var(makeArray({Var(7)})));
    AttributeValuePtr loads = copyOfValue(CAR_1, "loads");
    const ValueArrayPtr elements = makeArray({Var("1"), Var("heavy"), Var("3")});
    loads->setValue(Var(elements), false);
    LogCapture capture;

    const bool result = sut.updateCacheArrayAttributeValueById(*loads, true);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines({INVALID_INTEGER_LINES[0], INVALID_INTEGER_LINES[1],
                                      "Warning: attribute value 4 has invalid value."}));
    EXPECT_EQ(describe(Var(elements)), "[\"1\",\"heavy\",\"3\"]");
    EXPECT_EQ(storedValue(CAR_1, "loads"), "[7]");
}

TEST_F(JSONDataCacheMutationTest, StoresAnArrayOfReferencesAsBareUUIDs)
{
    insert("people", PERSON_1);
    insert("people", PERSON_2);
    insert("cars", CAR_1);
    AttributeValuePtr passengers = copyOfValue(CAR_1, "passengers");
    const ValueArrayPtr elements =
        makeArray({Var(Poco::URI("/fleet/people/" + PERSON_1)), Var("/fleet/people/" + PERSON_2)});
    passengers->setValue(Var(elements), false);
    LogCapture capture;

    const bool result = sut.updateCacheArrayAttributeValueById(*passengers, true);

    EXPECT_TRUE(result);
    EXPECT_EQ(capture.lines(),
              Lines{"Debug: Array attribute update successful (passengers,4 (2) - XObj: " + CAR_1 + ")"});
    EXPECT_EQ(storedValue(CAR_1, "passengers"), "[\"" + PERSON_1 + "\",\"" + PERSON_2 + "\"]");
    EXPECT_EQ(elements->at(0).type(), typeid(Poco::URI));
    EXPECT_EQ(find("cars", "passengers", Var(PERSON_2)), IndexGroup{IndexEntry(3, 7)});
}

TEST_F(JSONDataCacheMutationTest, RaisesABugcheckForAnArrayUpdateOfASingleValue)
{
    insert("cars", CAR_1);
    AttributeValuePtr seats = copyOfValue(CAR_1, "seats");

    try
    {
        sut.updateCacheArrayAttributeValueById(*seats, true);
        FAIL() << "no bugcheck";
    }
    catch (const Poco::BugcheckException& e)
    {
        EXPECT_THAT(e.message(),
                    StartsWith("JSONDataCache::updateCacheArrayAttributeValueById: tried to update "
                               "non-array attribute in file \""));
    }
}

TEST_F(JSONDataCacheMutationTest, RefusesAnArrayValueWithoutId)
{
    insert("cars", CAR_1);
    AttributeValue sutValue(1, makeAttribute("tags", AttrType_String, true), -1);
    sutValue.setValue(Var(makeArray({Var("red")})), false);
    LogCapture capture;

    const bool result = sut.updateCacheArrayAttributeValueById(sutValue, true);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: updateCacheArrayAttributeValueById missing ID"});
}

TEST_F(JSONDataCacheMutationTest, RefusesAnArrayValueThatHoldsNoArray)
{
    insert("cars", CAR_1);
    AttributeValuePtr tags = copyOfValue(CAR_1, "tags");
    tags->setValue(Var(Poco::Int64(3)), false);
    LogCapture capture;

    const bool result = sut.updateCacheArrayAttributeValueById(*tags, true);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(),
              Lines{"Error: Failed to retrieve array: Bad cast exception: Can not convert l to "
                    "N4Poco9SharedPtrISt6vectorINS_7Dynamic3VarESaIS3_EENS_16ReferenceCounterENS_"
                    "13ReleasePolicyIS5_EEEE."});
    EXPECT_EQ(storedValue(CAR_1, "tags"), "null");
}

TEST_F(JSONDataCacheMutationTest, SuspectsOnlyTheElementsWhoseReferencesMayNameTheObjectThatIsGone)
{
    Poco::SharedPtr<Orvi::DBData::ConstraintOneOf> people(new Orvi::DBData::ConstraintOneOf);
    people->setClasses({"fleet.people.person"});
    constrain("driver", people);
    constrain("passengers", people);
    insert("spots", SPOT_1, "garage");

    sut.deleteXObject(SPOT_1);

    EXPECT_FALSE(sut.isDanglingSuspect(element("cars").getDBID()));
    EXPECT_TRUE(sut.isDanglingSuspect(element("people").getDBID()));
    EXPECT_FALSE(sut.isDanglingSuspect(element("spots", "garage").getDBID()));
}

TEST_F(JSONDataCacheMutationTest, SuspectsAnElementWhoseReferencesMayNameTheResourceOfTheObjectThatIsGone)
{
    Poco::SharedPtr<Orvi::DBData::ConstraintOneOf> people(new Orvi::DBData::ConstraintOneOf);
    people->setClasses({"FLEET.People.person"});
    constrain("driver", people);
    insert("people", PERSON_1);

    sut.deleteXObject(PERSON_1);

    EXPECT_TRUE(sut.isDanglingSuspect(element("cars").getDBID()));
    EXPECT_TRUE(sut.isDanglingSuspect(element("people").getDBID()));
}

} // namespace
