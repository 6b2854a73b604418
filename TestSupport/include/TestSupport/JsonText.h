#pragma once

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>

#include <string>

namespace ServiceDB::Test
{

std::string toJson(const Poco::Dynamic::Var& value);
/// The compact JSON text of a value: an object or array (by pointer or by value), or a scalar.

Poco::JSON::Object::Ptr parseObject(const std::string& text);
/// The JSON object of the text; raises Poco::JSON::JSONException for bad JSON and
/// Poco::BadCastException for JSON that is no object.

} // namespace ServiceDB::Test
