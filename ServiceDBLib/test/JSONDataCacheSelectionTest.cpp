#include "JSONDataCache/JSONDataCache.h"

#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/XObject.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Command::RequestBase;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::DbId;
using Orvi::DBData::Element;
using Orvi::DBData::ServiceMap;
using Orvi::DBData::XObject;
using Orvi::JSONDataCache::findWildCard;
using Orvi::JSONDataCache::JSONDataCache;
using Orvi::JSONDataCache::prepareRegEx;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::Fleet::describe;
using ServiceDB::Test::Fleet::InspectableCache;
using ServiceDB::Test::Fleet::makeFleet;
using ServiceDB::Test::Fleet::makeRequest;
using Lines = std::vector<std::string>;
using Ids = std::vector<long>;
using ValueArrayPtr = AttributeValue::ValueArrayPtr;

// UUIDs sort in another order than the ids that the objects receive.
const std::string CAR_1 = "c0000000-0000-4000-8000-000000000003";
const std::string CAR_2 = "c0000000-0000-4000-8000-000000000002";
const std::string CAR_3 = "c0000000-0000-4000-8000-000000000001";
const std::string PERSON_1 = "b0000000-0000-4000-8000-000000000001";
const std::string PERSON_2 = "b0000000-0000-4000-8000-000000000002";
const std::string UNKNOWN = "e0000000-0000-4000-8000-000000000009";

std::string uriOf(const std::string& resource, const std::string& uuid)
{
    return "/fleet/" + resource + "/" + uuid;
}

class JSONDataCacheSelectionTest : public testing::Test
{
protected:
    DbId insert(const std::string& resource, const std::string& uuid)
    {
        std::string newUUID = uuid;
        DbId newDBID = -1;
        EXPECT_TRUE(sut.insertXObject("fleet", resource, newUUID, newDBID)) << resource << " " << uuid;
        return newDBID;
    }

    void write(const std::string& uuid, const std::string& attribute, const Var& value)
    {
        XObject::Ptr copy = sut.selectXObject(uuid, -1);
        AttributeValuePtr cell = copy->getValue(attribute);
        cell->setValue(value, false);
        ASSERT_TRUE(sut.updateCacheAttributeValueById(*cell, true)) << attribute;
    }

    void writeArray(const std::string& uuid, const std::string& attribute, const std::vector<Var>& elements)
    {
        write(uuid, attribute, Var(ValueArrayPtr(new AttributeValue::ValueArray(elements))));
    }

    std::string storedValue(const std::string& uuid, const std::string& attribute)
    {
        return describe(sut.store().get(uuid)->getValue(attribute)->getValue());
    }

    // Three cars (ids 1 to 3) and two people (ids 4 and 5); the first car is driven by the first person
    // and carries both.
    void addFleet()
    {
        insert("cars", CAR_1);
        insert("cars", CAR_2);
        insert("cars", CAR_3);
        insert("people", PERSON_1);
        insert("people", PERSON_2);
        write(CAR_1, "brand", Var("Volvo"));
        write(CAR_1, "seats", Var(5));
        write(CAR_2, "brand", Var("Volvo XC"));
        write(CAR_2, "seats", Var(7));
        write(CAR_3, "brand", Var("Saab"));
        write(CAR_3, "seats", Var(5));
        write(PERSON_1, "age", Var(41));
        write(PERSON_1, "name", Var("Ann"));
        write(PERSON_2, "name", Var("Bo"));
        write(CAR_1, "driver", Var(Poco::URI(uriOf("people", PERSON_1))));
        writeArray(CAR_1, "passengers", {Var(uriOf("people", PERSON_1)), Var(uriOf("people", PERSON_2))});
    }

    std::vector<std::string> select(const std::string& address)
    {
        std::vector<XObject::Ptr> selected;
        EXPECT_TRUE(sut.selectXObjectsByRequest(makeRequest(address), selected)) << address;
        std::vector<std::string> uuids;
        for (const XObject::Ptr& object : selected)
        {
            uuids.push_back(object->getUUID());
        }
        return uuids;
    }

    ServiceMap services = makeFleet();
    InspectableCache sut{services};
};

