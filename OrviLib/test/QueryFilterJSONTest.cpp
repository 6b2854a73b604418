#include "Command/QueryFilterJSON.h"

#include "Command/QueryRows.h"

#include <Poco/JSON/Parser.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>

using Orvi::Command::QueryFilterJSON;
using Orvi::Command::RequestBase;
using Orvi::Command::UrlPath;

namespace
{

const char* const LIGHTS = R"([
    {"id": "l1", "level": 3, "zone": "front", "color": "Warm White", "tags": ["dim", "read"], "on": true},
    {"id": "l2", "level": 1, "zone": "rear", "color": "cold", "on": false},
    {"id": "l3", "level": 2, "zone": "front", "color": "red", "owner": {"id": "o1", "name": "olga", "age": 30}},
    {"id": "l4", "level": 5, "zone": "rear", "color": "warm red", "on": true}
])";

const char* const L1 =
    R"({"color":"Warm White","id":"l1","level":3,"on":true,"tags":["dim","read"],"zone":"front"})";
const char* const L2 = R"({"color":"cold","id":"l2","level":1,"on":false,"zone":"rear"})";
const char* const L3 =
    R"({"color":"red","id":"l3","level":2,"owner":{"age":30,"id":"o1","name":"olga"},"zone":"front"})";
const char* const L4 = R"({"color":"warm red","id":"l4","level":5,"on":true,"zone":"rear"})";

const std::string ID_A = "0a000000-0000-4000-8000-000000000001";
const std::string ID_B = "0b000000-0000-4000-8000-000000000002";
const std::string ID_C = "0c000000-0000-4000-8000-000000000003";

Poco::JSON::Array::Ptr parseArray(const std::string& text)
{
    Poco::JSON::Parser parser;
    return parser.parse(text).extract<Poco::JSON::Array::Ptr>();
}

Poco::JSON::Object::Ptr parseObject(const std::string& text)
{
    Poco::JSON::Parser parser;
    return parser.parse(text).extract<Poco::JSON::Object::Ptr>();
}

template <class T>
std::string toJson(const T& value)
{
    std::ostringstream out;
    value.stringify(out);
    return out.str();
}

RequestBase request(const std::string& address)
{
    return RequestBase(UrlPath(Poco::URI(address)));
}

std::string filtered(const std::string& address, const std::string& elements = LIGHTS)
{
    Poco::JSON::Array out;
    QueryFilterJSON::filterJSONArrayByQuery(*parseArray(elements), request(address), out);
    return toJson(out);
}

struct Page
{
    std::string data;
    std::string paging;
};

Page paged(const std::string& address, const std::string& elements = LIGHTS)
{
    Poco::JSON::Array out;
    Poco::JSON::Object::Ptr paging;
    QueryFilterJSON::filterJSONArrayByQuery(*parseArray(elements), request(address), out, paging);
    return {toJson(out), paging.isNull() ? "none" : toJson(*paging)};
}

std::string list(std::initializer_list<const char*> elements)
{
    std::string text = "[";
    for (const char* element : elements)
    {
        text += (text.size() > 1 ? "," : "") + std::string(element);
    }
    return text + "]";
}

std::string idElements()
{
    return R"([{"id": ")" + ID_A + R"("}, {"id": ")" + ID_B + R"("}, {"id": ")" + ID_C + R"("}])";
}

} // namespace

TEST(QueryFilterJSON, PassesEverythingWithoutCriteria)
{
    EXPECT_EQ(filtered("/cabin/lights"), list({L1, L2, L3, L4}));
}

TEST(QueryFilterJSON, KeepsObjectsWhoseAttributeEqualsTheValue)
{
    EXPECT_EQ(filtered("/cabin/lights?zone=front"), list({L1, L3}));
}

TEST(QueryFilterJSON, KeepsObjectsWhoseAttributeEqualsAnyOfTheValues)
{
    EXPECT_EQ(filtered("/cabin/lights?level=1,5"), list({L2, L4}));
}

