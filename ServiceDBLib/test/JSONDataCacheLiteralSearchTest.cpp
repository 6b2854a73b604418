#include "JSONDataCache/JSONDataCache.h"

#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "Command/RequestBase.h"
#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/NumberFormatter.h>
#include <Poco/RegularExpression.h>
#include <Poco/SharedPtr.h>
#include <Poco/String.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::Command::AnyValueSearch;
using Orvi::Command::AttributeValueSearch;
using Orvi::Command::RequestBase;
using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::Element;
using Orvi::DBData::ServiceMap;
using Orvi::DBData::XObject;
using Orvi::JSONDataCache::prepareRegEx;
using Poco::Dynamic::Var;
using ServiceDB::Test::Fleet::addResource;
using ServiceDB::Test::Fleet::InspectableCache;
using ServiceDB::Test::Fleet::makeAttribute;
using ServiceDB::Test::Fleet::makeRequest;
using ServiceDB::Test::Fleet::withDefaults;
using Strings = std::vector<std::string>;
using ValueArrayPtr = AttributeValue::ValueArrayPtr;

const std::string SERVICE = "depot";
const std::string CRATES = "crates";

// "depot": "crates" holds a value of every attribute type, single and in arrays, and references to
// other crates.
ServiceMap makeDepot()
{
    using namespace Orvi::DBData;

    Service::Ptr depot(new Service);
    depot->setName(SERVICE);
    depot->setPort(8094);
    addResource(
        *depot, CRATES, "crate", 1,
        withDefaults(
            {makeAttribute("label"), makeAttribute("code"), makeAttribute("count", AttrType_Integer),
             makeAttribute("size", AttrType_IntegerUnsigned), makeAttribute("weight", AttrType_Number),
             makeAttribute("sealed", AttrType_Boolean), makeAttribute("tags", AttrType_String, true),
             makeAttribute("scores", AttrType_Integer, true), makeAttribute("owner", AttrType_Object),
             makeAttribute("links", AttrType_Object, true)}));
    return ServiceMap{{SERVICE, depot}};
}

std::string crateUuid(int number)
{
    return "c0000000-0000-4000-8000-" + Poco::toLower(Poco::NumberFormatter::formatHex(number, 12));
}

std::string crateUri(int number)
{
    return "/" + SERVICE + "/" + CRATES + "/" + crateUuid(number);
}

// Every byte but letters and digits encoded, so that the request decodes to the text itself.
std::string encoded(const std::string& text)
{
    std::string result;
    Poco::URI::encode(text, "!#$&'()*+,/:;=?@[]", result);
    return result;
}

// A value as a string attribute value is written; null as the empty text.
std::string written(const Var& value)
{
    Var copy(value);
    Attribute::convertToString(copy);
    return copy.isEmpty() ? std::string() : copy.convert<std::string>();
}

class JSONDataCacheLiteralSearchTest : public testing::Test
{
protected:
    void insert(int number)
    {
        XObject object{Element::Ptr()};
        object.setId(Orvi::DBData::UUID(crateUuid(number)));
        ASSERT_TRUE(sut.insertXObject(SERVICE, CRATES, object)) << number;
    }

    void write(int number, const std::string& attribute, const Var& value)
    {
        const XObject::Ptr stored = sut.store().get(crateUuid(number));
        ASSERT_FALSE(stored.isNull()) << number;
        // A removal needs a stored value.
        if (value.isEmpty() && !stored->getValue(attribute)->hasValue())
        {
            return;
        }
        const XObject::Ptr copy = sut.selectXObject(crateUuid(number), -1);
        AttributeValuePtr cell = copy->getValue(attribute);
        cell->setValue(value, false);
        ASSERT_TRUE(sut.updateCacheAttributeValueById(*cell, true)) << number << " " << attribute;
    }

