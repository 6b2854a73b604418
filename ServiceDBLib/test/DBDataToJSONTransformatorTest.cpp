#include "JSONDataCache/DBDataToJSONTransformator.h"

#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/XObject.h"
#include "TestSupport/JsonText.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Stringifier.h>
#include <Poco/SharedPtr.h>
#include <Poco/String.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::Element;
using Orvi::DBData::Resource;
using Orvi::DBData::ResourcePtr;
using Orvi::DBData::Service;
using Orvi::DBData::UUID;
using Orvi::DBData::XObject;
using Orvi::JSONDataCache::DBDataToJSONTransformator;
using Orvi::JSONDataCache::isXObjAttribute;
using Poco::Dynamic::Var;
using ServiceDB::Test::toJson;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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

// Objects for the rendering tests: a car that references its owner and its wheels, an owner that
// references an employer. No element is needed to render, so the objects have none.

const std::string CAR_UUID = "3f2a9c1e-7d4b-4e8a-b0c5-1a2b3c4d5e6f";
const std::string OWNER_UUID = "8c7b6a59-4837-4261-9a0b-c1d2e3f4a5b6";
const std::string EMPLOYER_UUID = "0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d";
const std::string FRONT_WHEEL_UUID = "11111111-2222-4333-8444-555555555555";
const std::string REAR_WHEEL_UUID = "66666666-7777-4888-9999-aaaaaaaaaaaa";

Attribute::Ptr attribute(const std::string& name,
                         Orvi::DBData::AttributeType type = Orvi::DBData::AttrType_String,
                         bool isArray = false)
{
    return new Attribute(name, type, isArray);
}

XObject::Ptr makeObject(const std::string& uuid)
{
    static Orvi::DBData::DbId nextId = 1;
    XObject::Ptr object(new XObject(Element::Ptr()));
    object->setDBID(nextId++);
    object->setId(UUID(uuid));
    return object;
}

void addValue(XObject& object, const Attribute::Ptr& definition, const Var& value)
{
    const auto cellId = static_cast<Orvi::DBData::DbId>(object.getAttributeValues().size() + 1);
    AttributeValuePtr cell(new AttributeValue(object.getDBID(), definition, cellId));
    cell->setValue(value, false);
    object.getAttributeValues().push_back(cell);
}

// An object with the three default attributes filled as a new object of /fleet/<resource> has them.
XObject::Ptr makeNamedObject(const std::string& uuid, const std::string& resource, const std::string& name)
{
    XObject::Ptr object = makeObject(uuid);
    addValue(*object, attribute("id"), uuid);
    addValue(*object, attribute("name"), name);
    addValue(*object, attribute("uri"), "/fleet/" + resource + "/" + uuid);
    return object;
}

Var arrayOf(std::initializer_list<Var> elements)
{
    return AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray(elements));
}

XObject::Ptr makeEmployer()
{
    XObject::Ptr employer = makeNamedObject(EMPLOYER_UUID, "companies", "Acme");
    addValue(*employer, attribute("city"), "Springfield");
    return employer;
}

XObject::Ptr makeOwner()
{
    XObject::Ptr owner = makeNamedObject(OWNER_UUID, "people", "Ada");
    addValue(*owner, attribute("age", Orvi::DBData::AttrType_Integer), Attribute::Integer(36));
    addValue(*owner, attribute("employer", Orvi::DBData::AttrType_Object), makeEmployer());
    return owner;
}

XObject::Ptr makeWheel(const std::string& uuid, const std::string& name, double pressure)
{
    XObject::Ptr wheel = makeNamedObject(uuid, "wheels", name);
    addValue(*wheel, attribute("pressure", Orvi::DBData::AttrType_Number), pressure);
    return wheel;
}