TEST(QueryFilterJSON, KeepsObjectsThatMatchEveryAttribute)
{
    EXPECT_EQ(filtered("/cabin/lights?zone=rear&on=true"), list({L4}));
}

TEST(QueryFilterJSON, MatchesAnArrayValueByAnyElement)
{
    EXPECT_EQ(filtered("/cabin/lights?tags=read"), list({L1}));
}

TEST(QueryFilterJSON, MatchesAnExpandedReferenceByItsId)
{
    EXPECT_EQ(filtered("/cabin/lights?owner=o1"), list({L3}));
    EXPECT_EQ(filtered("/cabin/lights?owner=olga"), "[]");
}

TEST(QueryFilterJSON, MatchesAttributeValuesWithWildcardsAndCase)
{
    EXPECT_EQ(filtered("/cabin/lights?color=warm%25"), list({L4}));
    EXPECT_EQ(filtered("/cabin/lights?color=%25red"), list({L3, L4}));
    EXPECT_EQ(filtered("/cabin/lights?color=%2525red"), list({L3, L4}));
    EXPECT_EQ(filtered("/cabin/lights?color=re"), "[]");
}

TEST(QueryFilterJSON, FindsFreeTextInAnyAttributeWithoutRegardToCase)
{
    EXPECT_EQ(filtered("/cabin/lights?$q=WARM"), list({L1, L4}));
    EXPECT_EQ(filtered("/cabin/lights?$q=DIM"), list({L1}));
    EXPECT_EQ(filtered("/cabin/lights?$q=o1"), list({L3}));
    EXPECT_EQ(filtered("/cabin/lights?$q=olga"), "[]");
}

TEST(QueryFilterJSON, CombinesFreeTextAndAttributes)
{
    EXPECT_EQ(filtered("/cabin/lights?$q=warm&zone=front"), list({L1}));
}

TEST(QueryFilterJSON, DropsObjectsWithoutTheAttributeAndKeepsOtherElements)
{
    EXPECT_EQ(
        filtered("/cabin/lights?z=x", R"([1, {"id": "a", "z": "x"}, {"id": "b"}, {"id": "c", "z": null}])"),
        R"([1,{"id":"a","z":"x"}])");
}

TEST(QueryFilterJSON, SortsByTheRequestedKeys)
{
    EXPECT_EQ(filtered("/cabin/lights?$sortby=-level"), list({L4, L1, L3, L2}));
    EXPECT_EQ(filtered("/cabin/lights?$sortby=zone,-level"), list({L1, L3, L4, L2}));
}

TEST(QueryFilterJSON, KeepsOnlyTheSelectedFields)
{
    EXPECT_EQ(filtered("/cabin/lights?$fields=level"),
              R"([{"id":"l1","level":3},{"id":"l2","level":1},{"id":"l3","level":2},{"id":"l4","level":5}])");
}

TEST(QueryFilterJSON, SearchesSortsAndSelectsFieldsTogether)
{
    EXPECT_EQ(filtered("/cabin/lights?zone=front&$sortby=level&$fields=level"),
              R"([{"id":"l3","level":2},{"id":"l1","level":3}])");
}

TEST(QueryFilterJSON, SearchesBeforeFieldsAreSelected)
{
    EXPECT_EQ(filtered("/cabin/lights?zone=rear&$fields=level"),
              R"([{"id":"l2","level":1},{"id":"l4","level":5}])");
}

TEST(QueryFilterJSON, CutsReferencesThatAreNotNamedForExpansion)
{
    EXPECT_EQ(filtered("/cabin/lights?level=2&$expand=zone"),
              R"([{"color":"red","id":"l3","level":2,"owner":{"id":"o1","name":"olga"},"zone":"front"}])");
    EXPECT_EQ(filtered("/cabin/lights?level=2&$expand=owner"), list({L3}));
}

