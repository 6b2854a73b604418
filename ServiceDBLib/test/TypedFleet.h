#pragma once

#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace ServiceDB::Test::Fleet
{

// The fleet database filled for the typed views: three people and two cars, inserted in this order, so
// that the people get the ids 1 to 3 and the cars 4 and 5.
//   Ann (age 41) and Bo (age 35) have ages; Cy has none, so that a reference to him stays bare.
//   The Volvo (brand, seats 5, mileage 1234.5, loads [1,2], tags [red,fast], name "Volvo") is driven by
//   Ann and carries Ann and Bo. The second car holds nothing but its identity and an empty name.
const std::string ANN = "b0000000-0000-4000-8000-000000000001";
const std::string BO = "b0000000-0000-4000-8000-000000000002";
const std::string CY = "b0000000-0000-4000-8000-000000000003";
const std::string VOLVO = "c0000000-0000-4000-8000-000000000002";
const std::string EMPTY_CAR = "c0000000-0000-4000-8000-000000000001";

const Orvi::DBData::DbId ANN_ID = 1;
const Orvi::DBData::DbId BO_ID = 2;
const Orvi::DBData::DbId CY_ID = 3;
const Orvi::DBData::DbId VOLVO_ID = 4;
const Orvi::DBData::DbId EMPTY_CAR_ID = 5;

inline std::string personUri(const std::string& uuid)
{
    return "/fleet/people/" + uuid;
}

inline std::string carUri(const std::string& uuid)
{
    return "/fleet/cars/" + uuid;
}

class TypedFleet
{
public:
    TypedFleet()
    {
        insert("people", ANN);
        insert("people", BO);
        insert("people", CY);
        insert("cars", VOLVO);
        insert("cars", EMPTY_CAR);
        write(ANN, "name", Poco::Dynamic::Var("Ann"));
        write(ANN, "age", Poco::Dynamic::Var(41));
        write(BO, "name", Poco::Dynamic::Var("Bo"));
        write(BO, "age", Poco::Dynamic::Var(35));
        write(CY, "name", Poco::Dynamic::Var("Cy"));
        write(VOLVO, "name", Poco::Dynamic::Var("Volvo"));
        write(VOLVO, "brand", Poco::Dynamic::Var("Volvo"));
        write(VOLVO, "seats", Poco::Dynamic::Var(5));
        write(VOLVO, "mileage", Poco::Dynamic::Var(1234.5));
        writeArray(VOLVO, "loads", {Poco::Dynamic::Var(1), Poco::Dynamic::Var(2)});
        writeArray(VOLVO, "tags", {Poco::Dynamic::Var("red"), Poco::Dynamic::Var("fast")});
        write(VOLVO, "driver", Poco::Dynamic::Var(personUri(ANN)));
        writeArray(VOLVO, "passengers",
                   {Poco::Dynamic::Var(personUri(ANN)), Poco::Dynamic::Var(personUri(BO))});
    }

    void insert(const std::string& resource, const std::string& uuid)
    {
        std::string newUUID = uuid;
        Orvi::DBData::DbId newDBID = -1;
        EXPECT_TRUE(cache.insertXObject("fleet", resource, newUUID, newDBID)) << resource << " " << uuid;
    }

    void write(const std::string& uuid, const std::string& attribute, const Poco::Dynamic::Var& value)
    {
        Orvi::DBData::XObject::Ptr copy = cache.selectXObject(uuid, -1);
        Orvi::DBData::AttributeValuePtr cell = copy->getValue(attribute);
        EXPECT_TRUE(cell->setValue(value)) << attribute;
        EXPECT_TRUE(cache.updateCacheAttributeValueById(*cell, true)) << attribute;
    }

    void writeArray(const std::string& uuid, const std::string& attribute,
                    const std::vector<Poco::Dynamic::Var>& elements)
    {
        write(uuid, attribute,
              Poco::Dynamic::Var(Orvi::DBData::AttributeValue::ValueArrayPtr(
                  new Orvi::DBData::AttributeValue::ValueArray(elements))));
    }

    Orvi::DBData::Element::Ptr element(const std::string& resource)
    {
        return cache.selectElement("fleet", resource);
    }

    Orvi::DBData::ServiceMap services = makeFleet();
    InspectableCache cache{services};
};

// A stored cell of the given definition holding the value as it stands, without conversion.
inline Orvi::DBData::AttributeValuePtr makeCell(Orvi::DBData::DbId parent, const std::string& name,
                                                Orvi::DBData::AttributeType type, bool isArray,
                                                const Poco::Dynamic::Var& value,
                                                Orvi::DBData::DbId cellId = 1)
{
    Orvi::DBData::AttributeValuePtr cell(
        new Orvi::DBData::AttributeValue(parent, makeAttribute(name, type, isArray), cellId));
    cell->setValue(value, false);
    return cell;
}

// An object that is not in any store, made of the given cells in their order.
inline Orvi::DBData::XObject::Ptr makeObject(Orvi::DBData::DbId id, const std::string& uuid,
                                             const Orvi::DBData::AttributeValueList& cells)
{
    Orvi::DBData::XObject::Ptr object(new Orvi::DBData::XObject(Orvi::DBData::Element::Ptr()));
    object->setDBID(id);
    object->setId(Orvi::DBData::UUID(uuid));
    object->setAttributeValues(cells);
    return object;
}

inline std::string stringify(const Poco::JSON::Object::Ptr& json)
{
    std::ostringstream text;
    json->stringify(text);
    return text.str();
}

} // namespace ServiceDB::Test::Fleet
