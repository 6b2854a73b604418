#include "JSONDataCache/DBData/AttributeIndex.h"

#include "TestSupport/LogCapture.h"

#include <Poco/Exception.h>
#include <Poco/RegularExpression.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeIndex;
using Orvi::DBData::AttributeType;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::DbId;
using Orvi::DBData::Index::ArrayValue;
using Orvi::DBData::Index::IndexEntry;
using Orvi::DBData::Index::IndexGroup;
using Orvi::DBData::Index::SimpleValue;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using Lines = std::vector<std::string>;
using Ids = std::vector<std::pair<DbId, DbId>>;
using Texts = std::vector<std::string>;
namespace DBData = Orvi::DBData;

/// Shows the keys of an index and the value it holds for each cell.
template <typename V>
class InspectedIndex : public AttributeIndex<V>
{
public:
    using AttributeIndex<V>::AttributeIndex;

    std::vector<Ids> groups() const
    {
        std::vector<Ids> result;
        for (const auto& keyAndGroup : this->m_index)
        {
            result.push_back(ids(keyAndGroup.second));
        }
        return result;
    }

    std::size_t cells() const { return this->m_entries.size(); }

    const V& keyOf(DbId object, DbId value) const
    {
        return this->m_entries.at(IndexEntry(object, value))->first;
    }

    const typename AttributeIndex<V>::IndexMap& keys() const { return this->m_index; }

    std::size_t keysWrittenOtherwise() const { return this->m_keysWrittenOtherwise; }

    static Ids ids(const IndexGroup& group)
    {
        Ids result;
        for (const IndexEntry& entry : group)
        {
            result.emplace_back(entry.idXObj, entry.idAttrValue);
        }
        return result;
    }
};

std::string textOf(const SimpleValue& key)
{
    return key.value.isEmpty() ? "<null>" : key.value.convert<std::string>();
}

Texts keyTexts(const InspectedIndex<SimpleValue>& index)
{
    Texts result;
    for (const auto& keyAndGroup : index.keys())
    {
        result.push_back(textOf(keyAndGroup.first));
    }
    return result;
}

Texts keyTexts(const InspectedIndex<ArrayValue>& index)
{
    Texts result;
    for (const auto& keyAndGroup : index.keys())
    {
        std::string text = "[";
        for (const SimpleValue& element : keyAndGroup.first.values)
        {
            text += (text.size() > 1 ? "," : "") + textOf(element);
        }
        result.push_back(text + "]");
    }
    return result;
}

Var makeArray(const std::vector<Var>& elements)
{
    return Var(AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray(elements)));
}

Ids ids(const IndexGroup& group)
{
    return InspectedIndex<SimpleValue>::ids(group);
}

class SimpleIndex : public testing::Test
{
protected:
    AttributeValue cell(DbId object, DbId value) const { return AttributeValue(object, attribute, value); }

    const Attribute::Ptr attribute{new Attribute("speed", DBData::AttrType_Integer, false)};
    InspectedIndex<SimpleValue> sut{*attribute};
};

class ArrayIndex : public testing::Test
{
protected:
    AttributeValue cell(DbId object, DbId value) const { return AttributeValue(object, attribute, value); }

    const Attribute::Ptr attribute{new Attribute("tags", DBData::AttrType_String, true)};
    InspectedIndex<ArrayValue> sut{*attribute};
};

TEST_F(SimpleIndex, FindsACellByItsValue)
{
    ASSERT_TRUE(sut.update(cell(1, 10), Var(50)));

    EXPECT_EQ(ids(sut.find(Var(50))), (Ids{{1, 10}}));
    EXPECT_EQ(ids(sut.find(Var("50"))), (Ids{{1, 10}}));
    EXPECT_EQ(ids(sut.find(Var(51))), Ids());
}