// The attributes are added out of name order on purpose: the rendering sorts the keys.
XObject::Ptr makeCar()
{
    XObject::Ptr car = makeObject(CAR_UUID);
    addValue(*car, attribute("wheels", Orvi::DBData::AttrType_Object, true),
             arrayOf({makeWheel(FRONT_WHEEL_UUID, "front", 2.4), makeWheel(REAR_WHEEL_UUID, "rear", 2.6)}));
    addValue(*car, attribute("uri"), "/fleet/cars/" + CAR_UUID);
    addValue(*car, attribute("speed", Orvi::DBData::AttrType_Number), 88.5);
    addValue(*car, attribute("owner", Orvi::DBData::AttrType_Object), makeOwner());
    addValue(*car, attribute("id"), CAR_UUID);
    addValue(*car, attribute("tags", Orvi::DBData::AttrType_String, true), arrayOf({"red", "fast"}));
    addValue(*car, attribute("name"), "Herbie");
    return car;
}

std::string render(const XObject& object, int expand)
{
    Poco::JSON::Object rendered(0);
    EXPECT_TRUE(DBDataToJSONTransformator::transformXObjectToJSONObject(object, rendered, expand));
    return toJson(rendered);
}

std::string referenceTo(const std::string& resource, const std::string& uuid, const std::string& name)
{
    return "{\"id\":\"" + uuid + "\",\"name\":\"" + name + "\",\"uri\":\"/fleet/" + resource + "/" + uuid +
           "\"}";
}

const std::string REDUCED_EMPLOYER = referenceTo("companies", EMPLOYER_UUID, "Acme");
const std::string FULL_EMPLOYER = "{\"city\":\"Springfield\",\"id\":\"" + EMPLOYER_UUID +
                                  "\",\"name\":\"Acme\",\"uri\":\"/fleet/companies/" + EMPLOYER_UUID + "\"}";
const std::string REDUCED_OWNER = referenceTo("people", OWNER_UUID, "Ada");
const std::string REDUCED_WHEELS = "[" + referenceTo("wheels", FRONT_WHEEL_UUID, "front") + "," +
                                   referenceTo("wheels", REAR_WHEEL_UUID, "rear") + "]";
const std::string FULL_WHEELS = "[{\"id\":\"" + FRONT_WHEEL_UUID + "\",\"name\":\"front\",\"pressure\":2.4," +
                                "\"uri\":\"/fleet/wheels/" + FRONT_WHEEL_UUID + "\"},{\"id\":\"" +
                                REAR_WHEEL_UUID + "\",\"name\":\"rear\",\"pressure\":2.6," +
                                "\"uri\":\"/fleet/wheels/" + REAR_WHEEL_UUID + "\"}]";

std::string ownerWithEmployer(const std::string& employer)
{
    return "{\"age\":36,\"employer\":" + employer + ",\"id\":\"" + OWNER_UUID +
           "\",\"name\":\"Ada\",\"uri\":\"/fleet/people/" + OWNER_UUID + "\"}";
}

std::string carWith(const std::string& owner, const std::string& wheels)
{
    return "{\"id\":\"" + CAR_UUID + "\",\"name\":\"Herbie\",\"owner\":" + owner +
           ",\"speed\":88.5,\"tags\":[\"red\",\"fast\"],\"uri\":\"/fleet/cars/" + CAR_UUID +
           "\",\"wheels\":" + wheels + "}";
}

std::string bugcheckMessage(const XObject& object)
{
    Poco::JSON::Object rendered(0);
    try
    {
        DBDataToJSONTransformator::transformXObjectToJSONObject(object, rendered, 0);
    }
    catch (const Poco::BugcheckException& e)
    {
        return e.message();
    }
    return "no bugcheck";
}

TEST(DBDataToJSONTransformator, KnowsIdUriAndNameAsTheAttributesThatSurviveTheExpansionLevel)
{
    EXPECT_TRUE(isXObjAttribute("id"));
    EXPECT_TRUE(isXObjAttribute("uri"));
    EXPECT_TRUE(isXObjAttribute("name"));
    EXPECT_FALSE(isXObjAttribute("ID"));
    EXPECT_FALSE(isXObjAttribute("speed"));
    EXPECT_FALSE(isXObjAttribute(""));
}

