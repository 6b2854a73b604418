#pragma once

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>

#include <string>

namespace Orvi::Command
{

/// One parsed parameter of a query; the root of all search and render criteria.
class QueryParameter
{
public:
    static const std::string KEY_ID;
    /// "id": the key that identifies an element of an answer.

    static const std::string KEY_NAME;
    /// "name".

    static const std::string KEY_URI;
    /// "uri".

    virtual ~QueryParameter();

    static const Poco::JSON::Object* jsonObjectOf(const Poco::Dynamic::Var& value);
    /// The JSON object that the value holds, by pointer or by value; null for anything else.

    static Poco::Dynamic::Var memberOf(const Poco::Dynamic::Var& value, const std::string& key);
    /// The member under key of the JSON object that the value holds; empty when it has none or the value
    /// holds no object.

    static const Poco::JSON::Array* jsonArrayOf(const Poco::Dynamic::Var& value);
    /// The JSON array that the value holds, by pointer or by value; null for anything else.

    bool isValid() const { return m_valid; }
    /// False when the parameter's value did not follow its grammar; such a criterion is never applied.

protected:
    explicit QueryParameter(bool valid = true);

    QueryParameter(const QueryParameter&) = default;
    QueryParameter& operator=(const QueryParameter&) = default;

    bool m_valid;
};

} // namespace Orvi::Command
