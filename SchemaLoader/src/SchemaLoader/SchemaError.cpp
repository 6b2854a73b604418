#include "SchemaLoader/SchemaError.h"

#include <typeinfo>

namespace Orvi::Loader
{

POCO_IMPLEMENT_EXCEPTION(SchemaError, Poco::DataFormatException, "Invalid service definition")

} // namespace Orvi::Loader
