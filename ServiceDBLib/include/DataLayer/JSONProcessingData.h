#pragma once

#include "DataLayer/JSONExtractionMap_t.h"

#include <Poco/JSON/Object.h>
#include <Poco/SharedPtr.h>

namespace Orvi::DataLayer
{

/// The JSON object that enters an object, and the cells it changed.
struct JSONProcessingData
{
    Poco::SharedPtr<JSONExtractionMap_t> pExtractionMap;
    /// The changed cells; empty until processing has found a change.

    const Poco::JSON::Object* pObj = nullptr;
    /// The input, not owned.
};

} // namespace Orvi::DataLayer
