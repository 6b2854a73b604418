#include "JSONDataCache/DBData/OrviDataConverter.h"

#include "Data/Attribute.h"
#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "TestSupport/LogCapture.h"
#include "TypedFleet.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

using Orvi::Data::AttributeBase;
using Orvi::Data::AttributeValueArray;
using Orvi::Data::AttributeValueBoolean;
using Orvi::Data::AttributeValueInteger;
using Orvi::Data::AttributeValueIntegerUnsigned;
using Orvi::Data::AttributeValueNumber;
using Orvi::Data::AttributeValueObject;
using Orvi::Data::AttributeValueString;
using Orvi::Data::AttributeValueURI;
using Orvi::Data::AttributeValueUUID;
using Orvi::Data::XObjectGeneric;
using Orvi::DBData::AttributeType;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValueList;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::AttrType_Boolean;
using Orvi::DBData::AttrType_Integer;
using Orvi::DBData::AttrType_IntegerUnsigned;
using Orvi::DBData::AttrType_Number;
using Orvi::DBData::AttrType_Object;
using Orvi::DBData::AttrType_String;
using Orvi::DBData::OrviDataConverter;
using Orvi::DBData::XObject;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::Fleet::ANN;
using ServiceDB::Test::Fleet::ANN_ID;
using ServiceDB::Test::Fleet::BO;
using ServiceDB::Test::Fleet::carUri;
using ServiceDB::Test::Fleet::makeCell;
using ServiceDB::Test::Fleet::makeObject;
using ServiceDB::Test::Fleet::personUri;
using ServiceDB::Test::Fleet::stringify;
using ServiceDB::Test::Fleet::TypedFleet;
using ServiceDB::Test::Fleet::VOLVO;
using ServiceDB::Test::Fleet::VOLVO_ID;
using Lines = std::vector<std::string>;
using ValueArrayPtr = AttributeValue::ValueArrayPtr;

const Orvi::Data::XObjectId PARENT = 17;
const std::string THING = "d0000000-0000-4000-8000-000000000001";
const std::string OTHER_THING = "d0000000-0000-4000-8000-000000000002";

std::unique_ptr<AttributeBase> convert(AttributeType type, const std::string& name, const Var& value,
                                       bool isArray = false)
{
    const AttributeValuePtr cell = makeCell(PARENT, name, type, isArray, value);
    return std::unique_ptr<AttributeBase>(OrviDataConverter::createAttribute(PARENT, *cell));
}

template <typename V>
const V* valueOf(const std::unique_ptr<AttributeBase>& attribute)
{
    return attribute ? dynamic_cast<const V*>(attribute->getValueBase()) : nullptr;
}

Var array(const std::vector<Var>& elements)
{
    return Var(ValueArrayPtr(new AttributeValue::ValueArray(elements)));
}

// The identity cells of an object at the given address.
AttributeValueList identity(const std::string& uuid, const std::string& uri, const std::string& name)
{
    return {makeCell(PARENT, "id", AttrType_String, false, Var(uuid), 1),
            makeCell(PARENT, "uri", AttrType_String, false, Var(uri), 2),
            makeCell(PARENT, "name", AttrType_String, false, Var(name), 3)};
}

XObject::Ptr thingWith(const AttributeValuePtr& cell)
{
    AttributeValueList cells = identity(THING, "/depot/things/" + THING, "thing");
    cells.push_back(cell);
    return makeObject(PARENT, THING, cells);
}

TEST(OrviDataConverter, ConvertsAStringNamedIdIntoAUuidValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_String, "id", Var(THING));

    ASSERT_NE(valueOf<AttributeValueUUID>(sut), nullptr);
    EXPECT_EQ(valueOf<AttributeValueUUID>(sut)->get(), Poco::UUID(THING));
    EXPECT_EQ(sut->getName(), "id");
    EXPECT_EQ(sut->parent(), PARENT);
}

TEST(OrviDataConverter, ConvertsAStringNamedUriIntoAUriValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_String, "uri", Var("/depot/things/" + THING));

    ASSERT_NE(valueOf<AttributeValueURI>(sut), nullptr);
    EXPECT_EQ(valueOf<AttributeValueURI>(sut)->get().toString(), "/depot/things/" + THING);
}

TEST(OrviDataConverter, ConvertsAnyOtherStringIntoAStringValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_String, "brand", Var("Volvo"));

    ASSERT_NE(valueOf<AttributeValueString>(sut), nullptr);
    EXPECT_EQ(valueOf<AttributeValueString>(sut)->get(), "Volvo");
    EXPECT_EQ(sut->getName(), "brand");
}

