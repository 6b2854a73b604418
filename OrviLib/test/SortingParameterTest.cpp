#include "Command/Query/SortingParameter.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Parser.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

using Orvi::Command::SortingParameter;

namespace
{

std::string sorted(const std::string& sortby, const std::string& elements)
{
    Poco::JSON::Parser parser;
    const Poco::JSON::Array::Ptr array = parser.parse(elements).extract<Poco::JSON::Array::Ptr>();
    std::vector<Poco::Dynamic::Var> values(array->begin(), array->end());
    const SortingParameter sut(sortby);

    sut.sort(values);

    Poco::JSON::Array result;
    for (const Poco::Dynamic::Var& value : values)
    {
        result.add(value);
    }
    std::ostringstream out;
    result.stringify(out);
    return out.str();
}

} // namespace

TEST(SortingParameter, ReadsAscendingAndDescendingKeys)
{
    const SortingParameter sut("size,-name");

    ASSERT_EQ(sut.getSortKeys().size(), 2U);
    EXPECT_EQ(sut.getSortKeys()[0].name, "size");
    EXPECT_FALSE(sut.getSortKeys()[0].descending);
    EXPECT_EQ(sut.getSortKeys()[1].name, "name");
    EXPECT_TRUE(sut.getSortKeys()[1].descending);
    EXPECT_TRUE(sut.isValid());
}

TEST(SortingParameter, IsInvalidWithAnEmptyKey)
{
    EXPECT_FALSE(SortingParameter("").isValid());
    EXPECT_FALSE(SortingParameter("-").isValid());
    EXPECT_FALSE(SortingParameter("a,,b").isValid());
    EXPECT_FALSE(SortingParameter("a,-").isValid());
    EXPECT_FALSE(SortingParameter(std::vector<SortingParameter::SortKey>{}).isValid());
}

TEST(SortingParameter, SortsNumbersNumerically)
{
    EXPECT_EQ(sorted("n", R"([{"n": 10}, {"n": 2}, {"n": 18446744073709551615}, {"n": -3}, {"n": 1.5}])"),
              R"([{"n":-3},{"n":1.5},{"n":2},{"n":10},{"n":18446744073709551615}])");
}

TEST(SortingParameter, SortsNumbersDescending)
{
    EXPECT_EQ(sorted("-n", R"([{"n": 2}, {"n": 10}, {"n": -3}])"), R"([{"n":10},{"n":2},{"n":-3}])");
}

TEST(SortingParameter, SortsStringsByTheirBytes)
{
    EXPECT_EQ(
        sorted("s",
               "[{\"s\": \"b\"}, {\"s\": \"\xc3\xa4\"}, {\"s\": \"B\"}, {\"s\": \"a\"}, {\"s\": \"ab\"}]"),
        "[{\"s\":\"B\"},{\"s\":\"a\"},{\"s\":\"ab\"},{\"s\":\"b\"},{\"s\":\"\xc3\xa4\"}]");
}

TEST(SortingParameter, SortsFalseBeforeTrue)
{
    EXPECT_EQ(sorted("b", R"([{"b": true}, {"b": false}, {"b": true}])"),
              R"([{"b":false},{"b":true},{"b":true}])");
}

TEST(SortingParameter, PutsMissingAndNullKeysLastInEitherDirection)
{
    const std::string elements = R"([{"id": 1}, {"id": 2, "n": null}, {"id": 3, "n": 1}, {"id": 4, "n": 2}])";

    EXPECT_EQ(sorted("n", elements), R"([{"id":3,"n":1},{"id":4,"n":2},{"id":1},{"id":2,"n":null}])");
    EXPECT_EQ(sorted("-n", elements), R"([{"id":4,"n":2},{"id":3,"n":1},{"id":1},{"id":2,"n":null}])");
}

TEST(SortingParameter, KeepsTheOrderOfEqualElements)
{
    EXPECT_EQ(sorted("n", R"([{"id": 1, "n": 2}, {"id": 2, "n": 1}, {"id": 3, "n": 2}, {"id": 4, "n": 1}])"),
              R"([{"id":2,"n":1},{"id":4,"n":1},{"id":1,"n":2},{"id":3,"n":2}])");
}

TEST(SortingParameter, BreaksTiesByTheNextKey)
{
    EXPECT_EQ(sorted("a,-b", R"([{"a": 1, "b": 1}, {"a": 0, "b": 5}, {"a": 1, "b": 2}])"),
              R"([{"a":0,"b":5},{"a":1,"b":2},{"a":1,"b":1}])");
}

TEST(SortingParameter, OrdersKindsAsNumbersStringsBooleansThenOthers)
{
    EXPECT_EQ(sorted("v", R"([{"v": [1]}, {"v": true}, {"v": "a"}, {"v": 5}, {}, {"v": {"id": "x"}}])"),
              R"([{"v":5},{"v":"a"},{"v":true},{"v":[1]},{"v":{"id":"x"}},{}])");
}

TEST(SortingParameter, PutsElementsThatAreNoObjectsLastInTheirOrder)
{
    EXPECT_EQ(sorted("n", R"([7, {"n": 2}, "x", {"n": 1}])"), R"([{"n":1},{"n":2},7,"x"])");
}

TEST(SortingParameter, OrdersRowsAsItOrdersTheirElementsReadingEachKeyOnceARow)
{
    const std::vector<std::vector<Poco::Dynamic::Var>> table{
        {"b", 2}, {Poco::Dynamic::Var(), 1}, {"a", 2}, {"b", 1}, {"a", Poco::Dynamic::Var()}};
    const std::vector<std::string> columns{"name", "size"};
    const SortingParameter sut("-size,name");
    std::vector<std::size_t> rows{0, 1, 2, 3, 4};
    std::size_t reads = 0;

    sut.sort(rows,
             [&](std::size_t row, const std::string& key)
             {
                 ++reads;
                 return key == columns[0] ? table[row][0] : table[row][1];
             });

    EXPECT_EQ(rows, (std::vector<std::size_t>{2, 0, 3, 1, 4}));
    EXPECT_EQ(reads, 10U);
    EXPECT_EQ(
        sorted("-size,name", R"([{"name":"b","size":2},{"size":1},{"name":"a","size":2},)"
                             R"({"name":"b","size":1},{"name":"a"}])"),
        R"([{"name":"a","size":2},{"name":"b","size":2},{"name":"b","size":1},{"size":1},{"name":"a"}])");
}

TEST(SortingParameter, ComparesTwoRowsAsItOrdersThem)
{
    const std::vector<std::vector<Poco::Dynamic::Var>> table{
        {"b", 2}, {Poco::Dynamic::Var(), 1}, {"a", 2}, {"b", 1}, {"a", 2}, {"c", true}};
    const std::vector<std::string> columns{"name", "size"};
    const SortingParameter sut("-size,name");
    const SortingParameter::KeyReader valueOf = [&](std::size_t row, const std::string& key)
    { return key == columns[0] ? table[row][0] : table[row][1]; };

    EXPECT_LT(sut.compareRows(2, 0, valueOf), 0);
    EXPECT_GT(sut.compareRows(0, 2, valueOf), 0);
    EXPECT_LT(sut.compareRows(0, 3, valueOf), 0);
    EXPECT_LT(sut.compareRows(3, 1, valueOf), 0);
    EXPECT_EQ(sut.compareRows(2, 4, valueOf), 0);
    // Numbers come before booleans in either direction.
    EXPECT_LT(sut.compareRows(1, 5, valueOf), 0);
}
