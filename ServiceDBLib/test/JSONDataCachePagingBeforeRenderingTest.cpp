#include "JSONDataCache/JSONDataCache.h"

#include "Command/HttpResponse.h"
#include "Command/RequestBase.h"
#include "Command/WebSocketResponseObject.h"
#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/JsonText.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <Poco/Message.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/NumberFormatter.h>
#include <Poco/String.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <sstream>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace
{

using Orvi::Command::HttpResponse;
using Orvi::Command::RequestBase;
using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::Element;
using Orvi::DBData::ServiceMap;
using Orvi::DBData::XObject;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::Fleet::addResource;
using ServiceDB::Test::Fleet::InspectableCache;
using ServiceDB::Test::Fleet::makeAttribute;
using ServiceDB::Test::Fleet::makeRequest;
using ServiceDB::Test::Fleet::withDefaults;
using Status = Poco::Net::HTTPResponse::HTTPStatus;
using Strings = std::vector<std::string>;
using ValueArrayPtr = AttributeValue::ValueArrayPtr;

const std::string SERVICE = "yard";
const Poco::UInt16 PORT = 8093;
const std::string THINGS = "things";
const std::string TARGETS = "targets";
const std::string EMPTIES = "empties";

// "yard": "things" holds a value of every type, references to "targets" among them, and each target may
// name a thing back, so that deeper expansions meet references too; the element of "empties" has no
// attributes, so that its objects have no values.
ServiceMap makeYard()
{
    using namespace Orvi::DBData;

    Service::Ptr yard(new Service);
    yard->setName(SERVICE);
    yard->setPort(PORT);
    addResource(
        *yard, THINGS, "thing", 1,
        withDefaults(
            {makeAttribute("label"), makeAttribute("count", AttrType_Integer),
             makeAttribute("size", AttrType_IntegerUnsigned), makeAttribute("weight", AttrType_Number),
             makeAttribute("active", AttrType_Boolean), makeAttribute("tags", AttrType_String, true),
             makeAttribute("scores", AttrType_Integer, true), makeAttribute("owner", AttrType_Object),
             makeAttribute("links", AttrType_Object, true)}));
    addResource(*yard, TARGETS, "target", 2,
                withDefaults({makeAttribute("level", AttrType_Integer), makeAttribute("colour"),
                              makeAttribute("partner", AttrType_Object)}));
    addResource(*yard, EMPTIES, "empty", 3, {});
    return ServiceMap{{SERVICE, yard}};
}

std::string thingUuid(int number)
{
    return "a0000000-0000-4000-8000-" + Poco::toLower(Poco::NumberFormatter::formatHex(number, 12));
}

std::string targetUuid(int number)
{
    return "b0000000-0000-4000-8000-" + Poco::toLower(Poco::NumberFormatter::formatHex(number, 12));
}

const std::string NEVER_STORED = "e0000000-0000-4000-8000-000000000009";

std::string uriOf(const std::string& resource, const std::string& uuid)
{
    return "/" + SERVICE + "/" + resource + "/" + uuid;
}

ValueArrayPtr arrayOf(AttributeValue::ValueArray elements)
{
    return ValueArrayPtr(new AttributeValue::ValueArray(std::move(elements)));
}

// A store keeps the vector of an array it is given, so each store gets a copy of its own.
Var copyOf(const Var& value)
{
    if (value.type() == typeid(ValueArrayPtr))
    {
        return arrayOf(*value.extract<ValueArrayPtr>());
    }
    return value;
}

struct Answer
{
    Status status;
    std::string mimetype;
    std::string body;
};

Answer answer(InspectableCache& cache, const RequestBase& request)
{
    HttpResponse response;
    const Status status = cache.queryCache(request, response, PORT);
    return {status, response.getMimetype(), response.getBody()};
}

Answer answer(InspectableCache& cache, const std::string& address)
{
    return answer(cache, makeRequest(address));
}

// Where two texts part, with some text before and after; the answers are too long to be read whole.
std::string firstDifference(const std::string& actual, const std::string& expected)
{
    const std::size_t context = 160;
    std::size_t at = 0;
    while (at < actual.size() && at < expected.size() && actual[at] == expected[at])
    {
        ++at;
    }
    const std::size_t begin = at > context ? at - context : 0;
    return "first difference at " + std::to_string(at) + "\n  actual:   ..." +
           actual.substr(begin, 2 * context) + "\n  expected: ..." + expected.substr(begin, 2 * context);
}

Poco::JSON::Object::Ptr parsed(const std::string& body)
{
    return Poco::JSON::Parser().parse(body).extract<Poco::JSON::Object::Ptr>();
}

std::string pagingOf(const std::string& body)
{
    std::ostringstream out;
    parsed(body)->getObject("paging")->stringify(out);
    return out.str();
}

// How each row of an answer's "data" is held: "text" (written JSON text), "object" or "other".
Strings rowFormsOf(const Poco::JSON::Object::Ptr& answer)
{
    Strings forms;
    const Poco::JSON::Array::Ptr data = answer->getArray("data");
    for (std::size_t row = 0; !data.isNull() && row < data->size(); ++row)
    {
        const std::type_info& type = data->get(static_cast<unsigned int>(row)).type();
        forms.push_back(type == typeid(Orvi::JSONDataCache::JsonText) ? "text"
                        : type == typeid(Poco::JSON::Object::Ptr)     ? "object"
                                                                      : "other");
    }
    return forms;
}

// How the "data" of an answer of one object is held.
std::string dataFormOf(const Poco::JSON::Object::Ptr& answer)
{
    const std::type_info& type = answer->get("data").type();
    return type == typeid(Orvi::JSONDataCache::JsonText) ? "text"
           : type == typeid(Poco::JSON::Object::Ptr)     ? "object"
                                                         : "other";
}

Strings idsOf(const std::string& body)
{
    Strings ids;
    const Poco::JSON::Array::Ptr data = parsed(body)->getArray("data");
    for (std::size_t i = 0; i < data->size(); ++i)
    {
        ids.push_back(data->getObject(static_cast<unsigned int>(i))->getValue<std::string>("id"));
    }
    return ids;
}

// Two stores built alike: the one under test pages before rendering, the reference renders every object
// that it finds first.
class StorePair
{
public:
    StorePair() { reference.setPagingBeforeRendering(false); }

    void insert(const std::string& resource, const std::string& uuid)
    {
        for (InspectableCache* cache : {&sut, &reference})
        {
            XObject object{Element::Ptr()};
            object.setId(Orvi::DBData::UUID(uuid));
            EXPECT_TRUE(cache->insertXObject(SERVICE, resource, object)) << resource << " " << uuid;
        }
    }

    void write(const std::string& uuid, const std::string& attribute, const Var& value)
    {
        for (InspectableCache* cache : {&sut, &reference})
        {
            const XObject::Ptr stored = cache->store().get(uuid);
            ASSERT_FALSE(stored.isNull()) << uuid;
            // A removal needs a stored value; the stores may have repaired different references.
            if (value.isEmpty() && !stored->getValue(attribute)->hasValue())
            {
                continue;
            }
            const XObject::Ptr copy = cache->selectXObject(uuid, -1);
            AttributeValuePtr cell = copy->getValue(attribute);
            cell->setValue(copyOf(value), false);
            EXPECT_TRUE(cache->updateCacheAttributeValueById(*cell, true)) << uuid << " " << attribute;
        }
    }

    void remove(const std::string& uuid)
    {
        EXPECT_TRUE(sut.deleteXObject(uuid)) << uuid;
        EXPECT_TRUE(reference.deleteXObject(uuid)) << uuid;
    }

    ServiceMap sutServices = makeYard();
    InspectableCache sut{sutServices};
    ServiceMap referenceServices = makeYard();
    InspectableCache reference{referenceServices};
};

// ---------------------------------------------------------------------------------------------------------
// Random queries on random stores.

const Strings WORDS{"Red Fox", "red fox", "Blue 7", "blue7",   "GREEN",
                    "Green",   "x 1",     "alpha",  "Alpha 2", "7"};
const std::vector<Attribute::Integer> INTEGERS{-40, -3, 0, 1, 5, 12};
const std::vector<Attribute::IntegerUnsigned> UNSIGNEDS{0, 1, 7, 42, 1000};
const std::vector<Attribute::Number> NUMBERS{-2.5, -0.5, 0.0, 0.25, 1.0, 3.75, 100.0};
const Strings NUMBER_TEXTS{"-2.5", "-0.5", "0", "0.25", "1", "1.0", "3.75", "100"};
const Strings BOOLEAN_TEXTS{"true", "false", "1"};

const Strings THING_VALUES{"name",   "label", "count",  "size",  "weight",
                           "active", "tags",  "scores", "owner", "links"};
const Strings TARGET_VALUES{"name", "level", "colour", "partner"};
const Strings THING_KEYS{"id",     "name", "uri",    "label", "count", "size",   "weight",
                         "active", "tags", "scores", "owner", "links", "nothing"};
const Strings TARGET_KEYS{"id", "name", "uri", "level", "colour", "partner", "nothing"};
const Strings LIMITS{"0", "1", "5", "20", "1000"};
const Strings EXPANSIONS{"0", "1", "2", "3", "owner", "links", "owner,links", "partner", "colour"};

const int THING_COUNT = 40;
const int TARGET_COUNT = 12;
const int TARGETS_GONE = 3;
const int QUERY_COUNT = 150;

// The draws depend on the engine only, which the standard fixes, so every seed replays alike everywhere.
class Dice
{
public:
    explicit Dice(unsigned int seed)
        : m_engine(seed)
    {
    }

    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(m_engine() % bound); }

    bool chance(std::size_t percent) { return below(100) < percent; }

    template <class T>
    const T& pick(const std::vector<T>& values)
    {
        return values[below(values.size())];
    }

private:
    std::mt19937 m_engine;
};

