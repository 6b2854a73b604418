#include "Mapping/JSONAccessor.h"

#include "DbObjectIdMapper.h"
#include "FleetServiceMap.h"
#include "RecordingDataHandler.h"
#include "RecordingSubscriptionTrigger.h"
#include "StoredObjectCache.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"
#include "XObjectRefHolder.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/Message.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

namespace
{

using Orvi::DBData::DbId;
using Orvi::DBData::Element;
using Orvi::DBData::XObject;
using Orvi::Mapping::DbObjectIdMapper;
using Orvi::Mapping::JSONAccessor;
using Orvi::Mapping::OperationResult;
using Orvi::Mapping::ServiceArrayIndexType_t;
using Orvi::Mapping::XObjectRefBase;
using Orvi::Mapping::XObjectRefHolder;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::parseObject;
using ServiceDB::Test::RecordingDataHandler;
using ServiceDB::Test::RecordingSubscriptionTrigger;
using ServiceDB::Test::StoredObjectCache;
using ServiceDB::Test::toJson;
using ServiceDB::Test::Fleet::describe;
using Lines = std::vector<std::string>;

// Object ids as a data handler names its objects.
const Poco::Int32 CAR_OBJ = 0x101;
const Poco::Int32 VAN_OBJ = 0x102;
const Poco::Int32 ADA_OBJ = 0x201;
const Poco::Int32 BEN_OBJ = 0x202;

const std::string UNKNOWN_UUID = "99999999-9999-4999-8999-999999999999";

// The fleet behind a mapped cache, a listener that records whom it is told to notify, a real id mapper
// and a real reference holder.
class JSONAccessorTest : public ::testing::Test
{
protected:
    // Creates or updates the object of the handler's id in the resource with the JSON text.
    OperationResult::Enum update(const std::string& resource, Poco::Int32 objId, const std::string& json,
                                 std::string& out_uuid, ServiceArrayIndexType_t index = 0)
    {
        input = parseObject(json);
        return sut.updateCacheMappedXObjectWithJSON("fleet", resource, objId, index, input, &references,
                                                    &mapper, out_uuid);
    }

    // Creates the object and expects that to succeed; gives its UUID.
    std::string create(const std::string& resource, Poco::Int32 objId, const std::string& json)
    {
        std::string uuid;
        EXPECT_EQ(update(resource, objId, json, uuid), OperationResult::ObjectCreated) << json;
        return uuid;
    }

    DbId idOf(Poco::Int32 objId, ServiceArrayIndexType_t index = 0) const
    {
        DbId id = -1;
        mapper.getXObjIdItemByObjId(objId, index, id);
        return id;
    }

    // The stored object as name=value pairs, references as bare UUIDs; "none" when it is gone.
    std::string stored(const std::string& uuid) const
    {
        const XObject::Ptr object = cache.stored(uuid);
        return object.isNull() ? "none" : describe(*object);
    }

    // One stored value; "none" when the object is gone.
    std::string storedValue(const std::string& uuid, const std::string& attribute) const
    {
        const XObject::Ptr object = cache.stored(uuid);
        return object.isNull() ? "none" : describe(object->getValue(attribute)->getValue());
    }

    // A private copy of the stored object, as the accessor's callers hold one.
    XObject::Ptr copyOf(const std::string& uuid) { return cache.selectXObject(uuid, 0); }

