#include "Command/Query/QueryParser.h"
#include "Command/QueryFilterJSON.h"
#include "Command/RequestBase.h"
#include "Command/UrlPath.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Parser.h>

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

using Orvi::Command::QueryFilterJSON;
using Orvi::Command::RequestBase;
using Orvi::Command::UrlPath;

namespace
{

const std::array<const char*, 44> TOKENS = {
    "$fields", "$expand",     "$q",  "$offset",
    "$limit",  "$sortby",     "$id", "%24limit",
    "=",       "=",           "&",   "&",
    ",",       ",",           "%",   "%25",
    "%2",      "%zz",         "%00", "%2C",
    "-",       "-1",          "0",   "1",
    "3",       "9",           "100", "1000",
    "1001",    "99999999999", "abc", "level",
    "zone",    "id",          "#",   "?",
    "/",       "+",           " ",   "\xff",
    "(",       "[",           "\\",  "0a000000-0000-4000-8000-000000000001"};

const std::array<const char*, 6> VALID_QUERIES = {
    "$fields=level,zone&$expand=owner&$sortby=-level,zone",
    "$offset=0a000000-0000-4000-8000-000000000001&$limit=2&zone=front",
    "$offset=-1&$limit=1000&$q=w%25rm",
    "level=1,%25,3&on=true&$expand=3",
    "$q=%28x%7C%5B&color=a.b*c&$fields=id",
    "$limit=0&$offset=5&tags=read,dim",
};

const char* const ELEMENTS = R"([
    {"id": "0a000000-0000-4000-8000-000000000001", "level": 3, "zone": "front", "tags": ["read"], "on": true},
    {"id": "l2", "level": 1.5, "zone": "rear", "owner": {"id": "o1", "name": "olga", "age": 30}},
    {"id": "l3", "level": null, "zone": "(x|[", "on": false},
    7, "loose", null
])";

struct Outcome
{
    int parsed = 0;
    int refusedByUri = 0;
    int refusedByQuery = 0;
};

// Feeds one address through the whole road: URI, address, request, filter.
void feed(const std::string& address, const Poco::JSON::Array& elements, Outcome& outcome)
{
    try
    {
        const Poco::URI uri(address);
        const RequestBase request{UrlPath(uri)};

        Poco::JSON::Array out;
        Poco::JSON::Object::Ptr paging;
        QueryFilterJSON::filterJSONArrayByQuery(elements, request, out, paging);
        Poco::JSON::Array unpaged;
        QueryFilterJSON::filterJSONArrayByQuery(elements, request, unpaged);
        Poco::JSON::Object single;
        QueryFilterJSON::filterJSONObjectByQuery(*elements.getObject(0), request, single);

        EXPECT_LE(out.size(), unpaged.size()) << address;
        EXPECT_LE(unpaged.size(), elements.size()) << address;
        if (!paging.isNull())
        {
            EXPECT_LE(out.size(), paging->getValue<std::size_t>("limit")) << address;
        }
        ++outcome.parsed;
    }
    catch (const Poco::URISyntaxException&)
    {
        ++outcome.refusedByQuery;
    }
    catch (const Poco::SyntaxException&)
    {
        ++outcome.refusedByUri;
    }
    catch (const std::exception& exception)
    {
        ADD_FAILURE() << "unexpected exception for " << address << ": " << exception.what();
    }
}

Poco::JSON::Array::Ptr elements()
{
    Poco::JSON::Parser parser;
    return parser.parse(ELEMENTS).extract<Poco::JSON::Array::Ptr>();
}

} // namespace

TEST(QueryParserFuzz, SurvivesRandomQueries)
{
    const Poco::JSON::Array::Ptr data = elements();
    std::mt19937 random(20240611U);
    std::uniform_int_distribution<std::size_t> tokenCount(1, 14);
    std::uniform_int_distribution<std::size_t> tokenIndex(0, TOKENS.size() - 1);
    Outcome outcome;

    for (int input = 0; input < 3000; ++input)
    {
        std::string query;
        for (std::size_t count = tokenCount(random); count > 0; --count)
        {
            query += TOKENS[tokenIndex(random)];
        }
        feed("/cabin/lights?" + query, *data, outcome);
    }

    EXPECT_EQ(outcome.parsed + outcome.refusedByQuery + outcome.refusedByUri, 3000);
    EXPECT_GT(outcome.parsed, 100);
    EXPECT_GT(outcome.refusedByQuery, 100);
}

TEST(QueryParserFuzz, SurvivesEveryTruncationOfValidQueries)
{
    const Poco::JSON::Array::Ptr data = elements();
    Outcome outcome;
    int inputs = 0;

    for (const std::string query : VALID_QUERIES)
    {
        const int parsedBefore = outcome.parsed;
        feed("/cabin/lights?" + query, *data, outcome);
        ++inputs;
        EXPECT_EQ(outcome.parsed, parsedBefore + 1) << query;
        for (std::size_t length = 0; length < query.size(); ++length)
        {
            feed("/cabin/lights?" + query.substr(0, length), *data, outcome);
            ++inputs;
        }
    }

    EXPECT_EQ(outcome.parsed + outcome.refusedByQuery + outcome.refusedByUri, inputs);
    EXPECT_GT(outcome.refusedByQuery, 10);
}
