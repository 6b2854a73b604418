#include "DataAccess/DBDataAccessPoint.h"

#include "Data/Attribute.h"
#include "Data/AttributeValue.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"
#include "JSONDataCache/DBData/Service.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"
#include "TypedFleet.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Data::Attribute;
using Orvi::Data::AttributeValueInteger;
using Orvi::Data::AttributeValueObject;
using Orvi::Data::AttributeValueString;
using Orvi::Data::ElementBase;
using Orvi::Data::ElementGeneric;
using Orvi::Data::XObjectGeneric;
using Orvi::DBData::Service;
using Orvi::Service::DBDataAccessPoint;
using Orvi::Service::ServiceDataAccessPoint;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::Fleet::addResource;
using ServiceDB::Test::Fleet::ANN;
using ServiceDB::Test::Fleet::ANN_ID;
using ServiceDB::Test::Fleet::BO;
using ServiceDB::Test::Fleet::BO_ID;
using ServiceDB::Test::Fleet::carUri;
using ServiceDB::Test::Fleet::describe;
using ServiceDB::Test::Fleet::EMPTY_CAR;
using ServiceDB::Test::Fleet::EMPTY_CAR_ID;
using ServiceDB::Test::Fleet::makeAttribute;
using ServiceDB::Test::Fleet::personUri;
using ServiceDB::Test::Fleet::TypedFleet;
using ServiceDB::Test::Fleet::VOLVO;
using ServiceDB::Test::Fleet::VOLVO_ID;
using UpdateResult = ServiceDataAccessPoint::UpdateResult;
using Lines = std::vector<std::string>;
using Names = std::vector<std::string>;
using Ids = std::vector<Orvi::Data::XObjectId>;
using ReferenceValue = AttributeValueObject<XObjectGeneric>;

const std::string VOLVO_VALUES = R"(brand="Volvo" driver=")" + ANN + R"(" id=")" + VOLVO +
                                 R"(" loads=[1,2] mileage=1234.5 name="Volvo" passengers=[")" + ANN +
                                 R"(",")" + BO + R"("] seats=5 tags=["red","fast"] uri=")" + carUri(VOLVO) +
                                 R"(")";
const std::string ANN_VALUES =
    R"(age=41 buddy=null id=")" + ANN + R"(" name="Ann" uri=")" + personUri(ANN) + R"(")";
const std::string EMPTY_CAR_VALUES =
    R"(brand=null driver=null id=")" + EMPTY_CAR +
    R"(" loads=null mileage=null name="" passengers=null seats=null tags=null uri=")" + carUri(EMPTY_CAR) +
    R"(")";
const std::string SPOT_LOW = "d0000000-0000-4000-8000-000000000001";
const std::string SPOT_HIGH = "d0000000-0000-4000-8000-000000000002";
const std::string UNKNOWN = "f0000000-0000-4000-8000-00000000000f";

class DBDataAccessPointTest : public testing::Test
{
protected:
    static Poco::JSON::Object::Ptr json(const std::string& text)
    {
        return ServiceDB::Test::parseObject(text);
    }

    // The values as the store holds them, references as bare UUIDs.
    std::string stored(Orvi::DBData::DbId id) const
    {
        const Orvi::DBData::XObject::Ptr object = fleet.cache.store().get(id);
        return object.isNull() ? std::string("missing") : describe(*object);
    }

    std::size_t countOf(const std::string& resource)
    {
        return fleet.element(resource)->getAllXObjectIds().size();
    }

    // A service of two resources whose names sort against their order of creation.
    Service::Ptr addDepot()
    {
        Service::Ptr depot(new Service);
        depot->setName("depot");
        addResource(*depot, "lots", "lot", 5, {makeAttribute("id"), makeAttribute("uri")});
        addResource(*depot, "bays", "bay", 6, {makeAttribute("id"), makeAttribute("uri")});
        fleet.services["depot"] = depot;
        return depot;
    }

