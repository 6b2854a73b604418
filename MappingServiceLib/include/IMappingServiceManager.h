#pragma once

#include "IDbObjectIdMapper.h"
#include "IOrviServiceGeneral.h"
#include "XObjectRefBase.h"

namespace Orvi::Mapping
{

/// The access to the mapping parts that all data handlers of a process share. The parts it gives stay
/// its own.
class IMappingServiceManager
{
public:
    virtual ~IMappingServiceManager() = default;

    virtual XObjectRefBase* getXObjectReferenceResolver() = 0;
    /// The references between mapped objects.

    virtual IDbObjectIdMapper* getDBObjIdMapper() = 0;

    virtual IOrviServiceGeneral* getOrviServiceGeneral();
    /// Null unless the process has such a part; the default has none.
};

} // namespace Orvi::Mapping
