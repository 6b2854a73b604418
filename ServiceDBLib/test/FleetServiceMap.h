#pragma once

#include "Command/RequestBase.h"
#include "Command/UrlPath.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/DBData/XObjectCache.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"
#include "JSONDataCache/JSONDataCache.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/SharedPtr.h>
#include <Poco/Types.h>
#include <Poco/URI.h>

#include <string>
#include <vector>

namespace ServiceDB::Test::Fleet
{

// A small database of cars and the people who drive them, for the tests of the object store, its selection
// and its answers.
//
// "fleet" (port 8090):
//   "cars", element "car" (id 1), values numbered in name order:
//     1 brand, 2 driver (reference), 3 id, 4 loads (integer array), 5 mileage (number), 6 name,
//     7 passengers (reference array), 8 seats (integer), 9 tags (string array), 10 uri
//   "people", element "person" (id 2): 1 age (integer), 2 buddy (reference), 3 id, 4 name, 5 uri
//   "hollow", element "nothing" (id 3) without attributes, so that its objects have no values
//   "noelement", a resource without element
// "garage" (port 8091):
//   "spots", element "spot" (id 4): 1 id, 2 level (integer), 3 name, 4 uri

const Poco::UInt16 FLEET_PORT = 8090;
const Poco::UInt16 GARAGE_PORT = 8091;

const Orvi::DBData::DbId CAR_ELEMENT_ID = 1;
const Orvi::DBData::DbId PERSON_ELEMENT_ID = 2;
const Orvi::DBData::DbId NOTHING_ELEMENT_ID = 3;
const Orvi::DBData::DbId SPOT_ELEMENT_ID = 4;

inline Orvi::DBData::Attribute::Ptr
makeAttribute(const std::string& name, Orvi::DBData::AttributeType type = Orvi::DBData::AttrType_String,
              bool isArray = false)
{
    return new Orvi::DBData::Attribute(name, type, isArray);
}

inline Orvi::DBData::Element::Ptr addResource(Orvi::DBData::Service& service, const std::string& resourceName,
                                              const std::string& elementName, Orvi::DBData::DbId elementId,
                                              const std::vector<Orvi::DBData::Attribute::Ptr>& attributes)
{
    Orvi::DBData::Resource::Ptr resource(new Orvi::DBData::Resource(service));
    resource->setName(resourceName);
    Orvi::DBData::Element::Ptr element(new Orvi::DBData::Element(*resource));
    element->setName(elementName);
    element->setDBID(elementId);
    Orvi::DBData::AttributeMap attributeMap;
    for (const Orvi::DBData::Attribute::Ptr& attribute : attributes)
    {
        attributeMap.emplace(attribute->getName(), attribute);
    }
    element->setAttributes(std::move(attributeMap));
    resource->setElement(element);
    service.addResource(resource);
    return element;
}

inline std::vector<Orvi::DBData::Attribute::Ptr>
withDefaults(std::vector<Orvi::DBData::Attribute::Ptr> attributes)
{
    attributes.push_back(makeAttribute("id"));
    attributes.push_back(makeAttribute("name"));
    attributes.push_back(makeAttribute("uri"));
    return attributes;
}

inline Orvi::DBData::ServiceMap makeFleet()
{
    using namespace Orvi::DBData;

    Service::Ptr fleet(new Service);
    fleet->setName("fleet");
    fleet->setPort(FLEET_PORT);
    addResource(*fleet, "cars", "car", CAR_ELEMENT_ID,
                withDefaults({makeAttribute("brand"), makeAttribute("driver", AttrType_Object),
                              makeAttribute("loads", AttrType_Integer, true),
                              makeAttribute("mileage", AttrType_Number),
                              makeAttribute("passengers", AttrType_Object, true),
                              makeAttribute("seats", AttrType_Integer),
                              makeAttribute("tags", AttrType_String, true)}));
    addResource(
        *fleet, "people", "person", PERSON_ELEMENT_ID,
        withDefaults({makeAttribute("age", AttrType_Integer), makeAttribute("buddy", AttrType_Object)}));
    addResource(*fleet, "hollow", "nothing", NOTHING_ELEMENT_ID, {});
    Resource::Ptr noelement(new Resource(*fleet));
    noelement->setName("noelement");
    fleet->addResource(noelement);

    Service::Ptr garage(new Service);
    garage->setName("garage");
    garage->setPort(GARAGE_PORT);
    addResource(*garage, "spots", "spot", SPOT_ELEMENT_ID,
                withDefaults({makeAttribute("level", AttrType_Integer)}));

    return ServiceMap{{"fleet", fleet}, {"garage", garage}};
}

inline Orvi::Command::RequestBase makeRequest(const std::string& address)
{
    return Orvi::Command::RequestBase(Orvi::Command::UrlPath(Poco::URI(address)));
}

// A value as text: null, "text" for strings, [a,b] for stored arrays, the text form of anything else, and
// <uri> for a selected object.
inline std::string describe(const Poco::Dynamic::Var& value)
{
    if (value.isEmpty())
    {
        return "null";
    }
    if (value.type() == typeid(Orvi::DBData::AttributeValue::ValueArrayPtr))
    {
        const Orvi::DBData::AttributeValue::ValueArrayPtr& array =
            value.extract<Orvi::DBData::AttributeValue::ValueArrayPtr>();
        std::string text = "[";
        for (const Poco::Dynamic::Var& element : *array)
        {
            text += (text.size() > 1 ? "," : "") + describe(element);
        }
        return text + "]";
    }
    if (value.type() == typeid(Orvi::DBData::XObject::Ptr))
    {
        const Orvi::DBData::XObject::Ptr& object = value.extract<Orvi::DBData::XObject::Ptr>();
        return "<" + describe(object->getValue("uri")->getValue()) + ">";
    }
    if (value.type() == typeid(std::string))
    {
        return "\"" + value.extract<std::string>() + "\"";
    }
    return value.convert<std::string>();
}

// Every value of an object in its list order, as name=value.
inline std::string describe(const Orvi::DBData::XObject& object)
{
    std::string text;
    for (const Orvi::DBData::AttributeValuePtr& value : object.getAttributeValues())
    {
        text += (text.empty() ? "" : " ") + value->getName() + "=" + describe(value->getValue());
    }
    return text;
}

// Lets a test look into the store behind the selections, which hand out copies only.
class InspectableCache : public Orvi::JSONDataCache::JSONDataCache
{
public:
    using Orvi::JSONDataCache::JSONDataCache::JSONDataCache;

    const Orvi::DBData::XObjectCache& store() const { return m_xobjCache; }
    using Orvi::JSONDataCache::JSONDataCache::isDanglingSuspect;
};

} // namespace ServiceDB::Test::Fleet