TEST(QueryFilterJSON, NeverPagesWithoutThePagingOverload)
{
    EXPECT_EQ(filtered("/cabin/lights?$limit=1"), list({L1, L2, L3, L4}));
}

TEST(QueryFilterJSON, FiltersAnArrayInPlace)
{
    Poco::JSON::Array::Ptr lights = parseArray(LIGHTS);
    Poco::JSON::Object::Ptr paging;

    QueryFilterJSON::filterJSONArrayByQuery(
        *lights, request("/cabin/lights?$sortby=-level&$limit=2&$fields=zone"), *lights, paging);

    EXPECT_EQ(toJson(*lights), R"([{"id":"l4","zone":"rear"},{"id":"l1","zone":"front"}])");
    EXPECT_EQ(
        toJson(*paging),
        R"({"limit":2,"next":"/cabin/lights?$sortby=-level&$limit=2&$fields=zone&$offset=2","offset":0,"total":4,"totalPages":2})");
}

TEST(QueryFilterJSON, LeavesTheInputUnchanged)
{
    const Poco::JSON::Array::Ptr lights = parseArray(LIGHTS);
    Poco::JSON::Array out;

    QueryFilterJSON::filterJSONArrayByQuery(*lights, request("/cabin/lights?$fields=level&$expand=zone"),
                                            out);

    EXPECT_EQ(toJson(*lights), list({L1, L2, L3, L4}));
}

TEST(QueryFilterJSON, GivesTheFirstPageWithALinkToTheNext)
{
    const Page sut = paged("/cabin/lights?$limit=2&$fields=level");

    EXPECT_EQ(sut.data, R"([{"id":"l1","level":3},{"id":"l2","level":1}])");
    EXPECT_EQ(
        sut.paging,
        R"({"limit":2,"next":"/cabin/lights?$limit=2&$fields=level&$offset=2","offset":0,"total":4,"totalPages":2})");
}

TEST(QueryFilterJSON, GivesAMiddlePageWithLinksBothWays)
{
    const Page sut = paged("/cabin/lights?$offset=1&$limit=1&$fields=level");

    EXPECT_EQ(sut.data, R"([{"id":"l2","level":1}])");
    EXPECT_EQ(sut.paging,
              R"({"limit":1,"next":"/cabin/lights?$offset=2&$limit=1&$fields=level","offset":1,)"
              R"("previous":"/cabin/lights?$offset=0&$limit=1&$fields=level","total":4,"totalPages":4})");
}

TEST(QueryFilterJSON, GivesTheLastPageWithALinkToThePrevious)
{
    const Page sut = paged("/cabin/lights?$offset=3&$limit=2&$fields=level");

    EXPECT_EQ(sut.data, R"([{"id":"l4","level":5}])");
    EXPECT_EQ(
        sut.paging,
        R"({"limit":2,"offset":3,"previous":"/cabin/lights?$offset=1&$limit=2&$fields=level","total":4,"totalPages":2})");
}

TEST(QueryFilterJSON, GivesOnlyTheTotalsWithLimitZero)
{
    const Page sut = paged("/cabin/lights?$limit=0&zone=front");

    EXPECT_EQ(sut.data, "[]");
    EXPECT_EQ(sut.paging, R"({"limit":0,"offset":0,"total":2,"totalPages":0})");
}

TEST(QueryFilterJSON, StartsAtTheLastElementWithOffsetMinusOne)
{
    const Page sut = paged("/cabin/lights?$offset=-1&$limit=2&$fields=level");

    EXPECT_EQ(sut.data, R"([{"id":"l4","level":5}])");
    EXPECT_EQ(
        sut.paging,
        R"({"limit":2,"offset":3,"previous":"/cabin/lights?$offset=1&$limit=2&$fields=level","total":4,"totalPages":2})");
}

