#include "Command/Query/AbstractValueSearch.h"

#include "Command/UrlPath.h"

#include <Poco/Exception.h>

#include <cctype>
#include <cstddef>
#include <utility>

namespace Orvi::Command
{

const char AbstractValueSearch::VALUE_SEPARATOR = ',';
const int AbstractValueSearch::MAX_MATCH_DEPTH = 32;

namespace
{

const std::string TEXT_TRUE = "true";
const std::string TEXT_FALSE = "false";

// Dot matches line breaks too, so that a wildcard spans them.
constexpr int BASE_OPTIONS = Poco::RegularExpression::RE_DOTALL | Poco::RegularExpression::RE_NO_AUTO_CAPTURE;

void appendLiteral(const std::string& text, std::size_t begin, std::size_t end, std::string& pattern)
{
    static const char HEX[] = "0123456789abcdef";
    for (std::size_t i = begin; i < end; ++i)
    {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (std::isalnum(byte) != 0 && byte < 0x80)
        {
            pattern += static_cast<char>(byte);
        }
        else
        {
            // Hex escapes keep every other byte literal, NUL and regular expression syntax included.
            pattern += "\\x";
            pattern += HEX[byte >> 4];
            pattern += HEX[byte & 0x0f];
        }
    }
}

// The length of the wildcard at pos, 0 if there is none; the encoded form is tried first.
std::size_t wildcardAt(const std::string& text, std::size_t pos)
{
    if (text.compare(pos, UrlPath::QUERY_WILDCARD_HTML.size(), UrlPath::QUERY_WILDCARD_HTML) == 0)
    {
        return UrlPath::QUERY_WILDCARD_HTML.size();
    }
    if (text.compare(pos, UrlPath::QUERY_WILDCARD.size(), UrlPath::QUERY_WILDCARD) == 0)
    {
        return UrlPath::QUERY_WILDCARD.size();
    }
    return 0;
}

} // namespace

AbstractValueSearch::AbstractValueSearch(std::string queryValue, std::vector<std::string> searchValues,
                                         Comparison comparison)
    : m_queryValue(std::move(queryValue))
    , m_searchValues(std::move(searchValues))
{
    std::string pattern = createRegEx(m_searchValues);
    int options = BASE_OPTIONS;
    if (comparison == Comparison::WHOLE_VALUE)
    {
        pattern = "\\A" + pattern + "\\z";
    }
    else
    {
        options |= Poco::RegularExpression::RE_CASELESS;
    }
    try
    {
        m_regEx = std::make_unique<Poco::RegularExpression>(pattern, options);
    }
    catch (const Poco::RegularExpressionException&)
    {
        // Only values beyond the size the expression engine can take end up here.
        m_valid = false;
    }
}

AbstractValueSearch::~AbstractValueSearch() = default;

bool AbstractValueSearch::match(const std::string& text) const
{
    if (!m_regEx)
    {
        return false;
    }
    Poco::RegularExpression::Match found;
    return m_regEx->match(text, 0, found) > 0;
}

bool AbstractValueSearch::match(const Poco::Dynamic::Var& value) const
{
    return matchImpl(value, 0);
}

bool AbstractValueSearch::matchImpl(const Poco::Dynamic::Var& value, int depth) const
{
    if (value.isEmpty() || depth > MAX_MATCH_DEPTH)
    {
        return false;
    }
    if (value.type() == typeid(std::string))
    {
        return match(value.extract<std::string>());
    }
    if (value.isBoolean())
    {
        return match(value.convert<bool>() ? TEXT_TRUE : TEXT_FALSE);
    }
    if (const Poco::JSON::Object* object = jsonObjectOf(value))
    {
        return matchImpl(object->get(KEY_ID), depth + 1);
    }
    if (const Poco::JSON::Array* array = jsonArrayOf(value))
    {
        for (const Poco::Dynamic::Var& element : *array)
        {
            if (matchImpl(element, depth + 1))
            {
                return true;
            }
        }
        return false;
    }
    if (value.isVector())
    {
        for (const Poco::Dynamic::Var& element : value.extract<std::vector<Poco::Dynamic::Var>>())
        {
            if (matchImpl(element, depth + 1))
            {
                return true;
            }
        }
        return false;
    }
    try
    {
        return match(value.convert<std::string>());
    }
    catch (const Poco::Exception&)
    {
        // A value without a text form has nothing to match.
        return false;
    }
}

std::vector<std::string> AbstractValueSearch::splitValues(const std::string& queryValue)
{
    std::vector<std::string> values;
    std::size_t begin = 0;
    for (;;)
    {
        const std::size_t end = queryValue.find(VALUE_SEPARATOR, begin);
        if (end == std::string::npos)
        {
            values.emplace_back(queryValue, begin);
            return values;
        }
        values.emplace_back(queryValue, begin, end - begin);
        begin = end + 1;
    }
}

std::string AbstractValueSearch::createRegEx(const std::string& searchValue)
{
    // Between wildcards, the first literal must open the text and the last one close it. A middle literal
    // may be taken at its first occurrence, which the atomic lazy groups do without any backtracking, so
    // that matching stays near linear however many wildcards a value has.
    std::vector<std::pair<std::size_t, std::size_t>> literals;
    std::size_t begin = 0;
    std::size_t pos = 0;
    while (pos < searchValue.size())
    {
        const std::size_t wildcard = wildcardAt(searchValue, pos);
        if (wildcard == 0)
        {
            ++pos;
            continue;
        }
        literals.emplace_back(begin, pos);
        pos += wildcard;
        begin = pos;
    }
    literals.emplace_back(begin, searchValue.size());

    std::string pattern;
    pattern.reserve(searchValue.size() * 4 + literals.size() * 8);
    appendLiteral(searchValue, literals.front().first, literals.front().second, pattern);
    for (std::size_t i = 1; i < literals.size(); ++i)
    {
        const bool last = i + 1 == literals.size();
        if (last)
        {
            pattern += ".*";
            appendLiteral(searchValue, literals[i].first, literals[i].second, pattern);
        }
        else if (literals[i].first != literals[i].second)
        {
            pattern += "(?>.*?";
            appendLiteral(searchValue, literals[i].first, literals[i].second, pattern);
            pattern += ")";
        }
    }
    return pattern;
}

std::string AbstractValueSearch::createRegEx(const std::vector<std::string>& searchValues)
{
    std::string pattern = "(?:";
    bool first = true;
    for (const std::string& value : searchValues)
    {
        if (!first)
        {
            pattern += '|';
        }
        first = false;
        pattern += createRegEx(value);
    }
    pattern += ')';
    return pattern;
}

} // namespace Orvi::Command
