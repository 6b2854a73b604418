#pragma once

#include "Command/Query/QueryParameter.h"

namespace Orvi::Command
{

/// A criterion that shapes how the elements of an answer are rendered, not which of them are found.
class RenderCriterion : public QueryParameter
{
public:
    ~RenderCriterion() override;

protected:
    explicit RenderCriterion(bool valid = true);
};

} // namespace Orvi::Command
