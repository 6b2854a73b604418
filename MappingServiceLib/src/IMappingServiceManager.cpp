#include "IMappingServiceManager.h"

namespace Orvi::Mapping
{

IOrviServiceGeneral* IMappingServiceManager::getOrviServiceGeneral()
{
    return nullptr;
}

} // namespace Orvi::Mapping
