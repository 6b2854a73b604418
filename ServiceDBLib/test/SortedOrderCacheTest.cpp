#include "JSONDataCache/SortedOrderCache.h"

#include "Command/Query/SortingParameter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Command::QueryRows;
using Orvi::Command::SortingParameter;
using Orvi::JSONDataCache::SortedOrderCache;
using testing::ElementsAre;
using testing::IsNull;
using testing::NotNull;
using testing::Pointee;

const SortedOrderCache::Order* orderOf(const SortedOrderCache::Kept* kept)
{
    return kept == nullptr ? nullptr : &kept->order;
}

QueryRows::Sortings sortingsOf(const std::vector<std::string>& queryValues)
{
    QueryRows::Sortings sortings;
    for (const std::string& queryValue : queryValues)
    {
        sortings.emplace_back(new SortingParameter(queryValue));
    }
    return sortings;
}

TEST(SortedOrderCache, GivesTheOrderKeptForTheElementVersionAndCriteria)
{
    SortedOrderCache sut(4);
    sut.keep(7, 100, "(+4:year)", {2, 0, 1});

    EXPECT_THAT(orderOf(sut.find(7, 100, "(+4:year)")), Pointee(ElementsAre(2, 0, 1)));
}

TEST(SortedOrderCache, GivesNothingForOtherCriteriaOrAnotherElement)
{
    SortedOrderCache sut(4);
    sut.keep(7, 100, "(+4:year)", {2, 0, 1});

    EXPECT_THAT(sut.find(7, 100, "(-4:year)"), IsNull());
    EXPECT_THAT(sut.find(8, 100, "(+4:year)"), IsNull());
    EXPECT_EQ(sut.size(), 1U);
}

TEST(SortedOrderCache, DropsTheOrdersOfAnElementOnceItShowsAnotherVersion)
{
    SortedOrderCache sut(4);
    sut.keep(7, 100, "(+4:year)", {2, 0, 1});
    sut.keep(7, 100, "(-4:year)", {1, 0, 2});
    sut.keep(8, 50, "(+4:year)", {0});

    EXPECT_THAT(sut.find(7, 101, "(+4:year)"), IsNull());
    EXPECT_THAT(sut.find(7, 100, "(-4:year)"), IsNull());
    EXPECT_THAT(sut.find(8, 50, "(+4:year)"), NotNull());
    EXPECT_EQ(sut.size(), 1U);
}

TEST(SortedOrderCache, ReplacesTheOrderKeptUnderTheSameKey)
{
    SortedOrderCache sut(4);
    sut.keep(7, 100, "(+4:year)", {2, 0, 1});

    sut.keep(7, 100, "(+4:year)", {0, 1, 2});

    EXPECT_THAT(orderOf(sut.find(7, 100, "(+4:year)")), Pointee(ElementsAre(0, 1, 2)));
    EXPECT_EQ(sut.size(), 1U);
}

TEST(SortedOrderCache, LetsTheOrderUsedLeastRecentlyGoBeyondItsCapacity)
{
    SortedOrderCache sut(2);
    sut.keep(1, 10, "a", {0});
    sut.keep(2, 20, "b", {0});
    ASSERT_THAT(sut.find(1, 10, "a"), NotNull());

    sut.keep(3, 30, "c", {0});

    EXPECT_THAT(sut.find(1, 10, "a"), NotNull());
    EXPECT_THAT(sut.find(2, 20, "b"), IsNull());
    EXPECT_THAT(sut.find(3, 30, "c"), NotNull());
}

TEST(SortedOrderCache, KeepsOneOrderWithACapacityOfZero)
{
    SortedOrderCache sut(0);

    const SortedOrderCache::Order& kept = sut.keep(1, 10, "a", {2, 0, 1});

    EXPECT_THAT(kept, ElementsAre(2, 0, 1));
    EXPECT_EQ(orderOf(sut.find(1, 10, "a")), &kept);
}

TEST(SortedOrderCache, WritesEachKeyWithItsDirectionAndLength)
{
    EXPECT_EQ(SortedOrderCache::criteriaOf(sortingsOf({"year,-title", "name"})),
              "(+4:year-5:title)(+4:name)");
}

TEST(SortedOrderCache, TellsApartSortingsThatWouldReadAlikeWithoutLengths)
{
    EXPECT_NE(SortedOrderCache::criteriaOf(sortingsOf({"a+1:b"})),
              SortedOrderCache::criteriaOf(sortingsOf({"a,b"})));
    EXPECT_NE(SortedOrderCache::criteriaOf(sortingsOf({"a", "b"})),
              SortedOrderCache::criteriaOf(sortingsOf({"a,b"})));
    EXPECT_NE(SortedOrderCache::criteriaOf(sortingsOf({"--a"})),
              SortedOrderCache::criteriaOf(sortingsOf({"-a"})));
}

TEST(SortedOrderCache, TakesTheOrdersOfAnElementIntoTheVersionOfAChangedValueAndNamesEachObjectOnce)
{
    SortedOrderCache sut(4);
    sut.keep(7, 100, "(+4:year)", {2, 0, 1});

    sut.valueChanged(7, 100, 101, 42);
    sut.valueChanged(7, 101, 102, 42);
    sut.valueChanged(7, 102, 105, 43);

    const SortedOrderCache::Kept* kept = sut.find(7, 105, "(+4:year)");
    ASSERT_THAT(kept, NotNull());
    EXPECT_THAT(kept->order, ElementsAre(2, 0, 1));
    EXPECT_THAT(kept->changed, ElementsAre(42, 43));
}

TEST(SortedOrderCache, DropsTheOrdersOfAnElementWhoseVersionMovedWithoutAValueChange)
{
    SortedOrderCache sut(4);
    sut.keep(7, 100, "(+4:year)", {2, 0, 1});
    sut.keep(8, 50, "(+4:year)", {0});

    sut.valueChanged(7, 101, 102, 42);

    EXPECT_THAT(sut.find(7, 102, "(+4:year)"), IsNull());
    EXPECT_THAT(sut.find(8, 50, "(+4:year)"), NotNull());
    EXPECT_EQ(sut.size(), 1U);
}

TEST(SortedOrderCache, KeepsAnOrderFoundBeforeInPlaceWhenAChangeLeavesItBehind)
{
    SortedOrderCache sut(4);
    sut.keep(7, 100, "(+4:year)", {2, 0, 1});
    const SortedOrderCache::Kept* found = sut.find(7, 100, "(+4:year)");

    sut.valueChanged(7, 99, 101, 42);

    EXPECT_EQ(sut.size(), 1U);
    EXPECT_THAT(found->order, ElementsAre(2, 0, 1));
    EXPECT_THAT(sut.find(7, 101, "(+4:year)"), IsNull());
}

TEST(SortedOrderCache, DropsAnOrderOnceMoreObjectsChangedThanMovingThemIsWorth)
{
    SortedOrderCache sut(4);
    sut.keep(7, 100, "(+4:year)", {0});
    Poco::UInt64 version = 100;
    for (std::size_t object = 0; object < SortedOrderCache::MAX_CHANGED; ++object)
    {
        sut.valueChanged(7, version, version + 1, static_cast<Orvi::DBData::DbId>(object));
        ++version;
    }
    ASSERT_THAT(sut.find(7, version, "(+4:year)"), NotNull());

    sut.valueChanged(7, version, version + 1, 1000);

    EXPECT_THAT(sut.find(7, version + 1, "(+4:year)"), IsNull());
}

} // namespace
