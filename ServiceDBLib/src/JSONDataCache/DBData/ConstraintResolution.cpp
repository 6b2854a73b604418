#include "JSONDataCache/DBData/ConstraintResolution.h"

#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>

#include <cmath>
#include <limits>

namespace Orvi::DBData
{

namespace
{

// Rounds a magnitude to a multiple of the resolution; the truncated half of an odd resolution rounds
// up. When rounding up would pass the limit of the value's type, the lower multiple is taken.
Poco::UInt64 roundMagnitude(Poco::UInt64 magnitude, Poco::UInt64 resolution, Poco::UInt64 limit)
{
    const Poco::UInt64 remainder = magnitude % resolution;
    if (remainder < (resolution >> 1))
    {
        return magnitude - remainder;
    }
    const Poco::UInt64 up = resolution - remainder;
    if (magnitude > limit - up)
    {
        return magnitude - remainder;
    }
    return magnitude + up;
}

Attribute::Integer roundToResolution(Attribute::Integer value, Attribute::Integer resolution)
{
    const auto unsignedResolution = static_cast<Poco::UInt64>(resolution);
    if (value < 0)
    {
        // The magnitude is taken in unsigned arithmetic, so that the smallest value has one too.
        const Poco::UInt64 magnitude = 0 - static_cast<Poco::UInt64>(value);
        const Poco::UInt64 limit =
            0 - static_cast<Poco::UInt64>(std::numeric_limits<Attribute::Integer>::min());
        return static_cast<Attribute::Integer>(0 - roundMagnitude(magnitude, unsignedResolution, limit));
    }
    const auto limit = static_cast<Poco::UInt64>(std::numeric_limits<Attribute::Integer>::max());
    return static_cast<Attribute::Integer>(
        roundMagnitude(static_cast<Poco::UInt64>(value), unsignedResolution, limit));
}

Attribute::IntegerUnsigned roundToResolution(Attribute::IntegerUnsigned value,
                                             Attribute::IntegerUnsigned resolution)
{
    return roundMagnitude(value, resolution, std::numeric_limits<Attribute::IntegerUnsigned>::max());
}

template <typename T>
bool checkIntegerValue(T& value, const ConstraintResolution& constraint)
{
    const T min = constraint.getMinimum().convert<T>();
    const T max = constraint.getMaximum().convert<T>();
    const Poco::Dynamic::Var& resolutionValue = constraint.getResolution();
    if (!resolutionValue.isEmpty())
    {
        const T resolution = resolutionValue.convert<T>();
        if (resolution > 1)
        {
            value = roundToResolution(value, resolution);
        }
    }
    if (value < min || value > max)
    {
        LOG_DEBUG("Value " << value << " not between " << min << " and " << max << ".");
        return false;
    }
    return true;
}

} // namespace

ConstraintResolution::ConstraintResolution()
    : aConstraint(ConstraintType_Resolution)
    , m_maximum(std::numeric_limits<double>::max())
    , m_minimum(-std::numeric_limits<double>::max())
{
}

ConstraintResolution::~ConstraintResolution() = default;

bool ConstraintResolution::checkValue(Attribute::Number& value) const
{
    const auto min = m_minimum.convert<Attribute::Number>();
    const auto max = m_maximum.convert<Attribute::Number>();
    if (!m_resolution.isEmpty())
    {
        const auto resolution = m_resolution.convert<Attribute::Number>();
        if (resolution <= 0)
        {
            poco_bugcheck_msg("invalid resolution");
        }
        const Attribute::Number factor = 1.0 / resolution;
        value = std::round(value * factor) / factor;
    }
    // Two plain comparisons: a NaN passes.
    if (value < min || value > max)
    {
        LOG_DEBUG("Value " << value << " not between " << min << " and " << max << ".");
        return false;
    }
    return true;
}

bool ConstraintResolution::checkValue(Attribute::Integer& value) const
{
    return checkIntegerValue(value, *this);
}

bool ConstraintResolution::checkValue(Attribute::IntegerUnsigned& value) const
{
    return checkIntegerValue(value, *this);
}

} // namespace Orvi::DBData
