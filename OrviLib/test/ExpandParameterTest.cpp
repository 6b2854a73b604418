#include "Command/Query/ExpandParameter.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <Poco/JSON/Stringifier.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using Orvi::Command::ExpandParameter;

namespace
{

Poco::Dynamic::Var json(const std::string& text)
{
    Poco::JSON::Parser parser;
    return parser.parse(text);
}

std::string toJson(const Poco::Dynamic::Var& value)
{
    std::ostringstream out;
    Poco::JSON::Stringifier::stringify(value, out);
    return out.str();
}

const char* const REFERENCE = R"({"id": "o1", "name": "olga", "uri": "/s/p/o1", "age": 30})";

} // namespace

TEST(ExpandParameter, ReadsALevel)
{
    const ExpandParameter sut("2");

    EXPECT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getLevel(), 2U);
    EXPECT_FALSE(sut.hasPropertyNames());
    EXPECT_TRUE(sut.getPropertyNames().empty());
}

TEST(ExpandParameter, AcceptsLevelsFromZeroToThree)
{
    EXPECT_TRUE(ExpandParameter("0").isValid());
    EXPECT_EQ(ExpandParameter("3").getLevel(), 3U);
    EXPECT_EQ(ExpandParameter::EXPANSION_LEVEL_MAX, 3U);
}

TEST(ExpandParameter, IsInvalidForOtherLevels)
{
    for (const std::string text : {"4", "9", "-1", "+1", "1a", "99999999999", ""})
    {
        const ExpandParameter sut(text);

        EXPECT_FALSE(sut.isValid()) << text;
        EXPECT_EQ(sut.getLevel(), 0U) << text;
    }
}

TEST(ExpandParameter, ReadsNamesAtLevelOne)
{
    const ExpandParameter sut("owner,parts");

    EXPECT_TRUE(sut.isValid());
    EXPECT_TRUE(sut.hasPropertyNames());
    EXPECT_EQ(sut.getPropertyNames(), (std::vector<std::string>{"owner", "parts"}));
    EXPECT_EQ(sut.getLevel(), 1U);
}

TEST(ExpandParameter, IsInvalidWithAnEmptyName)
{
    EXPECT_FALSE(ExpandParameter("owner,,parts").isValid());
    EXPECT_FALSE(ExpandParameter("owner,").isValid());
}

TEST(ExpandParameter, ExpandsEveryKeyWithALevel)
{
    const ExpandParameter sut("1");

    EXPECT_TRUE(sut.isExpanded("owner"));
    EXPECT_EQ(toJson(sut.renderField("owner", json(REFERENCE))),
              R"({"age":30,"id":"o1","name":"olga","uri":"/s/p/o1"})");
}

TEST(ExpandParameter, KeepsNamedReferencesWhole)
{
    const ExpandParameter sut("owner");

    EXPECT_TRUE(sut.isExpanded("owner"));
    EXPECT_EQ(toJson(sut.renderField("owner", json(REFERENCE))),
              R"({"age":30,"id":"o1","name":"olga","uri":"/s/p/o1"})");
}

TEST(ExpandParameter, CutsOtherReferencesToTheirIdentifyingKeys)
{
    const ExpandParameter sut("owner");

    EXPECT_FALSE(sut.isExpanded("maker"));
    EXPECT_EQ(toJson(sut.renderField("maker", json(REFERENCE))),
              R"({"id":"o1","name":"olga","uri":"/s/p/o1"})");
    EXPECT_EQ(toJson(sut.renderField("maker", json(R"({"id": "o2", "age": 4})"))), R"({"id":"o2"})");
}

TEST(ExpandParameter, CutsTheReferencesInAnArray)
{
    const ExpandParameter sut("owner");

    const Poco::Dynamic::Var rendered = sut.renderField(
        "parts", json(R"([{"id": "p1", "weight": 2}, "p2", {"id": "p3", "uri": "/s/p/p3"}])"));

    EXPECT_EQ(toJson(rendered), R"([{"id":"p1"},"p2",{"id":"p3","uri":"/s/p/p3"}])");
}

TEST(ExpandParameter, LeavesScalarsOfOtherKeysAlone)
{
    const ExpandParameter sut("owner");

    EXPECT_EQ(toJson(sut.renderField("size", Poco::Dynamic::Var(4))), "4");
}
