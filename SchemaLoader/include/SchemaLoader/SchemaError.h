#pragma once

#include <Poco/Exception.h>

namespace Orvi::Loader
{

/// A service definition that cannot be loaded: malformed JSON, a wrong or unknown key, a value out of
/// range, or a file that cannot be read. The message reads "<source>: <location>: <reason>", where the
/// location is the dotted JSON path of the offending value (array items as [n]).
POCO_DECLARE_EXCEPTION(, SchemaError, Poco::DataFormatException)

} // namespace Orvi::Loader
