#pragma once

#include "DbObjectIdMapper.h"
#include "IMappingServiceManager.h"
#include "XObjectRefHolder.h"

namespace Orvi::Mapping
{

/// The mapping parts of a process kept in memory: one id mapper and one reference holder, shared by
/// every data handler that is given this manager.
class MappingServiceManager : public IMappingServiceManager
{
public:
    MappingServiceManager();
    ~MappingServiceManager() override;

    XObjectRefBase* getXObjectReferenceResolver() override;
    /// The holder of references(), as its base.

    IDbObjectIdMapper* getDBObjIdMapper() override;
    /// The mapper of idMapper(), as its base.

    DbObjectIdMapper& idMapper() { return m_idMapper; }

    XObjectRefHolder& references() { return m_references; }
    /// Where a handler notes which of its objects refer to which, before or after they exist.

private:
    DbObjectIdMapper m_idMapper;
    XObjectRefHolder m_references;
};

} // namespace Orvi::Mapping