TEST(QueryFilterJSON, GivesAnEmptyPagePastTheEnd)
{
    const Page sut = paged("/cabin/lights?$offset=10&$limit=2");

    EXPECT_EQ(sut.data, "[]");
    EXPECT_EQ(
        sut.paging,
        R"({"limit":2,"offset":10,"previous":"/cabin/lights?$offset=2&$limit=2","total":4,"totalPages":2})");
}

TEST(QueryFilterJSON, UsesTheDefaultLimitForAnOffsetAlone)
{
    const Page sut = paged("/cabin/lights?$offset=2&$fields=level");

    EXPECT_EQ(sut.data, R"([{"id":"l3","level":2},{"id":"l4","level":5}])");
    EXPECT_EQ(
        sut.paging,
        R"({"limit":100,"offset":2,"previous":"/cabin/lights?$offset=0&$fields=level","total":4,"totalPages":1})");
}

TEST(QueryFilterJSON, OpensThePageAtTheElementOfAnId)
{
    const Page sut = paged("/cabin/lights?$offset=" + ID_B + "&$limit=1", idElements());

    EXPECT_EQ(sut.data, "[{\"id\":\"" + ID_B + "\"}]");
    EXPECT_EQ(sut.paging,
              "{\"limit\":1,\"next\":\"/cabin/lights?$offset=2&$limit=1\",\"offset\":1,\"offsetId\":\"" +
                  ID_B +
                  "\",\"previous\":\"/cabin/lights?$offset=0&$limit=1\",\"total\":3,\"totalPages\":3}");
}

TEST(QueryFilterJSON, GivesAnEmptyPageWithTotalsForAnIdThatIsNotInTheList)
{
    const std::string unknown = "0d000000-0000-4000-8000-000000000004";

    const Page sut = paged("/cabin/lights?$offset=" + unknown + "&$limit=1", idElements());

    EXPECT_EQ(sut.data, "[]");
    EXPECT_EQ(sut.paging, "{\"limit\":1,\"offsetId\":\"" + unknown + "\",\"total\":3,\"totalPages\":3}");
}

TEST(QueryFilterJSON, CountsTheTotalAfterTheSearch)
{
    const Page sut = paged("/cabin/lights?zone=front&$limit=1&$fields=zone");

    EXPECT_EQ(sut.data, R"([{"id":"l1","zone":"front"}])");
    EXPECT_EQ(
        sut.paging,
        R"({"limit":1,"next":"/cabin/lights?zone=front&$limit=1&$fields=zone&$offset=1","offset":0,"total":2,"totalPages":2})");
}

TEST(QueryFilterJSON, SortsBeforeItPages)
{
    const Page sut = paged("/cabin/lights?$sortby=-level&$limit=1&$fields=level");

    EXPECT_EQ(sut.data, R"([{"id":"l4","level":5}])");
}

TEST(QueryFilterJSON, KeepsTheOtherParametersOfTheLinksAsWritten)
{
    const Page sut = paged("/cabin/lights?$fields=level%2Czone&%24limit=1&%24offset=0");

    EXPECT_EQ(
        sut.paging,
        R"({"limit":1,"next":"/cabin/lights?$fields=level%2Czone&%24limit=1&$offset=1","offset":0,"total":4,"totalPages":4})");
}

TEST(QueryFilterJSON, LeavesThePagingObjectAloneWithoutPaging)
{
    Poco::JSON::Array out;
    Poco::JSON::Object::Ptr paging = parseObject(R"({"before": true})");

    QueryFilterJSON::filterJSONArrayByQuery(*parseArray(LIGHTS), request("/cabin/lights?zone=rear"), out,
                                            paging);

    EXPECT_EQ(toJson(*paging), R"({"before":true})");
    EXPECT_EQ(toJson(out), list({L2, L4}));
}

