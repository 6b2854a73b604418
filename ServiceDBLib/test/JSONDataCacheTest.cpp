#include "JSONDataCache/JSONDataCache.h"

#include "Command/HttpResponse.h"
#include "Command/RequestBase.h"
#include "Command/UrlPath.h"
#include "Command/WebSocketResponseObject.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Stringifier.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace
{

using Orvi::Command::HttpResponse;
using Orvi::Command::RequestBase;
using Orvi::Command::UrlPath;
using Orvi::Command::WebSocketResponseObject;
using Orvi::DBData::Element;
using Orvi::DBData::Resource;
using Orvi::DBData::Service;
using Orvi::DBData::ServiceMap;
using Orvi::DBData::UUID;
using Orvi::JSONDataCache::InitialCacheData;
using Orvi::JSONDataCache::JSONDataCache;
using ServiceDB::Test::LogCapture;
using Status = Poco::Net::HTTPResponse::HTTPStatus;
using Lines = std::vector<std::string>;

const Poco::UInt16 VEHICLE_PORT = 8081;
const Poco::UInt16 MEDIA_PORT = 8082;
const std::string JSON_MIMETYPE = "application/json; charset=utf-8";
const std::string TEXT_MIMETYPE = "text/plain";

const std::string VEHICLE_UUID = "6BA7B810-9DAD-11D1-80B4-00C04FD430C8";
const std::string MEDIA_UUID = "00000000-0000-4000-8000-0000000000bb";
const std::string SPEED_UUID = "123e4567-e89b-42d3-a456-426614174000";
const std::string ODOMETER_UUID = "00000000-0000-4000-8000-0000000000aa";
const std::string OBJECT_UUID = "3f2504e0-4f89-41d3-9a0c-0305e82c3301";
const std::string NEW_UUID = "9b2f6c1e-2d4a-4e8b-8f3c-5a6b7c8d9e0f";

const std::string VEHICLE_SPEC = "{\"name\":\"vehicle\",\"resources\":{}}";
const std::string SPEED_SPEC = "{\"element\":\"speedValue\"}";

const std::string ROOT_RECORDS =
    "[{\"description\":\"Media player\",\"id\":\"" + MEDIA_UUID +
    "\",\"name\":\"media\",\"port\":8082,\"serviceCategories\":[],\"uri\":\"/media/"
    "\",\"versions\":[\"2.0.0\"]},"
    "{\"description\":\"Vehicle data\",\"id\":\"" +
    VEHICLE_UUID +
    "\",\"name\":\"vehicle\",\"port\":8081,\"serviceCategories\":[\"car\",\"body\"],\"uri\":\"/vehicle/\","
    "\"versions\":[\"1.0.0\",\"1.1.0\"]}]";

const std::string NOELEMENT_RECORD =
    "{\"description\":\"Not described yet\",\"id\":\"\",\"name\":\"noelement\","
    "\"uri\":\"/vehicle/noelement/\"}";
const std::string ODOMETER_RECORD = "{\"description\":\"Distance driven\",\"id\":\"" + ODOMETER_UUID +
                                    "\",\"name\":\"odometer\",\"uri\":\"/vehicle/odometer/\"}";
const std::string SPEED_RECORD = "{\"description\":\"Current speed\",\"id\":\"" + SPEED_UUID +
                                 "\",\"name\":\"speed\",\"uri\":\"/vehicle/speed/\"}";
const std::string VEHICLE_RESOURCES =
    "[" + NOELEMENT_RECORD + "," + ODOMETER_RECORD + "," + SPEED_RECORD + "]";
const std::string VEHICLE_RECORD =
    "{\"description\":\"Vehicle data\",\"id\":\"" + VEHICLE_UUID +
    "\",\"name\":\"vehicle\",\"port\":8081,\"privileges\":[\"read\",\"write\"],"
    "\"serviceCategories\":[\"car\",\"body\"],\"uri\":\"/vehicle/\","
    "\"versions\":[\"1.0.0\",\"1.1.0\"]}";

Service::StringList makeList(const std::vector<std::string>& texts)
{
    Service::StringList list;
    for (const std::string& text : texts)
    {
        list.emplace_back(new std::string(text));
    }
    return list;
}

Resource::Ptr addResource(Service& service, const std::string& name, const std::string& description,
                          bool withElement)
{
    Resource::Ptr resource(new Resource(service));
    resource->setName(name);
    resource->setDescription(description);
    if (withElement)
    {
        Element::Ptr element(new Element(*resource));
        element->setName(name + "Value");
        resource->setElement(element);
    }
    service.addResource(resource);
    return resource;
}

// Two services on their own ports: "vehicle" with two resources that have elements and one that has none,
// and "media" with nothing below it.
ServiceMap makeServiceMap()
{
    Service::Ptr vehicle(new Service);
    vehicle->setName("vehicle");
    vehicle->setUUID(UUID(VEHICLE_UUID));
    vehicle->setDescription("Vehicle data");
    vehicle->setPort(VEHICLE_PORT);
    vehicle->setServiceCategories(makeList({"car", "body"}));
    vehicle->setPrivileges(makeList({"read", "write"}));
    vehicle->setVersions(makeList({"1.0.0", "1.1.0"}));
    vehicle->setSpec(VEHICLE_SPEC);
    addResource(*vehicle, "speed", "Current speed", true)->setUUID(UUID(SPEED_UUID));
    addResource(*vehicle, "odometer", "Distance driven", true)->setUUID(UUID(ODOMETER_UUID));
    addResource(*vehicle, "noelement", "Not described yet", false);
    vehicle->getResource("speed")->setSpec(SPEED_SPEC);

    Service::Ptr media(new Service);
    media->setName("media");
    media->setUUID(UUID(MEDIA_UUID));
    media->setDescription("Media player");
    media->setPort(MEDIA_PORT);
    media->setVersions(makeList({"2.0.0"}));

    return ServiceMap{{"vehicle", vehicle}, {"media", media}};
}

RequestBase makeRequest(const std::string& address)
{
    return RequestBase(UrlPath(Poco::URI(address)));
}

std::string stringify(const Poco::JSON::Object::Ptr& object)
{
    std::ostringstream out;
    Poco::JSON::Stringifier::stringify(object, out);
    return out.str();
}

// A service answer carries the time it was made; checks that it is an integer and takes it out.
std::string withoutTimestamp(const HttpResponse& response)
{
    const Poco::JSON::Object::Ptr body = response.getJsonMsg();
    if (body.isNull() || !body->has("timestamp") || !body->get("timestamp").isInteger())
    {
        return "no integer timestamp";
    }
    Poco::JSON::Object copy(*body);
    copy.remove("timestamp");
    std::ostringstream out;
    copy.stringify(out);
    return out.str();
}

bool isUntouched(const HttpResponse& response)
{
    return response.getMimetype().empty() && !response.hasContent();
}

class JSONDataCacheTest : public testing::Test
{
protected:
    Status query(const std::string& address, Poco::UInt16 port = VEHICLE_PORT)
    {
        return sut.queryCache(makeRequest(address), response, port);
    }

    Status subscribe(const std::string& address, Poco::UInt16 port = VEHICLE_PORT)
    {
        return sut.queryCache(makeRequest(address), wsResponse, port);
    }

    ServiceMap services = makeServiceMap();
    JSONDataCache sut{services};
    HttpResponse response;
    WebSocketResponseObject wsResponse;
};

TEST_F(JSONDataCacheTest, ListsAllServicesAtTheRootEachWithItsOwnPort)
{
    LogCapture capture;

    const Status status = query("/");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(stringify(response.getJsonMsg()), "{\"data\":" + ROOT_RECORDS + ",\"status\":\"ok\"}");
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheTest, GivesTheSameRootListOnThePortOfAnyService)
{
    query("/", VEHICLE_PORT);
    const std::string fromVehiclePort = stringify(response.getJsonMsg());
    HttpResponse fromMedia;

    const Status status = sut.queryCache(makeRequest("/"), fromMedia, MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(fromMedia.getJsonMsg()), fromVehiclePort);
}

TEST_F(JSONDataCacheTest, AnswersTheRootOnAPortOfNoService)
{
    const Status status = query("/", 9999);

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(response.getJsonMsg()), "{\"data\":" + ROOT_RECORDS + ",\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, FiltersTheRootListByTheQuery)
{
    const Status status = query("/?name=media");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(response.getJsonMsg()),
              "{\"data\":[{\"description\":\"Media player\",\"id\":\"" + MEDIA_UUID +
                  "\",\"name\":\"media\",\"port\":8082,\"serviceCategories\":[],\"uri\":\"/media/\","
                  "\"versions\":[\"2.0.0\"]}],\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, NeverPagesTheRootList)
{
    const Status status = query("/?$limit=1");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(response.getJsonMsg()), "{\"data\":" + ROOT_RECORDS + ",\"status\":\"ok\"}");
}

TEST(JSONDataCache, AnswersTheRootOfAnEmptyMapWithNotFound)
{
    ServiceMap services;
    JSONDataCache sut(services);
    HttpResponse response;
    LogCapture capture;

    const Status status = sut.queryCache(makeRequest("/"), response, VEHICLE_PORT);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: queryCache services not found"});
    EXPECT_TRUE(isUntouched(response));
}

TEST(JSONDataCache, SeesServicesAddedToTheMapAfterConstruction)
{
    ServiceMap services;
    JSONDataCache sut(services);
    HttpResponse response;
    Service::Ptr late(new Service);
    late->setName("late");
    late->setPort(8083);
    services.emplace("late", late);

    const Status status = sut.queryCache(makeRequest("/"), response, 8083);

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(response.getJsonMsg()),
              "{\"data\":[{\"description\":\"\",\"id\":\"\",\"name\":\"late\",\"port\":8083,"
              "\"serviceCategories\":[],\"uri\":\"/late/\",\"versions\":[]}],\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, AnswersTheRootIdWithTheUUIDOfTheCache)
{
    const Status status = query("/$id", 9999);

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), TEXT_MIMETYPE);
    Poco::UUID parsed;
    ASSERT_TRUE(parsed.tryParse(response.getTextMsg())) << response.getTextMsg();
    EXPECT_EQ(parsed.version(), Poco::UUID::UUID_RANDOM);
    EXPECT_EQ(parsed.toString(), response.getTextMsg());
}

TEST_F(JSONDataCacheTest, KeepsItsUUIDForItsLifeAndDiffersFromAnotherCache)
{
    query("/$id");
    const std::string first = response.getTextMsg();
    JSONDataCache other(services);
    HttpResponse fromOther;

    query("/$id");
    other.queryCache(makeRequest("/$id"), fromOther, VEHICLE_PORT);

    EXPECT_EQ(response.getTextMsg(), first);
    EXPECT_NE(fromOther.getTextMsg(), first);
}

TEST_F(JSONDataCacheTest, AnswersTheServiceIdAsTextOnAnyPort)
{
    const Status status = query("/vehicle/$id", MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), TEXT_MIMETYPE);
    EXPECT_EQ(response.getTextMsg(), VEHICLE_UUID);
    EXPECT_TRUE(response.getJsonMsg().isNull());
}

