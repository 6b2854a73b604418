#include "Data/AttributeValueArray.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace Orvi::Data;
using ServiceDB::Test::toJson;

namespace
{

const std::string TRACK_ID = "a0000003-0000-4000-8000-000000000001";
const std::string ALBUM_ID = "a0000002-0000-4000-8000-000000000001";

using IntegerArray = AttributeValueArray<AttributeValueInteger>;
using ObjectValue = AttributeValueObject<XObjectGeneric>;

template <typename E>
AttributeValueArray<E> arrayOf(const std::vector<E>& elements)
{
    return AttributeValueArray<E>(elements);
}

XObjectGeneric album()
{
    XObjectGeneric result("Blue Hours", Poco::UUID(ALBUM_ID), Poco::URI("/audio/albums/" + ALBUM_ID), 4);
    result.getAttributesRef().setValue("year", AttributeValueInteger(1999));
    return result;
}

XObjectGeneric track()
{
    return XObjectGeneric("Night Drive", Poco::UUID(TRACK_ID), Poco::URI("/audio/tracks/" + TRACK_ID), 9);
}

std::string genericText(const GenericValue& value)
{
    return value.convert<std::string>();
}

} // namespace

TEST(AttributeValueArray, GivesAnArrayOfBooleansAsArraysOfBools)
{
    const auto sut = arrayOf<AttributeValueBoolean>({true, false});

    const GenericValue generic = sut.asGeneric();
    const Poco::Dynamic::Var json = sut.toJSON(0);

    ASSERT_EQ(generic.type(), typeid(Poco::Dynamic::Array));
    EXPECT_EQ(generic[0].type(), typeid(bool));
    EXPECT_EQ(genericText(generic), "[ true, false ]");
    EXPECT_EQ(json.type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(json), "[true,false]");
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_TRUE(sut.isArray());
}

TEST(AttributeValueArray, GivesAnArrayOfIntegersAsArraysOfInt64)
{
    const auto sut = arrayOf<AttributeValueInteger>({-1, 2});

    const GenericValue generic = sut.asGeneric();

    ASSERT_EQ(generic.type(), typeid(Poco::Dynamic::Array));
    EXPECT_EQ(generic[0].type(), typeid(Poco::Int64));
    EXPECT_EQ(genericText(generic), "[ -1, 2 ]");
    EXPECT_EQ(sut.toJSON(0).type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(sut.toJSON(0)), "[-1,2]");
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_TRUE(sut.isArray());
}

TEST(AttributeValueArray, GivesAnArrayOfUnsignedIntegersAsArraysOfUInt64)
{
    const auto sut = arrayOf<AttributeValueIntegerUnsigned>({1, 18446744073709551615ULL});

    const GenericValue generic = sut.asGeneric();

    ASSERT_EQ(generic.type(), typeid(Poco::Dynamic::Array));
    EXPECT_EQ(generic[1].type(), typeid(Poco::UInt64));
    EXPECT_EQ(genericText(generic), "[ 1, 18446744073709551615 ]");
    EXPECT_EQ(sut.toJSON(0).type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(sut.toJSON(0)), "[1,18446744073709551615]");
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_TRUE(sut.isArray());
}

TEST(AttributeValueArray, GivesAnArrayOfNumbersAsArraysOfDoubles)
{
    const auto sut = arrayOf<AttributeValueNumber>({21.5, -4.25});

    const GenericValue generic = sut.asGeneric();

    ASSERT_EQ(generic.type(), typeid(Poco::Dynamic::Array));
    EXPECT_EQ(generic[0].type(), typeid(double));
    EXPECT_EQ(genericText(generic), "[ 21.5, -4.25 ]");
    EXPECT_EQ(sut.toJSON(0).type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(sut.toJSON(0)), "[21.5,-4.25]");
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_TRUE(sut.isArray());
}

TEST(AttributeValueArray, GivesAnArrayOfStringsAsArraysOfTexts)
{
    const AttributeValueStringArray sut =
        arrayOf<AttributeValueString>({std::string("rock"), std::string("jazz")});

    const GenericValue generic = sut.asGeneric();

    ASSERT_EQ(generic.type(), typeid(Poco::Dynamic::Array));
    EXPECT_EQ(generic[0].type(), typeid(std::string));
    EXPECT_EQ(genericText(generic), R"([ "rock", "jazz" ])");
    EXPECT_EQ(sut.toJSON(0).type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(sut.toJSON(0)), R"(["rock","jazz"])");
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_TRUE(sut.isArray());
}