TEST_F(SimpleIndex, TakesTheValueFromTheArgumentNotFromTheCell)
{
    AttributeValue changed = cell(1, 10);
    changed.setValue(Var(7));

    ASSERT_TRUE(sut.update(changed, Var(8)));

    EXPECT_EQ(ids(sut.find(Var(8))), (Ids{{1, 10}}));
    EXPECT_EQ(ids(sut.find(Var(7))), Ids());
}

TEST_F(SimpleIndex, ForgetsTheOldValueAfterAnUpdate)
{
    sut.update(cell(1, 10), Var(50));
    sut.update(cell(2, 20), Var(60));

    ASSERT_TRUE(sut.update(cell(1, 10), Var(70)));

    EXPECT_EQ(ids(sut.find(Var(50))), Ids());
    EXPECT_EQ(ids(sut.find(Var(70))), (Ids{{1, 10}}));
    EXPECT_EQ(keyTexts(sut), (Texts{"60", "70"}));
    EXPECT_EQ(sut.cells(), 2u);
}

TEST_F(SimpleIndex, KeepsAnOldKeyWhileOtherCellsHoldIt)
{
    sut.update(cell(1, 10), Var(50));
    sut.update(cell(2, 20), Var(50));

    sut.update(cell(1, 10), Var(70));

    EXPECT_EQ(ids(sut.find(Var(50))), (Ids{{2, 20}}));
    EXPECT_EQ(keyTexts(sut), (Texts{"50", "70"}));
}

TEST_F(SimpleIndex, SharesOneKeyBetweenCellsOfEqualValueInOrderOfArrival)
{
    sut.update(cell(5, 50), Var(3));
    sut.update(cell(2, 20), Var(3));

    EXPECT_EQ(ids(sut.find(Var(3))), (Ids{{5, 50}, {2, 20}}));
    EXPECT_EQ(sut.groups(), (std::vector<Ids>{{{5, 50}, {2, 20}}}));
}

TEST_F(SimpleIndex, MovesACellToTheEndOfItsGroupWhenUpdatedWithTheSameValue)
{
    sut.update(cell(1, 10), Var(3));
    sut.update(cell(2, 20), Var(3));

    sut.update(cell(1, 10), Var(3));

    EXPECT_EQ(sut.groups(), (std::vector<Ids>{{{2, 20}, {1, 10}}}));
    EXPECT_EQ(sut.cells(), 2u);
}

TEST_F(SimpleIndex, KeepsANullCellUnderAnEmptyKeyThatSortsLast)
{
    sut.update(cell(1, 10), Var(9));
    sut.update(cell(2, 20), Var(10));

    ASSERT_TRUE(sut.update(cell(3, 30), Var()));

    EXPECT_EQ(keyTexts(sut), (Texts{"10", "9", "<null>"}));
    EXPECT_EQ(ids(sut.find(Var())), (Ids{{3, 30}}));
    EXPECT_TRUE(sut.keyOf(3, 30).value.isEmpty());
}

TEST_F(SimpleIndex, HoldsKeysInTextOrder)
{
    sut.update(cell(1, 10), Var(9));
    sut.update(cell(2, 20), Var(10));
    sut.update(cell(3, 30), Var(100));

    EXPECT_EQ(keyTexts(sut), (Texts{"10", "100", "9"}));
    EXPECT_EQ(ids(sut.find(Poco::RegularExpression("[0-9]+"))), (Ids{{2, 20}, {3, 30}, {1, 10}}));
}

TEST_F(SimpleIndex, FindsByARegularExpressionOnTheTextOfANumber)
{
    sut.update(cell(1, 10), Var(Attribute::Integer(120)));
    sut.update(cell(2, 20), Var(Attribute::Integer(1200)));
    sut.update(cell(3, 30), Var(Attribute::Integer(12)));

    EXPECT_EQ(ids(sut.find(Poco::RegularExpression("12."))), (Ids{{1, 10}}));
    EXPECT_EQ(ids(sut.find(Poco::RegularExpression("12"))), (Ids{{3, 30}}));
}