TEST_F(JSONDataCacheTest, AnswersTheServiceSpecAsJSONText)
{
    const Status status = query("/vehicle/$spec", MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(response.getTextMsg(), VEHICLE_SPEC);
}

TEST_F(JSONDataCacheTest, AnswersTheResourceIdAsText)
{
    const Status status = query("/vehicle/speed/$id", MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), TEXT_MIMETYPE);
    EXPECT_EQ(response.getTextMsg(), SPEED_UUID);
}

TEST_F(JSONDataCacheTest, AnswersTheResourceSpecAsJSONText)
{
    const Status status = query("/vehicle/speed/$spec");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(response.getTextMsg(), SPEED_SPEC);
}

TEST_F(JSONDataCacheTest, RefusesTheRightsKeywordWithNotFound)
{
    LogCapture capture;

    const Status status = query("/vehicle/$rights");

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: queryCacheInitial unsupported characteristic: 6"});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheTest, AnswersAnUnknownServiceWithNotFound)
{
    LogCapture capture;

    const Status status = query("/nosuch");

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Service \"/nosuch\" failed."});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheTest, AnswersTheKeywordOfAnUnknownServiceWithNotFound)
{
    LogCapture capture;

    const Status status = query("/nosuch/$id");

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Service \"/nosuch\" failed."});
}

