#include "Mapping/DataHandler/ServiceDataHandlerOutputBaseImplDBData.h"

#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/LogStream.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/NumberFormatter.h>

#include <vector>

namespace Orvi::Mapping::DataHandler
{

namespace
{

// "0x" and upper-case digits, the form in which handlers print their object ids.
std::string hexObjectId(Poco::Int32 objId)
{
    return "0x" + Poco::NumberFormatter::formatHex(static_cast<Poco::UInt32>(objId));
}

} // namespace

ServiceDataHandlerOutputBaseImplDBData::ServiceDataHandlerOutputBaseImplDBData(
    MappingServiceJSONDataCache* JSONDataCache, Service::SubscriptionTrigger* changeListener)
    : m_JSONAccessor(JSONDataCache, changeListener)
{
    if (m_JSONAccessor.isJSONDataCacheAvailable())
    {
        LOG_FATAL("missing app service CarServiceJSONDataCache");
    }
}

ServiceDataHandlerOutputBaseImplDBData::~ServiceDataHandlerOutputBaseImplDBData() = default;

XObjectId ServiceDataHandlerOutputBaseImplDBData::getDBIdForObject(const std::string& service,
                                                                   const std::string& resource,
                                                                   const std::string& objectName) const
{
    const JSONAccessor::AttributeValuePairs attrList{{"name", Poco::Dynamic::Var(objectName)}};
    std::vector<long> resultList;
    if (!m_JSONAccessor.getXObjectIdsWithAttributesOfValues(service, resource, resultList, attrList) ||
        resultList.empty())
    {
        LOG_ERROR("Failed to get DBID for object " << objectName << " in " << service << "/" << resource);
        return -1;
    }
    return resultList.front();
}

OperationResult::Enum ServiceDataHandlerOutputBaseImplDBData::executeMappingToDb(
    Poco::Int32 objId, const std::string& service, const std::string& resource,
    ServiceArrayIndexType_t serviceItemIndex, Poco::JSON::Object::Ptr jsonObj, std::string& out_uuid) const
{
    const OperationResult::Enum result = m_JSONAccessor.updateCacheMappedXObjectWithJSON(
        service, resource, objId, serviceItemIndex, jsonObj, mappingMgr->getXObjectReferenceResolver(),
        mappingMgr->getDBObjIdMapper(), out_uuid);
    LOG_INFO("result of mapping of object " << hexObjectId(objId) << " with uuid: " << out_uuid << " in "
                                            << service << "." << resource << " : "
                                            << OperationResult::toString(result));
    return result;
}

bool ServiceDataHandlerOutputBaseImplDBData::executeMappingResultDeleteObject(
    const std::string& service, const std::string& resource, Poco::Int32 objId,
    ServiceArrayIndexType_t serviceItemIndex) const
{
    XObjectId xObjId = -1;
    if (!mappingMgr->getDBObjIdMapper()->getXObjIdItemByObjId(objId, serviceItemIndex, xObjId))
    {
        return false;
    }

    DBData::XObject object{DBData::Element::Ptr()};
    if (m_JSONAccessor.selectXObject(xObjId, object) == OperationResult::ErrorOnUpdate)
    {
        LOG_ERROR("Select of object with typeId " << objId << "failed!");
        return false;
    }
    if (!m_JSONAccessor.deleteXObjectWithReferences(service, resource, object,
                                                    mappingMgr->getXObjectReferenceResolver(),
                                                    mappingMgr->getDBObjIdMapper()))
    {
        LOG_ERROR("Delete of object with typeId " << objId << "failed!");
        return false;
    }
    // Only now: the delete needed the mapping to find the objects that refer to this one.
    mappingMgr->getDBObjIdMapper()->delXObjId(object.getDBID());
    LOG_INFO("delete of mapped object " << hexObjectId(objId) << " with uuid: " << object.getUUID() << " in "
                                        << service << "." << resource << " succeeded.");
    return true;
}

} // namespace Orvi::Mapping::DataHandler