    // A car in the store that no handler knows of, with the brand "saab".
    std::string insertUnmappedCar()
    {
        std::string uuid;
        DbId id = -1;
        EXPECT_TRUE(cache.insertXObject("fleet", "cars", uuid, id));
        XObject::Ptr copy = copyOf(uuid);
        EXPECT_EQ(cache.processJSONValues(Orvi::DataLayer::JSONProcessingContext::InputContext_IPC, "fleet",
                                          "cars", *copy, parseObject(R"({"brand":"saab"})").get()),
                  OperationResult::ObjectUpdated);
        return uuid;
    }

    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    StoredObjectCache cache{services, &handler};
    RecordingSubscriptionTrigger listener;
    DbObjectIdMapper mapper;
    XObjectRefHolder references;
    JSONAccessor sut{&cache, &listener};
    Poco::JSON::Object::Ptr input;
};

// ---- construction and availability ----

TEST(JSONAccessorConstructionTest, WithoutListenerLogsFatalAndIsBuiltAnyway)
{
    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    StoredObjectCache cache(services, &handler);
    LogCapture capture;

    JSONAccessor sut(&cache, nullptr);

    EXPECT_EQ(capture.lines(), Lines{"Fatal: missing app service CarDataChangeListener"});
    EXPECT_FALSE(sut.isJSONDataCacheAvailable());
}

TEST(JSONAccessorConstructionTest, WithListenerLogsNothing)
{
    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    StoredObjectCache cache(services, &handler);
    RecordingSubscriptionTrigger listener;
    LogCapture capture;

    JSONAccessor sut(&cache, &listener);

    EXPECT_EQ(capture.lines(), Lines{});
}

TEST(JSONAccessorConstructionTest, IsJSONDataCacheAvailableAnswersTrueWhenThereIsNoCache)
{
    RecordingSubscriptionTrigger listener;
    const JSONAccessor sut(nullptr, &listener);

    EXPECT_TRUE(sut.isJSONDataCacheAvailable());
}

TEST_F(JSONAccessorTest, IsJSONDataCacheAvailableAnswersFalseWhenThereIsACache)
{
    EXPECT_FALSE(sut.isJSONDataCacheAvailable());
}

// ---- creating and updating mapped objects ----

TEST_F(JSONAccessorTest, FirstUpdateOfAnObjectIdCreatesTheObjectMapsItAndTellsTheCollection)
{
    std::string uuid;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"brand":"saab","seats":4})", uuid);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    const XObject::Ptr object = cache.stored(uuid);
    ASSERT_FALSE(object.isNull());
    EXPECT_EQ(idOf(CAR_OBJ), object->getDBID());
    EXPECT_EQ(storedValue(uuid, "brand"), "\"saab\"");
    EXPECT_EQ(storedValue(uuid, "seats"), "4");
    EXPECT_EQ(listener.lines(), Lines{"changedResourceCollection POST fleet.cars -"});
}

TEST_F(JSONAccessorTest, SecondUpdateWithTheSameValuesAnswersUnchangedAndTellsNobody)
{
    const std::string created = create("cars", CAR_OBJ, R"({"brand":"saab","seats":4})");
    const std::string before = stored(created);
    std::string uuid;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"brand":"saab","seats":4})", uuid);

    EXPECT_EQ(result, OperationResult::ObjectUnchanged);
    EXPECT_EQ(uuid, created);
    EXPECT_EQ(stored(created), before);
    EXPECT_EQ(listener.lines(), Lines{"changedResourceCollection POST fleet.cars -"});
}

TEST_F(JSONAccessorTest, UpdateWithNewValuesAnswersUpdatedAndTellsTheObjectsSubscribers)
{
    const std::string created = create("cars", CAR_OBJ, R"({"brand":"saab","seats":4})");
    std::string uuid;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"seats":5})", uuid);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(uuid, created);
    EXPECT_EQ(storedValue(created, "seats"), "5");
    EXPECT_EQ(storedValue(created, "brand"), "\"saab\"");
    EXPECT_EQ(listener.lines(), (Lines{"changedResourceCollection POST fleet.cars -",
                                       "changedElement POST fleet.cars " + created + " {\"seats\":5}"}));
}

TEST_F(JSONAccessorTest, UpdateThatFailsOnAKnownObjectAnswersErrorAndKeepsTheObject)
{
    const std::string created = create("cars", CAR_OBJ, R"({"brand":"saab"})");
    std::string uuid;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"wheels":4})", uuid);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(storedValue(created, "brand"), "\"saab\"");
    EXPECT_EQ(idOf(CAR_OBJ), cache.stored(created)->getDBID());
    EXPECT_EQ(listener.lines(), Lines{"changedResourceCollection POST fleet.cars -"});
}

TEST_F(JSONAccessorTest, ArrayIndexNamesAnotherObjectOfTheSameObjectId)
{
    const std::string first = create("cars", CAR_OBJ, R"({"brand":"saab"})");
    std::string second;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"brand":"volvo"})", second, 1);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_NE(second, first);
    EXPECT_EQ(idOf(CAR_OBJ, 1), cache.stored(second)->getDBID());
    EXPECT_EQ(storedValue(first, "brand"), "\"saab\"");
    EXPECT_EQ(storedValue(second, "brand"), "\"volvo\"");
}

TEST_F(JSONAccessorTest, FormWithoutIndexUsesIndexZero)
{
    const std::string created = create("cars", CAR_OBJ, R"({"brand":"saab"})");
    std::string uuid;

    const OperationResult::Enum result = sut.updateCacheMappedXObjectWithJSON(
        "fleet", "cars", CAR_OBJ, parseObject(R"({"brand":"volvo"})"), &references, &mapper, uuid);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(uuid, created);
    EXPECT_EQ(storedValue(created, "brand"), "\"volvo\"");
}