    void writeArray(int number, const std::string& attribute, const AttributeValue::ValueArray& elements)
    {
        write(number, attribute, Var(ValueArrayPtr(new AttributeValue::ValueArray(elements))));
    }

    // The uuids that a search selects, in the order of their ids, or what it raises.
    Strings selected(const std::string& query)
    {
        std::vector<XObject::Ptr> objects;
        try
        {
            sut.selectXObjectsByRequest(makeRequest("/" + SERVICE + "/" + CRATES + "?" + query), objects);
        }
        catch (const Poco::Exception& e)
        {
            return {"raises " + e.displayText()};
        }
        Strings uuids;
        for (const XObject::Ptr& object : objects)
        {
            uuids.push_back(object->getUUID());
        }
        return uuids;
    }

    // The same search as every index ran it before literal values were looked up: each value turned
    // into its anchored pattern, the values of one attribute joined as alternatives, and the text of
    // every stored value, as a string attribute value is written, matched against them.
    Strings scanned(const std::string& query)
    {
        RequestBase request;
        try
        {
            request = makeRequest("/" + SERVICE + "/" + CRATES + "?" + query);
        }
        catch (const Poco::Exception& e)
        {
            return {"raises " + e.displayText()};
        }
        std::string anyValue;
        if (request.hasAnyCriteria())
        {
            std::vector<Poco::SharedPtr<AnyValueSearch>> anySearches;
            RequestBase::extractCriteria(anySearches, request.getSearchCriteria());
            if (!anySearches.empty() && !anySearches.front().isNull())
            {
                anyValue = anySearches.front()->getQueryValue();
            }
        }
        std::map<std::string, Poco::SharedPtr<Poco::RegularExpression>> patterns;
        try
        {
            if (request.hasAttributeCriteria())
            {
                std::vector<Poco::SharedPtr<AttributeValueSearch>> searches;
                RequestBase::extractCriteria(searches, request.getSearchCriteria());
                for (const Poco::SharedPtr<AttributeValueSearch>& search : searches)
                {
                    if (search.isNull() || patterns.count(search->getAttributeName()) > 0)
                    {
                        continue;
                    }
                    std::string pattern;
                    for (const std::string& value : search->getSearchValues())
                    {
                        pattern += (pattern.empty() ? "" : "|") + prepareRegEx(value);
                    }
                    patterns.emplace(search->getAttributeName(),
                                     new Poco::RegularExpression(pattern, 0, true));
                }
            }
            const Poco::RegularExpression anyPattern(prepareRegEx(anyValue), 0, true);
            return scannedObjects(anyValue.empty() ? nullptr : &anyPattern, patterns);
        }
        catch (const Poco::Exception& e)
        {
            return {"raises " + e.displayText()};
        }
    }

    Strings scannedObjects(const Poco::RegularExpression* anyPattern,
                           const std::map<std::string, Poco::SharedPtr<Poco::RegularExpression>>& patterns)
    {
        Strings uuids;
        for (const auto& [id, uuid] : element->getXObjectIds())
        {
            const XObject::Ptr object = sut.store().get(id);
            bool anyFound = false;
            for (const auto& entry : element->getAttributes())
            {
                anyFound = anyFound || (anyPattern != nullptr && matches(*object, entry.first, *anyPattern));
            }
            std::size_t attributesFound = 0;
            for (const auto& [name, pattern] : patterns)
            {
                attributesFound += matches(*object, name, *pattern) ? 1 : 0;
            }
            const bool found =
                patterns.empty() ? anyFound
                                 : attributesFound == patterns.size() && (anyPattern == nullptr || anyFound);
            if (found || (anyPattern == nullptr && patterns.empty()))
            {
                uuids.push_back(uuid.toString());
            }
        }
        return uuids;
    }