TEST(OrviDataConverter, ConvertsAnIntegerIntoAnIntegerValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_Integer, "seats", Var(Poco::Int64(-5)));

    ASSERT_NE(valueOf<AttributeValueInteger>(sut), nullptr);
    EXPECT_EQ(valueOf<AttributeValueInteger>(sut)->get(), -5);
}

TEST(OrviDataConverter, ConvertsANumberIntoANumberValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_Number, "mileage", Var(1234.5));

    ASSERT_NE(valueOf<AttributeValueNumber>(sut), nullptr);
    EXPECT_EQ(valueOf<AttributeValueNumber>(sut)->get(), 1234.5);
}

TEST(OrviDataConverter, ConvertsABooleanIntoABooleanValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_Boolean, "electric", Var(true));

    ASSERT_NE(valueOf<AttributeValueBoolean>(sut), nullptr);
    EXPECT_TRUE(valueOf<AttributeValueBoolean>(sut)->get());
}

TEST(OrviDataConverter, ConvertsAnUnsignedIntegerIntoAnUnsignedValue)
{
    const std::unique_ptr<AttributeBase> sut =
        convert(AttrType_IntegerUnsigned, "odometer", Var(Poco::UInt64(18446744073709551615ULL)));

    ASSERT_NE(valueOf<AttributeValueIntegerUnsigned>(sut), nullptr);
    EXPECT_EQ(valueOf<AttributeValueIntegerUnsigned>(sut)->get(), 18446744073709551615ULL);
}

TEST(OrviDataConverter, ConvertsAReferenceIntoAnObjectValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_Object, "driver", Var(personUri(ANN)));

    const auto* value = valueOf<AttributeValueObject<XObjectGeneric>>(sut);
    ASSERT_NE(value, nullptr);
    EXPECT_TRUE(sut->isXObjReference());
    EXPECT_EQ(value->get().getId(), Poco::UUID(ANN));
    EXPECT_EQ(value->get().getUri().toString(), personUri(ANN));
}

TEST(OrviDataConverter, GivesNullForAnUnknownAttributeType)
{
    const std::unique_ptr<AttributeBase> sut = convert(static_cast<AttributeType>(7), "odd", Var("x"));

    EXPECT_EQ(sut, nullptr);
}

TEST(OrviDataConverter, GivesNullForACellWithoutValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_String, "brand", Var());

    EXPECT_EQ(sut, nullptr);
}

TEST(OrviDataConverter, ConvertsAnArrayElementByElementInOrder)
{
    const std::unique_ptr<AttributeBase> sut =
        convert(AttrType_Integer, "loads", array({Var(Poco::Int64(3)), Var(Poco::Int64(1))}), true);

    const auto* value = valueOf<AttributeValueArray<AttributeValueInteger>>(sut);
    ASSERT_NE(value, nullptr);
    EXPECT_TRUE(sut->isArray());
    EXPECT_EQ(value->simplify(), std::vector<Poco::Int64>({3, 1}));
    EXPECT_EQ(sut->parent(), PARENT);
}

TEST(OrviDataConverter, ConvertsAnEmptyArrayIntoAnAttributeWithAnEmptyVector)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_String, "tags", array({}), true);

    const auto* value = valueOf<AttributeValueArray<AttributeValueString>>(sut);
    ASSERT_NE(value, nullptr);
    EXPECT_TRUE(value->isEmpty());
}

TEST(OrviDataConverter, GivesNoAttributeForAMissingArrayValue)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_String, "tags", Var(), true);

    EXPECT_EQ(sut, nullptr);
}

TEST(OrviDataConverter, GivesNoAttributeForAnArrayValueWithoutVector)
{
    const std::unique_ptr<AttributeBase> sut = convert(AttrType_String, "tags", Var(ValueArrayPtr()), true);

    EXPECT_EQ(sut, nullptr);
}

TEST(OrviDataConverter, ConvertsAnArrayOfReferencesIntoAnArrayOfObjects)
{
    const std::unique_ptr<AttributeBase> sut = convert(
        AttrType_Object, "passengers", array({Var(personUri(BO)), Var(Poco::URI(personUri(ANN)))}), true);

    const auto* value = valueOf<AttributeValueArray<AttributeValueObject<XObjectGeneric>>>(sut);
    ASSERT_NE(value, nullptr);
    EXPECT_TRUE(sut->isXObjReference());
    ASSERT_EQ(value->size(), 2U);
    EXPECT_EQ(value->getElement(0).get().getId(), Poco::UUID(BO));
    EXPECT_EQ(value->getElement(1).get().getId(), Poco::UUID(ANN));
}