TEST_F(JSONDataCacheSelectionTest, TellsWhetherAnObjectOfAnIdExists)
{
    insert("cars", CAR_1);
    LogCapture capture;

    const bool known = sut.existsObjectWithId(1);
    const bool unknown = sut.existsObjectWithId(2);

    EXPECT_TRUE(known);
    EXPECT_FALSE(unknown);
    EXPECT_EQ(capture.lines(), Lines({"Trace: XObject ID 1 found in XObject Cache",
                                      "Debug: XObject ID 2 NOT found in XObject Cache"}));
}

TEST_F(JSONDataCacheSelectionTest, SelectsACopyThatDoesNotReachTheStore)
{
    addFleet();

    XObject::Ptr sutObject = sut.selectXObject(DbId(3), 0);
    sutObject->getValue("brand")->setValue(Var("Trabant"), false);

    EXPECT_EQ(storedValue(CAR_3, "brand"), "\"Saab\"");
    EXPECT_NE(sutObject.get(), sut.store().get(CAR_3).get());
}

TEST_F(JSONDataCacheSelectionTest, SelectsAnObjectByIdWithItsValues)
{
    addFleet();

    const XObject::Ptr sutObject = sut.selectXObject(DbId(3), 0);

    ASSERT_FALSE(sutObject.isNull());
    EXPECT_EQ(sutObject->getDBID(), 3);
    EXPECT_EQ(describe(*sutObject),
              "brand=\"Saab\" driver=null id=\"" + CAR_3 +
                  "\" loads=null mileage=null name=\"\" passengers=null seats=5 tags=null "
                  "uri=\"" +
                  uriOf("cars", CAR_3) + "\"");
}

TEST_F(JSONDataCacheSelectionTest, GivesNullForAnUnknownIdOrUUID)
{
    addFleet();
    LogCapture capture;

    const XObject::Ptr byId = sut.selectXObject(DbId(99), 0);
    const XObject::Ptr byUUID = sut.selectXObject(UNKNOWN, 0);

    EXPECT_TRUE(byId.isNull());
    EXPECT_TRUE(byUUID.isNull());
    EXPECT_EQ(capture.lines(), Lines({"Warning: Can not find XObject with ID 99",
                                      "Warning: Can not find XObject with UUID " + UNKNOWN}));
}

TEST_F(JSONDataCacheSelectionTest, ResolvesAReferenceAtDepthZeroToItsDefaultAttributes)
{
    addFleet();

    const XObject::Ptr sutObject = sut.selectXObject(CAR_1, 0);

    const Var& driver = sutObject->getValue("driver")->getValue();
    ASSERT_EQ(driver.type(), typeid(XObject::Ptr));
    const XObject::Ptr& person = driver.extract<XObject::Ptr>();
    EXPECT_EQ(describe(*person), "age=null buddy=null id=\"" + PERSON_1 + "\" name=\"Ann\" uri=\"" +
                                     uriOf("people", PERSON_1) + "\"");
    EXPECT_EQ(describe(sutObject->getValue("passengers")->getValue()),
              "[<\"" + uriOf("people", PERSON_1) + "\">,<\"" + uriOf("people", PERSON_2) + "\">]");
}

TEST_F(JSONDataCacheSelectionTest, ResolvesAReferenceAtDepthOneWithAllItsValues)
{
    addFleet();

    const XObject::Ptr sutObject = sut.selectXObject(CAR_1, 1);

    const XObject::Ptr& person = sutObject->getValue("driver")->getValue().extract<XObject::Ptr>();
    EXPECT_EQ(describe(person->getValue("age")->getValue()), "41");
}

TEST_F(JSONDataCacheSelectionTest, KeepsOnlyTheDefaultAttributesBelowDepthZero)
{
    addFleet();

    const XObject::Ptr sutObject = sut.selectXObject(CAR_1, -1);

    EXPECT_EQ(describe(*sutObject),
              "brand=null driver=null id=\"" + CAR_1 +
                  "\" loads=null mileage=null name=\"\" passengers=null seats=null tags=null "
                  "uri=\"" +
                  uriOf("cars", CAR_1) + "\"");
}

