#pragma once

#include "CompareResult.h"

#include <Poco/URI.h>

#include <string>

namespace Orvi::Util
{

/// Three-way comparison of the value types that attribute values hold.
class CompareHelper
{
public:
    template <typename T>
    static CompareResult compare(const T& a, const T& b);
    /// LESS if a is smaller, GREATER if b is smaller, EQUAL otherwise. Defined for bool, long,
    /// unsigned long, double, std::string and Poco::URI (compared by its text).

    static int convertResult(CompareResult result);
    /// -1 for LESS, 0 for EQUAL, 1 for GREATER and 2 for UNKNOWN.

    static CompareResult convertResult(int result);
    /// LESS for a negative number, EQUAL for 0, GREATER for a positive one.

    static CompareResult checkPointer(const void* a, const void* b);
    /// Settles what needs no value: EQUAL when both are null or the same, GREATER when only a is null,
    /// LESS when only b is null, UNKNOWN otherwise.
};

template <typename T>
CompareResult CompareHelper::compare(const T& a, const T& b)
{
    if (a < b)
    {
        return LESS;
    }
    if (b < a)
    {
        return GREATER;
    }
    return EQUAL;
}

template <>
CompareResult CompareHelper::compare<Poco::URI>(const Poco::URI& a, const Poco::URI& b);

} // namespace Orvi::Util
