#include "Mapping/MappingServiceJSONDataCache.h"

#include "Command/HttpRequest.h"
#include "Command/HttpResponse.h"
#include "DataAccess/ElementAccess.h"
#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/Endpoint.h"
#include "RecordingDataHandler.h"
#include "TestSupport/FakeServerRequest.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"
#include "VersionCheck.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/Message.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/SocketAddress.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::DataLayer::JSONExtractionMap_t;
using Orvi::DataLayer::JSONProcessingContext;
using Orvi::DataLayer::JSONProcessingData;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::DbId;
using Orvi::DBData::Endpoint;
using Orvi::DBData::XObject;
using Orvi::Mapping::MappingServiceJSONDataCache;
using Orvi::Mapping::OperationResult;
using Orvi::Mapping::ProcessingData;
using Poco::Dynamic::Var;
using Poco::Net::HTTPResponse;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::parseObject;
using ServiceDB::Test::RecordingDataHandler;
using ServiceDB::Test::Fleet::describe;
using Lines = std::vector<std::string>;

const auto POST_ON_ELEMENT = JSONProcessingContext::InputContext_POST_On_Element;
const auto POST_ON_RESOURCE = JSONProcessingContext::InputContext_POST_On_Resource;
const auto IPC = JSONProcessingContext::InputContext_IPC;
const auto CACHE_ONLY = JSONProcessingContext::InputContext_POST_On_Element_Cache_Only;

const std::string CAR = "ca000000-0000-4000-8000-0000000000c1";
const std::string VAN = "ca000000-0000-4000-8000-0000000000c2";
const std::string ADA = "a0000000-0000-4000-8000-0000000000a1";
const std::string UNKNOWN = "99999999-9999-4999-8999-999999999999";
const std::string ADA_URI = "/fleet/people/" + ADA;

Endpoint rule(bool get, bool post)
{
    Endpoint endpoint;
    endpoint.setGet(get);
    endpoint.setPost(post);
    return endpoint;
}

// Opens the routing steps, which are the class's own business, to the tests.
class OpenCache : public MappingServiceJSONDataCache
{
public:
    using MappingServiceJSONDataCache::MappingServiceJSONDataCache;

    using MappingServiceJSONDataCache::convertProcessingData;
    using MappingServiceJSONDataCache::processAttributeValuesInputIPC;
    using MappingServiceJSONDataCache::processAttributeValuesInputUserToDB;
    using MappingServiceJSONDataCache::processAttributeValuesInputUserToMapper;
    using MappingServiceJSONDataCache::storePostedObjectRefs;
    using MappingServiceJSONDataCache::writeValuesToDB;
};

// The fleet with a car (brand "saab", 4 seats) and a person, Ada.
class CacheFixture : public ::testing::Test
{
protected:
    explicit CacheFixture(bool withHandler)
        : services(ServiceDB::Test::Fleet::makeFleet())
        , sut(services, withHandler ? &handler : nullptr)
    {
        carId = insert("cars", CAR);
        adaId = insert("people", ADA);
        store(CAR, "brand", std::string("saab"));
        store(CAR, "seats", Poco::Int64(4));
    }

    DbId insert(const std::string& resource, const std::string& uuid)
    {
        std::string newUuid = uuid;
        DbId id = -1;
        EXPECT_TRUE(sut.insertXObject("fleet", resource, newUuid, id));
        return id;
    }

    void store(const std::string& uuid, const std::string& name, const Var& value)
    {
        XObject::Ptr copy = sut.selectXObject(uuid, 0);
        AttributeValue& cell = *copy->getValue(name);
        cell.setValue(value, false);
        EXPECT_TRUE(cell.isArray() ? sut.updateCacheArrayAttributeValueById(cell, true)
                                   : sut.updateCacheAttributeValueById(cell, true));
    }

    // The stored object as name=value pairs.
    std::string stored(const std::string& uuid)
    {
        const XObject::Ptr object = sut.selectXObject(uuid, 0);
        return object.isNull() ? "none" : describe(*object);
    }

    // A private copy of the stored car, as the input paths receive it.
    XObject::Ptr carCopy() { return sut.selectXObject(CAR, 0); }

    OperationResult::Enum post(JSONProcessingContext::Enum ctx, XObject& object, const std::string& json)
    {
        input = parseObject(json);
        return sut.processJSONValues(ctx, "fleet", "cars", object, input.get());
    }

    Orvi::DBData::ServiceMap services;
    RecordingDataHandler handler;
    OpenCache sut;
    DbId carId = -1;
    DbId adaId = -1;
    Poco::JSON::Object::Ptr input;
};

class MappingServiceJSONDataCacheTest : public CacheFixture
{
protected:
    MappingServiceJSONDataCacheTest()
        : CacheFixture(true)
    {
    }
};

class MappingServiceJSONDataCacheWithoutHandlerTest : public CacheFixture
{
protected:
    MappingServiceJSONDataCacheWithoutHandlerTest()
        : CacheFixture(false)
    {
    }
};

const std::string CAR_BEFORE = "brand=\"saab\" driver=null id=\"" + CAR +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=4 tags=null "
                               "uri=\"/fleet/cars/" +
                               CAR + "\"";

// ---- construction ----

TEST(MappingServiceJSONDataCacheConstructionTest, WithoutDataHandlerLogsFatalAndStillServes)
{
    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    LogCapture capture;

    MappingServiceJSONDataCache sut(services, nullptr);

    EXPECT_EQ(capture.lines(), Lines{"Fatal: DataHandler is missing"});
    EXPECT_FALSE(sut.selectService("fleet").isNull());
}