    void addSpot(const std::string& uuid)
    {
        std::string newUUID = uuid;
        Orvi::DBData::DbId newDBID = -1;
        ASSERT_TRUE(fleet.cache.insertXObject("garage", "spots", newUUID, newDBID));
    }

    // The Volvo as a client builds it, without any attribute but its identity and name.
    static ElementGeneric volvo(Orvi::Data::XObjectId id)
    {
        return ElementGeneric("fleet", "cars", "Volvo", Poco::UUID(VOLVO), id);
    }

    static void setSeats(ElementGeneric& element, Poco::Int64 seats)
    {
        element.setAttribute(
            Attribute<AttributeValueInteger>(element.id(), "seats", AttributeValueInteger(seats)));
    }

    template <typename T>
    static Names namesOf(const std::vector<T>& views)
    {
        Names names;
        for (const T& view : views)
        {
            names.push_back(view->getName());
        }
        return names;
    }

    static Ids idsOf(const ServiceDataAccessPoint::ElementCollection& elements)
    {
        Ids ids;
        for (const ElementBase::Ptr& element : elements)
        {
            ids.push_back(element->id());
        }
        return ids;
    }

    TypedFleet fleet;
    DBDataAccessPoint sut{fleet.cache};
};

TEST_F(DBDataAccessPointTest, GivesAViewOfEveryServiceInNameOrder)
{
    addDepot();

    const std::vector<Orvi::Data::ServiceBase::Ptr> services = sut.getServices();

    EXPECT_EQ(namesOf(services), Names({"depot", "fleet", "garage"}));
}

TEST_F(DBDataAccessPointTest, KeepsTheViewsOfTheServicesOfTheFirstRequest)
{
    const std::vector<Orvi::Data::ServiceBase::Ptr> first = sut.getServices();
    addDepot();

    const std::vector<Orvi::Data::ServiceBase::Ptr> second = sut.getServices();

    ASSERT_EQ(second.size(), 2U);
    EXPECT_EQ(second[0].get(), first[0].get());
    EXPECT_EQ(second[1].get(), first[1].get());
    EXPECT_TRUE(sut.getService("depot").isNull());
}

TEST_F(DBDataAccessPointTest, FindsAServiceViewByName)
{
    const std::vector<Orvi::Data::ServiceBase::Ptr> services = sut.getServices();

    const Orvi::Data::ServiceBase::Ptr garage = sut.getService("garage");

    EXPECT_EQ(garage.get(), services[1].get());
    EXPECT_EQ(garage->getName(), "garage");
}

TEST_F(DBDataAccessPointTest, GivesAnEmptyPointerForAnUnknownService)
{
    const Orvi::Data::ServiceBase::Ptr service = sut.getService("depot");

    EXPECT_TRUE(service.isNull());
}

TEST_F(DBDataAccessPointTest, GivesAViewOfEveryResourceOfAServiceInNameOrder)
{
    addDepot();

    const std::vector<Orvi::Data::ResourceBase::Ptr> resources = sut.getResources("depot");

    EXPECT_EQ(namesOf(resources), Names({"bays", "lots"}));
}

TEST_F(DBDataAccessPointTest, KeepsTheViewsOfTheResourcesOfTheFirstRequest)
{
    Service::Ptr depot = addDepot();
    const std::vector<Orvi::Data::ResourceBase::Ptr> first = sut.getResources("depot");
    addResource(*depot, "cranes", "crane", 7, {makeAttribute("id"), makeAttribute("uri")});

    const std::vector<Orvi::Data::ResourceBase::Ptr> second = sut.getResources("depot");

    ASSERT_EQ(second.size(), 2U);
    EXPECT_EQ(second[0].get(), first[0].get());
    EXPECT_EQ(second[1].get(), first[1].get());
    EXPECT_EQ(sut.getResource("depot", "lots").get(), first[1].get());
    EXPECT_TRUE(sut.getResource("depot", "cranes").isNull());
}

TEST_F(DBDataAccessPointTest, GivesNoResourcesForAnUnknownService)
{
    const std::vector<Orvi::Data::ResourceBase::Ptr> resources = sut.getResources("depot");

    EXPECT_EQ(namesOf(resources), Names());
    EXPECT_TRUE(sut.getResource("depot", "lots").isNull());
}

