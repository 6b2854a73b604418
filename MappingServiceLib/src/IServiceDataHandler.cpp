#include "IServiceDataHandler.h"

namespace Orvi::Mapping
{

bool IServiceDataHandler::addToMapperCache(const std::string& /*service*/, const XObject& /*xobject*/,
                                           const AttributeMapPtr& /*values*/)
{
    return true;
}

bool IServiceDataHandler::clearMapperCache(const std::string& /*service*/)
{
    return true;
}

} // namespace Orvi::Mapping
