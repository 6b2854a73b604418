#include "JSONDataCache/DBData/Index/IndexEntry.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::DBData::Index::IndexEntry;

TEST(IndexEntry, KeepsTheObjectAndTheValueId)
{
    const IndexEntry sut(4, 9);

    EXPECT_EQ(sut.idXObj, 4);
    EXPECT_EQ(sut.idAttrValue, 9);
    EXPECT_EQ(sut.getXObjId(), 4);
}

TEST(IndexEntry, OrdersByObjectIdFirst)
{
    const IndexEntry sut(4, 9);

    EXPECT_TRUE(sut < IndexEntry(5, 1));
    EXPECT_FALSE(IndexEntry(5, 1) < sut);
    EXPECT_FALSE(sut < IndexEntry(3, 20));
}

TEST(IndexEntry, OrdersByValueIdWithinAnObject)
{
    const IndexEntry sut(4, 9);

    EXPECT_TRUE(sut < IndexEntry(4, 10));
    EXPECT_FALSE(IndexEntry(4, 10) < sut);
    EXPECT_FALSE(sut < IndexEntry(4, 9));
}

TEST(IndexEntry, IsEqualOnlyWhenBothIdsAre)
{
    const IndexEntry sut(4, 9);

    EXPECT_TRUE(sut == IndexEntry(4, 9));
    EXPECT_FALSE(sut == IndexEntry(4, 8));
    EXPECT_FALSE(sut == IndexEntry(9, 4));
}

} // namespace
