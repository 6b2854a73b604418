#include "SchemaLoader/SchemaLoader.h"

#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/ConstraintEnum.h"
#include "JSONDataCache/DBData/ConstraintFormat.h"
#include "JSONDataCache/DBData/ConstraintOneOf.h"
#include "JSONDataCache/DBData/ConstraintResolution.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Endpoint.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "SchemaLoader/SchemaError.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace Orvi::DBData;
using Orvi::Loader::SchemaError;
using Orvi::Loader::SchemaLoader;

namespace
{

const std::string DATA_DIR = SCHEMALOADER_TEST_DATA_DIR;

std::string readText(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

/// A service "shop" with one resource "items" of element "item" and the given further keys.
std::string resourceWith(const std::string& keys)
{
    return R"({"name": "shop", "resources": {"items": {"element": "item")" +
           std::string(keys.empty() ? "" : ", ") + keys + "}}}";
}

/// The same with one attribute "a" of the given definition.
std::string attributeWith(const std::string& definition)
{
    return resourceWith(R"("attributes": {"a": )" + definition + "}");
}

/// The same with one attribute of the given name and definition.
std::string namedAttributeWith(const std::string& name, const std::string& definition)
{
    return resourceWith(R"("attributes": {")" + name + R"(": )" + definition + "}");
}

/// The same with the attributes a, b and c (strings) and the given access rules.
std::string accessWith(const std::string& access)
{
    return resourceWith(R"("attributes": {"a": {"type": "string"}, "b": {"type": "string"}, )"
                        R"("c": {"type": "string"}}, "access": )" +
                        access);
}

ServiceMap load(const std::string& text)
{
    ServiceMap services;
    SchemaLoader().loadText(text, "shop.json", services);
    return services;
}

/// The message of the SchemaError that loading the text raises.
std::string errorOf(const std::string& text)
{
    ServiceMap services;
    try
    {
        SchemaLoader().loadText(text, "shop.json", services);
    }
    catch (const SchemaError& error)
    {
        return error.message();
    }
    return "no error";
}

const Element& elementOf(const ServiceMap& services, const std::string& service, const std::string& resource)
{
    return *services.at(service)->getResource(resource)->getElement();
}

const Attribute& attributeA(const ServiceMap& services)
{
    return *elementOf(services, "shop", "items").getAttributes().at("a");
}

std::vector<std::string> namesOf(const AttributeMap& attributes)
{
    std::vector<std::string> result;
    for (const auto& attribute : attributes)
    {
        result.push_back(attribute.first);
    }
    return result;
}

std::vector<std::string> texts(const Service::StringList& list)
{
    std::vector<std::string> result;
    for (const auto& text : list)
    {
        result.push_back(*text);
    }
    return result;
}

/// Each rule as "<attribute or *>:<flags>", joined by " ".
std::string describe(const std::vector<Endpoint>& endpoints)
{
    std::string result;
    for (const Endpoint& endpoint : endpoints)
    {
        result += result.empty() ? "" : " ";
        result += endpoint.isGlobal() ? std::string("*") : endpoint.getAttribute()->getName();
        result += ":";
        result += endpoint.isGet() ? "g" : "-";
        result += endpoint.isPost() ? "p" : "-";
        result += endpoint.isDelete() ? "d" : "-";
        result += endpoint.isRequired() ? "r" : "-";
    }
    return result;
}

std::string rangeOf(const Attribute& attribute)
{
    const auto* range = dynamic_cast<const ConstraintResolution*>(attribute.getConstraints().at(0).get());
    if (range == nullptr)
    {
        return "no range";
    }
    return range->getMinimum().convert<std::string>() + ".." + range->getMaximum().convert<std::string>() +
           "/" +
           (range->getResolution().isEmpty() ? std::string("none")
                                             : range->getResolution().convert<std::string>());
}

} // namespace

TEST(SchemaLoader, LoadsTheServiceRow)
{
    const std::string text = R"({"name": "shop", "description": "A small shop", "port": 8090,
        "versions": ["1.0", "1.2"], "categories": ["retail"], "privileges": ["shop.read", "shop.write"]})";

    const ServiceMap sut = load(text);

    ASSERT_EQ(sut.size(), 1U);
    const Service& service = *sut.at("shop");
    EXPECT_EQ(service.getName(), "shop");
    EXPECT_EQ(service.getDescription(), "A small shop");
    EXPECT_EQ(service.getPort(), 8090);
    EXPECT_EQ(texts(service.getVersions()), (std::vector<std::string>{"1.0", "1.2"}));
    EXPECT_EQ(texts(service.getServiceCategories()), (std::vector<std::string>{"retail"}));
    EXPECT_EQ(texts(service.getPrivileges()), (std::vector<std::string>{"shop.read", "shop.write"}));
    EXPECT_TRUE(service.getResources().empty());
}

TEST(SchemaLoader, LeavesOptionalServiceFieldsEmpty)
{
    const ServiceMap sut = load(R"({"name": "shop"})");

    const Service& service = *sut.at("shop");
    EXPECT_EQ(service.getDescription(), "");
    EXPECT_EQ(service.getPort(), 0);
    EXPECT_TRUE(service.getVersions().empty());
    EXPECT_TRUE(service.getServiceCategories().empty());
    EXPECT_TRUE(service.getPrivileges().empty());
}

TEST(SchemaLoader, KeepsTheDefinitionTextWithTheService)
{
    const std::string text = resourceWith(R"("description": "Goods")");

    const ServiceMap sut = load(text);

    EXPECT_EQ(sut.at("shop")->getSpec(), text);
}

