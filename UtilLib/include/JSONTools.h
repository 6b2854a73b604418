#pragma once

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include <string>

namespace Orvi::Util
{

/// Small helpers around Poco::JSON.
class JSONTools
{
public:
    static bool parseJSONString(const std::string& text, Poco::JSON::Object::Ptr& out_object);
    /// Parses text that must hold one JSON object; false, with out_object unchanged, for anything else.

    static bool testJsonArray(const Poco::Dynamic::Var& value, const Poco::JSON::Array** out_array);
    /// True if the value holds a JSON array; then *out_array (if out_array is not null) points to it.
};

} // namespace Orvi::Util
