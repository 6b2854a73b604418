#include "DataAccess/ResourceAccess.h"

#include "DataAccess/ElementAccess.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"
#include "TestSupport/LogCapture.h"
#include "TypedFleet.h"

#include <Poco/Exception.h>
#include <Poco/SharedPtr.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::Data::ElementBase;
using Orvi::DBData::Resource;
using Orvi::DBData::XObject;
using Orvi::Service::DataAccess::ElementAccess;
using Orvi::Service::DataAccess::ResourceAccess;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::Fleet::ANN_ID;
using ServiceDB::Test::Fleet::carUri;
using ServiceDB::Test::Fleet::EMPTY_CAR;
using ServiceDB::Test::Fleet::EMPTY_CAR_ID;
using ServiceDB::Test::Fleet::TypedFleet;
using ServiceDB::Test::Fleet::VOLVO;
using ServiceDB::Test::Fleet::VOLVO_ID;
using Lines = std::vector<std::string>;

const std::string CARS_UUID = "a0000000-0000-4000-8000-000000000001";
const Orvi::DBData::DbId CARS_ID = 31;

class ResourceAccessTest : public testing::Test
{
protected:
    ResourceAccessTest()
    {
        cars->setDBID(CARS_ID);
        cars->setId(Orvi::DBData::UUID(CARS_UUID));
        cars->setDescription("Cars of the fleet");
        cars->setSpec("{\"cars\": {}}");
    }

    // Registers an object with the cars' element that the store does not hold.
    void addLostCar(Orvi::DBData::DbId id, const std::string& uuid)
    {
        Orvi::DBData::Element::Ptr element = cars->getElement();
        XObject lost(element);
        lost.setDBID(id);
        lost.setId(Orvi::DBData::UUID(uuid));
        ASSERT_TRUE(element->addXObject(lost));
    }

    TypedFleet fleet;
    Resource::Ptr cars = fleet.services["fleet"]->getResource("cars");
};

TEST_F(ResourceAccessTest, StoresNameIdUriAndDescriptionOfTheRow)
{
    const ResourceAccess sut(cars, "fleet", fleet.cache);

    EXPECT_EQ(sut.id(), CARS_ID);
    EXPECT_EQ(sut.size(), 4U);
    EXPECT_EQ(sut.getName(), "cars");
    EXPECT_EQ(sut.getId(), Poco::UUID(CARS_UUID));
    EXPECT_EQ(sut.getDescription(), "Cars of the fleet");
}

TEST_F(ResourceAccessTest, JoinsServiceNameAndUuidWithoutSeparatorInTheUri)
{
    const ResourceAccess sut(cars, "fleet", fleet.cache);

    EXPECT_EQ(sut.getUri().toString(), "/fleeta0000000-0000-4000-8000-000000000001");
}

TEST_F(ResourceAccessTest, GivesTheSpecificationOfTheRow)
{
    const ResourceAccess sut(cars, "fleet", fleet.cache);

    EXPECT_EQ(sut.getSpecification(), "{\"cars\": {}}");
    EXPECT_EQ(sut.getBase().get(), cars.get());
}

TEST_F(ResourceAccessTest, RaisesNullPointerForAnEmptyResource)
{
    try
    {
        ResourceAccess(Resource::Ptr(), "fleet", fleet.cache);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Invalid resource pointer");
    }
}

TEST_F(ResourceAccessTest, RaisesNullPointerForAResourceWithoutElement)
{
    try
    {
        ResourceAccess(fleet.services["fleet"]->getResource("noelement"), "fleet", fleet.cache);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Invalid resource pointer");
    }
}

TEST_F(ResourceAccessTest, TellsWhichObjectsBelongToIt)
{
    const ResourceAccess sut(cars, "fleet", fleet.cache);

    EXPECT_TRUE(sut.hasElement(VOLVO_ID));
    EXPECT_FALSE(sut.hasElement(ANN_ID));
    EXPECT_FALSE(sut.hasElement(99));
}

TEST_F(ResourceAccessTest, GivesAViewOfOneOfItsObjects)
{
    const ResourceAccess sut(cars, "fleet", fleet.cache);

    const Poco::SharedPtr<ElementBase> element = sut.getElement(VOLVO_ID);

    const auto* view = dynamic_cast<const ElementAccess*>(element.get());
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->getUri().toString(), carUri(VOLVO));
    EXPECT_EQ(view->service(), "fleet");
    EXPECT_EQ(view->resource(), "cars");
    EXPECT_EQ(view->getName(), "Volvo");
}

TEST_F(ResourceAccessTest, GivesNoViewForAnObjectOfAnotherResourceWithoutAskingTheCache)
{
    const ResourceAccess sut(cars, "fleet", fleet.cache);
    LogCapture capture;

    const Poco::SharedPtr<ElementBase> element = sut.getElement(ANN_ID);

    EXPECT_TRUE(element.isNull());
    EXPECT_FALSE(fleet.cache.selectXObject(ANN_ID, 1).isNull());
    EXPECT_EQ(capture.lines(), Lines());
}

TEST_F(ResourceAccessTest, GivesNoViewForAnObjectTheStoreDoesNotHold)
{
    addLostCar(99, "c0000000-0000-4000-8000-000000000099");
    const ResourceAccess sut(cars, "fleet", fleet.cache);
    LogCapture capture;

    const Poco::SharedPtr<ElementBase> element = sut.getElement(99);

    EXPECT_TRUE(element.isNull());
    EXPECT_EQ(capture.lines(), Lines({"Warning: Can not find XObject with ID 99"}));
}

TEST_F(ResourceAccessTest, GivesViewsOfAllObjectsInTheOrderOfTheirUuids)
{
    const ResourceAccess sut(cars, "fleet", fleet.cache);

    const std::vector<Poco::SharedPtr<ElementBase>> elements = sut.getElements();

    std::vector<Orvi::Data::XObjectId> ids;
    for (const Poco::SharedPtr<ElementBase>& element : elements)
    {
        ASSERT_NE(dynamic_cast<const ElementAccess*>(element.get()), nullptr);
        ids.push_back(element->id());
    }
    EXPECT_EQ(ids, std::vector<Orvi::Data::XObjectId>({EMPTY_CAR_ID, VOLVO_ID}));
    EXPECT_EQ(elements.front()->getId(), Poco::UUID(EMPTY_CAR));
}

TEST_F(ResourceAccessTest, RaisesNotFoundWhenAnObjectOfTheListIsNotInTheStore)
{
    addLostCar(99, "c0000000-0000-4000-8000-000000000099");
    const ResourceAccess sut(cars, "fleet", fleet.cache);

    try
    {
        sut.getElements();
        FAIL() << "no exception";
    }
    catch (const Poco::NotFoundException& e)
    {
        EXPECT_EQ(e.message(), "XObject with ID 99 not available for resource cars");
    }
}

TEST_F(ResourceAccessTest, CanBeCopiedAndMoved)
{
    const ResourceAccess original(cars, "fleet", fleet.cache);
    ResourceAccess copy(original);

    const ResourceAccess sut(std::move(copy));

    EXPECT_EQ(sut.getUri().toString(), "/fleeta0000000-0000-4000-8000-000000000001");
    EXPECT_FALSE(sut.getElement(VOLVO_ID).isNull());
    EXPECT_EQ(original.getName(), "cars");
}

} // namespace
