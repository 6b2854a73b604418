#include "DataAccess/ElementAccess.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/OrviDataConverter.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/JSONDataCache.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace
{

using Orvi::DBData::AttributeValue;
using Orvi::DBData::XObject;
using Poco::Dynamic::Var;

const std::string SERVICE = "motorpool";
const std::string CARS = "cars";
const std::string PEOPLE = "people";
const std::string CAR = "c1000000-0000-4000-8000-000000000001";
const std::vector<std::string> PEOPLE_UUIDS{"b1000000-0000-4000-8000-000000000001",
                                            "b1000000-0000-4000-8000-000000000002",
                                            "b1000000-0000-4000-8000-000000000003"};

using AttributeList = std::vector<std::tuple<std::string, Orvi::DBData::AttributeType, bool>>;

/// A car with ten attributes, among them a driver and a list of passengers that refer to people, in a
/// cache of its own.
class Motorpool
{
public:
    Motorpool()
    {
        Orvi::DBData::Service::Ptr service = new Orvi::DBData::Service;
        service->setName(SERVICE);
        addResource(*service, PEOPLE, 1,
                    {{"id", Orvi::DBData::AttrType_String, false},
                     {"name", Orvi::DBData::AttrType_String, false},
                     {"uri", Orvi::DBData::AttrType_String, false},
                     {"age", Orvi::DBData::AttrType_Integer, false}});
        addResource(*service, CARS, 2,
                    {{"id", Orvi::DBData::AttrType_String, false},
                     {"name", Orvi::DBData::AttrType_String, false},
                     {"uri", Orvi::DBData::AttrType_String, false},
                     {"brand", Orvi::DBData::AttrType_String, false},
                     {"model", Orvi::DBData::AttrType_String, false},
                     {"seats", Orvi::DBData::AttrType_Integer, false},
                     {"mileage", Orvi::DBData::AttrType_Number, false},
                     {"electric", Orvi::DBData::AttrType_Boolean, false},
                     {"driver", Orvi::DBData::AttrType_Object, false},
                     {"passengers", Orvi::DBData::AttrType_Object, true}});
        m_services[SERVICE] = service;
        m_cache = std::make_unique<Orvi::JSONDataCache::JSONDataCache>(m_services);
    }

    Orvi::JSONDataCache::JSONDataCache& cache() { return *m_cache; }

    // The people and the car with all its values. False on the first refusal.
    bool fill()
    {
        int age = 30;
        for (const std::string& uuid : PEOPLE_UUIDS)
        {
            if (!insert(PEOPLE, uuid) || !write(uuid, "name", Var("person-" + uuid.substr(7, 1))) ||
                !write(uuid, "age", Var(age++)))
            {
                return false;
            }
        }
        AttributeValue::ValueArrayPtr passengers(new AttributeValue::ValueArray);
        for (const std::string& uuid : PEOPLE_UUIDS)
        {
            passengers->emplace_back(addressOf(PEOPLE, uuid));
        }
        return insert(CARS, CAR) && write(CAR, "name", Var("car-1")) && write(CAR, "brand", Var("Volvo")) &&
               write(CAR, "model", Var("V70")) && write(CAR, "seats", Var(5)) &&
               write(CAR, "mileage", Var(123456.5)) && write(CAR, "electric", Var(false)) &&
               write(CAR, "driver", Var(addressOf(PEOPLE, PEOPLE_UUIDS.front()))) &&
               write(CAR, "passengers", Var(passengers));
    }

private:
    static std::string addressOf(const std::string& resource, const std::string& uuid)
    {
        return "/" + SERVICE + "/" + resource + "/" + uuid;
    }

    static void addResource(Orvi::DBData::Service& service, const std::string& name,
                            Orvi::DBData::DbId elementId, const AttributeList& attributeList)
    {
        Orvi::DBData::Resource::Ptr resource = new Orvi::DBData::Resource(service);
        resource->setName(name);
        Orvi::DBData::Element::Ptr element = new Orvi::DBData::Element(*resource);
        element->setName(name);
        element->setDBID(elementId);
        Orvi::DBData::AttributeMap attributes;
        for (const auto& [attribute, type, isArray] : attributeList)
        {
            attributes.emplace(attribute, new Orvi::DBData::Attribute(attribute, type, isArray));
        }
        element->setAttributes(std::move(attributes));
        resource->setElement(element);
        service.addResource(resource);
    }

    bool insert(const std::string& resource, const std::string& uuid)
    {
        std::string newUUID = uuid;
        return m_cache->insertXObject(SERVICE, resource, newUUID);
    }

    bool write(const std::string& uuid, const std::string& attribute, const Var& value)
    {
        const XObject::Ptr copy = m_cache->selectXObject(uuid, -1);
        if (copy.isNull())
        {
            return false;
        }
        Orvi::DBData::AttributeValuePtr cell = copy->getValue(attribute);
        return !cell.isNull() && cell->setValue(value) && m_cache->updateCacheAttributeValueById(*cell, true);
    }

    Orvi::DBData::ServiceMap m_services;
    std::unique_ptr<Orvi::JSONDataCache::JSONDataCache> m_cache;
};

// The stored car as a selection hands it out, its references read one level deep, to a typed object.
void BM_TypedAccessCreateXObjectGeneric(benchmark::State& state)
{
    Motorpool motorpool;
    if (!motorpool.fill())
    {
        state.SkipWithError("the motorpool could not be filled");
        return;
    }
    const XObject::Ptr car = motorpool.cache().selectXObject(CAR, 1);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(Orvi::DBData::OrviDataConverter::createXObjectGeneric(*car));
    }
}

// A fresh view of the car rendered in full: every attribute is converted, and the bare references of a
// selection at depth 0 are read again through the cache, as each new view does once.
void BM_TypedAccessElementToJSON(benchmark::State& state)
{
    Motorpool motorpool;
    if (!motorpool.fill())
    {
        state.SkipWithError("the motorpool could not be filled");
        return;
    }
    const XObject::Ptr car = motorpool.cache().selectXObject(CAR, 0);
    {
        const Orvi::Service::DataAccess::ElementAccess probe(car, SERVICE, CARS, &motorpool.cache());
        const Poco::JSON::Object::Ptr driver = probe.toJSON(1)->getObject("driver");
        if (driver.isNull() || !driver->has("age"))
        {
            state.SkipWithError("the references were not resolved");
            return;
        }
    }
    for (auto _ : state)
    {
        const Orvi::Service::DataAccess::ElementAccess view(car, SERVICE, CARS, &motorpool.cache());
        benchmark::DoNotOptimize(view.toJSON(1));
    }
}

} // namespace

BENCHMARK(BM_TypedAccessCreateXObjectGeneric)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TypedAccessElementToJSON)->Unit(benchmark::kMicrosecond);
