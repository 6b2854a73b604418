#include "Command/Query/AnyValueSearch.h"

namespace Orvi::Command
{

AnyValueSearch::AnyValueSearch(const std::string& queryValue)
    : AbstractValueSearch(queryValue, {queryValue}, Comparison::CONTAINS_IGNORING_CASE)
{
    m_valid = m_valid && !queryValue.empty();
}

AnyValueSearch::~AnyValueSearch() = default;

} // namespace Orvi::Command