TEST_F(SimpleIndex, NeverFindsANullCellByARegularExpression)
{
    sut.update(cell(1, 10), Var());
    sut.update(cell(2, 20), Var(4));

    EXPECT_EQ(ids(sut.find(Poco::RegularExpression(".*"))), (Ids{{2, 20}}));
}

TEST_F(SimpleIndex, RemovesACellAndItsLastKey)
{
    sut.update(cell(1, 10), Var(4));
    sut.update(cell(2, 20), Var(5));

    ASSERT_TRUE(sut.remove(cell(1, 10)));

    EXPECT_EQ(ids(sut.find(Var(4))), Ids());
    EXPECT_EQ(keyTexts(sut), (Texts{"5"}));
    EXPECT_EQ(sut.cells(), 1u);
}

TEST_F(SimpleIndex, RemovesACellThatWasNeverIndexed)
{
    sut.update(cell(1, 10), Var(4));
    LogCapture capture;

    EXPECT_TRUE(sut.remove(cell(9, 90)));

    EXPECT_EQ(sut.groups(), (std::vector<Ids>{{{1, 10}}}));
    EXPECT_EQ(capture.lines(), Lines());
}

TEST_F(SimpleIndex, TellsCellsOfOneObjectApartByTheirIds)
{
    sut.update(cell(1, 10), Var(4));
    sut.update(cell(1, 11), Var(4));

    sut.remove(cell(1, 10));

    EXPECT_EQ(ids(sut.find(Var(4))), (Ids{{1, 11}}));
}

TEST_F(SimpleIndex, RefusesToUpdateWithACellOfAnotherAttribute)
{
    sut.update(cell(1, 10), Var(4));
    const AttributeValue foreign(2, new Attribute("rpm", DBData::AttrType_Integer, false), 20);
    LogCapture capture;

    EXPECT_FALSE(sut.update(foreign, Var(4)));

    EXPECT_EQ(ids(sut.find(Var(4))), (Ids{{1, 10}}));
    EXPECT_EQ(capture.lines(),
              Lines{"Error: Failed to update index for attribute speed with value for attribute rpm"});
}

TEST_F(SimpleIndex, RefusesToUpdateWithACellOfAnotherType)
{
    const AttributeValue foreign(2, new Attribute("speed", DBData::AttrType_Number, false), 20);
    LogCapture capture;

    EXPECT_FALSE(sut.update(foreign, Var(4)));

    EXPECT_EQ(sut.cells(), 0u);
    EXPECT_EQ(capture.lines(),
              Lines{"Error: Failed to update index for attribute speed with value for attribute speed"});
}

TEST_F(SimpleIndex, RefusesToRemoveACellOfAnotherAttribute)
{
    sut.update(cell(2, 20), Var(4));
    const AttributeValue foreign(2, new Attribute("rpm", DBData::AttrType_Integer, false), 20);
    const AttributeValue otherType(2, new Attribute("speed", DBData::AttrType_String, false), 20);
    LogCapture capture;

    EXPECT_FALSE(sut.remove(foreign));
    EXPECT_FALSE(sut.remove(otherType));

    EXPECT_EQ(ids(sut.find(Var(4))), (Ids{{2, 20}}));
    EXPECT_EQ(capture.lines(), (Lines{"Error: Failed to remove index for attribute speed",
                                      "Error: Failed to remove index for attribute speed"}));
}

TEST_F(SimpleIndex, FindsCellsByTheTextsTheirValuesAreWrittenInInKeyOrder)
{
    sut.update(cell(1, 10), Var(Attribute::Integer(9)));
    sut.update(cell(2, 20), Var(Attribute::Integer(10)));
    sut.update(cell(3, 30), Var(Attribute::Integer(9)));
    sut.update(cell(4, 40), Var());

    EXPECT_EQ(ids(sut.findWritten({"9", "10"})), (Ids{{2, 20}, {1, 10}, {3, 30}}));
    EXPECT_EQ(ids(sut.findWritten({"09", "9.0", "1"})), Ids());
    EXPECT_EQ(ids(sut.findWritten({""})), Ids());
    EXPECT_EQ(ids(sut.findWritten({})), Ids());
    EXPECT_EQ(sut.keysWrittenOtherwise(), 0u);
}

