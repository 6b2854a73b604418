#include "Data/AttributeValueBase.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"

#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

using namespace Orvi::Data;

namespace
{

const Poco::UUID SEAT_ID("3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c01");

XObjectGeneric seat()
{
    return XObjectGeneric("driver seat", SEAT_ID, Poco::URI("/cabin/seats/" + SEAT_ID.toString()), 7);
}

} // namespace

TEST(AttributeValueBase, RendersJSONAsTheGenericValueByDefault)
{
    const AttributeValueInteger sut(42);

    const Poco::Dynamic::Var json = sut.toJSON(0);

    EXPECT_EQ(json.type(), typeid(Poco::Int64));
    EXPECT_EQ(json.extract<Poco::Int64>(), 42);
}

TEST(AttributeValueBase, IsNeitherAReferenceNorAnArrayByDefault)
{
    const AttributeValueInteger value(1);
    const AttributeValueBase& sut = value;

    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValueBase, ComparesByTheGenericValuesWhichOrderNumbersAsText)
{
    const AttributeValueInteger sut(2);
    const AttributeValueInteger ten(10);

    EXPECT_EQ(sut.AttributeValueBase::compare(ten), 1);
    EXPECT_EQ(ten.AttributeValueBase::compare(sut), -1);
    EXPECT_EQ(sut.AttributeValueBase::compare(AttributeValueInteger(2)), 0);
}

TEST(AttributeValueBase, ComparesValuesOfDifferentClassesByTheirGenericValues)
{
    const AttributeValueString sut(std::string("seats"));

    EXPECT_EQ(sut.compare(AttributeValueURI(Poco::URI("/cabin"))), 1);
    EXPECT_EQ(sut.compare(AttributeValueURI(Poco::URI("seats"))), 0);
    EXPECT_EQ(sut.compare(AttributeValueURI(Poco::URI("windows"))), -1);
}

TEST(AttributeValueBase, TreatsAnObjectAndAScalarThatCannotBeOrderedAsEqual)
{
    const AttributeValueObject<XObjectGeneric> sut(seat());
    const AttributeValueInteger number(5);

    EXPECT_EQ(sut.compare(number), 0);
    EXPECT_EQ(number.compare(sut), 0);
}

TEST(AttributeValueBase, TreatsAnArrayOfObjectsAndAScalarAsEqual)
{
    AttributeValueArray<AttributeValueObject<XObjectGeneric>> sut;
    sut.addElement(AttributeValueObject<XObjectGeneric>(seat()));

    EXPECT_EQ(sut.compare(AttributeValueInteger(5)), 0);
    EXPECT_EQ(AttributeValueInteger(5).compare(sut), 0);
}

TEST(AttributeValueBase, OrdersAnArrayOfNumbersAgainstANumberByTheirTexts)
{
    AttributeValueArray<AttributeValueInteger> sut;
    sut.addElement(AttributeValueInteger(1));
    sut.addElement(AttributeValueInteger(2));

    EXPECT_EQ(sut.compare(AttributeValueInteger(10)), 1);
    EXPECT_EQ(AttributeValueInteger(10).compare(sut), -1);
}
