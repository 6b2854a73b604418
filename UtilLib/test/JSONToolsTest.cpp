#include "JSONTools.h"

#include <gtest/gtest.h>

#include <sstream>

namespace
{

using Orvi::Util::JSONTools;

std::string toText(const Poco::JSON::Object::Ptr& object)
{
    std::ostringstream out;
    object->stringify(out);
    return out.str();
}

TEST(JSONTools, ParsesAnObject)
{
    Poco::JSON::Object::Ptr result;

    ASSERT_TRUE(JSONTools::parseJSONString(R"({"speed": 12, "unit": "km/h"})", result));

    EXPECT_EQ(toText(result), R"({"speed":12,"unit":"km/h"})");
}

TEST(JSONTools, RefusesTextThatIsNoJsonAndKeepsTheOutput)
{
    Poco::JSON::Object::Ptr result = new Poco::JSON::Object;
    result->set("kept", true);

    EXPECT_FALSE(JSONTools::parseJSONString(R"({"speed": )", result));
    EXPECT_FALSE(JSONTools::parseJSONString("", result));
    EXPECT_FALSE(JSONTools::parseJSONString("not json", result));

    EXPECT_EQ(toText(result), R"({"kept":true})");
}

TEST(JSONTools, RefusesJsonThatIsNoObject)
{
    Poco::JSON::Object::Ptr result;

    EXPECT_FALSE(JSONTools::parseJSONString("[1,2]", result));
    EXPECT_FALSE(JSONTools::parseJSONString("42", result));

    EXPECT_TRUE(result.isNull());
}

TEST(JSONTools, FindsAnArrayHeldByPointer)
{
    Poco::JSON::Array::Ptr array = new Poco::JSON::Array;
    array->add(1);
    const Poco::Dynamic::Var value(array);
    const Poco::JSON::Array* found = nullptr;

    ASSERT_TRUE(JSONTools::testJsonArray(value, &found));

    EXPECT_EQ(found, array.get());
}

TEST(JSONTools, FindsAnArrayHeldByValue)
{
    Poco::JSON::Array array;
    array.add("a");
    const Poco::Dynamic::Var value(array);
    const Poco::JSON::Array* found = nullptr;

    ASSERT_TRUE(JSONTools::testJsonArray(value, &found));

    EXPECT_EQ(found->size(), 1U);
}

TEST(JSONTools, RejectsValuesThatHoldNoArray)
{
    const Poco::JSON::Array* found = nullptr;

    EXPECT_FALSE(JSONTools::testJsonArray(Poco::Dynamic::Var(), &found));
    EXPECT_FALSE(JSONTools::testJsonArray(Poco::Dynamic::Var(3), &found));
    EXPECT_FALSE(JSONTools::testJsonArray(Poco::Dynamic::Var(Poco::JSON::Object::Ptr(new Poco::JSON::Object)),
                                          &found));

    EXPECT_EQ(found, nullptr);
}

} // namespace