TEST(DBDataToJSONTransformator, TakesAScalarValueOverAsItIs)
{
    Var out_value("left over");

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Integer, "odometer", false, Var(Attribute::Integer(120000)), 0, out_value);

    EXPECT_TRUE(result);
    EXPECT_EQ(out_value.type(), typeid(Attribute::Integer));
    EXPECT_EQ(toJson(out_value), "120000");
}

TEST(DBDataToJSONTransformator, LeavesOutAnEmptyValueAndEmptiesTheResult)
{
    Var out_value("left over");

    const bool result = DBDataToJSONTransformator::handleAttributeValue(Orvi::DBData::AttrType_String,
                                                                        "model", false, Var(), 1, out_value);

    EXPECT_FALSE(result);
    EXPECT_TRUE(out_value.isEmpty());
}

TEST(DBDataToJSONTransformator, LeavesOutAnEmptyArrayValue)
{
    Var out_value("left over");

    const bool result = DBDataToJSONTransformator::handleAttributeValue(Orvi::DBData::AttrType_String, "tags",
                                                                        true, Var(), 1, out_value);

    EXPECT_FALSE(result);
    EXPECT_TRUE(out_value.isEmpty());
}

TEST(DBDataToJSONTransformator, PassesOnlyIdUriAndNameBelowLevelZero)
{
    Var speed;
    Var name;
    Var uri;

    const bool speedResult = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Number, "speed", false, Var(88.5), -1, speed);
    const bool nameResult = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_String, "name", false, Var("Herbie"), -1, name);
    const bool uriResult = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_String, "uri", false, Var("/fleet/cars/x"), -1, uri);

    EXPECT_FALSE(speedResult);
    EXPECT_TRUE(speed.isEmpty());
    EXPECT_TRUE(nameResult);
    EXPECT_EQ(toJson(name), "\"Herbie\"");
    EXPECT_TRUE(uriResult);
    EXPECT_EQ(toJson(uri), "\"/fleet/cars/x\"");
}

TEST(DBDataToJSONTransformator, RendersAReferenceWithAllItsScalarsAtLevelOne)
{
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "owner", false, Var(makeOwner()), 1, out_value);

    EXPECT_TRUE(result);
    EXPECT_EQ(out_value.type(), typeid(Poco::JSON::Object::Ptr));
    EXPECT_EQ(toJson(out_value), ownerWithEmployer(REDUCED_EMPLOYER));
}

TEST(DBDataToJSONTransformator, ReducesAReferenceToIdUriAndNameAtLevelZero)
{
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "owner", false, Var(makeOwner()), 0, out_value);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(out_value), REDUCED_OWNER);
}

TEST(DBDataToJSONTransformator, ReducesAReferenceToItsIdWhenItsElementHasNoUriOrName)
{
    XObject::Ptr plain = makeObject(EMPLOYER_UUID);
    addValue(*plain, attribute("city"), "Springfield");
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "employer", false, Var(plain), 0, out_value);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(out_value), "{\"id\":\"" + EMPLOYER_UUID + "\"}");
}

TEST(DBDataToJSONTransformator, LeavesOutAReferenceBelowLevelZeroUnlessItBearsADefaultName)
{
    Var owner;
    Var name;

    const bool ownerResult = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "owner", false, Var(makeOwner()), -1, owner);
    const bool nameResult = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "name", false, Var(makeOwner()), -1, name);

    EXPECT_FALSE(ownerResult);
    EXPECT_TRUE(owner.isEmpty());
    EXPECT_TRUE(nameResult);
    EXPECT_EQ(toJson(name), REDUCED_OWNER);
}

TEST(DBDataToJSONTransformator, LeavesOutANullReference)
{
    Var out_value("left over");

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "owner", false, Var(XObject::Ptr()), 1, out_value);

    EXPECT_FALSE(result);
    EXPECT_TRUE(out_value.isEmpty());
}

