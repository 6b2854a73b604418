#pragma once

#include "FleetServiceMap.h"
#include "JSONDataCache/DBData/ConstraintEnum.h"
#include "JSONDataCache/DBData/ConstraintOneOf.h"
#include "JSONDataCache/DBData/ConstraintResolution.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/SharedPtr.h>
#include <Poco/Types.h>

#include <string>

namespace ServiceDB::Test
{

// A cabin gadget with an attribute of every type, for the tests that write values into objects:
// "cabin.gadgets.gadget" with, in name order, count (integer 0..10), enabled (boolean), id,
// levels (integer array), mode (string "eco" or "boost"), name, owner (reference), partner (reference
// to gadgets only), ratio (number), size (unsigned), tags (string array), targets (reference array), uri.
// The object has the id 7; count is 3, mode "eco", tags ["a"], and every other attribute but the
// defaults is null.
struct GadgetObject
{
    static constexpr Orvi::DBData::DbId ID = 7;
    static constexpr const char* UUID_TEXT = "6a000000-0000-4000-8000-000000000007";

    GadgetObject()
    {
        using namespace Orvi::DBData;
        using Fleet::makeAttribute;

        Attribute::Ptr count = makeAttribute("count", AttrType_Integer);
        Poco::SharedPtr<ConstraintResolution> range(new ConstraintResolution);
        range->setMinimum(Poco::Int64(0));
        range->setMaximum(Poco::Int64(10));
        count->setConstraints({range});

        Attribute::Ptr mode = makeAttribute("mode");
        Poco::SharedPtr<ConstraintEnum> modes(new ConstraintEnum);
        modes->setEnumValues({"eco", "boost"});
        mode->setConstraints({modes});

        Attribute::Ptr partner = makeAttribute("partner", AttrType_Object);
        Poco::SharedPtr<ConstraintOneOf> gadgetsOnly(new ConstraintOneOf);
        gadgetsOnly->setClasses({"cabin.gadgets.gadget"});
        partner->setConstraints({gadgetsOnly});

        service->setName("cabin");
        element = Fleet::addResource(*service, "gadgets", "gadget", 11,
                                     Fleet::withDefaults({count, makeAttribute("enabled", AttrType_Boolean),
                                                          makeAttribute("levels", AttrType_Integer, true),
                                                          mode, makeAttribute("owner", AttrType_Object),
                                                          partner, makeAttribute("ratio", AttrType_Number),
                                                          makeAttribute("size", AttrType_IntegerUnsigned),
                                                          makeAttribute("tags", AttrType_String, true),
                                                          makeAttribute("targets", AttrType_Object, true)}));

        object = new XObject(element);
        object->setDBID(ID);
        object->setId(UUID(UUID_TEXT));
        DbId cellId = 1;
        AttributeValueList cells;
        for (const auto& [name, attribute] : element->getAttributes())
        {
            cells.emplace_back(new AttributeValue(ID, attribute, cellId++));
        }
        object->setAttributeValues(cells);
        set("count", Poco::Int64(3));
        set("id", std::string(UUID_TEXT));
        set("mode", std::string("eco"));
        set("name", std::string("lamp"));
        set("tags", Poco::Dynamic::Var(AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray{"a"})));
        set("uri", "/cabin/gadgets/" + std::string(UUID_TEXT));
    }

    void set(const std::string& attribute, const Poco::Dynamic::Var& value)
    {
        object->getValue(attribute)->setValue(value, false);
    }

    // The value of an attribute as text, see Fleet::describe.
    std::string value(const std::string& attribute) const
    {
        return Fleet::describe(object->getValue(attribute)->getValue());
    }

    Orvi::DBData::Service::Ptr service{new Orvi::DBData::Service};
    Orvi::DBData::Element::Ptr element;
    Orvi::DBData::XObject::Ptr object;
};

} // namespace ServiceDB::Test
