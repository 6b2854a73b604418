// The JSON input gate: random bodies written into an object whose element has every attribute type, alone
// and as an array, with and without constraints (schema/gauges.json), in each context a body comes from.
#include "DataLayer/JSONInputProcessor.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/Log.h"
#include "SchemaLoader/SchemaLoader.h"

#include <Poco/AutoPtr.h>
#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <Poco/NullChannel.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

using Orvi::DataLayer::JSONExtractionMap_t;
using Orvi::DataLayer::JSONInputProcessor;
using Orvi::DataLayer::JSONProcessingContext;
using Orvi::DataLayer::JSONProcessingData;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::XObject;
using Orvi::DBData::XObjectId;
using Orvi::Mapping::OperationResult;

constexpr XObjectId GAUGE_ID = 1;
const std::string UUID_TEXT = "9e3c0f1a-0000-4000-8000-000000000001";

void require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "JsonInputFuzzer: %s\n", what);
        std::abort();
    }
}

// Takes every change and requires each changed cell to hold what its attribute accepts.
class CheckingGate : public JSONInputProcessor
{
public:
    explicit CheckingGate(const XObject::Ptr& known)
        : m_known(known)
    {
    }

    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum, const std::string&,
                                                 const std::string&, XObject&,
                                                 Poco::SharedPtr<JSONExtractionMap_t>) override
    {
        require(false, "the gate must hand over its input with the cells");
        return OperationResult::ErrorOnUpdate;
    }

    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum, const std::string&,
                                                 const std::string&, XObject& xObject,
                                                 JSONProcessingData& processingData) override
    {
        require(!processingData.pExtractionMap->empty(), "only a change is handed over");
        for (const auto& [name, cell] : *processingData.pExtractionMap)
        {
            require(cell == xObject.getValue(name), "a changed cell must be the object's own");
            requireAccepted(*cell);
        }
        return OperationResult::ObjectUpdated;
    }

    XObject::Ptr resolveObjectReferenceByDbId(const XObjectId& id) override
    {
        return id == GAUGE_ID ? m_known : XObject::Ptr();
    }

private:
    static void requireAccepted(const AttributeValue& cell)
    {
        const Poco::Dynamic::Var& stored = cell.getValue();
        if (stored.isEmpty())
        {
            return;
        }
        if (!cell.isArray())
        {
            requireAcceptedElement(cell, stored);
            return;
        }
        require(stored.type() == typeid(AttributeValue::ValueArrayPtr), "an array is stored as an array");
        for (const Poco::Dynamic::Var& element : *stored.extract<AttributeValue::ValueArrayPtr>())
        {
            requireAcceptedElement(cell, element);
        }
    }

    // A stored value passes its check again, and unchanged: what is read back can be written back.
    static void requireAcceptedElement(const AttributeValue& cell, const Poco::Dynamic::Var& value)
    {
        Poco::Dynamic::Var again(value);
        require(cell.convertAndCheckValue(again), "a stored value must pass its attribute's check");
        if (cell.getType() != Orvi::DBData::AttrType_Object)
        {
            require(AttributeValue::compareValues(cell.getType(), value, again) == Orvi::Util::EQUAL,
                    "a stored value must pass its check unchanged");
        }
    }

    XObject::Ptr m_known;
};

struct Gauges
{
    Gauges()
    {
        Logging::Log::Logger().setChannel(Poco::AutoPtr<Poco::Channel>(new Poco::NullChannel));
        Logging::Log::SetLogLevel(Poco::Message::PRIO_TRACE, "");
        Orvi::Loader::SchemaLoader().loadFile(FUZZ_SCHEMA_FILE, services);
        element = services.at("garage")->getResource("gauges")->getElement();

        // A stored gauge with a few values, so that writes meet values to compare with and arrays to extend.
        gauge = new XObject(element);
        gauge->setDBID(GAUGE_ID);
        gauge->setId(Orvi::DBData::UUID(UUID_TEXT));
        Orvi::DBData::AttributeValueList cells;
        Orvi::DBData::DbId cellId = 1;
        for (const auto& entry : element->getAttributes())
        {
            cells.emplace_back(new AttributeValue(GAUGE_ID, entry.second, cellId++));
        }
        gauge->setAttributeValues(cells);
        const std::string uri = "/garage/gauges/" + UUID_TEXT;
        gauge->getValue("id")->setValue(UUID_TEXT, true);
        gauge->getValue("uri")->setValue(uri, true);
        gauge->getValue("name")->setValue(std::string("front"), true);
        gauge->getValue("level")->setValue(10, true);
        gauge->getValue("mode")->setValue(std::string("eco"), true);
        gauge->getValue("ratio")->setValue(0.5, true);
        gauge->getValue("enabled")->setValue(true, true);
        gauge->getValue("owner")->setValue(uri, true);
        gauge->getValue("tags")->setValue(AttributeValue::ValueArray{std::string("red")}, true);
        gauge->getValue("counts")->setValue(AttributeValue::ValueArray{3, 6}, true);
        for (const Orvi::DBData::AttributeValuePtr& cell : gauge->getAttributeValues())
        {
            pristine.emplace_back(deepCopy(cell->getValue()));
        }
    }

    static Poco::Dynamic::Var deepCopy(const Poco::Dynamic::Var& value)
    {
        if (value.type() != typeid(AttributeValue::ValueArrayPtr))
        {
            return value;
        }
        return AttributeValue::ValueArrayPtr(
            new AttributeValue::ValueArray(*value.extract<AttributeValue::ValueArrayPtr>()));
    }

    // Writing into a copy must leave the stored object as it was.
    void requireUntouched() const
    {
        const Orvi::DBData::AttributeValueList& cells = gauge->getAttributeValues();
        for (std::size_t i = 0; i < cells.size(); ++i)
        {
            require(AttributeValue::compareValues(cells[i]->getType(), cells[i]->getValue(), pristine[i]) ==
                        Orvi::Util::EQUAL,
                    "writing into a copy must not change the object it was copied from");
        }
    }

    Orvi::DBData::ServiceMap services;
    Orvi::DBData::Element::Ptr element;
    XObject::Ptr gauge;
    std::vector<Poco::Dynamic::Var> pristine;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Gauges gauges;

    Poco::JSON::Object::Ptr body;
    try
    {
        const Poco::Dynamic::Var parsed =
            Poco::JSON::Parser().parse(std::string(reinterpret_cast<const char*>(data), size));
        if (parsed.type() != typeid(Poco::JSON::Object::Ptr))
        {
            return 0; // the front end answers anything but an object with 400 before the gate
        }
        body = parsed.extract<Poco::JSON::Object::Ptr>();
    }
    catch (const Poco::Exception&)
    {
        return 0;
    }

    for (const auto ctx :
         {JSONProcessingContext::InputContext_POST_On_Element,
          JSONProcessingContext::InputContext_POST_On_Resource, JSONProcessingContext::InputContext_IPC,
          JSONProcessingContext::InputContext_POST_On_Element_Cache_Only})
    {
        XObject target(gauges.element);
        target.copyFrom(*gauges.gauge, true);
        CheckingGate gate(gauges.gauge);
        const OperationResult::Enum result =
            gate.processJSONValues(ctx, "garage", "gauges", target, body.get());
        require(result == OperationResult::ObjectUpdated || result == OperationResult::ObjectUnchanged ||
                    result == OperationResult::ErrorOnUpdate,
                "the gate gives what the derived class gives, or its own verdicts");
        gauges.requireUntouched();
    }
    return 0;
}
