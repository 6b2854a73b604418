#include "JSONDataCache/DBData/ConstraintEnum.h"

namespace Orvi::DBData
{

ConstraintEnum::ConstraintEnum()
    : aConstraint(ConstraintType_Enum)
{
}

ConstraintEnum::~ConstraintEnum() = default;

} // namespace Orvi::DBData
