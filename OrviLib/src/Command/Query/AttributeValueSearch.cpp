#include "Command/Query/AttributeValueSearch.h"

namespace Orvi::Command
{

AttributeValueSearch::AttributeValueSearch(const std::string& attributeName, const std::string& queryValue)
    : AbstractValueSearch(queryValue, splitValues(queryValue), Comparison::WHOLE_VALUE)
    , m_attributeName(attributeName)
{
    m_valid = m_valid && !attributeName.empty();
}

AttributeValueSearch::~AttributeValueSearch() = default;

} // namespace Orvi::Command
