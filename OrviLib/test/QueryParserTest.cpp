#include "Command/Query/QueryParser.h"

#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "Command/Query/ExpandParameter.h"
#include "Command/Query/FilterParameter.h"
#include "Command/Query/Paging.h"
#include "Command/Query/SortingParameter.h"

#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Orvi::Command;

namespace
{

const std::string SOME_ID = "6f1c5d2e-8a4b-4c3d-9e2f-1a2b3c4d5e6f";

struct Parsed
{
    RenderCriteriaMap render;
    SearchCriteriaMap search;
};

Parsed parse(const Poco::URI::QueryParameters& parameters)
{
    Parsed parsed;
    QueryParser::parse(parameters, parsed.render, parsed.search);
    return parsed;
}

template <class T, class B>
std::vector<Poco::SharedPtr<T>> criteria(const QueryCollectionMap<B>& map)
{
    std::vector<Poco::SharedPtr<T>> result;
    const auto entry = map.find(queryCollectionKey<T>());
    if (entry != map.end())
    {
        for (const Poco::SharedPtr<B>& criterion : entry->second)
        {
            result.push_back(criterion.template cast<T>());
        }
    }
    return result;
}

// The only criterion of class T; fails the test when there is not exactly one.
template <class T, class B>
Poco::SharedPtr<T> single(const QueryCollectionMap<B>& map)
{
    const std::vector<Poco::SharedPtr<T>> found = criteria<T>(map);
    EXPECT_EQ(found.size(), 1U);
    EXPECT_EQ(map.size(), 1U);
    return found.empty() ? Poco::SharedPtr<T>() : found.front();
}

std::vector<std::string> fieldNames(const FilterParameter& parameter)
{
    std::vector<std::string> names;
    for (const FilterField& field : parameter.getFields())
    {
        names.push_back(field.getName());
    }
    return names;
}

struct MalformedRow
{
    Poco::URI::QueryParameters parameters;
    std::string message;
};

} // namespace

TEST(QueryParser, GivesNoCriteriaForAnEmptyQuery)
{
    const Parsed sut = parse({});

    EXPECT_TRUE(sut.render.empty());
    EXPECT_TRUE(sut.search.empty());
}

TEST(QueryParser, ReadsAFieldSelection)
{
    const Parsed sut = parse({{"$fields", "size,color"}});

    const Poco::SharedPtr<FilterParameter> fields = single<FilterParameter>(sut.render);
    ASSERT_FALSE(fields.isNull());
    EXPECT_EQ(fieldNames(*fields), (std::vector<std::string>{"size", "color"}));
    EXPECT_TRUE(sut.search.empty());
}

TEST(QueryParser, ReadsAnExpansionLevel)
{
    const Parsed sut = parse({{"$expand", "2"}});

    const Poco::SharedPtr<ExpandParameter> expand = single<ExpandParameter>(sut.render);
    ASSERT_FALSE(expand.isNull());
    EXPECT_EQ(expand->getLevel(), 2U);
    EXPECT_FALSE(expand->hasPropertyNames());
}

TEST(QueryParser, ReadsAnExpansionByNames)
{
    const Parsed sut = parse({{"$expand", "owner,parts"}});

    const Poco::SharedPtr<ExpandParameter> expand = single<ExpandParameter>(sut.render);
    ASSERT_FALSE(expand.isNull());
    EXPECT_EQ(expand->getPropertyNames(), (std::vector<std::string>{"owner", "parts"}));
}

TEST(QueryParser, ReadsAFreeTextSearch)
{
    const Parsed sut = parse({{"$q", "front door"}});

    const Poco::SharedPtr<AnyValueSearch> search = single<AnyValueSearch>(sut.search);
    ASSERT_FALSE(search.isNull());
    EXPECT_EQ(search->getQueryValue(), "front door");
    EXPECT_TRUE(sut.render.empty());
}

TEST(QueryParser, ReadsOffsetAndLimitAsOnePage)
{
    const Parsed sut = parse({{"$limit", "10"}, {"a", "1"}, {"$offset", "5"}});

    const Poco::SharedPtr<Paging> paging = single<Paging>(sut.render);
    ASSERT_FALSE(paging.isNull());
    EXPECT_EQ(paging->getNumberOffset(), 5);
    EXPECT_EQ(paging->getLimit(), 10);
    EXPECT_EQ(paging->getType(), Paging::TYPE_INDEX);
    EXPECT_EQ(paging->getPagingRequestType(), Paging::OFFSET_LIMIT);
}

