#include "MappingServiceManager.h"

namespace Orvi::Mapping
{

MappingServiceManager::MappingServiceManager() = default;

MappingServiceManager::~MappingServiceManager() = default;

XObjectRefBase* MappingServiceManager::getXObjectReferenceResolver()
{
    return &m_references;
}

IDbObjectIdMapper* MappingServiceManager::getDBObjIdMapper()
{
    return &m_idMapper;
}

} // namespace Orvi::Mapping
