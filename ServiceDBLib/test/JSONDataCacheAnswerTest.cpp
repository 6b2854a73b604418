#include "JSONDataCache/JSONDataCache.h"

#include "Command/HttpResponse.h"
#include "Command/WebSocketResponseObject.h"
#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/XObject.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Stringifier.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace
{

using Orvi::Command::HttpResponse;
using Orvi::Command::WebSocketResponseObject;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::DbId;
using Orvi::DBData::ServiceMap;
using Orvi::DBData::XObject;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::Fleet::FLEET_PORT;
using ServiceDB::Test::Fleet::GARAGE_PORT;
using ServiceDB::Test::Fleet::InspectableCache;
using ServiceDB::Test::Fleet::makeFleet;
using ServiceDB::Test::Fleet::makeRequest;
using Status = Poco::Net::HTTPResponse::HTTPStatus;
using Lines = std::vector<std::string>;

const std::string JSON_MIMETYPE = "application/json; charset=utf-8";

const std::string CAR_1 = "c0000000-0000-4000-8000-000000000003";
const std::string CAR_2 = "c0000000-0000-4000-8000-000000000002";
const std::string CAR_3 = "c0000000-0000-4000-8000-000000000001";
const std::string PERSON_1 = "b0000000-0000-4000-8000-000000000001";
const std::string PERSON_2 = "b0000000-0000-4000-8000-000000000002";
const std::string HOLLOW_1 = "a0000000-0000-4000-8000-000000000001";
const std::string UNKNOWN = "e0000000-0000-4000-8000-000000000009";

std::string uriOf(const std::string& resource, const std::string& uuid)
{
    return "/fleet/" + resource + "/" + uuid;
}

// An object reduced to the attributes that survive past the expansion level.
std::string reduced(const std::string& resource, const std::string& uuid, const std::string& name)
{
    return "{\"id\":\"" + uuid + "\",\"name\":\"" + name + "\",\"uri\":\"" + uriOf(resource, uuid) + "\"}";
}

const std::string PERSON_1_FULL =
    "{\"age\":41,\"id\":\"" + PERSON_1 + "\",\"name\":\"Ann\",\"uri\":\"" + uriOf("people", PERSON_1) + "\"}";
const std::string PERSON_1_REDUCED = reduced("people", PERSON_1, "Ann");
const std::string PERSON_2_REDUCED = reduced("people", PERSON_2, "Bo");

std::string car1(const std::string& driver, const std::string& passengers)
{
    return "{\"brand\":\"Volvo\",\"driver\":" + driver + ",\"id\":\"" + CAR_1 +
           "\",\"name\":\"\",\"passengers\":" + passengers + ",\"seats\":5,\"uri\":\"" +
           uriOf("cars", CAR_1) + "\"}";
}

const std::string CAR_1_RENDERED =
    car1(PERSON_1_REDUCED, "[" + PERSON_1_REDUCED + "," + PERSON_2_REDUCED + "]");
const std::string CAR_2_RENDERED = "{\"brand\":\"Volvo XC\",\"id\":\"" + CAR_2 +
                                   "\",\"name\":\"\",\"seats\":7,\"uri\":\"" + uriOf("cars", CAR_2) + "\"}";
const std::string CAR_3_RENDERED = "{\"brand\":\"Saab\",\"id\":\"" + CAR_3 +
                                   "\",\"name\":\"\",\"seats\":5,\"uri\":\"" + uriOf("cars", CAR_3) + "\"}";

std::string stringify(const Poco::JSON::Object::Ptr& object)
{
    std::ostringstream out;
    Poco::JSON::Stringifier::stringify(object, out);
    return out.str();
}

bool isUntouched(const HttpResponse& response)
{
    return response.getMimetype().empty() && !response.hasContent();
}

class JSONDataCacheAnswerTest : public testing::Test
{
protected:
    void insert(const std::string& resource, const std::string& uuid)
    {
        std::string newUUID = uuid;
        ASSERT_TRUE(sut.insertXObject("fleet", resource, newUUID)) << resource << " " << uuid;
    }

    void write(const std::string& uuid, const std::string& attribute, const Var& value)
    {
        XObject::Ptr copy = sut.selectXObject(uuid, -1);
        AttributeValuePtr cell = copy->getValue(attribute);
        cell->setValue(value, false);
        ASSERT_TRUE(sut.updateCacheAttributeValueById(*cell, true)) << attribute;
    }

    // Three cars and two people; the first car is driven by the first person and carries both.
    void addFleet()
    {
        insert("cars", CAR_1);
        insert("cars", CAR_2);
        insert("cars", CAR_3);
        insert("people", PERSON_1);
        insert("people", PERSON_2);
        write(CAR_1, "brand", Var("Volvo"));
        write(CAR_1, "seats", Var(5));
        write(CAR_2, "brand", Var("Volvo XC"));
        write(CAR_2, "seats", Var(7));
        write(CAR_3, "brand", Var("Saab"));
        write(CAR_3, "seats", Var(5));
        write(PERSON_1, "age", Var(41));
        write(PERSON_1, "name", Var("Ann"));
        write(PERSON_2, "name", Var("Bo"));
        write(CAR_1, "driver", Var(Poco::URI(uriOf("people", PERSON_1))));
        write(CAR_1, "passengers",
              Var(AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray(
                  {Var(uriOf("people", PERSON_1)), Var(uriOf("people", PERSON_2))}))));
    }

    Status query(const std::string& address, Poco::UInt16 port = FLEET_PORT)
    {
        return sut.queryCache(makeRequest(address), response, port);
    }

    Status subscribe(const std::string& address, Poco::UInt16 port = FLEET_PORT)
    {
        return sut.queryCache(makeRequest(address), wsResponse, port);
    }

    std::string body() const { return stringify(response.getJsonMsg()); }

    ServiceMap services = makeFleet();
    InspectableCache sut{services};
    HttpResponse response;
    WebSocketResponseObject wsResponse;
};