TEST_F(JSONAccessorTest, EmptyNewObjectIsCreatedFoundUnchangedAndDeletedAgain)
{
    LogCapture capture(Poco::Message::PRIO_ERROR);
    std::string uuid;

    const OperationResult::Enum result = update("cars", CAR_OBJ, "{}", uuid);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_FALSE(uuid.empty());
    EXPECT_EQ(stored(uuid), "none");
    EXPECT_EQ(idOf(CAR_OBJ), -1);
    EXPECT_EQ(mapper.size(), 0U);
    EXPECT_EQ(listener.lines(), Lines{});
    EXPECT_EQ(capture.lines(),
              Lines{"Error: XObject " + uuid + " was created but has no changes in attributes!"});
}

TEST_F(JSONAccessorTest, NewObjectWhoseValuesFailIsDeletedAgainWithTraceLine)
{
    LogCapture capture;
    std::string uuid;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"wheels":4})", uuid);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(stored(uuid), "none");
    EXPECT_EQ(mapper.size(), 0U);
    EXPECT_EQ(listener.lines(), Lines{});
    EXPECT_EQ(capture.linesStartingWith("Trace: Created object deleted."),
              Lines{"Trace: Created object deleted."});
}

TEST_F(JSONAccessorTest, FailedInsertLogsAndAnswersErrorWithoutMapping)
{
    LogCapture capture(Poco::Message::PRIO_ERROR);
    std::string uuid;

    const OperationResult::Enum result = update("noelement", CAR_OBJ, R"({"brand":"saab"})", uuid);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(uuid, "");
    EXPECT_EQ(mapper.size(), 0U);
    EXPECT_EQ(listener.lines(), Lines{});
    ASSERT_FALSE(capture.lines().empty());
    EXPECT_EQ(capture.lines().back(), "Error: Failed to insert XObject: -1");
}

TEST_F(JSONAccessorTest, MappingToAnObjectThatIsGoneLogsFailedSelectAndAnswersError)
{
    mapper.addXObjId(CAR_OBJ, 999, 0);
    LogCapture capture(Poco::Message::PRIO_ERROR);
    std::string uuid;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"brand":"saab"})", uuid);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(uuid, "");
    EXPECT_EQ(listener.lines(), Lines{});
    ASSERT_FALSE(capture.lines().empty());
    EXPECT_EQ(capture.lines().back(), "Error: Failed to select XObject: 999");
}

// ---- references between mapped objects ----

TEST_F(JSONAccessorTest, ReferenceToAnObjectNotYetArrivedStaysOpenWithDebugLine)
{
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    LogCapture capture(Poco::Message::PRIO_DEBUG);
    std::string uuid;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"brand":"volvo"})", uuid);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(storedValue(uuid, "driver"), "null");
    EXPECT_EQ(toJson(input), R"({"brand":"volvo"})");
    EXPECT_EQ(capture.linesStartingWith("Debug: No xObjId"), Lines{"Debug: No xObjId found for objId: 513"});
}

TEST_F(JSONAccessorTest, ArrivingTargetCompletesTheWaitingReferenceAndTellsTheReferringSubscribers)
{
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    std::string ada;

    const OperationResult::Enum result = update("people", ADA_OBJ, R"({"name":"Ada"})", ada);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(storedValue(car, "driver"), "\"" + ada + "\"");
    EXPECT_EQ(listener.lines(), (Lines{"changedResourceCollection POST fleet.cars -",
                                       "changedResourceCollection POST fleet.people -",
                                       "changedElement POST fleet.cars " + car +
                                           " {\"driver\":" + std::to_string(idOf(ADA_OBJ)) + "}"}));
}

TEST_F(JSONAccessorTest, NewObjectTakesItsReferencesToKnownObjectsWithItsValues)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    std::string car;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"brand":"volvo"})", car);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(storedValue(car, "driver"), "\"" + ada + "\"");
    EXPECT_EQ(toJson(input), R"({"brand":"volvo","driver":)" + std::to_string(idOf(ADA_OBJ)) + "}");
    EXPECT_EQ(listener.lines(), (Lines{"changedResourceCollection POST fleet.people -",
                                       "changedResourceCollection POST fleet.cars -"}));
}

TEST_F(JSONAccessorTest, NewObjectWithOnlyReferencesIsCreatedBecauseTheReferencesAreItsValues)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    std::string car;

    const OperationResult::Enum result = update("cars", CAR_OBJ, "{}", car);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(storedValue(car, "driver"), "\"" + ada + "\"");
}

TEST_F(JSONAccessorTest, TwoReferencesFromOneAttributeOfANewObjectMakeAnArray)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    const std::string ben = create("people", BEN_OBJ, R"({"name":"Ben"})");
    references.addReference("fleet", "cars", "passengers", CAR_OBJ, ADA_OBJ);
    references.addReference("fleet", "cars", "passengers", CAR_OBJ, BEN_OBJ);
    std::string car;

    const OperationResult::Enum result = update("cars", CAR_OBJ, R"({"brand":"volvo"})", car);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(toJson(input), R"({"brand":"volvo","passengers":[)" + std::to_string(idOf(ADA_OBJ)) + "," +
                                 std::to_string(idOf(BEN_OBJ)) + "]}");
    EXPECT_EQ(storedValue(car, "passengers"), "[\"" + ada + "\",\"" + ben + "\"]");
}