TEST(OrviDataConverter, TypedStepGivesNullForACellWithoutValue)
{
    const AttributeValuePtr cell = makeCell(PARENT, "seats", AttrType_Integer, false, Var());

    const std::unique_ptr<AttributeBase> sut(
        OrviDataConverter::createAttribute<AttributeValueInteger>(PARENT, *cell));

    EXPECT_EQ(sut, nullptr);
}

TEST(OrviDataConverter, TypedStepMakesTheAttributeOfTheGivenClass)
{
    const AttributeValuePtr cell = makeCell(PARENT, "serial", AttrType_String, false, Var("SN-7"));

    const std::unique_ptr<AttributeBase> sut(
        OrviDataConverter::createAttribute<AttributeValueString>(PARENT, *cell));

    ASSERT_NE(valueOf<AttributeValueString>(sut), nullptr);
    EXPECT_EQ(valueOf<AttributeValueString>(sut)->get(), "SN-7");
}

TEST(OrviDataConverter, RaisesInvalidArgumentForAnEmptyReference)
{
    try
    {
        OrviDataConverter::extractValue<XObjectGeneric>(Var());
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidArgumentException& e)
    {
        EXPECT_EQ(e.message(), "Unable to create XObject from empty object reference");
    }
}

TEST(OrviDataConverter, RaisesNullPointerForAnEmptyObjectPointer)
{
    try
    {
        OrviDataConverter::extractValue<XObjectGeneric>(Var(XObject::Ptr()));
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Invalid value for object reference");
    }
}

TEST(OrviDataConverter, ExtractsAReferenceTextAsABareObjectWithoutId)
{
    const XObjectGeneric sut = OrviDataConverter::extractValue<XObjectGeneric>(Var(personUri(ANN)));

    EXPECT_EQ(sut.id(), -1);
    EXPECT_EQ(sut.size(), 3U);
    EXPECT_EQ(sut.getId(), Poco::UUID(ANN));
    EXPECT_EQ(sut.getUri().toString(), personUri(ANN));
    EXPECT_EQ(sut.getName(), "");
}

TEST(OrviDataConverter, TakesTheNameOfAJsonReference)
{
    Poco::JSON::Object::Ptr json = new Poco::JSON::Object(0);
    json->set("uri", personUri(BO));
    json->set("name", "Bo");

    const XObjectGeneric sut = OrviDataConverter::extractValue<XObjectGeneric>(Var(json));

    EXPECT_EQ(sut.id(), -1);
    EXPECT_EQ(sut.getName(), "Bo");
    EXPECT_EQ(sut.getId(), Poco::UUID(BO));
}

TEST(OrviDataConverter, TakesTheTextOfANameOfAnotherType)
{
    Poco::JSON::Object::Ptr json = new Poco::JSON::Object(0);
    json->set("uri", personUri(BO));
    json->set("name", 7);

    const XObjectGeneric sut = OrviDataConverter::extractValue<XObjectGeneric>(Var(json));

    EXPECT_EQ(sut.getName(), "7");
}

TEST(OrviDataConverter, RaisesTheReferenceConversionErrorForAnEmptyJsonObject)
{
    LogCapture capture;

    try
    {
        OrviDataConverter::extractValue<XObjectGeneric>(Var(Poco::JSON::Object::Ptr()));
        FAIL() << "no exception";
    }
    catch (const Poco::RuntimeException& e)
    {
        EXPECT_EQ(e.message(),
                  "Attribute::setValue trying to set object reference type without 'uri' attribute");
    }
    EXPECT_EQ(capture.lines(), Lines({"Error: Missing 'uri' attribute in object reference!"}));
}

TEST(OrviDataConverter, RaisesTheReferenceConversionErrorForABareUuidText)
{
    LogCapture capture;

    try
    {
        OrviDataConverter::extractValue<XObjectGeneric>(Var(ANN));
        FAIL() << "no exception";
    }
    catch (const Poco::RuntimeException& e)
    {
        EXPECT_EQ(e.message(), "Attribute::setValue trying to set object reference type with invalid value");
    }
    EXPECT_EQ(capture.lines(), Lines({"Error: Invalid URI value for object reference"}));
}

