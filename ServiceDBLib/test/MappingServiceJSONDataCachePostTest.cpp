#include "Mapping/MappingServiceJSONDataCache.h"

#include "MappingServiceJSONDataCacheHttpFixture.h"
#include "OperationResult.h"
#include "RecordingDataHandler.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"
#include "VersionCheck.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <Poco/Message.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::DBData::XObject;
using Orvi::Mapping::MappingServiceJSONDataCache;
using Orvi::Mapping::OperationResult;
using Poco::Net::HTTPRequest;
using Poco::Net::HTTPResponse;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::RecordingDataHandler;
using ServiceDB::Test::Fleet::FLEET_PORT;
using ServiceDB::Test::Fleet::GARAGE_PORT;
using Lines = std::vector<std::string>;

class MappingServiceJSONDataCachePostTest : public ServiceDB::Test::MappingServiceJSONDataCacheHttpFixture
{
protected:
    HTTPResponse::HTTPStatus post(const std::string& uri, const std::string& body,
                                  Poco::UInt16 port = FLEET_PORT, const std::string& accept = "")
    {
        return send(&MappingServiceJSONDataCache::updatePOSTCache, HTTPRequest::HTTP_POST, uri, body, port,
                    accept);
    }

    std::string idOf(const std::string& uuid)
    {
        return std::to_string(sut.selectXObject(uuid, 0)->getDBID());
    }

    // The handler refuses the n-th call of updateToMapper, counted from one, and accepts the others.
    void refuseUpdateToMapperCall(int refused)
    {
        handler.onCall = [this, refused, count = 0](const RecordingDataHandler::Call& call) mutable
        {
            if (call.operation == "updateToMapper")
            {
                handler.updateToMapperResult =
                    ++count == refused ? OperationResult::ErrorOnUpdate : OperationResult::ObjectUpdated;
            }
        };
    }

    const std::string CAR_BEFORE = carText(CAR, "\"saab\"", "4");
    const std::string VAN_BEFORE = carText(VAN, "\"ford\"", "2");
};

// ---- the success body ----

TEST(MappingServiceJSONDataCacheSuccessBodyTest, TheSuccessBodyHasOneBlankAroundEveryToken)
{
    EXPECT_EQ(MappingServiceJSONDataCache::jsonDataOk, "{ \"status\" : \"ok\" }");
}

// ---- rejection before the body is read ----

TEST_F(MappingServiceJSONDataCachePostTest, AnotherMethodThanPostIsAnInternalError)
{
    LogCapture capture;

    const auto status = send(&MappingServiceJSONDataCache::updatePOSTCache, HTTPRequest::HTTP_GET,
                             "/fleet/cars/" + CAR, R"({"seats": 5})", FLEET_PORT, "");

    EXPECT_EQ(status, HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{"Error: Invalid processing routine for request of type GET"});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCachePostTest, AnInvalidAddressIsABadRequestWithoutLog)
{
    LogCapture capture;

    const auto status = post("/fleet/cars/" + CAR + "/extra", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnTheRootIsForbidden)
{
    LogCapture capture;

    const auto status = post("/", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), Lines{"Error: POST on / denied"});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAServiceIsForbidden)
{
    LogCapture capture;

    const auto status = post("/fleet", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), Lines{"Error: POST on /fleet denied"});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCachePostTest, AnUnknownServiceIsNotFound)
{
    LogCapture capture;

    const auto status = post("/trucks/cars", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: POST on /trucks/cars", "Warning: Selection of Service \"/trucks\" failed."}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCachePostTest, AResourceWithoutElementIsNotFound)
{
    LogCapture capture;

    const auto status = post("/fleet/noelement", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), (Lines{"Debug: POST on /fleet/noelement",
                                      "Warning: Selection of Resource \"/fleet/noelement/\" failed."}));
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCachePostTest, AnUnknownResourceRaisesNullPointerWhileTheAddressIsResolved)
{
    EXPECT_THROW(post("/fleet/trucks", R"({"seats": 5})"), Poco::NullPointerException);
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCachePostTest, AnotherPortThanTheServicesIsNotFoundWithoutParsingTheBody)
{
    LogCapture capture;

    const auto status = post("/fleet/cars/" + CAR, "not json", GARAGE_PORT);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), (Lines{"Debug: POST on /fleet/cars/" + CAR,
                                      "Error: POST on /fleet/cars/" + CAR + " using the wrong port 8091"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCachePostTest,
       AVersionThatDoesNotMatchIsAnswered200WithTheFixedTextEvenForAnInvalidBody)
{
    setFleetVersion("1.0.0");

    const auto status = post("/fleet/cars/" + CAR, "not json", FLEET_PORT, acceptVersion("2.0.0"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), Orvi::Service::VersionCheck::msgVersionNotImplemented);
    EXPECT_EQ(response.getMimetype(), "text/plain");
    EXPECT_TRUE(response.getJsonMsg().isNull());
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCachePostTest, AMatchingVersionIsPosted)
{
    setFleetVersion("1.0.2");

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 5})", FLEET_PORT, acceptVersion("1.0.1"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
}