TEST_F(DBDataAccessPointTest, GivesAnEmptyPointerForAnUnknownResource)
{
    const Orvi::Data::ResourceBase::Ptr resource = sut.getResource("garage", "cars");

    EXPECT_TRUE(resource.isNull());
    EXPECT_EQ(sut.getResource("garage", "spots")->getName(), "spots");
}

TEST_F(DBDataAccessPointTest, RaisesNullPointerForTheResourcesOfAServiceWithAResourceWithoutElement)
{
    std::string message;

    try
    {
        sut.getResources("fleet");
    }
    catch (const Poco::NullPointerException& e)
    {
        message = e.message();
    }

    EXPECT_EQ(message, "Invalid resource pointer");
}

TEST_F(DBDataAccessPointTest, GivesEveryObjectOfAResource)
{
    addSpot(SPOT_HIGH);
    addSpot(SPOT_LOW);

    const ServiceDataAccessPoint::ElementCollection elements = sut.getElements("garage", "spots");

    EXPECT_EQ(idsOf(elements), Ids({7, 6}));
}

TEST_F(DBDataAccessPointTest, GivesNoObjectsForAnUnknownResource)
{
    const ServiceDataAccessPoint::ElementCollection elements = sut.getElements("garage", "cars");

    EXPECT_EQ(idsOf(elements), Ids());
}

TEST_F(DBDataAccessPointTest, GivesAViewOfTheObjectOfADatabaseId)
{
    const ElementBase::Ptr element = sut.getElement(VOLVO_ID);

    ASSERT_FALSE(element.isNull());
    EXPECT_EQ(element->id(), VOLVO_ID);
    EXPECT_EQ(element->service(), "fleet");
    EXPECT_EQ(element->resource(), "cars");
    EXPECT_EQ(element->getName(), "Volvo");
    EXPECT_EQ(element->getUri().toString(), carUri(VOLVO));
}

TEST_F(DBDataAccessPointTest, GivesAnEmptyPointerForAnUnknownDatabaseId)
{
    LogCapture capture;

    const ElementBase::Ptr element = sut.getElement(99);

    EXPECT_TRUE(element.isNull());
    EXPECT_EQ(capture.lines(), Lines({"Warning: Can not find XObject with ID 99"}));
}

TEST_F(DBDataAccessPointTest, GivesAViewOfTheObjectOfServiceResourceAndUuid)
{
    const ElementBase::Ptr byText = sut.getElement("fleet", "people", ANN);
    const ElementBase::Ptr byUuid = sut.getElement("fleet", "people", Poco::UUID(ANN));
    const ElementBase::Ptr byUri = sut.getElement(Poco::URI(personUri(ANN)));

    for (const ElementBase::Ptr& element : {byText, byUuid, byUri})
    {
        ASSERT_FALSE(element.isNull());
        EXPECT_EQ(element->id(), ANN_ID);
        EXPECT_EQ(element->service(), "fleet");
        EXPECT_EQ(element->resource(), "people");
        EXPECT_EQ(element->getName(), "Ann");
    }
}

TEST_F(DBDataAccessPointTest, GivesAnEmptyPointerForAnObjectOfAnotherResource)
{
    LogCapture capture;

    const ElementBase::Ptr element = sut.getElement("fleet", "cars", ANN);

    EXPECT_TRUE(element.isNull());
    EXPECT_EQ(capture.lines(), Lines({"Warning: Can not find element fleet/cars/" + ANN,
                                      "Warning: Can not find XObject /fleet/cars/" + ANN}));
}

TEST_F(DBDataAccessPointTest, GivesAnEmptyPointerForTheUriOfAResource)
{
    LogCapture capture;

    const ElementBase::Ptr element = sut.getElement(Poco::URI("/fleet/cars"));

    EXPECT_TRUE(element.isNull());
    EXPECT_EQ(capture.lines(), Lines());
}