TEST_F(JSONDataCacheSelectionTest, EndsCircularReferencesAtTheRequestedDepth)
{
    addFleet();
    write(PERSON_1, "buddy", Var(uriOf("people", PERSON_2)));
    write(PERSON_2, "buddy", Var(uriOf("people", PERSON_1)));

    const XObject::Ptr sutObject = sut.selectXObject(PERSON_1, 2);

    const XObject::Ptr& second = sutObject->getValue("buddy")->getValue().extract<XObject::Ptr>();
    const XObject::Ptr& third = second->getValue("buddy")->getValue().extract<XObject::Ptr>();
    const XObject::Ptr& fourth = third->getValue("buddy")->getValue().extract<XObject::Ptr>();
    EXPECT_EQ(third->getUUID(), PERSON_1);
    EXPECT_EQ(describe(*fourth), "age=null buddy=null id=\"" + PERSON_2 + "\" name=\"Bo\" uri=\"" +
                                     uriOf("people", PERSON_2) + "\"");
}

TEST_F(JSONDataCacheSelectionTest, RepairsADanglingReferenceInTheAnswerAndInTheStore)
{
    addFleet();
    sut.deleteXObject(PERSON_1);
    LogCapture capture;

    const XObject::Ptr sutObject = sut.selectXObject(CAR_1, 0);

    EXPECT_EQ(describe(sutObject->getValue("driver")->getValue()), "null");
    EXPECT_EQ(storedValue(CAR_1, "driver"), "null");
    EXPECT_EQ(capture.lines(),
              Lines({"Warning: Can not find XObject with UUID " + PERSON_1,
                     "Error: Failed to retrieve references for " + CAR_1 + " attribute driver",
                     "Debug: Attribute update successful (driver,4 - XObj: " + CAR_1 + ")",
                     "Warning: Can not find XObject with UUID " + PERSON_1,
                     "Debug: Array attribute update successful (passengers,4 (1) - XObj: " + CAR_1 + ")"}));
}

TEST_F(JSONDataCacheSelectionTest, ShrinksAPartlyDanglingArrayInTheAnswerAndInTheStore)
{
    addFleet();
    sut.deleteXObject(PERSON_2);

    const XObject::Ptr sutObject = sut.selectXObject(CAR_1, 0);

    EXPECT_EQ(describe(sutObject->getValue("passengers")->getValue()),
              "[<\"" + uriOf("people", PERSON_1) + "\">]");
    EXPECT_EQ(storedValue(CAR_1, "passengers"), "[\"" + PERSON_1 + "\"]");
    Ids found;
    sut.selectXObjectIDsWithAttributesOfValues("fleet", "cars", found, {{"passengers", Var(PERSON_2)}});
    EXPECT_EQ(found, Ids{});
}

TEST_F(JSONDataCacheSelectionTest, RemovesAWhollyDanglingArrayFromTheStore)
{
    addFleet();
    sut.deleteXObject(PERSON_1);
    sut.deleteXObject(PERSON_2);

    const XObject::Ptr sutObject = sut.selectXObject(CAR_1, 0);

    EXPECT_EQ(describe(sutObject->getValue("passengers")->getValue()), "[]");
    EXPECT_EQ(storedValue(CAR_1, "passengers"), "null");
}

TEST_F(JSONDataCacheSelectionTest, DoesNotRepairReferencesBelowDepthZero)
{
    addFleet();
    sut.deleteXObject(PERSON_1);
    LogCapture capture;

    sut.selectXObject(CAR_1, -1);

    EXPECT_EQ(capture.lines(), Lines{});
    EXPECT_EQ(storedValue(CAR_1, "driver"), "\"" + PERSON_1 + "\"");
}

TEST_F(JSONDataCacheSelectionTest, SelectsAnObjectByResourceAndUUID)
{
    addFleet();
    XObject sutObject{Element::Ptr()};

    const bool result = sut.selectXObjectByUUID("fleet", "people", PERSON_2, sutObject, 0, true);

    EXPECT_TRUE(result);
    EXPECT_EQ(sutObject.getDBID(), 5);
    EXPECT_EQ(describe(sutObject.getValue("name")->getValue()), "\"Bo\"");
}

TEST_F(JSONDataCacheSelectionTest, RefusesAnUnknownUUIDUnderAKnownResource)
{
    addFleet();
    XObject sutObject{Element::Ptr()};
    LogCapture capture;

    const bool result = sut.selectXObjectByUUID("fleet", "people", UNKNOWN, sutObject, 0, false);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Can not find XObject with UUID " + UNKNOWN});
    EXPECT_EQ(sutObject.getDBID(), -1);
}

