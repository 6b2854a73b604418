#include "HttpRequestHandlerBase.h"

#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/DBData/XObjectCache.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Message/MessageSync.h"
#include "TestSupport/LocalHttpServer.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/StreamCopier.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::AttrType_Integer;
using Orvi::DBData::AttrType_Number;
using Orvi::DBData::AttrType_Object;
using Orvi::DBData::AttrType_String;
using Orvi::DBData::XObject;
using Poco::Dynamic::Var;
using Poco::Net::HTTPRequest;
using Poco::Net::HTTPResponse;
using ServiceDB::Test::LogCapture;
using Status = HTTPResponse::HTTPStatus;
using Lines = std::vector<std::string>;

// A fleet of cars with their drivers and passengers, the drivers' employer, and a garage on another
// port. The UUIDs sort in another order than the objects are stored, so that every list shows which
// order it follows.
const std::string ACME = "c0ffee00-0000-4000-8000-00000000acee";
const std::string ADA = "a7a7a7a7-1111-4111-8111-000000000ada";
const std::string BOB = "b0b0b0b0-2222-4222-8222-000000000b0b";
const std::string CID = "0c1d0c1d-3333-4333-8333-000000000c1d";
const std::string HERBIE = "f1f1f1f1-5555-4555-8555-0000000000f1";
const std::string KITT = "e2e2e2e2-6666-4666-8666-0000000000e2";
const std::string BUMBLE = "d3d3d3d3-7777-4777-8777-0000000000d3";
const std::string ECTO = "14141414-8888-4888-8888-000000000014";
const std::string SPOT = "5b075b07-9999-4999-8999-000000005b07";
const std::string UNKNOWN = "99999999-9999-4999-8999-999999999999";

const std::string JSON_MIMETYPE = "application/json; charset=utf-8";

Var arrayOf(std::initializer_list<Var> elements)
{
    return AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray(elements));
}

Var referenceTo(const std::string& resource, const std::string& uuid)
{
    return Poco::URI("/fleet/" + resource + "/" + uuid);
}

/// The cache of the microservice, with a look into its store for the checks of repairs.
class FleetCache : public Orvi::JSONDataCache::JSONDataCache
{
public:
    using Orvi::JSONDataCache::JSONDataCache::JSONDataCache;

    const Orvi::DBData::XObjectCache& store() const { return m_xobjCache; }
};

/// A microservice's handler: a GET reads the cache on the port the request came in on.
class FleetHandler : public Orvi::HttpRequestHandlerBase
{
public:
    FleetHandler(Orvi::Util::MessageSync& worker, FleetCache& cache)
        : Orvi::HttpRequestHandlerBase(worker)
        , m_cache(cache)
    {
    }

protected:
    Status processGetRequest(const Orvi::Command::HttpRequest& request, Orvi::Command::HttpResponse& response,
                             const Poco::URI&, const std::vector<std::string>&) override
    {
        return m_cache.queryCache(request, response, request.getHttpRequest().serverAddress().port());
    }

    Status processHeadRequest(const Orvi::Command::HttpRequest& request,
                              Orvi::Command::HttpResponse& response, const Poco::URI& uri,
                              const std::vector<std::string>& segments) override
    {
        return processGetRequest(request, response, uri, segments);
    }

    Status processPostRequest(const Orvi::Command::HttpRequest&, Orvi::Command::HttpResponse&,
                              const Poco::URI&, const std::vector<std::string>&) override
    {
        return HTTPResponse::HTTP_METHOD_NOT_ALLOWED;
    }

    Status processDeleteRequest(const Orvi::Command::HttpRequest&, Orvi::Command::HttpResponse&,
                                const Poco::URI&, const std::vector<std::string>&) override
    {
        return HTTPResponse::HTTP_METHOD_NOT_ALLOWED;
    }

private:
    FleetCache& m_cache;
};

class FleetHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    FleetHandlerFactory(Orvi::Util::MessageSync& worker, FleetCache& cache)
        : m_worker(worker)
        , m_cache(cache)
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new FleetHandler(m_worker, m_cache);
    }

private:
    Orvi::Util::MessageSync& m_worker;
    FleetCache& m_cache;
};

