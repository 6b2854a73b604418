#pragma once

#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/aConstraint.h"

#include <Poco/Dynamic/Var.h>

namespace Orvi::DBData
{

/// Restricts a numeric attribute to a closed range and rounds it to a multiple of a resolution.
/// The bounds default to the largest finite doubles, which an integer check cannot read: an integer
/// attribute needs both bounds set.
class ConstraintResolution : public aConstraint
{
public:
    ConstraintResolution();
    ~ConstraintResolution() override;

    const Poco::Dynamic::Var& getMaximum() const { return m_maximum; }
    void setMaximum(const Poco::Dynamic::Var& maximum) { m_maximum = maximum; }
    const Poco::Dynamic::Var& getMinimum() const { return m_minimum; }
    void setMinimum(const Poco::Dynamic::Var& minimum) { m_minimum = minimum; }
    const Poco::Dynamic::Var& getResolution() const { return m_resolution; }
    void setResolution(const Poco::Dynamic::Var& resolution) { m_resolution = resolution; }

    bool checkValue(Attribute::Number& value) const;
    /// Rounds the value to the nearest multiple of the resolution (halves away from zero), then
    /// tests the range; the rounded value stays in the argument either way. A resolution of zero or
    /// less is a bugcheck.

    bool checkValue(Attribute::Integer& value) const;
    bool checkValue(Attribute::IntegerUnsigned& value) const;
    /// Round to a multiple of a resolution above 1 (the truncated half rounds up), then test the
    /// range; the rounded value stays in the argument either way. A rounding that would leave the
    /// value's type goes to the lower multiple instead.

private:
    Poco::Dynamic::Var m_maximum;
    Poco::Dynamic::Var m_minimum;
    Poco::Dynamic::Var m_resolution;
};

} // namespace Orvi::DBData
