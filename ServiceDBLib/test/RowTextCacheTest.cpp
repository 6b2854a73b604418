#include "JSONDataCache/RowTextCache.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::JSONDataCache::JsonText;
using Orvi::JSONDataCache::RowTextCache;

TEST(RowTextCache, GivesTheTextKeptForTheObjectInTheSameVersionOfTheStore)
{
    RowTextCache sut(100);
    sut.keep(7, 3, JsonText("{\"id\":\"a\"}"));

    const JsonText* kept = sut.find(7, 3);

    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->text(), "{\"id\":\"a\"}");
    EXPECT_EQ(sut.find(8, 3), nullptr);
}

TEST(RowTextCache, DropsEveryTextOnceTheStoreShowsAnotherVersion)
{
    RowTextCache sut(100);
    sut.keep(7, 3, JsonText("{\"id\":\"a\"}"));
    sut.keep(8, 3, JsonText("{\"id\":\"b\"}"));

    EXPECT_EQ(sut.find(8, 4), nullptr);
    EXPECT_EQ(sut.find(7, 3), nullptr);
    EXPECT_EQ(sut.size(), 0U);
    EXPECT_EQ(sut.bytes(), 0U);
}

TEST(RowTextCache, KeepsATextOfANewVersionInPlaceOfTheOldOnes)
{
    RowTextCache sut(100);
    sut.keep(7, 3, JsonText("{\"id\":\"a\"}"));

    sut.keep(8, 4, JsonText("{\"id\":\"b\"}"));

    EXPECT_EQ(sut.size(), 1U);
    EXPECT_EQ(sut.bytes(), 10U);
    ASSERT_NE(sut.find(8, 4), nullptr);
    EXPECT_EQ(sut.find(8, 4)->text(), "{\"id\":\"b\"}");
}

TEST(RowTextCache, DropsTheTextsKeptWhenANewOnePassesTheLimit)
{
    RowTextCache sut(25);
    sut.keep(1, 3, JsonText("{\"id\":\"a\"}"));
    sut.keep(2, 3, JsonText("{\"id\":\"b\"}"));

    sut.keep(3, 3, JsonText("{\"id\":\"c\"}"));

    EXPECT_EQ(sut.find(1, 3), nullptr);
    EXPECT_EQ(sut.find(2, 3), nullptr);
    ASSERT_NE(sut.find(3, 3), nullptr);
    EXPECT_EQ(sut.bytes(), 10U);
}

TEST(RowTextCache, DoesNotKeepATextLongerThanTheLimit)
{
    RowTextCache sut(10);
    sut.keep(1, 3, JsonText("{\"id\":\"a\"}"));

    sut.keep(2, 3, JsonText("{\"id\":\"long\"}"));

    EXPECT_EQ(sut.find(2, 3), nullptr);
    EXPECT_NE(sut.find(1, 3), nullptr);
    EXPECT_EQ(sut.bytes(), 10U);
}

TEST(RowTextCache, CountsAReplacedTextOnce)
{
    RowTextCache sut(100);
    sut.keep(1, 3, JsonText("{\"id\":\"a\"}"));

    sut.keep(1, 3, JsonText("{\"id\":\"bb\"}"));

    EXPECT_EQ(sut.size(), 1U);
    EXPECT_EQ(sut.bytes(), 11U);
    EXPECT_EQ(sut.find(1, 3)->text(), "{\"id\":\"bb\"}");
}

} // namespace
