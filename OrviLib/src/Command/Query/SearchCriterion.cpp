#include "Command/Query/SearchCriterion.h"

namespace Orvi::Command
{

SearchCriterion::SearchCriterion(bool valid)
    : QueryParameter(valid)
{
}

SearchCriterion::~SearchCriterion() = default;

} // namespace Orvi::Command
