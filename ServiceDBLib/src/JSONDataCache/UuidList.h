#pragma once

#include "JSONDataCache/DBData/AttributeValue.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>

#include <string>
#include <vector>

namespace Orvi::JSONDataCache
{

/// The UUIDs of a stored array of references; false when the value is not such an array.
inline bool extractUuidList(const Poco::Dynamic::Var& value, std::vector<std::string>& out_uuids)
{
    try
    {
        const DBData::AttributeValue::ValueArrayPtr array =
            value.extract<DBData::AttributeValue::ValueArrayPtr>();
        if (array.isNull())
        {
            return false;
        }
        out_uuids.clear();
        out_uuids.reserve(array->size());
        for (const Poco::Dynamic::Var& element : *array)
        {
            out_uuids.push_back(element.convert<std::string>());
        }
        return true;
    }
    catch (const Poco::Exception&)
    {
        return false;
    }
}

} // namespace Orvi::JSONDataCache
