#include "Command/Query/ExpandParameter.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/NumberParser.h>

#include <algorithm>
#include <cctype>

namespace Orvi::Command
{

const char ExpandParameter::NAME_SEPARATOR = ',';

namespace
{

bool looksNumeric(const std::string& text)
{
    const auto first = static_cast<unsigned char>(text.front());
    return std::isdigit(first) != 0 || first == '-' || first == '+';
}

Poco::JSON::Object::Ptr identifyingPart(const Poco::JSON::Object& object)
{
    Poco::JSON::Object::Ptr reduced = new Poco::JSON::Object();
    for (const std::string* key :
         {&QueryParameter::KEY_ID, &QueryParameter::KEY_NAME, &QueryParameter::KEY_URI})
    {
        if (object.has(*key))
        {
            reduced->set(*key, object.get(*key));
        }
    }
    return reduced;
}

} // namespace

ExpandParameter::ExpandParameter(const std::string& queryValue)
    : RenderCriterion(false)
    , m_level(0)
{
    if (queryValue.empty())
    {
        return;
    }
    if (looksNumeric(queryValue))
    {
        unsigned int level = 0;
        m_valid = std::all_of(queryValue.begin(), queryValue.end(),
                              [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }) &&
                  Poco::NumberParser::tryParseUnsigned(queryValue, level) && level <= EXPANSION_LEVEL_MAX;
        m_level = m_valid ? level : 0;
        return;
    }
    m_level = EXPANSION_LEVEL_NAMED;
    m_valid = true;
    std::size_t begin = 0;
    for (;;)
    {
        std::size_t end = queryValue.find(NAME_SEPARATOR, begin);
        const bool last = end == std::string::npos;
        if (last)
        {
            end = queryValue.size();
        }
        m_valid = m_valid && end > begin;
        m_propertyNames.push_back(queryValue.substr(begin, end - begin));
        m_propertyLookup.insert(m_propertyNames.back());
        if (last)
        {
            return;
        }
        begin = end + 1;
    }
}

ExpandParameter::~ExpandParameter() = default;

bool ExpandParameter::isExpanded(const std::string& key) const
{
    return m_propertyLookup.empty() || m_propertyLookup.count(key) != 0;
}

Poco::Dynamic::Var ExpandParameter::renderField(const std::string& key, const Poco::Dynamic::Var& value) const
{
    if (isExpanded(key))
    {
        return value;
    }
    if (const Poco::JSON::Object* object = jsonObjectOf(value))
    {
        return identifyingPart(*object);
    }
    const Poco::JSON::Array* array = jsonArrayOf(value);
    if (array == nullptr)
    {
        return value;
    }
    Poco::JSON::Array::Ptr reduced = new Poco::JSON::Array();
    for (const Poco::Dynamic::Var& element : *array)
    {
        if (const Poco::JSON::Object* object = jsonObjectOf(element))
        {
            reduced->add(identifyingPart(*object));
        }
        else
        {
            reduced->add(element);
        }
    }
    return reduced;
}

} // namespace Orvi::Command