    static bool matches(const XObject& object, const std::string& attribute,
                        const Poco::RegularExpression& pattern)
    {
        const AttributeValuePtr cell = object.getValue(attribute);
        if (cell.isNull())
        {
            return false;
        }
        const Var& value = cell->getValue();
        if (value.type() != typeid(ValueArrayPtr))
        {
            return pattern.match(written(value), 0);
        }
        for (const Var& item : *value.extract<ValueArrayPtr>())
        {
            if (pattern.match(written(item), 0))
            {
                return true;
            }
        }
        return false;
    }

    void expectAsScanned(const std::string& query)
    {
        const Strings expected = scanned(query);
        EXPECT_EQ(selected(query), expected) << query;
    }

    ServiceMap services = makeDepot();
    InspectableCache sut{services};
    const Element::Ptr element = sut.selectElement(SERVICE, CRATES);
};

TEST_F(JSONDataCacheLiteralSearchTest, FindsAStringWithALineEndOnlyByTheWholeString)
{
    insert(1);
    insert(2);
    insert(3);
    write(1, "label", Var("v"));
    write(2, "label", Var("v\n"));
    write(3, "label", Var("v\r"));

    EXPECT_EQ(selected("label=v"), Strings{crateUuid(1)});
    EXPECT_EQ(selected("$q=v"), Strings{crateUuid(1)});
    EXPECT_EQ(selected("label=" + encoded("v\n")), Strings{crateUuid(2)});
    EXPECT_EQ(selected("label=v," + encoded("v\n")), Strings{crateUuid(1)});
    EXPECT_EQ(selected("label=" + encoded("v\n") + ",v"), Strings({crateUuid(1), crateUuid(2)}));
    EXPECT_EQ(selected("$q=" + encoded("v\r")), Strings{crateUuid(3)});
    for (const std::string query : {"label=v", "$q=v", "label=v,v%0A", "label=v%0A,v", "label=v%0D,v"})
    {
        expectAsScanned(query);
    }
}

TEST_F(JSONDataCacheLiteralSearchTest, NeverFindsAnEmptyOrNullValueByAnEmptyValue)
{
    insert(1);
    insert(2);
    write(1, "label", Var(""));
    write(2, "label", Var("x"));

    EXPECT_EQ(selected("label="), Strings());
    EXPECT_EQ(selected("label=,x"), Strings{crateUuid(2)});
    EXPECT_EQ(selected("code="), Strings());
    expectAsScanned("label=");
    expectAsScanned("label=,x");
}

TEST_F(JSONDataCacheLiteralSearchTest, FindsNumbersOfEveryAttributeTypeByTheirWrittenText)
{
    insert(1);
    insert(2);
    insert(3);
    insert(4);
    write(1, "count", Var(Attribute::Integer(-7)));
    write(2, "size", Var(Attribute::IntegerUnsigned(7)));
    write(3, "weight", Var(Attribute::Number(2.5)));
    write(3, "sealed", Var(true));
    write(4, "weight", Var(Attribute::Number(1e20)));
    write(4, "sealed", Var(false));

    EXPECT_EQ(selected("$q=7"), Strings{crateUuid(2)});
    EXPECT_EQ(selected("$q=-7"), Strings{crateUuid(1)});
    EXPECT_EQ(selected("weight=2.5"), Strings{crateUuid(3)});
    EXPECT_EQ(selected("weight=2.50"), Strings());
    EXPECT_EQ(selected("weight=" + encoded("1e\\+20")), Strings{crateUuid(4)});
    EXPECT_EQ(selected("weight=" + encoded("1e+20")), Strings());
    EXPECT_EQ(selected("weight=100000000000000000000"), Strings());
    EXPECT_EQ(selected("sealed=true,false"), Strings({crateUuid(3), crateUuid(4)}));
    EXPECT_EQ(selected("sealed=1"), Strings());
}