TEST(SchemaLoader, KeepsTheResourcePartWithTheResource)
{
    const std::string text =
        resourceWith(R"("description": "Goods", "attributes": {"a": {"type": "string"}})");

    const ServiceMap sut = load(text);

    EXPECT_EQ(sut.at("shop")->getResource("items")->getSpec(),
              R"({"element":"item","description":"Goods","attributes":{"a":{"type":"string"}}})");
}

TEST(SchemaLoader, LoadsTheResourceRowAndItsElement)
{
    const ServiceMap sut = load(resourceWith(R"("description": "Goods")"));

    const Resource& resource = *sut.at("shop")->getResource("items");
    EXPECT_EQ(resource.getName(), "items");
    EXPECT_EQ(resource.getDescription(), "Goods");
    EXPECT_EQ(&resource.getService(), sut.at("shop").get());
    ASSERT_FALSE(resource.getElement().isNull());
    EXPECT_EQ(resource.getElement()->getName(), "item");
    EXPECT_EQ(&resource.getElement()->getResource(), &resource);
    EXPECT_EQ(namesOf(resource.getElement()->getAttributes()),
              (std::vector<std::string>{"id", "name", "uri"}));
    EXPECT_TRUE(resource.getEndpoints().empty());
    EXPECT_TRUE(resource.getElement()->getEndpoints().empty());
}

TEST(SchemaLoader, GivesEachAttributeTypeItsModelType)
{
    const ServiceMap sut =
        load(resourceWith(R"("attributes": {"s": {"type": "string"}, "i": {"type": "integer"},
        "u": {"type": "unsigned"}, "n": {"type": "number"}, "b": {"type": "boolean"}, "r": {"type": "reference"}})"));

    const AttributeMap& attributes = elementOf(sut, "shop", "items").getAttributes();
    ASSERT_EQ(attributes.size(), 9U);
    EXPECT_EQ(attributes.at("s")->getType(), AttrType_String);
    EXPECT_EQ(attributes.at("i")->getType(), AttrType_Integer);
    EXPECT_EQ(attributes.at("u")->getType(), AttrType_IntegerUnsigned);
    EXPECT_EQ(attributes.at("n")->getType(), AttrType_Number);
    EXPECT_EQ(attributes.at("b")->getType(), AttrType_Boolean);
    EXPECT_EQ(attributes.at("r")->getType(), AttrType_Object);
    for (const auto& attribute : attributes)
    {
        EXPECT_EQ(attribute.second->getName(), attribute.first);
        EXPECT_FALSE(attribute.second->isArray()) << attribute.first;
        EXPECT_TRUE(attribute.second->getConstraints().empty()) << attribute.first;
    }
}

TEST(SchemaLoader, MarksArrayAttributes)
{
    const ServiceMap sut = load(resourceWith(R"("attributes": {"tags": {"type": "string", "array": true},
        "sizes": {"type": "integer", "array": false}, "links": {"type": "reference", "array": true}})"));

    const AttributeMap& attributes = elementOf(sut, "shop", "items").getAttributes();
    EXPECT_TRUE(attributes.at("tags")->isArray());
    EXPECT_FALSE(attributes.at("sizes")->isArray());
    EXPECT_TRUE(attributes.at("links")->isArray());
    EXPECT_EQ(attributes.at("links")->getType(), AttrType_Object);
}

TEST(SchemaLoader, BuildsAnEnumConstraint)
{
    const ServiceMap sut = load(attributeWith(R"({"type": "string", "enum": ["red", "green", "blue"]})"));

    const auto* constraint =
        dynamic_cast<const ConstraintEnum*>(attributeA(sut).getConstraints().at(0).get());
    ASSERT_NE(constraint, nullptr);
    EXPECT_EQ(attributeA(sut).getConstraints().size(), 1U);
    EXPECT_EQ(constraint->getEnumValues(), (std::set<std::string>{"blue", "green", "red"}));
}

TEST(SchemaLoader, BuildsAFormatConstraint)
{
    const ServiceMap sut = load(attributeWith(R"({"type": "string", "format": "[a-z]+-[0-9]{2}"})"));

    const auto* constraint =
        dynamic_cast<const ConstraintFormat*>(attributeA(sut).getConstraints().at(0).get());
    ASSERT_NE(constraint, nullptr);
    EXPECT_EQ(constraint->getFormat(), "[a-z]+-[0-9]{2}");
}

TEST(SchemaLoader, BuildsAnIntegerRangeWithResolution)
{
    const ServiceMap sut =
        load(attributeWith(R"({"type": "integer", "minimum": -50, "maximum": 50, "resolution": 5})"));

    EXPECT_EQ(rangeOf(attributeA(sut)), "-50..50/5");
}

TEST(SchemaLoader, FillsAMissingIntegerBoundWithTheTypeLimit)
{
    const ServiceMap low = load(attributeWith(R"({"type": "integer", "maximum": 10})"));
    const ServiceMap high = load(attributeWith(R"({"type": "integer", "minimum": -10})"));
    const ServiceMap resolutionOnly = load(attributeWith(R"({"type": "integer", "resolution": 2})"));

    EXPECT_EQ(rangeOf(attributeA(low)), "-9223372036854775808..10/none");
    EXPECT_EQ(rangeOf(attributeA(high)), "-10..9223372036854775807/none");
    EXPECT_EQ(rangeOf(attributeA(resolutionOnly)), "-9223372036854775808..9223372036854775807/2");
}

