#pragma once

namespace Orvi::Util
{

/// The outcome of a three-way comparison; UNKNOWN when the two sides cannot be ordered.
enum CompareResult
{
    LESS = 0,
    EQUAL = 1,
    GREATER = 2,
    UNKNOWN = 3
};

} // namespace Orvi::Util
