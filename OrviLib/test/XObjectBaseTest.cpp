#include "Data/XObjectBase.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"

#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

using namespace Orvi::Data;

namespace
{

const Poco::UUID FIRST("3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c01");
const Poco::UUID SECOND("3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c02");

XObjectGeneric object(const Poco::UUID& uuid, const std::string& name)
{
    return XObjectGeneric(name, uuid, Poco::URI(), -1);
}

} // namespace

TEST(XObjectBase, NamesItsKeys)
{
    EXPECT_EQ(XObjectBase::KEY_ID, "id");
    EXPECT_EQ(XObjectBase::KEY_URI, "uri");
    EXPECT_EQ(XObjectBase::KEY_NAME, "name");
}

TEST(XObjectBase, KeepsTheIdItWasMadeWith)
{
    const XObjectGeneric value(12);
    const XObjectBase& sut = value;

    EXPECT_EQ(sut.id(), 12);
    EXPECT_EQ(XObjectGeneric().id(), -1);
}

TEST(XObjectBase, OrdersObjectsByTheirUUIDFirst)
{
    const XObjectGeneric sut = object(FIRST, "zeta");
    const XObjectGeneric other = object(SECOND, "alpha");

    EXPECT_TRUE(sut < other);
    EXPECT_FALSE(other < sut);
    EXPECT_TRUE(other > sut);
    EXPECT_FALSE(sut > other);
    EXPECT_TRUE(sut != other);
    EXPECT_FALSE(sut == other);
}

TEST(XObjectBase, OrdersObjectsWithTheSameUUIDByTheirName)
{
    const XObjectGeneric sut = object(FIRST, "alpha");
    const XObjectGeneric other = object(FIRST, "beta");

    EXPECT_TRUE(sut < other);
    EXPECT_TRUE(other > sut);
    EXPECT_TRUE(sut != other);
}

TEST(XObjectBase, TakesObjectsWithTheSameUUIDAndNameAsEqual)
{
    XObjectGeneric sut = object(FIRST, "alpha");
    XObjectGeneric other = object(FIRST, "alpha");
    other.setUri(Poco::URI("/audio/tracks/" + FIRST.toString()));
    other.getAttributesRef().setValue("year", AttributeValueInteger(1999));

    EXPECT_TRUE(sut == other);
    EXPECT_FALSE(sut != other);
    EXPECT_FALSE(sut < other);
    EXPECT_FALSE(sut > other);
}

TEST(XObjectBase, OrdersAnObjectWithoutUUIDFirst)
{
    XObjectGeneric sut;
    sut.setName("zeta");
    const XObjectGeneric other = object(FIRST, "alpha");

    EXPECT_TRUE(sut < other);
    EXPECT_TRUE(other > sut);
    EXPECT_TRUE(XObjectGeneric() == XObjectGeneric(5));
}
