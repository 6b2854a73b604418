#include "Command/Query/FilterParameter.h"

#include <utility>

namespace Orvi::Command
{

const char FilterParameter::FIELD_SEPARATOR = ',';

namespace
{

bool isIdentifyingKey(const std::string& key)
{
    return key == QueryParameter::KEY_ID || key == QueryParameter::KEY_NAME || key == QueryParameter::KEY_URI;
}

std::vector<FilterField> splitFields(const std::string& queryValue)
{
    std::vector<FilterField> fields;
    std::size_t begin = 0;
    for (;;)
    {
        const std::size_t end = queryValue.find(FilterParameter::FIELD_SEPARATOR, begin);
        if (end == std::string::npos)
        {
            fields.emplace_back(queryValue.substr(begin));
            return fields;
        }
        fields.emplace_back(queryValue.substr(begin, end - begin));
        begin = end + 1;
    }
}

} // namespace

FilterParameter::FilterParameter(const std::string& queryValue)
    : m_filterFields(splitFields(queryValue))
{
    collectFields();
}

FilterParameter::FilterParameter(std::vector<FilterField> fields)
    : m_filterFields(std::move(fields))
{
    collectFields();
}

FilterParameter::~FilterParameter() = default;

void FilterParameter::collectFields()
{
    m_valid = !m_filterFields.empty();
    for (const FilterField& field : m_filterFields)
    {
        m_valid = m_valid && !field.getName().empty();
        // The first page given for a name wins, as for a name given twice without one.
        m_filterCollection.emplace(field.getName(), field.getPaging());
    }
}

bool FilterParameter::isSelected(const std::string& key) const
{
    return isIdentifyingKey(key) || m_filterCollection.count(key) != 0;
}

Poco::Dynamic::Var FilterParameter::renderField(const std::string& key, const Poco::Dynamic::Var& value) const
{
    const auto field = m_filterCollection.find(key);
    if (field == m_filterCollection.end() || field->second.isNull())
    {
        return value;
    }
    const Poco::JSON::Array* array = jsonArrayOf(value);
    if (array == nullptr)
    {
        return value;
    }
    const Paging::Window window = field->second->locate(array->begin(), array->end());
    Poco::JSON::Array::Ptr page = new Poco::JSON::Array();
    for (auto element = array->begin() + static_cast<std::ptrdiff_t>(window.begin),
              end = array->begin() + static_cast<std::ptrdiff_t>(window.end);
         element != end; ++element)
    {
        page->add(*element);
    }
    return page;
}

void FilterParameter::applyFilter(const Poco::JSON::Object& in, Poco::JSON::Object& out) const
{
    Poco::JSON::Object result;
    for (const auto& member : in)
    {
        if (isSelected(member.first))
        {
            result.set(member.first, renderField(member.first, member.second));
        }
    }
    out = std::move(result);
}

void FilterParameter::applyFilter(const Poco::JSON::Array& in, Poco::JSON::Array& out) const
{
    Poco::JSON::Array result;
    for (const Poco::Dynamic::Var& element : in)
    {
        if (const Poco::JSON::Object* object = jsonObjectOf(element))
        {
            Poco::JSON::Object::Ptr filtered = new Poco::JSON::Object();
            applyFilter(*object, *filtered);
            result.add(filtered);
        }
        else
        {
            result.add(element);
        }
    }
    out = std::move(result);
}

} // namespace Orvi::Command
