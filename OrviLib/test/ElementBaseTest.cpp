#include "Data/ElementBase.h"

#include "Data/GenericObject.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

using namespace Orvi::Data;

namespace
{

const std::string SEAT_ID = "3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c01";

std::string invalidArgumentMessage(const std::string& uri)
{
    ElementGeneric sut;
    try
    {
        sut.initialize(Poco::URI(uri), nullptr);
    }
    catch (const Poco::InvalidArgumentException& e)
    {
        return e.message();
    }
    return "no exception";
}

} // namespace

TEST(ElementBase, StartsWithoutServiceAndResource)
{
    const ElementGeneric sut;

    EXPECT_EQ(sut.service(), "");
    EXPECT_EQ(sut.resource(), "");
    EXPECT_EQ(sut.id(), -1);
}

TEST(ElementBase, TakesServiceAndResourceByName)
{
    ElementGeneric sut;

    sut.initialize("cabin", "seats");

    EXPECT_EQ(sut.service(), "cabin");
    EXPECT_EQ(sut.resource(), "seats");
}

TEST(ElementBase, TakesServiceResourceAndObjectFromAnObjectURI)
{
    ElementGeneric sut;
    std::string objectId = "stale";

    sut.initialize(Poco::URI("http://vehicle:8080/cabin/seats/" + SEAT_ID), &objectId);

    EXPECT_EQ(sut.service(), "cabin");
    EXPECT_EQ(sut.resource(), "seats");
    EXPECT_EQ(objectId, SEAT_ID);
}

TEST(ElementBase, GivesAnEmptyObjectIdForAResourceURI)
{
    ElementGeneric sut;
    std::string objectId = "stale";

    sut.initialize(Poco::URI("/cabin/seats/"), &objectId);

    EXPECT_EQ(sut.service(), "cabin");
    EXPECT_EQ(sut.resource(), "seats");
    EXPECT_EQ(objectId, "");
}

TEST(ElementBase, AcceptsANullObjectIdTarget)
{
    ElementGeneric sut;

    sut.initialize(Poco::URI("/cabin/seats/" + SEAT_ID), nullptr);

    EXPECT_EQ(sut.service(), "cabin");
    EXPECT_EQ(sut.resource(), "seats");
}

TEST(ElementBase, RaisesInvalidArgumentForAURIWithOnlyAService)
{
    EXPECT_EQ(invalidArgumentMessage("/cabin"),
              "Invalid element URI '/cabin': expected /service/resource or /service/resource/object");
}

TEST(ElementBase, RaisesInvalidArgumentForAnEmptyURI)
{
    EXPECT_EQ(invalidArgumentMessage(""),
              "Invalid element URI '': expected /service/resource or /service/resource/object");
}

TEST(ElementBase, RaisesInvalidArgumentForAURIBelowAnObject)
{
    EXPECT_EQ(invalidArgumentMessage("/cabin/seats/" + SEAT_ID + "/heating"),
              "Invalid element URI '/cabin/seats/" + SEAT_ID +
                  "/heating': expected /service/resource or /service/resource/object");
}

TEST(ElementBase, KeepsItsNamesWhenAURIIsRefused)
{
    ElementGeneric sut;
    sut.initialize("cabin", "seats");

    EXPECT_THROW(sut.initialize(Poco::URI("/audio"), nullptr), Poco::InvalidArgumentException);

    EXPECT_EQ(sut.service(), "cabin");
    EXPECT_EQ(sut.resource(), "seats");
}

TEST(ElementBase, IsMadeAsAGenericElementFromNames)
{
    const ElementGeneric sut("cabin", "seats", "driver seat", Poco::UUID(SEAT_ID), 11);

    EXPECT_EQ(sut.service(), "cabin");
    EXPECT_EQ(sut.resource(), "seats");
    EXPECT_EQ(sut.getName(), "driver seat");
    EXPECT_EQ(sut.getId(), Poco::UUID(SEAT_ID));
    EXPECT_EQ(sut.getUri().toString(), "/cabin/seats/" + SEAT_ID);
    EXPECT_EQ(sut.id(), 11);
    EXPECT_EQ(sut.size(), 3U);
}

TEST(ElementBase, IsMadeAsAGenericElementFromAnObjectURI)
{
    const ElementGeneric sut(Poco::URI("/cabin/seats/" + SEAT_ID), "driver seat");

    EXPECT_EQ(sut.service(), "cabin");
    EXPECT_EQ(sut.resource(), "seats");
    EXPECT_EQ(sut.getName(), "driver seat");
    EXPECT_EQ(sut.getId(), Poco::UUID(SEAT_ID));
    EXPECT_EQ(sut.getUri().toString(), "/cabin/seats/" + SEAT_ID);
    EXPECT_EQ(sut.id(), -1);
}

TEST(ElementBase, IsMadeAsAGenericElementWithoutIdFromAResourceURI)
{
    const ElementGeneric sut(Poco::URI("/cabin/seats"), "new seat", 3);

    EXPECT_FALSE(sut.hasValue(XObjectBase::KEY_ID));
    EXPECT_EQ(sut.getUri().toString(), "/cabin/seats");
    EXPECT_EQ(sut.size(), 2U);
}

TEST(ElementBase, KeepsServiceAndResourceInCopies)
{
    const ElementGeneric original("cabin", "seats", "driver seat", Poco::UUID(SEAT_ID));

    const ElementGeneric sut(original);

    EXPECT_EQ(sut.service(), "cabin");
    EXPECT_EQ(sut.resource(), "seats");
    EXPECT_EQ(sut.getName(), "driver seat");
}