TEST_F(JSONAccessorTest, TargetsArrivingOneByOneAppendToTheWaitingArray)
{
    references.addReference("fleet", "cars", "passengers", CAR_OBJ, ADA_OBJ);
    references.addReference("fleet", "cars", "passengers", CAR_OBJ, BEN_OBJ);
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");

    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    const std::string ben = create("people", BEN_OBJ, R"({"name":"Ben"})");

    EXPECT_EQ(storedValue(car, "passengers"), "[\"" + ada + "\",\"" + ben + "\"]");
    EXPECT_EQ(listener.lines(), (Lines{"changedResourceCollection POST fleet.cars -",
                                       "changedResourceCollection POST fleet.people -",
                                       "changedElement POST fleet.cars " + car +
                                           " {\"passengers\":" + std::to_string(idOf(ADA_OBJ)) + "}",
                                       "changedResourceCollection POST fleet.people -",
                                       "changedElement POST fleet.cars " + car +
                                           " {\"passengers\":" + std::to_string(idOf(BEN_OBJ)) + "}"}));
}

TEST_F(JSONAccessorTest, UpdateOfAKnownObjectNeverResolvesReferences)
{
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    std::string uuid;

    const OperationResult::Enum carResult = update("cars", CAR_OBJ, R"({"brand":"saab"})", uuid);
    const Poco::JSON::Object::Ptr carInput = input;
    const OperationResult::Enum adaResult = update("people", ADA_OBJ, R"({"name":"Ann"})", uuid);

    EXPECT_EQ(carResult, OperationResult::ObjectUpdated);
    EXPECT_EQ(adaResult, OperationResult::ObjectUpdated);
    EXPECT_EQ(toJson(carInput), R"({"brand":"saab"})");
    EXPECT_EQ(storedValue(car, "driver"), "null");
    EXPECT_EQ(listener.lines(), (Lines{"changedResourceCollection POST fleet.cars -",
                                       "changedResourceCollection POST fleet.people -",
                                       "changedElement POST fleet.cars " + car + " {\"brand\":\"saab\"}",
                                       "changedElement POST fleet.people " + ada + " {\"name\":\"Ann\"}"}));
}

TEST_F(JSONAccessorTest, ResolveReferencesOfAnUnmappedObjectAnswersFalse)
{
    XObject::Ptr car = copyOf(insertUnmappedCar());
    const Poco::JSON::Object::Ptr obj(new Poco::JSON::Object);

    EXPECT_FALSE(sut.resolveReferences(*car, obj, &references, &mapper, false));
    EXPECT_FALSE(sut.resolveReferences(*car, obj, &references, &mapper, true));
    EXPECT_EQ(toJson(obj), "{}");
}

TEST_F(JSONAccessorTest, ResolveReferencesWithoutEntriesAnswersTrue)
{
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    const Poco::JSON::Object::Ptr obj(new Poco::JSON::Object);

    EXPECT_TRUE(sut.resolveReferences(*copyOf(car), obj, &references, &mapper, false));
    EXPECT_TRUE(sut.resolveReferences(*copyOf(car), obj, &references, &mapper, true));
}

TEST_F(JSONAccessorTest, ResolveReferencesReflectsTheEntryHandledLast)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    // Listed under the car in this order: the missing van first, then Ada, who exists.
    references.addReference("fleet", "cars", "passengers", CAR_OBJ, VAN_OBJ);
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    const Poco::JSON::Object::Ptr obj(new Poco::JSON::Object);

    const bool result = sut.resolveReferences(*copyOf(car), obj, &references, &mapper, false);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(obj), "{\"driver\":" + std::to_string(idOf(ADA_OBJ)) + "}");
}

TEST_F(JSONAccessorTest, ResolveReferencesAnswersFalseWhenTheEntryHandledLastStaysOpen)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    references.addReference("fleet", "cars", "passengers", CAR_OBJ, VAN_OBJ);
    const Poco::JSON::Object::Ptr obj(new Poco::JSON::Object);

    const bool result = sut.resolveReferences(*copyOf(car), obj, &references, &mapper, false);

    EXPECT_FALSE(result);
    EXPECT_EQ(toJson(obj), "{\"driver\":" + std::to_string(idOf(ADA_OBJ)) + "}");
}