TEST(MappingServiceJSONDataCacheConstructionTest, WithDataHandlerLogsNothing)
{
    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    LogCapture capture;

    MappingServiceJSONDataCache sut(services, &handler);

    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_EQ(handler.lines(), Lines{});
}

// ---- the read path ----

class MappingServiceJSONDataCacheQueryTest : public MappingServiceJSONDataCacheTest
{
protected:
    HTTPResponse::HTTPStatus get(const std::string& uri,
                                 Poco::UInt16 port = ServiceDB::Test::Fleet::FLEET_PORT,
                                 const std::string& accept = "")
    {
        ServiceDB::Test::FakeServerRequest request(Poco::Net::HTTPRequest::HTTP_GET, uri);
        request.setServerAddress(Poco::Net::SocketAddress("127.0.0.1", port));
        if (!accept.empty())
        {
            request.set("Accept", accept);
        }
        const Orvi::Command::HttpRequest httpRequest(request);
        return sut.queryCache(httpRequest, response);
    }

    void setFleetVersion(const std::string& version)
    {
        services.at("fleet")->setVersions({new std::string(version)});
    }

    void setCarsRules(const std::vector<Endpoint>& rules)
    {
        sut.selectResource("fleet", "cars")->setEndpoints(rules);
    }

    static std::string acceptVersion(const std::string& version)
    {
        return "application/vnd.servicedb.v" + version + "+json";
    }

    Orvi::Command::HttpResponse response;
};

TEST_F(MappingServiceJSONDataCacheQueryTest, AnInvalidPathIsLoggedAndAnswered400)
{
    LogCapture capture;

    const auto status = get("/fleet/cars/" + CAR + "/extra");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{"Error: URL path invalid."});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCacheQueryTest, TheRootIsAnsweredWithoutVersionCheck)
{
    setFleetVersion("1.0.0");

    const auto status = get("/?$fields=name", ServiceDB::Test::Fleet::FLEET_PORT, acceptVersion("2.0.0"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), "");
    EXPECT_EQ(
        ServiceDB::Test::toJson(response.getJsonMsg()),
        R"({"data":[{"id":"","name":"fleet","uri":"/fleet/"},{"id":"","name":"garage","uri":"/garage/"}],"status":"ok"})");
}

TEST_F(MappingServiceJSONDataCacheQueryTest, AnUnknownServiceIsAnswered404)
{
    LogCapture capture;

    const auto status = get("/trucks");

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCacheQueryTest, AServiceVersionThatDoesNotMatchIsAnswered200WithTheFixedText)
{
    setFleetVersion("1.0.0");
    setCarsRules({rule(true, false)});

    const auto status = get("/fleet/cars", ServiceDB::Test::Fleet::FLEET_PORT, acceptVersion("1.1.0"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), Orvi::Service::VersionCheck::msgVersionNotImplemented);
    EXPECT_EQ(response.getMimetype(), "text/plain");
    EXPECT_TRUE(response.getJsonMsg().isNull());
}

TEST_F(MappingServiceJSONDataCacheQueryTest, TheVersionIsCheckedBeforeTheRulesOfTheResource)
{
    setFleetVersion("1.0.0");

    const auto status = get("/fleet/cars", ServiceDB::Test::Fleet::FLEET_PORT, acceptVersion("3.0.0"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), Orvi::Service::VersionCheck::msgVersionNotImplemented);
}

TEST_F(MappingServiceJSONDataCacheQueryTest, AMatchingVersionReadsTheService)
{
    setFleetVersion("1.0.2");

    const auto status =
        get("/fleet/?$fields=name", ServiceDB::Test::Fleet::FLEET_PORT, acceptVersion("1.0.1"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    Poco::JSON::Object::Ptr answer = response.getJsonMsg();
    ASSERT_FALSE(answer.isNull());
    answer->remove("timestamp");
    EXPECT_EQ(
        ServiceDB::Test::toJson(answer),
        R"({"data":[{"id":"","name":"cars","uri":"/fleet/cars/"},{"id":"","name":"hollow","uri":"/fleet/hollow/"},{"id":"","name":"noelement","uri":"/fleet/noelement/"},{"id":"","name":"people","uri":"/fleet/people/"}],"status":"ok"})");
}

TEST_F(MappingServiceJSONDataCacheQueryTest, AResourceWithoutRulesIsAnswered404)
{
    LogCapture capture;

    const auto status = get("/fleet/cars");

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCacheQueryTest, AResourceWhoseRulesForbidGetIsAnswered403)
{
    setCarsRules({rule(false, true)});
    LogCapture capture;

    const auto status = get("/fleet/cars");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), Lines{"Warning: queryCache access denied by endpoints"});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCacheQueryTest, AnUnknownResourceIsAnswered404)
{
    LogCapture capture;

    const auto status = get("/fleet/trucks");

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Error: Resource fleet/trucks not found"});
}

TEST_F(MappingServiceJSONDataCacheQueryTest, AResourceWhoseRulesAllowGetListsItsObjects)
{
    setCarsRules({rule(false, true), rule(true, false)});

    const auto status = get("/fleet/cars?$fields=brand,seats");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(ServiceDB::Test::toJson(response.getJsonMsg()),
              R"({"data":[{"brand":"saab","id":")" + CAR + R"(","name":"","seats":4,"uri":"/fleet/cars/)" +
                  CAR + R"("}],"status":"ok"})");
}