TEST_F(MappingServiceJSONDataCachePostTest, ARequestWithoutBodyIsABadRequest)
{
    LogCapture capture;

    const auto status = post("/fleet/cars/" + CAR, "");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), (Lines{"Debug: POST on /fleet/cars/" + CAR, "Error: POST body invalid",
                                      "Debug: POST body:\t"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCachePostTest, ABodyThatIsNotAJSONObjectIsABadRequest)
{
    LogCapture capture;

    const auto status = post("/fleet/cars", "[1, 2]");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: POST on /fleet/cars", "Error: POST body invalid", "Debug: POST body:\t[1, 2]"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCachePostTest, AKeywordAddressIsABadRequest)
{
    LogCapture capture;

    const auto status = post("/fleet/cars/$id", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), (Lines{"Debug: POST on /fleet/cars/%24id", "Trace: POST body:\t{\"seats\": 5}",
                                      "Warning: Failed to process POST"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

// ---- POST on an object ----

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectHandsTheChangeToTheHandlerWithoutStoringIt)
{
    LogCapture capture;

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(response.getLocation(), "");
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: POST on /fleet/cars/" + CAR, "Trace: POST body:\t{\"seats\": 5}"}));
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "addToMapperCache fleet " + CAR + " {seats=5}",
                     "updateToMapper fleet.cars " + CAR + " #" + std::to_string(carId) +
                         " {seats=5} json={\"seats\":5}"}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectWithUnchangedValuesStillAsksTheHandlerWithoutValues)
{
    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 4})");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "updateToMapper fleet.cars " + CAR + " #" +
                                                   std::to_string(carId) + " - json={\"seats\":4}"}));
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectAcceptedForLaterProcessingIs202)
{
    handler.updateToMapperResult = OperationResult::ObjectProcessed;

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_ACCEPTED);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectStoresPostedReferencesWhenTheHandlerAccepts)
{
    const auto status =
        post("/fleet/cars/" + CAR, R"({"driver": "/fleet/people/)" + ADA + R"(", "seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(stored(CAR), "brand=\"saab\" driver=<\"/fleet/people/" + ADA + "\"> id=\"" + CAR +
                               "\" loads=null mileage=null name=\"\" passengers=null seats=4 tags=null "
                               "uri=\"/fleet/cars/" +
                               CAR + "\"");
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnUnknownObjectIsForbidden)
{
    LogCapture capture;

    const auto status = post("/fleet/cars/" + UNKNOWN, R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(
        capture.lines(),
        (Lines{"Debug: POST on /fleet/cars/" + UNKNOWN, "Trace: POST body:\t{\"seats\": 5}",
               "Warning: Can not find XObject with UUID " + UNKNOWN, "Error: No attribute values found."}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectWithoutElementRulesIsForbidden)
{
    setCarRules({});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), Lines{"Error: No endpoints found."});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectWithAForbiddenAttributeIsForbiddenWithoutBody)
{
    setCarRules({rule(true, false, true), carAttributeRule("brand", true, false)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(),
              (Lines{"Warning: Write operation denied! Request contains updates for forbidden attributes",
                     "Warning: updatePOSTCache on resource: access denied by endpoints"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectWithoutARequiredAttributeIsABadRequestWithoutBody)
{
    setCarRules({carAttributeRule("brand", true, false, true), carAttributeRule("seats", true, false)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Write operation denied! Missing attribute brand",
                                      "Warning: updatePOSTCache on resource: access denied by endpoints"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectWithAnInvalidValueIsABadRequest)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": "many"})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(
        capture.lines(),
        (Lines{
            "Error: Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
            "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime exception: "
            "Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
            "Error: processJSONValues: (3) Failed to update attribute seats "
            "(fleet.cars.car) with invalid value"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAnObjectRefusedByTheHandlerIsABadRequest)
{
    handler.updateToMapperResult = OperationResult::ErrorOnUpdate;
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Update fleet.cars." + CAR + " via IPC failed."});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCachePostTest, AServiceErrorOfTheHandlerOnAnObjectIsABadRequest)
{
    handler.updateToMapperResult = OperationResult::ServiceErrorOnUpdate;

    const auto status = post("/fleet/cars/" + CAR, R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_FALSE(response.hasContent());
}

// ---- POST on a resource: a new object ----

TEST_F(MappingServiceJSONDataCachePostTest, PostOnAResourceCreatesTheObjectAndAnswers201WithItsLocation)
{
    setCarsResourceRules({rule(false, true, false)});
    LogCapture capture(Poco::Message::PRIO_DEBUG);

    const auto status = post("/fleet/cars", R"({"brand": "kia", "seats": 7})");

    ASSERT_EQ(handler.calls().size(), 2U);
    const std::string created = handler.calls()[1].uuid;
    EXPECT_EQ(status, HTTPResponse::HTTP_CREATED);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(response.getLocation(), "/fleet/cars/" + created);
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: POST on /fleet/cars",
                     "Debug: Attribute update successful (brand,0 - XObj: " + created + ")",
                     "Debug: Attribute update successful (seats,1 - XObj: " + created + ")"}));
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "updateToDb fleet.cars " + created + " #" + idOf(created) +
                                                   " {brand=\"kia\", seats=7} "
                                                   "json={\"brand\":\"kia\",\"seats\":7}"}));
    EXPECT_EQ(stored(created), carText(created, "\"kia\"", "7"));
    EXPECT_EQ(storedUuids("cars").size(), 3U);
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectAcceptedForLaterProcessingIsCreatedToo)
{
    setCarsResourceRules({rule(false, true, false)});
    handler.updateToDbResult = OperationResult::ObjectProcessed;

    const auto status = post("/fleet/cars", R"({"seats": 7})");

    EXPECT_EQ(status, HTTPResponse::HTTP_CREATED);
    EXPECT_EQ(storedUuids("cars").size(), 3U);
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectWithoutValuesIsRemovedAgainAndAnswered500)
{
    setCarsResourceRules({rule(false, true, false)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars", "{}");

    EXPECT_EQ(status, HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(
        capture.lines(),
        (Lines{"Warning: Unexpected result form processJSONValues : ObjectUnchanged",
               "Error: Failed to initialise newly created XObject. Incomplete XObject will be removed."}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectRefusedByTheHandlerIsRemovedAgainAndAnswered400)
{
    setCarsResourceRules({rule(false, true, false)});
    handler.updateToDbResult = OperationResult::ErrorOnUpdate;
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars", R"({"seats": 7})");

    ASSERT_EQ(handler.calls().size(), 2U);
    const std::string created = handler.calls()[1].uuid;
    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(
        capture.lines(),
        (Lines{"Warning: Update fleet.cars." + created + " via IPC failed.",
               "Error: (1) Update of 1 attribute values failed.",
               "Error: Failed to initialise newly created XObject. Incomplete XObject will be removed."}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectThatTheHandlerCallsCreatedIsRemovedAgainAndAnswered400)
{
    setCarsResourceRules({rule(false, true, false)});
    handler.updateToDbResult = OperationResult::ObjectCreated;

    const auto status = post("/fleet/cars", R"({"seats": 7})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectWithAnInvalidValueIsRemovedAgainAndAnswered400)
{
    setCarsResourceRules({rule(false, true, false)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars", R"({"seats": "many"})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(
        capture.lines(),
        (Lines{
            "Error: Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
            "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime exception: "
            "Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
            "Error: processJSONValues: (1) Failed to update attribute seats (fleet.cars.car) with "
            "invalid value",
            "Error: Failed to initialise newly created XObject. Incomplete XObject will be removed."}));
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectWithoutARequiredAttributeIsABadRequestWithAnErrorBody)
{
    sut.selectResource("fleet", "cars")
        ->setEndpoints(
            {carAttributeRule("brand", true, false, true), carAttributeRule("seats", true, false)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars", R"({"seats": 7})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(ServiceDB::Test::toJson(response.getJsonMsg()),
              R"json({"code":400,"message":"POST is invalid (missing attribute)","status":"error"})json");
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Write operation denied! Missing attribute brand",
                                      "Warning: updatePOSTCache on resource: access denied by endpoints"}));
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectWithAForbiddenAttributeIsForbiddenWithAnErrorBody)
{
    sut.selectResource("fleet", "cars")->setEndpoints({carAttributeRule("brand", true, false)});

    const auto status = post("/fleet/cars", R"({"seats": 7})");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(
        ServiceDB::Test::toJson(response.getJsonMsg()),
        R"json({"code":403,"message":"POST is not allowed (forbidden attribute)","status":"error"})json");
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectOnAResourceWithoutRulesIsForbiddenWithAnErrorBody)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars", R"({"seats": 7})");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(ServiceDB::Test::toJson(response.getJsonMsg()),
              R"json({"code":403,"message":"POST is not allowed on this resource","status":"error"})json");
    EXPECT_EQ(capture.lines(), Lines{"Warning: updatePOSTCache on resource: access denied by endpoints"});
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ANewObjectThatCannotBeInsertedIsAnInternalError)
{
    setCarsResourceRules({rule(false, true, false)});
    // The service goes away between the look-up of the address and the insertion.
    handler.onCall = [this](const RecordingDataHandler::Call&) { sut.deleteAllServicesWithName("fleet"); };
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars", R"({"seats": 7})");

    EXPECT_EQ(status, HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{"Error: Tried to insert XObject for unknown element type"});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
}

// ---- POST on a resource with a query: the batch ----

TEST_F(MappingServiceJSONDataCachePostTest, ABatchPutsAllObjectsIntoTheMapperCacheBeforeHandingThemOver)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars?seats=%25", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "addToMapperCache fleet " + CAR + " {seats=5}",
                     "addToMapperCache fleet " + VAN + " {seats=5}",
                     "updateToMapper fleet.cars " + CAR + " #" + std::to_string(carId) +
                         " {seats=5} json={\"seats\":5}",
                     "updateToMapper fleet.cars " + VAN + " #" + std::to_string(vanId) +
                         " {seats=5} json={\"seats\":5}"}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
    EXPECT_EQ(stored(VAN), VAN_BEFORE);
}

TEST_F(MappingServiceJSONDataCachePostTest, ABatchChangesOnlyTheObjectsThatTheQuerySelects)
{
    const auto status = post("/fleet/cars?brand=ford", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "addToMapperCache fleet " + VAN + " {seats=5}",
                     "updateToMapper fleet.cars " + VAN + " #" + std::to_string(vanId) +
                         " {seats=5} json={\"seats\":5}"}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ABatchInWhichOneObjectWasOnlyAcceptedAnswers202)
{
    handler.onCall = [this](const RecordingDataHandler::Call& call)
    {
        if (call.operation == "updateToMapper")
        {
            handler.updateToMapperResult =
                call.uuid == CAR ? OperationResult::ObjectProcessed : OperationResult::ObjectUpdated;
        }
    };

    const auto status = post("/fleet/cars?$limit=10", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_ACCEPTED);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
}

TEST_F(MappingServiceJSONDataCachePostTest, ABatchWhoseQueryMatchesNothingIsNotFound)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars?brand=opel", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Failed to select elements of resource \"/fleet/cars"});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCachePostTest, ABatchWhoseFilterKeepsNoObjectIsABadRequest)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars?$limit=0", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), (Lines{"clearMapperCache fleet", "clearMapperCache fleet"}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ABatchOfObjectsThatCannotBeRenderedIsAnInternalError)
{
    std::string hollow = UNKNOWN;
    ASSERT_TRUE(sut.insertXObject("fleet", "hollow", hollow));
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/hollow?$limit=10", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{"Error: Failed to transform xobject collection to json array"});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCachePostTest, ABatchRefusedByTheRulesIsForbiddenAndItsBackupIsRefusedToo)
{
    setCarRules({rule(true, false, true)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars?brand=ford", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(),
              (Lines{"Warning: Write operation denied! Request contains updates for forbidden attributes",
                     "Warning: updatePOSTCache on resource: access denied by endpoints",
                     "Warning: Write operation denied! Request contains updates for forbidden attributes",
                     "Warning: updatePOSTCache on resource: access denied by endpoints",
                     "Error: Failed to apply backup to revert previous change for XObject " + VAN}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), (Lines{"clearMapperCache fleet", "clearMapperCache fleet"}));
}

TEST_F(MappingServiceJSONDataCachePostTest, ABatchRefusedByTheHandlerForTheSecondOfThreePostsAllOfThemBack)
{
    insert("cars", BUS);
    store(BUS, "brand", std::string("man"));
    store(BUS, "seats", Poco::Int64(40));
    const std::string busId = idOf(BUS);
    refuseUpdateToMapperCall(2);
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars?$limit=10", R"({"seats": 5})");

    const std::string car = "#" + std::to_string(carId);
    const std::string van = "#" + std::to_string(vanId);
    const auto backup = [](const std::string& uuid, const std::string& brand, const std::string& seats)
    {
        return "json={\"brand\":\"" + brand + "\",\"id\":\"" + uuid + "\",\"name\":\"\",\"seats\":" + seats +
               ",\"uri\":\"/fleet/cars/" + uuid + "\"}";
    };
    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(capture.lines(), Lines{"Warning: Update fleet.cars." + VAN + " via IPC failed."});
    EXPECT_EQ(
        handler.lines(),
        (Lines{"clearMapperCache fleet", "addToMapperCache fleet " + CAR + " {seats=5}",
               "addToMapperCache fleet " + VAN + " {seats=5}", "addToMapperCache fleet " + BUS + " {seats=5}",
               "updateToMapper fleet.cars " + CAR + " " + car + " {seats=5} json={\"seats\":5}",
               "updateToMapper fleet.cars " + VAN + " " + van + " {seats=5} json={\"seats\":5}",
               "clearMapperCache fleet", "addToMapperCache fleet " + CAR + " {seats=4}",
               "updateToMapper fleet.cars " + CAR + " " + car + " {seats=4} " + backup(CAR, "saab", "4"),
               "addToMapperCache fleet " + VAN + " {seats=2}",
               "updateToMapper fleet.cars " + VAN + " " + van + " {seats=2} " + backup(VAN, "ford", "2"),
               "addToMapperCache fleet " + BUS + " {seats=40}",
               "updateToMapper fleet.cars " + BUS + " #" + busId + " {seats=40} " +
                   backup(BUS, "man", "40")}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
    EXPECT_EQ(stored(VAN), VAN_BEFORE);
    EXPECT_EQ(stored(BUS), carText(BUS, "\"man\"", "40"));
}

TEST_F(MappingServiceJSONDataCachePostTest, AFailedRevertIsLoggedAndTheFirstFailureIsAnswered)
{
    handler.updateToMapperResult = OperationResult::ErrorOnUpdate;
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = post("/fleet/cars?brand=ford", R"({"seats": 5})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(),
              (Lines{"Warning: Update fleet.cars." + VAN + " via IPC failed.",
                     "Warning: Update fleet.cars." + VAN + " via IPC failed.",
                     "Error: Failed to apply backup to revert previous change for XObject " + VAN}));
    EXPECT_FALSE(response.hasContent());
}

} // namespace