TEST(DBDataToJSONTransformator, LeavesOutAReferenceToAnObjectWithoutValues)
{
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "owner", false, Var(makeObject(OWNER_UUID)), 1, out_value);

    EXPECT_FALSE(result);
    EXPECT_TRUE(out_value.isEmpty());
}

TEST(DBDataToJSONTransformator, RefusesAReferenceHeldInAnotherForm)
{
    Var out_value;

    try
    {
        DBDataToJSONTransformator::handleAttributeValue(Orvi::DBData::AttrType_Object, "owner", false,
                                                        Var(OWNER_UUID), 1, out_value);
        FAIL() << "no exception";
    }
    catch (const Poco::BadCastException& e)
    {
        EXPECT_EQ(e.message(), std::string("Can not convert ") + typeid(std::string).name() + " to " +
                                   typeid(XObject::Ptr).name() + ".");
    }
}

TEST(DBDataToJSONTransformator, RendersAnArrayOfScalarsInOrder)
{
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Integer, "laps", true,
        arrayOf({Attribute::Integer(3), Attribute::Integer(1), Attribute::Integer(2)}), 0, out_value);

    EXPECT_TRUE(result);
    EXPECT_EQ(out_value.type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(out_value), "[3,1,2]");
}

TEST(DBDataToJSONTransformator, SkipsEmptyElementsOfAnArray)
{
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_String, "tags", true, arrayOf({"red", Var(), "fast"}), 0, out_value);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(out_value), "[\"red\",\"fast\"]");
}

TEST(DBDataToJSONTransformator, ReportsAnArrayWithoutElementsWithAnEmptyResult)
{
    Var out_value("left over");

    const bool result = DBDataToJSONTransformator::handleAttributeValue(Orvi::DBData::AttrType_String, "tags",
                                                                        true, arrayOf({}), 0, out_value);

    EXPECT_TRUE(result);
    EXPECT_TRUE(out_value.isEmpty());
}

TEST(DBDataToJSONTransformator, ReportsAnArrayWithoutSurvivingElementsWithAnEmptyResult)
{
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "wheels", true, arrayOf({XObject::Ptr(), Var()}), 0, out_value);

    EXPECT_TRUE(result);
    EXPECT_TRUE(out_value.isEmpty());
}

TEST(DBDataToJSONTransformator, LeavesOutAnArrayBehindANullPointer)
{
    Var out_value("left over");

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_String, "tags", true, Var(AttributeValue::ValueArrayPtr()), 0, out_value);

    EXPECT_FALSE(result);
    EXPECT_TRUE(out_value.isEmpty());
}

TEST(DBDataToJSONTransformator, LeavesOutAnArrayBelowLevelZero)
{
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_String, "tags", true, arrayOf({"red"}), -1, out_value);

    EXPECT_FALSE(result);
    EXPECT_TRUE(out_value.isEmpty());
}

TEST(DBDataToJSONTransformator, RefusesAnArrayHeldInAnotherForm)
{
    Var out_value;

    try
    {
        DBDataToJSONTransformator::handleAttributeValue(Orvi::DBData::AttrType_String, "tags", true,
                                                        Var("red"), 0, out_value);
        FAIL() << "no exception";
    }
    catch (const Poco::BadCastException& e)
    {
        EXPECT_EQ(e.message(), std::string("Can not convert ") + typeid(std::string).name() + " to " +
                                   typeid(AttributeValue::ValueArrayPtr).name() + ".");
    }
}

TEST(DBDataToJSONTransformator, RendersEveryReferenceOfAnArrayAtTheSameLevel)
{
    Var out_value;

    const bool result = DBDataToJSONTransformator::handleAttributeValue(
        Orvi::DBData::AttrType_Object, "wheels", true,
        arrayOf({makeWheel(FRONT_WHEEL_UUID, "front", 2.4), makeWheel(REAR_WHEEL_UUID, "rear", 2.6)}), 0,
        out_value);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(out_value), REDUCED_WHEELS);
}

