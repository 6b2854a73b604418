#pragma once

#include "Data/DataTypes.h"
#include "DataHandler/Array/ServiceArrayListBase.h"

#include <Poco/SharedPtr.h>

namespace Orvi::Mapping
{

using XObjectId = Orvi::Data::XObjectId;
/// The id of an object in the typed world; the same number as the database id of its row.

using XObject = Orvi::Data::XObjectBase;
/// The object that a data handler is given; the database passes a view on the stored object.

using AttributeMapPtr = Poco::SharedPtr<Orvi::Data::AttributeMap>;
/// Typed attributes by name.

using ServiceArrayIndexType_t = DataHandler::Array::ServiceArrayListBase::ServiceArrayIndexType_t;
/// The array index that names a mapped object together with its 32-bit object id.

} // namespace Orvi::Mapping
