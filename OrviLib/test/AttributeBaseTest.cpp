#include "Data/AttributeBase.h"

#include "Data/Attribute.h"
#include "Data/AttributeValue.h"

#include <gtest/gtest.h>

using namespace Orvi::Data;

TEST(AttributeBase, KnowsTheObjectItBelongsTo)
{
    const Attribute<AttributeValueInteger> attribute(42, "volume", AttributeValueInteger(7));
    const AttributeBase& sut = attribute;

    EXPECT_EQ(sut.parent(), 42);
}

TEST(AttributeBase, IsEmptyWithoutAValue)
{
    const Attribute<AttributeValueInteger> attribute(42, "volume");
    const AttributeBase& sut = attribute;

    EXPECT_TRUE(sut.isEmpty());
    EXPECT_EQ(sut.getValueBase(), nullptr);
}

TEST(AttributeBase, IsNotEmptyWithAValue)
{
    const Attribute<AttributeValueInteger> attribute(42, "volume", AttributeValueInteger(7));
    const AttributeBase& sut = attribute;

    EXPECT_FALSE(sut.isEmpty());
    EXPECT_EQ(sut.getValueBase(), attribute.getAttributeValue());
}

TEST(AttributeBase, CopiesThroughTheBaseToAnotherParent)
{
    const Attribute<AttributeValueInteger> attribute(42, "volume", AttributeValueInteger(7));
    const AttributeBase& sut = attribute;

    const AttributeBase::Ptr copy = sut.copy(43);

    ASSERT_FALSE(copy.isNull());
    EXPECT_EQ(copy->parent(), 43);
    EXPECT_EQ(copy->getName(), "volume");
    EXPECT_EQ(copy->getValueBase()->compare(AttributeValueInteger(7)), 0);
}