TEST(QueryFilterJSON, RendersOneObjectByTheFieldSelection)
{
    const Poco::JSON::Object::Ptr light = parseObject(L3);
    Poco::JSON::Object out;

    QueryFilterJSON::filterJSONObjectByQuery(
        *light, request("/cabin/lights/l3?$fields=owner&zone=rear&$limit=0"), out);

    EXPECT_EQ(toJson(out), R"({"id":"l3","owner":{"age":30,"id":"o1","name":"olga"}})");
}

TEST(QueryFilterJSON, RendersOneObjectInPlace)
{
    Poco::JSON::Object::Ptr light = parseObject(L3);

    QueryFilterJSON::filterJSONObjectByQuery(*light, request("/cabin/lights/l3?$fields=level&$expand=zone"),
                                             *light);

    EXPECT_EQ(toJson(*light), R"({"id":"l3","level":2})");
}

TEST(QueryFilterJSON, CutsUnnamedReferencesOfOneObject)
{
    const Poco::JSON::Object::Ptr light = parseObject(L3);
    Poco::JSON::Object out;

    QueryFilterJSON::filterJSONObjectByQuery(*light, request("/cabin/lights/l3?$expand=parts"), out);

    EXPECT_EQ(toJson(out),
              R"({"color":"red","id":"l3","level":2,"owner":{"id":"o1","name":"olga"},"zone":"front"})");
}

TEST(QueryFilterJSON, CopiesOneObjectWithoutRenderCriteria)
{
    const Poco::JSON::Object::Ptr light = parseObject(L3);
    Poco::JSON::Object out;

    QueryFilterJSON::filterJSONObjectByQuery(*light, request("/cabin/lights/l3?$expand=2"), out);

    EXPECT_EQ(toJson(out), L3);
}

namespace
{

// The LIGHTS elements as rows, counting the rows rendered.
class CountingRows : public Orvi::Command::QueryRows
{
public:
    CountingRows()
        : m_array(parseArray(LIGHTS))
    {
    }

    std::size_t size() const override { return m_array->size(); }
    bool isObject(std::size_t) override { return true; }
    Poco::Dynamic::Var member(std::size_t row, const std::string& key) override
    {
        return m_array->getObject(static_cast<unsigned>(row))->get(key);
    }
    bool anyMember(std::size_t row, const MemberTest& test) override
    {
        const Poco::JSON::Object::Ptr object = m_array->getObject(static_cast<unsigned>(row));
        return std::any_of(object->begin(), object->end(),
                           [&test](const Poco::JSON::Object::ValueType& entry)
                           { return test(entry.second); });
    }
    Poco::Dynamic::Var render(std::size_t row) override
    {
        rendered.push_back(row);
        return m_array->get(static_cast<unsigned>(row));
    }

    std::vector<std::size_t> rendered;

private:
    Poco::JSON::Array::Ptr m_array;
};

} // namespace

TEST(QueryFilterJSON, RendersOnlyTheRowsOfThePageAndAnswersAsForTheArray)
{
    const std::string address = "/s/r?$q=red&$sortby=-level&$limit=1&$offset=1&$fields=level";
    CountingRows rows;
    Poco::JSON::Array out;
    Poco::JSON::Object::Ptr paging;

    QueryFilterJSON::filterRowsByQuery(rows, request(address), out, paging);

    EXPECT_EQ(rows.rendered, (std::vector<std::size_t>{2}));
    const Page expected = paged(address);
    EXPECT_EQ(toJson(out), expected.data);
    EXPECT_EQ(toJson(*paging), expected.paging);
    EXPECT_EQ(expected.data, R"([{"id":"l3","level":2}])");
}

TEST(QueryFilterJSON, RendersEveryRowThatTheSearchKeepsWithoutPaging)
{
    CountingRows rows;
    Poco::JSON::Array out;

    QueryFilterJSON::filterRowsByQuery(rows, request("/s/r?zone=rear&$offset=1"), out);

    EXPECT_EQ(rows.rendered, (std::vector<std::size_t>{1, 3}));
    EXPECT_EQ(toJson(out), list({L2, L4}));
}