TEST(OrviDataConverter, ConvertsASelectedObjectInFull)
{
    TypedFleet fleet;
    const XObject::Ptr selected = fleet.cache.selectXObject(VOLVO_ID, 1);

    const XObjectGeneric sut = OrviDataConverter::extractValue<XObjectGeneric>(Var(selected));

    EXPECT_EQ(sut.id(), VOLVO_ID);
    EXPECT_EQ(sut.size(), 10U);
    EXPECT_EQ(
        stringify(sut.toJSON(1)),
        R"({"brand":"Volvo","driver":{"age":41,"id":"b0000000-0000-4000-8000-000000000001","name":"Ann",)"
        R"("uri":"/fleet/people/b0000000-0000-4000-8000-000000000001"},)"
        R"("id":"c0000000-0000-4000-8000-000000000002","loads":[1,2],"mileage":1234.5,"name":"Volvo",)"
        R"("passengers":[{"age":41,"id":"b0000000-0000-4000-8000-000000000001","name":"Ann",)"
        R"("uri":"/fleet/people/b0000000-0000-4000-8000-000000000001"},)"
        R"({"age":35,"id":"b0000000-0000-4000-8000-000000000002","name":"Bo",)"
        R"("uri":"/fleet/people/b0000000-0000-4000-8000-000000000002"}],)"
        R"("seats":5,"tags":["red","fast"],"uri":"/fleet/cars/c0000000-0000-4000-8000-000000000002"})");
}

TEST(OrviDataConverter, GivesTheReferencedObjectsTheirDatabaseIds)
{
    TypedFleet fleet;
    const XObject::Ptr selected = fleet.cache.selectXObject(VOLVO_ID, 1);

    const XObjectGeneric sut = OrviDataConverter::createXObjectGeneric(*selected);

    const auto* driver = dynamic_cast<const AttributeValueObject<XObjectGeneric>*>(sut.getValue("driver"));
    ASSERT_NE(driver, nullptr);
    EXPECT_EQ(driver->get().id(), ANN_ID);
}

TEST(OrviDataConverter, ReadsTheIdentityFromTheIdUriAndNameCells)
{
    const XObject::Ptr object =
        makeObject(PARENT, OTHER_THING, identity(THING, "/depot/things/" + THING, "the thing"));

    const XObjectGeneric sut = OrviDataConverter::createXObjectGeneric(*object);

    EXPECT_EQ(sut.id(), PARENT);
    EXPECT_EQ(sut.getId(), Poco::UUID(THING));
    EXPECT_EQ(sut.getUri().toString(), "/depot/things/" + THING);
    EXPECT_EQ(sut.getName(), "the thing");
    EXPECT_EQ(sut.size(), 3U);
}

TEST(OrviDataConverter, RaisesTheUuidParserErrorForAnIdThatIsNoUuid)
{
    const XObject::Ptr object =
        makeObject(PARENT, THING, identity("not-a-uuid", "/depot/things/" + THING, "x"));

    try
    {
        OrviDataConverter::createXObjectGeneric(*object);
        FAIL() << "no exception";
    }
    catch (const Poco::SyntaxException& e)
    {
        EXPECT_EQ(e.displayText(), "Syntax error: not-a-uuid");
    }
}

TEST(OrviDataConverter, RaisesDataExceptionWhenTheUriDoesNotNameTheUuid)
{
    const XObject::Ptr object =
        makeObject(PARENT, THING, identity(THING, "/depot/things/" + OTHER_THING, "x"));

    try
    {
        OrviDataConverter::createXObjectGeneric(*object);
        FAIL() << "no exception";
    }
    catch (const Poco::DataException& e)
    {
        EXPECT_EQ(e.message(), "Invalid XObject - URI and UUID mismatch");
    }
}

TEST(OrviDataConverter, RaisesDataExceptionForAnObjectWithoutUri)
{
    const XObject::Ptr object =
        makeObject(PARENT, THING, {makeCell(PARENT, "name", AttrType_String, false, Var("no address"))});

    try
    {
        OrviDataConverter::createXObjectGeneric(*object);
        FAIL() << "no exception";
    }
    catch (const Poco::DataException& e)
    {
        EXPECT_EQ(e.message(), "Invalid XObject - URI and UUID mismatch");
    }
}

