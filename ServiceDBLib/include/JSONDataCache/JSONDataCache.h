#pragma once

#include "Command/HttpResponse.h"
#include "Command/RequestBase.h"
#include "Command/UrlPath.h"
#include "Command/WebSocketResponseObject.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/DBData/XObjectCache.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"
#include "JSONDataCache/InitialCacheData.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/RegularExpression.h>
#include <Poco/Types.h>
#include <Poco/UUID.h>

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Orvi::JSONDataCache
{

class RowTextCache;
class SortedOrderCache;

/// The in-memory database of one microservice and its query engine. Holds the service rows by
/// reference; entered by one thread at a time.
class JSONDataCache
{
public:
    using AttributeValuePairs = std::vector<std::pair<std::string, Poco::Dynamic::Var>>;
    /// Attribute names with the value each must hold exactly.

    static const std::string MIMETYPE_TEXT_PLAIN;
    /// "text/plain", the media type of id keywords.

    explicit JSONDataCache(DBData::ServiceMap& serviceCache);
    /// Binds the map, which must outlive the cache; its later changes are seen at once.

    JSONDataCache(const JSONDataCache&) = delete;
    JSONDataCache& operator=(const JSONDataCache&) = delete;

    virtual ~JSONDataCache();

    virtual Command::HTTPStatus queryCache(const Command::RequestBase& request,
                                           Command::HttpResponse& out_response, Poco::UInt16 requestPort);
    /// Answers a GET; out_response is filled only on success. A service is seen only on its own port,
    /// the root and the keywords on any. An unknown resource raises Poco::NullPointerException. The
    /// answer is meant to be sent: the rows of a resource may be held as JSON text rather than as JSON
    /// objects, so read them from the body, not from the JSON message.

    virtual Command::HTTPStatus queryCache(const Command::RequestBase& request,
                                           Command::WebSocketResponseObject& out_response,
                                           Poco::UInt16 requestPort);
    /// The same for a subscription, which may not address a reserved keyword (500).

    virtual bool updateServiceUUID(const std::string& serviceName, const std::string& newuuid);
    /// Gives the named service a new UUID; an empty text clears it. False for an unknown service or a
    /// text that is not a UUID, which leaves the service as it was.

    InitialCacheData queryCacheInitial(const Command::UrlPath::Characteristic& characteristic,
                                       const std::string& servicename, const std::string& resourcename);
    /// Resolves an address against the rows. A resource without element is INVALID; an unknown resource
    /// raises Poco::NullPointerException after its warning.

    bool selectServices(std::vector<DBData::Service::Ptr>& retServices);
    /// Appends all services in name order; true when retServices is not empty.

    DBData::Service::Ptr selectService(const std::string& name);
    /// Null for an unknown name.

    bool selectService(const std::string& name, DBData::Service& retService);
    /// Copies the named service into retService; false for an unknown name.

    DBData::Resource::Ptr selectResource(const std::string& servicename, const std::string& resourcename);
    /// Null when the service or the resource is unknown.

    bool selectResource(const std::string& servicename, const std::string& name,
                        DBData::Resource& retResource, bool);
    /// Assigns the named resource to retResource, which fills the service behind its parent too; false
    /// when absent. The flag has no effect.

    bool selectResources(const std::string& servicename, std::vector<DBData::Resource::Ptr>& retResources);
    /// Appends the service's resources in name order; true when retResources is not empty.

    DBData::Element::Ptr selectElement(const std::string& servicename, const std::string& resourcename);
    /// The resource's element; null when the resource is unknown or has none.

    std::string selectResourceElementName(const std::string& servicename, const std::string& resourcename);
    /// Empty when the resource or its element is unknown.

    bool existsObjectWithId(DBData::DbId objectId) const;
    /// True when the store holds an object of this id.

    DBData::XObject::Ptr selectXObject(DBData::DbId id, Poco::Int32 recursionDepth);
    /// A private copy of the stored object with its references resolved recursionDepth levels deep;
    /// null, with a warning, when there is none.

    DBData::XObject::Ptr selectXObject(const std::string& uuid, Poco::Int32 recursionDepth);
    /// The same by UUID.

    DBData::XObject::Ptr selectXObject(const std::string& servicename, const std::string& resourcename,
                                       const std::string& uuid, Poco::Int32 recursionDepth);
    /// The same, null also when the object belongs to another resource.

    bool selectXObjectByID(DBData::DbId id, DBData::XObject& retXObject, Poco::Int32 recursionDepth, bool);
    /// Swaps a private copy of the object into retXObject; false when there is none. The flag has no
    /// effect.

    bool selectXObjectByUUID(const std::string& servicename, const std::string& resourcename,
                             const std::string& uuid, DBData::XObject& retXObject, Poco::Int32 recursionDepth,
                             bool withConstraints);
    /// Swaps a private copy of the object into retXObject; false when the resource is unknown or the
    /// object is not one of its objects. withConstraints has no effect here.

    void selectValues(DBData::XObject& xobj, Poco::Int32 recursionDepth);
    /// Resolves the references of a private copy into selected objects; past depth zero only "id",
    /// "name" and "uri" keep their values. References to deleted objects are removed from the store.

    bool selectXObjectsFromElement(const DBData::Element& parentElement,
                                   std::vector<DBData::XObject::Ptr>& retXobjects, int expansionLevel);
    /// Private copies of all objects of the element, by ascending id; true when there are any.

    bool selectXObjectsByRequest(const Command::RequestBase& request,
                                 std::vector<DBData::XObject::Ptr>& retXobjects);
    /// The objects of a resource address that match the request's free-text and attribute searches,
    /// by ascending id; without searches, all of them. False only for another kind of address or an
    /// unknown resource. Raises Poco::RegularExpressionException for a search that does not compile.

    bool selectXObjectIDsOfResource(const std::string& servicename, const std::string& resourcename,
                                    std::vector<long>& retIds);
    /// Replaces retIds by the ids of the resource's objects, in UUID order; false when there are none.

    bool selectXObjectIDsWithAttributesOfValues(const std::string& servicename,
                                                const std::string& resourcename, std::vector<long>& retIds,
                                                const AttributeValuePairs& attributes_with_values);
    /// Narrows retIds to the objects holding every given value exactly; unknown attribute names are
    /// skipped. True whenever the search ran, whatever it found.

    int getExpansionLevel(const Command::RequestBase& request) const;
    /// The level at which a request renders references; 1 when it names the references to expand.

    bool insertXObject(const std::string& service, const std::string& resource, DBData::XObject& xobj);
    /// Creates an object of the resource's element, with the UUID of xobj if it has one, and swaps it
    /// into xobj: "id", "name" and "uri" get their initial values, every other attribute is null.
    /// False when the element is unknown or the UUID is in use. Raises Poco::RuntimeException when no
    /// free UUID is found.

    bool insertXObject(const std::string& service, const std::string& resource, std::string& newUUID,
                       DBData::DbId& newDBID);
    /// The same with a UUID as text, which is ignored unless it parses; gives back the UUID and the id.

    bool insertXObject(const std::string& service, const std::string& resource, std::string& newUUID);
    /// The same without the id.

    bool deleteXObject(const std::string& uuid);
    /// Removes the object from its indexes, the store and its element; false when it is unknown.
    /// References to it are left to be repaired when they are next read.

    std::size_t deleteAllServicesWithName(const std::string& servicename);
    /// Removes the service's objects from the store and the service from the map. Always 1.

    bool updateCacheAttributeValueById(DBData::AttributeValue& attrvalue, bool allowDelete);
    /// Converts, checks and writes the cell into the stored object named by its parent id, and files it
    /// in its index; a reference is stored as its bare UUID. A null value removes the stored one when
    /// allowDelete is set and is refused otherwise.

    bool updateCacheArrayAttributeValueById(const DBData::AttributeValue& attrvalue, bool allowDelete);
    /// The same for an array attribute. Null elements are dropped from the cell's shared vector in
    /// place; an array left empty is a removal.

    void setPagingBeforeRendering(bool enabled) { m_pagingBeforeRendering = enabled; }
    /// On (the default), a resource query searches, sorts and pages the stored values and selects and
    /// renders only the objects of its answer; off, it selects and renders every object it finds first.
    /// The answers are the same; a dangling reference is repaired when its object is selected.

protected:
    virtual Command::HTTPStatus queryCacheRoot(const Command::RequestBase& requestCommand,
                                               Command::WebSocketResponseObject& retResponse);
    /// Subscriptions to the root are not supported: 404.

    virtual Command::HTTPStatus queryCacheRoot(const Command::RequestBase& requestCommand,
                                               Command::HttpResponse& retResponse);
    /// Lists every service of the map, filtered but never paged; 404 when there are none.

    template <typename ResponseT>
    Command::HTTPStatus getResponseData(const Command::RequestBase& request, Poco::UInt16 requestPort,
                                        const InitialCacheData& data, ResponseT& out_response);
    /// Checks the port of the service and dispatches by the kind of address.

    template <typename ResponseT>
    Command::HTTPStatus queryCacheService(const Command::RequestBase& request, const DBData::Service& service,
                                          ResponseT& out_response);
    /// Lists the resources of a service; without a closing slash in the path, also the service record.

    template <typename ResponseT>
    Command::HTTPStatus queryCacheResource(const Command::RequestBase& request, ResponseT& out_response);
    /// Lists the objects of a resource.

    template <typename ResponseT>
    Command::HTTPStatus queryCacheElement(const Command::RequestBase& request, ResponseT& out_response);
    /// Answers one object of a resource; 404 when it is not one of its objects.

    void constructObjectResponse(const Poco::JSON::Object::Ptr& pJsonDbObject,
                                 Command::HttpResponse& out_response);
    /// Wraps the object as "data" into a new envelope with status.

    void constructObjectResponse(const Poco::JSON::Object::Ptr& pJsonDbObject,
                                 Command::WebSocketResponseObject& out_response);
    /// Hands the object to the subscription answer.

    void constructArrayResponse(const Poco::JSON::Object::Ptr& baseObj,
                                const Poco::JSON::Array::Ptr& pDataArray,
                                const Poco::JSON::Object::Ptr& pPagingObject,
                                Command::HttpResponse& out_response);
    /// Wraps the array as "data" into baseObj (or a new envelope) with status and paging.

    void constructArrayResponse(const Poco::JSON::Object::Ptr& baseObj,
                                const Poco::JSON::Array::Ptr& pDataArray,
                                const Poco::JSON::Object::Ptr& pPagingObject,
                                Command::WebSocketResponseObject& out_response);
    /// Hands array and paging to the subscription answer; baseObj is not transmitted.

    DBData::XObjectCache m_xobjCache;

    bool isDanglingSuspect(DBData::DbId element) const { return m_danglingSuspects.count(element) > 0; }
    /// True while the element's objects may name an object that is gone, so that its queries take the
    /// path that repairs them.
    /// Every object of this cache; kept in step with the elements' registries and indexes.

private:
    bool findXObjectIds(const Command::RequestBase& request, const DBData::Element& element,
                        std::set<DBData::DbId>& out_ids);
    /// The objects that the request's search criteria find in the element's indexes; false, leaving
    /// out_ids alone, when the request has none.

    bool queryResourceRows(const Command::RequestBase& request, bool asText, Poco::JSON::Array& out_data,
                           Poco::JSON::Object::Ptr& out_paging);
    /// Answers a resource query from the stored values, rendering only the objects of the answer; false
    /// when the query needs every object rendered first. With asText, rows may be JSON text (JsonText)
    /// for an answer that is only stringified.

    bool queryObjectText(const Command::RequestBase& request, int expansionLevel,
                         Poco::Dynamic::Var& out_text);
    /// Gives the object that the request addresses as JSON text from its stored values; false when the
    /// answer needs its selection (a missing or dangling object, a deeper expansion, fields to pick).

    void suspectDanglingReferences(const DBData::Element* goneFrom = nullptr);
    /// Marks the elements that may name an object that is gone: with goneFrom, those with a reference
    /// attribute that is free of targets or allows the resource of goneFrom; without, every element
    /// with a reference attribute.

    void suspectDanglingReference(const DBData::Element& element, const std::vector<std::string>& uuids);
    /// Marks the element when a reference just written names an object that is not stored.

    DBData::ServiceMap& m_serviceCache;
    const Poco::UUID m_systemUUID;
    bool m_pagingBeforeRendering;
    std::set<DBData::DbId> m_danglingSuspects;
    /// Elements whose objects may name objects that are gone. A selection repairs such references, so their
    /// answers select every object until a selection of all of them has done so.
    std::unique_ptr<SortedOrderCache> m_sortedOrders;
    /// Sorted orders of whole elements, kept while their elements stay unchanged.
    std::unique_ptr<RowTextCache> m_rowTexts;
    /// Objects written as rows, kept while the store stays unchanged.
};

const Poco::RegularExpression& findWildCard();
/// Matches a run of query wildcards, in either spelling.

std::string prepareRegEx(const std::string& searchValue);
/// The pattern of a search value: anchored at both ends, each run of wildcards matching any text. The
/// other characters are taken as pattern syntax.

std::string extractUuid(const Poco::Dynamic::Var& value);
/// The UUID text of a reference in any of its input forms. Raises what the conversion of the reference
/// raises, and Poco::SyntaxException when the address does not end in a UUID.

} // namespace Orvi::JSONDataCache