struct Answer
{
    int status = 0;
    std::string contentType;
    std::string body;
};

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string errorBody(int code)
{
    return "{\"code\":" + std::to_string(code) + ",\"message\":\"\",\"status\":\"error\"}";
}

std::string dataBody(const std::string& data)
{
    return "{\"data\":" + data + ",\"status\":\"ok\"}";
}

std::string list(std::initializer_list<std::string> objects)
{
    std::string text = "[";
    for (const std::string& object : objects)
    {
        text += (text.size() > 1 ? "," : "") + object;
    }
    return text + "]";
}

// An object past its expansion level: "id", "name" and "uri" alone.
std::string reduced(const std::string& resource, const std::string& uuid, const std::string& name)
{
    return "{\"id\":" + quoted(uuid) + ",\"name\":" + quoted(name) +
           ",\"uri\":" + quoted("/fleet/" + resource + "/" + uuid) + "}";
}

const std::string REDUCED_ACME = reduced("companies", ACME, "Acme");
const std::string FULL_ACME = "{\"city\":\"Springfield\",\"id\":" + quoted(ACME) +
                              ",\"name\":\"Acme\",\"uri\":" + quoted("/fleet/companies/" + ACME) + "}";
const std::string REDUCED_ADA = reduced("people", ADA, "Ada");
const std::string REDUCED_BOB = reduced("people", BOB, "Bob");
const std::string REDUCED_CID = reduced("people", CID, "Cid");
const std::string FULL_BOB =
    "{\"age\":41,\"id\":" + quoted(BOB) + ",\"name\":\"Bob\",\"uri\":" + quoted("/fleet/people/" + BOB) + "}";

std::string ada(const std::string& employer)
{
    return "{\"age\":36,\"employer\":" + employer + ",\"id\":" + quoted(ADA) +
           ",\"name\":\"Ada\",\"uri\":" + quoted("/fleet/people/" + ADA) + "}";
}

std::string cid(const std::string& employer)
{
    return "{\"age\":29,\"employer\":" + employer + ",\"id\":" + quoted(CID) +
           ",\"name\":\"Cid\",\"uri\":" + quoted("/fleet/people/" + CID) + "}";
}

std::string herbie(const std::string& driver, const std::string& passengers)
{
    return "{\"brand\":\"VW\",\"driver\":" + driver + ",\"id\":" + quoted(HERBIE) +
           ",\"mileage\":120000.5,\"name\":\"Herbie\",\"passengers\":" + passengers +
           ",\"seats\":4,\"tags\":[\"classic\",\"beetle\"],\"uri\":" + quoted("/fleet/cars/" + HERBIE) + "}";
}

const std::string HERBIE_0 = herbie(REDUCED_ADA, list({REDUCED_BOB, REDUCED_CID}));
const std::string KITT_0 =
    "{\"brand\":\"Pontiac\",\"driver\":" + REDUCED_BOB + ",\"id\":" + quoted(KITT) +
    ",\"mileage\":5000.25,\"name\":\"Kitt\",\"seats\":2,\"tags\":[\"talking\"],\"uri\":" +
    quoted("/fleet/cars/" + KITT) + "}";
const std::string BUMBLE_0 =
    "{\"brand\":\"Chevrolet\",\"driver\":" + REDUCED_CID + ",\"id\":" + quoted(BUMBLE) +
    ",\"mileage\":800.75,\"name\":\"Bumblebee\",\"passengers\":" + list({REDUCED_ADA}) +
    ",\"seats\":4,\"uri\":" + quoted("/fleet/cars/" + BUMBLE) + "}";
const std::string ECTO_0 = "{\"brand\":\"Cadillac\",\"id\":" + quoted(ECTO) +
                           ",\"mileage\":1959.5,\"name\":\"Ecto\",\"seats\":7,\"tags\":[\"ghost\"],\"uri\":" +
                           quoted("/fleet/cars/" + ECTO) + "}";