TEST(OrviDataConverter, LogsAndRaisesDataExceptionForACellThatDoesNotConvert)
{
    const XObject::Ptr object = thingWith(makeCell(PARENT, "seats", AttrType_Integer, false, Var("many")));
    LogCapture capture;

    try
    {
        OrviDataConverter::createXObjectGeneric(*object);
        FAIL() << "no exception";
    }
    catch (const Poco::DataException& e)
    {
        EXPECT_EQ(e.message(), "Failed to convert XObject attribute seats");
    }
    EXPECT_EQ(
        capture.lines(),
        Lines({"Error: Failed to convert XObject attribute seats: Syntax error: Not a valid integer: many"}));
}

TEST(OrviDataConverter, RaisesDataExceptionWithoutLogForACellThatGivesNoAttribute)
{
    const XObject::Ptr object =
        thingWith(makeCell(PARENT, "tags", AttrType_String, true, Var(ValueArrayPtr())));
    LogCapture capture;

    try
    {
        OrviDataConverter::createXObjectGeneric(*object);
        FAIL() << "no exception";
    }
    catch (const Poco::DataException& e)
    {
        EXPECT_EQ(e.message(), "Failed to convert XObject attribute tags");
    }
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(OrviDataConverter, SkipsNullEntriesAndCellsWithoutValue)
{
    AttributeValueList cells = identity(THING, "/depot/things/" + THING, "thing");
    cells.push_back(AttributeValuePtr());
    cells.push_back(makeCell(PARENT, "brand", AttrType_String, false, Var()));
    cells.push_back(makeCell(PARENT, "tags", AttrType_String, true, Var()));
    const XObject::Ptr object = makeObject(PARENT, THING, cells);

    const XObjectGeneric sut = OrviDataConverter::createXObjectGeneric(*object);

    EXPECT_EQ(sut.size(), 3U);
    EXPECT_FALSE(sut.hasValue("brand"));
    EXPECT_FALSE(sut.hasValue("tags"));
}

TEST(OrviDataConverter, KeepsAnEmptyArrayAsAnEmptyAttribute)
{
    const XObject::Ptr object = thingWith(makeCell(PARENT, "tags", AttrType_String, true, array({})));

    const XObjectGeneric sut = OrviDataConverter::createXObjectGeneric(*object);

    EXPECT_EQ(stringify(sut.toJSON(0)),
              R"({"id":"d0000000-0000-4000-8000-000000000001","name":"thing",)"
              R"("tags":[],"uri":"/depot/things/d0000000-0000-4000-8000-000000000001"})");
}

TEST(OrviDataConverter, LogsAndRaisesForAReferenceCellHoldingABareUuid)
{
    const XObject::Ptr object = thingWith(makeCell(PARENT, "owner", AttrType_Object, false, Var(ANN)));
    LogCapture capture;

    try
    {
        OrviDataConverter::createXObjectGeneric(*object);
        FAIL() << "no exception";
    }
    catch (const Poco::DataException& e)
    {
        EXPECT_EQ(e.message(), "Failed to convert XObject attribute owner");
    }
    EXPECT_EQ(capture.lines(),
              Lines({"Error: Invalid URI value for object reference",
                     "Error: Failed to convert XObject attribute owner: Runtime exception: "
                     "Attribute::setValue trying to set object reference type with invalid value"}));
}

TEST(OrviDataConverter, ConvertsAnIdCellOfAnyObjectIntoAUuid)
{
    const XObject::Ptr object = makeObject(PARENT, THING, identity(BO, carUri(BO), "renamed"));

    const XObjectGeneric sut = OrviDataConverter::createXObjectGeneric(*object);

    EXPECT_NE(dynamic_cast<const AttributeValueUUID*>(sut.getValue("id")), nullptr);
    EXPECT_EQ(sut.getId(), Poco::UUID(BO));
}

TEST(OrviDataConverterTest, CreatesAStringArrayOfTheTextsOfAServiceListLeavingOutEmptyEntries)
{
    const Orvi::DBData::Service::StringList texts{new std::string("comfort"), nullptr,
                                                  new std::string("body")};

    const Orvi::Data::AttributeValueStringArray sut =
        Orvi::DBData::OrviDataConverter::createStringArray(texts);

    ASSERT_EQ(sut.size(), 2U);
    EXPECT_EQ(sut.getValueArray()[0]->asGeneric().toString(), "comfort");
    EXPECT_EQ(sut.getValueArray()[1]->asGeneric().toString(), "body");
}

} // namespace
