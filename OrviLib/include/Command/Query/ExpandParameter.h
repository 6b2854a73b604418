#pragma once

#include "Command/Query/RenderCriterion.h"

#include <Poco/Dynamic/Var.h>

#include <set>
#include <string>
#include <vector>

namespace Orvi::Command
{

/// The expansion of references that "$expand" asks for: a level ("$expand=2") or the names of the
/// references to expand ("$expand=owner,parts").
///
/// A level says how deep references are resolved when objects are rendered. Names resolve at level 1, and
/// rendering then cuts the references that are not named back to "id", "name" and "uri", as level 0 would
/// show them.
class ExpandParameter : public RenderCriterion
{
public:
    static const char NAME_SEPARATOR;
    /// ',' between the names.

    static constexpr unsigned int EXPANSION_LEVEL_MAX = 3;
    /// The deepest level a request may ask for; it bounds the size of one answer.

    static constexpr unsigned int EXPANSION_LEVEL_NAMED = 1;
    /// The level at which named references are resolved.

    explicit ExpandParameter(const std::string& queryValue);
    /// Reads a level when the text starts with a digit or a sign, else a list of names. Invalid for an
    /// empty text, a level that is not 0 to EXPANSION_LEVEL_MAX in plain digits, or an empty name.

    ~ExpandParameter() override;

    bool hasPropertyNames() const { return !m_propertyNames.empty(); }
    /// True for the form with names.

    unsigned int getLevel() const { return m_level; }
    /// The level given, or EXPANSION_LEVEL_NAMED for the form with names.

    const std::vector<std::string>& getPropertyNames() const { return m_propertyNames; }
    /// The names in the order given; empty for the form with a level.

    bool isExpanded(const std::string& key) const;
    /// False only for a key that the form with names leaves out.

    Poco::Dynamic::Var renderField(const std::string& key, const Poco::Dynamic::Var& value) const;
    /// The value as this expansion renders it: for a key that is not expanded, a JSON object is cut to its
    /// identifying keys, and so is each object in a JSON array; every other value stays as it is.

private:
    unsigned int m_level;
    std::vector<std::string> m_propertyNames;
    std::set<std::string> m_propertyLookup;
};

} // namespace Orvi::Command
