#include "Data/AttributeValueObjectBase.h"

#include "Data/AttributeValueObject.h"
#include "Data/GenericObject.h"

#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

using namespace Orvi::Data;

TEST(AttributeValueObjectBase, IsAReferenceAndNoArray)
{
    const AttributeValueObject<XObjectGeneric> value(XObjectGeneric(3));
    const AttributeValueObjectBase& sut = value;

    EXPECT_TRUE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValueObjectBase, GivesTheObjectAndItsSize)
{
    const Poco::UUID zone("3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c02");
    const AttributeValueObject<XObjectGeneric> value(XObjectGeneric("front left", zone, Poco::URI(), 3));
    const AttributeValueObjectBase& sut = value;

    ASSERT_NE(sut.getObject(), nullptr);
    EXPECT_EQ(sut.getObject()->getId(), zone);
    EXPECT_EQ(sut.getObject()->id(), 3);
    EXPECT_EQ(sut.size(), 3U);
}