TEST(AttributeValueArray, GivesAnArrayOfURIsAsArraysOfTexts)
{
    const auto sut = arrayOf<AttributeValueURI>({Poco::URI("/audio/tracks/" + TRACK_ID)});

    const GenericValue generic = sut.asGeneric();

    ASSERT_EQ(generic.type(), typeid(Poco::Dynamic::Array));
    EXPECT_EQ(generic[0].type(), typeid(std::string));
    EXPECT_EQ(genericText(generic), R"([ "/audio/tracks/)" + TRACK_ID + R"(" ])");
    EXPECT_EQ(sut.toJSON(0).type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(sut.toJSON(0)), R"(["/audio/tracks/)" + TRACK_ID + R"("])");
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_TRUE(sut.isArray());
}

TEST(AttributeValueArray, GivesAnArrayOfUUIDsAsArraysOfTexts)
{
    const auto sut = arrayOf<AttributeValueUUID>({Poco::UUID(TRACK_ID), Poco::UUID(ALBUM_ID)});

    const GenericValue generic = sut.asGeneric();

    ASSERT_EQ(generic.type(), typeid(Poco::Dynamic::Array));
    EXPECT_EQ(generic[0].type(), typeid(std::string));
    EXPECT_EQ(genericText(generic), R"([ ")" + TRACK_ID + R"(", ")" + ALBUM_ID + R"(" ])");
    EXPECT_EQ(sut.toJSON(0).type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(sut.toJSON(0)), R"([")" + TRACK_ID + R"(",")" + ALBUM_ID + R"("])");
    EXPECT_FALSE(sut.isXObjReference());
    EXPECT_TRUE(sut.isArray());
}

TEST(AttributeValueArray, GivesAnArrayOfObjectsAsObjectsAndAsTheirJSON)
{
    const auto sut = arrayOf<ObjectValue>({album(), track()});

    const GenericValue generic = sut.asGeneric();

    ASSERT_EQ(generic.type(), typeid(Poco::Dynamic::Array));
    ASSERT_EQ(generic[1].type(), typeid(XObjectGeneric));
    EXPECT_EQ(generic[1].extract<XObjectGeneric>().getName(), "Night Drive");
    EXPECT_EQ(sut.toJSON(1).type(), typeid(Poco::JSON::Array::Ptr));
    EXPECT_EQ(toJson(sut.toJSON(1)),
              R"([{"id":")" + ALBUM_ID + R"(","name":"Blue Hours","uri":"/audio/albums/)" + ALBUM_ID +
                  R"(","year":1999},{"id":")" + TRACK_ID + R"(","name":"Night Drive","uri":"/audio/tracks/)" +
                  TRACK_ID + R"("}])");
    EXPECT_TRUE(sut.isXObjReference());
    EXPECT_TRUE(sut.isArray());
}

TEST(AttributeValueArray, RendersItsObjectsAtTheLevelItIsGiven)
{
    const auto sut = arrayOf<ObjectValue>({album()});

    EXPECT_EQ(toJson(sut.toJSON(0)), R"([{"id":")" + ALBUM_ID +
                                         R"(","name":"Blue Hours","uri":"/audio/albums/)" + ALBUM_ID +
                                         R"("}])");
}

TEST(AttributeValueArray, GivesAnEmptyArrayAsEmptyArrays)
{
    const IntegerArray sut;

    EXPECT_TRUE(sut.isEmpty());
    EXPECT_EQ(sut.size(), 0U);
    EXPECT_EQ(sut.asGeneric().type(), typeid(Poco::Dynamic::Array));
    EXPECT_EQ(sut.asGeneric().size(), 0U);
    EXPECT_EQ(toJson(sut.toJSON(0)), "[]");
}

TEST(AttributeValueArray, AddsFindsAndRemovesElements)
{
    IntegerArray sut;

    sut.addElement(AttributeValueInteger(4));
    sut.addElement(AttributeValueInteger(7));
    sut.addElement(AttributeValueInteger(4));
    const bool removed = sut.removeElement(AttributeValueInteger(4));
    const bool removedMissing = sut.removeElement(AttributeValueInteger(5));

    EXPECT_TRUE(removed);
    EXPECT_FALSE(removedMissing);
    EXPECT_EQ(sut.simplify(), (std::vector<Poco::Int64>{7, 4}));
    EXPECT_TRUE(sut.hasElement(AttributeValueInteger(7)));
    EXPECT_FALSE(sut.hasElement(AttributeValueInteger(5)));
    EXPECT_FALSE(sut.isEmpty());
}