TEST(SchemaLoader, FillsAMissingUnsignedBoundWithTheTypeLimit)
{
    const ServiceMap low = load(attributeWith(R"({"type": "unsigned", "maximum": 7})"));
    const ServiceMap high = load(attributeWith(R"({"type": "unsigned", "minimum": 3, "resolution": 4})"));

    EXPECT_EQ(rangeOf(attributeA(low)), "0..7/none");
    EXPECT_EQ(rangeOf(attributeA(high)), "3..18446744073709551615/4");
}

TEST(SchemaLoader, GivesAnIntegerRangeThatTheCheckCanRead)
{
    const ServiceMap sut = load(attributeWith(R"({"type": "integer", "maximum": 50, "resolution": 5})"));
    Poco::Dynamic::Var inRange = 13;
    Poco::Dynamic::Var tooHigh = 53;

    EXPECT_TRUE(attributeA(sut).checkAttributeValueContent(inRange, false));
    EXPECT_FALSE(attributeA(sut).checkAttributeValueContent(tooHigh, false));
    EXPECT_EQ(inRange.convert<Poco::Int64>(), 15);
}

TEST(SchemaLoader, BuildsANumberRangeAndKeepsTheOpenBound)
{
    const ServiceMap sut = load(attributeWith(R"({"type": "number", "minimum": 16, "resolution": 0.5})"));

    const auto* range =
        dynamic_cast<const ConstraintResolution*>(attributeA(sut).getConstraints().at(0).get());
    ASSERT_NE(range, nullptr);
    EXPECT_EQ(range->getMinimum().convert<double>(), 16.0);
    EXPECT_EQ(range->getMaximum().convert<double>(), std::numeric_limits<double>::max());
    EXPECT_EQ(range->getResolution().convert<double>(), 0.5);
}

TEST(SchemaLoader, BuildsReferenceTargets)
{
    const ServiceMap sut =
        load(attributeWith(R"({"type": "reference", "targets": ["shop.items.item", "Depot.Bins.Bin"]})"));

    const auto* constraint =
        dynamic_cast<const ConstraintOneOf*>(attributeA(sut).getConstraints().at(0).get());
    ASSERT_NE(constraint, nullptr);
    EXPECT_EQ(constraint->getClasses(), (std::vector<std::string>{"shop.items.item", "Depot.Bins.Bin"}));
    ASSERT_EQ(constraint->getAllowedReferences().size(), 2U);
    EXPECT_EQ(constraint->getAllowedReferences()[1].resource, "bins");
}

TEST(SchemaLoader, AcceptsAnAttributeDescription)
{
    const ServiceMap sut =
        load(attributeWith(R"({"type": "boolean", "description": "Whether it is on sale"})"));

    EXPECT_EQ(attributeA(sut).getType(), AttrType_Boolean);
}

TEST(SchemaLoader, AddsTheDefaultAttributesToAnElementThatDeclaresNone)
{
    const ServiceMap sut = load(attributeWith(R"({"type": "integer"})"));

    const AttributeMap& attributes = elementOf(sut, "shop", "items").getAttributes();
    EXPECT_EQ(namesOf(attributes), (std::vector<std::string>{"a", "id", "name", "uri"}));
    for (const char* name : {"id", "name", "uri"})
    {
        const Attribute& attribute = *attributes.at(name);
        EXPECT_EQ(attribute.getName(), name);
        EXPECT_EQ(attribute.getType(), AttrType_String) << name;
        EXPECT_FALSE(attribute.isArray()) << name;
        EXPECT_TRUE(attribute.getConstraints().empty()) << name;
    }
}

TEST(SchemaLoader, AcceptsADefaultAttributeDeclaredAsAPlainString)
{
    const ServiceMap sut = load(resourceWith(R"("attributes": {"id": {"type": "string"},
        "name": {"type": "string", "array": false, "description": "Shown to the driver"}})"));

    const AttributeMap& attributes = elementOf(sut, "shop", "items").getAttributes();
    EXPECT_EQ(namesOf(attributes), (std::vector<std::string>{"id", "name", "uri"}));
    for (const auto& attribute : attributes)
    {
        EXPECT_EQ(attribute.second->getType(), AttrType_String) << attribute.first;
        EXPECT_FALSE(attribute.second->isArray()) << attribute.first;
        EXPECT_TRUE(attribute.second->getConstraints().empty()) << attribute.first;
    }
}

TEST(SchemaLoader, LetsAccessRulesNameDefaultAttributesThatAreNotDeclared)
{
    const ServiceMap sut =
        load(resourceWith(R"("access": {"objects": {"post": ["name"], "delete": ["name"]}})"));

    EXPECT_EQ(describe(elementOf(sut, "shop", "items").getEndpoints()), "name:-pd-");
}

TEST(SchemaLoader, RefusesADefaultAttributeOfAnotherType)
{
    EXPECT_THROW(load(namedAttributeWith("id", R"({"type": "integer"})")), SchemaError);
    EXPECT_EQ(errorOf(namedAttributeWith("id", R"({"type": "integer"})")),
              "shop.json: resources.items.attributes.id.type: a default attribute must be of type string");
    EXPECT_EQ(errorOf(namedAttributeWith("name", R"({"type": "boolean"})")),
              "shop.json: resources.items.attributes.name.type: a default attribute must be of type string");
    EXPECT_EQ(errorOf(namedAttributeWith("uri", R"({"type": "reference"})")),
              "shop.json: resources.items.attributes.uri.type: a default attribute must be of type string");
}

