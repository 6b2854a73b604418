#include "Command/Query/QueryParameter.h"

#include "JSONTools.h"

namespace Orvi::Command
{

const std::string QueryParameter::KEY_ID = "id";
const std::string QueryParameter::KEY_NAME = "name";
const std::string QueryParameter::KEY_URI = "uri";

QueryParameter::QueryParameter(bool valid)
    : m_valid(valid)
{
}

QueryParameter::~QueryParameter() = default;

const Poco::JSON::Object* QueryParameter::jsonObjectOf(const Poco::Dynamic::Var& value)
{
    if (value.type() == typeid(Poco::JSON::Object::Ptr))
    {
        return value.extract<Poco::JSON::Object::Ptr>().get();
    }
    if (value.type() == typeid(Poco::JSON::Object))
    {
        return &value.extract<Poco::JSON::Object>();
    }
    return nullptr;
}

Poco::Dynamic::Var QueryParameter::memberOf(const Poco::Dynamic::Var& value, const std::string& key)
{
    const Poco::JSON::Object* object = jsonObjectOf(value);
    return object != nullptr ? object->get(key) : Poco::Dynamic::Var();
}

const Poco::JSON::Array* QueryParameter::jsonArrayOf(const Poco::Dynamic::Var& value)
{
    const Poco::JSON::Array* array = nullptr;
    return Util::JSONTools::testJsonArray(value, &array) ? array : nullptr;
}

} // namespace Orvi::Command
