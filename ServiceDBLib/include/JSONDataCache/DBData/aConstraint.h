#pragma once

#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <Poco/SharedPtr.h>

namespace Orvi::DBData
{

/// The kind of a constraint; each kind but ConstraintType_Init has its own class.
enum ConstraintType
{
    ConstraintType_OneOf = 0,
    ConstraintType_Enum = 1,
    ConstraintType_Format = 2,
    ConstraintType_Resolution = 3,
    ConstraintType_Init = 255
};

/// Base of the constraints that narrow what an attribute accepts; checks dispatch on its type.
class aConstraint : public aDBTableEntry
{
public:
    using Ptr = Poco::SharedPtr<aConstraint>;

    explicit aConstraint(ConstraintType constraintType);
    ~aConstraint() override;

    ConstraintType getType() const { return type; }

private:
    ConstraintType type;
};

} // namespace Orvi::DBData