TEST_F(JSONDataCacheLiteralSearchTest, FindsATextThatLooksLikeANumberOnlyAsWritten)
{
    insert(1);
    insert(2);
    write(1, "code", Var("07"));
    write(2, "count", Var(Attribute::Integer(7)));

    EXPECT_EQ(selected("$q=07"), Strings{crateUuid(1)});
    EXPECT_EQ(selected("$q=7"), Strings{crateUuid(2)});
    EXPECT_EQ(selected("code=7"), Strings());
    EXPECT_EQ(selected("count=07"), Strings());
}

TEST_F(JSONDataCacheLiteralSearchTest, FindsAnArrayByAnyOfItsElementsOnceForSeveralValues)
{
    insert(1);
    insert(2);
    writeArray(1, "tags", {Var("red"), Var("blue")});
    writeArray(2, "scores", {Var(Attribute::Integer(3)), Var(Attribute::Integer(30))});

    EXPECT_EQ(selected("tags=red,blue"), Strings{crateUuid(1)});
    EXPECT_EQ(selected("tags=red,blue&scores=3"), Strings());
    EXPECT_EQ(selected("scores=30,3"), Strings{crateUuid(2)});
    EXPECT_EQ(selected("$q=blue"), Strings{crateUuid(1)});
}

TEST_F(JSONDataCacheLiteralSearchTest, FindsObjectsByTheUuidsTheyHaveAndName)
{
    insert(1);
    insert(2);
    insert(3);
    write(2, "owner", Var(crateUri(1)));
    writeArray(3, "links", {Var(crateUri(2)), Var(crateUri(1))});

    EXPECT_EQ(selected("$q=" + crateUuid(1)), Strings({crateUuid(1), crateUuid(2), crateUuid(3)}));
    EXPECT_EQ(selected("owner=" + crateUuid(1)), Strings{crateUuid(2)});
    EXPECT_EQ(selected("links=" + crateUuid(2)), Strings{crateUuid(3)});
    EXPECT_EQ(selected("$q=" + encoded(crateUri(3))), Strings{crateUuid(3)});
}

TEST_F(JSONDataCacheLiteralSearchTest, TakesPatternSyntaxAndWildcardsInAValueAsBefore)
{
    insert(1);
    insert(2);
    insert(3);
    write(1, "label", Var("a.b"));
    write(2, "label", Var("axb"));
    write(3, "label", Var("100%"));

    EXPECT_EQ(selected("label=a.b"), Strings({crateUuid(1), crateUuid(2)}));
    EXPECT_EQ(selected("label=" + encoded("a\\.b")), Strings{crateUuid(1)});
    EXPECT_EQ(selected("label=" + encoded("100%")), Strings{crateUuid(3)});
    EXPECT_EQ(selected("label=" + encoded("a%")), Strings({crateUuid(1), crateUuid(2)}));
    for (const std::string text :
         {"a|b", "[ab].b", "a.b|100%", "(a)", "a+", "a(b", "*", "^a.b$", "a\\", "a{1}.b"})
    {
        expectAsScanned("label=" + encoded(text));
        expectAsScanned("$q=" + encoded(text));
    }
    EXPECT_EQ(selected("label=" + encoded("a(b")).size(), 1u);
    EXPECT_EQ(selected("label=" + encoded("a(b")).front().rfind("raises ", 0), 0u);
}

// A request takes more alternatives than the anchored pattern of each can hold.
TEST_F(JSONDataCacheLiteralSearchTest, RaisesForValuesTooManyForAPatternAsBefore)
{
    insert(1);
    write(1, "label", Var("a"));
    std::string values = "a";
    for (int i = 1; i < 10000; ++i)
    {
        values += ",a";
    }

    const Strings tooMany = selected("label=" + values);

    ASSERT_EQ(tooMany.size(), 1u);
    EXPECT_EQ(tooMany.front().rfind("raises Error in regular expression: regular expression is too large", 0),
              0u);
    expectAsScanned("label=" + values);
}

