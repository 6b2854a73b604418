#include "Mapping/JSONAccessor.h"

#include "Command/HttpRequest.h"
#include "DataLayer/JSONProcessingContext.h"
#include "IAttributeIdent.h"
#include "JSONDataCache/DBData/Element.h"
#include "Logging/LogStream.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>

namespace Orvi::Mapping
{

namespace
{

const auto IPC = DataLayer::JSONProcessingContext::InputContext_IPC;
const auto POST = Command::HttpRequest::POST;

} // namespace

JSONAccessor::JSONAccessor(MappingServiceJSONDataCache* JSONDataCache,
                           Service::SubscriptionTrigger* changeListener)
    : m_JSONDataCache(JSONDataCache)
    , m_changeListener(changeListener)
{
    if (m_changeListener == nullptr)
    {
        LOG_FATAL("missing app service CarDataChangeListener");
    }
}

JSONAccessor::~JSONAccessor() = default;

OperationResult::Enum JSONAccessor::updateCacheMappedXObjectWithJSON(
    const std::string& servicename, const std::string& resourcename, Poco::Int32 objId,
    ServiceArrayIndexType_t serviceItemIndex, const Poco::JSON::Object::Ptr& obj,
    XObjectRefBase* referenceInfo, IDbObjectIdMapper* objIdMapper, std::string& out_uuid) const
{
    DBData::XObject xobject{DBData::Element::Ptr()};
    DBData::XObjectId retXObjId = -1;
    OperationResult::Enum _resSelectInsert = OperationResult::ErrorOnUpdate;

    if (!objIdMapper->getXObjIdItemByObjId(objId, serviceItemIndex, retXObjId))
    {
        _resSelectInsert = m_JSONDataCache->insertXObject(servicename, resourcename, xobject);
        if (_resSelectInsert == OperationResult::ErrorOnUpdate)
        {
            LOG_ERROR("Failed to insert XObject: " << retXObjId);
            return OperationResult::ErrorOnUpdate;
        }
        objIdMapper->addXObjId(objId, xobject.getDBID(), serviceItemIndex);
    }
    else
    {
        xobject.setDBID(retXObjId);
        _resSelectInsert =
            m_JSONDataCache->selectXObjectWithoutConstraints(servicename, resourcename, retXObjId, xobject);
        if (_resSelectInsert == OperationResult::ErrorOnUpdate)
        {
            LOG_ERROR("Failed to select XObject: " << retXObjId);
            return OperationResult::ErrorOnUpdate;
        }
    }
    out_uuid = xobject.getUUID();

    if (_resSelectInsert == OperationResult::ObjectCreated)
    {
        // The references of the new object to objects that exist enter with its values.
        resolveReferences(xobject, obj, referenceInfo, objIdMapper, false);
    }

    const OperationResult::Enum _resProcessJSONValues =
        m_JSONDataCache->processJSONValues(IPC, servicename, resourcename, xobject, obj.get());
    const OperationResult::Enum result = findJSONOperationResult(
        objIdMapper, _resSelectInsert, servicename, resourcename, xobject, _resProcessJSONValues);
    triggerSubscription(servicename, resourcename, obj, out_uuid, result);

    if (_resSelectInsert == OperationResult::ObjectCreated)
    {
        // The objects that waited for this one now get their references.
        resolveReferences(xobject, obj, referenceInfo, objIdMapper, true);
    }
    return result;
}

OperationResult::Enum JSONAccessor::updateCacheMappedXObjectWithJSON(
    const std::string& servicename, const std::string& resourcename, Poco::Int32 objId,
    const Poco::JSON::Object::Ptr& obj, XObjectRefBase* referenceInfo, IDbObjectIdMapper* objIdMapper,
    std::string& out_uuid) const
{
    return updateCacheMappedXObjectWithJSON(servicename, resourcename, objId, 0, obj, referenceInfo,
                                            objIdMapper, out_uuid);
}

OperationResult::Enum JSONAccessor::findJSONOperationResult(IDbObjectIdMapper* objIdMapper,
                                                            OperationResult::Enum _resSelectInsert,
                                                            const std::string& servicename,
                                                            const std::string& resourcename,
                                                            const DBData::XObject& xobject,
                                                            OperationResult::Enum _resProcessJSONValues) const
{
    switch (_resSelectInsert)
    {
    case OperationResult::ObjectUpdated:
        if (_resProcessJSONValues == OperationResult::ObjectUpdated ||
            _resProcessJSONValues == OperationResult::ObjectUnchanged)
        {
            return _resProcessJSONValues;
        }
        return OperationResult::ErrorOnUpdate;
    case OperationResult::ObjectCreated:
        if (_resProcessJSONValues == OperationResult::ObjectUpdated)
        {
            return OperationResult::ObjectCreated;
        }
        // An object that holds nothing from its handler must not stay behind.
        if (_resProcessJSONValues == OperationResult::ObjectUnchanged)
        {
            LOG_ERROR("XObject " << xobject.getUUID() << " was created but has no changes in attributes!");
            deleteXObjectAfterOperationFailed(objIdMapper, servicename, resourcename, xobject);
        }
        else if (_resProcessJSONValues == OperationResult::ErrorOnUpdate)
        {
            deleteXObjectAfterOperationFailed(objIdMapper, servicename, resourcename, xobject);
            LOG_TRACE("Created object deleted.");
        }
        return OperationResult::ErrorOnUpdate;
    default:
        LOG_ERROR("Unexpected return value of selectOrInsertXObject.");
        return OperationResult::ErrorOnUpdate;
    }
}

void JSONAccessor::deleteXObjectAfterOperationFailed(IDbObjectIdMapper* objIdMapper,
                                                     const std::string& servicename,
                                                     const std::string& resourcename,
                                                     const DBData::XObject& xobject) const
{
    if (!deleteXObject(servicename, resourcename, xobject))
    {
        LOG_ERROR("Failed to clean up newly created xobject " << xobject.getUUID());
    }
    objIdMapper->delXObjId(xobject.getDBID());
}

bool JSONAccessor::resolveReferences(DBData::XObject& objectCreated, Poco::JSON::Object::Ptr obj,
                                     XObjectRefBase* referenceInfo, IDbObjectIdMapper* objIdMapper,
                                     bool updateParent) const
{
    Poco::Int32 objId = 0;
    ServiceArrayIndexType_t serviceItemIndex = 0;
    if (!objIdMapper->getObjIdItemByXObjId(objectCreated.getDBID(), objId, serviceItemIndex))
    {
        return false;
    }

    bool result = true;
    const XObjectRefBase::DependencyList dependency_infos = referenceInfo->getDependencyInfos(objId);
    for (auto dependencyInfo = dependency_infos.cbegin(); dependencyInfo != dependency_infos.cend();
         ++dependencyInfo)
    {
        const XObjectRefBase::XObjectRefData& data = **dependencyInfo;
        if (data.pointingToId != objId)
        {
            // This object refers to another one.
            if (updateParent)
            {
                continue;
            }
            DBData::XObjectId xObjIdDestination = -1;
            if (!objIdMapper->getXObjIdItemByObjId(data.pointingToId, 0, xObjIdDestination))
            {
                // The target comes later and completes the reference then.
                LOG_DEBUG("No xObjId found for objId: " << data.pointingToId);
                result = false;
                continue;
            }
            result = setReference(obj, objId, xObjIdDestination, referenceInfo, dependencyInfo);
            continue;
        }

        // Another object refers to this one.
        if (!updateParent)
        {
            continue;
        }
        const Poco::Int32 objIdSource = data.pointingFromObjectData->getObjectId();
        const DBData::XObjectId xObjIdDestination = objectCreated.getDBID();
        DBData::XObject xObjectSource{DBData::Element::Ptr()};

        DBData::XObjectId xObjIdSource = -1;
        if (!objIdMapper->getXObjIdItemByObjId(objIdSource, 0, xObjIdSource))
        {
            LOG_DEBUG("No xObjId found for objId: " << objIdSource);
            result = false;
            continue;
        }
        if (!m_JSONDataCache->selectXObjectByID(xObjIdSource, xObjectSource, 0, false))
        {
            LOG_ERROR("No attribute values found.");
            result = false;
            continue;
        }

        Poco::JSON::Object::Ptr resultJSonObject(new Poco::JSON::Object);
        setReference(resultJSonObject, objIdSource, xObjIdDestination, referenceInfo, dependencyInfo);

        const std::string service = data.pointingFromObjectData->getServiceName();
        const std::string resource = data.pointingFromObjectData->getResourceName();
        if (m_JSONDataCache->processJSONValues(IPC, service, resource, xObjectSource,
                                               resultJSonObject.get()) == OperationResult::ErrorOnUpdate)
        {
            LOG_ERROR("processing attribute values with point to xObjId: "
                      << objectCreated.getDBID() << " objId: " << objIdSource << " failed.");
            result = false;
        }
        else
        {
            triggerSubscription(service, resource, resultJSonObject, xObjectSource.getUUID());
        }
    }
    return result;
}

bool JSONAccessor::setReference(Poco::JSON::Object::Ptr resultJSonObject, Poco::Int32 /*objIdSource*/,
                                DBData::XObjectId xObjIdDestination, XObjectRefBase* /*referenceInfo*/,
                                XObjectRefBase::DependencyList::const_iterator dependencyInfo) const
{
    const std::string attributeName = (*dependencyInfo)->pointingFromObjectData->getAttributeName();
    if (!resultJSonObject->has(attributeName))
    {
        resultJSonObject->set(attributeName, xObjIdDestination);
        return true;
    }

    // A second reference from the same attribute turns the number into an array.
    const Poco::Dynamic::Var tmp = resultJSonObject->get(attributeName);
    Poco::JSON::Array::Ptr arrayPtr(new Poco::JSON::Array);
    try
    {
        arrayPtr = tmp.extract<Poco::JSON::Array::Ptr>();
    }
    catch (const Poco::BadCastException&)
    {
        arrayPtr->add(tmp.convert<long>());
    }
    catch (const Poco::InvalidArgumentException&)
    {
        LOG_ERROR("Empty value used to set references!");
    }
    catch (const Poco::InvalidAccessException&)
    {
        // What Poco raises for a null member.
        LOG_ERROR("Empty value used to set references!");
    }
    arrayPtr->add(xObjIdDestination);
    resultJSonObject->set(attributeName, arrayPtr);
    return true;
}

bool JSONAccessor::triggerReferenceChangeAfterDelete(const DBData::XObject& objectToDelete,
                                                     XObjectRefBase* referenceInfo,
                                                     IDbObjectIdMapper* objIdMapper) const
{
    Poco::Int32 objId = 0;
    ServiceArrayIndexType_t serviceItemIndex = 0;
    if (!objIdMapper->getObjIdItemByXObjId(objectToDelete.getDBID(), objId, serviceItemIndex))
    {
        return false;
    }

    bool result = true;
    for (const XObjectRefBase::XObjectRefData* dependencyInfo : referenceInfo->getDependencyInfos(objId))
    {
        if (dependencyInfo->pointingToId != objId)
        {
            continue;
        }
        const Poco::Int32 objIdSource = dependencyInfo->pointingFromObjectData->getObjectId();
        DBData::XObjectId xObjIdSource = -1;
        if (!objIdMapper->getXObjIdItemByObjId(objIdSource, 0, xObjIdSource))
        {
            continue;
        }
        DBData::XObject xObjectSource{DBData::Element::Ptr()};
        if (!m_JSONDataCache->selectXObjectByID(xObjIdSource, xObjectSource, 0, false))
        {
            LOG_ERROR("No attribute values found.");
            result = false;
            continue;
        }
        triggerSubscription(dependencyInfo->pointingFromObjectData->getServiceName(),
                            dependencyInfo->pointingFromObjectData->getResourceName(),
                            Poco::JSON::Object::Ptr(new Poco::JSON::Object), xObjectSource.getUUID());
    }
    return result;
}

bool JSONAccessor::deleteXObjectWithReferences(const std::string& servicename,
                                               const std::string& resourcename,
                                               const DBData::XObject& xobject, XObjectRefBase* referenceInfo,
                                               IDbObjectIdMapper* objIdMapper) const
{
    if (!deleteXObject(servicename, resourcename, xobject))
    {
        return false;
    }
    triggerSubscription(servicename, resourcename, Poco::JSON::Object::Ptr(), xobject.getUUID());
    triggerSubscription(servicename, resourcename);
    triggerReferenceChangeAfterDelete(xobject, referenceInfo, objIdMapper);
    return true;
}

void JSONAccessor::triggerSubscription(const std::string& servicename, const std::string& resourcename,
                                       const Poco::JSON::Object::Ptr& obj, const std::string& out_uuid) const
{
    if (m_changeListener == nullptr)
    {
        return;
    }
    m_changeListener->changedElement(POST, servicename, resourcename, out_uuid, obj.get());
}

void JSONAccessor::triggerSubscription(const std::string& servicename, const std::string& resourcename) const
{
    if (m_changeListener == nullptr)
    {
        return;
    }
    m_changeListener->changedResourceCollection(POST, servicename, resourcename, nullptr);
}

void JSONAccessor::triggerSubscription(const std::string& servicename, const std::string& resourcename,
                                       const Poco::JSON::Object::Ptr& obj, const std::string& out_uuid,
                                       OperationResult::Enum result) const
{
    switch (result)
    {
    case OperationResult::ObjectCreated:
        // The resource has one object more.
        triggerSubscription(servicename, resourcename);
        break;
    case OperationResult::ObjectUpdated:
    case OperationResult::ObjectProcessed:
        triggerSubscription(servicename, resourcename, obj, out_uuid);
        break;
    default:
        break;
    }
}

OperationResult::Enum JSONAccessor::selectXObject(DBData::XObjectId id, DBData::XObject& xobject) const
{
    return m_JSONDataCache->selectXObject(id, xobject);
}

bool JSONAccessor::selectXObject(const std::string& service, const std::string& resource,
                                 const std::string& elementId, DBData::XObject& xobject) const
{
    return m_JSONDataCache->selectXObjectByUUID(service, resource, elementId, xobject, 0, false);
}

bool JSONAccessor::getXObjectsWithAttributesOfValues(const std::string& service, const std::string& resource,
                                                     std::vector<DBData::XObject::Ptr>& resultList,
                                                     const AttributeValuePairs& attrList) const
{
    return m_JSONDataCache->getXObjectsWithAttributesOfValues(service, resource, resultList, attrList);
}

bool JSONAccessor::getXObjectIdsWithAttributesOfValues(const std::string& service,
                                                       const std::string& resource,
                                                       std::vector<long>& resultList,
                                                       const AttributeValuePairs& attrList) const
{
    return m_JSONDataCache->selectXObjectIDsWithAttributesOfValues(service, resource, resultList, attrList);
}

bool JSONAccessor::deleteXObject(const std::string& /*service*/, const std::string& /*resource*/,
                                 const DBData::XObject& xobject) const
{
    return m_JSONDataCache->deleteXObject(xobject.getUUID());
}

bool JSONAccessor::isJSONDataCacheAvailable() const
{
    // Reversed on purpose: the bridges ask it to learn that the cache is missing.
    return m_JSONDataCache == nullptr;
}

} // namespace Orvi::Mapping
