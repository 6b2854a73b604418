#include "DataAccess/ElementAccess.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/GenericObject.h"
#include "TestSupport/LogCapture.h"
#include "TypedFleet.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::Data::AttributeValueArray;
using Orvi::Data::AttributeValueInteger;
using Orvi::Data::AttributeValueObject;
using Orvi::Data::AttributeValueString;
using Orvi::Data::XObjectGeneric;
using Orvi::DBData::AttributeValueList;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::AttrType_Integer;
using Orvi::DBData::AttrType_Object;
using Orvi::DBData::AttrType_String;
using Orvi::DBData::XObject;
using Orvi::Service::DataAccess::ElementAccess;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::Fleet::ANN;
using ServiceDB::Test::Fleet::ANN_ID;
using ServiceDB::Test::Fleet::BO;
using ServiceDB::Test::Fleet::carUri;
using ServiceDB::Test::Fleet::CY;
using ServiceDB::Test::Fleet::CY_ID;
using ServiceDB::Test::Fleet::makeCell;
using ServiceDB::Test::Fleet::makeObject;
using ServiceDB::Test::Fleet::personUri;
using ServiceDB::Test::Fleet::stringify;
using ServiceDB::Test::Fleet::TypedFleet;
using ServiceDB::Test::Fleet::VOLVO;
using ServiceDB::Test::Fleet::VOLVO_ID;
using Lines = std::vector<std::string>;
using Names = std::vector<std::string>;
using ReferenceValue = AttributeValueObject<XObjectGeneric>;
using ReferenceArray = AttributeValueArray<ReferenceValue>;

const std::string UNRESOLVED_LINE =
    "Error: Failed to resolve XObject references. JSONDataCache::selectXObjectByID was unsuccessful.";

class ElementAccessTest : public testing::Test
{
protected:
    // The Volvo as a view hands it out: its references read to the given depth.
    XObject::Ptr volvo(int depth) { return fleet.cache.selectXObject(VOLVO_ID, depth); }

    ElementAccess viewOf(const XObject::Ptr& object)
    {
        return ElementAccess(object, "fleet", "cars", &fleet.cache);
    }

    // A car that is not stored, with the given cells besides its identity.
    XObject::Ptr looseCar(AttributeValueList cells)
    {
        cells.push_back(makeCell(VOLVO_ID, "id", AttrType_String, false, Var(VOLVO), 20));
        cells.push_back(makeCell(VOLVO_ID, "uri", AttrType_String, false, Var(carUri(VOLVO)), 21));
        return makeObject(VOLVO_ID, VOLVO, cells);
    }

    static std::size_t sizeOfReference(const ElementAccess& sut, const std::string& name)
    {
        const auto* value = dynamic_cast<const ReferenceValue*>(sut.getValue(name));
        return value == nullptr ? 0 : value->size();
    }

    static std::vector<std::size_t> sizesOfReferences(const ElementAccess& sut, const std::string& name)
    {
        std::vector<std::size_t> sizes;
        const auto* value = dynamic_cast<const ReferenceArray*>(sut.getValue(name));
        if (value != nullptr)
        {
            for (const ReferenceValue& element : *value)
            {
                sizes.push_back(element.size());
            }
        }
        return sizes;
    }

    TypedFleet fleet;
};

TEST_F(ElementAccessTest, HoldsOnlyIdAndUriRightAfterConstructionWithNames)
{
    const ElementAccess sut = viewOf(volvo(1));

    EXPECT_EQ(sut.size(), 2U);
}

TEST_F(ElementAccessTest, TakesIdentityAndNamesFromTheConstructionWithNames)
{
    const XObject::Ptr object = volvo(1);

    const ElementAccess sut(object, "fleet", "cars", &fleet.cache);

    EXPECT_EQ(sut.id(), VOLVO_ID);
    EXPECT_EQ(sut.service(), "fleet");
    EXPECT_EQ(sut.resource(), "cars");
    EXPECT_EQ(sut.getId(), Poco::UUID(VOLVO));
    EXPECT_EQ(sut.getUri().toString(), carUri(VOLVO));
    EXPECT_EQ(sut.getBase().get(), object.get());
}