TEST(QueryParser, ReadsAnOffsetAloneWithTheDefaultLimit)
{
    const Parsed sut = parse({{"$offset", "-1"}});

    const Poco::SharedPtr<Paging> paging = single<Paging>(sut.render);
    ASSERT_FALSE(paging.isNull());
    EXPECT_EQ(paging->getNumberOffset(), -1);
    EXPECT_EQ(paging->getLimit(), Paging::PAGING_LIMIT_DEFAULT);
    EXPECT_EQ(paging->getPagingRequestType(), Paging::OFFSET);
}

TEST(QueryParser, ReadsALimitAloneFromTheStart)
{
    const Parsed sut = parse({{"$limit", "0"}});

    const Poco::SharedPtr<Paging> paging = single<Paging>(sut.render);
    ASSERT_FALSE(paging.isNull());
    EXPECT_EQ(paging->getNumberOffset(), 0);
    EXPECT_EQ(paging->getLimit(), 0);
    EXPECT_EQ(paging->getType(), Paging::TYPE_TOTAL);
    EXPECT_EQ(paging->getPagingRequestType(), Paging::LIMIT);
}

TEST(QueryParser, ReadsAnIdOffset)
{
    const Parsed sut = parse({{"$offset", SOME_ID}, {"$limit", "3"}});

    const Poco::SharedPtr<Paging> paging = single<Paging>(sut.render);
    ASSERT_FALSE(paging.isNull());
    EXPECT_EQ(paging->getType(), Paging::TYPE_UUID);
    EXPECT_EQ(paging->getUuidOffset(), SOME_ID);
    EXPECT_EQ(paging->getLimit(), 3);
}

TEST(QueryParser, ReadsASortOrder)
{
    const Parsed sut = parse({{"$sortby", "size,-name"}});

    const Poco::SharedPtr<SortingParameter> sorting = single<SortingParameter>(sut.render);
    ASSERT_FALSE(sorting.isNull());
    ASSERT_EQ(sorting->getSortKeys().size(), 2U);
    EXPECT_EQ(sorting->getSortKeys()[1].name, "name");
    EXPECT_TRUE(sorting->getSortKeys()[1].descending);
}

TEST(QueryParser, ReadsAttributeSearchesInOrder)
{
    const Parsed sut = parse({{"color", "red,blue"}, {"size", "3"}, {"color", "re%"}, {"flag", ""}});

    const std::vector<Poco::SharedPtr<AttributeValueSearch>> searches =
        criteria<AttributeValueSearch>(sut.search);
    ASSERT_EQ(searches.size(), 4U);
    EXPECT_EQ(searches[0]->getAttributeName(), "color");
    EXPECT_EQ(searches[0]->getSearchValues(), (std::vector<std::string>{"red", "blue"}));
    EXPECT_EQ(searches[1]->getAttributeName(), "size");
    EXPECT_EQ(searches[2]->getQueryValue(), "re%");
    EXPECT_EQ(searches[3]->getSearchValues(), (std::vector<std::string>{""}));
    EXPECT_EQ(sut.search.size(), 1U);
    EXPECT_TRUE(sut.render.empty());
}

TEST(QueryParser, SortsEveryParameterIntoItsMap)
{
    const Parsed sut = parse({{"$fields", "a"},
                              {"$expand", "1"},
                              {"$q", "x"},
                              {"$offset", "1"},
                              {"$limit", "2"},
                              {"$sortby", "a"},
                              {"a", "b"}});

    EXPECT_EQ(sut.render.size(), 4U);
    EXPECT_EQ(criteria<FilterParameter>(sut.render).size(), 1U);
    EXPECT_EQ(criteria<ExpandParameter>(sut.render).size(), 1U);
    EXPECT_EQ(criteria<Paging>(sut.render).size(), 1U);
    EXPECT_EQ(criteria<SortingParameter>(sut.render).size(), 1U);
    EXPECT_EQ(sut.search.size(), 2U);
    EXPECT_EQ(criteria<AnyValueSearch>(sut.search).size(), 1U);
    EXPECT_EQ(criteria<AttributeValueSearch>(sut.search).size(), 1U);
}

