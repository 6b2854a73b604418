#include "JSONDataCache/StoredObjectRows.h"

#include "FleetServiceMap.h"
#include "TestSupport/JsonText.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::DbId;
using Orvi::DBData::XObject;
using Orvi::JSONDataCache::StoredObjectRows;
using Poco::Dynamic::Var;
using ServiceDB::Test::Fleet::InspectableCache;

namespace
{

const std::string CAR = "c0000000-0000-4000-8000-000000000001";
const std::string ANN = "b0000000-0000-4000-8000-000000000001";
const std::string BO = "b0000000-0000-4000-8000-000000000002";

std::string personUri(const std::string& uuid)
{
    return "/fleet/people/" + uuid;
}

std::string text(const Var& value)
{
    if (value.isEmpty())
    {
        return "empty";
    }
    Poco::JSON::Array::Ptr array(new Poco::JSON::Array);
    array->add(value);
    return ServiceDB::Test::toJson(Var(array));
}

class StoredObjectRowsTest : public testing::Test
{
protected:
    StoredObjectRowsTest()
    {
        m_car = insert("cars", CAR);
        insert("people", ANN);
        insert("people", BO);
        write(CAR, "brand", Var("Volvo"));
        write(CAR, "seats", Var(5));
        write(ANN, "name", Var("Ann"));
        write(CAR, "driver", Var(Poco::URI(personUri(ANN))));
        write(CAR, "passengers",
              Var(AttributeValue::ValueArrayPtr(
                  new AttributeValue::ValueArray{Var(personUri(ANN)), Var(personUri(BO))})));
    }

    DbId insert(const std::string& resource, const std::string& uuid)
    {
        std::string newUUID = uuid;
        DbId id = -1;
        EXPECT_TRUE(m_cache.insertXObject("fleet", resource, newUUID, id));
        return id;
    }

    void write(const std::string& uuid, const std::string& attribute, const Var& value)
    {
        XObject::Ptr copy = m_cache.selectXObject(uuid, -1);
        AttributeValuePtr cell = copy->getValue(attribute);
        cell->setValue(value, false);
        ASSERT_TRUE(m_cache.updateCacheAttributeValueById(*cell, true));
    }

    // Bo is gone from the store, but the car's passengers still name him.
    void removeBoFromTheStoreAlone() { m_cache.deleteXObject(BO); }

    StoredObjectRows rowsOfTheCar()
    {
        m_rows = {m_car};
        return StoredObjectRows(m_cache.store(), m_rows,
                                [this](DbId id)
                                {
                                    m_rendered.push_back(id);
                                    return Var(std::string("rendered"));
                                });
    }

    Orvi::DBData::ServiceMap m_services = ServiceDB::Test::Fleet::makeFleet();
    InspectableCache m_cache{m_services};
    DbId m_car = -1;
    std::vector<DbId> m_rows;
    std::vector<DbId> m_rendered;
};

} // namespace

TEST_F(StoredObjectRowsTest, GivesAStoredScalarAsItIsStored)
{
    StoredObjectRows sut = rowsOfTheCar();

    EXPECT_EQ(text(sut.member(0, "brand")), R"(["Volvo"])");
    EXPECT_EQ(text(sut.member(0, "seats")), "[5]");
    EXPECT_EQ(text(sut.member(0, "mileage")), "empty");
    EXPECT_EQ(text(sut.member(0, "colour")), "empty");
}

TEST_F(StoredObjectRowsTest, GivesTheIdOfTheObjectAsItsUuidText)
{
    StoredObjectRows sut = rowsOfTheCar();

    EXPECT_EQ(text(sut.member(0, "id")), "[\"" + CAR + "\"]");
}

TEST_F(StoredObjectRowsTest, GivesAReferenceAsAnObjectWithTheIdOfItsTarget)
{
    StoredObjectRows sut = rowsOfTheCar();

    EXPECT_EQ(text(sut.member(0, "driver")), R"([{"id":")" + ANN + R"("}])");
    EXPECT_EQ(text(sut.member(0, "passengers")), R"([[{"id":")" + ANN + R"("},{"id":")" + BO + R"("}]])");
}

TEST_F(StoredObjectRowsTest, LeavesOutReferencesWhoseTargetIsGone)
{
    removeBoFromTheStoreAlone();
    write(CAR, "driver", Var(Poco::URI(personUri(BO))));
    StoredObjectRows sut = rowsOfTheCar();

    EXPECT_EQ(text(sut.member(0, "driver")), "empty");
    EXPECT_EQ(text(sut.member(0, "passengers")), R"([[{"id":")" + ANN + R"("}]])");
}

TEST_F(StoredObjectRowsTest, TestsEveryRenderedMemberUntilOneIsAccepted)
{
    StoredObjectRows sut = rowsOfTheCar();
    std::vector<std::string> tested;

    const bool accepted = sut.anyMember(0,
                                        [&tested](const Var& value)
                                        {
                                            tested.push_back(text(value));
                                            return value == Var(5);
                                        });

    EXPECT_TRUE(accepted);
    EXPECT_EQ(tested, (std::vector<std::string>{
                          R"(["Volvo"])", R"([{"id":")" + ANN + R"("}])", "[\"" + CAR + "\"]", R"([""])",
                          R"([[{"id":")" + ANN + R"("},{"id":")" + BO + R"("}]])", "[5]"}));
}

TEST_F(StoredObjectRowsTest, RendersOnlyTheObjectOfTheRowAskedFor)
{
    StoredObjectRows sut = rowsOfTheCar();

    const Var rendered = sut.render(0);

    EXPECT_EQ(rendered.convert<std::string>(), "rendered");
    EXPECT_EQ(m_rendered, std::vector<DbId>{m_car});
    EXPECT_TRUE(sut.isObject(0));
    EXPECT_EQ(sut.size(), 1U);
}

TEST_F(StoredObjectRowsTest, GivesTheLastCellOfANameAsTheRenderedObjectHoldsIt)
{
    XObject::Ptr car = m_cache.store().get(CAR);
    const AttributeValuePtr brand = car->getValue("brand");
    AttributeValuePtr later(new AttributeValue(m_car, brand->getAttribute(), 900));
    later->setValue(Var("Saab"), false);
    car->getAttributeValues().push_back(later);
    StoredObjectRows sut = rowsOfTheCar();

    EXPECT_EQ(text(sut.member(0, "brand")), R"(["Saab"])");
}

TEST_F(StoredObjectRowsTest, GivesTheUuidAsIdWhenTheLastIdCellIsEmpty)
{
    XObject::Ptr car = m_cache.store().get(CAR);
    const AttributeValuePtr id = car->getValue("id");
    AttributeValuePtr written(new AttributeValue(m_car, id->getAttribute(), 901));
    written->setValue(Var("other"), false);
    AttributeValuePtr empty(new AttributeValue(m_car, id->getAttribute(), 902));
    car->getAttributeValues().push_back(written);
    car->getAttributeValues().push_back(empty);
    StoredObjectRows sut = rowsOfTheCar();

    EXPECT_EQ(text(sut.member(0, "id")), "[\"" + CAR + "\"]");
    EXPECT_EQ(text(sut.member(0, "brand")), R"(["Volvo"])");
}