TEST_F(ElementAccessTest, TakesServiceAndResourceFromTheGivenUri)
{
    const Poco::URI uri("/elsewhere/vehicles/" + VOLVO);

    const ElementAccess sut(volvo(1), uri, &fleet.cache);

    EXPECT_EQ(sut.service(), "elsewhere");
    EXPECT_EQ(sut.resource(), "vehicles");
    EXPECT_EQ(sut.getUri().toString(), "/elsewhere/vehicles/" + VOLVO);
    EXPECT_EQ(sut.getId(), Poco::UUID(VOLVO));
    EXPECT_EQ(sut.size(), 2U);
}

TEST_F(ElementAccessTest, TakesServiceAndResourceFromTheStoredUri)
{
    const ElementAccess sut(volvo(1), &fleet.cache);

    EXPECT_EQ(sut.service(), "fleet");
    EXPECT_EQ(sut.resource(), "cars");
    EXPECT_EQ(sut.getUri().toString(), carUri(VOLVO));
    EXPECT_EQ(sut.id(), VOLVO_ID);
}

TEST_F(ElementAccessTest, RaisesNullPointerForAnEmptyObjectInEveryForm)
{
    Lines messages;

    for (int form = 0; form < 3; ++form)
    {
        try
        {
            if (form == 0)
            {
                ElementAccess(XObject::Ptr(), "fleet", "cars", &fleet.cache);
            }
            else if (form == 1)
            {
                ElementAccess(XObject::Ptr(), Poco::URI(carUri(VOLVO)), &fleet.cache);
            }
            else
            {
                ElementAccess(XObject::Ptr(), &fleet.cache);
            }
        }
        catch (const Poco::NullPointerException& e)
        {
            messages.push_back(e.message());
        }
    }

    EXPECT_EQ(messages, Lines(3, "Invalid XObject pointer"));
}

TEST_F(ElementAccessTest, RaisesNullPointerForAMissingCache)
{
    try
    {
        ElementAccess(volvo(1), nullptr);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Invalid JSONDataCache pointer");
    }
}

TEST_F(ElementAccessTest, RaisesNullPointerForAnObjectWithoutUri)
{
    const XObject::Ptr object =
        makeObject(VOLVO_ID, VOLVO, {makeCell(VOLVO_ID, "name", AttrType_String, false, Var("Volvo"))});

    try
    {
        ElementAccess(object, &fleet.cache);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Missing 'uri' attribute in XObject pointer");
    }
}

TEST_F(ElementAccessTest, RaisesInvalidAccessForAnEmptyStoredUri)
{
    const XObject::Ptr object =
        makeObject(VOLVO_ID, VOLVO, {makeCell(VOLVO_ID, "uri", AttrType_String, false, Var())});

    try
    {
        ElementAccess(object, &fleet.cache);
        FAIL() << "no exception";
    }
    catch (const Poco::InvalidAccessException& e)
    {
        EXPECT_EQ(e.message(), "Can not extract empty value.");
    }
}

TEST_F(ElementAccessTest, RaisesBadCastForAStoredUriThatIsNoText)
{
    const XObject::Ptr object =
        makeObject(VOLVO_ID, VOLVO, {makeCell(VOLVO_ID, "uri", AttrType_String, false, Var(42))});

    try
    {
        ElementAccess(object, &fleet.cache);
        FAIL() << "no exception";
    }
    catch (const Poco::BadCastException& e)
    {
        EXPECT_EQ(e.message(), "Can not convert i to NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE.");
    }
}

TEST_F(ElementAccessTest, ConvertsOneAttributeWhenItIsAskedFor)
{
    const ElementAccess sut = viewOf(volvo(1));

    const auto* brand = dynamic_cast<const AttributeValueString*>(sut.getValue("brand"));

    ASSERT_NE(brand, nullptr);
    EXPECT_EQ(brand->get(), "Volvo");
    EXPECT_EQ(sut.size(), 3U);
}

TEST_F(ElementAccessTest, ConvertsEveryAttributeForTheWholeObject)
{
    const ElementAccess sut = viewOf(volvo(1));

    const Orvi::Data::AttributeMap attributes = sut.getAttributes();

    Names names;
    for (const auto& entry : attributes)
    {
        names.push_back(entry.first);
    }
    EXPECT_EQ(names, Names({"brand", "driver", "id", "loads", "mileage", "name", "passengers", "seats",
                            "tags", "uri"}));
    EXPECT_EQ(sut.size(), 10U);
}

TEST_F(ElementAccessTest, LeavesAttributesWithoutValueOut)
{
    const ElementAccess sut(fleet.cache.selectXObject(ServiceDB::Test::Fleet::EMPTY_CAR_ID, 1), &fleet.cache);

    const Orvi::Data::AttributeMap attributes = sut.getAttributes();

    EXPECT_EQ(attributes.size(), 3U);
    EXPECT_EQ(sut.getValue("brand"), nullptr);
    EXPECT_EQ(sut.size(), 3U);
}