class ObjectQueryOverHttp : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 8;

    ObjectQueryOverHttp()
        : worker(CRITICAL_QUEUE_SIZE)
        , cache(services)
        , server(new FleetHandlerFactory(worker, cache))
    {
        Orvi::DBData::Service& fleet = addService("fleet", server.port());
        addResource(fleet, "companies", "company", {attribute("city")});
        addResource(fleet, "people", "person",
                    {attribute("age", AttrType_Integer), attribute("employer", AttrType_Object)});
        addResource(fleet, "cars", "car",
                    {attribute("brand"), attribute("driver", AttrType_Object),
                     attribute("mileage", AttrType_Number), attribute("passengers", AttrType_Object, true),
                     attribute("seats", AttrType_Integer), attribute("tags", AttrType_String, true)});
        addResource(fleet, "trailers", "trailer", {attribute("load", AttrType_Number)});
        Orvi::DBData::Service& garage = addService("garage", static_cast<Poco::UInt16>(server.port() + 1));
        addResource(garage, "spots", "spot", {attribute("level", AttrType_Integer)});

        insert("fleet", "companies", ACME, {{"name", "Acme"}, {"city", "Springfield"}});
        insert("fleet", "people", ADA,
               {{"name", "Ada"}, {"age", 36}, {"employer", referenceTo("companies", ACME)}});
        insert("fleet", "people", BOB, {{"name", "Bob"}, {"age", 41}});
        insert("fleet", "people", CID,
               {{"name", "Cid"}, {"age", 29}, {"employer", referenceTo("companies", ACME)}});
        insert("fleet", "cars", HERBIE,
               {{"name", "Herbie"},
                {"brand", "VW"},
                {"seats", 4},
                {"mileage", 120000.5},
                {"driver", referenceTo("people", ADA)},
                {"passengers", arrayOf({referenceTo("people", BOB), referenceTo("people", CID)})},
                {"tags", arrayOf({"classic", "beetle"})}});
        insert("fleet", "cars", KITT,
               {{"name", "Kitt"},
                {"brand", "Pontiac"},
                {"seats", 2},
                {"mileage", 5000.25},
                {"driver", referenceTo("people", BOB)},
                {"tags", arrayOf({"talking"})}});
        insert("fleet", "cars", BUMBLE,
               {{"name", "Bumblebee"},
                {"brand", "Chevrolet"},
                {"seats", 4},
                {"mileage", 800.75},
                {"driver", referenceTo("people", CID)},
                {"passengers", arrayOf({referenceTo("people", ADA)})}});
        insert("fleet", "cars", ECTO,
               {{"name", "Ecto"},
                {"brand", "Cadillac"},
                {"seats", 7},
                {"mileage", 1959.5},
                {"tags", arrayOf({"ghost"})}});
        insert("garage", "spots", SPOT, {{"name", "Corner"}, {"level", -1}});

        worker.start();
    }

    ~ObjectQueryOverHttp() override { worker.stop(); }

    static Attribute::Ptr attribute(const std::string& name,
                                    Orvi::DBData::AttributeType type = AttrType_String, bool isArray = false)
    {
        return new Attribute(name, type, isArray);
    }

    Orvi::DBData::Service& addService(const std::string& name, Poco::UInt16 port)
    {
        Orvi::DBData::Service::Ptr service = new Orvi::DBData::Service;
        service->setName(name);
        service->setPort(port);
        services[name] = service;
        return *service;
    }

    // Every element has the default attributes besides its own.
    static void addResource(Orvi::DBData::Service& service, const std::string& name,
                            const std::string& elementName, std::vector<Attribute::Ptr> attributes)
    {
        Orvi::DBData::Resource::Ptr resource = new Orvi::DBData::Resource(service);
        resource->setName(name);
        Orvi::DBData::Element::Ptr element = new Orvi::DBData::Element(*resource);
        element->setName(elementName);
        element->setDBID(static_cast<Orvi::DBData::DbId>(service.getResources().size() + 1));
        attributes.push_back(attribute("id"));
        attributes.push_back(attribute("name"));
        attributes.push_back(attribute("uri"));
        Orvi::DBData::AttributeMap attributeMap;
        for (const Attribute::Ptr& definition : attributes)
        {
            attributeMap.emplace(definition->getName(), definition);
        }
        element->setAttributes(std::move(attributeMap));
        resource->setElement(element);
        service.addResource(resource);
    }

    // Creates the object and writes its values one by one, as a client's POST does.
    void insert(const std::string& service, const std::string& resource, std::string uuid,
                std::initializer_list<std::pair<std::string, Var>> values)
    {
        ASSERT_TRUE(cache.insertXObject(service, resource, uuid));
        for (const auto& [name, value] : values)
        {
            write(uuid, name, value);
        }
    }

    void write(const std::string& uuid, const std::string& name, const Var& value)
    {
        const XObject::Ptr copy = cache.selectXObject(uuid, -1);
        ASSERT_FALSE(copy.isNull());
        AttributeValuePtr cell = copy->getValue(name);
        ASSERT_FALSE(cell.isNull());
        ASSERT_TRUE(cell->setValue(value));
        ASSERT_TRUE(cache.updateCacheAttributeValueById(*cell, false));
    }

    Answer get(const std::string& uri)
    {
        Poco::Net::HTTPClientSession session("127.0.0.1", server.port());
        session.setTimeout(Poco::Timespan(10, 0));
        HTTPRequest request(HTTPRequest::HTTP_GET, uri, HTTPRequest::HTTP_1_1);
        session.sendRequest(request);
        HTTPResponse response;
        std::istream& in = session.receiveResponse(response);
        Answer answer;
        answer.status = response.getStatus();
        answer.contentType = response.getContentType();
        Poco::StreamCopier::copyToString(in, answer.body);
        return answer;
    }

    std::vector<long> carsWith(const std::string& name, const std::string& uuid)
    {
        std::vector<long> ids;
        EXPECT_TRUE(cache.selectXObjectIDsWithAttributesOfValues("fleet", "cars", ids, {{name, Var(uuid)}}));
        return ids;
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    FleetCache cache;
    ServiceDB::Test::LocalHttpServer server;
};