TEST(DBDataToJSONTransformator, RendersAnObjectWithSortedKeysAndItsReferencesReducedAtLevelZero)
{
    const XObject::Ptr car = makeCar();

    EXPECT_EQ(render(*car, 0), carWith(REDUCED_OWNER, REDUCED_WHEELS));
}

TEST(DBDataToJSONTransformator, RendersReferencesWithTheirScalarsAtLevelOne)
{
    const XObject::Ptr car = makeCar();

    EXPECT_EQ(render(*car, 1), carWith(ownerWithEmployer(REDUCED_EMPLOYER), FULL_WHEELS));
}

TEST(DBDataToJSONTransformator, RendersReferencesOfReferencesAtLevelTwo)
{
    const XObject::Ptr car = makeCar();

    EXPECT_EQ(render(*car, 2), carWith(ownerWithEmployer(FULL_EMPLOYER), FULL_WHEELS));
}

TEST(DBDataToJSONTransformator, RendersOnlyIdUriAndNameOfAnObjectBelowLevelZero)
{
    const XObject::Ptr car = makeCar();

    EXPECT_EQ(render(*car, -1), referenceTo("cars", CAR_UUID, "Herbie"));
}

TEST(DBDataToJSONTransformator, RendersAnObjectWhoseValuesAreAllEmptyAsItsIdAlone)
{
    XObject::Ptr object = makeObject(CAR_UUID);
    addValue(*object, attribute("id"), Var());
    addValue(*object, attribute("speed", Orvi::DBData::AttrType_Number), Var());
    addValue(*object, attribute("tags", Orvi::DBData::AttrType_String, true), Var());

    EXPECT_EQ(render(*object, 1), "{\"id\":\"" + CAR_UUID + "\"}");
}

TEST(DBDataToJSONTransformator, GivesAnObjectWithoutAnIdAttributeItsUuid)
{
    XObject::Ptr object = makeObject(CAR_UUID);
    addValue(*object, attribute("speed", Orvi::DBData::AttrType_Number), 88.5);

    EXPECT_EQ(render(*object, 0), "{\"id\":\"" + CAR_UUID + "\",\"speed\":88.5}");
}

TEST(DBDataToJSONTransformator, ShowsAnArrayWithoutElementsAsNull)
{
    XObject::Ptr object = makeObject(CAR_UUID);
    addValue(*object, attribute("tags", Orvi::DBData::AttrType_String, true), arrayOf({}));

    EXPECT_EQ(render(*object, 0), "{\"id\":\"" + CAR_UUID + "\",\"tags\":null}");
}

TEST(DBDataToJSONTransformator, SkipsNullCellsOfAnObject)
{
    XObject::Ptr object = makeObject(CAR_UUID);
    object->getAttributeValues().push_back(AttributeValuePtr());
    addValue(*object, attribute("speed", Orvi::DBData::AttrType_Number), 88.5);

    EXPECT_EQ(render(*object, 0), "{\"id\":\"" + CAR_UUID + "\",\"speed\":88.5}");
}

TEST(DBDataToJSONTransformator, ReplacesWhatTheTargetObjectHeldBefore)
{
    XObject::Ptr object = makeObject(CAR_UUID);
    addValue(*object, attribute("speed", Orvi::DBData::AttrType_Number), 88.5);
    Poco::JSON::Object sut(0);
    sut.set("stale", true);

    const bool result = DBDataToJSONTransformator::transformXObjectToJSONObject(*object, sut, 0);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(sut), "{\"id\":\"" + CAR_UUID + "\",\"speed\":88.5}");
}

TEST(DBDataToJSONTransformator, FailsForAnObjectWithoutValuesAndLeavesTheTargetUntouched)
{
    const XObject::Ptr object = makeObject(CAR_UUID);
    Poco::JSON::Object sut(0);
    sut.set("stale", true);

    const bool result = DBDataToJSONTransformator::transformXObjectToJSONObject(*object, sut, 0);

    EXPECT_FALSE(result);
    EXPECT_EQ(toJson(sut), "{\"stale\":true}");
}

