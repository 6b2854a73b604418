#include "Mapping/DataHandler/ServiceDataHandlerOutputBaseImplDBData.h"

#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/UUID.h"
#include "MappingServiceManager.h"
#include "RecordingDataHandler.h"
#include "RecordingSubscriptionTrigger.h"
#include "StoredObjectCache.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>
#include <Poco/Message.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::DBData::DbId;
using Orvi::Mapping::MappingServiceManager;
using Orvi::Mapping::OperationResult;
using Orvi::Mapping::XObjectId;
using Orvi::Mapping::DataHandler::ServiceDataHandlerOutputBaseImplDBData;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::parseObject;
using ServiceDB::Test::RecordingDataHandler;
using ServiceDB::Test::RecordingSubscriptionTrigger;
using ServiceDB::Test::StoredObjectCache;
using Lines = std::vector<std::string>;

const Poco::Int32 CAR_OBJ = 0xBEEF;
const Poco::Int32 VAN_OBJ = 0xCAFE;
const Poco::Int32 ADA_OBJ = 0xA1;

// The fleet behind a mapped cache, a recording listener and a real mapping manager.
class ServiceDataHandlerOutputBaseImplDBDataTest : public ::testing::Test
{
protected:
    ServiceDataHandlerOutputBaseImplDBDataTest() { sut.setMappingServiceManager(&manager); }

    OperationResult::Enum map(const std::string& resource, Poco::Int32 objId, const std::string& json,
                              std::string& out_uuid, Orvi::Mapping::ServiceArrayIndexType_t index = 0)
    {
        return sut.executeMappingToDb(objId, "fleet", resource, index, parseObject(json), out_uuid);
    }

    std::string create(const std::string& resource, Poco::Int32 objId, const std::string& json)
    {
        std::string uuid;
        EXPECT_EQ(map(resource, objId, json, uuid), OperationResult::ObjectCreated) << json;
        return uuid;
    }

    XObjectId idOf(Poco::Int32 objId, Orvi::Mapping::ServiceArrayIndexType_t index = 0)
    {
        XObjectId id = -1;
        manager.idMapper().getXObjIdItemByObjId(objId, index, id);
        return id;
    }

    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    StoredObjectCache cache{services, &handler};
    RecordingSubscriptionTrigger listener;
    MappingServiceManager manager;
    ServiceDataHandlerOutputBaseImplDBData sut{&cache, &listener};
};

// ---- construction ----

TEST(ServiceDataHandlerOutputBaseImplDBDataConstructionTest, WithoutCacheLogsFatalAndIsBuiltAnyway)
{
    RecordingSubscriptionTrigger listener;
    LogCapture capture;

    const ServiceDataHandlerOutputBaseImplDBData sut(nullptr, &listener);

    EXPECT_EQ(capture.lines(), Lines{"Fatal: missing app service CarServiceJSONDataCache"});
    EXPECT_EQ(sut.getMappingServiceManager(), nullptr);
}

TEST(ServiceDataHandlerOutputBaseImplDBDataConstructionTest, WithoutCacheAndListenerLogsBothMissing)
{
    LogCapture capture;

    const ServiceDataHandlerOutputBaseImplDBData sut(nullptr, nullptr);

    EXPECT_EQ(capture.lines(), (Lines{"Fatal: missing app service CarDataChangeListener",
                                      "Fatal: missing app service CarServiceJSONDataCache"}));
}

TEST(ServiceDataHandlerOutputBaseImplDBDataConstructionTest, WithCacheAndListenerLogsNothing)
{
    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    StoredObjectCache cache(services, &handler);
    RecordingSubscriptionTrigger listener;
    LogCapture capture;

    const ServiceDataHandlerOutputBaseImplDBData sut(&cache, &listener);

    EXPECT_EQ(capture.lines(), Lines{});
}

