#pragma once

#include "Command/Query/QueryParameter.h"

namespace Orvi::Command
{

/// A criterion that decides which elements belong to an answer.
class SearchCriterion : public QueryParameter
{
public:
    ~SearchCriterion() override;

protected:
    explicit SearchCriterion(bool valid = true);
};

} // namespace Orvi::Command
