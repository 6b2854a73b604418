#pragma once

#include "MappingTypes.h"

#include <Poco/JSON/Object.h>

namespace Orvi::Mapping
{

/// What a data handler is given with a write of one object.
struct ProcessingData
{
    XObjectId xObjId = -1;
    /// The database id of the object; -1 for none.

    AttributeMapPtr values;
    /// The new values by attribute name; null when the input named no changed attribute.

    const Poco::JSON::Object* orgJsonObj = nullptr;
    /// The JSON object of the request that the values came from; not owned, may be null.
};

} // namespace Orvi::Mapping