TEST_F(DBDataAccessPointTest, InsertsAnObjectWithTheValuesOfJson)
{
    const std::size_t before = countOf("people");

    const UpdateResult result = sut.insertElement("fleet", "people", json(R"({"age": 50, "name": "Di"})"));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(result.message(), "");
    EXPECT_EQ(countOf("people"), before + 1);
    ASSERT_FALSE(result.created.isNull());
    const ElementBase::Ptr element = sut.getElement(result.created->id());
    ASSERT_FALSE(element.isNull());
    EXPECT_EQ(element->getId(), result.created->getId());
    EXPECT_EQ(element->resource(), "people");
    EXPECT_EQ(element->getName(), "Di");
    EXPECT_EQ(element->getValue("age")->asGeneric().convert<Poco::Int64>(), 50);
}

TEST_F(DBDataAccessPointTest, InsertsAnObjectWithoutValuesForAnEmptyJsonObject)
{
    const std::size_t before = countOf("people");

    const UpdateResult result = sut.insertElement("fleet", "people", json("{}"));

    EXPECT_EQ(result.value(), UpdateResult::NO_UPDATE);
    ASSERT_FALSE(result.created.isNull());
    EXPECT_EQ(countOf("people"), before + 1);
    EXPECT_EQ(result.created->getName(), "");
    EXPECT_FALSE(result.created->hasValue("age"));
}

TEST_F(DBDataAccessPointTest, InsertsAnObjectAtTheUriOfAResource)
{
    const UpdateResult result = sut.insertElement(Poco::URI("/fleet/people"), json(R"({"name": "Di"})"));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    ASSERT_FALSE(result.created.isNull());
    EXPECT_EQ(result.created->getUri().toString(), personUri(result.created->getId().toString()));
    EXPECT_EQ(result.created->getName(), "Di");
}

TEST_F(DBDataAccessPointTest, RefusesAnInsertAtTheUriOfAnObject)
{
    const std::size_t before = countOf("people");

    const UpdateResult result = sut.insertElement(Poco::URI(personUri(ANN)), json(R"({"name": "Di"})"));

    EXPECT_EQ(result.value(), UpdateResult::INVALID_REQUEST);
    EXPECT_TRUE(result.created.isNull());
    EXPECT_EQ(countOf("people"), before);
}

TEST_F(DBDataAccessPointTest, RefusesAnInsertOfANullJsonObject)
{
    const std::size_t before = countOf("people");
    LogCapture capture;

    const UpdateResult result = sut.insertElement("fleet", "people", Poco::JSON::Object::Ptr());

    EXPECT_EQ(result.value(), UpdateResult::INVALID_OBJECT);
    EXPECT_EQ(result.message(), "");
    EXPECT_EQ(countOf("people"), before);
    EXPECT_EQ(capture.lines(), Lines({"Error: Invalid JSON Object: nullptr"}));
}

TEST_F(DBDataAccessPointTest, RemovesTheNewObjectAgainWhenJsonHasAnUnknownAttribute)
{
    const std::size_t before = countOf("people");
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const UpdateResult result = sut.insertElement("fleet", "people", json(R"({"age": 50, "colour": "red"})"));

    EXPECT_EQ(result.value(), UpdateResult::INVALID_OBJECT);
    EXPECT_TRUE(result.created.isNull());
    EXPECT_EQ(countOf("people"), before);
    EXPECT_EQ(capture.lines(), Lines({"Error: Failed to initialise element with unknown attribute colour"}));
}

TEST_F(DBDataAccessPointTest, RemovesTheNewObjectAgainWhenAValueIsRefused)
{
    const std::size_t before = countOf("people");
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const UpdateResult result = sut.insertElement("fleet", "people", json(R"({"age": "old"})"));

    EXPECT_EQ(result.value(), UpdateResult::INVALID_REQUEST);
    EXPECT_TRUE(result.created.isNull());
    EXPECT_EQ(countOf("people"), before);
    EXPECT_EQ(
        capture.lines(),
        Lines(
            {"Error: Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
             "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime exception: "
             "Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
             "Error: Failed to set invalid value for attribute age (1)",
             "Error: Invalid value for attribute age"}));
}