TEST_F(MappingServiceJSONDataCacheQueryTest, AnObjectIsReadWithoutTheRulesOfItsResource)
{
    const auto status = get("/fleet/cars/" + CAR + "?$fields=seats");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(ServiceDB::Test::toJson(response.getJsonMsg()),
              R"({"data":{"id":")" + CAR + R"(","name":"","seats":4,"uri":"/fleet/cars/)" + CAR +
                  R"("},"status":"ok"})");
}

TEST_F(MappingServiceJSONDataCacheQueryTest, TheServiceIsSeenOnlyOnThePortTheRequestArrivedOn)
{
    const auto status = get("/fleet/cars/" + CAR, ServiceDB::Test::Fleet::GARAGE_PORT);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_FALSE(response.hasContent());
}

// ---- endpoints and addresses ----

TEST_F(MappingServiceJSONDataCacheTest, ResourceEndpointsAreAppendedToTheGivenList)
{
    sut.selectResource("fleet", "cars")->setEndpoints({rule(true, false), rule(false, true)});
    std::vector<Endpoint> endpoints{rule(false, false)};

    const bool found = sut.getResourceEndpoints("fleet", "cars", endpoints);

    EXPECT_TRUE(found);
    ASSERT_EQ(endpoints.size(), 3U);
    EXPECT_FALSE(endpoints[0].isGet() || endpoints[0].isPost());
    EXPECT_TRUE(endpoints[1].isGet() && !endpoints[1].isPost());
    EXPECT_TRUE(!endpoints[2].isGet() && endpoints[2].isPost());
}

TEST_F(MappingServiceJSONDataCacheTest, ResourceEndpointsOfAnUnknownResourceAreLoggedAndFalse)
{
    std::vector<Endpoint> endpoints;
    LogCapture capture;

    const bool found = sut.getResourceEndpoints("fleet", "trucks", endpoints);

    EXPECT_FALSE(found);
    EXPECT_EQ(capture.lines(), Lines{"Error: Resource fleet/trucks not found"});
    EXPECT_TRUE(endpoints.empty());
}

TEST_F(MappingServiceJSONDataCacheTest, ElementEndpointsOfAResourceWithoutElementAreLoggedAndFalse)
{
    std::vector<Endpoint> endpoints;
    LogCapture capture;

    const bool found = sut.getElementEndpoints("fleet", "noelement", endpoints);

    EXPECT_FALSE(found);
    EXPECT_EQ(capture.lines(), Lines{"Error: Element info for resource fleet.noelement not found"});
}

TEST_F(MappingServiceJSONDataCacheTest, AnEmptyListOfElementEndpointsIsFalseWithoutLog)
{
    std::vector<Endpoint> endpoints;
    LogCapture capture;

    const bool found = sut.getElementEndpoints("fleet", "cars", endpoints);

    EXPECT_FALSE(found);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheTest, EndpointsOfANamedElementAreThoseOfTheElement)
{
    sut.selectResource("fleet", "cars")->setEndpoints({rule(false, true)});
    sut.selectElement("fleet", "cars")->setEndpoints({rule(true, false)});
    std::vector<Endpoint> endpoints;

    const bool found = sut.queryCacheEndpoints("fleet", "cars", endpoints, CAR);

    EXPECT_TRUE(found);
    ASSERT_EQ(endpoints.size(), 1U);
    EXPECT_TRUE(endpoints[0].isGet());
    EXPECT_FALSE(endpoints[0].isPost());
}

TEST_F(MappingServiceJSONDataCacheTest, EndpointsWithoutElementAreThoseOfTheResource)
{
    sut.selectResource("fleet", "cars")->setEndpoints({rule(false, true)});
    sut.selectElement("fleet", "cars")->setEndpoints({rule(true, false)});
    std::vector<Endpoint> endpoints;

    const bool found = sut.queryCacheEndpoints("fleet", "cars", endpoints, "");

    EXPECT_TRUE(found);
    ASSERT_EQ(endpoints.size(), 1U);
    EXPECT_FALSE(endpoints[0].isGet());
    EXPECT_TRUE(endpoints[0].isPost());
}

TEST_F(MappingServiceJSONDataCacheTest, TheLocationOfAnObjectIsItsAddress)
{
    const std::string location = MappingServiceJSONDataCache::getLocation("fleet", "cars", CAR);

    EXPECT_EQ(location, "/fleet/cars/" + CAR);
}

// ---- selection and insertion wrappers ----

TEST_F(MappingServiceJSONDataCacheTest, SelectWithConstraintsCopiesTheObjectAsUpdated)
{
    XObject object{Orvi::DBData::Element::Ptr()};

    const auto result = sut.selectXObjectWithConstraints("fleet", "cars", carId, object);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(describe(object), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, SelectWithConstraintsOfAnUnknownIdLogsTheNames)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    LogCapture capture;

    const auto result = sut.selectXObjectWithConstraints("fleet", "cars", 99, object);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Can not find XObject with ID 99",
                                      "Error: select XObject failed to select element fleet, cars"}));
}

TEST_F(MappingServiceJSONDataCacheTest, SelectWithoutConstraintsCopiesTheObjectAsUpdated)
{
    XObject object{Orvi::DBData::Element::Ptr()};

    const auto result = sut.selectXObjectWithoutConstraints("fleet", "cars", carId, object);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(describe(object), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, SelectWithoutConstraintsOfAnUnknownIdLogsTheNames)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    LogCapture capture;

    const auto result = sut.selectXObjectWithoutConstraints("fleet", "people", 99, object);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Can not find XObject with ID 99",
                                      "Error: select XObject failed to select element fleet, people"}));
}

