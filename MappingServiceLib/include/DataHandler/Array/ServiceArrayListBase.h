#pragma once

#include "Array/ArrayIndexType.h"

namespace Orvi::Mapping::DataHandler::Array
{

/// Base of the lists in which a data handler keeps the items of a service's arrays; it names the type
/// of their positions.
class ServiceArrayListBase
{
public:
    using ServiceArrayIndexType_t = Orvi::Mapping::Array::ArrayIndexType_t;
    /// Together with a 32-bit object id, the position names one mapped object.
};

} // namespace Orvi::Mapping::DataHandler::Array