std::string encoded(const std::string& text)
{
    std::string result;
    for (const char c : text)
    {
        if (c == ' ')
        {
            result += "%20";
        }
        else if (c == '%')
        {
            result += "%25";
        }
        else
        {
            result += c;
        }
    }
    return result;
}

class JSONDataCachePagingBeforeRenderingRandomTest : public testing::TestWithParam<unsigned int>
{
protected:
    void fill()
    {
        for (int i = 0; i < TARGET_COUNT; ++i)
        {
            insertTarget();
        }
        for (int i = 0; i < THING_COUNT; ++i)
        {
            insertThing();
        }
        // The targets came first, so they name things only now.
        for (const std::string& uuid : targets)
        {
            stores.write(uuid, "partner", randomValue("partner"));
        }
        for (int i = 0; i < TARGETS_GONE; ++i)
        {
            removeFrom(targets);
        }
    }

    void insertThing()
    {
        const std::string uuid = thingUuid(++thingsMade);
        stores.insert(THINGS, uuid);
        things.push_back(uuid);
        for (const std::string& attribute : THING_VALUES)
        {
            stores.write(uuid, attribute, randomValue(attribute));
        }
    }

    void insertTarget()
    {
        const std::string uuid = targetUuid(++targetsMade);
        stores.insert(TARGETS, uuid);
        targets.push_back(uuid);
        for (const std::string& attribute : TARGET_VALUES)
        {
            stores.write(uuid, attribute, randomValue(attribute));
        }
    }

    void removeFrom(Strings& uuids)
    {
        const std::size_t index = dice.below(uuids.size());
        stores.remove(uuids[index]);
        gone.push_back(uuids[index]);
        uuids.erase(uuids.begin() + static_cast<std::ptrdiff_t>(index));
    }

