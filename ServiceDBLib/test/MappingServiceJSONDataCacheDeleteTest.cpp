#include "Mapping/MappingServiceJSONDataCache.h"

#include "FleetServiceMap.h"
#include "MappingServiceJSONDataCacheHttpFixture.h"
#include "OperationResult.h"
#include "RecordingDataHandler.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"
#include "VersionCheck.h"

#include <Poco/Exception.h>
#include <Poco/Message.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Mapping::MappingServiceJSONDataCache;
using Orvi::Mapping::OperationResult;
using Poco::Net::HTTPRequest;
using Poco::Net::HTTPResponse;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::RecordingDataHandler;
using ServiceDB::Test::Fleet::FLEET_PORT;
using ServiceDB::Test::Fleet::GARAGE_PORT;
using Lines = std::vector<std::string>;

const std::string INVALID_QUERY_BODY = R"({"code":400,"message":"invalid query parameter","status":"error"})";

class MappingServiceJSONDataCacheDeleteTest : public ServiceDB::Test::MappingServiceJSONDataCacheHttpFixture
{
protected:
    MappingServiceJSONDataCacheDeleteTest()
    {
        store(CAR, "tags",
              Orvi::DBData::AttributeValue::ValueArrayPtr(
                  new Orvi::DBData::AttributeValue::ValueArray{Poco::Dynamic::Var(std::string("red"))}));
    }

    HTTPResponse::HTTPStatus del(const std::string& uri, Poco::UInt16 port = FLEET_PORT,
                                 const std::string& accept = "", const std::string& body = "")
    {
        return send(&MappingServiceJSONDataCache::updateDELETECache, HTTPRequest::HTTP_DELETE, uri, body,
                    port, accept);
    }

    // The handler answers beforeDeleteObject for each object with the result given for its UUID.
    void answerBeforeDeleteObject(const std::string& uuid, OperationResult::Enum result)
    {
        handler.onCall = [this, uuid, result](const RecordingDataHandler::Call& call)
        {
            if (call.operation == "beforeDeleteObject")
            {
                handler.beforeDeleteObjectResult =
                    call.uuid == uuid ? result : OperationResult::ObjectUpdated;
            }
        };
    }

    void allowDeletingCarAttributes()
    {
        setCarRules({rule(true, true, true), carAttributeRule("brand", false, true),
                     carAttributeRule("mileage", false, true), carAttributeRule("seats", false, true),
                     carAttributeRule("tags", false, true)});
    }

    const std::string CAR_BEFORE = carText(CAR, "\"saab\"", "4", "[\"red\"]");
    const std::string VAN_BEFORE = carText(VAN, "\"ford\"", "2");
};

// ---- addresses that are refused ----

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnInvalidAddressIsABadRequestWithoutLog)
{
    LogCapture capture;

    const auto status = del("/fleet/cars/" + CAR + "/extra");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnUnknownServiceIsNotFound)
{
    LogCapture capture;

    const auto status = del("/trucks/cars/" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Service \"/trucks\" failed."});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AResourceWithoutElementIsNotFound)
{
    LogCapture capture;

    const auto status = del("/fleet/noelement?id=" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Resource \"/fleet/noelement/\" failed."});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnUnknownResourceRaisesNullPointerWhileTheAddressIsResolved)
{
    EXPECT_THROW(del("/fleet/trucks/" + CAR), Poco::NullPointerException);
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, DeleteOnTheRootRaisesNullPointerSoThatTheFrontEndAnswers500)
{
    LogCapture capture;

    EXPECT_THROW(del("/"), Poco::NullPointerException);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_FALSE(response.hasContent());
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, DeleteOnAServiceIsForbidden)
{
    LogCapture capture;

    const auto status = del("/fleet");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), Lines{"Error: DELETE on /fleet denied"});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest,
       AVersionThatDoesNotMatchIsAnswered200WithTheFixedTextEvenOnAService)
{
    setFleetVersion("1.0.0");
    LogCapture capture;

    const auto status = del("/fleet", FLEET_PORT, acceptVersion("2.0.0"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), Orvi::Service::VersionCheck::msgVersionNotImplemented);
    EXPECT_EQ(response.getMimetype(), "text/plain");
    EXPECT_TRUE(response.getJsonMsg().isNull());
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AVersionThatDoesNotMatchDeletesNothing)
{
    setFleetVersion("1.0.0");

    const auto status = del("/fleet/cars/" + CAR, FLEET_PORT, acceptVersion("1.1.0"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), Orvi::Service::VersionCheck::msgVersionNotImplemented);
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AMatchingVersionDeletes)
{
    setFleetVersion("1.0.2");

    const auto status = del("/fleet/cars/" + CAR, FLEET_PORT, acceptVersion("1.0.1"));

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(storedUuids("cars"), Lines{VAN});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AKeywordAddressIsABadRequest)
{
    LogCapture capture;

    const auto status = del("/fleet/cars/$id");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Failed to process DELETE"});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
}