TEST_F(JSONDataCacheAnswerTest, AnswersAResourceWithItsObjectsByAscendingId)
{
    addFleet();
    LogCapture capture;

    const Status status = query("/fleet/cars");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(body(), "{\"data\":[" + CAR_1_RENDERED + "," + CAR_2_RENDERED + "," + CAR_3_RENDERED +
                          "],\"status\":\"ok\"}");
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheAnswerTest, AnswersAResourceWithoutObjectsWithAnEmptyArrayThatIsNotPaged)
{
    LogCapture capture;

    const Status status = query("/fleet/cars?$limit=1");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(), "{\"data\":[],\"status\":\"ok\"}");
    EXPECT_EQ(capture.lines(),
              Lines{"Info: Selection of Elements for Resource \"/fleet/cars/\" returned 0 results."});
}

TEST_F(JSONDataCacheAnswerTest, AnswersAResourceWithTheObjectsThatMatchItsSearch)
{
    addFleet();

    const Status status = query("/fleet/cars?brand=Volvo%25");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(), "{\"data\":[" + CAR_1_RENDERED + "," + CAR_2_RENDERED + "],\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheAnswerTest, AnswersASearchWithoutMatchesWithAnEmptyArrayAndNoInfoLine)
{
    addFleet();
    LogCapture capture;

    const Status status = query("/fleet/cars?brand=Trabant");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(), "{\"data\":[],\"status\":\"ok\"}");
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheAnswerTest, PagesTheObjectsOfAResource)
{
    addFleet();

    const Status status = query("/fleet/cars?$limit=2");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(),
              "{\"data\":[" + CAR_1_RENDERED + "," + CAR_2_RENDERED +
                  "],\"paging\":{\"limit\":2,\"next\":\"/fleet/cars?$limit=2&$offset=2\",\"offset\":0,"
                  "\"total\":3,\"totalPages\":2},\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheAnswerTest, RendersReferencesFullyAtLevelOne)
{
    addFleet();

    const Status status = query("/fleet/cars?brand=Volvo&$expand=1");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(), "{\"data\":[" +
                          car1(PERSON_1_FULL, "[" + PERSON_1_FULL + "," + PERSON_2_REDUCED + "]") +
                          "],\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheAnswerTest, FailsAResourceQueryWhenOneObjectHasNoValues)
{
    addFleet();
    insert("hollow", HOLLOW_1);
    LogCapture capture;

    const Status status = query("/fleet/hollow");

    EXPECT_EQ(status, Status::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{"Error: Failed to transform Resource query to Response: Exception"});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheAnswerTest, FailsAResourceQueryWhoseSearchIsNoPattern)
{
    addFleet();
    LogCapture capture;

    const Status status = query("/fleet/cars?brand=Vol(vo");

    EXPECT_EQ(status, Status::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(),
              Lines{"Error: Failed to transform Resource query to Response: Error in regular expression"});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheAnswerTest, AnswersAnObject)
{
    addFleet();
    LogCapture capture;

    const Status status = query(uriOf("people", PERSON_1));

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(body(), "{\"data\":" + PERSON_1_FULL + ",\"status\":\"ok\"}");
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheAnswerTest, AnswersAnObjectWithItsReferencesReducedAtLevelZero)
{
    addFleet();

    const Status status = query(uriOf("cars", CAR_1));

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(), "{\"data\":" + CAR_1_RENDERED + ",\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheAnswerTest, AnswersAnObjectWithTheRequestedFieldsOnly)
{
    addFleet();

    const Status status = query(uriOf("cars", CAR_3) + "?$fields=seats");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(), "{\"data\":{\"id\":\"" + CAR_3 + "\",\"name\":\"\",\"seats\":5,\"uri\":\"" +
                          uriOf("cars", CAR_3) + "\"},\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheAnswerTest, NeverPagesAnObject)
{
    addFleet();

    const Status status = query(uriOf("people", PERSON_1) + "?$limit=1");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(), "{\"data\":" + PERSON_1_FULL + ",\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheAnswerTest, LeavesADanglingReferenceOutOfTheAnswerAndTheStore)
{
    addFleet();
    sut.deleteXObject(PERSON_1);

    const Status status = query(uriOf("cars", CAR_1));

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(body(), "{\"data\":{\"brand\":\"Volvo\",\"id\":\"" + CAR_1 +
                          "\",\"name\":\"\",\"passengers\":[" + PERSON_2_REDUCED +
                          "],\"seats\":5,\"uri\":\"" + uriOf("cars", CAR_1) + "\"},\"status\":\"ok\"}");
    EXPECT_FALSE(sut.store().get(CAR_1)->getValue("driver")->hasValue());
}

TEST_F(JSONDataCacheAnswerTest, AnswersAnUnknownObjectUnderAKnownResourceWithNotFound)
{
    addFleet();
    LogCapture capture;

    const Status status = query(uriOf("people", UNKNOWN));

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(),
              Lines({"Warning: Can not find XObject with UUID " + UNKNOWN,
                     "Warning: Selection of Element \"/fleet/people/" + UNKNOWN + "/\" failed."}));
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheAnswerTest, AnswersAnObjectOfAnotherResourceWithNotFound)
{
    addFleet();
    LogCapture capture;

    const Status status = query(uriOf("people", CAR_1));

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(),
              Lines({"Warning: Can not find element fleet/people/" + CAR_1,
                     "Warning: Selection of Element \"/fleet/people/" + CAR_1 + "/\" failed."}));
}

TEST_F(JSONDataCacheAnswerTest, AnswersAKnownObjectOnTheWrongPortWithNotFound)
{
    addFleet();
    LogCapture capture;

    const Status status = query(uriOf("people", PERSON_1), GARAGE_PORT);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheAnswerTest, FailsAnObjectQueryForAnObjectWithoutValues)
{
    insert("hollow", HOLLOW_1);
    LogCapture capture;

    const Status status = query("/fleet/hollow/" + HOLLOW_1);

    EXPECT_EQ(status, Status::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{"Error: Failed to transform Element query to Response: Exception"});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheAnswerTest, SendsAnObjectToASubscription)
{
    addFleet();

    const Status status = subscribe(uriOf("people", PERSON_1));

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(wsResponse.JSONObject), "{\"data\":" + PERSON_1_FULL + ",\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheAnswerTest, SendsAPagedResourceToASubscription)
{
    addFleet();

    const Status status = subscribe("/fleet/cars?$limit=1&$offset=2");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(wsResponse.JSONObject),
              "{\"data\":[" + CAR_3_RENDERED +
                  "],\"paging\":{\"limit\":1,\"offset\":2,\"previous\":\"/fleet/cars?$limit=1&$offset=1\","
                  "\"total\":3,\"totalPages\":3},\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheAnswerTest, AnswersASubscriptionToAnUnknownObjectWithNotFound)
{
    addFleet();
    const std::string before = stringify(wsResponse.JSONObject);

    const Status status = subscribe(uriOf("people", UNKNOWN));

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(stringify(wsResponse.JSONObject), before);
}

} // namespace