    // Nulls, ties and negative numbers are frequent, so that searches hit and sorts meet equal keys.
    Var randomValue(const std::string& attribute)
    {
        if (dice.chance(25))
        {
            return Var();
        }
        if (attribute == "name" || attribute == "label" || attribute == "colour")
        {
            return dice.pick(WORDS);
        }
        if (attribute == "count" || attribute == "level")
        {
            return dice.pick(INTEGERS);
        }
        if (attribute == "size")
        {
            return dice.pick(UNSIGNEDS);
        }
        if (attribute == "weight")
        {
            return dice.pick(NUMBERS);
        }
        if (attribute == "active")
        {
            return dice.chance(50);
        }
        if ((attribute == "owner" || attribute == "links") && targets.empty())
        {
            return Var();
        }
        if (attribute == "owner")
        {
            return uriOf(TARGETS, dice.pick(targets));
        }
        if (attribute == "partner")
        {
            return things.empty() ? Var() : Var(uriOf(THINGS, dice.pick(things)));
        }
        AttributeValue::ValueArray elements(1 + dice.below(3));
        for (Var& element : elements)
        {
            if (attribute == "tags")
            {
                element = dice.pick(WORDS);
            }
            else if (attribute == "scores")
            {
                element = dice.pick(INTEGERS);
            }
            else
            {
                element = uriOf(TARGETS, dice.pick(targets));
            }
        }
        return arrayOf(std::move(elements));
    }

    void mutate()
    {
        const std::size_t kind = dice.below(10);
        if (kind < 5)
        {
            const bool ofThing = dice.chance(80);
            const Strings& uuids = ofThing ? things : targets;
            const Strings& attributes = ofThing ? THING_VALUES : TARGET_VALUES;
            if (uuids.empty())
            {
                return;
            }
            const std::string uuid = dice.pick(uuids);
            const std::string attribute = dice.pick(attributes);
            stores.write(uuid, attribute, randomValue(attribute));
        }
        else if (kind < 7)
        {
            if (dice.chance(70) && targets.size() > 2)
            {
                removeFrom(targets);
            }
            else if (things.size() > 5)
            {
                removeFrom(things);
            }
        }
        else if (dice.chance(60))
        {
            insertThing();
        }
        else
        {
            insertTarget();
        }
    }

    std::string anyUuid(const Strings& uuids) { return uuids.empty() ? NEVER_STORED : dice.pick(uuids); }

    std::string goneUuid() { return dice.chance(30) ? NEVER_STORED : anyUuid(gone); }

    std::string randomOffset(bool ofThings)
    {
        switch (dice.below(8))
        {
        case 0:
            return "0";
        case 1:
            return "3";
        case 2:
            return "-1";
        case 3:
            return "90";
        case 4:
            return anyUuid(ofThings ? targets : things);
        case 5:
            return goneUuid();
        default:
            return anyUuid(ofThings ? things : targets);
        }
    }

    std::string sortKey(const Strings& keys)
    {
        const std::string prefix = dice.chance(35) ? "-" : "";
        return prefix + dice.pick(keys);
    }

    std::string plainSearchValue(const std::string& attribute, bool ofThings)
    {
        if (attribute == "name" || attribute == "label" || attribute == "colour" || attribute == "tags")
        {
            return dice.pick(WORDS);
        }
        if (attribute == "count" || attribute == "level" || attribute == "scores")
        {
            return std::to_string(dice.pick(INTEGERS));
        }
        if (attribute == "size")
        {
            return std::to_string(dice.pick(UNSIGNEDS));
        }
        if (attribute == "weight")
        {
            return dice.pick(NUMBER_TEXTS);
        }
        if (attribute == "active")
        {
            return dice.pick(BOOLEAN_TEXTS);
        }
        if (attribute == "owner" || attribute == "links")
        {
            return dice.chance(80) ? anyUuid(targets) : goneUuid();
        }
        if (attribute == "partner")
        {
            return dice.chance(80) ? anyUuid(things) : goneUuid();
        }
        const std::string uuid = anyUuid(ofThings ? things : targets);
        if (attribute == "uri")
        {
            return uriOf(ofThings ? THINGS : TARGETS, uuid);
        }
        if (attribute == "id")
        {
            return uuid;
        }
        return "x";
    }

    // A value as written, or a part of it with a wildcard at either end or at both.
    std::string searchValue(const std::string& attribute, bool ofThings)
    {
        const std::string text = plainSearchValue(attribute, ofThings);
        const std::size_t cut = 1 + dice.below(text.size());
        switch (dice.below(7))
        {
        case 0:
            return text.substr(0, cut) + "%";
        case 1:
            return "%" + text.substr(cut - 1);
        case 2:
            return "%" + text.substr(cut / 2, cut - cut / 2) + "%";
        case 3:
            return "%";
        default:
            return text;
        }
    }

    std::string attributeSearch(const Strings& keys, bool ofThings)
    {
        const std::string attribute = dice.pick(keys);
        std::string values = searchValue(attribute, ofThings);
        if (dice.chance(25))
        {
            values += "," + searchValue(attribute, ofThings);
        }
        return attribute + "=" + encoded(values);
    }

    std::string freeText()
    {
        std::string text;
        switch (dice.below(4))
        {
        case 0:
            text = anyUuid(targets);
            break;
        case 1:
            text = dice.pick(NUMBER_TEXTS);
            break;
        default:
            text = dice.pick(WORDS);
            break;
        }
        const std::size_t cut = 1 + dice.below(text.size());
        switch (dice.below(4))
        {
        case 0:
            return text.substr(0, cut) + "%";
        case 1:
            return "%" + text.substr(cut - 1);
        default:
            return text;
        }
    }

