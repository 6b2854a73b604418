#include "Data/GenericObject.h"

#include "Data/Attribute.h"
#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/ResourceBase.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Orvi::Data;
using ServiceDB::Test::toJson;

namespace
{

const std::string TRACK_ID = "a0000003-0000-4000-8000-000000000001";
const std::string ALBUM_ID = "a0000002-0000-4000-8000-000000000001";
const std::string TRACK_URI = "/audio/tracks/" + TRACK_ID;

using ObjectValue = AttributeValueObject<XObjectGeneric>;

XObjectGeneric track()
{
    XObjectGeneric result("Night Drive", Poco::UUID(TRACK_ID), Poco::URI(TRACK_URI), 9);
    result.getAttributesRef().setValue("duration", AttributeValueIntegerUnsigned(245));
    return result;
}

XObjectGeneric album()
{
    return XObjectGeneric("Blue Hours", Poco::UUID(ALBUM_ID), Poco::URI("/audio/albums/" + ALBUM_ID), 4);
}

template <typename Exception, typename Call>
std::string messageOf(Call call)
{
    try
    {
        call();
    }
    catch (const Exception& e)
    {
        return e.message();
    }
    return "no exception";
}

} // namespace

TEST(GenericObject, StoresIdUriAndNameFromItsConstructor)
{
    const XObjectGeneric sut("Night Drive", Poco::UUID(TRACK_ID), Poco::URI(TRACK_URI), 9);

    EXPECT_EQ(sut.getName(), "Night Drive");
    EXPECT_EQ(sut.getId(), Poco::UUID(TRACK_ID));
    EXPECT_EQ(sut.getUri().toString(), TRACK_URI);
    EXPECT_EQ(sut.size(), 3U);
    EXPECT_EQ(sut.id(), 9);
    EXPECT_EQ(sut.getAttributesRef().parent(), 9);
    EXPECT_EQ(sut.getAttribute(XObjectBase::KEY_ID)->parent(), 9);
}

TEST(GenericObject, AcceptsAURIWhosePathHoldsTheUUIDBehindAHost)
{
    const XObjectGeneric sut("Night Drive", Poco::UUID(TRACK_ID),
                             Poco::URI("http://vehicle:8080" + TRACK_URI), 9);

    EXPECT_EQ(sut.getUri().getHost(), "vehicle");
}

TEST(GenericObject, RaisesDataExceptionWhenTheURIDoesNotHoldTheUUID)
{
    const std::string message = messageOf<Poco::DataException>(
        []
        { XObjectGeneric("Night Drive", Poco::UUID(TRACK_ID), Poco::URI("/audio/tracks/" + ALBUM_ID), 9); });

    EXPECT_EQ(message, "Invalid XObject - URI and UUID mismatch");
}

TEST(GenericObject, RaisesDataExceptionWhenOnlyTheQueryHoldsTheUUID)
{
    const std::string message = messageOf<Poco::DataException>(
        [] {
            XObjectGeneric("Night Drive", Poco::UUID(TRACK_ID), Poco::URI("/audio/tracks?id=" + TRACK_ID), 9);
        });

    EXPECT_EQ(message, "Invalid XObject - URI and UUID mismatch");
}

TEST(GenericObject, SkipsTheCheckForAnEmptyURI)
{
    const XObjectGeneric sut("", Poco::UUID(TRACK_ID), Poco::URI(), 9);

    EXPECT_TRUE(sut.getUri().empty());
    EXPECT_EQ(sut.getName(), "");
    EXPECT_EQ(sut.size(), 3U);
}

TEST(GenericObject, StartsWithoutAttributesWhenMadeFromAnId)
{
    const XObjectGeneric sut(5);

    EXPECT_EQ(sut.size(), 0U);
    EXPECT_EQ(sut.id(), 5);
    EXPECT_EQ(sut.getAttributesRef().parent(), 5);
}

TEST(GenericObject, RaisesInvalidAccessForAMissingName)
{
    const XObjectGeneric sut;

    EXPECT_EQ(messageOf<Poco::InvalidAccessException>([&] { sut.getName(); }), "Attribute name is not set");
}

TEST(GenericObject, RaisesInvalidAccessForAMissingId)
{
    const XObjectGeneric sut;

    EXPECT_EQ(messageOf<Poco::InvalidAccessException>([&] { sut.getId(); }), "Attribute id is not set");
}

TEST(GenericObject, RaisesInvalidAccessForAMissingUri)
{
    const XObjectGeneric sut;

    EXPECT_EQ(messageOf<Poco::InvalidAccessException>([&] { sut.getUri(); }), "Attribute uri is not set");
}

TEST(GenericObject, RaisesInvalidAccessForANameOfAnotherClass)
{
    XObjectGeneric sut;
    sut.setAttribute(Attribute<AttributeValueInteger>(-1, XObjectBase::KEY_NAME, AttributeValueInteger(3)));

    EXPECT_EQ(messageOf<Poco::InvalidAccessException>([&] { sut.getName(); }),
              "Invalid type for attribute name in AttributeContainer");
}

TEST(GenericObject, RaisesInvalidAccessForAnIdOfAnotherClass)
{
    XObjectGeneric sut;
    sut.setAttribute(
        Attribute<AttributeValueString>(-1, XObjectBase::KEY_ID, AttributeValueString(TRACK_ID)));

    EXPECT_EQ(messageOf<Poco::InvalidAccessException>([&] { sut.getId(); }),
              "Invalid type for attribute id in AttributeContainer");
}

