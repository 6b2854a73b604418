#include "Data/AttributeValueArrayBase.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Orvi::Data;

TEST(AttributeValueArrayBase, IsAnArrayAndNoReferenceForScalarElements)
{
    const AttributeValueArray<AttributeValueBoolean> value(std::vector<AttributeValueBoolean>{true});
    const AttributeValueArrayBase& sut = value;

    EXPECT_TRUE(sut.isArray());
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_EQ(sut.size(), 1U);
}

TEST(AttributeValueArrayBase, GivesItsElementsInOrder)
{
    const AttributeValueArray<AttributeValueNumber> value(std::vector<AttributeValueNumber>{1.5, 2.5});
    const AttributeValueArrayBase& sut = value;

    const std::vector<const AttributeValueBase*> elements = sut.getValueArray();

    ASSERT_EQ(elements.size(), 2U);
    EXPECT_EQ(elements[0]->compare(AttributeValueNumber(1.5)), 0);
    EXPECT_EQ(elements[1]->compare(AttributeValueNumber(2.5)), 0);
}