    std::string randomAddress()
    {
        const bool ofThings = !dice.chance(15);
        const Strings& keys = ofThings ? THING_KEYS : TARGET_KEYS;
        if (dice.chance(15))
        {
            return randomObjectAddress(ofThings, keys);
        }
        Strings parts;
        if (dice.chance(45))
        {
            parts.push_back("$limit=" + dice.pick(LIMITS));
        }
        if (dice.chance(40))
        {
            parts.push_back("$offset=" + randomOffset(ofThings));
        }
        if (dice.chance(50))
        {
            std::string sorting = sortKey(keys);
            if (dice.chance(30))
            {
                sorting += "," + sortKey(keys);
            }
            parts.push_back("$sortby=" + sorting);
        }
        if (dice.chance(20))
        {
            std::string fields = dice.pick(keys);
            if (dice.chance(50))
            {
                fields += "," + dice.pick(keys);
            }
            parts.push_back("$fields=" + fields);
        }
        if (dice.chance(25))
        {
            parts.push_back("$expand=" + dice.pick(EXPANSIONS));
        }
        if (dice.chance(35))
        {
            parts.push_back(attributeSearch(keys, ofThings));
            if (dice.chance(25))
            {
                parts.push_back(attributeSearch(keys, ofThings));
            }
        }
        if (dice.chance(20))
        {
            parts.push_back("$q=" + encoded(freeText()));
        }
        for (std::size_t i = parts.size(); i > 1; --i)
        {
            std::swap(parts[i - 1], parts[dice.below(i)]);
        }

        std::string address = "/" + SERVICE + "/" + (ofThings ? THINGS : TARGETS);
        for (std::size_t i = 0; i < parts.size(); ++i)
        {
            address += (i == 0 ? "?" : "&") + parts[i];
        }
        return address;
    }

    // One object: mostly a stored one of the resource, else one of the other resource or one that is gone.
    std::string randomObjectAddress(bool ofThings, const Strings& keys)
    {
        std::string uuid;
        switch (dice.below(8))
        {
        case 0:
            uuid = anyUuid(ofThings ? targets : things);
            break;
        case 1:
            uuid = goneUuid();
            break;
        default:
            uuid = anyUuid(ofThings ? things : targets);
            break;
        }
        std::string address = uriOf(ofThings ? THINGS : TARGETS, uuid);
        if (dice.chance(20))
        {
            address += "?$fields=" + dice.pick(keys);
        }
        else if (dice.chance(30))
        {
            address += "?$expand=" + dice.pick(EXPANSIONS);
        }
        return address;
    }

    // Asks both stores; false, with the failure recorded, when the answers differ or one throws.
    bool answersAlike(int query, const std::string& address, Answer& out_actual)
    {
        Answer expected{};
        try
        {
            const RequestBase request = makeRequest(address);
            expected = answer(stores.reference, request);
            out_actual = answer(stores.sut, request);
        }
        catch (const Poco::Exception& e)
        {
            ADD_FAILURE() << "query " << query << " " << address << ": " << e.displayText();
            return false;
        }
        EXPECT_EQ(out_actual.status, expected.status) << "query " << query << " " << address;
        EXPECT_EQ(out_actual.mimetype, expected.mimetype) << "query " << query << " " << address;
        EXPECT_TRUE(out_actual.body == expected.body) << "query " << query << " " << address << "\n"
                                                      << firstDifference(out_actual.body, expected.body);
        return out_actual.status == expected.status && out_actual.mimetype == expected.mimetype &&
               out_actual.body == expected.body;
    }

    Dice dice{GetParam()};
    StorePair stores;
    Strings things;
    Strings targets;
    Strings gone;
    int thingsMade = 0;
    int targetsMade = 0;
};

TEST_P(JSONDataCachePagingBeforeRenderingRandomTest, AnswersEveryQueryAsRenderingEveryObjectFirstDoes)
{
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    // Repairs and misses log at every query; only errors are kept, and dropped after each query.
    LogCapture quiet(Poco::Message::PRIO_ERROR);
    fill();
    int answersWithObjects = 0;
    int answersOfOneObject = 0;

    for (int query = 0; query < QUERY_COUNT; ++query)
    {
        // Changes between queries leave references dangling after their objects have been shown.
        if (dice.chance(12))
        {
            mutate();
        }
        const std::string address = randomAddress();
        Answer actual{};
        const bool alike = answersAlike(query, address, actual);
        quiet.clear();
        if (!alike)
        {
            // Later answers would only repeat the difference that the stores now carry.
            return;
        }
        if (actual.body.find("\"data\":[{") != std::string::npos)
        {
            ++answersWithObjects;
        }
        if (actual.body.find("\"data\":{") != std::string::npos)
        {
            ++answersOfOneObject;
        }
    }

    // Guards against queries that never find anything, which would compare empty answers only.
    EXPECT_GT(answersWithObjects, QUERY_COUNT / 3);
    EXPECT_GT(answersOfOneObject, QUERY_COUNT / 20);
}