TEST(DBDataToJSONTransformator, TakesAStoredIdSpelledInOtherCaseForACorruptObject)
{
    XObject::Ptr object = makeObject(CAR_UUID);
    addValue(*object, attribute("id"), Poco::toUpper(CAR_UUID));

    const std::string message = bugcheckMessage(*object);

    EXPECT_THAT(message, StartsWith("Corrupt XObject in Database. UUID mismatch! in file \""));
    EXPECT_THAT(message, HasSubstr("DBDataToJSONTransformator.cpp"));
}

TEST(DBDataToJSONTransformator, TakesAStoredIdOfAnotherObjectForACorruptObject)
{
    XObject::Ptr object = makeObject(CAR_UUID);
    addValue(*object, attribute("id"), OWNER_UUID);

    EXPECT_THAT(bugcheckMessage(*object),
                StartsWith("Corrupt XObject in Database. UUID mismatch! in file \""));
}

TEST(DBDataToJSONTransformator, ChecksTheIdOfEveryReferencedObject)
{
    XObject::Ptr owner = makeObject(OWNER_UUID);
    addValue(*owner, attribute("id"), EMPLOYER_UUID);
    XObject::Ptr car = makeObject(CAR_UUID);
    addValue(*car, attribute("owner", Orvi::DBData::AttrType_Object), owner);

    EXPECT_THAT(bugcheckMessage(*car), StartsWith("Corrupt XObject in Database. UUID mismatch! in file \""));
}

TEST(DBDataToJSONTransformator, CannotCompareAnIdRenderedAsNull)
{
    XObject::Ptr object = makeObject(CAR_UUID);
    addValue(*object, attribute("id", Orvi::DBData::AttrType_String, true), arrayOf({}));
    Poco::JSON::Object sut(0);

    try
    {
        DBDataToJSONTransformator::transformXObjectToJSONObject(*object, sut, 0);
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Can not convert empty value.");
    }
}

TEST(DBDataToJSONTransformator, RendersAListOfObjectsInOrderSkippingNullPointers)
{
    const std::vector<XObject::Ptr> objects{makeWheel(REAR_WHEEL_UUID, "rear", 2.6), XObject::Ptr(),
                                            makeWheel(FRONT_WHEEL_UUID, "front", 2.4)};
    Poco::JSON::Array sut;

    const bool result = DBDataToJSONTransformator::transformXObjectsToJSONArray(objects, sut, -1);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(sut), "[" + referenceTo("wheels", REAR_WHEEL_UUID, "rear") + "," +
                               referenceTo("wheels", FRONT_WHEEL_UUID, "front") + "]");
}

TEST(DBDataToJSONTransformator, RendersAnEmptyListAsAnEmptyArray)
{
    const std::vector<XObject::Ptr> objects;
    Poco::JSON::Array sut;

    const bool result = DBDataToJSONTransformator::transformXObjectsToJSONArray(objects, sut, 0);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(sut), "[]");
}

TEST(DBDataToJSONTransformator, RendersTheObjectsOfAListAtTheGivenLevel)
{
    const std::vector<XObject::Ptr> objects{makeOwner()};
    Poco::JSON::Array sut;

    const bool result = DBDataToJSONTransformator::transformXObjectsToJSONArray(objects, sut, 1);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(sut), "[" + ownerWithEmployer(FULL_EMPLOYER) + "]");
}

TEST(DBDataToJSONTransformator, FailsAWholeListForOneObjectWithoutValues)
{
    const std::vector<XObject::Ptr> objects{makeWheel(FRONT_WHEEL_UUID, "front", 2.4), makeObject(CAR_UUID),
                                            makeWheel(REAR_WHEEL_UUID, "rear", 2.6)};
    Poco::JSON::Array sut;
    sut.add("stale");

    const bool result = DBDataToJSONTransformator::transformXObjectsToJSONArray(objects, sut, 0);

    EXPECT_FALSE(result);
    EXPECT_EQ(toJson(sut), "[]");
}

} // namespace