TEST_F(SimpleIndex, FindsAWrittenTextOnlyAsTheWholeText)
{
    sut.update(cell(1, 10), Var("v"));
    sut.update(cell(2, 20), Var("v\n"));
    sut.update(cell(3, 30), Var("V"));
    sut.update(cell(4, 40), Var(""));

    EXPECT_EQ(ids(sut.findWritten({"v"})), (Ids{{1, 10}}));
    EXPECT_EQ(ids(sut.findWritten({"v\n"})), (Ids{{2, 20}}));
    EXPECT_EQ(ids(sut.findWritten({""})), (Ids{{4, 40}}));
}

TEST_F(SimpleIndex, FindsValuesOfEveryAttributeTypeByTheirWrittenText)
{
    sut.update(cell(1, 10), Var(Attribute::Number(2.5)));
    sut.update(cell(2, 20), Var(Attribute::IntegerUnsigned(7)));
    sut.update(cell(3, 30), Var(true));
    sut.update(cell(4, 40), Var(Attribute::Number(1e20)));
    sut.update(cell(5, 50), Var("7"));

    EXPECT_EQ(ids(sut.findWritten({"2.5", "true"})), (Ids{{1, 10}, {3, 30}}));
    EXPECT_EQ(ids(sut.findWritten({"7"})), (Ids{{2, 20}, {5, 50}}));
    EXPECT_EQ(ids(sut.findWritten({"1e+20"})), (Ids{{4, 40}}));
    EXPECT_EQ(ids(sut.findWritten({"100000000000000000000", "1"})), Ids());
}

TEST_F(SimpleIndex, ScansForWrittenTextsWhileAKeyIsWrittenOtherwise)
{
    sut.update(cell(1, 10), Var(0.1F));
    sut.update(cell(2, 20), Var(Attribute::Integer(5)));

    EXPECT_EQ(sut.keysWrittenOtherwise(), 1u);
    EXPECT_EQ(ids(sut.findWritten({"0.10000000149011612", "5"})), (Ids{{1, 10}, {2, 20}}));
    EXPECT_EQ(ids(sut.findWritten({"0.1"})), Ids());

    sut.remove(cell(1, 10));

    EXPECT_EQ(sut.keysWrittenOtherwise(), 0u);
    EXPECT_EQ(ids(sut.findWritten({"5"})), (Ids{{2, 20}}));
}

TEST_F(SimpleIndex, CountsAKeyWrittenOtherwiseUntilItsLastCellGoes)
{
    sut.update(cell(1, 10), Var(1));
    sut.update(cell(2, 20), Var("1"));
    sut.update(cell(3, 30), Var(2));

    EXPECT_EQ(sut.keysWrittenOtherwise(), 2u);

    sut.remove(cell(1, 10));
    sut.update(cell(3, 30), Var(Attribute::Integer(2)));

    EXPECT_EQ(sut.keysWrittenOtherwise(), 1u);
    EXPECT_EQ(ids(sut.findWritten({"1", "2"})), (Ids{{2, 20}, {3, 30}}));

    sut.update(cell(2, 20), Var("3"));

    EXPECT_EQ(sut.keysWrittenOtherwise(), 0u);
}

TEST_F(SimpleIndex, RaisesForAKeyOfNoWrittenFormAsTheRegularExpressionSearchDoes)
{
    sut.update(cell(1, 10), Var(Poco::URI("/a/b")));
    LogCapture capture;

    EXPECT_THROW(sut.findWritten({"/a/b"}), Poco::RuntimeException);
    EXPECT_THROW(sut.find(Poco::RegularExpression("/a/b")), Poco::RuntimeException);
    EXPECT_EQ(capture.lines(),
              Lines(2, "Error: Attribute::setValue trying to set string type with wrong value"));
}