TEST(SchemaLoader, RefusesADefaultAttributeDeclaredAsAnArray)
{
    EXPECT_THROW(load(namedAttributeWith("name", R"({"type": "string", "array": true})")), SchemaError);
    EXPECT_EQ(errorOf(namedAttributeWith("name", R"({"type": "string", "array": true})")),
              "shop.json: resources.items.attributes.name.array: a default attribute cannot be an array");
}

TEST(SchemaLoader, RefusesADefaultAttributeWithAConstraint)
{
    EXPECT_THROW(load(namedAttributeWith("uri", R"({"type": "string", "format": "/.*"})")), SchemaError);
    EXPECT_EQ(
        errorOf(namedAttributeWith("uri", R"({"type": "string", "format": "/.*"})")),
        "shop.json: resources.items.attributes.uri.format: a default attribute cannot have a constraint");
    EXPECT_EQ(
        errorOf(namedAttributeWith("name", R"({"type": "string", "enum": ["Driver"]})")),
        "shop.json: resources.items.attributes.name.enum: a default attribute cannot have a constraint");
    EXPECT_EQ(
        errorOf(namedAttributeWith("id", R"({"type": "string", "minimum": 1})")),
        "shop.json: resources.items.attributes.id.minimum: a default attribute cannot have a constraint");
}

TEST(SchemaLoader, BuildsGlobalRulesForTheResource)
{
    const ServiceMap sut = load(accessWith(R"({"resource": {"get": true, "post": true, "delete": true}})"));

    const Resource& resource = *sut.at("shop")->getResource("items");
    EXPECT_EQ(describe(resource.getEndpoints()), "*:gpd-");
    EXPECT_TRUE(resource.getElement()->getEndpoints().empty());
}

TEST(SchemaLoader, BuildsObjectRulesForPostedRequiredAndDeletableAttributes)
{
    const ServiceMap sut = load(accessWith(
        R"({"objects": {"get": true, "post": ["b", "a"], "required": ["a"], "delete": ["c", "b"]}})"));

    const Element& element = elementOf(sut, "shop", "items");
    EXPECT_EQ(describe(element.getEndpoints()), "*:g--- b:-pd- a:-p-r c:--d-");
    EXPECT_EQ(element.getEndpoints()[1].getAttribute().get(), element.getAttributes().at("b").get());
}

TEST(SchemaLoader, LeavesOutTheGlobalRuleWhenItAllowsNothing)
{
    const ServiceMap sut = load(accessWith(R"({"objects": {"get": false, "post": ["a"], "delete": false}})"));

    EXPECT_EQ(describe(elementOf(sut, "shop", "items").getEndpoints()), "a:-p--");
}

TEST(SchemaLoader, RulesAllowWhatTheyName)
{
    const ServiceMap sut = load(accessWith(R"({"objects": {"get": true, "post": ["a", "b"], "required": ["a"],
        "delete": true}})"));
    const std::vector<Endpoint>& rules = elementOf(sut, "shop", "items").getEndpoints();
    bool missing = false;
    bool forbidden = false;

    EXPECT_TRUE(Endpoint::checkGetAllowed(rules));
    EXPECT_TRUE(Endpoint::checkPostAllowed(rules, {"a", "b"}, missing, forbidden));
    EXPECT_FALSE(Endpoint::checkPostAllowed(rules, {"b"}, missing, forbidden));
    EXPECT_TRUE(missing);
    EXPECT_TRUE(Endpoint::checkDeleteAllowed(rules, {}));
}

TEST(SchemaLoader, TakesTheIdsThatTheDefinitionGives)
{
    const ServiceMap sut = load(R"({"name": "shop", "id": "6F1D2C3B-0A9E-4D8C-B7A6-5E4F3D2C1B0A",
        "resources": {"items": {"id": "0e2c9a4b-7d6f-4a1e-8b3c-2f5d7e9a1c4b", "element": "item"}}})");

    EXPECT_EQ(sut.at("shop")->getUUID(), "6F1D2C3B-0A9E-4D8C-B7A6-5E4F3D2C1B0A");
    EXPECT_EQ(sut.at("shop")->getId().get(), Poco::UUID("6f1d2c3b-0a9e-4d8c-b7a6-5e4f3d2c1b0a"));
    EXPECT_EQ(sut.at("shop")->getResource("items")->getUUID(), "0e2c9a4b-7d6f-4a1e-8b3c-2f5d7e9a1c4b");
}

TEST(SchemaLoader, GeneratesIdsThatTheDefinitionLeavesOut)
{
    const ServiceMap sut = load(R"({"name": "shop", "resources": {"items": {"element": "item"},
        "bins": {"element": "bin"}}})");

    const Service& service = *sut.at("shop");
    const std::set<std::string> ids{service.getUUID(), service.getResource("items")->getUUID(),
                                    service.getResource("bins")->getUUID()};
    EXPECT_EQ(ids.size(), 3U);
    EXPECT_FALSE(service.getId().isEmpty());
    EXPECT_EQ(service.getId().get().version(), Poco::UUID::UUID_RANDOM);
    EXPECT_EQ(service.getResource("items")->getId().get().version(), Poco::UUID::UUID_RANDOM);
}

TEST(SchemaLoader, NumbersElementsFromOneInAFreshMap)
{
    const ServiceMap sut = load(R"({"name": "shop", "resources": {"items": {"element": "item"},
        "bins": {"element": "bin"}}})");

    EXPECT_EQ(elementOf(sut, "shop", "bins").getDBID(), 1);
    EXPECT_EQ(elementOf(sut, "shop", "items").getDBID(), 2);
}