TEST_F(MappingServiceJSONDataCacheTest, SelectByIdCopiesTheObjectAsUnchanged)
{
    XObject object{Orvi::DBData::Element::Ptr()};

    const auto result = sut.selectXObject(carId, object);

    EXPECT_EQ(result, OperationResult::ObjectUnchanged);
    EXPECT_EQ(describe(object), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, SelectByAnUnknownIdLogsTheNumberRightAfterTheText)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    LogCapture capture;

    const auto result = sut.selectXObject(99, object);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Can not find XObject with ID 99",
                                      "Error: select XObject failed to select element by DBID99"}));
}

TEST_F(MappingServiceJSONDataCacheTest, InsertCreatesAnObjectOfTheResource)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    object.setId(Orvi::DBData::UUID(VAN));

    const auto result = sut.insertXObject("fleet", "cars", object);

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(stored(VAN), "brand=null driver=null id=\"" + VAN +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=null tags=null "
                               "uri=\"/fleet/cars/" +
                               VAN + "\"");
}

TEST_F(MappingServiceJSONDataCacheTest, InsertIntoAResourceWithoutElementLogsTheNames)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    LogCapture capture;

    const auto result = sut.insertXObject("fleet", "noelement", object);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              (Lines{"Error: Tried to insert XObject for unknown element type",
                     "Error: updateAttributeValueFromXObject failed to insert element fleet, noelement"}));
}

TEST_F(MappingServiceJSONDataCacheTest, AReferenceByIdResolvesToACopyOfTheStoredObject)
{
    const XObject::Ptr object = sut.resolveObjectReferenceByDbId(adaId);

    ASSERT_FALSE(object.isNull());
    EXPECT_EQ(describe(*object), "age=null buddy=null id=\"" + ADA + "\" name=\"\" uri=\"" + ADA_URI + "\"");
}

TEST_F(MappingServiceJSONDataCacheTest, AReferenceByAnUnknownIdResolvesToNothing)
{
    const XObject::Ptr object = sut.resolveObjectReferenceByDbId(99);

    EXPECT_TRUE(object.isNull());
}

// ---- JSON into stored objects ----

TEST_F(MappingServiceJSONDataCacheTest, UpdateWithJSONReloadsTheObjectBeforeTakingTheValues)
{
    XObject::Ptr stale = carCopy();
    store(CAR, "brand", std::string("volvo"));

    const auto result =
        sut.updateCacheXObjectWithJSON(IPC, "fleet", "cars", *stale, parseObject(R"({"seats": 5})"));

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(describe(stale->getValue("brand")->getValue()), "\"volvo\"");
    EXPECT_EQ(stored(CAR), "brand=\"volvo\" driver=null id=\"" + CAR +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=5 tags=null "
                               "uri=\"/fleet/cars/" +
                               CAR + "\"");
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheTest, UpdateWithJSONOfAnObjectNotStoredFails)
{
    XObject::Ptr object = carCopy();
    object->setId(Orvi::DBData::UUID(UNKNOWN));
    LogCapture capture;

    const auto result =
        sut.updateCacheXObjectWithJSON(IPC, "fleet", "cars", *object, parseObject(R"({"seats": 5})"));

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Can not find XObject with UUID " + UNKNOWN,
                                      "Error: No attribute values found."}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, InsertWithJSONCreatesAndFillsTheObject)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    object.setId(Orvi::DBData::UUID(VAN));

    const auto result = sut.insertCacheXObjectWithJSON(IPC, "fleet", "cars", object,
                                                       *parseObject(R"({"brand": "fiat", "tags": ["x"]})"));

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(stored(VAN), "brand=\"fiat\" driver=null id=\"" + VAN +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=null tags=[\"x\"] "
                               "uri=\"/fleet/cars/" +
                               VAN + "\"");
}

TEST_F(MappingServiceJSONDataCacheTest, InsertWithJSONWithoutChangesStillCreatesTheObject)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    object.setId(Orvi::DBData::UUID(VAN));

    const auto result = sut.insertCacheXObjectWithJSON(IPC, "fleet", "cars", object, *parseObject("{}"));

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(stored(VAN), "brand=null driver=null id=\"" + VAN +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=null tags=null "
                               "uri=\"/fleet/cars/" +
                               VAN + "\"");
}

TEST_F(MappingServiceJSONDataCacheTest, InsertWithJSONThatFailsRemovesTheNewObjectAgain)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    object.setId(Orvi::DBData::UUID(VAN));
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto result = sut.insertCacheXObjectWithJSON(IPC, "fleet", "cars", object,
                                                       *parseObject(R"({"brand": "fiat", "wheels": 4})"));

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(
        capture.lines(),
        (Lines{
            "Error: processJSONValues: (2) Could not find attribute wheels for element type fleet.cars.car",
            "Error: Failed to initialise newly created XObject " + VAN +
                ". Incomplete xObject will be removed."}));
    EXPECT_EQ(stored(VAN), "none");
}

TEST_F(MappingServiceJSONDataCacheTest, InsertWithJSONIntoAResourceWithoutElementFails)
{
    XObject object{Orvi::DBData::Element::Ptr()};
    LogCapture capture;

    const auto result = sut.insertCacheXObjectWithJSON(IPC, "fleet", "noelement", object, *parseObject("{}"));

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              (Lines{"Error: Tried to insert XObject for unknown element type",
                     "Error: updateAttributeValueFromXObject failed to insert element fleet, noelement"}));
}