TEST_F(ArrayIndex, FindsACellWhenAnyElementMatches)
{
    sut.update(cell(1, 10), makeArray({Var("red"), Var("blue")}));
    sut.update(cell(2, 20), makeArray({Var("green")}));

    EXPECT_EQ(ids(sut.find(Var("blue"))), (Ids{{1, 10}}));
    EXPECT_EQ(ids(sut.find(Poco::RegularExpression("gr.*"))), (Ids{{2, 20}}));
    EXPECT_EQ(ids(sut.find(Var("yellow"))), Ids());
}

TEST_F(ArrayIndex, GivesAGroupOnceHoweverManyElementsMatch)
{
    sut.update(cell(1, 10), makeArray({Var("red"), Var("rose"), Var("red")}));
    sut.update(cell(2, 20), makeArray({Var("red"), Var("rose"), Var("red")}));

    EXPECT_EQ(ids(sut.find(Var("red"))), (Ids{{1, 10}, {2, 20}}));
    EXPECT_EQ(ids(sut.find(Poco::RegularExpression("r.*"))), (Ids{{1, 10}, {2, 20}}));
}

TEST_F(ArrayIndex, FindsACellOnceHoweverManyElementsAreWrittenAsTheTexts)
{
    sut.update(cell(1, 10), makeArray({Var("red"), Var("rose"), Var("red")}));
    sut.update(cell(2, 20), makeArray({Var(Attribute::Integer(4)), Var(true)}));
    sut.update(cell(3, 30), makeArray({Var("red\n")}));

    EXPECT_EQ(ids(sut.findWritten({"red", "rose"})), (Ids{{1, 10}}));
    EXPECT_EQ(ids(sut.findWritten({"true", "red"})), (Ids{{2, 20}, {1, 10}}));
    EXPECT_EQ(ids(sut.findWritten({"red\n"})), (Ids{{3, 30}}));
    EXPECT_EQ(ids(sut.findWritten({"4.0", "r"})), Ids());
}

TEST_F(ArrayIndex, NeverFindsAnEmptyArray)
{
    sut.update(cell(1, 10), makeArray({}));
    sut.update(cell(2, 20), Var());

    EXPECT_EQ(ids(sut.find(Var())), Ids());
    EXPECT_EQ(ids(sut.find(Var(""))), Ids());
    EXPECT_EQ(ids(sut.find(Poco::RegularExpression(".*"))), Ids());
    EXPECT_EQ(ids(sut.findWritten({""})), Ids());
    EXPECT_EQ(sut.groups(), (std::vector<Ids>{{{1, 10}, {2, 20}}}));
}

TEST_F(ArrayIndex, OrdersKeysElementByElement)
{
    sut.update(cell(1, 10), makeArray({Var("b")}));
    sut.update(cell(2, 20), makeArray({Var("a"), Var("c")}));
    sut.update(cell(3, 30), makeArray({Var("a")}));

    EXPECT_EQ(keyTexts(sut), (Texts{"[a]", "[a,c]", "[b]"}));
    EXPECT_EQ(ids(sut.find(Poco::RegularExpression("[abc]"))), (Ids{{3, 30}, {2, 20}, {1, 10}}));
}

TEST_F(ArrayIndex, ReplacesAnArrayThatChanges)
{
    sut.update(cell(1, 10), makeArray({Var("a")}));

    sut.update(cell(1, 10), makeArray({Var("b")}));

    EXPECT_EQ(ids(sut.find(Var("a"))), Ids());
    EXPECT_EQ(ids(sut.find(Var("b"))), (Ids{{1, 10}}));
    EXPECT_EQ(keyTexts(sut), (Texts{"[b]"}));
}

