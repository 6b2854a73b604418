#pragma once

#include "Command/Query/AbstractValueSearch.h"

#include <string>

namespace Orvi::Command
{

/// The search of "name=v1,v2": an element matches when its attribute equals one of the values, as a
/// whole and case-sensitive; a wildcard stands for any run of characters. "name=" asks for the empty
/// text. An element without the attribute, or with null in it, never matches.
class AttributeValueSearch : public AbstractValueSearch
{
public:
    AttributeValueSearch(const std::string& attributeName, const std::string& queryValue);
    /// Invalid for an empty attribute name.

    ~AttributeValueSearch() override;

    const std::string& getAttributeName() const { return m_attributeName; }

private:
    std::string m_attributeName;
};

} // namespace Orvi::Command
