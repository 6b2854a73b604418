#pragma once

#include "Command/Query/SearchCriterion.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/RegularExpression.h>

#include <memory>
#include <string>
#include <vector>

namespace Orvi::Command
{

/// A search for values by text, with the wildcards of UrlPath.
///
/// Matching rules:
///   - UrlPath::QUERY_WILDCARD ("%") and UrlPath::QUERY_WILDCARD_HTML ("%25") match any run of
///     characters, the empty run included; every other character matches itself only, so that a value
///     holds no regular expression syntax of its own.
///   - A string is matched as it stands, a boolean as "true" or "false", a number by its text.
///   - A JSON array matches when any of its elements matches.
///   - A JSON object (an expanded reference) matches by the text of its "id".
///   - An empty (null) value never matches.
/// How the text must match (whole or in part, with or without case) is up to the subclass.
class AbstractValueSearch : public SearchCriterion
{
public:
    ~AbstractValueSearch() override;

    AbstractValueSearch(const AbstractValueSearch&) = delete;
    AbstractValueSearch& operator=(const AbstractValueSearch&) = delete;

    const std::string& getQueryValue() const { return m_queryValue; }
    /// The value as the query gave it, decoded.

    const std::vector<std::string>& getSearchValues() const { return m_searchValues; }
    /// The alternatives taken out of the query value; a text matches when it matches any of them.

    bool match(const std::string& text) const;
    /// True when the text matches one of the search values.

    bool match(const Poco::Dynamic::Var& value) const;
    /// True when the value matches one of the search values, by the rules above.

protected:
    /// How a text has to match a search value.
    enum class Comparison
    {
        WHOLE_VALUE,           ///< The whole text, case-sensitive.
        CONTAINS_IGNORING_CASE ///< Any part of the text, ASCII letters in either case.
    };

    static const char VALUE_SEPARATOR;
    /// ',' between the alternatives of a query value.

    static const int MAX_MATCH_DEPTH;
    /// Arrays nested deeper than this never match, so that hostile input cannot exhaust the stack.

    AbstractValueSearch(std::string queryValue, std::vector<std::string> searchValues, Comparison comparison);
    /// Compiles the search values; a set of values that does not compile makes the search invalid.

    static std::vector<std::string> splitValues(const std::string& queryValue);
    /// The alternatives between the separators, empty ones included: "a,,b" gives "a", "" and "b".

    static std::string createRegEx(const std::string& searchValue);
    /// A pattern that matches the value with its wildcards, unanchored.

    static std::string createRegEx(const std::vector<std::string>& searchValues);
    /// A pattern that matches any of the values, unanchored.

    virtual bool matchImpl(const Poco::Dynamic::Var& value, int depth) const;
    /// Matches one value found depth levels of arrays below the value given to match().

private:
    std::string m_queryValue;
    std::vector<std::string> m_searchValues;
    std::unique_ptr<Poco::RegularExpression> m_regEx;
};

} // namespace Orvi::Command