TEST_F(ArrayIndex, RaisesABadCastForAScalarValue)
{
    const Var scalar(std::string("red"));

    try
    {
        sut.update(cell(1, 10), scalar);
        FAIL() << "no exception";
    }
    catch (const Poco::BadCastException& e)
    {
        EXPECT_EQ(e.message(), "Can not convert " + std::string(typeid(std::string).name()) + " to " +
                                   std::string(typeid(AttributeValue::ValueArrayPtr).name()) + ".");
    }
    EXPECT_EQ(sut.cells(), 0u);
    EXPECT_TRUE(sut.keys().empty());
}

TEST_F(ArrayIndex, DropsAnIndexedCellWhoseNewValueRaisesABadCast)
{
    sut.update(cell(1, 10), makeArray({Var("a")}));

    EXPECT_THROW(sut.update(cell(1, 10), Var(5)), Poco::BadCastException);

    EXPECT_EQ(ids(sut.find(Var("a"))), Ids());
    EXPECT_EQ(sut.cells(), 0u);
    EXPECT_TRUE(sut.keys().empty());
    EXPECT_TRUE(sut.update(cell(1, 10), makeArray({Var("c")})));
    EXPECT_EQ(ids(sut.find(Var("c"))), (Ids{{1, 10}}));
}

TEST_F(ArrayIndex, RefusesACellOfAnotherAttribute)
{
    const AttributeValue foreign(1, new Attribute("speed", DBData::AttrType_Integer, false), 10);
    LogCapture capture;

    EXPECT_FALSE(sut.update(foreign, Var(4)));
    EXPECT_FALSE(sut.remove(foreign));

    EXPECT_EQ(capture.lines(),
              (Lines{"Error: Failed to update index for attribute tags with value for attribute speed",
                     "Error: Failed to remove index for attribute tags"}));
}

// ---------------------------------------------------------------------------------------------------------
// Searches for written texts on random values, against a scan that writes each key as a string attribute
// value is written.

const Texts STRINGS{"",    "1",   "01", "-2.5", "2.5", "true",  "a",
                    "a\n", "a\r", "A",  "b",    "10",  "1e+20", "\xc3\x85"};
const Texts OTHER_TEXTS{"zzz", "1.0", "-0", "0.5", "false", "a\n\n", "1e20"};

class RandomValues
{
public:
    RandomValues(unsigned int seed, bool otherHeldTypes)
        : m_engine(seed)
        , m_otherHeldTypes(otherHeldTypes)
    {
    }

    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(m_engine() % bound); }

    int between(int low, int high)
    {
        return low + static_cast<int>(below(static_cast<std::size_t>(high - low + 1)));
    }

    Var single()
    {
        switch (below(m_otherHeldTypes ? 9 : 7))
        {
        case 0:
            return Var();
        case 1:
            return Attribute::Integer(between(-10, 10));
        case 2:
            return Attribute::IntegerUnsigned(below(12));
        case 3:
            return Attribute::Number(between(-10, 10) / 4.0);
        case 4:
            return below(2) == 0;
        case 5:
            return Attribute::Number(below(2) == 0 ? 1e20 : 1e-20);
        case 6:
            return STRINGS[below(STRINGS.size())];
        case 7:
            return between(-10, 10);
        default:
            return static_cast<float>(between(-10, 10)) / 4.0F + 0.1F;
        }
    }

    Var array()
    {
        if (below(10) == 0)
        {
            return Var();
        }
        AttributeValue::ValueArray elements;
        for (std::size_t i = below(4); i > 0; --i)
        {
            elements.push_back(single());
        }
        return AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray(std::move(elements)));
    }

    std::set<std::string> texts(const Texts& pool)
    {
        std::set<std::string> result;
        for (std::size_t i = 1 + below(3); i > 0; --i)
        {
            result.insert(pool[below(pool.size())]);
        }
        return result;
    }

private:
    std::mt19937 m_engine;
    bool m_otherHeldTypes;
};

