#pragma once

#include <Poco/Types.h>

#include <string>

namespace Orvi::Mapping
{

/// The result of every input operation of the mapping layer. Values below ObjectUpdated are failures,
/// and callers test the number against that bound.
struct OperationResult
{
    enum Enum : Poco::UInt8
    {
        ErrorOnUpdate = 0,
        ServiceErrorOnUpdate = 1,
        ObjectUpdated = 2,
        ObjectCreated = 3,
        ObjectUnchanged = 4,
        ObjectProcessed = 5
    };

    static bool isFailure(Enum result) { return result < ObjectUpdated; }
    /// True for ErrorOnUpdate and ServiceErrorOnUpdate.

    static std::string toString(Enum result);
    /// The enumerator's name, or "Unknown" for a number outside the enumeration.
};

} // namespace Orvi::Mapping
