#include "DbObjectIdMapper.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Mapping::DbObjectIdMapper;
using Orvi::Mapping::ServiceArrayIndexType_t;
using Orvi::Mapping::XObjectId;

struct Item
{
    bool found = false;
    Poco::Int32 objId = -100;
    ServiceArrayIndexType_t index = 999;
};

Item itemOf(const DbObjectIdMapper& mapper, XObjectId xObjId)
{
    Item item;
    item.found = mapper.getObjIdItemByXObjId(xObjId, item.objId, item.index);
    return item;
}

XObjectId xObjIdOf(const DbObjectIdMapper& mapper, Poco::Int32 objId, ServiceArrayIndexType_t index)
{
    XObjectId xObjId = -100;
    const bool found = mapper.getXObjIdItemByObjId(objId, index, xObjId);
    return found ? xObjId : -2;
}

TEST(DbObjectIdMapper, StartsEmpty)
{
    const DbObjectIdMapper sut;

    EXPECT_EQ(sut.size(), 0U);
}

TEST(DbObjectIdMapper, FindsObjectIdAndIndexOfAnEnteredDatabaseId)
{
    DbObjectIdMapper sut;

    sut.addXObjId(0x4711, 12, 2);

    const Item item = itemOf(sut, 12);
    EXPECT_TRUE(item.found);
    EXPECT_EQ(item.objId, 0x4711);
    EXPECT_EQ(item.index, 2U);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(DbObjectIdMapper, FindsTheDatabaseIdOfAnEnteredObjectIdAndIndex)
{
    DbObjectIdMapper sut;

    sut.addXObjId(0x4711, 12, 2);

    XObjectId xObjId = -100;
    EXPECT_TRUE(sut.getXObjIdItemByObjId(0x4711, 2, xObjId));
    EXPECT_EQ(xObjId, 12);
}

TEST(DbObjectIdMapper, TellsApartTheIndexesOfOneObjectId)
{
    DbObjectIdMapper sut;

    sut.addXObjId(0x4711, 12, 0);
    sut.addXObjId(0x4711, 13, 1);

    EXPECT_EQ(xObjIdOf(sut, 0x4711, 0), 12);
    EXPECT_EQ(xObjIdOf(sut, 0x4711, 1), 13);
    EXPECT_EQ(sut.size(), 2U);
}

TEST(DbObjectIdMapper, LeavesTheOutParametersAloneForAnUnknownDatabaseId)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);

    const Item item = itemOf(sut, 13);

    EXPECT_FALSE(item.found);
    EXPECT_EQ(item.objId, -100);
    EXPECT_EQ(item.index, 999U);
}

TEST(DbObjectIdMapper, LeavesTheOutParameterAloneForAnUnknownObjectIdOrIndex)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);

    XObjectId unknownObject = -100;
    XObjectId unknownIndex = -100;
    const bool objectFound = sut.getXObjIdItemByObjId(0x4712, 2, unknownObject);
    const bool indexFound = sut.getXObjIdItemByObjId(0x4711, 0, unknownIndex);

    EXPECT_FALSE(objectFound);
    EXPECT_FALSE(indexFound);
    EXPECT_EQ(unknownObject, -100);
    EXPECT_EQ(unknownIndex, -100);
}

TEST(DbObjectIdMapper, ReplacesTheItemOfADatabaseIdEnteredAgain)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);

    sut.addXObjId(0x0815, 12, 0);

    const Item item = itemOf(sut, 12);
    EXPECT_TRUE(item.found);
    EXPECT_EQ(item.objId, 0x0815);
    EXPECT_EQ(item.index, 0U);
    EXPECT_EQ(xObjIdOf(sut, 0x0815, 0), 12);
    EXPECT_EQ(xObjIdOf(sut, 0x4711, 2), -2);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(DbObjectIdMapper, ReplacesTheDatabaseIdOfAnItemEnteredAgain)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);

    sut.addXObjId(0x4711, 20, 2);

    EXPECT_EQ(xObjIdOf(sut, 0x4711, 2), 20);
    EXPECT_FALSE(itemOf(sut, 12).found);
    const Item item = itemOf(sut, 20);
    EXPECT_TRUE(item.found);
    EXPECT_EQ(item.objId, 0x4711);
    EXPECT_EQ(item.index, 2U);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(DbObjectIdMapper, JoinsTwoEarlierMappingsIntoOneWhenAPairCrossesThem)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 0);
    sut.addXObjId(0x0815, 13, 0);

    sut.addXObjId(0x4711, 13, 0);

    EXPECT_EQ(xObjIdOf(sut, 0x4711, 0), 13);
    EXPECT_EQ(xObjIdOf(sut, 0x0815, 0), -2);
    EXPECT_FALSE(itemOf(sut, 12).found);
    EXPECT_EQ(itemOf(sut, 13).objId, 0x4711);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(DbObjectIdMapper, KeepsAPairEnteredTwiceOnce)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);

    sut.addXObjId(0x4711, 12, 2);

    EXPECT_EQ(xObjIdOf(sut, 0x4711, 2), 12);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(DbObjectIdMapper, ForgetsBothDirectionsOfADeletedDatabaseId)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);
    sut.addXObjId(0x0815, 13, 0);

    sut.delXObjId(12);

    EXPECT_FALSE(itemOf(sut, 12).found);
    EXPECT_EQ(xObjIdOf(sut, 0x4711, 2), -2);
    EXPECT_EQ(xObjIdOf(sut, 0x0815, 0), 13);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(DbObjectIdMapper, IgnoresTheDeleteOfAnUnknownDatabaseId)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);

    sut.delXObjId(99);

    EXPECT_EQ(xObjIdOf(sut, 0x4711, 2), 12);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(DbObjectIdMapper, ForgetsEverythingWhenCleared)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);
    sut.addXObjId(0x0815, 13, 0);

    sut.clear();

    EXPECT_EQ(sut.size(), 0U);
    EXPECT_FALSE(itemOf(sut, 12).found);
    EXPECT_EQ(xObjIdOf(sut, 0x0815, 0), -2);
}

TEST(DbObjectIdMapper, MapsAgainAfterADelete)
{
    DbObjectIdMapper sut;
    sut.addXObjId(0x4711, 12, 2);
    sut.delXObjId(12);

    sut.addXObjId(0x4711, 14, 2);

    EXPECT_EQ(xObjIdOf(sut, 0x4711, 2), 14);
    EXPECT_EQ(itemOf(sut, 14).objId, 0x4711);
}

} // namespace