bool writtenAsOneOf(const SimpleValue& key, const std::set<std::string>& texts)
{
    if (key.value.isEmpty())
    {
        return false;
    }
    Var written(key.value);
    Attribute::convertToString(written);
    return texts.count(written.convert<std::string>()) > 0;
}

bool writtenAsOneOf(const ArrayValue& key, const std::set<std::string>& texts)
{
    for (const SimpleValue& element : key.values)
    {
        if (writtenAsOneOf(element, texts))
        {
            return true;
        }
    }
    return false;
}

template <typename V>
Ids scannedForWritten(const InspectedIndex<V>& index, const std::set<std::string>& texts)
{
    Ids result;
    for (const auto& [key, group] : index.keys())
    {
        if (writtenAsOneOf(key, texts))
        {
            const Ids found = InspectedIndex<V>::ids(group);
            result.insert(result.end(), found.begin(), found.end());
        }
    }
    return result;
}

Texts textPool(RandomValues& values)
{
    Texts pool = OTHER_TEXTS;
    for (int i = 0; i < 200; ++i)
    {
        const Var value = values.single();
        if (!value.isEmpty())
        {
            Var written(value);
            Attribute::convertToString(written);
            pool.push_back(written.convert<std::string>());
        }
    }
    return pool;
}

// Cells come, change and go at random; after each step a search for one to three texts finds what the
// scan finds, in the same order.
template <typename V>
void checkRandomSearchesForWrittenTexts(unsigned int seed, bool otherHeldTypes,
                                        const Attribute::Ptr& attribute)
{
    RandomValues values(seed, otherHeldTypes);
    const Texts pool = textPool(values);
    InspectedIndex<V> sut(*attribute);
    for (int step = 0; step < 400; ++step)
    {
        const DbId object = static_cast<DbId>(1 + values.below(40));
        const AttributeValue cell(object, attribute, object * 10);
        if (values.below(4) == 0)
        {
            sut.remove(cell);
        }
        else
        {
            sut.update(cell, std::is_same_v<V, ArrayValue> ? values.array() : values.single());
        }
        const std::set<std::string> texts = values.texts(pool);
        ASSERT_EQ(ids(sut.findWritten(texts)), scannedForWritten(sut, texts))
            << "seed " << seed << " step " << step;
        if constexpr (std::is_same_v<V, SimpleValue>)
        {
            std::size_t writtenOtherwise = 0;
            for (const auto& keyAndGroup : sut.keys())
            {
                writtenOtherwise += keyAndGroup.first.isWrittenAsSorted() ? 0 : 1;
            }
            ASSERT_EQ(sut.keysWrittenOtherwise(), writtenOtherwise) << "seed " << seed << " step " << step;
        }
    }
}

TEST(AttributeIndexRandom, FindsWrittenTextsOfSingleValuesAsTheScan)
{
    const Attribute::Ptr attribute(new Attribute("value", DBData::AttrType_String, false));
    for (unsigned int seed = 1; seed <= 10; ++seed)
    {
        checkRandomSearchesForWrittenTexts<SimpleValue>(seed, false, attribute);
    }
}

TEST(AttributeIndexRandom, FindsWrittenTextsOfSingleValuesOfOtherHeldTypesAsTheScan)
{
    const Attribute::Ptr attribute(new Attribute("value", DBData::AttrType_String, false));
    for (unsigned int seed = 1; seed <= 10; ++seed)
    {
        checkRandomSearchesForWrittenTexts<SimpleValue>(seed, true, attribute);
    }
}

TEST(AttributeIndexRandom, FindsWrittenTextsOfArrayElementsAsTheScan)
{
    const Attribute::Ptr attribute(new Attribute("values", DBData::AttrType_String, true));
    for (unsigned int seed = 1; seed <= 10; ++seed)
    {
        checkRandomSearchesForWrittenTexts<ArrayValue>(seed, true, attribute);
    }
}

} // namespace
