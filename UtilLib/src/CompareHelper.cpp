#include "CompareHelper.h"

namespace Orvi::Util
{

template <>
CompareResult CompareHelper::compare<Poco::URI>(const Poco::URI& a, const Poco::URI& b)
{
    const int result = a.toString().compare(b.toString());
    return convertResult(result);
}

int CompareHelper::convertResult(CompareResult result)
{
    switch (result)
    {
    case LESS:
        return -1;
    case EQUAL:
        return 0;
    case GREATER:
        return 1;
    case UNKNOWN:
        break;
    }
    return 2;
}

CompareResult CompareHelper::convertResult(int result)
{
    if (result < 0)
    {
        return LESS;
    }
    return result == 0 ? EQUAL : GREATER;
}

CompareResult CompareHelper::checkPointer(const void* a, const void* b)
{
    if (a == b)
    {
        return EQUAL;
    }
    if (a == nullptr)
    {
        return GREATER;
    }
    if (b == nullptr)
    {
        return LESS;
    }
    return UNKNOWN;
}

} // namespace Orvi::Util
