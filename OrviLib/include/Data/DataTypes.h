#pragma once

#include <Poco/Dynamic/Var.h>
#include <Poco/SharedPtr.h>
#include <Poco/Types.h>

#include <map>
#include <string>

namespace Orvi::Data
{

using XObjectId = Poco::Int64;
/// The id of an object in the typed world; the same number as the database id of its row.

using GenericValue = Poco::Dynamic::Var;
/// A value of any type, as the typed values give it by asGeneric().

class AttributeBase;
class XObjectBase;

using AttributeMap = std::map<std::string, Poco::SharedPtr<AttributeBase>>;
/// Named attributes in the byte order of their names.

} // namespace Orvi::Data
