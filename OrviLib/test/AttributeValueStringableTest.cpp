#include "Data/AttributeValueStringable.h"

#include "Data/AttributeValue.h"

#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

using namespace Orvi::Data;

namespace
{

const std::string SEAT_ID = "3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c01";
const std::string OTHER_ID = "3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c02";

} // namespace

TEST(AttributeValueStringable, GivesAStringAsItselfInGenericAndJSONForm)
{
    const AttributeValueString sut(std::string("driver seat"));

    EXPECT_EQ(sut.type(), typeid(std::string));
    EXPECT_EQ(sut.toString(), "driver seat");
    EXPECT_EQ(sut.asGeneric().type(), typeid(std::string));
    EXPECT_EQ(sut.asGeneric().extract<std::string>(), "driver seat");
    EXPECT_EQ(sut.toJSON(1).type(), typeid(std::string));
    EXPECT_EQ(sut.toJSON(1).extract<std::string>(), "driver seat");
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValueStringable, GivesAURIAsItsTextInGenericAndJSONForm)
{
    const AttributeValueURI sut(Poco::URI("http://vehicle:8080/cabin/seats/" + SEAT_ID));

    EXPECT_EQ(sut.type(), typeid(Poco::URI));
    EXPECT_EQ(sut.toString(), "http://vehicle:8080/cabin/seats/" + SEAT_ID);
    EXPECT_EQ(sut.asGeneric().type(), typeid(std::string));
    EXPECT_EQ(sut.asGeneric().extract<std::string>(), "http://vehicle:8080/cabin/seats/" + SEAT_ID);
    EXPECT_EQ(sut.toJSON(1).type(), typeid(std::string));
    EXPECT_EQ(sut.toJSON(1).extract<std::string>(), "http://vehicle:8080/cabin/seats/" + SEAT_ID);
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValueStringable, GivesAUUIDAsItsTextInGenericAndJSONForm)
{
    const AttributeValueUUID sut{Poco::UUID(SEAT_ID)};

    EXPECT_EQ(sut.type(), typeid(Poco::UUID));
    EXPECT_EQ(sut.toString(), SEAT_ID);
    EXPECT_EQ(sut.asGeneric().type(), typeid(std::string));
    EXPECT_EQ(sut.asGeneric().extract<std::string>(), SEAT_ID);
    EXPECT_EQ(sut.toJSON(1).type(), typeid(std::string));
    EXPECT_EQ(sut.toJSON(1).extract<std::string>(), SEAT_ID);
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_FALSE(sut.isArray());
}

TEST(AttributeValueStringable, OrdersStringsByTheirText)
{
    const AttributeValueString sut(std::string("beta"));

    EXPECT_EQ(sut.compare(AttributeValueString(std::string("gamma"))), -1);
    EXPECT_EQ(sut.compare(AttributeValueString(std::string("Beta"))), 1);
    EXPECT_EQ(sut.compare(AttributeValueString(std::string("beta"))), 0);
}

TEST(AttributeValueStringable, OrdersURIsByTheTextOfTheirPath)
{
    const AttributeValueURI sut(Poco::URI("/cabin/seats/" + SEAT_ID));

    EXPECT_EQ(sut.compare(AttributeValueURI(Poco::URI("/cabin/seats/" + OTHER_ID))), -1);
    EXPECT_EQ(sut.compare(AttributeValueURI(Poco::URI("/cabin/doors/" + OTHER_ID))), 1);
    EXPECT_EQ(sut.compare(AttributeValueURI(Poco::URI("/cabin/seats/" + SEAT_ID + "?$expand=1"))), 0);
}

TEST(AttributeValueStringable, TwoURIsThatDifferOnlyInHostCompareEqual)
{
    const AttributeValueURI sut(Poco::URI("http://head-unit/cabin/seats/" + SEAT_ID));
    const AttributeValueURI other(Poco::URI("http://127.0.0.1:8080/cabin/seats/" + SEAT_ID));

    EXPECT_EQ(sut.compare(other), 0);
    EXPECT_EQ(other.compare(sut), 0);
    EXPECT_TRUE(sut == other);
}

TEST(AttributeValueStringable, OrdersUUIDsAsPocoOrdersThem)
{
    const AttributeValueUUID sut{Poco::UUID(SEAT_ID)};

    EXPECT_EQ(sut.compare(AttributeValueUUID(Poco::UUID(OTHER_ID))), -1);
    EXPECT_EQ(AttributeValueUUID(Poco::UUID(OTHER_ID)).compare(sut), 1);
    EXPECT_EQ(sut.compare(AttributeValueUUID(Poco::UUID(SEAT_ID))), 0);
}

TEST(AttributeValueStringable, ComparesAUUIDWithAStringByTheirTexts)
{
    const AttributeValueUUID sut{Poco::UUID(SEAT_ID)};

    EXPECT_EQ(sut.compare(AttributeValueString(SEAT_ID)), 0);
    EXPECT_EQ(sut.compare(AttributeValueString(OTHER_ID)), -1);
}

TEST(AttributeValueStringable, TakesOverAURIButNotAString)
{
    AttributeValueURI sut(Poco::URI("/cabin/seats"));

    const bool fromUri = sut.setValue(AttributeValueURI(Poco::URI("/cabin/doors")));
    const bool fromString = sut.setValue(AttributeValueString(std::string("/cabin/windows")));

    EXPECT_TRUE(fromUri);
    EXPECT_FALSE(fromString);
    EXPECT_EQ(sut.toString(), "/cabin/doors");
}
