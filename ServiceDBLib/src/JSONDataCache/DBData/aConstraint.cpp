#include "JSONDataCache/DBData/aConstraint.h"

namespace Orvi::DBData
{

aConstraint::aConstraint(ConstraintType constraintType)
    : type(constraintType)
{
}

aConstraint::~aConstraint() = default;

} // namespace Orvi::DBData
