#pragma once

#include "JSONDataCache/DBData/aConstraint.h"

#include <set>
#include <string>
#include <utility>

namespace Orvi::DBData
{

/// Restricts a string attribute to a set of texts.
class ConstraintEnum : public aConstraint
{
public:
    using EnumValues = std::set<std::string>;

    ConstraintEnum();
    ~ConstraintEnum() override;

    const EnumValues& getEnumValues() const { return enumValues; }
    EnumValues& getEnumValues() { return enumValues; }
    void setEnumValues(const EnumValues& values) { enumValues = values; }
    void setEnumValues(EnumValues&& values) { enumValues = std::move(values); }

private:
    EnumValues enumValues;
};

} // namespace Orvi::DBData
