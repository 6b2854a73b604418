#include "JSONTools.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Parser.h>

#include <utility>

namespace Orvi::Util
{

bool JSONTools::parseJSONString(const std::string& text, Poco::JSON::Object::Ptr& out_object)
{
    try
    {
        Poco::JSON::Parser parser;
        const Poco::Dynamic::Var result = parser.parse(text);
        if (result.type() != typeid(Poco::JSON::Object::Ptr))
        {
            return false;
        }
        Poco::JSON::Object::Ptr object = result.extract<Poco::JSON::Object::Ptr>();
        if (object.isNull())
        {
            return false;
        }
        out_object = std::move(object);
        return true;
    }
    catch (const Poco::Exception&)
    {
        return false;
    }
}

bool JSONTools::testJsonArray(const Poco::Dynamic::Var& value, const Poco::JSON::Array** out_array)
{
    const Poco::JSON::Array* array = nullptr;
    if (value.type() == typeid(Poco::JSON::Array::Ptr))
    {
        array = value.extract<Poco::JSON::Array::Ptr>().get();
    }
    else if (value.type() == typeid(Poco::JSON::Array))
    {
        array = &value.extract<Poco::JSON::Array>();
    }
    if (array == nullptr)
    {
        return false;
    }
    if (out_array != nullptr)
    {
        *out_array = array;
    }
    return true;
}

} // namespace Orvi::Util