TEST_F(JSONAccessorTest, ResolveReferencesForTheParentPassesOverAReferringObjectThatIsNotMapped)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    LogCapture capture(Poco::Message::PRIO_DEBUG);

    const bool result = sut.resolveReferences(*copyOf(ada), Poco::JSON::Object::Ptr(new Poco::JSON::Object),
                                              &references, &mapper, true);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.linesStartingWith("Debug: No xObjId"), Lines{"Debug: No xObjId found for objId: 257"});
    EXPECT_EQ(listener.lines(), Lines{"changedResourceCollection POST fleet.people -"});
}

TEST_F(JSONAccessorTest, ResolveReferencesForTheParentLogsAReferringObjectThatIsGoneFromTheStore)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    mapper.addXObjId(CAR_OBJ, 999, 0);
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.resolveReferences(*copyOf(ada), Poco::JSON::Object::Ptr(new Poco::JSON::Object),
                                              &references, &mapper, true);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: No attribute values found."});
}

TEST_F(JSONAccessorTest, ResolveReferencesForTheParentLogsAReferringAttributeThatTakesNoValue)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    references.addReference("fleet", "cars", "owner", CAR_OBJ, ADA_OBJ);
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.resolveReferences(*copyOf(ada), Poco::JSON::Object::Ptr(new Poco::JSON::Object),
                                              &references, &mapper, true);

    EXPECT_FALSE(result);
    ASSERT_FALSE(capture.lines().empty());
    EXPECT_EQ(capture.lines().back(), "Error: processing attribute values with point to xObjId: " +
                                          std::to_string(idOf(ADA_OBJ)) + " objId: 257 failed.");
    EXPECT_EQ(listener.lines(), (Lines{"changedResourceCollection POST fleet.people -",
                                       "changedResourceCollection POST fleet.cars -"}));
}

// ---- setReference ----

class JSONAccessorSetReferenceTest : public JSONAccessorTest
{
protected:
    JSONAccessorSetReferenceTest()
    {
        references.addReference("fleet", "cars", "passengers", CAR_OBJ, ADA_OBJ);
        references.addReference("fleet", "cars", "passengers", CAR_OBJ, BEN_OBJ);
        entries = references.getDependencyInfos(CAR_OBJ);
    }

    XObjectRefBase::DependencyList entries;
    Poco::JSON::Object::Ptr json{new Poco::JSON::Object};
};

TEST_F(JSONAccessorSetReferenceTest, FirstReferenceOfAnAttributeIsTheTargetsId)
{
    const bool result = sut.setReference(json, CAR_OBJ, 11, &references, entries.cbegin());

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(json), R"({"passengers":11})");
}

TEST_F(JSONAccessorSetReferenceTest, SecondReferenceOfAnAttributeMakesAnArrayOfBoth)
{
    sut.setReference(json, CAR_OBJ, 11, &references, entries.cbegin());

    const bool result = sut.setReference(json, CAR_OBJ, 12, &references, std::next(entries.cbegin()));

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(json), R"({"passengers":[11,12]})");
}

TEST_F(JSONAccessorSetReferenceTest, FurtherReferencesAppendToTheArray)
{
    json = parseObject(R"({"passengers":[11,12]})");

    const bool result = sut.setReference(json, CAR_OBJ, 13, &references, entries.cbegin());

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(json), R"({"passengers":[11,12,13]})");
}

TEST_F(JSONAccessorSetReferenceTest, NullMemberIsLoggedAndReplacedByAnArrayOfTheTarget)
{
    json = parseObject(R"({"passengers":null})");
    LogCapture capture;

    const bool result = sut.setReference(json, CAR_OBJ, 11, &references, entries.cbegin());

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(json), R"({"passengers":[11]})");
    EXPECT_EQ(capture.lines(), Lines{"Error: Empty value used to set references!"});
}

TEST_F(JSONAccessorSetReferenceTest, OtherMembersStayAsTheyAre)
{
    json = parseObject(R"({"brand":"volvo"})");

    sut.setReference(json, CAR_OBJ, 11, &references, entries.cbegin());

    EXPECT_EQ(toJson(json), R"({"brand":"volvo","passengers":11})");
}

// ---- findJSONOperationResult ----

struct ResultCase
{
    OperationResult::Enum selectInsert;
    OperationResult::Enum processValues;
    OperationResult::Enum expected;
    bool deletes;
    std::string errorLine;
    // With "<uuid>" for the object's UUID; empty for none.
};

std::ostream& operator<<(std::ostream& out, const ResultCase& c)
{
    return out << OperationResult::toString(c.selectInsert) << "+"
               << OperationResult::toString(c.processValues);
}

class JSONAccessorFindResultTest : public JSONAccessorTest, public ::testing::WithParamInterface<ResultCase>
{
};