TEST_F(ObjectQueryOverHttp, AnswersAResourceWithoutObjectsWithAnEmptyList)
{
    const Answer answer = get("/fleet/trailers");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.contentType, JSON_MIMETYPE);
    EXPECT_EQ(answer.body, dataBody("[]"));
}

TEST_F(ObjectQueryOverHttp, AnswersAResourceWithAllItsObjectsInTheOrderTheyWereStored)
{
    const Answer answer = get("/fleet/cars");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.contentType, JSON_MIMETYPE);
    EXPECT_EQ(answer.body, dataBody(list({HERBIE_0, KITT_0, BUMBLE_0, ECTO_0})));
}

TEST_F(ObjectQueryOverHttp, AnswersAPageOfAResourceWithItsNeighbours)
{
    const Answer answer = get("/fleet/cars?$offset=1&$limit=2");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"data\":" + list({KITT_0, BUMBLE_0}) +
                               ",\"paging\":{\"limit\":2,\"next\":\"/fleet/cars?$offset=3&$limit=2\","
                               "\"offset\":1,\"previous\":\"/fleet/cars?$offset=0&$limit=2\",\"total\":4,"
                               "\"totalPages\":2},\"status\":\"ok\"}");
}

TEST_F(ObjectQueryOverHttp, AnswersALimitOfZeroWithTheTotalsAlone)
{
    const Answer answer = get("/fleet/cars?$limit=0");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"data\":[],\"paging\":{\"limit\":0,\"offset\":0,\"total\":4,\"totalPages\":0},"
                           "\"status\":\"ok\"}");
}

TEST_F(ObjectQueryOverHttp, SortsAResourceByTheGivenKeys)
{
    const Answer answer = get("/fleet/cars?$sortby=-seats,name");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(list({ECTO_0, BUMBLE_0, HERBIE_0, KITT_0})));
}

TEST_F(ObjectQueryOverHttp, NarrowsTheObjectsOfAResourceToTheAskedFieldsAndTheirNames)
{
    const Answer answer = get("/fleet/cars?$fields=brand&$limit=2");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body,
              "{\"data\":[{\"brand\":\"VW\",\"id\":" + quoted(HERBIE) + ",\"name\":\"Herbie\",\"uri\":" +
                  quoted("/fleet/cars/" + HERBIE) + "},{\"brand\":\"Pontiac\",\"id\":" + quoted(KITT) +
                  ",\"name\":\"Kitt\",\"uri\":" + quoted("/fleet/cars/" + KITT) +
                  "}],\"paging\":{\"limit\":2,\"next\":\"/fleet/cars?$fields=brand&$limit=2&$offset=2\","
                  "\"offset\":0,\"total\":4,\"totalPages\":2},\"status\":\"ok\"}");
}