TEST_F(JSONDataCacheSelectionTest, RefusesTheUUIDOfAnObjectOfAnotherResource)
{
    addFleet();
    XObject sutObject{Element::Ptr()};
    LogCapture capture;

    const bool result = sut.selectXObjectByUUID("fleet", "people", CAR_2, sutObject, 0, false);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Can not find element fleet/people/" + CAR_2});
    EXPECT_EQ(sutObject.getDBID(), -1);
}

TEST_F(JSONDataCacheSelectionTest, RefusesAResourceWithoutElement)
{
    XObject sutObject{Element::Ptr()};
    LogCapture capture;

    const bool result = sut.selectXObjectByUUID("fleet", "noelement", CAR_1, sutObject, 0, false);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(),
              Lines{"Warning: Can not find element info for resource fleet/noelement not found."});
}

TEST_F(JSONDataCacheSelectionTest, SelectsAnObjectOfAResourceAsPointer)
{
    addFleet();
    LogCapture capture;

    const XObject::Ptr found = sut.selectXObject("fleet", "cars", CAR_2, 0);
    const XObject::Ptr refused = sut.selectXObject("fleet", "cars", PERSON_2, 0);

    ASSERT_FALSE(found.isNull());
    EXPECT_EQ(found->getDBID(), 2);
    EXPECT_TRUE(refused.isNull());
    EXPECT_EQ(capture.lines(), Lines({"Warning: Can not find element fleet/cars/" + PERSON_2,
                                      "Warning: Can not find XObject /fleet/cars/" + PERSON_2}));
}

TEST_F(JSONDataCacheSelectionTest, SwapsAnObjectSelectedByIdIntoTheGivenOne)
{
    addFleet();
    XObject sutObject{Element::Ptr()};

    const bool found = sut.selectXObjectByID(4, sutObject, 0, true);
    XObject untouched{Element::Ptr()};
    const bool unknown = sut.selectXObjectByID(42, untouched, 0, true);

    EXPECT_TRUE(found);
    EXPECT_EQ(sutObject.getUUID(), PERSON_1);
    EXPECT_EQ(sutObject.getElement().get(), services.at("fleet")->getResource("people")->getElement().get());
    EXPECT_FALSE(unknown);
    EXPECT_EQ(untouched.getDBID(), -1);
}

TEST_F(JSONDataCacheSelectionTest, SelectsAllObjectsOfAnElementByAscendingId)
{
    addFleet();
    std::vector<XObject::Ptr> selected;

    const bool result =
        sut.selectXObjectsFromElement(*services.at("fleet")->getResource("cars")->getElement(), selected, 0);

    EXPECT_TRUE(result);
    ASSERT_EQ(selected.size(), 3u);
    EXPECT_EQ(selected[0]->getUUID(), CAR_1);
    EXPECT_EQ(selected[1]->getUUID(), CAR_2);
    EXPECT_EQ(selected[2]->getUUID(), CAR_3);
}

TEST_F(JSONDataCacheSelectionTest, SelectsNothingFromAnElementWithoutObjects)
{
    std::vector<XObject::Ptr> selected(1);

    const bool result =
        sut.selectXObjectsFromElement(*services.at("fleet")->getResource("cars")->getElement(), selected, 0);

    EXPECT_FALSE(result);
    EXPECT_TRUE(selected.empty());
}

TEST(JSONDataCacheRegEx, FindsRunsOfWildcards)
{
    const Poco::RegularExpression& sut = findWildCard();

    EXPECT_TRUE(sut.match("%"));
    EXPECT_TRUE(sut.match("%%"));
    EXPECT_FALSE(sut.match("x"));
    EXPECT_EQ(&sut, &findWildCard());
}

TEST(JSONDataCacheRegEx, AnchorsAValueWithoutWildcardsAtBothEnds)
{
    EXPECT_EQ(prepareRegEx("Volvo"), "^Volvo$");
}

TEST(JSONDataCacheRegEx, TurnsEachRunOfWildcardsIntoAnyText)
{
    EXPECT_EQ(prepareRegEx("%ol%o"), "^.*ol.*o$");
    EXPECT_EQ(prepareRegEx("a%%b"), "^a.*b$");
}

TEST(JSONDataCacheRegEx, LeavesEveryOtherCharacterAsPatternSyntax)
{
    EXPECT_EQ(prepareRegEx("V.lv[oa]"), "^V.lv[oa]$");
}

