#include "OperationResult.h"

namespace Orvi::Mapping
{

std::string OperationResult::toString(Enum result)
{
    switch (result)
    {
    case ErrorOnUpdate:
        return "ErrorOnUpdate";
    case ServiceErrorOnUpdate:
        return "ServiceErrorOnUpdate";
    case ObjectUpdated:
        return "ObjectUpdated";
    case ObjectCreated:
        return "ObjectCreated";
    case ObjectUnchanged:
        return "ObjectUnchanged";
    case ObjectProcessed:
        return "ObjectProcessed";
    }
    return "Unknown";
}

} // namespace Orvi::Mapping