TEST(SchemaLoader, GivesElementsIdsDistinctAcrossServices)
{
    ServiceMap services;
    SchemaLoader sut;

    sut.loadText(
        R"({"name": "shop", "resources": {"items": {"element": "item"}, "bins": {"element": "bin"}}})",
        "shop.json", services);
    sut.loadText(R"({"name": "depot", "resources": {"items": {"element": "item"}}})", "depot.json", services);
    SchemaLoader().loadText(R"({"name": "yard", "resources": {"items": {"element": "item"}}})", "yard.json",
                            services);

    EXPECT_EQ(elementOf(services, "shop", "bins").getDBID(), 1);
    EXPECT_EQ(elementOf(services, "shop", "items").getDBID(), 2);
    EXPECT_EQ(elementOf(services, "depot", "items").getDBID(), 3);
    EXPECT_EQ(elementOf(services, "yard", "items").getDBID(), 4);
}

TEST(SchemaLoader, LoadsAFileWrittenByHand)
{
    ServiceMap services;
    SchemaLoader sut;

    sut.loadFile(DATA_DIR + "/lighting.json", services);

    const Service& service = *services.at("lighting");
    EXPECT_EQ(service.getUUID(), "0f6b2d9e-3c71-4e08-a5d4-7b19c2e8f360");
    EXPECT_EQ(service.getDescription(), "Ambient light of the cabin");
    EXPECT_EQ(service.getPort(), 8082);
    EXPECT_EQ(texts(service.getVersions()), (std::vector<std::string>{"2.0"}));
    EXPECT_EQ(service.getSpec(), readText(DATA_DIR + "/lighting.json"));
    const Element& lamp = elementOf(services, "lighting", "lamps");
    EXPECT_EQ(lamp.getName(), "lamp");
    EXPECT_EQ(lamp.getAttributes().size(), 7U);
    EXPECT_EQ(rangeOf(*lamp.getAttributes().at("brightness")), "0..1/0.05");
    EXPECT_EQ(describe(lamp.getEndpoints()), "*:g--- colour:-p-- brightness:-p-- mode:-p--");
    EXPECT_TRUE(services.at("lighting")->getResource("lamps")->getEndpoints().empty());
}

TEST(SchemaLoader, LoadsTheDocumentedExample)
{
    ServiceMap services;
    SchemaLoader sut;

    sut.loadFiles({DATA_DIR + "/cabin.json", DATA_DIR + "/lighting.json"}, services);

    ASSERT_EQ(services.size(), 2U);
    const Service& cabin = *services.at("cabin");
    EXPECT_EQ(cabin.getDescription(), "Climate zones, seats and doors of the passenger cabin");
    EXPECT_EQ(cabin.getPort(), 8081);
    EXPECT_EQ(texts(cabin.getVersions()), (std::vector<std::string>{"1.0", "1.1"}));
    EXPECT_EQ(texts(cabin.getServiceCategories()), (std::vector<std::string>{"comfort", "body"}));
    EXPECT_EQ(texts(cabin.getPrivileges()), (std::vector<std::string>{"cabin.read", "cabin.write"}));
    EXPECT_EQ(cabin.getSpec(), readText(DATA_DIR + "/cabin.json"));
    ASSERT_EQ(cabin.getResources().size(), 3U);

    const Element& zone = elementOf(services, "cabin", "zones");
    EXPECT_EQ(zone.getName(), "zone");
    EXPECT_EQ(rangeOf(*zone.getAttributes().at("setPoint")), "16..28/0.5");
    EXPECT_EQ(rangeOf(*zone.getAttributes().at("fanLevel")), "0..7/none");
    EXPECT_TRUE(zone.getAttributes().at("seats")->isArray());
    EXPECT_EQ(describe(cabin.getResource("zones")->getEndpoints()), "*:g---");
    EXPECT_EQ(describe(zone.getEndpoints()), "*:g--- setPoint:-p-- fanLevel:-p-- recirculation:-p--");

    const Element& seat = elementOf(services, "cabin", "seats");
    EXPECT_EQ(rangeOf(*seat.getAttributes().at("position")), "-50..50/5");
    EXPECT_EQ(rangeOf(*seat.getAttributes().at("row")), "1..3/none");
    EXPECT_EQ(seat.getAttributes().at("presets")->getType(), AttrType_Integer);
    EXPECT_TRUE(seat.getAttributes().at("presets")->isArray());
    EXPECT_EQ(describe(cabin.getResource("seats")->getEndpoints()), "*:gp--");
    EXPECT_EQ(describe(seat.getEndpoints()),
              "*:g-d- row:-p-r side:-p-r position:-p-- heating:-p-- zone:-p--");

    const Resource& doors = *cabin.getResource("doors");
    EXPECT_EQ(doors.getUUID(), "5a0c3f62-8d1e-4b7a-9c55-0e2f6d41a7b3");
    EXPECT_EQ(doors.getDescription(), "Doors and their locks");
    EXPECT_EQ(describe(doors.getElement()->getEndpoints()), "*:g--- locked:-p-- notes:--d-");
    EXPECT_EQ(doors.getElement()->getAttributes().at("openings")->getType(), AttrType_IntegerUnsigned);

    const std::set<DbId> ids{elementOf(services, "cabin", "doors").getDBID(), seat.getDBID(), zone.getDBID(),
                             elementOf(services, "lighting", "lamps").getDBID()};
    EXPECT_EQ(ids, (std::set<DbId>{1, 2, 3, 4}));
}