TEST_F(DBDataAccessPointTest, FailsToInsertIntoAnUnknownResource)
{
    LogCapture capture;

    const UpdateResult result = sut.insertElement("fleet", "boats", json(R"({"name": "Di"})"));

    EXPECT_EQ(result.value(), UpdateResult::PROCESSING_ERROR);
    EXPECT_TRUE(result.created.isNull());
    EXPECT_EQ(capture.lines(), Lines({"Error: Tried to insert XObject for unknown element type"}));
}

TEST_F(DBDataAccessPointTest, InsertsATypedElementUnderItsOwnUuidWithItsOtherAttributes)
{
    ElementGeneric element("fleet", "people", "Di", Poco::UUID(UNKNOWN));
    element.setAttribute(Attribute<AttributeValueInteger>(-1, "age", AttributeValueInteger(50)));
    const std::size_t before = countOf("people");

    const UpdateResult result = sut.insertElement(element);

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(countOf("people"), before + 1);
    ASSERT_FALSE(result.created.isNull());
    EXPECT_EQ(result.created->getId(), Poco::UUID(UNKNOWN));
    EXPECT_EQ(stored(result.created->id()), R"(age=50 buddy=null id=")" + std::string(UNKNOWN) +
                                                R"(" name="Di" uri=")" + personUri(UNKNOWN) + R"(")");
}

TEST_F(DBDataAccessPointTest, RefusesATypedElementWhoseUuidIsInUse)
{
    ElementGeneric element("fleet", "people", "Di", Poco::UUID(ANN));
    const std::size_t before = countOf("people");
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const UpdateResult result = sut.insertElement(element);

    EXPECT_EQ(result.value(), UpdateResult::PROCESSING_ERROR);
    EXPECT_TRUE(result.created.isNull());
    EXPECT_EQ(countOf("people"), before);
    EXPECT_EQ(capture.lines(), Lines({"Error: Failed to insert XObject with pre-defined UUID " +
                                      std::string(ANN) + " as it is already in use!"}));
}

TEST_F(DBDataAccessPointTest, InsertsATypedElementWithoutAttributes)
{
    ElementGeneric element;
    element.initialize("fleet", "people");
    const std::size_t before = countOf("people");

    const UpdateResult result = sut.insertElement(element);

    EXPECT_EQ(result.value(), UpdateResult::NO_UPDATE);
    ASSERT_FALSE(result.created.isNull());
    EXPECT_EQ(countOf("people"), before + 1);
    EXPECT_EQ(result.created->getName(), "");
}

TEST_F(DBDataAccessPointTest, RemovesTheNewObjectAgainWhenATypedElementHasAnUnknownAttribute)
{
    ElementGeneric element("fleet", "people", "Di", Poco::UUID(UNKNOWN));
    element.setAttribute(Attribute<AttributeValueString>(-1, "colour", AttributeValueString("red")));
    const std::size_t before = countOf("people");
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const UpdateResult result = sut.insertElement(element);

    EXPECT_EQ(result.value(), UpdateResult::INVALID_OBJECT);
    EXPECT_TRUE(result.created.isNull());
    EXPECT_EQ(countOf("people"), before);
    EXPECT_EQ(capture.lines(), Lines({"Error: Failed to update element with unknown attribute colour"}));
}

TEST_F(DBDataAccessPointTest, WritesNothingWhenEveryValueIsTheStoredOne)
{
    LogCapture capture;

    const UpdateResult result = sut.updateElement(ANN_ID, json(R"({"age": 41, "name": "Ann"})"));

    EXPECT_EQ(result.value(), UpdateResult::NO_UPDATE);
    EXPECT_EQ(stored(ANN_ID), ANN_VALUES);
    EXPECT_EQ(capture.lines(), Lines({"Trace: Skip update of attribute age. Value does not change.",
                                      "Trace: Skip update of attribute name. Value does not change."}));
}