TEST_F(ElementAccessTest, GivesNullAndNoValueForANameTheElementDoesNotDefine)
{
    const ElementAccess sut = viewOf(volvo(1));

    const Orvi::Data::AttributeValueBase* value = sut.getValue("colour");
    const bool has = sut.hasValue("colour");

    EXPECT_EQ(value, nullptr);
    EXPECT_FALSE(has);
    EXPECT_EQ(sut.size(), 2U);
}

TEST_F(ElementAccessTest, HasAValueThatIsStoredButNotYetConverted)
{
    const ElementAccess sut = viewOf(volvo(1));

    const bool has = sut.hasValue("seats");

    EXPECT_TRUE(has);
    EXPECT_EQ(dynamic_cast<const AttributeValueInteger&>(*sut.getValue("seats")).get(), 5);
}

TEST_F(ElementAccessTest, GivesTheStoredName)
{
    const ElementAccess sut = viewOf(volvo(1));

    EXPECT_EQ(sut.getName(), "Volvo");
}

TEST_F(ElementAccessTest, GivesAnEmptyNameForAnObjectWithoutName)
{
    const ElementAccess sut(looseCar({}), &fleet.cache);

    EXPECT_EQ(sut.getName(), "");
}

TEST_F(ElementAccessTest, GivesAnEmptyNameForANameThatIsNoText)
{
    const ElementAccess sut(
        looseCar({makeCell(VOLVO_ID, "name", AttrType_Integer, false, Var(Poco::Int64(7)))}), &fleet.cache);

    EXPECT_EQ(sut.getName(), "");
    EXPECT_NE(sut.getValue("name"), nullptr);
}

TEST_F(ElementAccessTest, DoesNotResolveReferencesForGetValue)
{
    const ElementAccess sut = viewOf(volvo(0));

    const std::size_t size = sizeOfReference(sut, "driver");

    EXPECT_EQ(size, 3U);
}

