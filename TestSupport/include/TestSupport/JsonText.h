#pragma once

#include <Poco/Dynamic/Var.h>

#include <string>

namespace ServiceDB::Test
{

std::string toJson(const Poco::Dynamic::Var& value);
/// The compact JSON text of a value: an object or array (by pointer or by value), or a scalar.

} // namespace ServiceDB::Test
