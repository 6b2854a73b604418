#pragma once

#include "Data/AttributeBase.h"
#include "Data/AttributeValueBase.h"
#include "DataAccess/ElementAccess.h"
#include "IServiceDataHandler.h"
#include "JSONDataCache/DBData/XObject.h"
#include "MappingTypes.h"
#include "OperationResult.h"
#include "ProcessingData.h"
#include "TestSupport/JsonText.h"

#include <Poco/JSON/Object.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ServiceDB::Test
{

// A data handler that records every call in order and answers with results chosen by the test.
//
// Each call is kept as a Call and as one line of text, e.g.
//   updateToMapper fleet.cars 0c...e1 #5 {seats=4} json={"seats":4}
// where #5 is the id in the processing data, {...} the values by name as JSON ("{}" for an empty map,
// "-" when there was no map), and json the request's object ("-" when there was none). Delete calls
// list the attribute names instead: beforeDeleteAttributes fleet.cars 0c...e1 [seats,tags].
class RecordingDataHandler : public Orvi::Mapping::IServiceDataHandler
{
public:
    struct Call
    {
        std::string operation;
        std::string service;
        std::string resource;
        std::string uuid;
        Orvi::Mapping::XObjectId xObjId = -1;
        bool hasValues = false;
        std::map<std::string, std::string> values;
        std::string json;
        std::vector<std::string> attributes;
        Orvi::DBData::XObject::Ptr viewed;
        // The stored object behind the view; null when the handler was given no ElementAccess.
    };

    Orvi::Mapping::OperationResult::Enum updateToDb(const std::string& service, const std::string& resource,
                                                    const Orvi::Mapping::XObject& xobject,
                                                    Orvi::Mapping::ProcessingData& data) override
    {
        record(makeCall("updateToDb", service, resource, xobject, &data, nullptr));
        return updateToDbResult;
    }

    Orvi::Mapping::OperationResult::Enum updateToMapper(const std::string& service,
                                                        const std::string& resource,
                                                        const Orvi::Mapping::XObject& xobject,
                                                        Orvi::Mapping::ProcessingData& data) override
    {
        record(makeCall("updateToMapper", service, resource, xobject, &data, nullptr));
        return updateToMapperResult;
    }

    Orvi::Mapping::OperationResult::Enum beforeDeleteObject(const std::string& service,
                                                            const std::string& resource,
                                                            const Orvi::Mapping::XObject& xobject) override
    {
        record(makeCall("beforeDeleteObject", service, resource, xobject, nullptr, nullptr));
        return beforeDeleteObjectResult;
    }

    void afterDeleteObject(const std::string& service, const std::string& resource,
                           const Orvi::Mapping::XObject& xobject) override
    {
        record(makeCall("afterDeleteObject", service, resource, xobject, nullptr, nullptr));
    }

    Orvi::Mapping::OperationResult::Enum
    beforeDeleteAttributes(const std::string& service, const std::string& resource,
                           const Orvi::Mapping::XObject& xobject,
                           const std::vector<std::string>& attributes) override
    {
        record(makeCall("beforeDeleteAttributes", service, resource, xobject, nullptr, &attributes));
        return beforeDeleteAttributesResult;
    }

    void afterDeleteAttributes(const std::string& service, const std::string& resource,
                               const Orvi::Mapping::XObject& xobject,
                               const std::vector<std::string>& attributes) override
    {
        record(makeCall("afterDeleteAttributes", service, resource, xobject, nullptr, &attributes));
    }

    bool addToMapperCache(const std::string& service, const Orvi::Mapping::XObject& xobject,
                          const Orvi::Mapping::AttributeMapPtr& values) override
    {
        Call call = makeCall("addToMapperCache", service, "", xobject, nullptr, nullptr);
        describeValues(call, values);
        record(call);
        return addToMapperCacheResult;
    }

    bool clearMapperCache(const std::string& service) override
    {
        Call call;
        call.operation = "clearMapperCache";
        call.service = service;
        record(call);
        return clearMapperCacheResult;
    }

    const std::vector<Call>& calls() const { return m_calls; }

    const std::vector<std::string>& lines() const { return m_lines; }
    // The calls as text, oldest first.

    Orvi::Mapping::OperationResult::Enum updateToDbResult = Orvi::Mapping::OperationResult::ObjectUpdated;
    Orvi::Mapping::OperationResult::Enum updateToMapperResult = Orvi::Mapping::OperationResult::ObjectUpdated;
    Orvi::Mapping::OperationResult::Enum beforeDeleteObjectResult =
        Orvi::Mapping::OperationResult::ObjectUpdated;
    Orvi::Mapping::OperationResult::Enum beforeDeleteAttributesResult =
        Orvi::Mapping::OperationResult::ObjectUpdated;
    bool addToMapperCacheResult = true;
    bool clearMapperCacheResult = true;

    std::function<void(const Call&)> onCall;
    // Runs inside each call after it was recorded, so that a test can look at the world as the handler
    // sees it.

private:
    static Call makeCall(const std::string& operation, const std::string& service,
                         const std::string& resource, const Orvi::Mapping::XObject& xobject,
                         const Orvi::Mapping::ProcessingData* data,
                         const std::vector<std::string>* attributes)
    {
        Call call;
        call.operation = operation;
        call.service = service;
        call.resource = resource;
        call.uuid = xobject.getId().toString();
        const auto* access = dynamic_cast<const Orvi::Service::DataAccess::ElementAccess*>(&xobject);
        if (access != nullptr)
        {
            call.viewed = access->getBase();
        }
        if (data != nullptr)
        {
            call.xObjId = data->xObjId;
            describeValues(call, data->values);
            call.json = data->orgJsonObj == nullptr
                            ? "-"
                            : toJson(Poco::JSON::Object::Ptr(new Poco::JSON::Object(*data->orgJsonObj)));
        }
        if (attributes != nullptr)
        {
            call.attributes = *attributes;
        }
        return call;
    }

    static void describeValues(Call& call, const Orvi::Mapping::AttributeMapPtr& values)
    {
        call.hasValues = !values.isNull();
        if (values.isNull())
        {
            return;
        }
        for (const auto& [name, attribute] : *values)
        {
            const Orvi::Data::AttributeValueBase* value =
                attribute.isNull() ? nullptr : attribute->getValueBase();
            call.values[name] = value == nullptr ? "null" : toJson(value->toJSON(0));
        }
    }

    static std::string describe(const Call& call)
    {
        std::string text = call.operation + " " + call.service;
        if (!call.resource.empty())
        {
            text += "." + call.resource;
        }
        if (!call.uuid.empty())
        {
            text += " " + call.uuid;
        }
        if (call.operation == "updateToDb" || call.operation == "updateToMapper")
        {
            text += " #" + std::to_string(call.xObjId);
        }
        if (call.operation == "updateToDb" || call.operation == "updateToMapper" ||
            call.operation == "addToMapperCache")
        {
            text += " " + describeValueMap(call);
        }
        if (call.operation == "updateToDb" || call.operation == "updateToMapper")
        {
            text += " json=" + call.json;
        }
        if (call.operation == "beforeDeleteAttributes" || call.operation == "afterDeleteAttributes")
        {
            std::string names;
            for (const std::string& name : call.attributes)
            {
                names += (names.empty() ? "" : ",") + name;
            }
            text += " [" + names + "]";
        }
        return text;
    }

    static std::string describeValueMap(const Call& call)
    {
        if (!call.hasValues)
        {
            return "-";
        }
        std::string text;
        for (const auto& [name, json] : call.values)
        {
            text += (text.empty() ? "" : ", ") + name + "=" + json;
        }
        return "{" + text + "}";
    }

    void record(const Call& call)
    {
        m_calls.push_back(call);
        m_lines.push_back(describe(call));
        if (onCall)
        {
            onCall(m_calls.back());
        }
    }

    std::vector<Call> m_calls;
    std::vector<std::string> m_lines;
};

} // namespace ServiceDB::Test