TEST(GenericObject, RaisesInvalidAccessForAUriOfAnotherClass)
{
    XObjectGeneric sut;
    sut.setAttribute(
        Attribute<AttributeValueString>(-1, XObjectBase::KEY_URI, AttributeValueString(TRACK_URI)));

    EXPECT_EQ(messageOf<Poco::InvalidAccessException>([&] { sut.getUri(); }),
              "Invalid type for attribute uri in AttributeContainer");
}

TEST(GenericObject, ChangesIdUriAndName)
{
    XObjectGeneric sut = track();

    sut.setName("Morning Drive");
    sut.setId(Poco::UUID(ALBUM_ID));
    sut.setUri(Poco::URI("/audio/albums/" + ALBUM_ID));

    EXPECT_EQ(sut.getName(), "Morning Drive");
    EXPECT_EQ(sut.getId(), Poco::UUID(ALBUM_ID));
    EXPECT_EQ(sut.getUri().getPath(), "/audio/albums/" + ALBUM_ID);
}

TEST(GenericObject, GivesAttributesAndValues)
{
    const XObjectGeneric sut = track();

    const AttributeMap attributes = sut.getAttributes();

    EXPECT_EQ(attributes.size(), 4U);
    EXPECT_EQ(attributes.count("duration"), 1U);
    EXPECT_TRUE(sut.hasValue("duration"));
    EXPECT_FALSE(sut.hasValue("album"));
    EXPECT_EQ(sut.getValue("album"), nullptr);
    ASSERT_NE(sut.getValue("duration"), nullptr);
    EXPECT_EQ(sut.getValue("duration")->compare(AttributeValueIntegerUnsigned(245)), 0);
    EXPECT_TRUE(sut.getAttribute("album").isNull());
}

TEST(GenericObject, AddsAndRemovesAttributes)
{
    XObjectGeneric sut = track();

    const bool added =
        sut.setAttribute(AttributeBase::Ptr(new Attribute<ObjectValue>(9, "album", ObjectValue(album()))));
    const bool refused = sut.setAttribute(Attribute<AttributeValueInteger>(9, "rating"));
    const bool removed = sut.removeValue("duration");
    const bool removedMissing = sut.removeValue("rating");

    EXPECT_TRUE(added);
    EXPECT_FALSE(refused);
    EXPECT_TRUE(removed);
    EXPECT_FALSE(removedMissing);
    EXPECT_TRUE(sut.hasValue("album"));
    EXPECT_FALSE(sut.hasValue("duration"));
    EXPECT_EQ(sut.size(), 4U);
}

TEST(GenericObject, RendersItsAttributesAsJSON)
{
    XObjectGeneric sut = track();
    sut.getAttributesRef().setValue("album", ObjectValue(album()));
    sut.getAttributesRef().setValue("genres", AttributeValueStringArray(std::vector<AttributeValueString>{
                                                  std::string("pop"), std::string("synth")}));

    EXPECT_EQ(toJson(sut.toJSON(0)), R"({"album":{"id":")" + ALBUM_ID +
                                         R"(","name":"Blue Hours","uri":"/audio/albums/)" + ALBUM_ID +
                                         R"("},"duration":245,"genres":["pop","synth"],"id":")" + TRACK_ID +
                                         R"(","name":"Night Drive","uri":")" + TRACK_URI + R"("})");
}

TEST(GenericObject, RendersTheNamedAttributesAsJSON)
{
    const XObjectGeneric sut = track();

    const std::string json = toJson(sut.toJSON(std::vector<std::string>{"name", "duration", "album"}));

    EXPECT_EQ(json, R"({"duration":245,"name":"Night Drive"})");
}

TEST(GenericObject, CopiesDeeply)
{
    XObjectGeneric sut = track();
    sut.getAttributesRef().setValue("album", ObjectValue(album()));

    XObjectGeneric copy(sut);
    XObjectGeneric assigned;
    assigned = sut;
    sut.getAttributesRef().getValue<AttributeValueIntegerUnsigned>("duration").set(1);
    sut.getAttributesRef().getValue<ObjectValue>("album").get().setName("Red Hours");

    EXPECT_EQ(copy.getAttributesRef().getValue<AttributeValueIntegerUnsigned>("duration").get(), 245U);
    EXPECT_EQ(copy.getAttributesRef().getValue<ObjectValue>("album").get().getName(), "Blue Hours");
    EXPECT_EQ(assigned.getAttributesRef().getValue<AttributeValueIntegerUnsigned>("duration").get(), 245U);
    EXPECT_EQ(assigned.getAttributesRef().getValue<ObjectValue>("album").get().getName(), "Blue Hours");
    EXPECT_EQ(assigned.id(), 9);
    EXPECT_EQ(assigned.getAttributesRef().parent(), 9);
}

TEST(GenericObject, ServesAsAResourceThatKnowsNoElements)
{
    GenericObject<ResourceBase> sut("tracks", Poco::UUID(TRACK_ID), Poco::URI(), 2);

    EXPECT_EQ(sut.getName(), "tracks");
    EXPECT_EQ(sut.getDescription(), "");
    EXPECT_FALSE(sut.hasElement(2));
    EXPECT_TRUE(sut.getElements().empty());
}
