#include "Mapping/DataHandler/ServiceDataHandlerInputBaseImplDBData.h"

#include "Data/AttributeBase.h"
#include "Data/AttributeValueBase.h"
#include "DataLayer/JSONProcessingContext.h"
#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "RecordingDataHandler.h"
#include "RecordingSubscriptionTrigger.h"
#include "StoredObjectCache.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"
#include "TypedFleet.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Parser.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::DBData::DbId;
using Orvi::Mapping::AttributeMapPtr;
using Orvi::Mapping::OperationResult;
using Orvi::Mapping::DataHandler::ServiceDataHandlerInputBaseImplDBData;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::RecordingDataHandler;
using ServiceDB::Test::RecordingSubscriptionTrigger;
using ServiceDB::Test::StoredObjectCache;
using Lines = std::vector<std::string>;

const std::string CAR = "ca000000-0000-4000-8000-0000000000c1";
const std::string ADA = "a0000000-0000-4000-8000-0000000000a1";
const std::string HOLLOW = "0e000000-0000-4000-8000-0000000000e1";
const std::string UNKNOWN = "99999999-9999-4999-8999-999999999999";

// The attributes as name=value, values as JSON, in name order; "null" for the empty pointer.
std::string describe(const AttributeMapPtr& attributes)
{
    if (attributes.isNull())
    {
        return "null";
    }
    std::string text;
    for (const auto& [name, attribute] : *attributes)
    {
        const Orvi::Data::AttributeValueBase* value = attribute->getValueBase();
        text += (text.empty() ? "" : " ") + name + "=" +
                (value == nullptr ? "null" : ServiceDB::Test::toJson(value->toJSON(0)));
    }
    return text;
}

// The fleet with a car (brand "saab", 4 seats, driven by Ada), Ada, and an object without attributes.
class ServiceDataHandlerInputBaseImplDBDataTest : public ::testing::Test
{
protected:
    ServiceDataHandlerInputBaseImplDBDataTest()
    {
        carId = insert("cars", CAR);
        adaId = insert("people", ADA);
        hollowId = insert("hollow", HOLLOW);
        write("cars", CAR, R"({"brand":"saab","seats":4,"driver":"/fleet/people/)" + ADA + "\"}");
    }

    DbId insert(const std::string& resource, const std::string& uuid)
    {
        std::string newUuid = uuid;
        DbId id = -1;
        EXPECT_TRUE(cache.insertXObject("fleet", resource, newUuid, id));
        return id;
    }

    void write(const std::string& resource, const std::string& uuid, const std::string& json)
    {
        Orvi::DBData::XObject::Ptr copy = cache.selectXObject(uuid, 0);
        const Poco::JSON::Object::Ptr obj =
            Poco::JSON::Parser().parse(json).extract<Poco::JSON::Object::Ptr>();
        EXPECT_EQ(cache.processJSONValues(Orvi::DataLayer::JSONProcessingContext::InputContext_IPC, "fleet",
                                          resource, *copy, obj.get()),
                  OperationResult::ObjectUpdated);
    }

    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    StoredObjectCache cache{services, &handler};
    RecordingSubscriptionTrigger listener;
    ServiceDataHandlerInputBaseImplDBData sut{&cache, &listener};
    DbId carId = -1;
    DbId adaId = -1;
    DbId hollowId = -1;
};

TEST(ServiceDataHandlerInputBaseImplDBDataConstructionTest, MakesNoCheckOfTheCache)
{
    RecordingSubscriptionTrigger listener;
    LogCapture capture;

    const ServiceDataHandlerInputBaseImplDBData sut(nullptr, &listener);

    EXPECT_EQ(capture.lines(), Lines{});
}