TEST_F(JSONDataCacheTest, AnUnknownResourceRaisesNullPointerExceptionAfterItsWarning)
{
    LogCapture capture;

    EXPECT_THROW(query("/vehicle/nosuch"), Poco::NullPointerException);

    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Resource \"/vehicle/nosuch/\" failed."});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheTest, AnUnknownResourceKeywordRaisesNullPointerExceptionToo)
{
    LogCapture capture;

    EXPECT_THROW(query("/vehicle/nosuch/$id"), Poco::NullPointerException);

    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Resource \"/vehicle/nosuch/\" failed."});
}

TEST_F(JSONDataCacheTest, AnswersAResourceWithoutElementWithNotFound)
{
    LogCapture capture;

    const Status status = query("/vehicle/noelement");

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Resource \"/vehicle/noelement/\" failed."});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheTest, AnswersTheKeywordOfAResourceWithoutElementWithNotFound)
{
    LogCapture capture;

    const Status status = query("/vehicle/noelement/$id");

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Resource \"/vehicle/noelement/\" failed."});
}

TEST_F(JSONDataCacheTest, AnswersAnInvalidAddressWithNotFound)
{
    LogCapture capture;

    const Status status = query("/vehicle/speed/a/b");

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Service \"/\" failed."});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheTest, AnswersAServiceWithResourcesAndServiceRecordWithoutClosingSlash)
{
    LogCapture capture;

    const Status status = query("/vehicle");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(withoutTimestamp(response),
              "{\"data\":" + VEHICLE_RESOURCES + ",\"service\":" + VEHICLE_RECORD + ",\"status\":\"ok\"}");
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheTest, AnswersAServiceWithResourcesOnlyWithClosingSlash)
{
    const Status status = query("/vehicle/");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(withoutTimestamp(response), "{\"data\":" + VEHICLE_RESOURCES + ",\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, AnswersAServiceWithoutResourcesWithAnEmptyList)
{
    const Status status = query("/media/", MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(withoutTimestamp(response), "{\"data\":[],\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, PagesTheResourceListOfAService)
{
    const Status status = query("/vehicle/?$limit=1");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(
        withoutTimestamp(response),
        "{\"data\":[" + NOELEMENT_RECORD +
            "],\"paging\":{\"limit\":1,\"next\":\"/vehicle/?$limit=1&$offset=1\",\"offset\":0,\"total\":3,"
            "\"totalPages\":3},\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, FiltersTheResourceListOfAService)
{
    const Status status = query("/vehicle?name=speed");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(withoutTimestamp(response),
              "{\"data\":[" + SPEED_RECORD + "],\"service\":" + VEHICLE_RECORD + ",\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, AnswersAServiceOnAnotherServicesPortWithNotFound)
{
    LogCapture capture;

    const Status status = query("/vehicle", MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheTest, AnswersAResourceOnAnotherServicesPortWithNotFound)
{
    const Status status = query("/vehicle/speed", MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheTest, AnswersAResourceWithoutObjectsWithAnEmptyList)
{
    LogCapture capture;

    const Status status = query("/vehicle/speed");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(response.getMimetype(), JSON_MIMETYPE);
    EXPECT_EQ(stringify(response.getJsonMsg()), "{\"data\":[],\"status\":\"ok\"}");
    EXPECT_EQ(capture.lines(),
              Lines{"Info: Selection of Elements for Resource \"/vehicle/speed/\" returned 0 results."});
}

TEST_F(JSONDataCacheTest, DoesNotPageAnEmptyResourceList)
{
    const Status status = query("/vehicle/speed/?$limit=1");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(response.getJsonMsg()), "{\"data\":[],\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, AnswersAnUnknownObjectWithNotFound)
{
    LogCapture capture;

    const Status status = query("/vehicle/speed/" + OBJECT_UUID);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(),
              Lines({"Warning: Can not find XObject with UUID " + OBJECT_UUID,
                     "Warning: Selection of Element \"/vehicle/speed/" + OBJECT_UUID + "/\" failed."}));
    EXPECT_TRUE(isUntouched(response));
}

TEST_F(JSONDataCacheTest, AnswersAnObjectOnAnotherServicesPortWithNotFoundWithoutWarning)
{
    LogCapture capture;

    const Status status = query("/vehicle/speed/" + OBJECT_UUID, MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheTest, RefusesASubscriptionToAKeyword)
{
    LogCapture capture;
    const std::string before = stringify(wsResponse.JSONObject);

    const Status status = subscribe("/vehicle/$spec");

    EXPECT_EQ(status, Status::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Subscriptions to reserved keywords not allowed. (5)"});
    EXPECT_EQ(stringify(wsResponse.JSONObject), before);
}

TEST_F(JSONDataCacheTest, RefusesASubscriptionToTheRootId)
{
    LogCapture capture;

    const Status status = subscribe("/$id");

    EXPECT_EQ(status, Status::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Subscriptions to reserved keywords not allowed. (2)"});
}

TEST_F(JSONDataCacheTest, RefusesASubscriptionToTheResourceId)
{
    LogCapture capture;

    const Status status = subscribe("/vehicle/speed/$id");

    EXPECT_EQ(status, Status::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Subscriptions to reserved keywords not allowed. (8)"});
}

TEST_F(JSONDataCacheTest, DoesNotServeTheRootToASubscription)
{
    LogCapture capture;
    const std::string before = stringify(wsResponse.JSONObject);

    const Status status = subscribe("/");

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Error: Not implemented yet"});
    EXPECT_EQ(stringify(wsResponse.JSONObject), before);
}

TEST_F(JSONDataCacheTest, SendsTheResourcesOfAServiceToASubscriptionWithoutServiceRecordAndTimestamp)
{
    const Status status = subscribe("/vehicle");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(wsResponse.JSONObject), "{\"data\":" + VEHICLE_RESOURCES + ",\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, SendsThePagingOfAServiceToASubscription)
{
    const Status status = subscribe("/vehicle/?$limit=2");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(
        stringify(wsResponse.JSONObject),
        "{\"data\":[" + NOELEMENT_RECORD + "," + ODOMETER_RECORD +
            "],\"paging\":{\"limit\":2,\"next\":\"/vehicle/?$limit=2&$offset=2\",\"offset\":0,\"total\":3,"
            "\"totalPages\":2},\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, SendsAnEmptyResourceToASubscription)
{
    const Status status = subscribe("/vehicle/speed");

    EXPECT_EQ(status, Status::HTTP_OK);
    EXPECT_EQ(stringify(wsResponse.JSONObject), "{\"data\":[],\"status\":\"ok\"}");
}

TEST_F(JSONDataCacheTest, AnswersASubscriptionToAnUnknownObjectWithNotFound)
{
    LogCapture capture;

    const Status status = subscribe("/vehicle/odometer/" + OBJECT_UUID);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(),
              Lines({"Warning: Can not find XObject with UUID " + OBJECT_UUID,
                     "Warning: Selection of Element \"/vehicle/odometer/" + OBJECT_UUID + "/\" failed."}));
}

TEST_F(JSONDataCacheTest, AnswersASubscriptionToAnUnknownServiceWithNotFound)
{
    LogCapture capture;

    const Status status = subscribe("/nosuch/");

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Service \"/nosuch\" failed."});
}

TEST_F(JSONDataCacheTest, AnswersASubscriptionOnAnotherServicesPortWithNotFound)
{
    const std::string before = stringify(wsResponse.JSONObject);

    const Status status = subscribe("/vehicle", MEDIA_PORT);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(stringify(wsResponse.JSONObject), before);
}

class RootReplacingCache : public JSONDataCache
{
public:
    using JSONDataCache::JSONDataCache;

protected:
    Status queryCacheRoot(const RequestBase&, HttpResponse& retResponse) override
    {
        retResponse.setDataFromText("replaced", "text/plain");
        return Status::HTTP_ACCEPTED;
    }
};

TEST(JSONDataCache, DispatchesTheRootThroughTheReplaceableOperation)
{
    ServiceMap services = makeServiceMap();
    RootReplacingCache sut(services);
    HttpResponse response;

    const Status status = sut.queryCache(makeRequest("/"), response, VEHICLE_PORT);

    EXPECT_EQ(status, Status::HTTP_ACCEPTED);
    EXPECT_EQ(response.getTextMsg(), "replaced");
}

TEST_F(JSONDataCacheTest, UpdatesTheUUIDOfAService)
{
    LogCapture capture;

    const bool result = sut.updateServiceUUID("vehicle", NEW_UUID);

    EXPECT_TRUE(result);
    EXPECT_EQ(services.at("vehicle")->getUUID(), NEW_UUID);
    EXPECT_EQ(capture.lines(), Lines{});
    query("/vehicle/$id");
    EXPECT_EQ(response.getTextMsg(), NEW_UUID);
}

TEST_F(JSONDataCacheTest, RefusesAMalformedServiceUUIDAndKeepsTheFormerOne)
{
    LogCapture capture;

    const bool result = sut.updateServiceUUID("vehicle", "not-a-uuid");

    EXPECT_FALSE(result);
    EXPECT_EQ(
        capture.lines(),
        Lines{
            "Error: Failed to updateServiceUUID not-a-uuid: Syntax error: Invalid UUID string: not-a-uuid"});
    EXPECT_EQ(services.at("vehicle")->getUUID(), VEHICLE_UUID);
    EXPECT_EQ(services.at("vehicle")->getId().get(), Poco::UUID(VEHICLE_UUID));
}

TEST_F(JSONDataCacheTest, ClearsTheUUIDOfAServiceWithAnEmptyText)
{
    const bool result = sut.updateServiceUUID("vehicle", "");

    EXPECT_TRUE(result);
    EXPECT_TRUE(services.at("vehicle")->getId().isEmpty());
    EXPECT_EQ(services.at("vehicle")->getUUID(), "");
}

TEST_F(JSONDataCacheTest, UpdateServiceUUIDGivesFalseForAnUnknownService)
{
    LogCapture capture;

    const bool result = sut.updateServiceUUID("nosuch", NEW_UUID);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheTest, ResolvesAResourceToItsRows)
{
    const InitialCacheData data = sut.queryCacheInitial(UrlPath::SERVICE_RESOURCE, "vehicle", "speed");

    EXPECT_EQ(data.characteristic, UrlPath::SERVICE_RESOURCE);
    EXPECT_EQ(data.serviceData.get(), services.at("vehicle").get());
    EXPECT_EQ(data.resourceData.get(), services.at("vehicle")->getResource("speed").get());
    EXPECT_EQ(data.elementData.get(), services.at("vehicle")->getResource("speed")->getElement().get());
}

TEST_F(JSONDataCacheTest, ResolvesAServiceWithoutReachingBelowIt)
{
    const InitialCacheData data = sut.queryCacheInitial(UrlPath::SERVICE_SPEC, "vehicle", "speed");

    EXPECT_EQ(data.characteristic, UrlPath::SERVICE_SPEC);
    EXPECT_EQ(data.serviceData.get(), services.at("vehicle").get());
    EXPECT_TRUE(data.resourceData.isNull());
    EXPECT_TRUE(data.elementData.isNull());
}

TEST_F(JSONDataCacheTest, ResolvesTheRootWithoutAnyLookup)
{
    LogCapture capture;

    const InitialCacheData data = sut.queryCacheInitial(UrlPath::ROOT_ID, "nosuch", "");

    EXPECT_EQ(data.characteristic, UrlPath::ROOT_ID);
    EXPECT_TRUE(data.serviceData.isNull());
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(JSONDataCacheTest, ResolvesAResourceWithoutElementAsInvalidButKeepsItsRows)
{
    LogCapture capture;

    const InitialCacheData data =
        sut.queryCacheInitial(UrlPath::SERVICE_RESOURCE_OBJECT, "vehicle", "noelement");

    EXPECT_EQ(data.characteristic, UrlPath::INVALID);
    EXPECT_EQ(data.resourceData.get(), services.at("vehicle")->getResource("noelement").get());
    EXPECT_TRUE(data.elementData.isNull());
    EXPECT_EQ(capture.lines(), Lines{"Warning: Selection of Resource \"/vehicle/noelement/\" failed."});
}

TEST_F(JSONDataCacheTest, SelectsAllServicesInNameOrder)
{
    std::vector<Service::Ptr> selected;

    const bool result = sut.selectServices(selected);

    EXPECT_TRUE(result);
    ASSERT_EQ(selected.size(), 2u);
    EXPECT_EQ(selected[0]->getName(), "media");
    EXPECT_EQ(selected[1]->getName(), "vehicle");
}

TEST(JSONDataCache, SelectServicesGivesFalseForAnEmptyMap)
{
    ServiceMap services;
    JSONDataCache sut(services);
    std::vector<Service::Ptr> selected;

    EXPECT_FALSE(sut.selectServices(selected));
    EXPECT_TRUE(selected.empty());
}

TEST_F(JSONDataCacheTest, SelectsAServiceByName)
{
    EXPECT_EQ(sut.selectService("media").get(), services.at("media").get());
    EXPECT_TRUE(sut.selectService("nosuch").isNull());
}

TEST_F(JSONDataCacheTest, CopiesASelectedService)
{
    Service copy;

    const bool result = sut.selectService("vehicle", copy);

    EXPECT_TRUE(result);
    EXPECT_EQ(copy.getName(), "vehicle");
    EXPECT_EQ(copy.getUUID(), VEHICLE_UUID);
    EXPECT_EQ(copy.getPort(), VEHICLE_PORT);
    EXPECT_EQ(copy.getSpec(), VEHICLE_SPEC);
    EXPECT_EQ(copy.getResources().size(), 3u);
    EXPECT_FALSE(sut.selectService("nosuch", copy));
}

TEST_F(JSONDataCacheTest, SelectsAResourceByServiceAndName)
{
    EXPECT_EQ(sut.selectResource("vehicle", "speed").get(),
              services.at("vehicle")->getResource("speed").get());
    EXPECT_TRUE(sut.selectResource("vehicle", "nosuch").isNull());
    EXPECT_TRUE(sut.selectResource("nosuch", "speed").isNull());
}

TEST_F(JSONDataCacheTest, AssignsASelectedResourceAndFillsItsScratchService)
{
    Service scratchService;
    Resource scratch(scratchService);

    const bool result = sut.selectResource("vehicle", "speed", scratch, false);

    EXPECT_TRUE(result);
    EXPECT_EQ(scratch.getSpec(), SPEED_SPEC);
    EXPECT_EQ(scratch.getDescription(), "Current speed");
    EXPECT_EQ(scratchService.getName(), "vehicle");
    EXPECT_FALSE(sut.selectResource("vehicle", "nosuch", scratch, true));
}

TEST_F(JSONDataCacheTest, SelectsTheResourcesOfAServiceInNameOrder)
{
    std::vector<Resource::Ptr> selected;

    const bool result = sut.selectResources("vehicle", selected);

    EXPECT_TRUE(result);
    ASSERT_EQ(selected.size(), 3u);
    EXPECT_EQ(selected[0]->getName(), "noelement");
    EXPECT_EQ(selected[1]->getName(), "odometer");
    EXPECT_EQ(selected[2]->getName(), "speed");
}

TEST_F(JSONDataCacheTest, SelectResourcesGivesFalseForAnUnknownServiceOrOneWithoutResources)
{
    std::vector<Resource::Ptr> selected;

    EXPECT_FALSE(sut.selectResources("nosuch", selected));
    EXPECT_FALSE(sut.selectResources("media", selected));
    EXPECT_TRUE(selected.empty());
}

TEST_F(JSONDataCacheTest, SelectsTheElementOfAResource)
{
    EXPECT_EQ(sut.selectElement("vehicle", "speed").get(),
              services.at("vehicle")->getResource("speed")->getElement().get());
    EXPECT_TRUE(sut.selectElement("vehicle", "noelement").isNull());
    EXPECT_TRUE(sut.selectElement("vehicle", "nosuch").isNull());
}

TEST_F(JSONDataCacheTest, SelectsTheElementNameOfAResource)
{
    EXPECT_EQ(sut.selectResourceElementName("vehicle", "odometer"), "odometerValue");
    EXPECT_EQ(sut.selectResourceElementName("vehicle", "noelement"), "");
    EXPECT_EQ(sut.selectResourceElementName("nosuch", "odometer"), "");
}

} // namespace
