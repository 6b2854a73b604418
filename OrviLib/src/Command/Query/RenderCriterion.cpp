#include "Command/Query/RenderCriterion.h"

namespace Orvi::Command
{

RenderCriterion::RenderCriterion(bool valid)
    : QueryParameter(valid)
{
}

RenderCriterion::~RenderCriterion() = default;

} // namespace Orvi::Command