TEST_P(JSONAccessorFindResultTest, AnswersThePairsMeaningAndRemovesOnlyAnObjectThatTookNothing)
{
    const ResultCase& c = GetParam();
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    const XObject::Ptr object = copyOf(uuid);
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const OperationResult::Enum result =
        sut.findJSONOperationResult(&mapper, c.selectInsert, "fleet", "cars", *object, c.processValues);

    EXPECT_EQ(result, c.expected);
    EXPECT_EQ(stored(uuid) == "none", c.deletes);
    EXPECT_EQ(idOf(CAR_OBJ) == -1, c.deletes);
    std::string errorLine = c.errorLine;
    const std::string::size_type at = errorLine.find("<uuid>");
    if (at != std::string::npos)
    {
        errorLine.replace(at, 6, uuid);
    }
    EXPECT_EQ(capture.lines(), errorLine.empty() ? Lines{} : Lines{errorLine});
}

const auto ERR = OperationResult::ErrorOnUpdate;
const auto SERVICE_ERR = OperationResult::ServiceErrorOnUpdate;
const auto UPDATED = OperationResult::ObjectUpdated;
const auto CREATED = OperationResult::ObjectCreated;
const auto UNCHANGED = OperationResult::ObjectUnchanged;
const auto PROCESSED = OperationResult::ObjectProcessed;
const std::string UNEXPECTED = "Error: Unexpected return value of selectOrInsertXObject.";
const std::string NO_CHANGES = "Error: XObject <uuid> was created but has no changes in attributes!";

INSTANTIATE_TEST_SUITE_P(EveryPair, JSONAccessorFindResultTest,
                         ::testing::Values(ResultCase{UPDATED, UPDATED, UPDATED, false, ""},
                                           ResultCase{UPDATED, UNCHANGED, UNCHANGED, false, ""},
                                           ResultCase{UPDATED, ERR, ERR, false, ""},
                                           ResultCase{UPDATED, SERVICE_ERR, ERR, false, ""},
                                           ResultCase{UPDATED, CREATED, ERR, false, ""},
                                           ResultCase{UPDATED, PROCESSED, ERR, false, ""},
                                           ResultCase{CREATED, UPDATED, CREATED, false, ""},
                                           ResultCase{CREATED, UNCHANGED, ERR, true, NO_CHANGES},
                                           ResultCase{CREATED, ERR, ERR, true, ""},
                                           ResultCase{CREATED, SERVICE_ERR, ERR, false, ""},
                                           ResultCase{CREATED, CREATED, ERR, false, ""},
                                           ResultCase{CREATED, PROCESSED, ERR, false, ""},
                                           ResultCase{UNCHANGED, UPDATED, ERR, false, UNEXPECTED},
                                           ResultCase{ERR, UPDATED, ERR, false, UNEXPECTED},
                                           ResultCase{SERVICE_ERR, UNCHANGED, ERR, false, UNEXPECTED},
                                           ResultCase{PROCESSED, UPDATED, ERR, false, UNEXPECTED}));

TEST_F(JSONAccessorTest, FindResultOfACreatedObjectWithFailedValuesLogsTheDeletionAtTrace)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    LogCapture capture;

    sut.findJSONOperationResult(&mapper, CREATED, "fleet", "cars", *copyOf(uuid), ERR);

    EXPECT_EQ(capture.linesStartingWith("Trace: Created"), Lines{"Trace: Created object deleted."});
}

// ---- removal ----

TEST_F(JSONAccessorTest, DeleteAfterFailedOperationRemovesObjectAndMapping)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    LogCapture capture(Poco::Message::PRIO_ERROR);

    sut.deleteXObjectAfterOperationFailed(&mapper, "fleet", "cars", *copyOf(uuid));

    EXPECT_EQ(stored(uuid), "none");
    EXPECT_EQ(mapper.size(), 0U);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONAccessorTest, DeleteAfterFailedOperationThatCannotDeleteLogsAndStillRemovesTheMapping)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    const XObject::Ptr object = copyOf(uuid);
    ASSERT_TRUE(cache.deleteXObject(uuid));
    LogCapture capture(Poco::Message::PRIO_ERROR);

    sut.deleteXObjectAfterOperationFailed(&mapper, "fleet", "cars", *object);

    EXPECT_EQ(mapper.size(), 0U);
    EXPECT_EQ(capture.lines(), Lines{"Error: Failed to clean up newly created xobject " + uuid});
}

TEST_F(JSONAccessorTest, DeleteWithReferencesTellsTheObjectTheCollectionAndTheReferringObjects)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    references.addReference("fleet", "cars", "driver", VAN_OBJ, ADA_OBJ);
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    const std::string van = create("cars", VAN_OBJ, R"({"brand":"ford"})");
    const XObject::Ptr object = copyOf(ada);
    const std::size_t callsBefore = listener.lines().size();

    const bool result = sut.deleteXObjectWithReferences("fleet", "people", *object, &references, &mapper);

    EXPECT_TRUE(result);
    EXPECT_EQ(stored(ada), "none");
    const Lines calls(listener.lines().begin() + static_cast<std::ptrdiff_t>(callsBefore),
                      listener.lines().end());
    EXPECT_EQ(calls, (Lines{"changedElement POST fleet.people " + ada + " -",
                            "changedResourceCollection POST fleet.people -",
                            "changedElement POST fleet.cars " + car + " {}",
                            "changedElement POST fleet.cars " + van + " {}"}));
}