TEST_F(DBDataAccessPointTest, WritesTheChangedValuesOfAnUpdateById)
{
    const UpdateResult result =
        sut.updateElement(ANN_ID, json(R"({"age": 42, "buddy": ")" + personUri(BO) + R"("})"));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(result.message(), "");
    EXPECT_TRUE(result.created.isNull());
    EXPECT_EQ(stored(ANN_ID), R"(age=42 buddy=")" + BO + R"(" id=")" + ANN + R"(" name="Ann" uri=")" +
                                  personUri(ANN) + R"(")");
}

TEST_F(DBDataAccessPointTest, FindsNothingToUpdateForAnUnknownId)
{
    const UpdateResult result = sut.updateElement(99, json(R"({"age": 42})"));

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
}

TEST_F(DBDataAccessPointTest, RefusesAnUpdateWithANullJsonObject)
{
    LogCapture capture;

    const UpdateResult result = sut.updateElement(ANN_ID, Poco::JSON::Object::Ptr());

    EXPECT_EQ(result.value(), UpdateResult::INVALID_OBJECT);
    EXPECT_EQ(capture.lines(), Lines({"Error: DBDataAccessPoint::updateElement - JSON object is null"}));
}

TEST_F(DBDataAccessPointTest, RefusesAnUpdateWithAnUnknownAttribute)
{
    LogCapture capture;

    const UpdateResult result = sut.updateElement(ANN_ID, json(R"({"age": 42, "colour": "red"})"));

    EXPECT_EQ(result.value(), UpdateResult::INVALID_OBJECT);
    EXPECT_EQ(stored(ANN_ID), ANN_VALUES);
    EXPECT_EQ(capture.lines(), Lines({"Error: Failed to initialise element with unknown attribute colour"}));
}

TEST_F(DBDataAccessPointTest, KeepsTheStoredValueWhenTheNewOneIsOfTheWrongType)
{
    LogCapture capture;

    const UpdateResult result = sut.updateElement(VOLVO_ID, json(R"({"seats": "many"})"));

    EXPECT_EQ(result.value(), UpdateResult::INVALID_REQUEST);
    EXPECT_EQ(stored(VOLVO_ID), VOLVO_VALUES);
    EXPECT_EQ(
        capture.lines(),
        Lines(
            {"Error: Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
             "Error: Attribute::checkAttributeValueContent: Failed to convert value - Runtime exception: "
             "Attribute::setValue trying to set 64bit integer type failed converting: parsing failed",
             "Error: Failed to set invalid value for attribute seats (1)",
             "Error: Invalid value for attribute seats"}));
}

TEST_F(DBDataAccessPointTest, LogsAnExceptionOfTheConversionAsInvalidType)
{
    Poco::JSON::Object::Ptr values = new Poco::JSON::Object;
    values->set("loads", Poco::JSON::Array::Ptr());
    LogCapture capture;

    const UpdateResult result = sut.updateElement(VOLVO_ID, values);

    EXPECT_EQ(result.value(), UpdateResult::INVALID_REQUEST);
    EXPECT_EQ(stored(VOLVO_ID), VOLVO_VALUES);
    EXPECT_EQ(capture.lines(), Lines({"Error: Invalid type of attribute loads - Caught exception: Null "
                                      "pointer: Invalid array value"}));
}

TEST_F(DBDataAccessPointTest, KeepsTheFirstValueWrittenWhenTheCacheRefusesTheSecond)
{
    LogCapture capture(Poco::Message::PRIO_INFORMATION);

    const UpdateResult result = sut.updateElement(VOLVO_ID, json(R"({"brand": "Saab", "seats": null})"));

    EXPECT_EQ(result.value(), UpdateResult::PROCESSING_ERROR);
    EXPECT_EQ(sut.getElement(VOLVO_ID)->getValue("brand")->asGeneric().convert<std::string>(), "Saab");
    EXPECT_EQ(sut.getElement(VOLVO_ID)->getValue("seats")->asGeneric().convert<Poco::Int64>(), 5);
    EXPECT_EQ(capture.lines(),
              Lines({"Error: Removal of attribute value (seats,1) - XObj: " + VOLVO + ") is not allowed",
                     "Warning: Attribute update failed (seats,1 - XObj: " + VOLVO + ")",
                     "Error: Failed to initialise attribute seats"}));
}