TEST(SchemaLoader, DocumentationCarriesTheExampleOfTheTests)
{
    const std::string documentation = readText(DATA_DIR + "/../../../docs/service-definition.md");

    EXPECT_NE(documentation.find(readText(DATA_DIR + "/cabin.json")), std::string::npos);
}

TEST(SchemaLoader, RaisesASchemaErrorThatNamesFileLocationAndReason)
{
    ServiceMap services;
    SchemaLoader sut;

    EXPECT_THROW(sut.loadText(R"({"name": "shop", "port": 70000})", "shop.json", services), SchemaError);
    try
    {
        sut.loadText(R"({"name": "shop", "port": 70000})", "shop.json", services);
    }
    catch (const SchemaError& error)
    {
        EXPECT_EQ(error.displayText(),
                  "Invalid service definition: shop.json: port: must be an integer between 0 and 65535");
    }
}

TEST(SchemaLoader, RefusesAMissingFile)
{
    ServiceMap services;
    SchemaLoader sut;
    const std::string path = DATA_DIR + "/absent.json";

    try
    {
        sut.loadFile(path, services);
        FAIL() << "no error";
    }
    catch (const SchemaError& error)
    {
        EXPECT_EQ(error.message(), path + ": cannot be read");
    }
    EXPECT_TRUE(services.empty());
}

TEST(SchemaLoader, RefusesADirectory)
{
    ServiceMap services;
    SchemaLoader sut;

    try
    {
        sut.loadFile(DATA_DIR, services);
        FAIL() << "no error";
    }
    catch (const SchemaError& error)
    {
        EXPECT_EQ(error.message(), DATA_DIR + ": cannot be read");
    }
    EXPECT_TRUE(services.empty());
}

TEST(SchemaLoader, RefusesATruncatedFile)
{
    ServiceMap services;
    SchemaLoader sut;
    const std::string path = DATA_DIR + "/truncated.json";

    try
    {
        sut.loadFile(path, services);
        FAIL() << "no error";
    }
    catch (const SchemaError& error)
    {
        EXPECT_EQ(error.message(), path + ": invalid JSON (unterminated string literal)");
    }
    EXPECT_TRUE(services.empty());
}

TEST(SchemaLoader, RefusesJsonSyntaxErrors)
{
    EXPECT_EQ(errorOf(R"({"name": "shop",})"), "shop.json: invalid JSON (unexpected byte '}' in value)");
    EXPECT_EQ(errorOf(""), "shop.json: invalid JSON (unexpected end of text)");
}

TEST(SchemaLoader, RefusesADefinitionThatIsNoObject)
{
    EXPECT_EQ(errorOf(R"(["shop"])"), "shop.json: top level: must be an object");
}

TEST(SchemaLoader, RefusesUnknownKeysAtEveryLevel)
{
    EXPECT_EQ(errorOf(R"({"name": "shop", "prot": 80})"), "shop.json: prot: unknown key");
    EXPECT_EQ(errorOf(resourceWith(R"("elemnt": "x")")), "shop.json: resources.items.elemnt: unknown key");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "integer", "max": 3})")),
              "shop.json: resources.items.attributes.a.max: unknown key");
    EXPECT_EQ(errorOf(accessWith(R"({"object": {}})")),
              "shop.json: resources.items.access.object: unknown key");
    EXPECT_EQ(errorOf(accessWith(R"({"objects": {"put": true}})")),
              "shop.json: resources.items.access.objects.put: unknown key");
}

TEST(SchemaLoader, RefusesMissingRequiredKeys)
{
    EXPECT_EQ(errorOf(R"({"description": "nameless"})"), "shop.json: name: is required");
    EXPECT_EQ(errorOf(R"({"name": "shop", "resources": {"items": {}}})"),
              "shop.json: resources.items.element: is required");
    EXPECT_EQ(errorOf(attributeWith(R"({"array": true})")),
              "shop.json: resources.items.attributes.a.type: is required");
}

TEST(SchemaLoader, RefusesEmptyNames)
{
    EXPECT_EQ(errorOf(R"({"name": ""})"), "shop.json: name: must not be empty");
    EXPECT_EQ(errorOf(R"({"name": "shop", "resources": {"": {"element": "item"}}})"),
              "shop.json: resources: a resource name must not be empty");
    EXPECT_EQ(errorOf(R"({"name": "shop", "resources": {"items": {"element": ""}}})"),
              "shop.json: resources.items.element: must not be empty");
    EXPECT_EQ(errorOf(resourceWith(R"("attributes": {"": {"type": "string"}})")),
              "shop.json: resources.items.attributes: an attribute name must not be empty");
}