// ---- getDBIdForObject ----

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, GetDBIdForObjectFindsTheObjectByItsName)
{
    create("cars", CAR_OBJ, R"({"name":"front"})");
    create("cars", VAN_OBJ, R"({"name":"rear"})");

    const XObjectId result = sut.getDBIdForObject("fleet", "cars", "rear");

    EXPECT_EQ(result, idOf(VAN_OBJ));
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest,
       GetDBIdForObjectWithANameThatTwoBearGivesTheFirstOfTheSearch)
{
    create("cars", CAR_OBJ, R"({"name":"twin"})");
    create("cars", VAN_OBJ, R"({"name":"twin"})");
    std::vector<long> search;
    ASSERT_TRUE(cache.selectXObjectIDsWithAttributesOfValues(
        "fleet", "cars", search, {{"name", Poco::Dynamic::Var(std::string("twin"))}}));
    ASSERT_EQ(search.size(), 2U);

    const XObjectId result = sut.getDBIdForObject("fleet", "cars", "twin");

    EXPECT_EQ(result, search.front());
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, GetDBIdForObjectOfAnUnknownNameLogsAndGivesMinusOne)
{
    create("cars", CAR_OBJ, R"({"name":"front"})");
    LogCapture capture;

    const XObjectId result = sut.getDBIdForObject("fleet", "cars", "rear");

    EXPECT_EQ(result, -1);
    EXPECT_EQ(capture.linesStartingWith("Error: "),
              Lines{"Error: Failed to get DBID for object rear in fleet/cars"});
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, GetDBIdForObjectInAnUnknownResourceLogsAndGivesMinusOne)
{
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const XObjectId result = sut.getDBIdForObject("fleet", "trucks", "rear");

    EXPECT_EQ(result, -1);
    ASSERT_FALSE(capture.lines().empty());
    EXPECT_EQ(capture.lines().back(), "Error: Failed to get DBID for object rear in fleet/trucks");
}

// ---- executeMappingToDb ----

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, MappingCreatesTheObjectAndLogsTheResultWithHexId)
{
    LogCapture capture;
    std::string uuid;

    const OperationResult::Enum result = map("cars", CAR_OBJ, R"({"brand":"saab"})", uuid, 2);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_FALSE(uuid.empty());
    EXPECT_EQ(idOf(CAR_OBJ, 2), cache.stored(uuid)->getDBID());
    EXPECT_EQ(idOf(CAR_OBJ, 0), -1);
    EXPECT_EQ(capture.linesStartingWith("Info: "),
              Lines{"Info: result of mapping of object 0xBEEF with uuid: " + uuid +
                    " in fleet.cars : ObjectCreated"});
    EXPECT_EQ(listener.lines(), Lines{"changedResourceCollection POST fleet.cars -"});
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, MappingLogsEveryResultItGets)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"saab"})");
    LogCapture capture(Poco::Message::PRIO_INFORMATION);
    std::string unchanged;
    std::string updated;
    std::string failed;

    map("cars", CAR_OBJ, R"({"brand":"saab"})", unchanged);
    map("cars", CAR_OBJ, R"({"brand":"volvo"})", updated);
    map("cars", CAR_OBJ, R"({"wheels":4})", failed);

    EXPECT_EQ(capture.linesStartingWith("Info: "),
              (Lines{"Info: result of mapping of object 0xBEEF with uuid: " + uuid +
                         " in fleet.cars : ObjectUnchanged",
                     "Info: result of mapping of object 0xBEEF with uuid: " + uuid +
                         " in fleet.cars : ObjectUpdated",
                     "Info: result of mapping of object 0xBEEF with uuid: " + uuid +
                         " in fleet.cars : ErrorOnUpdate"}));
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, MappingThatCannotInsertLogsTheResultWithoutUuid)
{
    LogCapture capture;
    std::string uuid;

    const OperationResult::Enum result = map("noelement", 0x1F, R"({"brand":"saab"})", uuid);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.linesStartingWith("Info: "),
              Lines{"Info: result of mapping of object 0x1F with uuid:  in fleet.noelement : ErrorOnUpdate"});
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, NegativeObjectIdIsLoggedAsItsThirtyTwoBits)
{
    LogCapture capture;
    std::string uuid;

    map("cars", -2, R"({"brand":"saab"})", uuid);

    EXPECT_EQ(capture.linesStartingWith("Info: "),
              Lines{"Info: result of mapping of object 0xFFFFFFFE with uuid: " + uuid +
                    " in fleet.cars : ObjectCreated"});
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, MappingUsesTheManagersReferencesAndIdMapper)
{
    manager.references().addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"saab"})");

    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");

    EXPECT_EQ(cache.stored(car)->getValue("driver")->getValue().convert<std::string>(), ada);
    EXPECT_EQ(manager.idMapper().size(), 2U);
}