TEST_F(DBDataAccessPointTest, WritesAChangedArray)
{
    const UpdateResult result = sut.updateElement(VOLVO_ID, json(R"({"loads": [3, 4, 5]})"));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(stored(VOLVO_ID), R"(brand="Volvo" driver=")" + ANN + R"(" id=")" + VOLVO +
                                    R"(" loads=[3,4,5] mileage=1234.5 name="Volvo" passengers=[")" + ANN +
                                    R"(",")" + BO + R"("] seats=5 tags=["red","fast"] uri=")" +
                                    carUri(VOLVO) + R"(")");
}

TEST_F(DBDataAccessPointTest, WritesNothingForAnArrayOfTheStoredElements)
{
    LogCapture capture;

    const UpdateResult result = sut.updateElement(VOLVO_ID, json(R"({"loads": [1, 2]})"));

    EXPECT_EQ(result.value(), UpdateResult::NO_UPDATE);
    EXPECT_EQ(capture.lines(), Lines({"Trace: Skip update of attribute loads. Value does not change."}));
}

TEST_F(DBDataAccessPointTest, LeavesTheStoredArrayAloneWhenALaterAttributeIsRefused)
{
    const UpdateResult result = sut.updateElement(VOLVO_ID, json(R"({"loads": [7, 8], "wheels": 4})"));

    EXPECT_EQ(result.value(), UpdateResult::INVALID_OBJECT);
    EXPECT_EQ(stored(VOLVO_ID), VOLVO_VALUES);
}

TEST_F(DBDataAccessPointTest, UpdatesTheObjectOfServiceResourceAndUuidText)
{
    const UpdateResult result = sut.updateElement("fleet", "people", ANN, json(R"({"age": 42})"));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(sut.getElement(ANN_ID)->getValue("age")->asGeneric().convert<Poco::Int64>(), 42);
}

TEST_F(DBDataAccessPointTest, FindsNothingToUpdateInAnotherResource)
{
    const UpdateResult result = sut.updateElement("fleet", "cars", ANN, json(R"({"age": 42})"));

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
    EXPECT_EQ(stored(ANN_ID), ANN_VALUES);
}

TEST_F(DBDataAccessPointTest, UpdatesTheObjectAtAUri)
{
    const UpdateResult result = sut.updateElement(Poco::URI(personUri(ANN)), json(R"({"age": 43})"));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(sut.getElement(ANN_ID)->getValue("age")->asGeneric().convert<Poco::Int64>(), 43);
}

TEST_F(DBDataAccessPointTest, UpdatesTheObjectOfAUuid)
{
    const UpdateResult result = sut.updateElement("fleet", "people", Poco::UUID(ANN), json(R"({"age": 44})"));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(sut.getElement(ANN_ID)->getValue("age")->asGeneric().convert<Poco::Int64>(), 44);
}

TEST_F(DBDataAccessPointTest, UpdatesATypedElementByItsDatabaseId)
{
    ElementGeneric element = volvo(VOLVO_ID);
    setSeats(element, 7);
    LogCapture capture(Poco::Message::PRIO_TRACE);

    const UpdateResult result = sut.updateElement(element);

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(sut.getElement(VOLVO_ID)->getValue("seats")->asGeneric().convert<Poco::Int64>(), 7);
    EXPECT_EQ(capture.lines(), Lines({"Trace: Skip update of attribute name. Value does not change.",
                                      "Debug: Attribute update successful (seats,1 - XObj: " + VOLVO + ")"}));
}

TEST_F(DBDataAccessPointTest, UpdatesATypedElementWithoutDatabaseIdByItsUuid)
{
    ElementGeneric element = volvo(-1);
    setSeats(element, 2);

    const UpdateResult result = sut.updateElement(element);

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(sut.getElement(VOLVO_ID)->getValue("seats")->asGeneric().convert<Poco::Int64>(), 2);
}