// ---- searching objects ----

TEST_F(MappingServiceJSONDataCacheTest, AllObjectsOfAResourceAreAppendedInUuidOrder)
{
    insert("cars", VAN);
    std::vector<XObject::Ptr> result{sut.selectXObject(ADA, 0)};

    const bool found = sut.getXObjectsWithAttributesOfValues("fleet", "cars", result);

    EXPECT_TRUE(found);
    ASSERT_EQ(result.size(), 3U);
    EXPECT_EQ(result[0]->getId().toString(), ADA);
    EXPECT_EQ(result[1]->getId().toString(), CAR);
    EXPECT_EQ(result[2]->getId().toString(), VAN);
    EXPECT_EQ(describe(*result[1]), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, OnlyObjectsHoldingTheGivenValuesAreAppended)
{
    insert("cars", VAN);
    store(VAN, "brand", std::string("fiat"));
    std::vector<XObject::Ptr> result;

    const bool found =
        sut.getXObjectsWithAttributesOfValues("fleet", "cars", result, {{"brand", Var(std::string("fiat"))}});

    EXPECT_TRUE(found);
    ASSERT_EQ(result.size(), 1U);
    EXPECT_EQ(result[0]->getId().toString(), VAN);
}

TEST_F(MappingServiceJSONDataCacheTest, ValuesThatNoObjectHoldsFindNothingButSucceed)
{
    std::vector<XObject::Ptr> result;

    const bool found =
        sut.getXObjectsWithAttributesOfValues("fleet", "cars", result, {{"brand", Var(std::string("fiat"))}});

    EXPECT_TRUE(found);
    EXPECT_TRUE(result.empty());
}

TEST_F(MappingServiceJSONDataCacheTest, AResourceWithoutObjectsIsLoggedAndFalse)
{
    std::vector<XObject::Ptr> result;
    LogCapture capture;

    const bool found = sut.getXObjectsWithAttributesOfValues("garage", "spots", result);

    EXPECT_FALSE(found);
    EXPECT_EQ(capture.lines(), Lines{"Debug: Failed to find xobjects with of given values."});
    EXPECT_TRUE(result.empty());
}

// ---- routing by context ----

TEST_F(MappingServiceJSONDataCacheTest, ValuesFromTheHandlerAreStoredAndGoNowhereElse)
{
    XObject::Ptr car = carCopy();

    const auto result = post(IPC, *car, R"({"seats": 2, "tags": ["red"]})");

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(stored(CAR), "brand=\"saab\" driver=null id=\"" + CAR +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=2 tags=[\"red\"] "
                               "uri=\"/fleet/cars/" +
                               CAR + "\"");
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheTest, AnAttributeClearedByTheHandlerIsStoredAsClearedAndNeverPassedOn)
{
    XObject::Ptr car = carCopy();

    const auto result = post(IPC, *car, R"({"brand": null})");

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(stored(CAR), "brand=null driver=null id=\"" + CAR +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=4 tags=null "
                               "uri=\"/fleet/cars/" +
                               CAR + "\"");
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheTest, PostOnAnElementGoesToTheHandlerAndStoresOnlyReferencesAfterItsAnswer)
{
    XObject::Ptr car = carCopy();
    std::string storedDuringCall;
    handler.onCall = [&](const RecordingDataHandler::Call&) { storedDuringCall = stored(CAR); };

    const auto result = post(POST_ON_ELEMENT, *car, R"({"driver": ")" + ADA_URI + R"(", "seats": 2})");

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(handler.lines(), Lines{"updateToMapper fleet.cars " + CAR + " #" + std::to_string(carId) +
                                     " {driver={\"id\":\"" + ADA + "\",\"name\":\"\",\"uri\":\"" + ADA_URI +
                                     "\"}, seats=2} json={\"driver\":\"" + ADA_URI + "\",\"seats\":2}"});
    EXPECT_EQ(storedDuringCall, CAR_BEFORE);
    EXPECT_EQ(stored(CAR), "brand=\"saab\" driver=<\"" + ADA_URI + "\"> id=\"" + CAR +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=4 tags=null "
                               "uri=\"/fleet/cars/" +
                               CAR + "\"");
}

TEST_F(MappingServiceJSONDataCacheTest, TheHandlerSeesAViewOnACopyOfTheObjectWithItsNewValues)
{
    XObject::Ptr car = carCopy();

    post(POST_ON_ELEMENT, *car, R"({"seats": 2})");

    ASSERT_EQ(handler.calls().size(), 1U);
    const XObject::Ptr& viewed = handler.calls()[0].viewed;
    ASSERT_FALSE(viewed.isNull());
    EXPECT_NE(viewed.get(), car.get());
    EXPECT_EQ(describe(*viewed), describe(*car));
    EXPECT_EQ(describe(viewed->getValue("seats")->getValue()), "2");
}

TEST_F(MappingServiceJSONDataCacheTest, PostOnAnElementTakenOverByTheHandlerStoresNothing)
{
    handler.updateToMapperResult = OperationResult::ObjectProcessed;
    XObject::Ptr car = carCopy();

    const auto result = post(POST_ON_ELEMENT, *car, R"({"driver": ")" + ADA_URI + R"("})");

    EXPECT_EQ(result, OperationResult::ObjectProcessed);
    EXPECT_EQ(handler.calls().size(), 1U);
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, PostOnAnElementRefusedByTheHandlerIsLoggedAndStoresNothing)
{
    handler.updateToMapperResult = OperationResult::ErrorOnUpdate;
    XObject::Ptr car = carCopy();
    LogCapture capture;

    const auto result = post(POST_ON_ELEMENT, *car, R"({"driver": ")" + ADA_URI + R"("})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Update fleet.cars." + CAR + " via IPC failed.",
                                      "Error: (0) Update of 1 attribute values failed."}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, AServiceErrorOfTheHandlerOnAnElementPassesThroughSilently)
{
    handler.updateToMapperResult = OperationResult::ServiceErrorOnUpdate;
    XObject::Ptr car = carCopy();
    LogCapture capture;

    const auto result = post(POST_ON_ELEMENT, *car, R"({"driver": ")" + ADA_URI + R"("})");

    EXPECT_EQ(result, OperationResult::ServiceErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, PostedReferencesThatCannotBeStoredFailThePost)
{
    XObject::Ptr car = carCopy();
    Poco::SharedPtr<AttributeValue> unnumbered(
        new AttributeValue(carId, car->getValue("driver")->getAttribute(), -1));
    unnumbered->setValue(Var(ADA_URI), false);
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["driver"] = unnumbered;
    LogCapture capture;

    const auto result =
        sut.processAttributeValuesInputUserToMapper(POST_ON_ELEMENT, "fleet", "cars", *car, data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              (Lines{"Error: updateCacheAttributeValueById missing ID",
                     "Error: User update of attribute value fleet.cars." + CAR + ".driver failed.",
                     "Warning: Update fleet.cars." + CAR + " of poasted objects via IPC failed."}));
    EXPECT_EQ(handler.calls().size(), 1U);
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheWithoutHandlerTest, PostOnAnElementFailsWithoutTouchingTheStore)
{
    XObject::Ptr car = carCopy();
    LogCapture capture;

    const auto result = post(POST_ON_ELEMENT, *car, R"({"driver": ")" + ADA_URI + R"(", "seats": 2})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              (Lines{"Warning: datahandler is NULL", "Error: (0) Update of 2 attribute values failed."}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheWithoutHandlerTest, CacheOnlyInputRaisesNullPointerWithoutTouchingTheStore)
{
    XObject::Ptr car = carCopy();

    EXPECT_THROW(post(CACHE_ONLY, *car, R"({"seats": 2})"), Poco::NullPointerException);
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, PostOnAResourceStoresFirstAndThenTellsTheHandler)
{
    XObject::Ptr car = carCopy();
    std::string storedDuringCall;
    handler.onCall = [&](const RecordingDataHandler::Call&) { storedDuringCall = stored(CAR); };
    handler.updateToDbResult = OperationResult::ObjectCreated;
    const std::string after = "brand=\"saab\" driver=null id=\"" + CAR +
                              "\" loads=[1,2] mileage=null name=\"\" passengers=null seats=2 tags=null "
                              "uri=\"/fleet/cars/" +
                              CAR + "\"";

    const auto result = post(POST_ON_RESOURCE, *car, R"({"loads": [1, 2], "seats": 2})");

    EXPECT_EQ(result, OperationResult::ObjectCreated);
    EXPECT_EQ(storedDuringCall, after);
    EXPECT_EQ(stored(CAR), after);
    EXPECT_EQ(handler.lines(), Lines{"updateToDb fleet.cars " + CAR + " #" + std::to_string(carId) +
                                     " {loads=[1,2], seats=2} json={\"loads\":[1,2],\"seats\":2}"});
}

TEST_F(MappingServiceJSONDataCacheTest, PostOnAResourceRefusedByTheHandlerKeepsTheStoredValues)
{
    handler.updateToDbResult = OperationResult::ErrorOnUpdate;
    XObject::Ptr car = carCopy();
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto result = post(POST_ON_RESOURCE, *car, R"({"seats": 2})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Update fleet.cars." + CAR + " via IPC failed.",
                                      "Error: (1) Update of 1 attribute values failed."}));
    EXPECT_EQ(describe(sut.selectXObject(CAR, 0)->getValue("seats")->getValue()), "2");
}

TEST_F(MappingServiceJSONDataCacheTest, AServiceErrorOfTheHandlerOnAResourceIsLoggedAndPassedThrough)
{
    handler.updateToDbResult = OperationResult::ServiceErrorOnUpdate;
    XObject::Ptr car = carCopy();
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto result = post(POST_ON_RESOURCE, *car, R"({"seats": 2})");

    EXPECT_EQ(result, OperationResult::ServiceErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Update fleet.cars." + CAR + " via IPC failed."});
}

TEST_F(MappingServiceJSONDataCacheTest, PostOnAResourceThatCannotBeStoredDoesNotReachTheHandler)
{
    XObject::Ptr car = carCopy();
    Poco::SharedPtr<AttributeValue> unnumbered(
        new AttributeValue(carId, car->getValue("seats")->getAttribute(), -1));
    unnumbered->setValue(Var(Poco::Int64(2)), false);
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["seats"] = unnumbered;
    LogCapture capture;

    const auto result =
        sut.processAttributeValuesInputUserToDB(POST_ON_RESOURCE, "fleet", "cars", *car, data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              (Lines{"Error: updateCacheAttributeValueById missing ID",
                     "Error: User update of attribute value fleet.cars." + CAR + ".seats failed."}));
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheWithoutHandlerTest, PostOnAResourceFailsAfterStoringTheValues)
{
    XObject::Ptr car = carCopy();
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto result = post(POST_ON_RESOURCE, *car, R"({"seats": 2})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              (Lines{"Warning: datahandler is NULL", "Error: (1) Update of 1 attribute values failed."}));
    EXPECT_EQ(describe(sut.selectXObject(CAR, 0)->getValue("seats")->getValue()), "2");
}

TEST_F(MappingServiceJSONDataCacheTest, CacheOnlyInputGoesToTheHandlersCacheAndNotToTheStore)
{
    handler.addToMapperCacheResult = false;
    XObject::Ptr car = carCopy();

    const auto result = post(CACHE_ONLY, *car, R"({"seats": 2})");

    EXPECT_EQ(result, OperationResult::ObjectProcessed);
    EXPECT_EQ(handler.lines(), Lines{"addToMapperCache fleet " + CAR + " {seats=2}"});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, AContextWithoutRouteFailsAndReachesNobody)
{
    XObject::Ptr car = carCopy();
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["seats"] = car->getValue("seats");
    car->getValue("seats")->setValue(Var(Poco::Int64(2)), false);

    const auto result =
        sut.processAttributeValues(static_cast<JSONProcessingContext::Enum>(4), "fleet", "cars", *car, data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

// Records how the form with a bare map hands on.
class ForwardingCache : public MappingServiceJSONDataCache
{
public:
    using MappingServiceJSONDataCache::MappingServiceJSONDataCache;
    using MappingServiceJSONDataCache::processAttributeValues;

    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum ctx,
                                                 const std::string& servicename,
                                                 const std::string& resourcename, XObject& xObject,
                                                 JSONProcessingData& processingData) override
    {
        seen.push_back(std::to_string(ctx) + " " + servicename + "." + resourcename + " " +
                       xObject.getId().toString() + " " +
                       std::to_string(processingData.pExtractionMap->size()) +
                       (processingData.pObj == nullptr ? " without JSON" : " with JSON"));
        return OperationResult::ObjectProcessed;
    }

    std::vector<std::string> seen;
};

TEST(MappingServiceJSONDataCacheMapFormTest, TheMapFormHandsOnWithoutJSONObject)
{
    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    RecordingDataHandler handler;
    ForwardingCache sut(services, &handler);
    std::string uuid = CAR;
    ASSERT_TRUE(sut.insertXObject("fleet", "cars", uuid));
    XObject::Ptr car = sut.selectXObject(CAR, 0);
    Poco::SharedPtr<JSONExtractionMap_t> cells(new JSONExtractionMap_t);
    (*cells)["seats"] = car->getValue("seats");

    const auto result = sut.processAttributeValues(IPC, "fleet", "cars", *car, cells);

    EXPECT_EQ(result, OperationResult::ObjectProcessed);
    EXPECT_EQ(sut.seen, Lines{"2 fleet.cars " + CAR + " 1 without JSON"});
}

TEST_F(MappingServiceJSONDataCacheTest, TheMapFormRoutesLikeTheFullForm)
{
    XObject::Ptr car = carCopy();
    car->getValue("seats")->setValue(Var(Poco::Int64(6)), false);
    Poco::SharedPtr<JSONExtractionMap_t> cells(new JSONExtractionMap_t);
    (*cells)["seats"] = car->getValue("seats");

    const auto result = sut.processAttributeValues(POST_ON_ELEMENT, "fleet", "cars", *car, cells);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(handler.lines(),
              Lines{"updateToMapper fleet.cars " + CAR + " #" + std::to_string(carId) + " {seats=6} json=-"});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

// ---- the routing steps one by one ----

TEST_F(MappingServiceJSONDataCacheTest, WritingNoValuesLeavesTheObjectUnchanged)
{
    const auto withoutMap = sut.writeValuesToDB("fleet", "cars", CAR, nullptr);
    const auto withEmptyMap = sut.writeValuesToDB("fleet", "cars", CAR, new JSONExtractionMap_t);

    EXPECT_EQ(withoutMap, OperationResult::ObjectUnchanged);
    EXPECT_EQ(withEmptyMap, OperationResult::ObjectUnchanged);
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheTest, WritingAnEmptyCellEntryThrowsNullPointer)
{
    Poco::SharedPtr<JSONExtractionMap_t> cells(new JSONExtractionMap_t);
    (*cells)["seats"] = nullptr;

    EXPECT_THROW(sut.writeValuesToDB("fleet", "cars", CAR, cells), Poco::NullPointerException);
}

TEST_F(MappingServiceJSONDataCacheTest, WritingStopsAtTheFirstFailureAndKeepsWhatWasWritten)
{
    XObject::Ptr car = carCopy();
    Poco::SharedPtr<AttributeValue> unnumbered(
        new AttributeValue(carId, car->getValue("loads")->getAttribute(), -1));
    unnumbered->setValue(
        Var(AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray{Var(Poco::Int64(9))})), false);
    car->getValue("brand")->setValue(Var(std::string("volvo")), false);
    car->getValue("seats")->setValue(Var(Poco::Int64(7)), false);
    Poco::SharedPtr<JSONExtractionMap_t> cells(new JSONExtractionMap_t);
    (*cells)["brand"] = car->getValue("brand");
    (*cells)["loads"] = unnumbered;
    (*cells)["seats"] = car->getValue("seats");
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto result = sut.writeValuesToDB("fleet", "cars", CAR, cells);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              (Lines{"Error: updateCacheArrayAttributeValueById missing ID",
                     "Error: User update of array attribute value fleet.cars." + CAR + ".loads failed."}));
    EXPECT_EQ(stored(CAR), "brand=\"volvo\" driver=null id=\"" + CAR +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=4 tags=null "
                               "uri=\"/fleet/cars/" +
                               CAR + "\"");
}

TEST_F(MappingServiceJSONDataCacheTest, StoringPostedReferencesWritesOnlyTheReferences)
{
    XObject::Ptr car = carCopy();
    car->getValue("driver")->setValue(Var(ADA_URI), false);
    car->getValue("seats")->setValue(Var(Poco::Int64(7)), false);
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["driver"] = car->getValue("driver");
    (*data.pExtractionMap)["seats"] = car->getValue("seats");

    const bool wasStored = sut.storePostedObjectRefs("fleet", "cars", *car, data);

    EXPECT_TRUE(wasStored);
    EXPECT_EQ(stored(CAR), "brand=\"saab\" driver=<\"" + ADA_URI + "\"> id=\"" + CAR +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=4 tags=null "
                               "uri=\"/fleet/cars/" +
                               CAR + "\"");
}

TEST_F(MappingServiceJSONDataCacheTest, StoringPostedReferencesWithoutReferencesSucceedsWithoutWriting)
{
    XObject::Ptr car = carCopy();
    sut.deleteXObject(CAR);
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["seats"] = car->getValue("seats");
    LogCapture capture;

    const bool wasStored = sut.storePostedObjectRefs("fleet", "cars", *car, data);

    EXPECT_TRUE(wasStored);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheTest, ConvertingWithoutCellsGivesNoValues)
{
    const Poco::JSON::Object::Ptr json = parseObject("{}");
    JSONProcessingData data;
    data.pObj = json.get();

    const ProcessingData result = sut.convertProcessingData(data, 42);

    EXPECT_EQ(result.xObjId, 42);
    EXPECT_TRUE(result.values.isNull());
    EXPECT_EQ(result.orgJsonObj, json.get());
}

TEST_F(MappingServiceJSONDataCacheTest, ConvertingLeavesClearedCellsOutWithADebugLine)
{
    XObject::Ptr car = carCopy();
    car->getValue("brand")->clear();
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["brand"] = car->getValue("brand");
    (*data.pExtractionMap)["seats"] = car->getValue("seats");
    LogCapture capture;

    const ProcessingData result = sut.convertProcessingData(data, carId);

    EXPECT_EQ(
        capture.lines(),
        Lines{
            "Debug: MappingServiceJSONDataCache::convertProcessingData: ignore empty attribute value brand"});
    ASSERT_FALSE(result.values.isNull());
    ASSERT_EQ(result.values->size(), 1U);
    EXPECT_EQ(result.values->at("seats")->getName(), "seats");
    EXPECT_EQ(result.values->at("seats")->parent(), carId);
    EXPECT_EQ(ServiceDB::Test::toJson(result.values->at("seats")->getValueBase()->toJSON(0)), "4");
    EXPECT_EQ(result.orgJsonObj, nullptr);
}

TEST_F(MappingServiceJSONDataCacheTest, ConvertingAnEmptyCellEntryThrowsNullPointerWithText)
{
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["seats"] = nullptr;

    try
    {
        sut.convertProcessingData(data, carId);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& error)
    {
        EXPECT_EQ(error.message(), "Can not convert invalid attribute value list");
    }
}

TEST_F(MappingServiceJSONDataCacheTest, ConvertingACellThatHasNoTypedFormThrowsDataExceptionWithText)
{
    XObject::Ptr car = carCopy();
    car->getValue("tags")->setValue(Var(AttributeValue::ValueArrayPtr()), false);
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["tags"] = car->getValue("tags");

    try
    {
        sut.convertProcessingData(data, carId);
        FAIL() << "no exception";
    }
    catch (const Poco::DataException& error)
    {
        EXPECT_EQ(error.message(), "Failed to convert DBData attribute to Orvi::Data::Attribute");
    }
}

TEST_F(MappingServiceJSONDataCacheTest, ProcessingFromTheHandlerCallsNoHandlerOperation)
{
    XObject::Ptr car = carCopy();
    car->getValue("seats")->setValue(Var(Poco::Int64(3)), false);
    JSONProcessingData data;
    data.pExtractionMap = new JSONExtractionMap_t;
    (*data.pExtractionMap)["seats"] = car->getValue("seats");

    const auto result = sut.processAttributeValuesInputIPC(IPC, "fleet", "cars", *car, data);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(describe(sut.selectXObject(CAR, 0)->getValue("seats")->getValue()), "3");
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheTest, TheHandlerGetsNoValuesWhenTheInputHadNoCells)
{
    XObject::Ptr car = carCopy();
    JSONProcessingData data;

    const auto result =
        sut.processAttributeValuesInputUserToMapper(POST_ON_ELEMENT, "fleet", "cars", *car, data);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(handler.lines(),
              Lines{"updateToMapper fleet.cars " + CAR + " #" + std::to_string(carId) + " - json=-"});
}

TEST_F(MappingServiceJSONDataCacheTest, ANewObjectWithoutChangedCellsIsToldToTheHandlerWithoutValues)
{
    XObject::Ptr car = carCopy();
    JSONProcessingData data;

    const auto result =
        sut.processAttributeValuesInputUserToDB(POST_ON_RESOURCE, "fleet", "cars", *car, data);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(handler.lines(),
              Lines{"updateToDb fleet.cars " + CAR + " #" + std::to_string(carId) + " - json=-"});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

} // namespace
