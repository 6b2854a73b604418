#pragma once

#include "Array/ArrayIndexType.h"

#include <Poco/Types.h>

namespace Orvi::Mapping::Array
{

/// Keeps the array positions of a service's items, for handlers that list their objects in arrays.
class IArrayIndexManager
{
public:
    virtual ~IArrayIndexManager() = default;

    virtual bool getArrayIndex(Poco::Int32 objId, ArrayIndexType_t& retIndex) const = 0;
    /// The position under which the object is listed; false, with retIndex untouched, for an object
    /// that is not listed.
};

} // namespace Orvi::Mapping::Array