TEST(ServiceDataHandlerInputBaseImplDBDataConstructionTest, WithoutListenerOnlyTheAccessorComplains)
{
    LogCapture capture;

    const ServiceDataHandlerInputBaseImplDBData sut(nullptr, nullptr);

    EXPECT_EQ(capture.lines(), Lines{"Fatal: missing app service CarDataChangeListener"});
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, UnknownIdGivesAnEmptyPointer)
{
    const AttributeMapPtr result = sut.getAttributesToUpdateFromDB(999);

    EXPECT_TRUE(result.isNull());
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, ObjectWithoutValuesGivesAnEmptyMap)
{
    const AttributeMapPtr result = sut.getAttributesToUpdateFromDB(hollowId);

    ASSERT_FALSE(result.isNull());
    EXPECT_TRUE(result->empty());
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, ValuesThatHoldSomethingAreGivenByNameWithTheObjectAsParent)
{
    const AttributeMapPtr result = sut.getAttributesToUpdateFromDB(carId);

    ASSERT_FALSE(result.isNull());
    std::vector<std::string> names;
    for (const auto& [name, attribute] : *result)
    {
        names.push_back(name);
        EXPECT_EQ(attribute->parent(), carId) << name;
        EXPECT_EQ(attribute->getName(), name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"brand", "driver", "id", "name", "seats", "uri"}));
    EXPECT_EQ(ServiceDB::Test::toJson(result->at("brand")->getValueBase()->toJSON(0)), "\"saab\"");
    EXPECT_EQ(ServiceDB::Test::toJson(result->at("seats")->getValueBase()->toJSON(0)), "4");
    EXPECT_EQ(ServiceDB::Test::toJson(result->at("id")->getValueBase()->toJSON(0)), "\"" + CAR + "\"");
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, ValueThatHoldsNothingIsLeftOut)
{
    const AttributeMapPtr result = sut.getAttributesToUpdateFromDB(adaId);

    ASSERT_FALSE(result.isNull());
    EXPECT_EQ(result->count("age"), 0U);
    EXPECT_EQ(result->count("buddy"), 0U);
    EXPECT_EQ(result->count("id"), 1U);
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, ReferenceIsGivenAsAReferenceAttribute)
{
    const AttributeMapPtr result = sut.getAttributesToUpdateFromDB(carId);

    ASSERT_FALSE(result.isNull());
    ASSERT_EQ(result->count("driver"), 1U);
    EXPECT_TRUE(result->at("driver")->isXObjReference());
    EXPECT_FALSE(result->at("driver")->isArray());
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, FirstValueOfANameWins)
{
    cache.stored(carId)->getAttributeValues().push_back(ServiceDB::Test::Fleet::makeCell(
        carId, "brand", Orvi::DBData::AttrType_String, false, Poco::Dynamic::Var(std::string("volvo")), 99));

    const AttributeMapPtr result = sut.getAttributesToUpdateFromDB(carId);

    ASSERT_FALSE(result.isNull());
    EXPECT_EQ(ServiceDB::Test::toJson(result->at("brand")->getValueBase()->toJSON(0)), "\"saab\"");
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, ObjectNamedByItsUuidGivesTheSameWithItsOwnIdAsParent)
{
    const AttributeMapPtr byId = sut.getAttributesToUpdateFromDB(carId);

    const AttributeMapPtr result = sut.getAttributesToUpdateFromDB("fleet", "cars", CAR);

    ASSERT_FALSE(result.isNull());
    EXPECT_EQ(describe(result), describe(byId));
    for (const auto& entry : *result)
    {
        EXPECT_EQ(entry.second->parent(), carId) << entry.first;
    }
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, UnknownUuidOrAnotherResourceGivesAnEmptyPointer)
{
    EXPECT_TRUE(sut.getAttributesToUpdateFromDB("fleet", "cars", UNKNOWN).isNull());
    EXPECT_TRUE(sut.getAttributesToUpdateFromDB("fleet", "people", CAR).isNull());
    EXPECT_TRUE(sut.getAttributesToUpdateFromDB("fleet", "trucks", CAR).isNull());
}

TEST_F(ServiceDataHandlerInputBaseImplDBDataTest, ObjectWithoutValuesNamedByUuidGivesAnEmptyMap)
{
    const AttributeMapPtr result = sut.getAttributesToUpdateFromDB("fleet", "hollow", HOLLOW);

    ASSERT_FALSE(result.isNull());
    EXPECT_TRUE(result->empty());
}

} // namespace
