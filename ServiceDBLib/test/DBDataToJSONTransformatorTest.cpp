#include "JSONDataCache/DBDataToJSONTransformator.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Stringifier.h>
#include <Poco/SharedPtr.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace
{

using Orvi::DBData::Resource;
using Orvi::DBData::ResourcePtr;
using Orvi::DBData::Service;
using Orvi::DBData::UUID;
using Orvi::JSONDataCache::DBDataToJSONTransformator;

const std::string SERVICE_UUID = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";
const std::string SPEED_UUID = "123e4567-e89b-42d3-a456-426614174000";
const std::string ODO_UUID = "00000000-0000-4000-8000-0000000000aa";

std::string stringify(const Poco::JSON::Object::Ptr& object)
{
    std::ostringstream out;
    Poco::JSON::Stringifier::stringify(object, out);
    return out.str();
}

Service::StringList makeList(const std::vector<std::string>& texts)
{
    Service::StringList list;
    for (const std::string& text : texts)
    {
        list.emplace_back(new std::string(text));
    }
    return list;
}

Service::Ptr makeService(const std::string& name, Poco::UInt16 port)
{
    Service::Ptr service(new Service);
    service->setName(name);
    service->setPort(port);
    return service;
}

void addResource(Service& service, const std::string& name, const std::string& uuid,
                 const std::string& description)
{
    ResourcePtr resource(new Resource(service));
    resource->setName(name);
    resource->setUUID(UUID(uuid));
    resource->setDescription(description);
    service.addResource(resource);
}

Service::Ptr makeVehicleService()
{
    Service::Ptr service = makeService("vehicle", 8081);
    service->setUUID(UUID(SERVICE_UUID));
    service->setDescription("Vehicle data");
    service->setServiceCategories(makeList({"car", "body"}));
    service->setPrivileges(makeList({"read"}));
    service->setVersions(makeList({"1.0.0"}));
    addResource(*service, "speed", SPEED_UUID, "Current speed");
    addResource(*service, "odometer", ODO_UUID, "Distance");
    return service;
}

// The timestamp varies from call to call; checks that it is an integer and takes it out.
void takeIntegerTimestamp(Poco::JSON::Object::Ptr& answer)
{
    ASSERT_TRUE(answer->has("timestamp"));
    EXPECT_TRUE(answer->get("timestamp").isInteger());
    answer->remove("timestamp");
}

const std::string RESOURCE_RECORDS = "[{\"description\":\"Distance\",\"id\":\"" + ODO_UUID +
                                     "\",\"name\":\"odometer\",\"uri\":\"/vehicle/odometer/\"},"
                                     "{\"description\":\"Current speed\",\"id\":\"" +
                                     SPEED_UUID + "\",\"name\":\"speed\",\"uri\":\"/vehicle/speed/\"}]";

TEST(DBDataToJSONTransformator, RendersEveryServiceOfTheRootInOrderWithoutPrivileges)
{
    const std::vector<Service::Ptr> services{makeVehicleService(), makeService("media", 8082)};
    Poco::JSON::Object::Ptr answer(new Poco::JSON::Object(0));

    const bool result = DBDataToJSONTransformator::transformServicesToJSONObject(services, answer, "");

    EXPECT_TRUE(result);
    EXPECT_EQ(stringify(answer),
              "{\"data\":["
              "{\"description\":\"Vehicle data\",\"id\":\"" +
                  SERVICE_UUID +
                  "\",\"name\":\"vehicle\",\"port\":8081,"
                  "\"serviceCategories\":[\"car\",\"body\"],\"uri\":\"/vehicle/\",\"versions\":[\"1.0.0\"]},"
                  "{\"description\":\"\",\"id\":\"\",\"name\":\"media\",\"port\":8082,"
                  "\"serviceCategories\":[],\"uri\":\"/media/\",\"versions\":[]}"
                  "],\"status\":\"ok\"}");
}

TEST(DBDataToJSONTransformator, PutsTheBaseUrlInFrontOfEveryServiceUri)
{
    const std::vector<Service::Ptr> services{makeService("media", 8082)};
    Poco::JSON::Object::Ptr answer(new Poco::JSON::Object(0));

    DBDataToJSONTransformator::transformServicesToJSONObject(services, answer, "/api");

    EXPECT_EQ(stringify(answer),
              "{\"data\":[{\"description\":\"\",\"id\":\"\",\"name\":\"media\",\"port\":8082,"
              "\"serviceCategories\":[],\"uri\":\"/api/media/\",\"versions\":[]}],"
              "\"status\":\"ok\"}");
}

TEST(DBDataToJSONTransformator, RendersAnEmptyServiceListAsAnEmptyArray)
{
    const std::vector<Service::Ptr> services;
    Poco::JSON::Object::Ptr answer(new Poco::JSON::Object(0));

    const bool result = DBDataToJSONTransformator::transformServicesToJSONObject(services, answer, "");

    EXPECT_TRUE(result);
    EXPECT_EQ(stringify(answer), "{\"data\":[],\"status\":\"ok\"}");
}

TEST(DBDataToJSONTransformator, RootAnswerNeedsAnObject)
{
    const std::vector<Service::Ptr> services{makeService("media", 8082)};
    Poco::JSON::Object::Ptr answer;

    EXPECT_THROW(DBDataToJSONTransformator::transformServicesToJSONObject(services, answer, ""),
                 Poco::NullPointerException);
}

TEST(DBDataToJSONTransformator, RendersTheResourcesAndTheFullServiceRecord)
{
    const Service::Ptr service = makeVehicleService();
    Poco::JSON::Object::Ptr answer(new Poco::JSON::Object(0));

    const bool result = DBDataToJSONTransformator::transformToServiceQueryAnswer(*service, answer, true, "");

    EXPECT_TRUE(result);
    takeIntegerTimestamp(answer);
    EXPECT_EQ(stringify(answer), "{\"data\":" + RESOURCE_RECORDS +
                                     ",\"service\":{\"description\":\"Vehicle data\",\"id\":\"" +
                                     SERVICE_UUID +
                                     "\",\"name\":\"vehicle\",\"port\":8081,\"privileges\":[\"read\"],"
                                     "\"serviceCategories\":[\"car\",\"body\"],\"uri\":\"/vehicle/\","
                                     "\"versions\":[\"1.0.0\"]},\"status\":\"ok\"}");
}

TEST(DBDataToJSONTransformator, LeavesTheServiceRecordOutWhenNotAsked)
{
    const Service::Ptr service = makeVehicleService();
    Poco::JSON::Object::Ptr answer(new Poco::JSON::Object(0));

    const bool result = DBDataToJSONTransformator::transformToServiceQueryAnswer(*service, answer, false, "");

    EXPECT_TRUE(result);
    takeIntegerTimestamp(answer);
    EXPECT_EQ(stringify(answer), "{\"data\":" + RESOURCE_RECORDS + ",\"status\":\"ok\"}");
}

TEST(DBDataToJSONTransformator, PutsTheBaseUrlInFrontOfResourceAndServiceUris)
{
    Service::Ptr service = makeService("media", 8082);
    addResource(*service, "tracks", SPEED_UUID, "");
    Poco::JSON::Object::Ptr answer(new Poco::JSON::Object(0));

    DBDataToJSONTransformator::transformToServiceQueryAnswer(*service, answer, true, "/api");

    takeIntegerTimestamp(answer);
    EXPECT_EQ(stringify(answer), "{\"data\":[{\"description\":\"\",\"id\":\"" + SPEED_UUID +
                                     "\",\"name\":\"tracks\",\"uri\":\"/api/media/tracks/\"}],"
                                     "\"service\":{\"description\":\"\",\"id\":\"\",\"name\":\"media\","
                                     "\"port\":8082,\"privileges\":[],\"serviceCategories\":[],"
                                     "\"uri\":\"/api/media/\",\"versions\":[]},\"status\":\"ok\"}");
}

} // namespace