TEST(SchemaLoader, RefusesValuesOfTheWrongKind)
{
    EXPECT_EQ(errorOf(R"({"name": 7})"), "shop.json: name: must be a string");
    EXPECT_EQ(errorOf(R"({"name": "shop", "description": ["a"]})"),
              "shop.json: description: must be a string");
    EXPECT_EQ(errorOf(R"({"name": "shop", "versions": "1.0"})"),
              "shop.json: versions: must be an array of strings");
    EXPECT_EQ(errorOf(R"({"name": "shop", "categories": ["a", 2]})"),
              "shop.json: categories[1]: must be a string");
    EXPECT_EQ(errorOf(R"({"name": "shop", "privileges": [""]})"),
              "shop.json: privileges[0]: must not be empty");
    EXPECT_EQ(errorOf(R"({"name": "shop", "resources": []})"), "shop.json: resources: must be an object");
    EXPECT_EQ(errorOf(R"({"name": "shop", "resources": {"items": "item"}})"),
              "shop.json: resources.items: must be an object");
    EXPECT_EQ(errorOf(attributeWith(R"("string")")),
              "shop.json: resources.items.attributes.a: must be an object");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "array": "yes"})")),
              "shop.json: resources.items.attributes.a.array: must be true or false");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "description": 1})")),
              "shop.json: resources.items.attributes.a.description: must be a string");
    EXPECT_EQ(errorOf(accessWith(R"({"objects": {"get": 1}})")),
              "shop.json: resources.items.access.objects.get: must be true or false");
    EXPECT_EQ(
        errorOf(accessWith(R"({"objects": {"post": "a"}})")),
        "shop.json: resources.items.access.objects.post: must be true, false or an array of attribute names");
}

TEST(SchemaLoader, RefusesAPortOutOfRange)
{
    EXPECT_EQ(errorOf(R"({"name": "shop", "port": -1})"),
              "shop.json: port: must be an integer between 0 and 65535");
    EXPECT_EQ(errorOf(R"({"name": "shop", "port": 65536})"),
              "shop.json: port: must be an integer between 0 and 65535");
    EXPECT_EQ(errorOf(R"({"name": "shop", "port": 18446744073709551615})"),
              "shop.json: port: must be an integer between 0 and 65535");
    EXPECT_EQ(errorOf(R"({"name": "shop", "port": 80.5})"),
              "shop.json: port: must be an integer between 0 and 65535");
    EXPECT_EQ(errorOf(R"({"name": "shop", "port": true})"),
              "shop.json: port: must be an integer between 0 and 65535");
}

TEST(SchemaLoader, RefusesIdsThatAreNoUuids)
{
    EXPECT_EQ(errorOf(R"({"name": "shop", "id": "shop-1"})"), "shop.json: id: must be a UUID");
    EXPECT_EQ(errorOf(R"({"name": "shop", "id": ""})"), "shop.json: id: must be a UUID");
    EXPECT_EQ(errorOf(resourceWith(R"("id": "0e2c9a4b")")), "shop.json: resources.items.id: must be a UUID");
}

TEST(SchemaLoader, RefusesAnUnknownType)
{
    EXPECT_EQ(
        errorOf(attributeWith(R"({"type": "text"})")),
        "shop.json: resources.items.attributes.a.type: unknown type \"text\"; use string, integer, unsigned, "
        "number, boolean or reference");
}

TEST(SchemaLoader, RefusesConstraintsThatDoNotFitTheType)
{
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "integer", "enum": ["1"]})")),
              "shop.json: resources.items.attributes.a.enum: applies to string attributes only");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "reference", "format": "x"})")),
              "shop.json: resources.items.attributes.a.format: applies to string attributes only");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "minimum": 1})")),
              "shop.json: resources.items.attributes.a.minimum: applies to numeric attributes only");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "boolean", "resolution": 1})")),
              "shop.json: resources.items.attributes.a.resolution: applies to numeric attributes only");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "targets": ["a.b.c"]})")),
              "shop.json: resources.items.attributes.a.targets: applies to reference attributes only");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "enum": ["x"], "format": "x"})")),
              "shop.json: resources.items.attributes.a: enum and format cannot be combined");
}

TEST(SchemaLoader, RefusesMalformedStringConstraints)
{
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "enum": []})")),
              "shop.json: resources.items.attributes.a.enum: must not be empty");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "enum": ["x", 1]})")),
              "shop.json: resources.items.attributes.a.enum[1]: must be a string");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "format": ""})")),
              "shop.json: resources.items.attributes.a.format: must not be empty");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "format": "[a-z"})")),
              "shop.json: resources.items.attributes.a.format: is not a valid regular expression (missing "
              "terminating ] for character class (at offset 4))");
}

TEST(SchemaLoader, RefusesMalformedRanges)
{
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "integer", "minimum": 1.5})")),
              "shop.json: resources.items.attributes.a.minimum: must be an integer");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "integer", "maximum": "9"})")),
              "shop.json: resources.items.attributes.a.maximum: must be an integer");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "integer", "maximum": 9223372036854775808})")),
              "shop.json: resources.items.attributes.a.maximum: is out of range for an integer attribute");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "unsigned", "minimum": -1})")),
              "shop.json: resources.items.attributes.a.minimum: is out of range for an unsigned attribute");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "number", "minimum": "low"})")),
              "shop.json: resources.items.attributes.a.minimum: must be a number");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "integer", "minimum": 5, "maximum": 4})")),
              "shop.json: resources.items.attributes.a.minimum: must not be greater than the maximum");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "unsigned", "minimum": 5, "maximum": 4})")),
              "shop.json: resources.items.attributes.a.minimum: must not be greater than the maximum");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "number", "minimum": 0.5, "maximum": 0.25})")),
              "shop.json: resources.items.attributes.a.minimum: must not be greater than the maximum");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "integer", "resolution": 0})")),
              "shop.json: resources.items.attributes.a.resolution: must be greater than 0");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "unsigned", "resolution": 0})")),
              "shop.json: resources.items.attributes.a.resolution: must be greater than 0");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "number", "resolution": -0.5})")),
              "shop.json: resources.items.attributes.a.resolution: must be greater than 0");
}

