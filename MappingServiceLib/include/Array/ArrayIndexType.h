#pragma once

#include <Poco/Types.h>

namespace Orvi::Mapping::Array
{

using ArrayIndexType_t = Poco::UInt32;
/// The position of an item in a service's array of items.

} // namespace Orvi::Mapping::Array