TEST_F(ObjectQueryOverHttp, AnswersAnObjectWithItsReferencesReducedToTheirNamesByDefault)
{
    const Answer answer = get("/fleet/cars/" + HERBIE);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.contentType, JSON_MIMETYPE);
    EXPECT_EQ(answer.body, dataBody(HERBIE_0));
}

TEST_F(ObjectQueryOverHttp, AnswersAnObjectAtLevelZeroLikeTheDefault)
{
    const Answer answer = get("/fleet/cars/" + HERBIE + "?$expand=0");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(HERBIE_0));
}

TEST_F(ObjectQueryOverHttp, ExpandsTheReferencesAndArraysOfReferencesOfAnObjectAtLevelOne)
{
    const Answer answer = get("/fleet/cars/" + HERBIE + "?$expand=1");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(herbie(ada(REDUCED_ACME), list({FULL_BOB, cid(REDUCED_ACME)}))));
}

TEST_F(ObjectQueryOverHttp, ExpandsTheReferencesOfReferencesAtLevelTwo)
{
    const Answer answer = get("/fleet/cars/" + HERBIE + "?$expand=2");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(herbie(ada(FULL_ACME), list({FULL_BOB, cid(FULL_ACME)}))));
}

TEST_F(ObjectQueryOverHttp, FindsTheObjectsWhoseAttributeHoldsTheWholeValue)
{
    const Answer answer = get("/fleet/cars?brand=VW");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(list({HERBIE_0})));
}

TEST_F(ObjectQueryOverHttp, FindsNothingByAPartOfAValueWithoutWildcard)
{
    const Answer answer = get("/fleet/cars?brand=o");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody("[]"));
}

TEST_F(ObjectQueryOverHttp, FindsTheObjectsWhoseAttributeContainsAValueBetweenWildcards)
{
    const Answer answer = get("/fleet/cars?brand=%25o%25");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(list({KITT_0, BUMBLE_0})));
}

TEST_F(ObjectQueryOverHttp, FindsTheObjectsWhoseAttributeStartsWithAValueBeforeAWildcard)
{
    const Answer answer = get("/fleet/cars?brand=C%25");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(list({BUMBLE_0, ECTO_0})));
}

TEST_F(ObjectQueryOverHttp, FindsTheObjectsThatHoldAnyOfSeveralValues)
{
    const Answer answer = get("/fleet/cars?brand=Cadillac,VW");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(list({HERBIE_0, ECTO_0})));
}

TEST_F(ObjectQueryOverHttp, FindsTheObjectsThatMatchBothOfTwoAttributes)
{
    const Answer answer = get("/fleet/cars?seats=4&brand=Chevrolet");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(list({BUMBLE_0})));
}

TEST_F(ObjectQueryOverHttp, FindsNothingByAnAttributeTheElementDoesNotHave)
{
    const Answer answer = get("/fleet/cars?colour=red");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody("[]"));
}

TEST_F(ObjectQueryOverHttp, FindsAnObjectByFreeTextInAnElementOfAnArray)
{
    const Answer answer = get("/fleet/cars?$q=talking");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(list({KITT_0})));
}

TEST_F(ObjectQueryOverHttp, FindsTheObjectsThatReferToAnObjectByFreeText)
{
    const Answer answer = get("/fleet/cars?$q=" + ADA);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(list({HERBIE_0, BUMBLE_0})));
}

TEST_F(ObjectQueryOverHttp, CombinesFreeTextWithAnAttributeSearch)
{
    const Answer answer = get("/fleet/cars?$q=" + ADA + "&seats=4&$fields=seats");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body,
              dataBody(list({"{\"id\":" + quoted(HERBIE) + ",\"name\":\"Herbie\",\"seats\":4,\"uri\":" +
                                 quoted("/fleet/cars/" + HERBIE) + "}",
                             "{\"id\":" + quoted(BUMBLE) + ",\"name\":\"Bumblebee\",\"seats\":4,\"uri\":" +
                                 quoted("/fleet/cars/" + BUMBLE) + "}"})));
}

