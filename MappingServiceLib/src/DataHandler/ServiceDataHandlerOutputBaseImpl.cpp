#include "DataHandler/ServiceDataHandlerOutputBaseImpl.h"

namespace Orvi::Mapping::DataHandler
{

ServiceDataHandlerOutputBaseImpl::ServiceDataHandlerOutputBaseImpl(IMappingServiceManager* manager)
    : mappingMgr(manager)
{
}

IMappingServiceManager* ServiceDataHandlerOutputBaseImpl::getMappingServiceManager() const
{
    return mappingMgr;
}

void ServiceDataHandlerOutputBaseImpl::setMappingServiceManager(IMappingServiceManager* manager)
{
    mappingMgr = manager;
}

XObjectId ServiceDataHandlerOutputBaseImpl::getXObjectId(Poco::Int32 objId,
                                                         ServiceArrayIndexType_t serviceItemIndex) const
{
    if (mappingMgr == nullptr)
    {
        return -1;
    }
    const IDbObjectIdMapper* mapper = mappingMgr->getDBObjIdMapper();
    XObjectId xObjId = -1;
    if (mapper == nullptr || !mapper->getXObjIdItemByObjId(objId, serviceItemIndex, xObjId))
    {
        return -1;
    }
    return xObjId;
}

} // namespace Orvi::Mapping::DataHandler
