#include "TestSupport/JsonText.h"

#include <Poco/JSON/Stringifier.h>

#include <sstream>

namespace ServiceDB::Test
{

std::string toJson(const Poco::Dynamic::Var& value)
{
    std::ostringstream text;
    Poco::JSON::Stringifier::stringify(value, text);
    return text.str();
}

} // namespace ServiceDB::Test