// ---- one object ----

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnObjectIsDeletedWhenTheHandlerAgrees)
{
    LogCapture capture;

    const auto status = del("/fleet/cars/" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: DELETE on /fleet/cars/" + CAR, "Debug: XObject " + CAR + " will be deleted.",
                     "Debug: Deleting XObject - " + CAR + " (" + std::to_string(carId) + ")",
                     "Info: Deleted xobject " + CAR + "."}));
    EXPECT_EQ(handler.lines(), (Lines{"clearMapperCache fleet", "beforeDeleteObject fleet.cars " + CAR,
                                      "afterDeleteObject fleet.cars " + CAR}));
    EXPECT_EQ(storedUuids("cars"), Lines{VAN});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, TheHandlerSeesTheObjectBeforeItIsDeleted)
{
    std::string seen;
    handler.onCall = [&](const RecordingDataHandler::Call& call)
    {
        if (call.operation == "beforeDeleteObject")
        {
            seen = ServiceDB::Test::Fleet::describe(*call.viewed) + " / " + stored(CAR);
        }
    };

    del("/fleet/cars/" + CAR);

    EXPECT_EQ(seen, CAR_BEFORE + " / " + CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnObjectAcceptedForLaterDeletionStaysAndIsAnswered202)
{
    handler.beforeDeleteObjectResult = OperationResult::ObjectProcessed;

    const auto status = del("/fleet/cars/" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_ACCEPTED);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(handler.lines(), (Lines{"clearMapperCache fleet", "beforeDeleteObject fleet.cars " + CAR}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnObjectRefusedByTheHandlerIsABadRequest)
{
    handler.beforeDeleteObjectResult = OperationResult::ErrorOnUpdate;
    LogCapture capture;

    const auto status = del("/fleet/cars/" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: DELETE on /fleet/cars/" + CAR, "Debug: XObject " + CAR + " will be deleted.",
                     "Debug: Delete interrupted by datahandler."}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), (Lines{"clearMapperCache fleet", "beforeDeleteObject fleet.cars " + CAR}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnObjectThatTheStoreFailsToDeleteIsAnInternalError)
{
    // The object vanishes while the handler decides.
    handler.onCall = [this](const RecordingDataHandler::Call& call)
    {
        if (call.operation == "beforeDeleteObject")
        {
            sut.deleteXObject(CAR);
        }
    };
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars/" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Failed to delete XObject " + CAR + ". XObject not found",
                                      "Error: Failed to delete xobject " + CAR + "."}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), (Lines{"clearMapperCache fleet", "beforeDeleteObject fleet.cars " + CAR}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnUnknownObjectIsNotFound)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars/" + UNKNOWN);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Can not find XObject with UUID " + UNKNOWN,
                                      "Error: XObject " + UNKNOWN + " could not be found."}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnObjectOfAnotherResourceIsNotFound)
{
    const auto status = del("/fleet/people/" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnObjectOnAnotherPortIsNotFound)
{
    LogCapture capture;

    const auto status = del("/fleet/cars/" + CAR, GARAGE_PORT);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Error: DELETE on /fleet/cars/" + CAR + " using the wrong port 8091"});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ARequestForOneObjectWithABodyIsABadRequest)
{
    LogCapture capture;

    const auto status = del("/fleet/cars/" + CAR, FLEET_PORT, "", R"({"seats": 4})");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{"Error: DELETE contains message body."});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnObjectWhoseRulesForbidDeletingIsForbidden)
{
    setCarRules({rule(true, true, false), carAttributeRule("brand", false, true)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars/" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Delete operation denied! Element deletion is not allowed",
                                      "Warning: DELETE on element: access denied by endpoints"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnObjectWithoutRulesIsForbidden)
{
    setCarRules({});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars/" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), Lines{"Warning: DELETE on element: access denied by endpoints"});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

// ---- attributes of one object ----

TEST_F(MappingServiceJSONDataCacheDeleteTest, NamedAttributesAreClearedWhenTheHandlerAgrees)
{
    allowDeletingCarAttributes();
    LogCapture capture;

    const auto status = del("/fleet/cars/" + CAR + "?$fields=brand,seats");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(capture.lines(), (Lines{"Debug: DELETE on /fleet/cars/" + CAR + "?$fields=brand,seats",
                                      "Debug: 2 attributes will be deleted.",
                                      "Debug: Attribute update successful (brand,0 - XObj: " + CAR + ")",
                                      "Debug: Deleted xobject attribute " + CAR + "(brand).",
                                      "Debug: Attribute update successful (seats,1 - XObj: " + CAR + ")",
                                      "Debug: Deleted xobject attribute " + CAR + "(seats)."}));
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "beforeDeleteAttributes fleet.cars " + CAR + " [brand,seats]",
                     "afterDeleteAttributes fleet.cars " + CAR + " [brand,seats]"}));
    EXPECT_EQ(stored(CAR), carText(CAR, "null", "null", "[\"red\"]"));
    EXPECT_EQ(stored(VAN), VAN_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, TheHandlerSeesTheObjectWithoutTheDeletedAttributesAfterwards)
{
    allowDeletingCarAttributes();
    Lines seen;
    handler.onCall = [&seen](const RecordingDataHandler::Call& call)
    {
        if (!call.viewed.isNull())
        {
            seen.push_back(call.operation + ": " + ServiceDB::Test::Fleet::describe(*call.viewed));
        }
    };

    del("/fleet/cars/" + CAR + "?$fields=brand,seats");

    EXPECT_EQ(seen, (Lines{"beforeDeleteAttributes: " + CAR_BEFORE,
                           "afterDeleteAttributes: " + carText(CAR, "null", "null", "[\"red\"]")}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnArrayAttributeIsCleared)
{
    allowDeletingCarAttributes();

    const auto status = del("/fleet/cars/" + CAR + "?$fields=tags");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(stored(CAR), carText(CAR, "\"saab\"", "4"));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, DeletingAnAttributeWithoutValueSucceedsWithoutTouchingTheStore)
{
    allowDeletingCarAttributes();
    LogCapture capture;

    const auto status = del("/fleet/cars/" + CAR + "?$fields=mileage");

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(capture.lines(), (Lines{"Debug: DELETE on /fleet/cars/" + CAR + "?$fields=mileage",
                                      "Debug: 1 attributes will be deleted."}));
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "beforeDeleteAttributes fleet.cars " + CAR + " [mileage]",
                     "afterDeleteAttributes fleet.cars " + CAR + " [mileage]"}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AttributesAcceptedForLaterDeletionStayAndAreAnswered202)
{
    allowDeletingCarAttributes();
    handler.beforeDeleteAttributesResult = OperationResult::ObjectProcessed;

    const auto status = del("/fleet/cars/" + CAR + "?$fields=brand");

    EXPECT_EQ(status, HTTPResponse::HTTP_ACCEPTED);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "beforeDeleteAttributes fleet.cars " + CAR + " [brand]"}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AttributesRefusedByTheHandlerAreAnInternalError)
{
    allowDeletingCarAttributes();
    handler.beforeDeleteAttributesResult = OperationResult::ErrorOnUpdate;
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars/" + CAR + "?$fields=brand");

    EXPECT_EQ(status, HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(),
              (Lines{"clearMapperCache fleet", "beforeDeleteAttributes fleet.cars " + CAR + " [brand]"}));
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ADefaultAttributeIsRefusedBeforeTheRulesAreLookedAt)
{
    setCarRules({});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars/" + CAR + "?$fields=seats,name");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{"Error: Can not delete default attribute name."});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AttributesWithoutTheirOwnRulesAreForbidden)
{
    setCarRules({rule(true, true, true), carAttributeRule("brand", false, true)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars/" + CAR + "?$fields=brand,seats");

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    ASSERT_FALSE(capture.lines().empty());
    EXPECT_EQ(capture.lines().back(), "Warning: DELETE on element: access denied by endpoints");
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{"clearMapperCache fleet"});
    EXPECT_EQ(stored(CAR), CAR_BEFORE);
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ListedObjectsOfAResourceAreDeleted)
{
    LogCapture capture;

    const auto status = del("/fleet/cars?id=" + CAR + "," + VAN);

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: DELETE on /fleet/cars?id=" + CAR + "," + VAN,
                     "Debug: XObject " + CAR + " will be deleted.",
                     "Debug: Deleting XObject - " + CAR + " (" + std::to_string(carId) + ")",
                     "Info: Deleted xobject " + CAR + ".", "Debug: XObject " + VAN + " will be deleted.",
                     "Debug: Deleting XObject - " + VAN + " (" + std::to_string(vanId) + ")",
                     "Info: Deleted xobject " + VAN + "."}));
    EXPECT_EQ(handler.lines(),
              (Lines{"beforeDeleteObject fleet.cars " + CAR, "afterDeleteObject fleet.cars " + CAR,
                     "beforeDeleteObject fleet.cars " + VAN, "afterDeleteObject fleet.cars " + VAN}));
    EXPECT_EQ(storedUuids("cars"), Lines{});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ASuccessFollowedByAnUnknownIdIsAnswered200)
{
    const auto status = del("/fleet/cars?id=" + CAR + "," + UNKNOWN);

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(storedUuids("cars"), Lines{VAN});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnUnknownIdFollowedByASuccessIsAnswered200)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars?id=" + UNKNOWN + "," + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Can not find XObject with UUID " + UNKNOWN,
                                      "Error: XObject " + UNKNOWN + " could not be found.",
                                      "Info: Deleted xobject " + CAR + "."}));
    EXPECT_EQ(storedUuids("cars"), Lines{VAN});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AnAcceptedIdFollowedByAFailureIsAnswered202)
{
    handler.onCall = [this](const RecordingDataHandler::Call& call)
    {
        if (call.operation == "beforeDeleteObject")
        {
            handler.beforeDeleteObjectResult =
                call.uuid == CAR ? OperationResult::ObjectProcessed : OperationResult::ErrorOnUpdate;
        }
    };

    const auto status = del("/fleet/cars?id=" + CAR + "," + VAN);

    EXPECT_EQ(status, HTTPResponse::HTTP_ACCEPTED);
    EXPECT_EQ(response.getTextMsg(), MappingServiceJSONDataCache::jsonDataOk);
    EXPECT_EQ(handler.lines(),
              (Lines{"beforeDeleteObject fleet.cars " + CAR, "beforeDeleteObject fleet.cars " + VAN}));
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ASuccessFollowedByAnAcceptedIdIsAnswered202)
{
    answerBeforeDeleteObject(VAN, OperationResult::ObjectProcessed);

    const auto status = del("/fleet/cars?id=" + CAR + "," + VAN);

    EXPECT_EQ(status, HTTPResponse::HTTP_ACCEPTED);
    EXPECT_EQ(storedUuids("cars"), Lines{VAN});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AFailureFollowedByARefusalIsAnsweredWithTheLastResult)
{
    answerBeforeDeleteObject(VAN, OperationResult::ErrorOnUpdate);

    const auto status = del("/fleet/cars?id=" + UNKNOWN + "," + VAN);

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, OnlyUnknownIdsAreNotFound)
{
    const std::string other = "88888888-8888-4888-8888-888888888888";

    const auto status = del("/fleet/cars?id=" + UNKNOWN + "," + other);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, AResourceWithoutIdListIsABadRequestWithoutBody)
{
    LogCapture capture;

    const auto status = del("/fleet/cars");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: DELETE on /fleet/cars",
                     "Error: DELETE on resource level requires list of ids of elements to be deleted"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, IdsTogetherWithAFieldSelectionAreAnInvalidQuery)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars?id=" + CAR + "&$fields=brand");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(capture.lines(), Lines{"Error: DELETE denied - invalid query parameter"});
    EXPECT_EQ(ServiceDB::Test::toJson(response.getJsonMsg()), INVALID_QUERY_BODY);
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, IdsTogetherWithAFreeTextSearchAreAnInvalidQuery)
{
    const auto status = del("/fleet/cars?id=" + CAR + "&$q=saab");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(ServiceDB::Test::toJson(response.getJsonMsg()), INVALID_QUERY_BODY);
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ASearchOnAnotherAttributeThanTheIdIsAnInvalidQuery)
{
    const auto status = del("/fleet/cars?brand=saab");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(ServiceDB::Test::toJson(response.getJsonMsg()), INVALID_QUERY_BODY);
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, IdsTogetherWithAnotherAttributeSearchAreAnInvalidQuery)
{
    const auto status = del("/fleet/cars?id=" + CAR + "&brand=saab");

    EXPECT_EQ(status, HTTPResponse::HTTP_BAD_REQUEST);
    EXPECT_EQ(ServiceDB::Test::toJson(response.getJsonMsg()), INVALID_QUERY_BODY);
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ListedObjectsOnAnotherPortAreNotFound)
{
    LogCapture capture;

    const auto status = del("/fleet/cars?id=" + CAR, GARAGE_PORT);

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: DELETE on /fleet/cars?id=" + CAR,
                     "Error: DELETE on /fleet/cars?id=" + CAR + " using the wrong port 8091"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ListedObjectsWithoutElementRulesAreForbidden)
{
    setCarRules({});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars?id=" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), Lines{"Error: No endpoints found."});
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, ListedObjectsWhoseRulesForbidDeletingAreForbidden)
{
    setCarRules({rule(true, true, false)});
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const auto status = del("/fleet/cars?id=" + CAR);

    EXPECT_EQ(status, HTTPResponse::HTTP_FORBIDDEN);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Delete operation denied! Element deletion is not allowed",
                                      "Warning: Batch-DELETE: access denied by endpoints"}));
    EXPECT_FALSE(response.hasContent());
    EXPECT_EQ(handler.lines(), Lines{});
    EXPECT_EQ(storedUuids("cars"), (Lines{CAR, VAN}));
}

// ---- the internal step on its own ----

TEST_F(MappingServiceJSONDataCacheDeleteTest, TheInternalStepDoesNotLookAtTheRules)
{
    setCarRules({});

    const auto status = sut.updateDELETECacheInternal("fleet", "cars", CAR, {});

    EXPECT_EQ(status, HTTPResponse::HTTP_OK);
    EXPECT_EQ(handler.lines(),
              (Lines{"beforeDeleteObject fleet.cars " + CAR, "afterDeleteObject fleet.cars " + CAR}));
    EXPECT_EQ(storedUuids("cars"), Lines{VAN});
}

TEST_F(MappingServiceJSONDataCacheDeleteTest, TheInternalStepFindsObjectsOnlyInTheirOwnResource)
{
    LogCapture capture;

    const auto status = sut.updateDELETECacheInternal("fleet", "people", CAR, {});

    EXPECT_EQ(status, HTTPResponse::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Can not find element fleet/people/" + CAR,
                                      "Error: XObject " + CAR + " could not be found."}));
    EXPECT_EQ(handler.lines(), Lines{});
}

} // namespace
