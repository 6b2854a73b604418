#include "Command/Query/FilterParameter.h"

#include <Poco/JSON/Parser.h>
#include <Poco/JSON/Stringifier.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using Orvi::Command::FilterField;
using Orvi::Command::FilterParameter;
using Orvi::Command::Paging;

namespace
{

Poco::JSON::Object::Ptr parseObject(const std::string& text)
{
    Poco::JSON::Parser parser;
    return parser.parse(text).extract<Poco::JSON::Object::Ptr>();
}

Poco::JSON::Array::Ptr parseArray(const std::string& text)
{
    Poco::JSON::Parser parser;
    return parser.parse(text).extract<Poco::JSON::Array::Ptr>();
}

template <class T>
std::string toJson(const T& value)
{
    std::ostringstream out;
    value.stringify(out);
    return out.str();
}

std::vector<std::string> namesOf(const FilterParameter& parameter)
{
    std::vector<std::string> names;
    for (const FilterField& field : parameter.getFields())
    {
        names.push_back(field.getName());
    }
    return names;
}

const char* const OBJECT =
    R"({"color": "red", "id": "a1", "name": "alpha", "size": 3, "uri": "/s/r/a1", "weight": 7})";

} // namespace

TEST(FilterParameter, ReadsTheFieldNamesInOrder)
{
    const FilterParameter sut("size,color,size");

    EXPECT_TRUE(sut.isValid());
    EXPECT_EQ(namesOf(sut), (std::vector<std::string>{"size", "color", "size"}));
    EXPECT_TRUE(sut.getFields().front().getPaging().isNull());
}

TEST(FilterParameter, IsInvalidWithAnEmptyName)
{
    EXPECT_FALSE(FilterParameter("").isValid());
    EXPECT_FALSE(FilterParameter("a,,b").isValid());
    EXPECT_FALSE(FilterParameter("a,").isValid());
    EXPECT_FALSE(FilterParameter(std::vector<FilterField>{}).isValid());
}

TEST(FilterParameter, SelectsTheNamedAndTheIdentifyingKeys)
{
    const FilterParameter sut("size");

    EXPECT_TRUE(sut.isSelected("size"));
    EXPECT_TRUE(sut.isSelected("id"));
    EXPECT_TRUE(sut.isSelected("name"));
    EXPECT_TRUE(sut.isSelected("uri"));
    EXPECT_FALSE(sut.isSelected("color"));
}

TEST(FilterParameter, KeepsOnlySelectedKeysOfAnObject)
{
    const FilterParameter sut("size,missing");
    const Poco::JSON::Object::Ptr in = parseObject(OBJECT);
    Poco::JSON::Object out;

    sut.applyFilter(*in, out);

    EXPECT_EQ(toJson(out), R"({"id":"a1","name":"alpha","size":3,"uri":"/s/r/a1"})");
    EXPECT_EQ(toJson(*in), toJson(*parseObject(OBJECT)));
}

TEST(FilterParameter, FiltersAnObjectInPlace)
{
    const FilterParameter sut("weight");
    Poco::JSON::Object::Ptr object = parseObject(OBJECT);

    sut.applyFilter(*object, *object);

    EXPECT_EQ(toJson(*object), R"({"id":"a1","name":"alpha","uri":"/s/r/a1","weight":7})");
}

TEST(FilterParameter, FiltersTheObjectsOfAnArrayAndKeepsOtherElements)
{
    const FilterParameter sut("size");
    const Poco::JSON::Array::Ptr in = parseArray(R"([{"id": "a", "size": 1, "color": "red"}, 5, "x", null])");
    Poco::JSON::Array out;

    sut.applyFilter(*in, out);

    EXPECT_EQ(toJson(out), R"([{"id":"a","size":1},5,"x",null])");
    EXPECT_EQ(toJson(*in), R"([{"color":"red","id":"a","size":1},5,"x",null])");
}

TEST(FilterParameter, FiltersAnArrayInPlace)
{
    const FilterParameter sut("color");
    Poco::JSON::Array::Ptr array = parseArray(R"([{"id": "a", "size": 1, "color": "red"}, {"id": "b"}])");

    sut.applyFilter(*array, *array);

    EXPECT_EQ(toJson(*array), R"([{"color":"red","id":"a"},{"id":"b"}])");
}

TEST(FilterParameter, TakesThePageOfAFieldThatHasOne)
{
    const FilterParameter sut(std::vector<FilterField>{
        FilterField("parts", new Paging(1, 2, Paging::OFFSET_LIMIT)), FilterField("tags")});
    const Poco::JSON::Object::Ptr in =
        parseObject(R"({"id": "a", "parts": [1, 2, 3, 4], "tags": ["x", "y"], "size": 2})");
    Poco::JSON::Object out;

    sut.applyFilter(*in, out);

    EXPECT_EQ(toJson(out), R"({"id":"a","parts":[2,3],"tags":["x","y"]})");
}

TEST(FilterParameter, LeavesAValueThatIsNoArrayWholeDespiteAPage)
{
    const FilterParameter sut(
        std::vector<FilterField>{FilterField("size", new Paging(1, 2, Paging::OFFSET_LIMIT))});

    const Poco::Dynamic::Var rendered = sut.renderField("size", Poco::Dynamic::Var(12));

    EXPECT_EQ(rendered.convert<int>(), 12);
}