TEST_F(JSONDataCacheSelectionTest, SelectsAllObjectsOfAResourceWithoutSearch)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars"), Lines({CAR_1, CAR_2, CAR_3}));
}

TEST_F(JSONDataCacheSelectionTest, MatchesAValueWithoutWildcardAsAWhole)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?brand=Volvo"), Lines{CAR_1});
}

TEST_F(JSONDataCacheSelectionTest, MatchesPartOfAValueWithWildcards)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?brand=Volvo%25"), Lines({CAR_1, CAR_2}));
    EXPECT_EQ(select("/fleet/cars?brand=%25XC"), Lines{CAR_2});
    EXPECT_EQ(select("/fleet/cars?brand=%25a%25"), Lines{CAR_3});
}

TEST_F(JSONDataCacheSelectionTest, MatchesAnyOfTheValuesOfOneAttribute)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?brand=Saab,Volvo"), Lines({CAR_1, CAR_3}));
}

TEST_F(JSONDataCacheSelectionTest, MatchesNumbersByTheirText)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?seats=5"), Lines({CAR_1, CAR_3}));
}

TEST_F(JSONDataCacheSelectionTest, IntersectsTwoAttributeSearches)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?brand=Volvo%25&seats=5"), Lines{CAR_1});
}

TEST_F(JSONDataCacheSelectionTest, FindsNothingForAnAttributeThatTheElementDoesNotHave)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?colour=red"), Lines{});
    EXPECT_EQ(select("/fleet/cars?brand=Saab&colour=red"), Lines{});
}

TEST_F(JSONDataCacheSelectionTest, FindsAnObjectByTheValueOfAnyAttributeInAFreeTextSearch)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?$q=Saab"), Lines{CAR_3});
    EXPECT_EQ(select("/fleet/cars?$q=7"), Lines{CAR_2});
    EXPECT_EQ(select("/fleet/cars?$q=" + PERSON_2), Lines{CAR_1});
}

TEST_F(JSONDataCacheSelectionTest, IntersectsAFreeTextSearchWithTheAttributeSearches)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?$q=5&brand=%25o%25"), Lines{CAR_1});
}

TEST_F(JSONDataCacheSelectionTest, IgnoresPagingWhileSelecting)
{
    addFleet();

    EXPECT_EQ(select("/fleet/cars?$limit=1&$offset=1"), Lines({CAR_1, CAR_2, CAR_3}));
    EXPECT_EQ(select("/fleet/cars?seats=5&$limit=1"), Lines({CAR_1, CAR_3}));
}

TEST_F(JSONDataCacheSelectionTest, ResolvesTheReferencesOfSearchResultsAtTheRequestedLevel)
{
    addFleet();
    std::vector<XObject::Ptr> selected;

    sut.selectXObjectsByRequest(makeRequest("/fleet/cars?brand=Volvo&$expand=1"), selected);

    ASSERT_EQ(selected.size(), 1u);
    const XObject::Ptr& person = selected[0]->getValue("driver")->getValue().extract<XObject::Ptr>();
    EXPECT_EQ(describe(person->getValue("age")->getValue()), "41");
}

TEST_F(JSONDataCacheSelectionTest, RefusesToSearchBelowAnAddressOtherThanAResource)
{
    addFleet();
    std::vector<XObject::Ptr> selected;
    LogCapture capture;

    const bool result =
        sut.selectXObjectsByRequest(makeRequest("/fleet/cars/" + CAR_1 + "?brand=Volvo"), selected);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(),
              Lines{"Error: selectXObjects by Request supports only selection on resource level"});
}

TEST_F(JSONDataCacheSelectionTest, RefusesToSearchAResourceWithoutElement)
{
    std::vector<XObject::Ptr> selected;
    LogCapture capture;

    const bool result = sut.selectXObjectsByRequest(makeRequest("/fleet/noelement?brand=Volvo"), selected);

    EXPECT_FALSE(result);
    EXPECT_EQ(
        capture.lines(),
        Lines{"Error: selectXObjects by Request: element info for resource fleet/noelement not found."});
}