TEST_F(JSONDataCacheLiteralSearchTest, FindsLongLiteralValuesAsBefore)
{
    insert(1);
    write(1, "label", Var(std::string(4095, 'x')));

    EXPECT_EQ(selected("label=" + std::string(4095, 'x')), Strings{crateUuid(1)});
    for (const std::size_t length : {2000, 4094, 4095, 40000})
    {
        expectAsScanned("label=" + std::string(length, 'x'));
        expectAsScanned("$q=" + std::string(length, 'x'));
    }
}

TEST_F(JSONDataCacheLiteralSearchTest, IntersectsAFreeTextSearchWithAttributeSearches)
{
    insert(1);
    insert(2);
    insert(3);
    write(1, "label", Var("blue"));
    write(1, "count", Var(Attribute::Integer(5)));
    write(2, "label", Var("blue"));
    write(2, "code", Var("5"));
    write(3, "label", Var("red"));
    write(3, "count", Var(Attribute::Integer(5)));

    EXPECT_EQ(selected("$q=5&label=blue"), Strings({crateUuid(1), crateUuid(2)}));
    EXPECT_EQ(selected("$q=5&label=blue&count=5"), Strings{crateUuid(1)});
    EXPECT_EQ(selected("$q=blue&count=5,6"), Strings{crateUuid(1)});
    EXPECT_EQ(selected("$q=blue&colour=blue"), Strings());
    expectAsScanned("$q=5&label=blue&count=5");
    expectAsScanned("$q=blue&colour=blue");
}

// ---------------------------------------------------------------------------------------------------------
// Random searches on random stores, against the scan.

const std::vector<Var> STRINGS{Var("Red Fox"),  Var("red fox"),   Var("7"),        Var("07"),   Var("-2.5"),
                               Var("2.5"),      Var("1e+20"),     Var("true"),     Var(""),     Var("a"),
                               Var("a\n"),      Var("a\r"),       Var("a\n\n"),    Var("v|w"),  Var("a.b"),
                               Var("axb"),      Var("(x)"),       Var("x+"),       Var("100%"), Var("100%25"),
                               Var("\xc3\x85"), Var("\xc3\x85l"), Var("tab\there")};
const std::vector<Var> INTEGERS{Var(Attribute::Integer(-40)), Var(Attribute::Integer(-3)),
                                Var(Attribute::Integer(0)), Var(Attribute::Integer(7)),
                                Var(Attribute::Integer(100))};
const std::vector<Var> UNSIGNEDS{Var(Attribute::IntegerUnsigned(0)), Var(Attribute::IntegerUnsigned(7)),
                                 Var(Attribute::IntegerUnsigned(18446744073709551615ULL))};
const std::vector<Var> NUMBERS{Var(-2.5), Var(-0.0), Var(0.0),  Var(0.1),
                               Var(2.5),  Var(7.0),  Var(1e20), Var(1e-20)};
const std::vector<Var> BOOLEANS{Var(true), Var(false)};

const Strings SEARCH_TEXTS{"Red Fox",
                           "red fox",
                           "Red%",
                           "%fox",
                           "7",
                           "07",
                           "-7",
                           "-2.5",
                           "2.5",
                           "1e+20",
                           "100000000000000000000",
                           "1e-20",
                           "0.1",
                           "0",
                           "-0",
                           "-40",
                           "18446744073709551615",
                           "true",
                           "false",
                           "",
                           "a",
                           "a\n",
                           "a\r",
                           "a.b",
                           "a\\.b",
                           "v|w",
                           "v",
                           "(x)",
                           "x+",
                           "100%",
                           "100%25",
                           "\xc3\x85",
                           "\xc3\x85l",
                           "\xc3\x85%",
                           "tab\there",
                           std::string("a\0b", 3),
                           "%",
                           "[ab]",
                           "a{1}",
                           "^a",
                           "a$",
                           "\\d",
                           "a(b",
                           "*",
                           "%a%"};
const Strings ATTRIBUTES{"label",  "code",  "count", "size", "weight", "sealed", "tags",
                         "scores", "owner", "links", "id",   "uri",    "name",   "colour"};