TEST_F(ObjectQueryOverHttp, DropsADanglingReferenceFromTheAnswerAndFromTheStore)
{
    ASSERT_EQ(carsWith("driver", ADA).size(), 1U);
    ASSERT_TRUE(cache.deleteXObject(ADA));
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const Answer first = get("/fleet/cars/" + HERBIE);
    const Lines firstLines = capture.lines();
    capture.clear();
    const Answer second = get("/fleet/cars/" + HERBIE);

    const std::string expected =
        "{\"brand\":\"VW\",\"id\":" + quoted(HERBIE) +
        ",\"mileage\":120000.5,\"name\":\"Herbie\",\"passengers\":" + list({REDUCED_BOB, REDUCED_CID}) +
        ",\"seats\":4,\"tags\":[\"classic\",\"beetle\"],"
        "\"uri\":" +
        quoted("/fleet/cars/" + HERBIE) + "}";
    EXPECT_EQ(first.status, 200);
    EXPECT_EQ(first.body, dataBody(expected));
    EXPECT_EQ(firstLines,
              (Lines{"Warning: Can not find XObject with UUID " + ADA,
                     "Error: Failed to retrieve references for " + HERBIE + " attribute driver"}));
    EXPECT_TRUE(cache.store().get(HERBIE)->getValue("driver")->getValue().isEmpty());
    EXPECT_TRUE(carsWith("driver", ADA).empty());
    EXPECT_EQ(second.body, first.body);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(ObjectQueryOverHttp, ShrinksAPartlyDanglingArrayOfReferencesInTheAnswerAndInTheStore)
{
    ASSERT_TRUE(cache.deleteXObject(BOB));
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const Answer answer = get("/fleet/cars/" + HERBIE);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, dataBody(herbie(REDUCED_ADA, list({REDUCED_CID}))));
    EXPECT_EQ(capture.lines(), Lines{});
    const Var& stored = cache.store().get(HERBIE)->getValue("passengers")->getValue();
    ASSERT_EQ(stored.type(), typeid(AttributeValue::ValueArrayPtr));
    EXPECT_EQ(*stored.extract<AttributeValue::ValueArrayPtr>(), AttributeValue::ValueArray{Var(CID)});
}

TEST_F(ObjectQueryOverHttp, AnswersAnUnknownObjectWith404)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const Answer answer = get("/fleet/cars/" + UNKNOWN);

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(capture.lines(),
              (Lines{"Warning: Can not find XObject with UUID " + UNKNOWN,
                     "Warning: Selection of Element \"/fleet/cars/" + UNKNOWN + "/\" failed."}));
}

TEST_F(ObjectQueryOverHttp, AnswersAnObjectOfAnotherResourceWith404)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const Answer answer = get("/fleet/cars/" + ADA);

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(capture.lines(), (Lines{"Warning: Can not find element fleet/cars/" + ADA,
                                      "Warning: Selection of Element \"/fleet/cars/" + ADA + "/\" failed."}));
}

TEST_F(ObjectQueryOverHttp, AnswersAKnownObjectOfAServiceOnAnotherPortWith404)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);

    const Answer answer = get("/garage/spots/" + SPOT);

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(ObjectQueryOverHttp, AnswersAStoredObjectWithAForeignIdWith500)
{
    write(KITT, "id", ECTO);
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const Answer answer = get("/fleet/cars/" + KITT);

    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, errorBody(500));
    EXPECT_EQ(capture.lines(), Lines{"Error: Failed to transform Element query to Response: Bugcheck"});
}

TEST_F(ObjectQueryOverHttp, AnswersTheResourceOfAStoredObjectWithAForeignIdWith500)
{
    write(KITT, "id", ECTO);
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const Answer answer = get("/fleet/cars");

    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, errorBody(500));
    EXPECT_EQ(capture.lines(), Lines{"Error: Failed to transform Resource query to Response: Bugcheck"});
}

} // namespace