TEST_P(JSONDataCachePagingBeforeRenderingRandomTest,
       AnswersSortedPagesAfterChangedValuesAsSortingEveryObjectDoes)
{
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    LogCapture quiet(Poco::Message::PRIO_ERROR);
    fill();
    // A few sorts asked again and again, so that their orders are kept and the changed objects moved.
    Strings sortings;
    for (int i = 0; i < 3; ++i)
    {
        std::string sorting = "$sortby=" + sortKey(THING_KEYS);
        if (dice.chance(40))
        {
            sorting += "," + sortKey(THING_KEYS);
        }
        sortings.push_back(sorting);
    }

    for (int query = 0; query < QUERY_COUNT; ++query)
    {
        const std::size_t changes = dice.below(4);
        for (std::size_t i = 0; i < changes; ++i)
        {
            const std::string attribute = dice.pick(THING_VALUES);
            stores.write(dice.pick(things), attribute, randomValue(attribute));
        }
        const std::string address = "/" + SERVICE + "/" + THINGS + "?" + dice.pick(sortings) +
                                    "&$limit=" + dice.pick(LIMITS) + "&$offset=" + randomOffset(true);
        Answer actual{};
        const bool alike = answersAlike(query, address, actual);
        quiet.clear();
        if (!alike)
        {
            return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, JSONDataCachePagingBeforeRenderingRandomTest, testing::Range(1U, 21U));

// ---------------------------------------------------------------------------------------------------------
// Named cases.

class JSONDataCachePagingBeforeRenderingTest : public testing::Test
{
protected:
    void insertThings(int count)
    {
        for (int i = 1; i <= count; ++i)
        {
            stores.insert(THINGS, thingUuid(i));
        }
    }

    std::string reduced(const std::string& resource, const std::string& uuid)
    {
        return "{\"id\":\"" + uuid + "\",\"name\":\"\",\"uri\":\"" + uriOf(resource, uuid) + "\"}";
    }

    StorePair stores;
    InspectableCache& sut = stores.sut;
};

TEST_F(JSONDataCachePagingBeforeRenderingTest, GivesTheSamePagingObjectForThePageAtTheEndOfAResource)
{
    insertThings(7);
    const std::string address = "/yard/things?$limit=5&$offset=5";

    const Answer actual = answer(sut, address);

    const Answer expected = answer(stores.reference, address);
    EXPECT_EQ(actual.status, Status::HTTP_OK);
    EXPECT_EQ(pagingOf(actual.body),
              "{\"limit\":5,\"offset\":5,\"previous\":\"/yard/things?$limit=5&$offset=0\",\"total\":7,"
              "\"totalPages\":2}");
    EXPECT_EQ(idsOf(actual.body), Strings({thingUuid(6), thingUuid(7)}));
    EXPECT_EQ(actual.body, expected.body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, PutsNullsLastWhenSortingByANumberInEitherDirection)
{
    insertThings(5);
    stores.write(thingUuid(1), "weight", 2.5);
    stores.write(thingUuid(3), "weight", -1.0);
    stores.write(thingUuid(5), "weight", 0.25);

    const Answer ascending = answer(sut, "/yard/things?$sortby=weight&$fields=weight");
    const Answer descending = answer(sut, "/yard/things?$sortby=-weight&$fields=weight");

    EXPECT_EQ(idsOf(ascending.body),
              Strings({thingUuid(3), thingUuid(5), thingUuid(1), thingUuid(2), thingUuid(4)}));
    EXPECT_EQ(idsOf(descending.body),
              Strings({thingUuid(1), thingUuid(5), thingUuid(3), thingUuid(2), thingUuid(4)}));
    EXPECT_EQ(ascending.body, answer(stores.reference, "/yard/things?$sortby=weight&$fields=weight").body);
    EXPECT_EQ(descending.body, answer(stores.reference, "/yard/things?$sortby=-weight&$fields=weight").body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest,
       GivesAnEmptyPageWithoutOffsetForTheUuidOfAnObjectThatTheSearchExcluded)
{
    insertThings(4);
    stores.write(thingUuid(1), "label", "Green");
    stores.write(thingUuid(2), "label", "Blue 7");
    stores.write(thingUuid(3), "label", "Green");
    const std::string address = "/yard/things?label=Green&$offset=" + thingUuid(2) + "&$limit=2";

    const Answer actual = answer(sut, address);

    EXPECT_EQ(actual.status, Status::HTTP_OK);
    EXPECT_EQ(actual.body, "{\"data\":[],\"paging\":{\"limit\":2,\"offsetId\":\"" + thingUuid(2) +
                               "\",\"total\":2,\"totalPages\":1},\"status\":\"ok\"}");
    EXPECT_EQ(actual.body, answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, RepairsADanglingReferenceOnThePageInTheAnswerAndInTheStore)
{
    insertThings(2);
    stores.insert(TARGETS, targetUuid(1));
    stores.insert(TARGETS, targetUuid(2));
    stores.write(thingUuid(1), "owner", uriOf(TARGETS, targetUuid(1)));
    stores.write(thingUuid(1), "links",
                 arrayOf({Var(uriOf(TARGETS, targetUuid(1))), Var(uriOf(TARGETS, targetUuid(2)))}));
    stores.remove(targetUuid(1));
    const std::string address = "/yard/things?$limit=1";
    LogCapture capture;

    const Answer first = answer(sut, address);

    EXPECT_EQ(first.body, "{\"data\":[{\"id\":\"" + thingUuid(1) + "\",\"links\":[" +
                              reduced(TARGETS, targetUuid(2)) + "],\"name\":\"\",\"uri\":\"" +
                              uriOf(THINGS, thingUuid(1)) +
                              "\"}],\"paging\":{\"limit\":1,\"next\":\"/yard/things?$limit=1&$offset=1\","
                              "\"offset\":0,\"total\":2,\"totalPages\":2},\"status\":\"ok\"}");
    EXPECT_EQ(capture.linesStartingWith("Error: "),
              Strings{"Error: Failed to retrieve references for " + thingUuid(1) + " attribute owner"});
    EXPECT_FALSE(sut.store().get(thingUuid(1))->getValue("owner")->hasValue());
    sut.setPagingBeforeRendering(false);
    EXPECT_EQ(answer(sut, address).body, first.body);
    EXPECT_EQ(answer(stores.reference, address).body, first.body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest,
       AnswersAnElementWithoutAttributesAsRenderingEveryObjectFirstDoes)
{
    stores.insert(EMPTIES, thingUuid(1));
    const std::string address = "/yard/empties?$limit=1";
    LogCapture capture;

    const Answer actual = answer(sut, address);

    EXPECT_EQ(actual.status, Status::HTTP_INTERNAL_SERVER_ERROR);
    EXPECT_EQ(capture.lines(), Strings{"Error: Failed to transform Resource query to Response: Exception"});
    const Answer expected = answer(stores.reference, address);
    EXPECT_EQ(actual.status, expected.status);
    EXPECT_EQ(actual.mimetype, expected.mimetype);
    EXPECT_EQ(actual.body, expected.body);
}

// An array whose references all dangle renders as null in the answer that repairs it and is gone from
// later ones; the reference repairs every object it finds, not only the objects of its page.
TEST_F(JSONDataCachePagingBeforeRenderingTest,
       RendersAWhollyDanglingArrayOffTheEarlierPageAsRenderingFirstDoes)
{
    insertThings(2);
    stores.insert(TARGETS, targetUuid(1));
    stores.write(thingUuid(1), "links", arrayOf({Var(uriOf(TARGETS, targetUuid(1)))}));
    stores.remove(targetUuid(1));
    const std::string earlier = "/yard/things?$limit=1&$offset=1";
    const std::string address = "/yard/things?$limit=1";
    answer(sut, earlier);
    answer(stores.reference, earlier);

    const Answer actual = answer(sut, address);

    EXPECT_EQ(actual.body, answer(stores.reference, address).body);
}

// A deleted object that returns under its UUID revives the references that no answer has repaired.
TEST_F(JSONDataCachePagingBeforeRenderingTest,
       ShowsAReferenceToAnObjectDeletedAndInsertedAgainAsRenderingFirstDoes)
{
    insertThings(2);
    stores.insert(TARGETS, targetUuid(1));
    stores.write(thingUuid(1), "owner", uriOf(TARGETS, targetUuid(1)));
    stores.remove(targetUuid(1));
    const std::string earlier = "/yard/things?$limit=1&$offset=1";
    answer(sut, earlier);
    answer(stores.reference, earlier);
    stores.insert(TARGETS, targetUuid(1));
    const std::string address = "/yard/things?$limit=1";

    const Answer actual = answer(sut, address);

    EXPECT_EQ(actual.body, answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, SortsAgainWhenAValueOfTheSortKeyChangesBetweenTwoPages)
{
    insertThings(5);
    stores.write(thingUuid(1), "weight", 2.5);
    stores.write(thingUuid(3), "weight", -1.0);
    const std::string address = "/yard/things?$sortby=weight&$fields=weight&$limit=2";
    ASSERT_EQ(idsOf(answer(sut, address).body), Strings({thingUuid(3), thingUuid(1)}));

    stores.write(thingUuid(4), "weight", 0.5);
    const Answer actual = answer(sut, address);

    EXPECT_EQ(idsOf(actual.body), Strings({thingUuid(3), thingUuid(4)}));
    EXPECT_EQ(actual.body, answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, SortsAgainWhenAnObjectIsInsertedOrDeletedBetweenTwoPages)
{
    insertThings(3);
    stores.write(thingUuid(1), "count", 5);
    stores.write(thingUuid(2), "count", 9);
    stores.write(thingUuid(3), "count", 1);
    const std::string address = "/yard/things?$sortby=-count&$fields=count&$limit=3";
    ASSERT_EQ(idsOf(answer(sut, address).body), Strings({thingUuid(2), thingUuid(1), thingUuid(3)}));

    stores.insert(THINGS, thingUuid(4));
    stores.write(thingUuid(4), "count", 7);
    const Answer afterInsert = answer(sut, address);
    stores.remove(thingUuid(2));
    const Answer afterDelete = answer(sut, address);

    EXPECT_EQ(idsOf(afterInsert.body), Strings({thingUuid(2), thingUuid(4), thingUuid(1)}));
    EXPECT_EQ(idsOf(afterDelete.body), Strings({thingUuid(4), thingUuid(1), thingUuid(3)}));
    EXPECT_EQ(afterDelete.body, answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, KeepsTheOrdersOfDifferentSortsApart)
{
    insertThings(3);
    stores.write(thingUuid(1), "count", 5);
    stores.write(thingUuid(2), "count", 9);
    stores.write(thingUuid(3), "count", 1);
    const std::string ascending = "/yard/things?$sortby=count&$fields=count";
    const std::string descending = "/yard/things?$sortby=-count&$fields=count";
    answer(sut, ascending);
    answer(sut, descending);

    EXPECT_EQ(idsOf(answer(sut, ascending).body), Strings({thingUuid(3), thingUuid(1), thingUuid(2)}));
    EXPECT_EQ(idsOf(answer(sut, descending).body), Strings({thingUuid(2), thingUuid(1), thingUuid(3)}));
}

TEST_F(JSONDataCachePagingBeforeRenderingTest,
       WritesObjectsWithoutReferencesAsTextOfTheBytesTheirRenderingGives)
{
    insertThings(3);
    stores.write(thingUuid(1), "label", "quote \" backslash \\ slash / line\nend \xC3\xA9 \x01");
    stores.write(thingUuid(1), "count", -40);
    stores.write(thingUuid(1), "size", 42);
    stores.write(thingUuid(1), "weight", 0.1);
    stores.write(thingUuid(1), "active", false);
    stores.write(thingUuid(1), "tags", arrayOf({Var("a\"b"), Var(""), Var("c")}));
    stores.write(thingUuid(2), "scores", arrayOf({Var(3), Var(-1)}));
    stores.write(thingUuid(2), "weight", 1e300);
    const std::string address = "/yard/things";
    HttpResponse response;

    ASSERT_EQ(sut.queryCache(makeRequest(address), response, PORT), Status::HTTP_OK);

    EXPECT_EQ(rowFormsOf(response.getJsonMsg()), Strings({"text", "text", "text"}));
    EXPECT_EQ(response.getBody(), answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, WritesReferencesAsTheIdentitiesOfTheirObjectsAtLevelZero)
{
    insertThings(3);
    stores.insert(TARGETS, targetUuid(1));
    stores.insert(TARGETS, targetUuid(2));
    stores.write(targetUuid(1), "name", "first \"one\"");
    stores.write(targetUuid(1), "level", 3);
    stores.write(thingUuid(2), "owner", uriOf(TARGETS, targetUuid(1)));
    stores.write(thingUuid(3), "links",
                 arrayOf({Var(uriOf(TARGETS, targetUuid(2))), Var(uriOf(TARGETS, targetUuid(1)))}));
    const std::string address = "/yard/things";
    HttpResponse response;

    ASSERT_EQ(sut.queryCache(makeRequest(address), response, PORT), Status::HTTP_OK);

    EXPECT_EQ(rowFormsOf(response.getJsonMsg()), Strings({"text", "text", "text"}));
    EXPECT_NE(response.getBody().find("\"owner\":{\"id\":\"" + targetUuid(1) +
                                      "\",\"name\":\"first \\\"one\\\"\",\"uri\""),
              std::string::npos)
        << response.getBody();
    EXPECT_EQ(response.getBody(), answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, WritesAnObjectThatRowsNameAgainAndAgainAlikeEachTime)
{
    insertThings(3);
    stores.insert(TARGETS, targetUuid(1));
    stores.insert(TARGETS, targetUuid(2));
    stores.write(targetUuid(1), "name", "shared");
    const Var first(uriOf(TARGETS, targetUuid(1)));
    for (int thing = 1; thing <= 3; ++thing)
    {
        stores.write(thingUuid(thing), "owner", first);
        stores.write(thingUuid(thing), "links", arrayOf({first, Var(uriOf(TARGETS, targetUuid(2))), first}));
    }
    const std::string address = "/yard/things";
    HttpResponse response;

    ASSERT_EQ(sut.queryCache(makeRequest(address), response, PORT), Status::HTTP_OK);

    EXPECT_EQ(rowFormsOf(response.getJsonMsg()), Strings({"text", "text", "text"}));
    const std::string shared = "{\"id\":\"" + targetUuid(1) + "\",\"name\":\"shared\",\"uri\":\"" +
                               uriOf(TARGETS, targetUuid(1)) + "\"}";
    EXPECT_NE(response.getBody().find("\"links\":[" + shared + "," + reduced(TARGETS, targetUuid(2)) + "," +
                                      shared + "],\"name\":\"\",\"owner\":" + shared),
              std::string::npos)
        << response.getBody();
    EXPECT_EQ(response.getBody(), answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, ShowsTheNewNameOfANamedObjectInRowsWrittenBeforeTheChange)
{
    insertThings(2);
    stores.insert(TARGETS, targetUuid(1));
    stores.write(targetUuid(1), "name", "before");
    stores.write(thingUuid(1), "owner", uriOf(TARGETS, targetUuid(1)));
    stores.write(thingUuid(2), "links", arrayOf({Var(uriOf(TARGETS, targetUuid(1)))}));
    const std::string address = "/yard/things";
    ASSERT_NE(answer(sut, address).body.find("\"before\""), std::string::npos);

    stores.write(targetUuid(1), "name", "after");
    const Answer actual = answer(sut, address);

    EXPECT_EQ(actual.body.find("\"before\""), std::string::npos) << actual.body;
    EXPECT_NE(actual.body.find("\"links\":[{\"id\":\"" + targetUuid(1) + "\",\"name\":\"after\""),
              std::string::npos)
        << actual.body;
    EXPECT_EQ(actual.body, answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, ShowsTheNewValueOfAnObjectInItsRowAndAnswerWrittenBefore)
{
    insertThings(2);
    stores.write(thingUuid(1), "count", 5);
    const std::string rows = "/yard/things?$limit=1";
    const std::string object = uriOf(THINGS, thingUuid(1));
    ASSERT_NE(answer(sut, rows).body.find("\"count\":5"), std::string::npos);
    ASSERT_NE(answer(sut, object).body.find("\"count\":5"), std::string::npos);

    stores.write(thingUuid(1), "count", 6);
    const Answer rowsAfter = answer(sut, rows);
    const Answer objectAfter = answer(sut, object);

    EXPECT_NE(rowsAfter.body.find("\"count\":6"), std::string::npos) << rowsAfter.body;
    EXPECT_EQ(rowsAfter.body, answer(stores.reference, rows).body);
    EXPECT_EQ(objectAfter.body, "{\"data\":{\"count\":6,\"id\":\"" + thingUuid(1) +
                                    "\",\"name\":\"\",\"uri\":\"" + object + "\"},\"status\":\"ok\"}");
    EXPECT_EQ(objectAfter.body, answer(stores.reference, object).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, GivesTheSameRowsAgainWhileTheStoreStaysUnchanged)
{
    insertThings(3);
    stores.insert(TARGETS, targetUuid(1));
    stores.write(thingUuid(2), "owner", uriOf(TARGETS, targetUuid(1)));
    stores.write(thingUuid(3), "label", "Green");
    const std::string address = "/yard/things?$sortby=label";
    const Answer first = answer(sut, address);

    const Answer second = answer(sut, address);
    const Answer searched = answer(sut, "/yard/things?label=Green");

    EXPECT_EQ(second.body, first.body);
    EXPECT_EQ(first.body, answer(stores.reference, address).body);
    EXPECT_EQ(searched.body, answer(stores.reference, "/yard/things?label=Green").body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, RendersAnObjectWithAReferenceFromItsSelectionBeyondLevelZero)
{
    insertThings(2);
    stores.insert(TARGETS, targetUuid(1));
    stores.write(thingUuid(2), "owner", uriOf(TARGETS, targetUuid(1)));
    const std::string address = "/yard/things?$expand=1";
    HttpResponse response;

    ASSERT_EQ(sut.queryCache(makeRequest(address), response, PORT), Status::HTTP_OK);

    EXPECT_EQ(rowFormsOf(response.getJsonMsg()), Strings({"text", "object"}));
    EXPECT_EQ(response.getBody(), answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, GivesJsonObjectsToAWebSocketAnswer)
{
    insertThings(1);
    Orvi::Command::WebSocketResponseObject response;

    ASSERT_EQ(sut.queryCache(makeRequest("/yard/things"), response, PORT), Status::HTTP_OK);

    EXPECT_EQ(rowFormsOf(response.JSONObject), Strings({"object"}));
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, RendersObjectsForFieldsOrExpansionInsteadOfWritingText)
{
    insertThings(1);
    stores.write(thingUuid(1), "label", "Green");
    for (const std::string address : {"/yard/things?$fields=label", "/yard/things?$expand=owner"})
    {
        HttpResponse response;

        ASSERT_EQ(sut.queryCache(makeRequest(address), response, PORT), Status::HTTP_OK) << address;

        EXPECT_EQ(rowFormsOf(response.getJsonMsg()), Strings({"object"})) << address;
        EXPECT_EQ(response.getBody(), answer(stores.reference, address).body) << address;
    }
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, WritesEveryByteOfATextAsTheRenderingDoes)
{
    insertThings(3);
    std::string everyByte;
    for (int byte = 1; byte < 256; ++byte)
    {
        everyByte += static_cast<char>(byte);
    }
    std::string printable;
    for (char byte = 0x20; byte < 0x7f; ++byte)
    {
        printable += byte;
    }
    stores.write(thingUuid(1), "label", everyByte);
    stores.write(thingUuid(3), "label", printable);
    stores.write(thingUuid(2), "label", "\xE2\x82\xAC \xF0\x9F\x9A\x97 \x7F");
    stores.write(thingUuid(2), "tags", arrayOf({Var(everyByte), Var("/")}));
    const std::string address = "/yard/things";

    const Answer actual = answer(sut, address);

    EXPECT_EQ(actual.status, Status::HTTP_OK);
    EXPECT_TRUE(actual.body == answer(stores.reference, address).body)
        << firstDifference(actual.body, answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, WritesOneObjectWithItsReferencesAsTheTextItsRenderingGives)
{
    insertThings(2);
    stores.insert(TARGETS, targetUuid(1));
    stores.write(targetUuid(1), "name", "first");
    stores.write(thingUuid(2), "label", "tab\there \"quoted\"");
    stores.write(thingUuid(2), "weight", 0.5);
    stores.write(thingUuid(2), "owner", uriOf(TARGETS, targetUuid(1)));
    stores.write(thingUuid(2), "links", arrayOf({Var(uriOf(TARGETS, targetUuid(1)))}));
    const std::string address = uriOf(THINGS, thingUuid(2));
    HttpResponse response;

    ASSERT_EQ(sut.queryCache(makeRequest(address), response, PORT), Status::HTTP_OK);

    EXPECT_EQ(dataFormOf(response.getJsonMsg()), "text");
    const std::string owner = "{\"id\":\"" + targetUuid(1) + "\",\"name\":\"first\",\"uri\":\"" +
                              uriOf(TARGETS, targetUuid(1)) + "\"}";
    EXPECT_EQ(response.getBody(), "{\"data\":{\"id\":\"" + thingUuid(2) +
                                      "\",\"label\":\"tab\\there \\\"quoted\\\"\",\"links\":[" + owner +
                                      "],\"name\":\"\",\"owner\":" + owner + ",\"uri\":\"" +
                                      uriOf(THINGS, thingUuid(2)) + "\",\"weight\":0.5},\"status\":\"ok\"}");
    EXPECT_EQ(response.getBody(), answer(stores.reference, address).body);
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, SelectsOneObjectThatNamesAGoneObjectAndRepairsItWithItsLogLine)
{
    insertThings(1);
    stores.insert(TARGETS, targetUuid(1));
    stores.write(thingUuid(1), "owner", uriOf(TARGETS, targetUuid(1)));
    stores.remove(targetUuid(1));
    const std::string address = uriOf(THINGS, thingUuid(1));
    LogCapture capture;
    HttpResponse first;

    ASSERT_EQ(sut.queryCache(makeRequest(address), first, PORT), Status::HTTP_OK);

    EXPECT_EQ(dataFormOf(first.getJsonMsg()), "object");
    EXPECT_EQ(capture.linesStartingWith("Error: "),
              Strings{"Error: Failed to retrieve references for " + thingUuid(1) + " attribute owner"});
    EXPECT_FALSE(sut.store().get(thingUuid(1))->getValue("owner")->hasValue());
    HttpResponse second;
    ASSERT_EQ(sut.queryCache(makeRequest(address), second, PORT), Status::HTTP_OK);
    EXPECT_EQ(dataFormOf(second.getJsonMsg()), "text");
    EXPECT_EQ(second.getBody(), first.getBody());
    EXPECT_EQ(answer(stores.reference, address).body, first.getBody());
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, RendersOneObjectForFieldsNamedExpansionOrADeeperLevel)
{
    insertThings(1);
    stores.insert(TARGETS, targetUuid(1));
    stores.write(thingUuid(1), "label", "Green");
    stores.write(thingUuid(1), "owner", uriOf(TARGETS, targetUuid(1)));
    const std::string object = uriOf(THINGS, thingUuid(1));
    for (const std::string& address :
         {object + "?$fields=label", object + "?$expand=owner", object + "?$expand=1"})
    {
        HttpResponse response;

        ASSERT_EQ(sut.queryCache(makeRequest(address), response, PORT), Status::HTTP_OK) << address;

        EXPECT_EQ(dataFormOf(response.getJsonMsg()), "object") << address;
        EXPECT_EQ(response.getBody(), answer(stores.reference, address).body) << address;
    }
}

TEST_F(JSONDataCachePagingBeforeRenderingTest, AnswersAnObjectOfAnotherResourceNotFoundWithTheSameLogLines)
{
    insertThings(1);
    stores.insert(TARGETS, targetUuid(1));
    const std::string address = uriOf(THINGS, targetUuid(1));
    LogCapture capture;
    HttpResponse response;

    const Status status = sut.queryCache(makeRequest(address), response, PORT);

    EXPECT_EQ(status, Status::HTTP_NOT_FOUND);
    const Strings lines = capture.lines();
    capture.clear();
    EXPECT_EQ(answer(stores.reference, address).status, Status::HTTP_NOT_FOUND);
    EXPECT_EQ(lines, capture.lines());
    EXPECT_EQ(lines,
              Strings({"Warning: Can not find element yard/things/" + targetUuid(1),
                       "Warning: Selection of Element \"/yard/things/" + targetUuid(1) + "/\" failed."}));
}

} // namespace
