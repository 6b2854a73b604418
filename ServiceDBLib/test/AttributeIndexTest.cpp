#include "JSONDataCache/DBData/AttributeIndex.h"

#include "TestSupport/LogCapture.h"

#include <Poco/Exception.h>
#include <Poco/RegularExpression.h>

#include <gtest/gtest.h>

#include <string>
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

    const V& keyOf(DbId object, DbId value) const { return this->m_entries.at(IndexEntry(object, value)); }

    const typename AttributeIndex<V>::IndexMap& keys() const { return this->m_index; }

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

TEST_F(SimpleIndex, KeepsTheTextOfAKeyFromItsFirstSearch)
{
    sut.update(cell(1, 10), Var(4));
    sut.update(cell(2, 20), Var(5));

    sut.find(Poco::RegularExpression("4"));

    const auto& keys = sut.keys();
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys.begin()->first.svalue.value(), "4");
    EXPECT_EQ(std::next(keys.begin())->first.svalue.value(), "5");
    EXPECT_TRUE(sut.keyOf(1, 10).svalue.isNull());
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

TEST_F(ArrayIndex, NeverFindsAnEmptyArray)
{
    sut.update(cell(1, 10), makeArray({}));
    sut.update(cell(2, 20), Var());

    EXPECT_EQ(ids(sut.find(Var())), Ids());
    EXPECT_EQ(ids(sut.find(Var(""))), Ids());
    EXPECT_EQ(ids(sut.find(Poco::RegularExpression(".*"))), Ids());
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

} // namespace