TEST(QueryParser, SkipsParametersWithoutNameAndValue)
{
    const Parsed sut = parse({{"", ""}, {"a", "1"}, {"", ""}});

    EXPECT_EQ(criteria<AttributeValueSearch>(sut.search).size(), 1U);
}

TEST(QueryParser, AddsToTheCriteriaAlreadyThere)
{
    Parsed sut = parse({{"a", "1"}, {"$limit", "4"}});

    QueryParser::parse({{"b", "2"}, {"$limit", "5"}}, sut.render, sut.search);

    const std::vector<Poco::SharedPtr<AttributeValueSearch>> searches =
        criteria<AttributeValueSearch>(sut.search);
    ASSERT_EQ(searches.size(), 2U);
    EXPECT_EQ(searches[0]->getAttributeName(), "a");
    EXPECT_EQ(searches[1]->getAttributeName(), "b");
    const std::vector<Poco::SharedPtr<Paging>> pagings = criteria<Paging>(sut.render);
    ASSERT_EQ(pagings.size(), 2U);
    EXPECT_EQ(pagings[0]->getLimit(), 4);
    EXPECT_EQ(pagings[1]->getLimit(), 5);
}

TEST(QueryParser, RefusesMalformedQueriesWithAClearMessage)
{
    const std::vector<MalformedRow> rows = {
        {{{"$limit", "abc"}}, "invalid value of $limit: abc"},
        {{{"$limit", "-1"}}, "invalid value of $limit: -1"},
        {{{"$limit", "1001"}}, "invalid value of $limit: 1001"},
        {{{"$offset", "5"}, {"$limit", "x"}}, "invalid value of $limit: x"},
        {{{"$offset", "-2"}}, "invalid value of $offset: -2"},
        {{{"$offset", "first"}}, "invalid value of $offset: first"},
        {{{"$expand", "9"}}, "invalid value of $expand: 9"},
        {{{"$expand", "a,,b"}}, "invalid value of $expand: a,,b"},
        {{{"$fields", "a,,b"}}, "invalid value of $fields: a,,b"},
        {{{"$sortby", "a,-"}}, "invalid value of $sortby: a,-"},
        {{{"$fields", ""}}, "empty value of $fields"},
        {{{"$q", ""}}, "empty value of $q"},
        {{{"$limit", ""}}, "empty value of $limit"},
        {{{"$foo", "1"}}, "unknown query parameter: $foo"},
        {{{"$", "1"}}, "unknown query parameter: $"},
        {{{"$limit", "1"}, {"$limit", "2"}}, "query parameter given twice: $limit"},
        {{{"$q", "a"}, {"x", "1"}, {"$q", "a"}}, "query parameter given twice: $q"},
        {{{"", "red"}}, "query parameter without a name: =red"},
    };
    for (const MalformedRow& row : rows)
    {
        RenderCriteriaMap render;
        SearchCriteriaMap search;

        try
        {
            QueryParser::parse(row.parameters, render, search);
            ADD_FAILURE() << "no exception for " << row.message;
        }
        catch (const Poco::URISyntaxException& exception)
        {
            EXPECT_EQ(exception.message(), row.message);
            EXPECT_EQ(exception.displayText(), "Bad URI syntax: " + row.message);
        }
    }
}

TEST(QueryParser, ThrowsTheSyntaxExceptionOfAddresses)
{
    RenderCriteriaMap render;
    SearchCriteriaMap search;

    EXPECT_THROW(QueryParser::parse({{"$limit", "abc"}}, render, search), Poco::URISyntaxException);
}

TEST(QueryParser, LeavesTheMapsAsTheyWereOnAnError)
{
    Parsed sut = parse({{"a", "1"}});

    EXPECT_THROW(QueryParser::parse({{"b", "2"}, {"$fields", "x"}, {"$limit", "no"}}, sut.render, sut.search),
                 Poco::URISyntaxException);

    EXPECT_TRUE(sut.render.empty());
    EXPECT_EQ(criteria<AttributeValueSearch>(sut.search).size(), 1U);
}

TEST(QueryParser, RefusesAnAttributeValueBeyondTheExpressionEngine)
{
    RenderCriteriaMap render;
    SearchCriteriaMap search;
    const std::string value(70000, '.');

    try
    {
        QueryParser::parse({{"color", value}}, render, search);
        ADD_FAILURE() << "no exception";
    }
    catch (const Poco::URISyntaxException& exception)
    {
        EXPECT_EQ(exception.message(), "invalid value of color: " + value);
    }
}