TEST(SchemaLoader, RefusesMalformedTargets)
{
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "reference", "targets": []})")),
              "shop.json: resources.items.attributes.a.targets: must not be empty");
    EXPECT_EQ(
        errorOf(attributeWith(R"({"type": "reference", "targets": ["a.b.c", "a.b"]})")),
        "shop.json: resources.items.attributes.a.targets[1]: must name a target as service.resource.element");
    EXPECT_EQ(
        errorOf(attributeWith(R"({"type": "reference", "targets": ["a..c"]})")),
        "shop.json: resources.items.attributes.a.targets[0]: must name a target as service.resource.element");
    EXPECT_EQ(
        errorOf(attributeWith(R"({"type": "reference", "targets": ["a.b.c.d"]})")),
        "shop.json: resources.items.attributes.a.targets[0]: must name a target as service.resource.element");
}

TEST(SchemaLoader, RefusesRulesForUnknownOrRepeatedAttributes)
{
    EXPECT_EQ(errorOf(accessWith(R"({"objects": {"post": ["a", "x"]}})")),
              "shop.json: resources.items.access.objects.post[1]: \"x\" is not an attribute of the element");
    EXPECT_EQ(
        errorOf(accessWith(R"({"resource": {"delete": ["y"]}})")),
        "shop.json: resources.items.access.resource.delete[0]: \"y\" is not an attribute of the element");
    EXPECT_EQ(errorOf(accessWith(R"({"objects": {"post": ["a", "b", "a"]}})")),
              "shop.json: resources.items.access.objects.post[2]: \"a\" is listed twice");
    EXPECT_EQ(errorOf(accessWith(R"({"objects": {"delete": ["c", "c"]}})")),
              "shop.json: resources.items.access.objects.delete[1]: \"c\" is listed twice");
}

TEST(SchemaLoader, RefusesRequiredAttributesThatMayNotBePosted)
{
    EXPECT_EQ(
        errorOf(accessWith(R"({"objects": {"post": true, "required": ["a"]}})")),
        "shop.json: resources.items.access.objects.required: needs post as an array of attribute names");
    EXPECT_EQ(
        errorOf(accessWith(R"({"objects": {"required": ["a"]}})")),
        "shop.json: resources.items.access.objects.required: needs post as an array of attribute names");
    EXPECT_EQ(errorOf(accessWith(R"({"objects": {"post": ["a"], "required": ["a", "b"]}})")),
              "shop.json: resources.items.access.objects.required[1]: \"b\" is not listed in post");
}

TEST(SchemaLoader, RefusesAServiceThatIsAlreadyLoaded)
{
    ServiceMap services;
    SchemaLoader sut;
    sut.loadText(R"({"name": "shop"})", "first.json", services);
    const Service::Ptr first = services.at("shop");

    try
    {
        sut.loadText(R"({"name": "shop", "port": 1})", "second.json", services);
        FAIL() << "no error";
    }
    catch (const SchemaError& error)
    {
        EXPECT_EQ(error.message(), "second.json: name: service \"shop\" is already loaded");
    }
    EXPECT_EQ(services.size(), 1U);
    EXPECT_EQ(services.at("shop").get(), first.get());
    EXPECT_EQ(first->getPort(), 0);
}

TEST(SchemaLoader, RefusesTheSameServiceInTwoFilesOfOneLoad)
{
    ServiceMap services;
    SchemaLoader sut;
    const std::string path = DATA_DIR + "/lighting.json";

    try
    {
        sut.loadFiles({path, path}, services);
        FAIL() << "no error";
    }
    catch (const SchemaError& error)
    {
        EXPECT_EQ(error.message(), path + ": name: service \"lighting\" is already loaded");
    }
    EXPECT_TRUE(services.empty());
}

TEST(SchemaLoader, LeavesTheMapUntouchedWhenALaterFileFails)
{
    ServiceMap services;
    SchemaLoader sut;
    sut.loadText(R"({"name": "shop", "resources": {"items": {"element": "item"}}})", "shop.json", services);
    const Service::Ptr shop = services.at("shop");

    EXPECT_THROW(sut.loadFiles({DATA_DIR + "/lighting.json", DATA_DIR + "/truncated.json"}, services),
                 SchemaError);

    ASSERT_EQ(services.size(), 1U);
    EXPECT_EQ(services.at("shop").get(), shop.get());
    EXPECT_EQ(shop->getResources().size(), 1U);
    sut.loadFile(DATA_DIR + "/lighting.json", services);
    EXPECT_EQ(elementOf(services, "lighting", "lamps").getDBID(), 2);
}

TEST(SchemaLoader, RefusesNullWhereAValueIsExpected)
{
    EXPECT_EQ(errorOf(R"({"name": null})"), "shop.json: name: must be a string");
    EXPECT_EQ(errorOf(R"({"name": "shop", "port": null})"),
              "shop.json: port: must be an integer between 0 and 65535");
    EXPECT_EQ(errorOf(attributeWith(R"({"type": "string", "array": null})")),
              "shop.json: resources.items.attributes.a.array: must be true or false");
    EXPECT_EQ(
        errorOf(accessWith(R"({"objects": {"post": null}})")),
        "shop.json: resources.items.access.objects.post: must be true, false or an array of attribute names");
    EXPECT_EQ(errorOf(R"(null)"), "shop.json: invalid JSON (Attempt to set value on an empty stack)");
}

TEST(SchemaLoader, RefusesTextAfterTheDefinition)
{
    EXPECT_EQ(errorOf(R"({"name": "shop"} {"name": "depot"})"),
              "shop.json: invalid JSON (Excess characters found after JSON end.)");
}