TEST_F(JSONAccessorTest, DeleteWithReferencesLeavesTheMappingToTheCaller)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    const DbId adaId = idOf(ADA_OBJ);

    const bool result =
        sut.deleteXObjectWithReferences("fleet", "people", *copyOf(ada), &references, &mapper);

    EXPECT_TRUE(result);
    EXPECT_EQ(idOf(ADA_OBJ), adaId);
    EXPECT_EQ(mapper.size(), 1U);
}

TEST_F(JSONAccessorTest, DeleteWithReferencesOfAnObjectThatIsGoneAnswersFalseAndTellsNobody)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    const XObject::Ptr object = copyOf(ada);
    ASSERT_TRUE(cache.deleteXObject(ada));
    const std::size_t callsBefore = listener.lines().size();

    const bool result = sut.deleteXObjectWithReferences("fleet", "people", *object, &references, &mapper);

    EXPECT_FALSE(result);
    EXPECT_EQ(listener.lines().size(), callsBefore);
}

TEST_F(JSONAccessorTest, ReferenceChangeAfterDeleteOfAnUnmappedObjectAnswersFalse)
{
    const XObject::Ptr car = copyOf(insertUnmappedCar());

    EXPECT_FALSE(sut.triggerReferenceChangeAfterDelete(*car, &references, &mapper));
    EXPECT_EQ(listener.lines(), Lines{});
}

TEST_F(JSONAccessorTest, ReferenceChangeAfterDeleteTellsOnlyObjectsThatReferToTheDeletedOne)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    const std::string ben = create("people", BEN_OBJ, R"({"name":"Ben"})");
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    references.addReference("fleet", "people", "buddy", ADA_OBJ, BEN_OBJ);
    const std::size_t callsBefore = listener.lines().size();

    const bool result = sut.triggerReferenceChangeAfterDelete(*copyOf(ada), &references, &mapper);

    EXPECT_TRUE(result);
    const Lines calls(listener.lines().begin() + static_cast<std::ptrdiff_t>(callsBefore),
                      listener.lines().end());
    EXPECT_EQ(calls, Lines{"changedElement POST fleet.cars " + car + " {}"});
}

TEST_F(JSONAccessorTest, ReferenceChangeAfterDeletePassesOverAnUnmappedReferringObject)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    const std::size_t callsBefore = listener.lines().size();
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.triggerReferenceChangeAfterDelete(*copyOf(ada), &references, &mapper);

    EXPECT_TRUE(result);
    EXPECT_EQ(listener.lines().size(), callsBefore);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONAccessorTest, ReferenceChangeAfterDeleteLogsAReferringObjectThatIsGoneFromTheStore)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    references.addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    mapper.addXObjId(CAR_OBJ, 999, 0);
    const std::size_t callsBefore = listener.lines().size();
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.triggerReferenceChangeAfterDelete(*copyOf(ada), &references, &mapper);

    EXPECT_FALSE(result);
    EXPECT_EQ(listener.lines().size(), callsBefore);
    ASSERT_FALSE(capture.lines().empty());
    EXPECT_EQ(capture.lines().back(), "Error: No attribute values found.");
}

// ---- triggerSubscription ----

TEST_F(JSONAccessorTest, ElementFormTellsTheObjectsSubscribersWithTheObject)
{
    sut.triggerSubscription("fleet", "cars", parseObject(R"({"seats":2})"), "u-1");

    EXPECT_EQ(listener.lines(), Lines{"changedElement POST fleet.cars u-1 {\"seats\":2}"});
}

TEST_F(JSONAccessorTest, CollectionFormTellsTheResourcesSubscribersWithoutObject)
{
    sut.triggerSubscription("fleet", "cars");

    EXPECT_EQ(listener.lines(), Lines{"changedResourceCollection POST fleet.cars -"});
}

TEST_F(JSONAccessorTest, ResultFormChoosesWhomToTellByTheResult)
{
    const Poco::JSON::Object::Ptr obj = parseObject(R"({"seats":2})");

    for (const OperationResult::Enum result : {ERR, SERVICE_ERR, UPDATED, CREATED, UNCHANGED, PROCESSED})
    {
        sut.triggerSubscription("fleet", "cars", obj, "u-" + OperationResult::toString(result), result);
    }

    EXPECT_EQ(listener.lines(), (Lines{"changedElement POST fleet.cars u-ObjectUpdated {\"seats\":2}",
                                       "changedResourceCollection POST fleet.cars -",
                                       "changedElement POST fleet.cars u-ObjectProcessed {\"seats\":2}"}));
}

