#include "TestSupport/JsonText.h"

#include <Poco/JSON/Parser.h>
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

Poco::JSON::Object::Ptr parseObject(const std::string& text)
{
    return Poco::JSON::Parser().parse(text).extract<Poco::JSON::Object::Ptr>();
}

} // namespace ServiceDB::Test