TEST_F(JSONDataCacheSelectionTest, RaisesForASearchValueThatIsNoPattern)
{
    addFleet();
    std::vector<XObject::Ptr> selected;

    EXPECT_THROW(sut.selectXObjectsByRequest(makeRequest("/fleet/cars?brand=Vol(vo"), selected),
                 Poco::RegularExpressionException);
}

TEST_F(JSONDataCacheSelectionTest, GivesTheIdsOfAResourceInUUIDOrder)
{
    addFleet();
    Ids ids{99};

    const bool result = sut.selectXObjectIDsOfResource("fleet", "cars", ids);

    EXPECT_TRUE(result);
    EXPECT_EQ(ids, Ids({3, 2, 1}));
}

TEST_F(JSONDataCacheSelectionTest, GivesNoIdsForAResourceWithoutObjectsOrElement)
{
    Ids ids{99};

    EXPECT_FALSE(sut.selectXObjectIDsOfResource("fleet", "cars", ids));
    EXPECT_EQ(ids, Ids{});
    Ids untouched{99};
    EXPECT_FALSE(sut.selectXObjectIDsOfResource("fleet", "noelement", untouched));
    EXPECT_EQ(untouched, Ids{99});
}

TEST_F(JSONDataCacheSelectionTest, FindsTheIdsOfObjectsHoldingAllGivenValues)
{
    addFleet();
    Ids ids;

    const bool result = sut.selectXObjectIDsWithAttributesOfValues(
        "fleet", "cars", ids, {{"seats", Var(5)}, {"brand", Var("Saab")}});

    EXPECT_TRUE(result);
    EXPECT_EQ(ids, Ids{3});
}

TEST_F(JSONDataCacheSelectionTest, FindsTheIdsOfObjectsHoldingAValueExactly)
{
    addFleet();
    Ids ids;

    sut.selectXObjectIDsWithAttributesOfValues("fleet", "cars", ids, {{"brand", Var("Volvo")}});

    EXPECT_EQ(ids, Ids{1});
}

TEST_F(JSONDataCacheSelectionTest, SkipsUnknownAttributeNamesInAnExactSearch)
{
    addFleet();
    Ids ids;
    LogCapture capture;

    const bool result = sut.selectXObjectIDsWithAttributesOfValues(
        "fleet", "cars", ids, {{"colour", Var("red")}, {"seats", Var(5)}});

    EXPECT_TRUE(result);
    EXPECT_EQ(ids, Ids({1, 3}));
    EXPECT_EQ(capture.lines(),
              Lines{"Warning: JSONDataCache::selectXObjectIDsWithAttributesOfValues: attribute "
                    "name colour not known."});
}

TEST_F(JSONDataCacheSelectionTest, LeavesTheIdsAsTheyCameForOnlyUnknownAttributeNames)
{
    addFleet();
    Ids ids{42, 43};

    const bool result =
        sut.selectXObjectIDsWithAttributesOfValues("fleet", "cars", ids, {{"colour", Var("red")}});

    EXPECT_TRUE(result);
    EXPECT_EQ(ids, Ids({42, 43}));
}

TEST_F(JSONDataCacheSelectionTest, RefusesAnExactSearchWithoutValues)
{
    Ids ids{42};
    LogCapture capture;

    const bool result = sut.selectXObjectIDsWithAttributesOfValues("fleet", "cars", ids, {});

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Warning: Don't use this function with empty parameters!"});
    EXPECT_EQ(ids, Ids{42});
}

TEST_F(JSONDataCacheSelectionTest, RefusesAnExactSearchOnAResourceWithoutElement)
{
    Ids ids;
    LogCapture capture;

    const bool result =
        sut.selectXObjectIDsWithAttributesOfValues("fleet", "noelement", ids, {{"brand", Var("x")}});

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: Element for resource /fleet/noelement not found."});
}

TEST_F(JSONDataCacheSelectionTest, TakesTheExpansionLevelOfTheRequest)
{
    EXPECT_EQ(sut.getExpansionLevel(makeRequest("/fleet/cars")), 0);
    EXPECT_EQ(sut.getExpansionLevel(makeRequest("/fleet/cars?$expand=2")), 2);
}

TEST_F(JSONDataCacheSelectionTest, RendersAtLevelOneWhenTheRequestNamesTheReferencesToExpand)
{
    EXPECT_EQ(sut.getExpansionLevel(makeRequest("/fleet/cars?$expand=driver,passengers")), 1);
}

} // namespace
