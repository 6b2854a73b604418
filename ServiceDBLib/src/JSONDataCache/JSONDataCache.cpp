#include "JSONDataCache/JSONDataCache.h"

#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "Command/QueryFilterJSON.h"
#include "Command/ResponseObject.h"
#include "Command/StatusObject.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/IAttributeIndex.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBDataToJSONTransformator.h"
#include "JSONTools.h"
#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/SharedPtr.h>
#include <Poco/URI.h>

#include <map>
#include <set>
#include <unordered_set>

namespace Orvi::JSONDataCache
{

using Command::HttpResponse;
using Command::HTTPStatus;
using Command::RequestBase;
using Command::ResponseObject;
using Command::StatusObject;
using Command::UrlPath;
using Command::WebSocketResponseObject;
using DBData::AttributeValue;
using DBData::AttributeValuePtr;
using DBData::DbId;
using DBData::Element;
using DBData::XObject;

const std::string JSONDataCache::MIMETYPE_TEXT_PLAIN = "text/plain";

namespace
{

constexpr char URI_SEPARATOR = '/';

// Generated UUIDs that collide with stored ones are drawn again, but not for ever.
constexpr int MAX_UUID_ATTEMPTS = 10;

const std::string ATTRIBUTE_ID = "id";
const std::string ATTRIBUTE_NAME = "name";
const std::string ATTRIBUTE_URI = "uri";

const std::string REGEX_ANY_TEXT = ".*";
const std::string REGEX_ALTERNATIVE = "|";

Poco::UUID makeSystemUUID()
{
    DBData::XObjectBase identity;
    identity.generateId();
    return identity.getId().get();
}

// The UUIDs of a stored array of references; false when the value is no such array.
bool extractUuidList(const Poco::Dynamic::Var& value, std::vector<std::string>& out_uuids)
{
    try
    {
        const AttributeValue::ValueArrayPtr array = value.extract<AttributeValue::ValueArrayPtr>();
        if (array.isNull())
        {
            return false;
        }
        out_uuids.clear();
        out_uuids.reserve(array->size());
        for (const Poco::Dynamic::Var& element : *array)
        {
            out_uuids.push_back(element.convert<std::string>());
        }
        return true;
    }
    catch (const Poco::Exception&)
    {
        return false;
    }
}

// Compiled once per search, studied, since every key of every index is matched against it.
Poco::SharedPtr<Poco::RegularExpression> compileSearch(const std::string& pattern)
{
    return new Poco::RegularExpression(pattern, 0, true);
}

} // namespace

JSONDataCache::JSONDataCache(DBData::ServiceMap& serviceCache)
    : m_xobjCache()
    , m_serviceCache(serviceCache)
    , m_systemUUID(makeSystemUUID())
{
}

JSONDataCache::~JSONDataCache() = default;

HTTPStatus JSONDataCache::queryCache(const RequestBase& request, HttpResponse& out_response,
                                     Poco::UInt16 requestPort)
{
    const UrlPath& urlPath = request.getUrlPath();
    const InitialCacheData data =
        queryCacheInitial(urlPath.getCharacteristic(), urlPath.getService(), urlPath.getResource());
    if (data.characteristic == UrlPath::INVALID)
    {
        return HTTPStatus::HTTP_NOT_FOUND;
    }
    if (!UrlPath::isReservedKeyword(data.characteristic))
    {
        return getResponseData(request, requestPort, data, out_response);
    }

    // Keywords are answered straight from the rows, on any port.
    out_response.setMimetype(MIMETYPE_TEXT_PLAIN);
    switch (data.characteristic)
    {
    case UrlPath::ROOT_ID:
        out_response.setDataFromText(m_systemUUID.toString(), MIMETYPE_TEXT_PLAIN);
        break;
    case UrlPath::SERVICE_ID:
        out_response.setDataFromText(data.serviceData->getId().toString(), MIMETYPE_TEXT_PLAIN);
        break;
    case UrlPath::SERVICE_SPEC:
        out_response.setDataFromText(data.serviceData->getSpec(), HttpResponse::MIMETYPE_JSON);
        break;
    case UrlPath::SERVICE_RESOURCE_ID:
        out_response.setDataFromText(data.resourceData->getId().toString(), MIMETYPE_TEXT_PLAIN);
        break;
    case UrlPath::SERVICE_RESOURCE_SPEC:
        out_response.setDataFromText(data.resourceData->getSpec(), HttpResponse::MIMETYPE_JSON);
        break;
    default:
        LOG_WARNING("Unknown reserved keyword type: " << static_cast<int>(data.characteristic));
        return HTTPStatus::HTTP_INTERNAL_SERVER_ERROR;
    }
    return HTTPStatus::HTTP_OK;
}

HTTPStatus JSONDataCache::queryCache(const RequestBase& request, WebSocketResponseObject& out_response,
                                     Poco::UInt16 requestPort)
{
    const UrlPath& urlPath = request.getUrlPath();
    const InitialCacheData data =
        queryCacheInitial(urlPath.getCharacteristic(), urlPath.getService(), urlPath.getResource());
    if (data.characteristic == UrlPath::INVALID)
    {
        return HTTPStatus::HTTP_NOT_FOUND;
    }
    if (UrlPath::isReservedKeyword(data.characteristic))
    {
        LOG_WARNING("Subscriptions to reserved keywords not allowed. ("
                    << static_cast<int>(data.characteristic) << ")");
        return HTTPStatus::HTTP_INTERNAL_SERVER_ERROR;
    }
    return getResponseData(request, requestPort, data, out_response);
}

InitialCacheData JSONDataCache::queryCacheInitial(const UrlPath::Characteristic& characteristic,
                                                  const std::string& servicename,
                                                  const std::string& resourcename)
{
    InitialCacheData data;
    data.characteristic = characteristic;
    if (characteristic == UrlPath::ROOT || characteristic == UrlPath::ROOT_ID)
    {
        return data;
    }

    data.serviceData = selectService(servicename);
    if (data.serviceData.isNull())
    {
        LOG_WARNING("Selection of Service \"/" << servicename << "\" failed.");
        data.characteristic = UrlPath::INVALID;
        return data;
    }

    switch (characteristic)
    {
    case UrlPath::SERVICE:
    case UrlPath::SERVICE_ID:
    case UrlPath::SERVICE_SPEC:
        break;
    case UrlPath::SERVICE_RESOURCE:
    case UrlPath::SERVICE_RESOURCE_ID:
    case UrlPath::SERVICE_RESOURCE_SPEC:
    case UrlPath::SERVICE_RESOURCE_ELEMENT:
        data.resourceData = selectResource(servicename, resourcename);
        if (data.resourceData.isNull() || data.resourceData->getElement().isNull())
        {
            LOG_WARNING("Selection of Resource \"/" << servicename << "/" << resourcename << "/\" failed.");
            data.characteristic = UrlPath::INVALID;
        }
        // Deliberately unguarded: an unknown resource ends the query with Poco::NullPointerException.
        data.elementData = data.resourceData->getElement();
        break;
    default:
        LOG_WARNING("queryCacheInitial unsupported characteristic: " << static_cast<int>(characteristic));
        data.characteristic = UrlPath::INVALID;
        break;
    }
    return data;
}

template <typename ResponseT>
HTTPStatus JSONDataCache::getResponseData(const RequestBase& request, Poco::UInt16 requestPort,
                                          const InitialCacheData& data, ResponseT& out_response)
{
    if (data.characteristic == UrlPath::ROOT)
    {
        return queryCacheRoot(request, out_response);
    }
    // The root lists the services of every port, but each service answers only on its own.
    if (data.serviceData->getPort() != requestPort)
    {
        return HTTPStatus::HTTP_NOT_FOUND;
    }
    switch (data.characteristic)
    {
    case UrlPath::SERVICE:
        return queryCacheService(request, *data.serviceData, out_response);
    case UrlPath::SERVICE_RESOURCE:
        return queryCacheResource(request, out_response);
    case UrlPath::SERVICE_RESOURCE_ELEMENT:
        return queryCacheElement(request, out_response);
    default:
        LOG_WARNING("Cannot get cache data for characteristic: " << static_cast<int>(data.characteristic));
        return HTTPStatus::HTTP_INTERNAL_SERVER_ERROR;
    }
}

HTTPStatus JSONDataCache::queryCacheRoot(const RequestBase&, WebSocketResponseObject&)
{
    LOG_ERROR("Not implemented yet");
    return HTTPStatus::HTTP_NOT_FOUND;
}

HTTPStatus JSONDataCache::queryCacheRoot(const RequestBase& requestCommand, HttpResponse& retResponse)
{
    std::vector<DBData::Service::Ptr> services;
    if (!selectServices(services))
    {
        LOG_WARNING("queryCache services not found");
        return HTTPStatus::HTTP_NOT_FOUND;
    }

    Poco::JSON::Object::Ptr pJsonDbObject(new Poco::JSON::Object(0));
    if (!DBDataToJSONTransformator::transformServicesToJSONObject(services, pJsonDbObject, ""))
    {
        return HTTPStatus::HTTP_NOT_FOUND;
    }

    const Poco::Dynamic::Var data = pJsonDbObject->get(ResponseObject::FIELD_DATA);
    const Poco::JSON::Array* servicesArray = nullptr;
    if (!data.isEmpty() && Util::JSONTools::testJsonArray(data, &servicesArray))
    {
        Poco::JSON::Array::Ptr filtered(new Poco::JSON::Array);
        Command::QueryFilterJSON::filterJSONArrayByQuery(*servicesArray, requestCommand, *filtered);
        pJsonDbObject->set(ResponseObject::FIELD_DATA, filtered);
    }

    retResponse.setDataFromObject(pJsonDbObject);
    return HTTPStatus::HTTP_OK;
}

template <typename ResponseT>
HTTPStatus JSONDataCache::queryCacheService(const RequestBase& request, const DBData::Service& service,
                                            ResponseT& out_response)
{
    try
    {
        Poco::JSON::Object::Ptr pJsonDbObject(new Poco::JSON::Object(0));
        Poco::JSON::Object::Ptr pPagingObject;

        // A closing slash asks for the resources only, without it the service record comes along.
        const std::string& path = request.getUri().getPath();
        const bool addServiceObject = path.empty() || path.back() != URI_SEPARATOR;

        if (!DBDataToJSONTransformator::transformToServiceQueryAnswer(service, pJsonDbObject,
                                                                      addServiceObject, ""))
        {
            throw Poco::Exception("invalid format of resources-data.");
        }

        Poco::JSON::Array::Ptr pDataArray = pJsonDbObject->getArray(ResponseObject::FIELD_DATA);
        if (!pDataArray.isNull() && pDataArray->size() > 0)
        {
            Command::QueryFilterJSON::filterJSONArrayByQuery(*pDataArray, request, *pDataArray,
                                                             pPagingObject);
        }

        constructArrayResponse(pJsonDbObject, pDataArray, pPagingObject, out_response);
        return HTTPStatus::HTTP_OK;
    }
    catch (const Poco::Exception& e)
    {
        LOG_ERROR("Failed to transform Service query to Response: " << e.what());
        return HTTPStatus::HTTP_INTERNAL_SERVER_ERROR;
    }
}

template <typename ResponseT>
HTTPStatus JSONDataCache::queryCacheResource(const RequestBase& request, ResponseT& out_response)
{
    try
    {
        std::vector<XObject::Ptr> xobjects;
        if (!selectXObjectsByRequest(request, xobjects))
        {
            const UrlPath& urlPath = request.getUrlPath();
            LOG_INFO("Selection of Elements for Resource \"/" << urlPath.getService() << "/"
                                                              << urlPath.getResource() << "/\" returned "
                                                              << xobjects.size() << " results.");
        }

        Poco::JSON::Array::Ptr dataArray(new Poco::JSON::Array);
        Poco::JSON::Object::Ptr pPagingObject;
        const int expansionLevel = getExpansionLevel(request);

        if (!DBDataToJSONTransformator::transformXObjectsToJSONArray(xobjects, *dataArray, expansionLevel))
        {
            throw Poco::Exception("invalid format of elements-data.");
        }
        if (dataArray->size() > 0)
        {
            Command::QueryFilterJSON::filterJSONArrayByQuery(*dataArray, request, *dataArray, pPagingObject);
        }

        constructArrayResponse(Poco::JSON::Object::Ptr(), dataArray, pPagingObject, out_response);
        return HTTPStatus::HTTP_OK;
    }
    catch (const Poco::Exception& e)
    {
        LOG_ERROR("Failed to transform Resource query to Response: " << e.what());
        return HTTPStatus::HTTP_INTERNAL_SERVER_ERROR;
    }
}

template <typename ResponseT>
HTTPStatus JSONDataCache::queryCacheElement(const RequestBase& request, ResponseT& out_response)
{
    try
    {
        XObject xobject{Element::Ptr()};
        const int expansionLevel = getExpansionLevel(request);

        const UrlPath& urlPath = request.getUrlPath();
        if (!selectXObjectByUUID(urlPath.getService(), urlPath.getResource(), urlPath.getElement(), xobject,
                                 expansionLevel, false))
        {
            LOG_WARNING("Selection of Element \"/" << urlPath.getService() << "/" << urlPath.getResource()
                                                   << "/" << urlPath.getElement() << "/\" failed.");
            return HTTPStatus::HTTP_NOT_FOUND;
        }

        Poco::JSON::Object jsonElementData(0);
        if (!DBDataToJSONTransformator::transformXObjectToJSONObject(xobject, jsonElementData,
                                                                     expansionLevel))
        {
            throw Poco::Exception("invalid format of element-data.");
        }

        Poco::JSON::Object::Ptr pJsonElementData_filtered(new Poco::JSON::Object(0));
        Command::QueryFilterJSON::filterJSONObjectByQuery(jsonElementData, request,
                                                          *pJsonElementData_filtered);

        constructObjectResponse(pJsonElementData_filtered, out_response);
        return HTTPStatus::HTTP_OK;
    }
    catch (const Poco::Exception& e)
    {
        LOG_ERROR("Failed to transform Element query to Response: " << e.what());
        return HTTPStatus::HTTP_INTERNAL_SERVER_ERROR;
    }
}

void JSONDataCache::constructArrayResponse(const Poco::JSON::Object::Ptr& baseObj,
                                           const Poco::JSON::Array::Ptr& pDataArray,
                                           const Poco::JSON::Object::Ptr& pPagingObject,
                                           HttpResponse& out_response)
{
    out_response.setMimetype(HttpResponse::MIMETYPE_JSON);
    Poco::JSON::Object::Ptr envelope = baseObj.isNull() ? new Poco::JSON::Object(0) : baseObj;
    if (!pPagingObject.isNull())
    {
        envelope->set(ResponseObject::FIELD_PAGING, pPagingObject);
    }
    envelope->set(StatusObject::FIELD_STATUS, StatusObject::STATUS_OK);
    envelope->set(ResponseObject::FIELD_DATA, pDataArray);
    out_response.setDataFromObject(envelope);
}

void JSONDataCache::constructArrayResponse(const Poco::JSON::Object::Ptr&,
                                           const Poco::JSON::Array::Ptr& pDataArray,
                                           const Poco::JSON::Object::Ptr& pPagingObject,
                                           WebSocketResponseObject& out_response)
{
    if (!pPagingObject.isNull())
    {
        out_response.setPaging(pPagingObject);
    }
    out_response.setData(pDataArray);
}

void JSONDataCache::constructObjectResponse(const Poco::JSON::Object::Ptr& pJsonDbObject,
                                            HttpResponse& out_response)
{
    out_response.setMimetype(HttpResponse::MIMETYPE_JSON);
    Poco::JSON::Object::Ptr envelope(new Poco::JSON::Object(0));
    envelope->set(StatusObject::FIELD_STATUS, StatusObject::STATUS_OK);
    envelope->set(ResponseObject::FIELD_DATA, pJsonDbObject);
    out_response.setDataFromObject(envelope);
}

void JSONDataCache::constructObjectResponse(const Poco::JSON::Object::Ptr& pJsonDbObject,
                                            WebSocketResponseObject& out_response)
{
    out_response.setData(pJsonDbObject);
}

bool JSONDataCache::updateServiceUUID(const std::string& serviceName, const std::string& newuuid)
{
    const auto found = m_serviceCache.find(serviceName);
    if (found == m_serviceCache.end())
    {
        return false;
    }
    try
    {
        const DBData::UUID uuid(newuuid);
        found->second->setUUID(uuid);
        return true;
    }
    catch (const Poco::Exception& e)
    {
        LOG_ERROR("Failed to updateServiceUUID " << newuuid << ": " << e.displayText());
        return false;
    }
}

bool JSONDataCache::selectServices(std::vector<DBData::Service::Ptr>& retServices)
{
    retServices.reserve(retServices.size() + m_serviceCache.size());
    for (const auto& entry : m_serviceCache)
    {
        retServices.push_back(entry.second);
    }
    return !retServices.empty();
}

DBData::Service::Ptr JSONDataCache::selectService(const std::string& name)
{
    const auto found = m_serviceCache.find(name);
    return found == m_serviceCache.end() ? DBData::Service::Ptr() : found->second;
}

bool JSONDataCache::selectService(const std::string& name, DBData::Service& retService)
{
    const DBData::Service::Ptr service = selectService(name);
    if (service.isNull())
    {
        return false;
    }
    retService = *service;
    return true;
}

DBData::Resource::Ptr JSONDataCache::selectResource(const std::string& servicename,
                                                    const std::string& resourcename)
{
    const DBData::Service::Ptr service = selectService(servicename);
    return service.isNull() ? DBData::Resource::Ptr() : service->getResource(resourcename);
}

bool JSONDataCache::selectResource(const std::string& servicename, const std::string& name,
                                   DBData::Resource& retResource, bool)
{
    const DBData::Resource::Ptr resource = selectResource(servicename, name);
    if (resource.isNull())
    {
        return false;
    }
    retResource = *resource;
    return true;
}

bool JSONDataCache::selectResources(const std::string& servicename,
                                    std::vector<DBData::Resource::Ptr>& retResources)
{
    const DBData::Service::Ptr service = selectService(servicename);
    if (service.isNull())
    {
        return false;
    }
    const DBData::ResourceMap& resources = service->getResources();
    retResources.reserve(retResources.size() + resources.size());
    for (const auto& entry : resources)
    {
        retResources.push_back(entry.second);
    }
    return !retResources.empty();
}

DBData::Element::Ptr JSONDataCache::selectElement(const std::string& servicename,
                                                  const std::string& resourcename)
{
    const DBData::Resource::Ptr resource = selectResource(servicename, resourcename);
    return resource.isNull() ? DBData::Element::Ptr() : resource->getElement();
}

std::string JSONDataCache::selectResourceElementName(const std::string& servicename,
                                                     const std::string& resourcename)
{
    const DBData::Element::Ptr element = selectElement(servicename, resourcename);
    return element.isNull() ? std::string() : element->getName();
}

bool JSONDataCache::existsObjectWithId(DbId objectId) const
{
    if (!m_xobjCache.exists(objectId))
    {
        LOG_DEBUG("XObject ID " << objectId << " NOT found in XObject Cache");
        return false;
    }
    LOG_TRACE("XObject ID " << objectId << " found in XObject Cache");
    return true;
}

XObject::Ptr JSONDataCache::selectXObject(DbId id, Poco::Int32 recursionDepth)
{
    XObject::Ptr object(new XObject(Element::Ptr()));
    if (!m_xobjCache.get(id, *object, true))
    {
        LOG_WARNING("Can not find XObject with ID " << id);
        return XObject::Ptr();
    }
    selectValues(*object, recursionDepth);
    return object;
}

XObject::Ptr JSONDataCache::selectXObject(const std::string& uuid, Poco::Int32 recursionDepth)
{
    XObject::Ptr object(new XObject(Element::Ptr()));
    if (!m_xobjCache.get(uuid, *object, true))
    {
        LOG_WARNING("Can not find XObject with UUID " << uuid);
        return XObject::Ptr();
    }
    selectValues(*object, recursionDepth);
    return object;
}

XObject::Ptr JSONDataCache::selectXObject(const std::string& servicename, const std::string& resourcename,
                                          const std::string& uuid, Poco::Int32 recursionDepth)
{
    XObject::Ptr object(new XObject(Element::Ptr()));
    if (!selectXObjectByUUID(servicename, resourcename, uuid, *object, recursionDepth, false))
    {
        LOG_WARNING("Can not find XObject /" << servicename << "/" << resourcename << "/" << uuid);
        return XObject::Ptr();
    }
    return object;
}

bool JSONDataCache::selectXObjectByID(DbId id, XObject& retXObject, Poco::Int32 recursionDepth, bool)
{
    XObject::Ptr found = selectXObject(id, recursionDepth);
    if (found.isNull())
    {
        return false;
    }
    retXObject.swap(*found);
    return true;
}

bool JSONDataCache::selectXObjectByUUID(const std::string& servicename, const std::string& resourcename,
                                        const std::string& uuid, XObject& retXObject,
                                        Poco::Int32 recursionDepth, bool)
{
    const Element::Ptr element = selectElement(servicename, resourcename);
    if (element.isNull())
    {
        LOG_WARNING("Can not find element info for resource " << servicename << "/" << resourcename
                                                              << " not found.");
        return false;
    }

    XObject::Ptr object = selectXObject(uuid, recursionDepth);
    if (object.isNull())
    {
        return false;
    }

    // UUIDs are unique across the store, so the object has to be checked against the resource.
    if (object->getElement()->getDBID() != element->getDBID())
    {
        LOG_WARNING("Can not find element " << servicename << "/" << resourcename << "/" << uuid);
        return false;
    }

    retXObject.swap(*object);
    return true;
}

void JSONDataCache::selectValues(XObject& xobj, Poco::Int32 recursionDepth)
{
    for (AttributeValuePtr& value : xobj.getAttributeValues())
    {
        if (value.isNull())
        {
            poco_bugcheck();
        }
        if (value->getDBID() == DBData::aDBTableEntry::INVALID_DBID || value->getAttribute().isNull())
        {
            poco_bugcheck_msg("Invalid AttributeValue instance");
        }

        // Past the requested depth an object is only its identity; this also ends circular references.
        if (recursionDepth < 0 && !DBData::Attribute::isDefaultAttribute(value->getName()))
        {
            value->clear();
            continue;
        }
        if (!value->hasValue() || value->getType() != DBData::AttrType_Object)
        {
            continue;
        }

        if (!value->isArray())
        {
            const std::string uuid = value->getValue().extract<std::string>();
            XObject::Ptr referenced = selectXObject(uuid, recursionDepth - 1);
            if (!referenced.isNull())
            {
                value->setValue(Poco::Dynamic::Var(referenced), false);
                continue;
            }
            // The referenced object was deleted: the read repairs the store as well.
            LOG_ERROR("Failed to retrieve references for " << xobj.getUUID() << " attribute "
                                                           << value->getName());
            value->clear();
            updateCacheAttributeValueById(*value, true);
            continue;
        }

        std::vector<std::string> uuids;
        if (!extractUuidList(value->getValue(), uuids) || uuids.empty())
        {
            value->clear();
            continue;
        }
        AttributeValue::ValueArrayPtr referenced(new AttributeValue::ValueArray);
        referenced->reserve(uuids.size());
        for (const std::string& uuid : uuids)
        {
            XObject::Ptr object = selectXObject(uuid, recursionDepth - 1);
            if (!object.isNull())
            {
                referenced->emplace_back(object);
            }
        }
        value->setValue(Poco::Dynamic::Var(referenced), false);
        if (referenced->size() < uuids.size())
        {
            updateCacheArrayAttributeValueById(*value, true);
        }
    }
}

bool JSONDataCache::selectXObjectsFromElement(const Element& parentElement,
                                              std::vector<XObject::Ptr>& retXobjects, int expansionLevel)
{
    retXobjects.clear();
    const Element::XObjectUuidMap& ids = parentElement.getXObjectIds();
    if (!ids.empty())
    {
        retXobjects.reserve(ids.size());
    }
    for (const auto& entry : ids)
    {
        XObject::Ptr object(new XObject(Element::Ptr()));
        if (!selectXObjectByID(entry.first, *object, expansionLevel, false))
        {
            LOG_WARNING("Could not find XObject with DB ID " << entry.first);
            continue;
        }
        retXobjects.push_back(object);
    }
    return !retXobjects.empty();
}

bool JSONDataCache::selectXObjectsByRequest(const RequestBase& request,
                                            std::vector<XObject::Ptr>& retXobjects)
{
    const UrlPath& urlPath = request.getUrlPath();
    if (urlPath.getCharacteristic() != UrlPath::SERVICE_RESOURCE)
    {
        LOG_ERROR("selectXObjects by Request supports only selection on resource level");
        return false;
    }
    const Element::Ptr element = selectElement(urlPath.getService(), urlPath.getResource());
    if (element.isNull())
    {
        LOG_ERROR("selectXObjects by Request: element info for resource "
                  << urlPath.getService() << "/" << urlPath.getResource() << " not found.");
        return false;
    }

    // Only the first free-text search counts.
    std::string anySearchParam;
    if (request.hasAnyCriteria())
    {
        std::vector<Poco::SharedPtr<Command::AnyValueSearch>> anySearches;
        RequestBase::extractCriteria(anySearches, request.getSearchCriteria());
        if (!anySearches.empty() && !anySearches.front().isNull())
        {
            anySearchParam = anySearches.front()->getQueryValue();
        }
    }

    // The values of one attribute are alternatives of one expression; the first search of a name wins.
    std::map<std::string, Poco::SharedPtr<Poco::RegularExpression>> attrValueSearchParam;
    if (request.hasAttributeCriteria())
    {
        std::vector<Poco::SharedPtr<Command::AttributeValueSearch>> attributeSearches;
        RequestBase::extractCriteria(attributeSearches, request.getSearchCriteria());
        for (const Poco::SharedPtr<Command::AttributeValueSearch>& search : attributeSearches)
        {
            if (search.isNull() || attrValueSearchParam.count(search->getAttributeName()) > 0)
            {
                continue;
            }
            std::string pattern;
            for (const std::string& searchValue : search->getSearchValues())
            {
                if (!pattern.empty())
                {
                    pattern += REGEX_ALTERNATIVE;
                }
                pattern += prepareRegEx(searchValue);
            }
            attrValueSearchParam.emplace(search->getAttributeName(), compileSearch(pattern));
        }
    }

    const int expansionLevel = getExpansionLevel(request);

    if (anySearchParam.empty() && attrValueSearchParam.empty())
    {
        return selectXObjectsFromElement(*element, retXobjects, expansionLevel);
    }

    const Poco::RegularExpression anySearchRegEx(prepareRegEx(anySearchParam), 0, true);
    std::set<DbId> xobjIdsAnySearch;
    std::map<DbId, Poco::UInt32> xobjIdsAttrSearch;

    for (const auto& entry : element->getIndexes())
    {
        const DBData::IAttributeIndex::Ptr& index = entry.second;
        if (index.isNull())
        {
            poco_bugcheck();
        }
        if (!anySearchParam.empty())
        {
            for (const DBData::Index::IndexEntry& found : index->find(anySearchRegEx))
            {
                xobjIdsAnySearch.insert(found.getXObjId());
            }
        }
        const auto attributeSearch = attrValueSearchParam.find(entry.first);
        if (attributeSearch != attrValueSearchParam.end())
        {
            // An index holds one entry per object, so the count is the number of matching attributes.
            for (const DBData::Index::IndexEntry& found : index->find(*attributeSearch->second))
            {
                ++xobjIdsAttrSearch[found.getXObjId()];
            }
        }
    }

    std::set<DbId> xobjIds;
    if (attrValueSearchParam.empty())
    {
        xobjIds.swap(xobjIdsAnySearch);
    }
    else
    {
        for (const auto& counted : xobjIdsAttrSearch)
        {
            if (counted.second == attrValueSearchParam.size() &&
                (anySearchParam.empty() || xobjIdsAnySearch.count(counted.first) > 0))
            {
                xobjIds.insert(xobjIds.end(), counted.first);
            }
        }
    }

    std::vector<XObject::Ptr> selected;
    selected.reserve(xobjIds.size());
    for (const DbId id : xobjIds)
    {
        XObject::Ptr object = selectXObject(id, expansionLevel);
        if (object.isNull())
        {
            LOG_WARNING("Could not find XObject with DB ID " << id);
            continue;
        }
        selected.push_back(object);
    }
    retXobjects.swap(selected);
    return true;
}

bool JSONDataCache::selectXObjectIDsOfResource(const std::string& servicename,
                                               const std::string& resourcename, std::vector<long>& retIds)
{
    const Element::Ptr element = selectElement(servicename, resourcename);
    if (element.isNull())
    {
        return false;
    }
    retIds = element->getAllXObjectIds();
    return !retIds.empty();
}

bool JSONDataCache::selectXObjectIDsWithAttributesOfValues(const std::string& servicename,
                                                           const std::string& resourcename,
                                                           std::vector<long>& retIds,
                                                           const AttributeValuePairs& attributes_with_values)
{
    if (attributes_with_values.empty())
    {
        LOG_WARNING("Don't use this function with empty parameters!");
        return false;
    }
    const Element::Ptr element = selectElement(servicename, resourcename);
    if (element.isNull())
    {
        LOG_ERROR("Element for resource /" << servicename << "/" << resourcename << " not found.");
        return false;
    }

    const DBData::AttributeIndexMap& indexes = element->getIndexes();
    bool firstRun = true;
    for (const auto& pair : attributes_with_values)
    {
        const auto found = indexes.find(pair.first);
        if (found == indexes.end() || found->second.isNull())
        {
            LOG_WARNING("JSONDataCache::selectXObjectIDsWithAttributesOfValues: attribute name "
                        << pair.first << " not known.");
            continue;
        }
        const DBData::Index::IndexGroup result = found->second->find(pair.second);
        if (firstRun)
        {
            retIds.clear();
            retIds.reserve(result.size());
            for (const DBData::Index::IndexEntry& entry : result)
            {
                retIds.push_back(entry.getXObjId());
            }
        }
        else
        {
            std::unordered_set<DbId> matching;
            matching.reserve(result.size());
            for (const DBData::Index::IndexEntry& entry : result)
            {
                matching.insert(entry.getXObjId());
            }
            std::vector<long> narrowed;
            narrowed.reserve(retIds.size());
            for (const long id : retIds)
            {
                if (matching.count(id) > 0)
                {
                    narrowed.push_back(id);
                }
            }
            retIds.swap(narrowed);
        }
        firstRun = false;
    }
    return true;
}

int JSONDataCache::getExpansionLevel(const RequestBase& request) const
{
    if (request.hasPropertyExpandCriteria())
    {
        return 1;
    }
    return static_cast<int>(request.getExpansionLevel());
}

bool JSONDataCache::insertXObject(const std::string& service, const std::string& resource, XObject& xobj)
{
    Element::Ptr element = selectElement(service, resource);
    if (element.isNull())
    {
        LOG_ERROR("Tried to insert XObject for unknown element type");
        return false;
    }

    XObject tmp(element);
    tmp.setDBID(m_xobjCache.getNextId());

    if (!xobj.getId().isEmpty())
    {
        if (m_xobjCache.exists(xobj.getId().get()))
        {
            LOG_ERROR("Failed to insert XObject with pre-defined UUID " << xobj.getUUID()
                                                                        << " as it is already in use!");
            return false;
        }
        tmp.setId(xobj.getId());
    }
    else
    {
        int attempts = 0;
        do
        {
            if (attempts == MAX_UUID_ATTEMPTS)
            {
                throw Poco::RuntimeException("UUID conflict - unable to insert new XObject instance");
            }
            tmp.generateId();
            ++attempts;
        } while (m_xobjCache.exists(tmp.getId().get()));
    }

    const std::string& uuidText = tmp.getUUID();
    const DBData::AttributeMap& attributes = element->getAttributes();
    DBData::AttributeValueList& values = tmp.getAttributeValues();
    values.reserve(attributes.size());
    DbId counter = 1;
    for (const auto& entry : attributes)
    {
        if (entry.second.isNull())
        {
            poco_bugcheck();
        }
        AttributeValuePtr row(new AttributeValue(tmp.getDBID(), entry.second, counter));
        ++counter;

        Poco::Dynamic::Var initial;
        const std::string& attributeName = entry.second->getName();
        if (attributeName == ATTRIBUTE_ID)
        {
            initial = uuidText;
        }
        else if (attributeName == ATTRIBUTE_NAME)
        {
            initial = std::string();
        }
        else if (attributeName == ATTRIBUTE_URI)
        {
            initial = "/" + service + "/" + resource + "/" + uuidText;
        }

        row->setValue(initial, false);
        values.push_back(row);
        element->updateIndex(*row, initial);
    }

    // The caller's object becomes the new one; whatever values it held are dropped.
    xobj.swap(tmp);

    if (!m_xobjCache.insertObject(xobj))
    {
        LOG_ERROR("Unable to insert new XObject (" << xobj.getDBID() << ", " << xobj.getUUID()
                                                   << ") - UUID or DBID already known!");
        return false;
    }
    element->addXObject(xobj);
    return true;
}

bool JSONDataCache::insertXObject(const std::string& service, const std::string& resource,
                                  std::string& newUUID, DbId& newDBID)
{
    XObject xobj{Element::Ptr()};
    Poco::UUID requested;
    if (requested.tryParse(newUUID) && requested != Poco::UUID::null())
    {
        xobj.setId(DBData::UUID(requested));
    }
    if (!insertXObject(service, resource, xobj))
    {
        return false;
    }
    newUUID = xobj.getUUID();
    newDBID = xobj.getDBID();
    return true;
}

bool JSONDataCache::insertXObject(const std::string& service, const std::string& resource,
                                  std::string& newUUID)
{
    DbId unused = DBData::aDBTableEntry::INVALID_DBID;
    return insertXObject(service, resource, newUUID, unused);
}

bool JSONDataCache::deleteXObject(const std::string& uuid)
{
    XObject::Ptr stored = m_xobjCache.get(uuid);
    if (stored.isNull())
    {
        LOG_WARNING("Failed to delete XObject " << uuid << ". XObject not found");
        return false;
    }
    Element::Ptr element = stored->getElement();
    if (element.isNull())
    {
        poco_bugcheck();
    }
    const DbId id = stored->getDBID();
    LOG_DEBUG("Deleting XObject - " << uuid << " (" << id << ")");

    for (const AttributeValuePtr& value : stored->getAttributeValues())
    {
        if (!value.isNull() && !element->removeFromIndex(*value))
        {
            LOG_WARNING("Failed to remove attribute value from index (" << value->getName() << " - " << id
                                                                        << " / " << uuid << ")");
        }
    }

    // References to this object elsewhere stay; they are repaired when next read.
    m_xobjCache.removeObject(uuid);
    element->removeXObject(id);
    return true;
}

std::size_t JSONDataCache::deleteAllServicesWithName(const std::string& servicename)
{
    const auto found = m_serviceCache.find(servicename);
    if (found == m_serviceCache.end() || found->second.isNull())
    {
        LOG_WARNING("Service " << servicename
                               << " was deleted from DB but could not be found in service cache.");
        return 1;
    }

    // Indexes and the elements' registries go away with the service itself.
    for (const auto& entry : found->second->getResources())
    {
        const DBData::Resource::Ptr& resource = entry.second;
        if (resource.isNull() || resource->getElement().isNull())
        {
            continue;
        }
        for (const long id : resource->getElement()->getAllXObjectIds())
        {
            m_xobjCache.removeObject(static_cast<DbId>(id));
        }
    }
    m_serviceCache.erase(found);
    return 1;
}

bool JSONDataCache::updateCacheAttributeValueById(AttributeValue& attrvalue, bool allowDelete)
{
    if (attrvalue.isArray())
    {
        return updateCacheArrayAttributeValueById(attrvalue, allowDelete);
    }
    if (attrvalue.getDBID() == DBData::aDBTableEntry::INVALID_DBID)
    {
        LOG_ERROR("updateCacheAttributeValueById missing ID");
        return false;
    }

    Poco::Dynamic::Var& value = attrvalue.getValue();
    if (!value.isEmpty() && !attrvalue.convertAndCheckValue(value))
    {
        LOG_WARNING("attribute value " << attrvalue.getDBID() << " has invalid value.");
        return false;
    }

    XObject::Ptr parent = m_xobjCache.get(attrvalue.getParent());
    if (parent.isNull() || parent->getElement().isNull())
    {
        poco_bugcheck();
    }
    Element::Ptr element = parent->getElement();
    const int typeNumber = static_cast<int>(attrvalue.getType());

    // The store is written before the index, so that a failing index leaves a stale entry, not a lost value.
    bool success = false;
    if (value.isEmpty())
    {
        if (!allowDelete)
        {
            LOG_ERROR("Removal of attribute value (" << attrvalue.getName() << "," << typeNumber
                                                     << ") - XObj: " << parent->getUUID()
                                                     << ") is not allowed");
        }
        else
        {
            success = m_xobjCache.removeValue(parent->getDBID(), attrvalue.getDBID()) &&
                      element->removeFromIndex(attrvalue);
        }
    }
    else if (attrvalue.getType() == DBData::AttrType_Object)
    {
        const Poco::Dynamic::Var uuid(extractUuid(value));
        success = m_xobjCache.updateValue(parent->getDBID(), attrvalue.getDBID(), uuid) &&
                  element->updateIndex(attrvalue, uuid);
    }
    else
    {
        success = m_xobjCache.updateValue(parent->getDBID(), attrvalue.getDBID(), value) &&
                  element->updateIndex(attrvalue, value);
    }

    if (!success)
    {
        LOG_WARNING("Attribute update failed (" << attrvalue.getName() << "," << typeNumber
                                                << " - XObj: " << parent->getUUID() << ")");
        return false;
    }
    LOG_DEBUG("Attribute update successful (" << attrvalue.getName() << "," << typeNumber
                                              << " - XObj: " << parent->getUUID() << ")");
    return true;
}

bool JSONDataCache::updateCacheArrayAttributeValueById(const AttributeValue& attrvalue, bool allowDelete)
{
    if (!attrvalue.isArray())
    {
        poco_bugcheck_msg(
            "JSONDataCache::updateCacheArrayAttributeValueById: tried to update non-array attribute");
    }
    if (attrvalue.getDBID() == DBData::aDBTableEntry::INVALID_DBID)
    {
        LOG_ERROR("updateCacheArrayAttributeValueById missing ID");
        return false;
    }

    XObject::Ptr parent = m_xobjCache.get(attrvalue.getParent());
    if (parent.isNull() || parent->getElement().isNull())
    {
        poco_bugcheck();
    }
    Element::Ptr element = parent->getElement();

    AttributeValue::ValueArrayPtr array;
    try
    {
        if (!attrvalue.getValue().isEmpty())
        {
            array = attrvalue.getValue().extract<AttributeValue::ValueArrayPtr>();
        }
    }
    catch (const Poco::Exception& e)
    {
        LOG_ERROR("Failed to retrieve array: " << e.displayText());
        return false;
    }
    if (array.isNull())
    {
        array = new AttributeValue::ValueArray;
    }

    const bool isReference = attrvalue.getType() == DBData::AttrType_Object;
    AttributeValue::ValueArray objRefUuids;
    if (isReference)
    {
        objRefUuids.reserve(array->size());
    }
    AttributeValue::ValueArray validValues;
    validValues.reserve(array->size());

    // Elements are checked on copies, so that a refused array leaves the caller's vector as it was.
    for (const Poco::Dynamic::Var& element : *array)
    {
        if (element.isEmpty())
        {
            LOG_WARNING("Array must not contain null values!");
            continue;
        }
        Poco::Dynamic::Var checked(element);
        if (!attrvalue.convertAndCheckValue(checked))
        {
            LOG_WARNING("attribute value " << attrvalue.getDBID() << " has invalid value.");
            return false;
        }
        if (isReference)
        {
            objRefUuids.emplace_back(extractUuid(checked));
        }
        validValues.push_back(std::move(checked));
    }
    array->swap(validValues);

    const int typeNumber = static_cast<int>(attrvalue.getType());
    bool success = false;
    if (array->empty())
    {
        if (!allowDelete)
        {
            LOG_ERROR("Removal of attribute value (" << attrvalue.getName() << "," << typeNumber
                                                     << ") - XObj: " << parent->getUUID()
                                                     << ") is not allowed");
        }
        else
        {
            success = m_xobjCache.removeValue(parent->getDBID(), attrvalue.getDBID()) &&
                      element->removeFromIndex(attrvalue);
        }
    }
    else
    {
        // A plain array is stored sharing the caller's vector; references are stored as bare UUIDs.
        const Poco::Dynamic::Var stored(
            isReference
                ? AttributeValue::ValueArrayPtr(new AttributeValue::ValueArray(std::move(objRefUuids)))
                : array);
        success = m_xobjCache.updateValue(parent->getDBID(), attrvalue.getDBID(), stored) &&
                  element->updateIndex(attrvalue, stored);
    }

    if (!success)
    {
        LOG_WARNING("Array attribute update failed (" << attrvalue.getName() << "," << typeNumber << " ("
                                                      << array->size() << ") - XObj: " << parent->getUUID()
                                                      << ")");
        return false;
    }
    LOG_DEBUG("Array attribute update successful (" << attrvalue.getName() << "," << typeNumber << " ("
                                                    << array->size() << ") - XObj: " << parent->getUUID()
                                                    << ")");
    return true;
}

const Poco::RegularExpression& findWildCard()
{
    static const Poco::RegularExpression wildcards(
        "(" + UrlPath::QUERY_WILDCARD + REGEX_ALTERNATIVE + UrlPath::QUERY_WILDCARD_HTML + ")+", 0, true);
    return wildcards;
}

std::string prepareRegEx(const std::string& searchValue)
{
    std::string pattern(searchValue);
    findWildCard().subst(pattern, REGEX_ANY_TEXT, Poco::RegularExpression::RE_GLOBAL);
    return "^" + pattern + "$";
}

std::string extractUuid(const Poco::Dynamic::Var& value)
{
    Poco::Dynamic::Var reference(value);
    DBData::Attribute::convertToObjectRef(reference);
    const UrlPath path(reference.extract<Poco::URI>());
    const std::string& uuid = path.getElement();
    // Only to check that the last level is a UUID.
    [[maybe_unused]] const Poco::UUID parsed(uuid);
    return uuid;
}

template HTTPStatus JSONDataCache::getResponseData<HttpResponse>(const RequestBase&, Poco::UInt16,
                                                                 const InitialCacheData&, HttpResponse&);
template HTTPStatus JSONDataCache::getResponseData<WebSocketResponseObject>(const RequestBase&, Poco::UInt16,
                                                                            const InitialCacheData&,
                                                                            WebSocketResponseObject&);
template HTTPStatus JSONDataCache::queryCacheService<HttpResponse>(const RequestBase&, const DBData::Service&,
                                                                   HttpResponse&);
template HTTPStatus JSONDataCache::queryCacheService<WebSocketResponseObject>(const RequestBase&,
                                                                              const DBData::Service&,
                                                                              WebSocketResponseObject&);
template HTTPStatus JSONDataCache::queryCacheResource<HttpResponse>(const RequestBase&, HttpResponse&);
template HTTPStatus JSONDataCache::queryCacheResource<WebSocketResponseObject>(const RequestBase&,
                                                                               WebSocketResponseObject&);
template HTTPStatus JSONDataCache::queryCacheElement<HttpResponse>(const RequestBase&, HttpResponse&);
template HTTPStatus JSONDataCache::queryCacheElement<WebSocketResponseObject>(const RequestBase&,
                                                                              WebSocketResponseObject&);

} // namespace Orvi::JSONDataCache
