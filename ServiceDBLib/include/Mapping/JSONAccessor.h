#pragma once

#include "IDbObjectIdMapper.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "MappingTypes.h"
#include "OperationResult.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"
#include "XObjectRefBase.h"

#include <Poco/JSON/Object.h>
#include <Poco/Types.h>

#include <string>
#include <vector>

namespace Orvi::Mapping
{

/// The way into the database for data handlers, which name their objects by a 32-bit object id and an
/// array index. Creates and updates objects with JSON values, keeps the references between them in step
/// in whichever order they arrive, tells subscribers what changed and deletes objects with what hangs on
/// them. Runs on the worker thread.
class JSONAccessor
{
public:
    using AttributeValuePairs = ::Orvi::JSONDataCache::JSONDataCache::AttributeValuePairs;

    JSONAccessor(MappingServiceJSONDataCache* JSONDataCache, Service::SubscriptionTrigger* changeListener);
    /// Both are borrowed. Without a listener nobody hears of changes.

    virtual ~JSONAccessor();

    OperationResult::Enum
    updateCacheMappedXObjectWithJSON(const std::string& servicename, const std::string& resourcename,
                                     Poco::Int32 objId, ServiceArrayIndexType_t serviceItemIndex,
                                     const Poco::JSON::Object::Ptr& obj, XObjectRefBase* referenceInfo,
                                     IDbObjectIdMapper* objIdMapper, std::string& out_uuid) const;
    /// Writes the JSON values into the object mapped to objId and serviceItemIndex, which is created and
    /// mapped first if it is unknown; a new object gets its references to known objects added to obj, and
    /// completes the references of the objects that waited for it. ObjectCreated, ObjectUpdated,
    /// ObjectUnchanged or ErrorOnUpdate; a new object that takes no values is removed again.

    OperationResult::Enum updateCacheMappedXObjectWithJSON(const std::string& servicename,
                                                           const std::string& resourcename, Poco::Int32 objId,
                                                           const Poco::JSON::Object::Ptr& obj,
                                                           XObjectRefBase* referenceInfo,
                                                           IDbObjectIdMapper* objIdMapper,
                                                           std::string& out_uuid) const;
    /// The same with array index 0.

    bool deleteXObjectWithReferences(const std::string& servicename, const std::string& resourcename,
                                     const DBData::XObject& xobject, XObjectRefBase* referenceInfo,
                                     IDbObjectIdMapper* objIdMapper) const;
    /// Deletes the object and tells its subscribers and those of the objects that refer to it. The id
    /// mapping is left to the caller, who removes it afterwards. False when the delete failed.

    void deleteXObjectAfterOperationFailed(IDbObjectIdMapper* objIdMapper, const std::string& servicename,
                                           const std::string& resourcename,
                                           const DBData::XObject& xobject) const;
    /// Removes a new object that could not take its values, together with its id mapping.

    OperationResult::Enum findJSONOperationResult(IDbObjectIdMapper* objIdMapper,
                                                  OperationResult::Enum _resSelectInsert,
                                                  const std::string& servicename,
                                                  const std::string& resourcename,
                                                  const DBData::XObject& xobject,
                                                  OperationResult::Enum _resProcessJSONValues) const;
    /// The result of an update from how the object was found or created and how its values went in. A
    /// new object without changed values is removed again.

    bool resolveReferences(DBData::XObject& objectCreated, Poco::JSON::Object::Ptr obj,
                           XObjectRefBase* referenceInfo, IDbObjectIdMapper* objIdMapper,
                           bool updateParent) const;
    /// Without updateParent, adds to obj the references of the new object to objects that exist; with
    /// it, writes the new object into the objects that refer to it and tells their subscribers. The
    /// result tells how the entry handled last went.

    bool setReference(Poco::JSON::Object::Ptr resultJSonObject, Poco::Int32 objIdSource,
                      DBData::XObjectId xObjIdDestination, XObjectRefBase* referenceInfo,
                      XObjectRefBase::DependencyList::const_iterator dependencyInfo) const;
    /// Adds the target's id to the member of the referring attribute: a number for the first reference,
    /// an array from the second on.

    bool triggerReferenceChangeAfterDelete(const DBData::XObject& objectToDelete,
                                           XObjectRefBase* referenceInfo,
                                           IDbObjectIdMapper* objIdMapper) const;
    /// Tells the subscribers of the objects that refer to the deleted object; it must still be mapped.

    void triggerSubscription(const std::string& servicename, const std::string& resourcename,
                             const Poco::JSON::Object::Ptr& obj, const std::string& out_uuid) const;
    /// One object changed.

    void triggerSubscription(const std::string& servicename, const std::string& resourcename) const;
    /// The collection of the resource changed.

    void triggerSubscription(const std::string& servicename, const std::string& resourcename,
                             const Poco::JSON::Object::Ptr& obj, const std::string& out_uuid,
                             OperationResult::Enum result) const;
    /// The collection for a created object, the object for an updated or processed one, nobody else.

    OperationResult::Enum selectXObject(DBData::XObjectId id, DBData::XObject& xobject) const;
    /// ObjectUnchanged when the object was copied into xobject, else ErrorOnUpdate.

    bool selectXObject(const std::string& service, const std::string& resource, const std::string& elementId,
                       DBData::XObject& xobject) const;
    /// The object of that UUID in the resource.

    bool getXObjectsWithAttributesOfValues(const std::string& service, const std::string& resource,
                                           std::vector<DBData::XObject::Ptr>& resultList,
                                           const AttributeValuePairs& attrList) const;
    /// Copies of the objects holding every given value.

    bool getXObjectIdsWithAttributesOfValues(const std::string& service, const std::string& resource,
                                             std::vector<long>& resultList,
                                             const AttributeValuePairs& attrList) const;
    /// The ids of the objects holding every given value.

    bool deleteXObject(const std::string& service, const std::string& resource,
                       const DBData::XObject& xobject) const;
    /// Deletes the object by its UUID, wherever it lies.

    bool isJSONDataCacheAvailable() const;
    /// True when there is NO cache: the bridges read it that way.

private:
    MappingServiceJSONDataCache* m_JSONDataCache;
    Service::SubscriptionTrigger* m_changeListener;
};

} // namespace Orvi::Mapping
