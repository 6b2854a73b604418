#pragma once

#include "JSONDataCache/DBData/AttributeValue.h"

#include <Poco/SharedPtr.h>

#include <map>
#include <string>

namespace Orvi::DataLayer
{

/// The cells of an object that an input changed, by attribute name. The cells are the object's own,
/// not copies.
struct JSONExtractionMap_t : public std::map<std::string, Poco::SharedPtr<DBData::AttributeValue>>
{
};

} // namespace Orvi::DataLayer
