#include "JSONDataCache/JSONDataCache.h"

#include "Command/QueryFilterJSON.h"
#include "Command/ResponseObject.h"
#include "Command/StatusObject.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBDataToJSONTransformator.h"
#include "JSONDataCache/JsonText.h"
#include "JSONDataCache/RowTextCache.h"
#include "JSONDataCache/SortedOrderCache.h"
#include "JSONDataCache/StoredObjectRows.h"
#include "JSONTools.h"
#include "Logging/LogStream.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>

#include <optional>
#include <type_traits>

namespace Orvi::JSONDataCache
{

using Command::HttpResponse;
using Command::HTTPStatus;
using Command::RequestBase;
using Command::ResponseObject;
using Command::StatusObject;
using Command::UrlPath;
using Command::WebSocketResponseObject;
using DBData::DbId;
using DBData::Element;
using DBData::XObject;

const std::string JSONDataCache::MIMETYPE_TEXT_PLAIN = "text/plain";

namespace
{

constexpr char URI_SEPARATOR = '/';
// The failure of a resource answer when one of its objects does not render.
const char* const INVALID_ELEMENTS_DATA = "invalid format of elements-data.";

// Enough for a few sorted lists paged at a time; an order costs a word per object of its element.
constexpr std::size_t SORTED_ORDERS_KEPT = 4;
// Room for the rows of a few large searches; a text costs about half a kilobyte.
constexpr std::size_t ROW_TEXT_BYTES = 8 * 1024 * 1024;

Poco::UUID makeSystemUUID()
{
    DBData::XObjectBase identity;
    identity.generateId();
    return identity.getId().get();
}

// The answer of one object: the object as "data" in a new envelope with status.
void wrapObject(const Poco::Dynamic::Var& object, HttpResponse& out_response)
{
    out_response.setMimetype(HttpResponse::MIMETYPE_JSON);
    Poco::JSON::Object::Ptr envelope(new Poco::JSON::Object(0));
    envelope->set(StatusObject::FIELD_STATUS, StatusObject::STATUS_OK);
    envelope->set(ResponseObject::FIELD_DATA, object);
    out_response.setDataFromObject(envelope);
}

} // namespace

JSONDataCache::JSONDataCache(DBData::ServiceMap& serviceCache)
    : m_xobjCache()
    , m_serviceCache(serviceCache)
    , m_systemUUID(makeSystemUUID())
    , m_pagingBeforeRendering(true)
    , m_sortedOrders(new SortedOrderCache(SORTED_ORDERS_KEPT))
    , m_rowTexts(new RowTextCache(ROW_TEXT_BYTES))
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
        Poco::JSON::Array::Ptr rows(new Poco::JSON::Array);
        Poco::JSON::Object::Ptr rowsPaging;
        if (queryResourceRows(request, std::is_same_v<ResponseT, HttpResponse>, *rows, rowsPaging))
        {
            constructArrayResponse(Poco::JSON::Object::Ptr(), rows, rowsPaging, out_response);
            return HTTPStatus::HTTP_OK;
        }

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
            throw Poco::Exception(INVALID_ELEMENTS_DATA);
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

bool JSONDataCache::queryResourceRows(const RequestBase& request, bool asText, Poco::JSON::Array& out_data,
                                      Poco::JSON::Object::Ptr& out_paging)
{
    const UrlPath& urlPath = request.getUrlPath();
    const int expansionLevel = getExpansionLevel(request);
    const Element::Ptr element = selectElement(urlPath.getService(), urlPath.getResource());
    // Objects without values fail the whole answer, so they have to be rendered to be found.
    if (!m_pagingBeforeRendering || urlPath.getCharacteristic() != UrlPath::SERVICE_RESOURCE ||
        element.isNull() || element->getAttributes().empty() || expansionLevel < 0)
    {
        return false;
    }
    // The full path would repair what the element's objects, or deeper the objects they name, still name.
    if (m_danglingSuspects.count(element->getDBID()) > 0 ||
        (expansionLevel > 0 && !m_danglingSuspects.empty()))
    {
        return false;
    }

    // The rows borrow the element's ids: answering adds and removes no object.
    const std::vector<DbId>* ids = &element->getXObjectIdList();
    std::vector<DbId> foundIds;
    std::set<DbId> found;
    const bool searched = findXObjectIds(request, *element, found);
    if (searched)
    {
        foundIds.assign(found.begin(), found.end());
        ids = &foundIds;
    }
    else if (ids->empty())
    {
        LOG_INFO("Selection of Elements for Resource \"/"
                 << urlPath.getService() << "/" << urlPath.getResource() << "/\" returned 0 results.");
    }
    if (ids->empty())
    {
        return true;
    }

    StoredObjectRows rows(m_xobjCache, *ids,
                          [this, expansionLevel](DbId id)
                          {
                              const XObject::Ptr object = selectXObject(id, expansionLevel);
                              Poco::JSON::Object::Ptr rendered(new Poco::JSON::Object(0));
                              if (object.isNull() || !DBDataToJSONTransformator::transformXObjectToJSONObject(
                                                         *object, *rendered, expansionLevel))
                              {
                                  throw Poco::Exception(INVALID_ELEMENTS_DATA);
                              }
                              return Poco::Dynamic::Var(rendered);
                          });
    rows.writeAsText(asText, expansionLevel);
    rows.keepTexts(*m_rowTexts);
    if (!searched)
    {
        rows.rememberOrders(*m_sortedOrders, element->getDBID(), element->getVersion());
    }
    Command::QueryFilterJSON::filterRowsByQuery(rows, request, out_data, out_paging);
    return true;
}

bool JSONDataCache::queryObjectText(const RequestBase& request, int expansionLevel,
                                    Poco::Dynamic::Var& out_text)
{
    if (!m_pagingBeforeRendering || expansionLevel < 0 || Command::QueryFilterJSON::rendersObjects(request))
    {
        return false;
    }
    const UrlPath& urlPath = request.getUrlPath();
    const Element::Ptr element = selectElement(urlPath.getService(), urlPath.getResource());
    const XObject::Ptr stored = m_xobjCache.get(urlPath.getElement());
    // Whatever is not one of the element's objects is answered, and logged, by the selection.
    if (element.isNull() || stored.isNull() || stored->getElement().isNull() ||
        stored->getElement()->getDBID() != element->getDBID())
    {
        return false;
    }
    const std::vector<DbId> ids{stored->getDBID()};
    StoredObjectRows row(m_xobjCache, ids, StoredObjectRows::Renderer());
    row.writeAsText(true, expansionLevel);
    row.keepTexts(*m_rowTexts);
    std::optional<JsonText> text = row.wholeText(0);
    if (!text)
    {
        return false;
    }
    out_text = *text;
    return true;
}

template <typename ResponseT>
HTTPStatus JSONDataCache::queryCacheElement(const RequestBase& request, ResponseT& out_response)
{
    try
    {
        const int expansionLevel = getExpansionLevel(request);
        if constexpr (std::is_same_v<ResponseT, HttpResponse>)
        {
            Poco::Dynamic::Var text;
            if (queryObjectText(request, expansionLevel, text))
            {
                wrapObject(text, out_response);
                return HTTPStatus::HTTP_OK;
            }
        }

        XObject xobject{Element::Ptr()};
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
    wrapObject(pJsonDbObject, out_response);
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

int JSONDataCache::getExpansionLevel(const RequestBase& request) const
{
    if (request.hasPropertyExpandCriteria())
    {
        return 1;
    }
    return static_cast<int>(request.getExpansionLevel());
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