TEST_F(ElementAccessTest, ResolvesAReferenceWithThreeAttributesAtToJSON)
{
    const ElementAccess sut = viewOf(volvo(0));

    const std::string json = stringify(sut.toJSON(Names{"driver"}));

    EXPECT_EQ(json, R"({"driver":{"id":"b0000000-0000-4000-8000-000000000001","name":"Ann",)"
                    R"("uri":"/fleet/people/b0000000-0000-4000-8000-000000000001"}})");
    EXPECT_EQ(sizeOfReference(sut, "driver"), 4U);
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

TEST_F(ElementAccessTest, LeavesAReferenceWithFourAttributesAlone)
{
    const ElementAccess sut = viewOf(volvo(1));
    fleet.write(ANN, "age", Var(42));

    const std::string json = stringify(sut.toJSON(1));

    EXPECT_NE(json.find(R"("driver":{"age":41,)"), std::string::npos) << json;
}

TEST_F(ElementAccessTest, ReadsAReferenceThatStaysBareAgainAtEachCall)
{
    fleet.write(VOLVO, "driver", Var(personUri(CY)));
    const ElementAccess sut = viewOf(volvo(0));
    LogCapture capture;

    sut.toJSON(1);
    sut.toJSON(1);

    EXPECT_EQ(sizeOfReference(sut, "driver"), 3U);
    EXPECT_EQ(capture.lines(), Lines());
    EXPECT_EQ(dynamic_cast<const ReferenceValue&>(*sut.getValue("driver")).get().id(), CY_ID);
}

TEST_F(ElementAccessTest, ResolvesAnArrayOfReferencesElementByElement)
{
    const XObject::Ptr bareAnn = fleet.cache.selectXObject(ANN, -1);
    const ElementAccess sut(
        looseCar(
            {makeCell(VOLVO_ID, "passengers", AttrType_Object, true,
                      Var(Orvi::DBData::AttributeValue::ValueArrayPtr(
                          new Orvi::DBData::AttributeValue::ValueArray{Var(bareAnn), Var(personUri(BO))})))}),
        &fleet.cache);
    LogCapture capture;

    const std::string json = stringify(sut.toJSON(1));

    EXPECT_EQ(sizesOfReferences(sut, "passengers"), std::vector<std::size_t>({4U, 3U}));
    EXPECT_EQ(json, R"({"id":"c0000000-0000-4000-8000-000000000002",)"
                    R"("passengers":[{"age":41,"id":"b0000000-0000-4000-8000-000000000001","name":"Ann",)"
                    R"("uri":"/fleet/people/b0000000-0000-4000-8000-000000000001"},)"
                    R"({"id":"b0000000-0000-4000-8000-000000000002","name":"",)"
                    R"("uri":"/fleet/people/b0000000-0000-4000-8000-000000000002"}],)"
                    R"("uri":"/fleet/cars/c0000000-0000-4000-8000-000000000002"})");
    EXPECT_EQ(capture.lines(), Lines({"Warning: Can not find XObject with ID -1", UNRESOLVED_LINE}));
}

TEST_F(ElementAccessTest, LogsAndSendsOutBareAReferenceThatCameFromAUri)
{
    const ElementAccess sut(
        looseCar({makeCell(VOLVO_ID, "driver", AttrType_Object, false, Var(Poco::URI(personUri(ANN))))}),
        &fleet.cache);
    LogCapture capture;

    const std::string json = stringify(sut.toJSON(1));

    EXPECT_EQ(json, R"({"driver":{"id":"b0000000-0000-4000-8000-000000000001","name":"",)"
                    R"("uri":"/fleet/people/b0000000-0000-4000-8000-000000000001"},)"
                    R"("id":"c0000000-0000-4000-8000-000000000002",)"
                    R"("uri":"/fleet/cars/c0000000-0000-4000-8000-000000000002"})");
    EXPECT_EQ(capture.lines(), Lines({"Warning: Can not find XObject with ID -1", UNRESOLVED_LINE}));
    EXPECT_EQ(dynamic_cast<const ReferenceValue&>(*sut.getValue("driver")).get().id(), -1);
}

TEST_F(ElementAccessTest, ResolvesNothingOutsideTheNamesGiven)
{
    const ElementAccess sut = viewOf(volvo(0));

    const std::string json = stringify(sut.toJSON(Names{"brand", "driver"}));

    EXPECT_EQ(json, R"({"brand":"Volvo","driver":{"id":"b0000000-0000-4000-8000-000000000001","name":"Ann",)"
                    R"("uri":"/fleet/people/b0000000-0000-4000-8000-000000000001"}})");
    EXPECT_EQ(sizeOfReference(sut, "driver"), 4U);
    EXPECT_EQ(sizesOfReferences(sut, "passengers"), std::vector<std::size_t>({3U, 3U}));
    EXPECT_EQ(sut.size(), 10U);
}

TEST_F(ElementAccessTest, KeepsValuesAsTheyWereWhenFirstConverted)
{
    const ElementAccess sut = viewOf(fleet.cache.store().get(VOLVO_ID));
    ASSERT_EQ(dynamic_cast<const AttributeValueString&>(*sut.getValue("brand")).get(), "Volvo");
    fleet.write(VOLVO, "brand", Var("Saab"));

    const std::string brand = dynamic_cast<const AttributeValueString&>(*sut.getValue("brand")).get();

    EXPECT_EQ(brand, "Volvo");
}

TEST_F(ElementAccessTest, CopiesDoNotShareResolvedReferences)
{
    const ElementAccess original = viewOf(volvo(0));
    original.getValue("driver");
    const ElementAccess sut(original);

    sut.toJSON(1);

    EXPECT_EQ(sizeOfReference(sut, "driver"), 4U);
    EXPECT_EQ(sizeOfReference(original, "driver"), 3U);
}

TEST_F(ElementAccessTest, MovesTheObjectAndItsConvertedAttributes)
{
    ElementAccess original = viewOf(volvo(1));
    original.getValue("brand");

    const ElementAccess sut(std::move(original));

    EXPECT_EQ(sut.size(), 3U);
    EXPECT_EQ(sut.getBase()->getDBID(), VOLVO_ID);
    EXPECT_EQ(sut.getName(), "Volvo");
}

TEST_F(ElementAccessTest, RaisesNullPointerWhenLoadingWithoutObject)
{
    ElementAccess moved = viewOf(volvo(1));
    const ElementAccess keeper(std::move(moved));
    const ElementAccess& sut = moved;

    try
    {
        sut.toJSON(0);
        FAIL() << "no exception";
    }
    catch (const Poco::NullPointerException& e)
    {
        EXPECT_EQ(e.message(), "Invalid XObject pointer");
    }
    EXPECT_EQ(keeper.size(), 2U);
}

} // namespace