TEST(AttributeValueArray, GivesElementsByIndex)
{
    auto sut = arrayOf<AttributeValueString>({std::string("rock"), std::string("jazz")});

    sut.getElement(1).set("blues");

    EXPECT_EQ(std::as_const(sut).getElement(0).get(), "rock");
    EXPECT_EQ(sut.getElement(1).get(), "blues");
}

TEST(AttributeValueArray, RaisesRangeExceptionForAnIndexBeyondTheEnd)
{
    const auto sut = arrayOf<AttributeValueInteger>({1, 2});

    try
    {
        sut.getElement(2);
        FAIL() << "no exception";
    }
    catch (const Poco::RangeException& e)
    {
        EXPECT_EQ(e.message(), "Index 2 beyond an array of 2 elements");
    }
}

TEST(AttributeValueArray, IteratesOverItsElementsInOrder)
{
    const auto sut = arrayOf<AttributeValueInteger>({3, 1, 2});
    std::vector<Poco::Int64> seen;

    for (const AttributeValueInteger& element : sut)
    {
        seen.push_back(element.get());
    }

    EXPECT_EQ(seen, (std::vector<Poco::Int64>{3, 1, 2}));
}

TEST(AttributeValueArray, SimplifiesToThePlainValues)
{
    const auto sut = arrayOf<AttributeValueUUID>({Poco::UUID(TRACK_ID)});

    const std::vector<Poco::UUID> plain = sut.simplify();

    EXPECT_EQ(plain, std::vector<Poco::UUID>{Poco::UUID(TRACK_ID)});
}

TEST(AttributeValueArray, ShowsItsElementsThroughTheBase)
{
    auto sut = arrayOf<AttributeValueInteger>({3, 4});
    AttributeValueArrayBase& base = sut;

    const std::vector<AttributeValueBase*> elements = base.getValueArray();
    ASSERT_EQ(elements.size(), 2U);
    ASSERT_TRUE(elements[1]->setValue(AttributeValueInteger(9)));

    EXPECT_EQ(std::as_const(base).getValueArray()[1], &sut.getElement(1));
    EXPECT_EQ(sut.getElement(1).get(), 9);
    EXPECT_EQ(base.size(), 2U);
}

TEST(AttributeValueArray, OrdersArraysElementByElement)
{
    const auto sut = arrayOf<AttributeValueInteger>({1, 2});

    EXPECT_EQ(sut.compare(arrayOf<AttributeValueInteger>({1, 10})), -1);
    EXPECT_EQ(sut.compare(arrayOf<AttributeValueInteger>({1, 1, 5})), 1);
    EXPECT_EQ(sut.compare(arrayOf<AttributeValueInteger>({1, 2})), 0);
}

TEST(AttributeValueArray, OrdersAPrefixFirst)
{
    const auto sut = arrayOf<AttributeValueString>({std::string("a")});

    EXPECT_EQ(sut.compare(arrayOf<AttributeValueString>({std::string("a"), std::string("b")})), -1);
    EXPECT_EQ(arrayOf<AttributeValueString>({std::string("a"), std::string("b")}).compare(sut), 1);
    EXPECT_EQ(IntegerArray().compare(IntegerArray()), 0);
}

TEST(AttributeValueArray, OrdersArraysOfURIsByThePathsOfTheirElements)
{
    const auto sut = arrayOf<AttributeValueURI>({Poco::URI("http://a/audio/tracks/" + TRACK_ID)});

    EXPECT_EQ(sut.compare(arrayOf<AttributeValueURI>({Poco::URI("http://b/audio/tracks/" + TRACK_ID)})), 0);
}

TEST(AttributeValueArray, TakesOverADeepCopyOfAnArrayOfObjects)
{
    auto sut = arrayOf<ObjectValue>({});
    auto source = arrayOf<ObjectValue>({album()});

    const bool result = sut.setValue(source);
    source.getElement(0).get().getAttributesRef().getValue<AttributeValueInteger>("year").set(2001);

    EXPECT_TRUE(result);
    EXPECT_EQ(sut.getElement(0).get().getAttributesRef().getValue<AttributeValueInteger>("year").get(), 1999);
}

TEST(AttributeValueArray, RefusesAnArrayOfAnotherElementClass)
{
    auto sut = arrayOf<AttributeValueInteger>({1});

    const bool result = sut.setValue(arrayOf<AttributeValueIntegerUnsigned>({2}));

    EXPECT_FALSE(result);
    EXPECT_EQ(sut.simplify(), std::vector<Poco::Int64>{1});
}