// ---- executeMappingResultDeleteObject ----

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest,
       DeleteOfAnObjectIdThatWasNeverMappedAnswersFalseWithoutALine)
{
    LogCapture capture;

    const bool result = sut.executeMappingResultDeleteObject("fleet", "cars", CAR_OBJ, 0);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, DeleteOfAnotherArrayIndexAnswersFalse)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"saab"})");

    const bool result = sut.executeMappingResultDeleteObject("fleet", "cars", CAR_OBJ, 1);

    EXPECT_FALSE(result);
    EXPECT_FALSE(cache.stored(uuid).isNull());
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, DeleteOfAMappedObjectThatIsGoneLogsFailedSelect)
{
    manager.idMapper().addXObjId(CAR_OBJ, 999, 0);
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.executeMappingResultDeleteObject("fleet", "cars", CAR_OBJ, 0);

    EXPECT_FALSE(result);
    ASSERT_FALSE(capture.lines().empty());
    EXPECT_EQ(capture.lines().back(), "Error: Select of object with typeId 48879failed!");
    EXPECT_EQ(idOf(CAR_OBJ), 999);
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, DeleteThatFailsLogsAndKeepsTheMapping)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"saab"})");
    // The stored object now shows a UUID under which the store cannot find it, so that its delete fails.
    cache.stored(uuid)->setId(Orvi::DBData::UUID(std::string("99999999-9999-4999-8999-999999999999")));
    const std::size_t callsBefore = listener.lines().size();
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.executeMappingResultDeleteObject("fleet", "cars", CAR_OBJ, 0);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: Delete of object with typeId 48879failed!"});
    EXPECT_NE(idOf(CAR_OBJ), -1);
    EXPECT_EQ(listener.lines().size(), callsBefore);
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, DeleteRemovesObjectAndMappingTellsSubscribersAndLogs)
{
    const std::string uuid = create("cars", CAR_OBJ, R"({"brand":"saab"})");
    LogCapture capture;

    const bool result = sut.executeMappingResultDeleteObject("fleet", "cars", CAR_OBJ, 0);

    EXPECT_TRUE(result);
    EXPECT_TRUE(cache.stored(uuid).isNull());
    EXPECT_EQ(idOf(CAR_OBJ), -1);
    EXPECT_EQ(manager.idMapper().size(), 0U);
    EXPECT_EQ(listener.lines(), (Lines{"changedResourceCollection POST fleet.cars -",
                                       "changedElement POST fleet.cars " + uuid + " -",
                                       "changedResourceCollection POST fleet.cars -"}));
    EXPECT_EQ(capture.linesStartingWith("Info: "),
              Lines{"Info: delete of mapped object 0xBEEF with uuid: " + uuid + " in fleet.cars succeeded."});
}

TEST_F(ServiceDataHandlerOutputBaseImplDBDataTest, DeleteTellsReferringObjectsWhileTheMappingStillStands)
{
    const std::string ada = create("people", ADA_OBJ, R"({"name":"Ada"})");
    manager.references().addReference("fleet", "cars", "driver", CAR_OBJ, ADA_OBJ);
    const std::string car = create("cars", CAR_OBJ, R"({"brand":"saab"})");
    const XObjectId adaId = idOf(ADA_OBJ);
    std::vector<XObjectId> mappedWhileTold;
    listener.onCall = [&](const std::string&) { mappedWhileTold.push_back(idOf(ADA_OBJ)); };
    const std::size_t callsBefore = listener.lines().size();

    const bool result = sut.executeMappingResultDeleteObject("fleet", "people", ADA_OBJ, 0);

    EXPECT_TRUE(result);
    const Lines calls(listener.lines().begin() + static_cast<std::ptrdiff_t>(callsBefore),
                      listener.lines().end());
    EXPECT_EQ(calls, (Lines{"changedElement POST fleet.people " + ada + " -",
                            "changedResourceCollection POST fleet.people -",
                            "changedElement POST fleet.cars " + car + " {}"}));
    EXPECT_EQ(mappedWhileTold, (std::vector<XObjectId>{adaId, adaId, adaId}));
    EXPECT_EQ(idOf(ADA_OBJ), -1);
    EXPECT_EQ(idOf(CAR_OBJ), cache.stored(car)->getDBID());
}

} // namespace