const int CRATE_COUNT = 40;
const int QUERY_COUNT = 200;

class JSONDataCacheLiteralSearchRandomTest : public JSONDataCacheLiteralSearchTest,
                                             public testing::WithParamInterface<unsigned int>
{
protected:
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(engine() % bound); }

    const Var& pick(const std::vector<Var>& values) { return values[below(values.size())]; }

    Var randomSingle(const std::string& attribute)
    {
        if (below(8) == 0)
        {
            return Var();
        }
        if (attribute == "count" || attribute == "scores")
        {
            return pick(INTEGERS);
        }
        if (attribute == "size")
        {
            return pick(UNSIGNEDS);
        }
        if (attribute == "weight")
        {
            return pick(NUMBERS);
        }
        if (attribute == "sealed")
        {
            return pick(BOOLEANS);
        }
        if (attribute == "owner" || attribute == "links")
        {
            return Var(crateUri(1 + static_cast<int>(below(CRATE_COUNT))));
        }
        return pick(STRINGS);
    }

    Var randomValue(const std::string& attribute)
    {
        if (attribute != "tags" && attribute != "scores" && attribute != "links")
        {
            return randomSingle(attribute);
        }
        AttributeValue::ValueArray elements;
        for (std::size_t i = below(4); i > 0; --i)
        {
            const Var element = randomSingle(attribute);
            if (!element.isEmpty())
            {
                elements.push_back(element);
            }
        }
        return elements.empty() ? Var() : Var(ValueArrayPtr(new AttributeValue::ValueArray(elements)));
    }

    std::string randomText()
    {
        if (below(5) == 0)
        {
            return below(2) == 0 ? crateUuid(1 + static_cast<int>(below(CRATE_COUNT)))
                                 : crateUri(1 + static_cast<int>(below(CRATE_COUNT)));
        }
        return SEARCH_TEXTS[below(SEARCH_TEXTS.size())];
    }

    std::string randomQuery()
    {
        std::string query;
        const std::size_t kind = below(3);
        if (kind != 1)
        {
            // A request refuses an empty free text.
            std::string text = randomText();
            query = "$q=" + encoded(text.empty() ? "a" : text);
        }
        if (kind != 0)
        {
            std::map<std::string, std::string> searches;
            for (std::size_t i = 1 + below(2); i > 0; --i)
            {
                std::string values;
                for (std::size_t j = 1 + below(3); j > 0; --j)
                {
                    values += (values.empty() ? "" : ",") + encoded(randomText());
                }
                searches.emplace(ATTRIBUTES[below(ATTRIBUTES.size())], values);
            }
            for (const auto& [name, values] : searches)
            {
                query += (query.empty() ? "" : "&") + name + "=" + values;
            }
        }
        return query;
    }

    std::mt19937 engine{GetParam()};
};

TEST_P(JSONDataCacheLiteralSearchRandomTest, SelectsWhatTheScanSelects)
{
    for (int number = 1; number <= CRATE_COUNT; ++number)
    {
        insert(number);
    }
    const Strings attributes{"label",  "code", "count",  "size",  "weight",
                             "sealed", "tags", "scores", "owner", "links"};
    for (int round = 0; round < 3; ++round)
    {
        for (int number = 1; number <= CRATE_COUNT; ++number)
        {
            for (const std::string& attribute : attributes)
            {
                if (round == 0 || below(4) == 0)
                {
                    write(number, attribute, randomValue(attribute));
                }
            }
        }
        for (int i = 0; i < QUERY_COUNT; ++i)
        {
            const std::string query = randomQuery();
            const Strings expected = scanned(query);
            ASSERT_EQ(selected(query), expected)
                << "seed " << GetParam() << " round " << round << ": " << query;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, JSONDataCacheLiteralSearchRandomTest, testing::Values(1u, 2u, 3u));

} // namespace