TEST_F(DBDataAccessPointTest, FindsNothingToUpdateForATypedElementOfAnUnknownUuid)
{
    ElementGeneric element("fleet", "cars", "Volvo", Poco::UUID(UNKNOWN));
    setSeats(element, 2);

    const UpdateResult result = sut.updateElement(element);

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
}

TEST_F(DBDataAccessPointTest, WritesNothingBackForAnUnchangedView)
{
    const ElementBase::Ptr view = sut.getElement(VOLVO_ID);

    const UpdateResult result = sut.updateElement(*view);

    EXPECT_EQ(result.value(), UpdateResult::NO_UPDATE);
    EXPECT_EQ(stored(VOLVO_ID), VOLVO_VALUES);
}

TEST_F(DBDataAccessPointTest, WritesAReferenceOfATypedElement)
{
    ElementGeneric element = volvo(VOLVO_ID);
    element.setAttribute(Attribute<ReferenceValue>(
        VOLVO_ID, "driver",
        ReferenceValue(XObjectGeneric("Bo", Poco::UUID(BO), Poco::URI(personUri(BO)), BO_ID))));

    const UpdateResult result = sut.updateElement(element);

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(sut.getElement(VOLVO_ID)
                  ->getValue("driver")
                  ->toJSON(0)
                  .extract<Poco::JSON::Object::Ptr>()
                  ->getValue<std::string>("name"),
              "Bo");
}

TEST_F(DBDataAccessPointTest, DeletesTheObjectOfATypedElement)
{
    const std::size_t before = countOf("cars");

    const UpdateResult result = sut.deleteElement(*sut.getElement(EMPTY_CAR_ID));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(countOf("cars"), before - 1);
    EXPECT_EQ(stored(EMPTY_CAR_ID), "missing");
}

TEST_F(DBDataAccessPointTest, WarnsThatATypedElementThatIsNotStoredCannotBeDeleted)
{
    const ElementGeneric element("fleet", "cars", "Saab", Poco::UUID(UNKNOWN));
    LogCapture capture;

    const UpdateResult result = sut.deleteElement(element);

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
    EXPECT_EQ(capture.lines(), Lines({"Warning: Failed to delete XObject " + UNKNOWN + ". XObject not found",
                                      "Warning: Failed to delete element " + carUri(UNKNOWN)}));
}

TEST_F(DBDataAccessPointTest, DeletesTheObjectOfADatabaseId)
{
    const UpdateResult result = sut.deleteElement(EMPTY_CAR_ID);

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(stored(EMPTY_CAR_ID), "missing");
}

TEST_F(DBDataAccessPointTest, FindsNothingToDeleteForAnUnknownDatabaseId)
{
    const UpdateResult result = sut.deleteElement(99);

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
}

TEST_F(DBDataAccessPointTest, DeletesTheObjectAtAUri)
{
    const UpdateResult result = sut.deleteElement(Poco::URI(carUri(EMPTY_CAR)));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(stored(EMPTY_CAR_ID), "missing");
}

TEST_F(DBDataAccessPointTest, DeletesTheObjectOfServiceResourceAndUuid)
{
    const UpdateResult byText = sut.deleteElement("fleet", "cars", EMPTY_CAR);
    const UpdateResult byUuid = sut.deleteElement("fleet", "people", Poco::UUID(ANN));

    EXPECT_EQ(byText.value(), UpdateResult::OK);
    EXPECT_EQ(byUuid.value(), UpdateResult::OK);
    EXPECT_EQ(stored(EMPTY_CAR_ID), "missing");
    EXPECT_EQ(stored(ANN_ID), "missing");
}

TEST_F(DBDataAccessPointTest, FindsNothingToDeleteInAnotherResource)
{
    const UpdateResult result = sut.deleteElement("fleet", "people", EMPTY_CAR);

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
    EXPECT_EQ(stored(EMPTY_CAR_ID), EMPTY_CAR_VALUES);
}

} // namespace
