#include "DataLayer/JSONInputProcessor.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"

#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>

#include <benchmark/benchmark.h>

#include <string>
#include <tuple>

namespace
{

using Orvi::DataLayer::JSONExtractionMap_t;
using Orvi::DataLayer::JSONInputProcessor;
using Orvi::DataLayer::JSONProcessingContext;
using Orvi::DataLayer::JSONProcessingData;
using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::XObject;
using Orvi::Mapping::OperationResult;

// Takes every change and does nothing with it, so that only the gate is measured.
class AcceptingProcessor : public JSONInputProcessor
{
public:
    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum, const std::string&,
                                                 const std::string&, XObject&,
                                                 Poco::SharedPtr<JSONExtractionMap_t>) override
    {
        return OperationResult::ObjectUpdated;
    }

    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum, const std::string&,
                                                 const std::string&, XObject&, JSONProcessingData&) override
    {
        return OperationResult::ObjectUpdated;
    }

    XObject::Ptr resolveObjectReferenceByDbId(const Orvi::DBData::XObjectId&) override { return {}; }
};

// A climate zone of 10 attributes; a POST sets five of them.
struct Zone
{
    Zone()
        : resource(service)
        , element(new Orvi::DBData::Element(resource))
        , object(new XObject(element))
    {
        using namespace Orvi::DBData;
        AttributeMap attributes;
        for (const auto& [name, type, isArray] :
             {std::tuple{"fan", AttrType_Integer, false}, std::tuple{"id", AttrType_String, false},
              std::tuple{"label", AttrType_String, false}, std::tuple{"mode", AttrType_String, false},
              std::tuple{"name", AttrType_String, false}, std::tuple{"occupied", AttrType_Boolean, false},
              std::tuple{"presets", AttrType_Integer, true}, std::tuple{"seat", AttrType_Object, false},
              std::tuple{"setpoint", AttrType_Number, false}, std::tuple{"uri", AttrType_String, false}})
        {
            attributes.emplace(name, new Attribute(name, type, isArray));
        }
        element->setName("zone");
        element->setAttributes(std::move(attributes));
        object->setDBID(1);
        object->setId(UUID("5a000000-0000-4000-8000-000000000001"));
        DbId cellId = 1;
        AttributeValueList cells;
        for (const auto& [name, attribute] : element->getAttributes())
        {
            cells.emplace_back(new AttributeValue(1, attribute, cellId++));
        }
        object->setAttributeValues(cells);
    }

    Orvi::DBData::Service service;
    Orvi::DBData::Resource resource;
    Orvi::DBData::Element::Ptr element;
    XObject::Ptr object;
};

Poco::JSON::Object::Ptr body(int fan, double setpoint)
{
    const std::string text = R"({"fan": )" + std::to_string(fan) + R"(, "label": "driver", "mode": "auto",)" +
                             R"( "occupied": true, "setpoint": )" + std::to_string(setpoint) + "}";
    return Poco::JSON::Parser().parse(text).extract<Poco::JSON::Object::Ptr>();
}

// Every call changes two of the five members, so the changed cells are handed on each time.
void BM_ProcessFiveMembersWithChanges(benchmark::State& state)
{
    Zone zone;
    AcceptingProcessor sut;
    const Poco::JSON::Object::Ptr bodies[] = {body(1, 21.5), body(2, 22.0)};
    std::size_t call = 0;
    for (auto _ : state)
    {
        const auto result = sut.processJSONValues(JSONProcessingContext::InputContext_POST_On_Element,
                                                  "cabin", "zones", *zone.object, bodies[call++ % 2].get());
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(BM_ProcessFiveMembersWithChanges);

// The same body again and again: every member is converted, checked and compared, nothing changes.
void BM_ProcessFiveMembersUnchanged(benchmark::State& state)
{
    Zone zone;
    AcceptingProcessor sut;
    const Poco::JSON::Object::Ptr input = body(1, 21.5);
    sut.processJSONValues(JSONProcessingContext::InputContext_POST_On_Element, "cabin", "zones", *zone.object,
                          input.get());
    for (auto _ : state)
    {
        const auto result = sut.processJSONValues(JSONProcessingContext::InputContext_POST_On_Element,
                                                  "cabin", "zones", *zone.object, input.get());
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(BM_ProcessFiveMembersUnchanged);

} // namespace
