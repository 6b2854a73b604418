#pragma once

#include "Command/HttpRequest.h"
#include "Command/HttpResponse.h"
#include "DataLayer/JSONExtractionMap_t.h"
#include "DataLayer/JSONInputProcessor.h"
#include "DataLayer/JSONProcessingContext.h"
#include "DataLayer/JSONProcessingData.h"
#include "IServiceDataHandler.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Endpoint.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/InitialCacheData.h"
#include "JSONDataCache/JSONDataCache.h"
#include "MappingTypes.h"
#include "OperationResult.h"
#include "ProcessingData.h"

#include <Poco/JSON/Object.h>
#include <Poco/SharedPtr.h>

#include <string>
#include <vector>

namespace Orvi::Mapping
{

/// The database as a microservice sees it: the store and its query engine, joined to the data handler
/// that carries values to and from the rest of the vehicle.
class MappingServiceJSONDataCache : public ::Orvi::JSONDataCache::JSONDataCache,
                                    public DataLayer::JSONInputProcessor
{
public:
    static const std::string jsonDataOk;
    /// "{ "status" : "ok" }", the body of a successful POST or DELETE.

    MappingServiceJSONDataCache(DBData::ServiceMap& serviceCache, IServiceDataHandler* dataHandler);
    /// The handler is borrowed and may be null; then nothing reaches the other side of the vehicle.

    ~MappingServiceJSONDataCache() override;

    using ::Orvi::JSONDataCache::JSONDataCache::insertXObject;
    using ::Orvi::JSONDataCache::JSONDataCache::queryCache;
    using ::Orvi::JSONDataCache::JSONDataCache::selectXObject;

    OperationResult::Enum
    processAttributeValues(DataLayer::JSONProcessingContext::Enum ctx, const std::string& servicename,
                           const std::string& resourcename, DBData::XObject& xObject,
                           Poco::SharedPtr<DataLayer::JSONExtractionMap_t> extractionMap) override;
    /// Routes the cells as if they came without a JSON object.

    OperationResult::Enum processAttributeValues(DataLayer::JSONProcessingContext::Enum ctx,
                                                 const std::string& servicename,
                                                 const std::string& resourcename, DBData::XObject& xObject,
                                                 DataLayer::JSONProcessingData& processingData) override;
    /// Sends the changed cells to the store, the handler or both, as the context demands; ErrorOnUpdate
    /// for a context that has no route.

    DBData::XObject::Ptr resolveObjectReferenceByDbId(const DBData::XObjectId& id) override;
    /// A private copy of the stored object with all references resolved, or an empty pointer.

    virtual Command::HTTPStatus queryCache(const Command::HttpRequest& httpRequest,
                                           Command::HttpResponse& out_response);
    /// Answers a GET after the version and the access rules of a resource were checked. A version that
    /// does not match is answered 200 with a text, so that old clients can tell it from a fault.

    virtual Command::HTTPStatus updatePOSTCache(const Command::HttpRequest& httpRequest,
                                                Command::HttpResponse& out_response);
    /// Changes the addressed object, creates an object on a resource, or changes every object that the
    /// query selects. Changes go to the data handler; only a new object is stored here at once.

    virtual Command::HTTPStatus updateDELETECache(const Command::HttpRequest& httpRequest,
                                                  Command::HttpResponse& out_response);
    /// Deletes the addressed object, the attributes named by "$fields" of it, or the objects of a
    /// resource listed by "id=a,b". The handler is asked first; the store is changed here if it agrees.

    Command::HTTPStatus updateDELETECacheInternal(const std::string& servicename,
                                                  const std::string& resourcename,
                                                  const std::string& elementId,
                                                  const std::vector<std::string>& fieldsToDelete);
    /// Without names the whole object. 202 when the handler takes the deletion upon itself.

    Command::HTTPStatus updatePOSTCacheBatch(const std::string& servicename, const std::string& resourcename,
                                             const Poco::JSON::Object::Ptr& obj,
                                             std::vector<DBData::XObject::Ptr>& xobjects);
    /// Hands the same JSON object to the handler for each object: first all into its mapper cache, then
    /// one by one for decision. 200 when all were done, 202 when one was only accepted, else the failure.

    OperationResult::Enum selectXObjectWithConstraints(const std::string& servicename,
                                                       const std::string& resourcename, XObjectId id,
                                                       DBData::XObject& retXObject);
    /// ObjectUpdated when the object was copied into retXObject.

    OperationResult::Enum selectXObjectWithoutConstraints(const std::string& servicename,
                                                          const std::string& resourcename, XObjectId id,
                                                          DBData::XObject& retXObject);
    /// The same as selectXObjectWithConstraints: the store knows no constraints on reading.

    OperationResult::Enum selectXObject(DBData::XObjectId id, DBData::XObject& retXObject);
    /// ObjectUnchanged when the object was copied into retXObject.

    OperationResult::Enum insertXObject(const std::string& servicename, const std::string& resourcename,
                                        DBData::XObject& xobj);
    /// ObjectCreated when a new object of the resource was swapped into xobj.

    OperationResult::Enum updateCacheXObjectWithJSON(DataLayer::JSONProcessingContext::Enum ctx,
                                                     const std::string& servicename,
                                                     const std::string& resourcename,
                                                     DBData::XObject& xObject, Poco::JSON::Object::Ptr json);
    /// Reloads xObject from the store by its UUID and lets the JSON members enter it.

    OperationResult::Enum insertCacheXObjectWithJSON(DataLayer::JSONProcessingContext::Enum ctx,
                                                     const std::string& servicename,
                                                     const std::string& resourcename,
                                                     DBData::XObject& xObject,
                                                     const Poco::JSON::Object& json);
    /// Creates an object and lets the JSON members enter it; an object that fails to take them is
    /// deleted again, so that no half-made object stays behind.

    bool getXObjectsWithAttributesOfValues(const std::string& servicename, const std::string& resourcename,
                                           std::vector<DBData::XObject::Ptr>& result);
    /// Appends private copies of all objects of the resource.

    bool getXObjectsWithAttributesOfValues(const std::string& servicename, const std::string& resourcename,
                                           std::vector<DBData::XObject::Ptr>& result,
                                           const AttributeValuePairs& pairs);
    /// Appends private copies of the objects holding every given value. False when the search fails
    /// or an object found cannot be read; the objects appended before stay.

    static std::string getLocation(const std::string& service, const std::string& resource,
                                   const std::string& element);
    /// The address of an object.

    bool queryCacheEndpoints(const std::string& service, const std::string& resource,
                             std::vector<DBData::Endpoint>& endpoints, const std::string& element) const;
    /// The rules of the element when an element is named, else those of the resource.

    bool getElementEndpoints(const std::string& service, const std::string& resource,
                             std::vector<DBData::Endpoint>& endpoints) const;
    /// Appends the element's rules; false when there is no element or the list stays empty.

    bool getResourceEndpoints(const std::string& service, const std::string& resource,
                              std::vector<DBData::Endpoint>& endpoints) const;
    /// Appends the resource's rules; false when there is no resource or the list stays empty.

protected:
    OperationResult::Enum processAttributeValuesInputIPC(DataLayer::JSONProcessingContext::Enum ctx,
                                                         const std::string& servicename,
                                                         const std::string& resourcename,
                                                         DBData::XObject& xobject,
                                                         DataLayer::JSONProcessingData& processingData);
    /// Values from the handler go into the store and to nobody else.

    OperationResult::Enum
    processAttributeValuesInputUserToMapper(DataLayer::JSONProcessingContext::Enum ctx,
                                            const std::string& servicename, const std::string& resourcename,
                                            DBData::XObject& xobject,
                                            DataLayer::JSONProcessingData& processingData);
    /// A user's change of an existing object: the handler decides, and only posted references are
    /// stored here. The other values come back through the handler if it accepts them.

    OperationResult::Enum processAttributeValuesInputUserToDB(DataLayer::JSONProcessingContext::Enum ctx,
                                                              const std::string& servicename,
                                                              const std::string& resourcename,
                                                              DBData::XObject& xobject,
                                                              DataLayer::JSONProcessingData& processingData);
    /// A user's new object: stored first, then told to the handler. A refusal of the handler does not
    /// undo the store.

    bool storePostedObjectRefs(const std::string& servicename, const std::string& resourcename,
                               const DBData::XObject& xobject,
                               const DataLayer::JSONProcessingData& processingData);
    /// Stores the reference cells among the changed cells; true also when there are none.

    OperationResult::Enum writeValuesToDB(const std::string& servicename, const std::string& resourcename,
                                          const std::string& uuid,
                                          const Poco::SharedPtr<DataLayer::JSONExtractionMap_t>& values);
    /// Writes the cells into the store in name order; the first failure stops, and what was written
    /// before stays. ObjectUnchanged when there is nothing to write.

    ProcessingData convertProcessingData(const DataLayer::JSONProcessingData& processingData,
                                         XObjectId xObjId);
    /// The handler's form of the changed cells. Cleared cells are left out. Raises
    /// Poco::NullPointerException for a cell without definition and Poco::DataException for one that
    /// does not convert.

    IServiceDataHandler* m_dataHandler;
    /// Not owned; may be null.

private:
    Command::HTTPStatus postOnObject(const std::string& servicename, const std::string& resourcename,
                                     const std::string& uuid, const DBData::Element::Ptr& element,
                                     const Poco::JSON::Object::Ptr& json,
                                     Command::HttpResponse& out_response);
    /// The object must exist: an unknown one is 403, not 404.

    Command::HTTPStatus postNewObject(const std::string& servicename, const std::string& resourcename,
                                      const ::Orvi::JSONDataCache::InitialCacheData& initialData,
                                      const Poco::JSON::Object::Ptr& json,
                                      Command::HttpResponse& out_response);
    /// Stores first and asks the handler afterwards; a refused object is removed again.

    Command::HTTPStatus postOnQuery(const Command::HttpRequest& httpRequest, const std::string& servicename,
                                    const std::string& resourcename, const Poco::JSON::Object::Ptr& json,
                                    Command::HttpResponse& out_response);
    /// On failure every selected object is posted back as it was read, so that the handler can undo.

    Command::HTTPStatus deleteOnResource(const Command::HttpRequest& httpRequest,
                                         const ::Orvi::JSONDataCache::InitialCacheData& initialData,
                                         Command::HttpResponse& out_response);
    /// Every listed id is tried; the first success wins unless one was only accepted.

    Command::HTTPStatus deleteOnObject(const Command::HttpRequest& httpRequest,
                                       const ::Orvi::JSONDataCache::InitialCacheData& initialData,
                                       Command::HttpResponse& out_response);
    /// The whole object, or the attributes named by "$fields"; default attributes cannot be deleted.
};

} // namespace Orvi::Mapping