TEST(JSONAccessorWithoutListenerTest, EveryTriggerFormDoesNothing)
{
    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    StoredObjectCache cache(services, &handler);
    const JSONAccessor sut(&cache, nullptr);
    const Poco::JSON::Object::Ptr obj = parseObject(R"({"seats":2})");

    EXPECT_NO_THROW(sut.triggerSubscription("fleet", "cars", obj, "u-1"));
    EXPECT_NO_THROW(sut.triggerSubscription("fleet", "cars"));
    EXPECT_NO_THROW(sut.triggerSubscription("fleet", "cars", obj, "u-1", OperationResult::ObjectCreated));
    EXPECT_NO_THROW(sut.triggerSubscription("fleet", "cars", obj, "u-1", OperationResult::ObjectUpdated));
}

TEST(JSONAccessorWithoutListenerTest, MappedUpdateAndDeleteWorkWithoutTellingAnybody)
{
    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    StoredObjectCache cache(services, &handler);
    DbObjectIdMapper mapper;
    XObjectRefHolder references;
    const JSONAccessor sut(&cache, nullptr);
    std::string uuid;

    const OperationResult::Enum result = sut.updateCacheMappedXObjectWithJSON(
        "fleet", "cars", CAR_OBJ, parseObject(R"({"brand":"saab"})"), &references, &mapper, uuid);
    XObject object{Element::Ptr()};
    ASSERT_TRUE(cache.selectXObjectByUUID("fleet", "cars", uuid, object, 0, false));
    const bool deleted = sut.deleteXObjectWithReferences("fleet", "cars", object, &references, &mapper);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_TRUE(deleted);
    EXPECT_TRUE(cache.stored(uuid).isNull());
}

// ---- forwarding ----

TEST_F(JSONAccessorTest, SelectByIdCopiesTheObjectAndAnswersUnchanged)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    XObject object{Element::Ptr()};

    const OperationResult::Enum result = sut.selectXObject(idOf(CAR_OBJ), object);

    EXPECT_EQ(result, OperationResult::ObjectUnchanged);
    EXPECT_EQ(object.getUUID(), uuid);
    EXPECT_EQ(describe(object.getValue("brand")->getValue()), "\"volvo\"");
}

TEST_F(JSONAccessorTest, SelectByUnknownIdAnswersError)
{
    XObject object{Element::Ptr()};

    EXPECT_EQ(sut.selectXObject(999, object), OperationResult::ErrorOnUpdate);
}

TEST_F(JSONAccessorTest, SelectByUuidFindsTheObjectOnlyInItsResource)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    XObject inCars{Element::Ptr()};
    XObject inPeople{Element::Ptr()};
    XObject unknown{Element::Ptr()};

    EXPECT_TRUE(sut.selectXObject("fleet", "cars", uuid, inCars));
    EXPECT_FALSE(sut.selectXObject("fleet", "people", uuid, inPeople));
    EXPECT_FALSE(sut.selectXObject("fleet", "cars", UNKNOWN_UUID, unknown));
    EXPECT_EQ(inCars.getDBID(), idOf(CAR_OBJ));
}

TEST_F(JSONAccessorTest, SearchesForValuesGiveObjectsAndIds)
{
    create("cars", CAR_OBJ, R"({"brand":"volvo"})");
    const std::string van = create("cars", VAN_OBJ, R"({"brand":"ford"})");
    const JSONAccessor::AttributeValuePairs ford{{"brand", Poco::Dynamic::Var(std::string("ford"))}};
    std::vector<XObject::Ptr> objects;
    std::vector<long> ids;

    const bool objectsFound = sut.getXObjectsWithAttributesOfValues("fleet", "cars", objects, ford);
    const bool idsFound = sut.getXObjectIdsWithAttributesOfValues("fleet", "cars", ids, ford);

    EXPECT_TRUE(objectsFound);
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_EQ(objects.front()->getUUID(), van);
    EXPECT_TRUE(idsFound);
    EXPECT_EQ(ids, std::vector<long>{idOf(VAN_OBJ)});
}

TEST_F(JSONAccessorTest, DeleteXObjectGoesByTheUuidWhateverServiceAndResourceSay)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"volvo"})");

    const bool deleted = sut.deleteXObject("garage", "spots", *copyOf(uuid));

    EXPECT_TRUE(deleted);
    EXPECT_EQ(stored(uuid), "none");
    EXPECT_FALSE(sut.deleteXObject("fleet", "cars", XObject(Element::Ptr())));
}

} // namespace
