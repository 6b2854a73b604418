#include "Mapping/MappingServiceJSONDataCache.h"

#include "Command/Query/AttributeValueSearch.h"
#include "Command/Query/FilterParameter.h"
#include "Command/QueryFilterJSON.h"
#include "Command/ResponseObject.h"
#include "Command/StatusObject.h"
#include "Command/UrlPath.h"
#include "Data/XObjectBase.h"
#include "DataAccess/ElementAccess.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/OrviDataConverter.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBDataToJSONTransformator.h"
#include "JSONTools.h"
#include "Logging/LogStream.h"
#include "VersionCheck.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Types.h>

namespace Orvi::Mapping
{

using DataLayer::JSONExtractionMap_t;
using DataLayer::JSONProcessingContext;
using DataLayer::JSONProcessingData;
using Poco::Net::HTTPResponse;

namespace
{

// The body of a refused creation tells the client whether it left something out or sent too much.
Poco::JSON::Object::Ptr handleAccessDenied(bool missingAttribute, bool forbiddenAttribute,
                                           Command::HTTPStatus& out_status)
{
    Poco::JSON::Object::Ptr result(new Poco::JSON::Object);
    result->set(Command::StatusObject::FIELD_STATUS, Command::StatusObject::STATUS_ERROR);
    if (missingAttribute)
    {
        out_status = HTTPResponse::HTTP_BAD_REQUEST;
        result->set(Command::StatusObject::FIELD_MESSAGE, std::string("POST is invalid (missing attribute)"));
    }
    else if (forbiddenAttribute)
    {
        out_status = HTTPResponse::HTTP_FORBIDDEN;
        result->set(Command::StatusObject::FIELD_MESSAGE,
                    std::string("POST is not allowed (forbidden attribute)"));
    }
    else
    {
        out_status = HTTPResponse::HTTP_FORBIDDEN;
        result->set(Command::StatusObject::FIELD_MESSAGE,
                    std::string("POST is not allowed on this resource"));
    }
    result->set(Command::StatusObject::FIELD_ERROR_CODE, static_cast<Poco::UInt32>(out_status));
    return result;
}

// The handler gets a view on a copy, so that nothing it does with the view reaches the caller's object.
DBData::XObject::Ptr copyOf(const DBData::XObject& xobject)
{
    DBData::XObject::Ptr copy(new DBData::XObject(xobject.getElement()));
    copy->copyFrom(xobject, true);
    return copy;
}

} // namespace

const std::string MappingServiceJSONDataCache::jsonDataOk = "{ \"status\" : \"ok\" }";

MappingServiceJSONDataCache::MappingServiceJSONDataCache(DBData::ServiceMap& serviceCache,
                                                         IServiceDataHandler* dataHandler)
    : ::Orvi::JSONDataCache::JSONDataCache(serviceCache)
    , m_dataHandler(dataHandler)
{
    if (m_dataHandler == nullptr)
    {
        LOG_FATAL("DataHandler is missing");
    }
}

MappingServiceJSONDataCache::~MappingServiceJSONDataCache() = default;

OperationResult::Enum MappingServiceJSONDataCache::processAttributeValues(
    JSONProcessingContext::Enum ctx, const std::string& servicename, const std::string& resourcename,
    DBData::XObject& xObject, Poco::SharedPtr<JSONExtractionMap_t> extractionMap)
{
    JSONProcessingData processingData;
    processingData.pExtractionMap = extractionMap;
    processingData.pObj = nullptr;
    return processAttributeValues(ctx, servicename, resourcename, xObject, processingData);
}

OperationResult::Enum MappingServiceJSONDataCache::processAttributeValues(JSONProcessingContext::Enum ctx,
                                                                          const std::string& servicename,
                                                                          const std::string& resourcename,
                                                                          DBData::XObject& xObject,
                                                                          JSONProcessingData& processingData)
{
    switch (ctx)
    {
    case JSONProcessingContext::InputContext_IPC:
        return processAttributeValuesInputIPC(ctx, servicename, resourcename, xObject, processingData);
    case JSONProcessingContext::InputContext_POST_On_Element:
        return processAttributeValuesInputUserToMapper(ctx, servicename, resourcename, xObject,
                                                       processingData);
    case JSONProcessingContext::InputContext_POST_On_Resource:
        return processAttributeValuesInputUserToDB(ctx, servicename, resourcename, xObject, processingData);
    case JSONProcessingContext::InputContext_POST_On_Element_Cache_Only:
    {
        // The first pass of a batch: the handler collects the values, nothing is written yet.
        const Service::DataAccess::ElementAccess elementAccess(copyOf(xObject), servicename, resourcename,
                                                               this);
        const ProcessingData tmpData = convertProcessingData(processingData, xObject.getDBID());
        // This route has no failure result; without a handler it raises rather than dereference null.
        poco_check_ptr(m_dataHandler);
        m_dataHandler->addToMapperCache(servicename, elementAccess, tmpData.values);
        return OperationResult::ObjectProcessed;
    }
    }
    return OperationResult::ErrorOnUpdate;
}

DBData::XObject::Ptr MappingServiceJSONDataCache::resolveObjectReferenceByDbId(const DBData::XObjectId& id)
{
    return selectXObject(id, -1);
}

Command::HTTPStatus MappingServiceJSONDataCache::queryCache(const Command::HttpRequest& httpRequest,
                                                            Command::HttpResponse& out_response)
{
    const Command::UrlPath& urlPath = httpRequest.getUrlPath();
    const Command::UrlPath::Characteristic characteristic = urlPath.getCharacteristic();

    if (characteristic == Command::UrlPath::INVALID)
    {
        LOG_ERROR("URL path invalid.");
        return Poco::Net::HTTPResponse::HTTP_BAD_REQUEST;
    }

    if (characteristic != Command::UrlPath::ROOT)
    {
        const DBData::Service::Ptr service = selectService(urlPath.getService());
        if (service.isNull())
        {
            return Poco::Net::HTTPResponse::HTTP_NOT_FOUND;
        }

        if (!Service::VersionCheck::acceptedVersionMatches(httpRequest.getHttpRequest(),
                                                           service->getVersions()))
        {
            out_response.setMimetype("application/json");
            out_response.setDataFromText(Service::VersionCheck::msgVersionNotImplemented, "text/plain");
            return Poco::Net::HTTPResponse::HTTP_OK;
        }

        if (characteristic == Command::UrlPath::SERVICE_RESOURCE)
        {
            std::vector<DBData::Endpoint> endpoints;
            if (!getResourceEndpoints(urlPath.getService(), urlPath.getResource(), endpoints))
            {
                return Poco::Net::HTTPResponse::HTTP_NOT_FOUND;
            }
            if (!DBData::Endpoint::checkGetAllowed(endpoints))
            {
                LOG_WARNING("queryCache access denied by endpoints");
                return Poco::Net::HTTPResponse::HTTP_FORBIDDEN;
            }
        }
    }

    return ::Orvi::JSONDataCache::JSONDataCache::queryCache(
        httpRequest, out_response, httpRequest.getHttpRequest().serverAddress().port());
}

Command::HTTPStatus MappingServiceJSONDataCache::updatePOSTCache(const Command::HttpRequest& httpRequest,
                                                                 Command::HttpResponse& out_response)
{
    if (httpRequest.getType() != Command::HttpRequest::POST)
    {
        LOG_ERROR("Invalid processing routine for request of type "
                  << httpRequest.getHttpRequest().getMethod());
        return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
    }

    const Command::UrlPath& urlPath = httpRequest.getUrlPath();
    const Command::UrlPath::Characteristic characteristic = urlPath.getCharacteristic();
    const std::string& servicename = urlPath.getService();
    switch (characteristic)
    {
    case Command::UrlPath::INVALID:
        return HTTPResponse::HTTP_BAD_REQUEST;
    case Command::UrlPath::ROOT:
        LOG_ERROR("POST on / denied");
        return HTTPResponse::HTTP_FORBIDDEN;
    case Command::UrlPath::SERVICE:
        LOG_ERROR("POST on /" << servicename << " denied");
        return HTTPResponse::HTTP_FORBIDDEN;
    default:
        break;
    }

    const std::string uri = httpRequest.getUri().toString();
    LOG_DEBUG("POST on " << uri);

    const std::string& resourcename = urlPath.getResource();
    const ::Orvi::JSONDataCache::InitialCacheData initialData =
        queryCacheInitial(characteristic, servicename, resourcename);
    if (initialData.characteristic == Command::UrlPath::INVALID)
    {
        return HTTPResponse::HTTP_NOT_FOUND;
    }

    // A service answers POST only on its own port, and before its body is looked at.
    const Poco::UInt16 port = httpRequest.getHttpRequest().serverAddress().port();
    if (initialData.serviceData->getPort() != port)
    {
        LOG_ERROR("POST on " << uri << " using the wrong port " << port);
        return HTTPResponse::HTTP_NOT_FOUND;
    }

    if (!Service::VersionCheck::acceptedVersionMatches(httpRequest.getHttpRequest(),
                                                       initialData.serviceData->getVersions()))
    {
        out_response.setMimetype("application/json");
        out_response.setDataFromText(Service::VersionCheck::msgVersionNotImplemented, "text/plain");
        return HTTPResponse::HTTP_OK;
    }

    Poco::JSON::Object::Ptr json;
    if (!httpRequest.hasMessage() || !Util::JSONTools::parseJSONString(httpRequest.getMessage(), json))
    {
        LOG_ERROR("POST body invalid");
        LOG_DEBUG("POST body:\t" << httpRequest.getMessage());
        return HTTPResponse::HTTP_BAD_REQUEST;
    }
    LOG_TRACE("POST body:\t" << httpRequest.getMessage());

    if (characteristic == Command::UrlPath::SERVICE_RESOURCE_OBJECT)
    {
        return postOnObject(servicename, resourcename, urlPath.getElement(), initialData.elementData, json,
                            out_response);
    }
    if (characteristic == Command::UrlPath::SERVICE_RESOURCE)
    {
        if (urlPath.getQueryParameters().empty())
        {
            return postNewObject(servicename, resourcename, initialData, json, out_response);
        }
        return postOnQuery(httpRequest, servicename, resourcename, json, out_response);
    }
    LOG_WARNING("Failed to process POST");
    return HTTPResponse::HTTP_BAD_REQUEST;
}

Command::HTTPStatus MappingServiceJSONDataCache::updateDELETECache(const Command::HttpRequest& httpRequest,
                                                                   Command::HttpResponse& out_response)
{
    const Command::UrlPath& urlPath = httpRequest.getUrlPath();
    const Command::UrlPath::Characteristic characteristic = urlPath.getCharacteristic();
    if (characteristic == Command::UrlPath::INVALID)
    {
        return HTTPResponse::HTTP_BAD_REQUEST;
    }

    const std::string& servicename = urlPath.getService();
    const ::Orvi::JSONDataCache::InitialCacheData initialData =
        queryCacheInitial(characteristic, servicename, urlPath.getResource());
    if (initialData.characteristic == Command::UrlPath::INVALID)
    {
        return HTTPResponse::HTTP_NOT_FOUND;
    }

    // The root has no service, so this raises Poco::NullPointerException there and the front end
    // answers 500; the branch for the root below is never reached.
    if (!Service::VersionCheck::acceptedVersionMatches(httpRequest.getHttpRequest(),
                                                       initialData.serviceData->getVersions()))
    {
        out_response.setMimetype("application/json");
        out_response.setDataFromText(Service::VersionCheck::msgVersionNotImplemented, "text/plain");
        return HTTPResponse::HTTP_OK;
    }

    Command::HTTPStatus status = HTTPResponse::HTTP_BAD_REQUEST;
    switch (characteristic)
    {
    case Command::UrlPath::ROOT:
        LOG_ERROR("DELETE on / denied");
        return HTTPResponse::HTTP_FORBIDDEN;
    case Command::UrlPath::SERVICE:
        LOG_ERROR("DELETE on /" << servicename << " denied");
        return HTTPResponse::HTTP_FORBIDDEN;
    case Command::UrlPath::SERVICE_RESOURCE:
        status = deleteOnResource(httpRequest, initialData, out_response);
        break;
    case Command::UrlPath::SERVICE_RESOURCE_OBJECT:
        status = deleteOnObject(httpRequest, initialData, out_response);
        break;
    default:
        LOG_WARNING("Failed to process DELETE");
        return HTTPResponse::HTTP_BAD_REQUEST;
    }

    if (Command::HttpResponse::isSuccess(status))
    {
        out_response.setDataFromText(jsonDataOk, Command::HttpResponse::MIMETYPE_JSON);
    }
    return status;
}

Command::HTTPStatus MappingServiceJSONDataCache::updateDELETECacheInternal(
    const std::string& servicename, const std::string& resourcename, const std::string& elementId,
    const std::vector<std::string>& fieldsToDelete)
{
    DBData::XObject::Ptr xobjPtr(new DBData::XObject(DBData::Element::Ptr()));
    if (!selectXObjectByUUID(servicename, resourcename, elementId, *xobjPtr, 0, false))
    {
        LOG_ERROR("XObject " << elementId << " could not be found.");
        return HTTPResponse::HTTP_NOT_FOUND;
    }

    if (fieldsToDelete.empty())
    {
        LOG_DEBUG("XObject " << elementId << " will be deleted.");
        const Service::DataAccess::ElementAccess tmpObj(xobjPtr, servicename, resourcename, this);
        switch (m_dataHandler->beforeDeleteObject(servicename, resourcename, tmpObj))
        {
        case OperationResult::ObjectProcessed:
            return HTTPResponse::HTTP_ACCEPTED;
        case OperationResult::ObjectUpdated:
            if (!deleteXObject(elementId))
            {
                LOG_ERROR("Failed to delete xobject " << elementId << ".");
                return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
            }
            LOG_INFO("Deleted xobject " << elementId << ".");
            m_dataHandler->afterDeleteObject(servicename, resourcename, tmpObj);
            return HTTPResponse::HTTP_OK;
        default:
            LOG_DEBUG("Delete interrupted by datahandler.");
            return HTTPResponse::HTTP_BAD_REQUEST;
        }
    }

    LOG_DEBUG(fieldsToDelete.size() << " attributes will be deleted.");
    // A copy of the list, since removing values from the object changes its own.
    DBData::AttributeValueList attrvals = xobjPtr->getAttributeValues();
    const Service::DataAccess::ElementAccess tmpObj(xobjPtr, servicename, resourcename, this);
    switch (m_dataHandler->beforeDeleteAttributes(servicename, resourcename, tmpObj, fieldsToDelete))
    {
    case OperationResult::ObjectProcessed:
        return HTTPResponse::HTTP_ACCEPTED;
    case OperationResult::ObjectUpdated:
        break;
    default:
        // Unlike a refused object, a refused attribute deletion counts as a fault.
        return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
    }

    for (const std::string& toDelete : fieldsToDelete)
    {
        for (DBData::AttributeValuePtr& attrVal : attrvals)
        {
            if (attrVal.isNull() || attrVal->getName() != toDelete || !attrVal->hasValue())
            {
                continue;
            }
            attrVal->clear();
            if (!updateCacheAttributeValueById(*attrVal, true))
            {
                LOG_ERROR("Failed to delete xobject attribute " << elementId << "(" << toDelete << ").");
                return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
            }
            xobjPtr->removeValue(toDelete);
            LOG_DEBUG("Deleted xobject attribute " << elementId << "(" << toDelete << ").");
        }
    }
    const Service::DataAccess::ElementAccess tmpObj_updated(xobjPtr, servicename, resourcename, this);
    m_dataHandler->afterDeleteAttributes(servicename, resourcename, tmpObj_updated, fieldsToDelete);
    return HTTPResponse::HTTP_OK;
}

Command::HTTPStatus MappingServiceJSONDataCache::updatePOSTCacheBatch(
    const std::string& servicename, const std::string& resourcename, const Poco::JSON::Object::Ptr& obj,
    std::vector<DBData::XObject::Ptr>& xobjects)
{
    // 202 marks that all is well so far; the handler has every object's values before it decides on one.
    Command::HTTPStatus status = HTTPResponse::HTTP_ACCEPTED;
    std::vector<JSONProcessingData> processingInfo(xobjects.size());
    auto itProcessData = processingInfo.begin();
    for (DBData::XObject::Ptr& xobject : xobjects)
    {
        std::vector<DBData::Endpoint> endpoints;
        if (!getElementEndpoints(servicename, resourcename, endpoints))
        {
            LOG_ERROR("No endpoints found.");
            status = HTTPResponse::HTTP_FORBIDDEN;
            break;
        }
        bool missingAttribute = false;
        bool forbiddenAttribute = false;
        if (!DBData::Endpoint::checkPostAllowed(endpoints, *obj, missingAttribute, forbiddenAttribute))
        {
            LOG_WARNING("updatePOSTCache on resource: access denied by endpoints");
            handleAccessDenied(missingAttribute, forbiddenAttribute, status);
            break;
        }
        itProcessData->pObj = obj.get();
        itProcessData->pExtractionMap = nullptr;
        const OperationResult::Enum ret =
            processJSONValues(JSONProcessingContext::InputContext_POST_On_Element_Cache_Only, servicename,
                              resourcename, *xobject, *itProcessData);
        if (ret == OperationResult::ErrorOnUpdate || ret == OperationResult::ServiceErrorOnUpdate)
        {
            status = HTTPResponse::HTTP_BAD_REQUEST;
            break;
        }
        ++itProcessData;
    }
    if (status != HTTPResponse::HTTP_ACCEPTED)
    {
        return status;
    }

    status = HTTPResponse::HTTP_BAD_REQUEST;
    if (xobjects.empty())
    {
        return status;
    }

    itProcessData = processingInfo.begin();
    for (DBData::XObject::Ptr& xobject : xobjects)
    {
        if (itProcessData == processingInfo.end())
        {
            poco_bugcheck_msg("Processing data missing for an object of the batch");
        }
        const OperationResult::Enum ret =
            processAttributeValuesInputUserToMapper(JSONProcessingContext::InputContext_POST_On_Element,
                                                    servicename, resourcename, *xobject, *itProcessData);
        ++itProcessData;
        if (ret == OperationResult::ObjectUpdated || ret == OperationResult::ObjectUnchanged)
        {
            if (status != HTTPResponse::HTTP_ACCEPTED)
            {
                status = HTTPResponse::HTTP_OK;
            }
        }
        else if (ret == OperationResult::ObjectProcessed)
        {
            status = HTTPResponse::HTTP_ACCEPTED;
        }
        else
        {
            status = HTTPResponse::HTTP_BAD_REQUEST;
            break;
        }
    }
    return status;
}

OperationResult::Enum
MappingServiceJSONDataCache::selectXObjectWithConstraints(const std::string& servicename,
                                                          const std::string& resourcename, XObjectId id,
                                                          DBData::XObject& retXObject)
{
    if (!selectXObjectByID(id, retXObject, 0, false))
    {
        LOG_ERROR("select XObject failed to select element " << servicename << ", " << resourcename);
        return OperationResult::ErrorOnUpdate;
    }
    return OperationResult::ObjectUpdated;
}

OperationResult::Enum
MappingServiceJSONDataCache::selectXObjectWithoutConstraints(const std::string& servicename,
                                                             const std::string& resourcename, XObjectId id,
                                                             DBData::XObject& retXObject)
{
    return selectXObjectWithConstraints(servicename, resourcename, id, retXObject);
}

OperationResult::Enum MappingServiceJSONDataCache::selectXObject(DBData::XObjectId id,
                                                                 DBData::XObject& retXObject)
{
    if (!selectXObjectByID(id, retXObject, 0, false))
    {
        LOG_ERROR("select XObject failed to select element by DBID" << id);
        return OperationResult::ErrorOnUpdate;
    }
    return OperationResult::ObjectUnchanged;
}

OperationResult::Enum MappingServiceJSONDataCache::insertXObject(const std::string& servicename,
                                                                 const std::string& resourcename,
                                                                 DBData::XObject& xobj)
{
    if (!::Orvi::JSONDataCache::JSONDataCache::insertXObject(servicename, resourcename, xobj))
    {
        LOG_ERROR("updateAttributeValueFromXObject failed to insert element " << servicename << ", "
                                                                              << resourcename);
        return OperationResult::ErrorOnUpdate;
    }
    return OperationResult::ObjectCreated;
}

OperationResult::Enum MappingServiceJSONDataCache::updateCacheXObjectWithJSON(JSONProcessingContext::Enum ctx,
                                                                              const std::string& servicename,
                                                                              const std::string& resourcename,
                                                                              DBData::XObject& xObject,
                                                                              Poco::JSON::Object::Ptr json)
{
    // The caller's copy may be stale; the values have to enter what the store holds now.
    const std::string uuid = xObject.getId().toString();
    if (!selectXObjectByUUID(servicename, resourcename, uuid, xObject, 0, false))
    {
        LOG_ERROR("No attribute values found.");
        return OperationResult::ErrorOnUpdate;
    }
    return processJSONValues(ctx, servicename, resourcename, xObject, json.get());
}

OperationResult::Enum MappingServiceJSONDataCache::insertCacheXObjectWithJSON(JSONProcessingContext::Enum ctx,
                                                                              const std::string& servicename,
                                                                              const std::string& resourcename,
                                                                              DBData::XObject& xObject,
                                                                              const Poco::JSON::Object& json)
{
    if (!::Orvi::JSONDataCache::JSONDataCache::insertXObject(servicename, resourcename, xObject))
    {
        LOG_ERROR("updateAttributeValueFromXObject failed to insert element " << servicename << ", "
                                                                              << resourcename);
        return OperationResult::ErrorOnUpdate;
    }

    if (processJSONValues(ctx, servicename, resourcename, xObject, &json) == OperationResult::ErrorOnUpdate)
    {
        const std::string uuid = xObject.getId().toString();
        LOG_ERROR("Failed to initialise newly created XObject " << uuid
                                                                << ". Incomplete xObject will be removed.");
        deleteXObject(uuid);
        return OperationResult::ErrorOnUpdate;
    }
    return OperationResult::ObjectCreated;
}

bool MappingServiceJSONDataCache::getXObjectsWithAttributesOfValues(const std::string& servicename,
                                                                    const std::string& resourcename,
                                                                    std::vector<DBData::XObject::Ptr>& result)
{
    static const AttributeValuePairs noPairs;
    return getXObjectsWithAttributesOfValues(servicename, resourcename, result, noPairs);
}

bool MappingServiceJSONDataCache::getXObjectsWithAttributesOfValues(const std::string& servicename,
                                                                    const std::string& resourcename,
                                                                    std::vector<DBData::XObject::Ptr>& result,
                                                                    const AttributeValuePairs& pairs)
{
    std::vector<long> ids;
    const bool found = pairs.empty()
                           ? selectXObjectIDsOfResource(servicename, resourcename, ids)
                           : selectXObjectIDsWithAttributesOfValues(servicename, resourcename, ids, pairs);
    if (!found)
    {
        LOG_DEBUG("Failed to find xobjects with of given values.");
        return false;
    }

    result.reserve(result.size() + ids.size());
    for (const long id : ids)
    {
        DBData::XObject::Ptr object(new DBData::XObject(DBData::Element::Ptr()));
        if (!selectXObjectByID(id, *object, 0, false))
        {
            LOG_ERROR("Failed to find xobjects of given values and id " << id << ".");
            return false;
        }
        result.push_back(object);
    }
    return true;
}

std::string MappingServiceJSONDataCache::getLocation(const std::string& service, const std::string& resource,
                                                     const std::string& element)
{
    return "/" + service + "/" + resource + "/" + element;
}

bool MappingServiceJSONDataCache::queryCacheEndpoints(const std::string& service, const std::string& resource,
                                                      std::vector<DBData::Endpoint>& endpoints,
                                                      const std::string& element) const
{
    if (!element.empty())
    {
        return getElementEndpoints(service, resource, endpoints);
    }
    return getResourceEndpoints(service, resource, endpoints);
}

bool MappingServiceJSONDataCache::getElementEndpoints(const std::string& service, const std::string& resource,
                                                      std::vector<DBData::Endpoint>& endpoints) const
{
    // The look-up of the rows changes nothing; only its declaration is not const.
    const DBData::Element::Ptr element =
        const_cast<MappingServiceJSONDataCache*>(this)->selectElement(service, resource);
    if (element.isNull())
    {
        LOG_ERROR("Element info for resource " << service << "." << resource << " not found");
        return false;
    }
    const std::vector<DBData::Endpoint>& found = element->getEndpoints();
    endpoints.insert(endpoints.end(), found.begin(), found.end());
    return !endpoints.empty();
}

bool MappingServiceJSONDataCache::getResourceEndpoints(const std::string& service,
                                                       const std::string& resource,
                                                       std::vector<DBData::Endpoint>& endpoints) const
{
    const DBData::Resource::Ptr found =
        const_cast<MappingServiceJSONDataCache*>(this)->selectResource(service, resource);
    if (found.isNull())
    {
        LOG_ERROR("Resource " << service << "/" << resource << " not found");
        return false;
    }
    const std::vector<DBData::Endpoint>& rules = found->getEndpoints();
    endpoints.insert(endpoints.end(), rules.begin(), rules.end());
    return !endpoints.empty();
}

OperationResult::Enum MappingServiceJSONDataCache::processAttributeValuesInputIPC(
    JSONProcessingContext::Enum, const std::string& servicename, const std::string& resourcename,
    DBData::XObject& xobject, JSONProcessingData& processingData)
{
    return writeValuesToDB(servicename, resourcename, xobject.getId().toString(),
                           processingData.pExtractionMap);
}

OperationResult::Enum MappingServiceJSONDataCache::processAttributeValuesInputUserToMapper(
    JSONProcessingContext::Enum, const std::string& servicename, const std::string& resourcename,
    DBData::XObject& xobject, JSONProcessingData& processingData)
{
    if (m_dataHandler == nullptr)
    {
        LOG_WARNING("datahandler is NULL");
        return OperationResult::ErrorOnUpdate;
    }

    const std::string uuid = xobject.getId().toString();
    const Service::DataAccess::ElementAccess tmpObj(copyOf(xobject), servicename, resourcename, this);
    ProcessingData tmpData = convertProcessingData(processingData, xobject.getDBID());

    const OperationResult::Enum operationResult =
        m_dataHandler->updateToMapper(servicename, resourcename, tmpObj, tmpData);
    if (operationResult == OperationResult::ErrorOnUpdate)
    {
        LOG_WARNING("Update " << servicename << "." << resourcename << "." << uuid << " via IPC failed.");
        return OperationResult::ErrorOnUpdate;
    }

    if (operationResult == OperationResult::ObjectUpdated && !processingData.pExtractionMap.isNull() &&
        !storePostedObjectRefs(servicename, resourcename, xobject, processingData))
    {
        LOG_WARNING("Update " << servicename << "." << resourcename << "." << uuid
                              << " of poasted objects via IPC failed.");
        return OperationResult::ErrorOnUpdate;
    }
    return operationResult;
}

OperationResult::Enum MappingServiceJSONDataCache::processAttributeValuesInputUserToDB(
    JSONProcessingContext::Enum, const std::string& servicename, const std::string& resourcename,
    DBData::XObject& xobject, JSONProcessingData& processingData)
{
    const std::string uuid = xobject.getId().toString();
    OperationResult::Enum result =
        writeValuesToDB(servicename, resourcename, uuid, processingData.pExtractionMap);
    if (result == OperationResult::ErrorOnUpdate)
    {
        return result;
    }

    if (m_dataHandler == nullptr)
    {
        LOG_WARNING("datahandler is NULL");
        return OperationResult::ErrorOnUpdate;
    }

    const Service::DataAccess::ElementAccess tmpObj(copyOf(xobject), servicename, resourcename, this);
    ProcessingData tmpData = convertProcessingData(processingData, xobject.getDBID());
    result = m_dataHandler->updateToDb(servicename, resourcename, tmpObj, tmpData);
    if (result == OperationResult::ErrorOnUpdate || result == OperationResult::ServiceErrorOnUpdate)
    {
        LOG_WARNING("Update " << servicename << "." << resourcename << "." << uuid << " via IPC failed.");
    }
    return result;
}

bool MappingServiceJSONDataCache::storePostedObjectRefs(const std::string& servicename,
                                                        const std::string& resourcename,
                                                        const DBData::XObject& xobject,
                                                        const JSONProcessingData& processingData)
{
    Poco::SharedPtr<JSONExtractionMap_t> object_values(new JSONExtractionMap_t);
    for (const auto& [name, value] : *processingData.pExtractionMap)
    {
        if (!value.isNull() && !value->getAttribute().isNull() && value->getType() == DBData::AttrType_Object)
        {
            object_values->emplace(name, value);
        }
    }
    if (object_values->empty())
    {
        return true;
    }
    return writeValuesToDB(servicename, resourcename, xobject.getId().toString(), object_values) !=
           OperationResult::ErrorOnUpdate;
}

OperationResult::Enum
MappingServiceJSONDataCache::writeValuesToDB(const std::string& servicename, const std::string& resourcename,
                                             const std::string& uuid,
                                             const Poco::SharedPtr<JSONExtractionMap_t>& values)
{
    if (values.isNull() || values->empty())
    {
        return OperationResult::ObjectUnchanged;
    }

    for (const auto& entry : *values)
    {
        // The cells are the object's own; the store may convert them in place while writing.
        Poco::SharedPtr<DBData::AttributeValue> value = entry.second;
        if (value.isNull() || value->getAttribute().isNull())
        {
            throw Poco::NullPointerException();
        }
        if (value->isArray())
        {
            if (!updateCacheArrayAttributeValueById(*value, true))
            {
                LOG_ERROR("User update of array attribute value " << servicename << "." << resourcename << "."
                                                                  << uuid << "." << value->getName()
                                                                  << " failed.");
                return OperationResult::ErrorOnUpdate;
            }
        }
        else if (!updateCacheAttributeValueById(*value, true))
        {
            LOG_ERROR("User update of attribute value " << servicename << "." << resourcename << "." << uuid
                                                        << "." << value->getName() << " failed.");
            return OperationResult::ErrorOnUpdate;
        }
    }
    return OperationResult::ObjectUpdated;
}

ProcessingData MappingServiceJSONDataCache::convertProcessingData(const JSONProcessingData& processingData,
                                                                  XObjectId xObjId)
{
    ProcessingData result;
    result.xObjId = xObjId;
    result.orgJsonObj = processingData.pObj;
    if (processingData.pExtractionMap.isNull())
    {
        return result;
    }

    result.values = new Data::AttributeMap;
    for (const auto& [name, value] : *processingData.pExtractionMap)
    {
        if (value.isNull() || value->getAttribute().isNull())
        {
            throw Poco::NullPointerException("Can not convert invalid attribute value list");
        }
        if (!value->hasValue())
        {
            // A cleared value has no typed form; the handler learns of removals by other means.
            LOG_DEBUG("MappingServiceJSONDataCache::convertProcessingData: ignore empty attribute value "
                      << value->getName());
            continue;
        }
        const Data::AttributeBase::Ptr attribute(DBData::OrviDataConverter::createAttribute(xObjId, *value));
        if (attribute.isNull())
        {
            throw Poco::DataException("Failed to convert DBData attribute to Orvi::Data::Attribute");
        }
        (*result.values)[name] = attribute;
    }
    return result;
}

Command::HTTPStatus MappingServiceJSONDataCache::postOnObject(const std::string& servicename,
                                                              const std::string& resourcename,
                                                              const std::string& uuid,
                                                              const DBData::Element::Ptr& element,
                                                              const Poco::JSON::Object::Ptr& json,
                                                              Command::HttpResponse& out_response)
{
    DBData::XObject::Ptr xobject(new DBData::XObject(element));
    if (!selectXObjectByUUID(servicename, resourcename, uuid, *xobject, 0, false))
    {
        LOG_ERROR("No attribute values found.");
        return HTTPResponse::HTTP_FORBIDDEN;
    }

    m_dataHandler->clearMapperCache(servicename);
    std::vector<DBData::XObject::Ptr> xobjects{xobject};
    const Command::HTTPStatus status = updatePOSTCacheBatch(servicename, resourcename, json, xobjects);
    if (status < HTTPResponse::HTTP_BAD_REQUEST)
    {
        out_response.setDataFromText(jsonDataOk, Command::HttpResponse::MIMETYPE_JSON);
    }
    return status;
}

Command::HTTPStatus
MappingServiceJSONDataCache::postNewObject(const std::string& servicename, const std::string& resourcename,
                                           const ::Orvi::JSONDataCache::InitialCacheData& initialData,
                                           const Poco::JSON::Object::Ptr& json,
                                           Command::HttpResponse& out_response)
{
    if (initialData.resourceData.isNull())
    {
        LOG_ERROR("Resource information could not be loaded");
        return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
    }

    bool missingAttribute = false;
    bool forbiddenAttribute = false;
    if (!DBData::Endpoint::checkPostAllowed(initialData.resourceData->getEndpoints(), *json, missingAttribute,
                                            forbiddenAttribute))
    {
        LOG_WARNING("updatePOSTCache on resource: access denied by endpoints");
        Command::HTTPStatus status = HTTPResponse::HTTP_FORBIDDEN;
        out_response.setDataFromObject(handleAccessDenied(missingAttribute, forbiddenAttribute, status));
        return status;
    }

    m_dataHandler->clearMapperCache(servicename);

    DBData::XObject xobject(initialData.elementData);
    if (!::Orvi::JSONDataCache::JSONDataCache::insertXObject(servicename, resourcename, xobject))
    {
        return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
    }

    const OperationResult::Enum result = processJSONValues(
        JSONProcessingContext::InputContext_POST_On_Resource, servicename, resourcename, xobject, json.get());
    const std::string uuid = xobject.getId().toString();
    if (result == OperationResult::ObjectUpdated || result == OperationResult::ObjectProcessed)
    {
        out_response.setDataFromText(jsonDataOk, Command::HttpResponse::MIMETYPE_JSON);
        out_response.setLocation(getLocation(servicename, resourcename, uuid));
        return HTTPResponse::HTTP_CREATED;
    }

    // An object that nobody took over must not stay half made.
    Command::HTTPStatus status = HTTPResponse::HTTP_BAD_REQUEST;
    if (result == OperationResult::ObjectUnchanged)
    {
        LOG_WARNING("Unexpected result form processJSONValues : ObjectUnchanged");
        status = HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
    }
    LOG_ERROR("Failed to initialise newly created XObject. Incomplete XObject will be removed.");
    if (!deleteXObject(uuid))
    {
        poco_bugcheck_msg("A newly created XObject could not be removed again");
    }
    return status;
}

Command::HTTPStatus MappingServiceJSONDataCache::postOnQuery(const Command::HttpRequest& httpRequest,
                                                             const std::string& servicename,
                                                             const std::string& resourcename,
                                                             const Poco::JSON::Object::Ptr& json,
                                                             Command::HttpResponse& out_response)
{
    std::vector<DBData::XObject::Ptr> xobjects;
    if (!selectXObjectsByRequest(httpRequest, xobjects) || xobjects.empty())
    {
        LOG_WARNING("Failed to select elements of resource \"/" << servicename << "/" << resourcename);
        return HTTPResponse::HTTP_NOT_FOUND;
    }

    Poco::JSON::Array filtered;
    try
    {
        Poco::JSON::Array array;
        if (!::Orvi::JSONDataCache::DBDataToJSONTransformator::transformXObjectsToJSONArray(xobjects, array,
                                                                                            0))
        {
            LOG_ERROR("Failed to transform xobject collection to json array");
            return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
        }
        Poco::JSON::Object::Ptr paging;
        Command::QueryFilterJSON::filterJSONArrayByQuery(array, httpRequest, filtered, paging);
    }
    catch (const Poco::BugcheckException&)
    {
        throw;
    }
    catch (const Poco::Exception& error)
    {
        LOG_ERROR("Caught exception while transforming xobjects to json: " << error.displayText());
        return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
    }

    // Only the objects that the filter let through are changed, and each keeps its state as read, so
    // that a failed batch can be posted back.
    Poco::JSON::Array backup;
    std::vector<DBData::XObject::Ptr> selected;
    for (const DBData::XObject::Ptr& xobject : xobjects)
    {
        const std::string& uuid = xobject->getId().toString();
        for (std::size_t index = 0; index < filtered.size(); ++index)
        {
            const Poco::JSON::Object::Ptr candidate = filtered.getObject(static_cast<unsigned int>(index));
            if (candidate.isNull())
            {
                poco_bugcheck_msg("Filtered JSON array holds an entry that is not an object");
            }
            if (candidate->optValue<std::string>(Data::XObjectBase::KEY_ID, "") != uuid)
            {
                continue;
            }
            Poco::JSON::Object::Ptr copy(new Poco::JSON::Object);
            for (const auto& member : *candidate)
            {
                copy->set(member.first, member.second);
            }
            backup.add(copy);
            selected.push_back(xobject);
        }
    }
    xobjects.swap(selected);

    m_dataHandler->clearMapperCache(servicename);
    const Command::HTTPStatus status = updatePOSTCacheBatch(servicename, resourcename, json, xobjects);
    if (status < HTTPResponse::HTTP_BAD_REQUEST)
    {
        out_response.setDataFromText(jsonDataOk, Command::HttpResponse::MIMETYPE_JSON);
        return status;
    }

    m_dataHandler->clearMapperCache(servicename);
    for (std::size_t index = 0; index < xobjects.size() && index < backup.size(); ++index)
    {
        const DBData::XObject::Ptr& xobject = xobjects[index];
        if (xobject.isNull())
        {
            continue;
        }
        std::vector<DBData::XObject::Ptr> single{xobject};
        const Command::HTTPStatus result = updatePOSTCacheBatch(
            servicename, resourcename, backup.getObject(static_cast<unsigned int>(index)), single);
        if (result >= HTTPResponse::HTTP_BAD_REQUEST)
        {
            LOG_ERROR("Failed to apply backup to revert previous change for XObject "
                      << xobject->getId().toString());
        }
        else if (result >= HTTPResponse::HTTP_MULTIPLE_CHOICES)
        {
            LOG_WARNING("Failed to apply backup to revert previous change for XObject "
                        << xobject->getId().toString());
        }
    }
    return status;
}

Command::HTTPStatus
MappingServiceJSONDataCache::deleteOnResource(const Command::HttpRequest& httpRequest,
                                              const ::Orvi::JSONDataCache::InitialCacheData& initialData,
                                              Command::HttpResponse& out_response)
{
    const std::string& servicename = httpRequest.getUrlPath().getService();
    const std::string& resourcename = httpRequest.getUrlPath().getResource();
    const std::string uri = httpRequest.getUri().toString();
    LOG_DEBUG("DELETE on " << uri);
    const Poco::UInt16 port = httpRequest.getHttpRequest().serverAddress().port();
    if (initialData.serviceData->getPort() != port)
    {
        LOG_ERROR("DELETE on " << uri << " using the wrong port " << port);
        return HTTPResponse::HTTP_NOT_FOUND;
    }

    // Without ids the answer stays without body.
    if (!httpRequest.hasSearchCriteria())
    {
        LOG_ERROR("DELETE on resource level requires list of ids of elements to be deleted");
        return HTTPResponse::HTTP_BAD_REQUEST;
    }

    std::vector<Poco::SharedPtr<Command::AttributeValueSearch>> searches;
    Command::RequestBase::extractCriteria(searches, httpRequest.getSearchCriteria());
    const bool validQuery = !httpRequest.hasRenderCriteria() && !httpRequest.hasFreetextCriteria() &&
                            searches.size() == 1 && !searches.front().isNull() &&
                            searches.front()->getAttributeName() == Data::XObjectBase::KEY_ID &&
                            !searches.front()->getSearchValues().empty();
    if (!validQuery)
    {
        LOG_ERROR("DELETE denied - invalid query parameter");
        out_response.setDataFromObject(
            Command::ResponseObject(HTTPResponse::HTTP_BAD_REQUEST, "invalid query parameter"));
        return HTTPResponse::HTTP_BAD_REQUEST;
    }
    const std::vector<std::string>& idList = searches.front()->getSearchValues();

    std::vector<DBData::Endpoint> endpoints;
    if (!getElementEndpoints(servicename, resourcename, endpoints))
    {
        LOG_ERROR("No endpoints found.");
        return HTTPResponse::HTTP_FORBIDDEN;
    }
    static const std::vector<std::string> wholeObject;
    if (!DBData::Endpoint::checkDeleteAllowed(endpoints, wholeObject))
    {
        LOG_WARNING("Batch-DELETE: access denied by endpoints");
        return HTTPResponse::HTTP_FORBIDDEN;
    }

    // The first success is the answer unless an object was only accepted; an error after a success is
    // not reported, and a success replaces an earlier error.
    Command::HTTPStatus status = HTTPResponse::HTTP_BAD_REQUEST;
    for (const std::string& id : idList)
    {
        const Command::HTTPStatus tmpStatus =
            updateDELETECacheInternal(servicename, resourcename, id, wholeObject);
        if (status == HTTPResponse::HTTP_ACCEPTED)
        {
            continue;
        }
        if (status == HTTPResponse::HTTP_OK)
        {
            if (tmpStatus == HTTPResponse::HTTP_ACCEPTED)
            {
                status = HTTPResponse::HTTP_ACCEPTED;
            }
            continue;
        }
        status = tmpStatus;
    }
    return status;
}

Command::HTTPStatus
MappingServiceJSONDataCache::deleteOnObject(const Command::HttpRequest& httpRequest,
                                            const ::Orvi::JSONDataCache::InitialCacheData& initialData,
                                            Command::HttpResponse& out_response)
{
    const std::string& servicename = httpRequest.getUrlPath().getService();
    const std::string& resourcename = httpRequest.getUrlPath().getResource();
    const std::string uri = httpRequest.getUri().toString();
    const Poco::UInt16 port = httpRequest.getHttpRequest().serverAddress().port();
    if (initialData.serviceData->getPort() != port)
    {
        LOG_ERROR("DELETE on " << uri << " using the wrong port " << port);
        return HTTPResponse::HTTP_NOT_FOUND;
    }
    if (httpRequest.hasMessage())
    {
        LOG_ERROR("DELETE contains message body.");
        return HTTPResponse::HTTP_BAD_REQUEST;
    }

    LOG_DEBUG("DELETE on " << uri);
    m_dataHandler->clearMapperCache(servicename);
    if (initialData.elementData.isNull())
    {
        LOG_ERROR("Element information could not be loaded");
        return HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
    }

    const std::string& elementId = httpRequest.getUrlPath().getElement();
    DBData::XObject::Ptr xobjPtr(new DBData::XObject(initialData.elementData));
    if (!selectXObjectByUUID(servicename, resourcename, elementId, *xobjPtr, 0, false))
    {
        LOG_ERROR("XObject " << elementId << " could not be found.");
        return HTTPResponse::HTTP_NOT_FOUND;
    }

    const std::vector<DBData::Endpoint>& endpoints = initialData.elementData->getEndpoints();
    if (!httpRequest.hasFieldsCriteria())
    {
        static const std::vector<std::string> wholeObject;
        if (!DBData::Endpoint::checkDeleteAllowed(endpoints, wholeObject))
        {
            LOG_WARNING("DELETE on element: access denied by endpoints");
            return HTTPResponse::HTTP_FORBIDDEN;
        }
        return updateDELETECacheInternal(servicename, resourcename, elementId, wholeObject);
    }

    std::vector<Poco::SharedPtr<Command::FilterParameter>> filterCriterion;
    Command::RequestBase::extractCriteria(filterCriterion, httpRequest.getRenderCriteria());
    if (filterCriterion.size() != 1 || filterCriterion.front().isNull())
    {
        LOG_ERROR("DELETE denied - invalid query parameter");
        out_response.setDataFromObject(
            Command::ResponseObject(HTTPResponse::HTTP_BAD_REQUEST, "invalid query parameter"));
        return HTTPResponse::HTTP_BAD_REQUEST;
    }

    // Default attributes are refused before the rules are consulted.
    std::vector<std::string> toDeleteList;
    for (const Command::FilterField& field : filterCriterion.front()->getFields())
    {
        const std::string& fieldname = field.getName();
        if (DBData::Attribute::isDefaultAttribute(fieldname))
        {
            LOG_ERROR("Can not delete default attribute " << fieldname << ".");
            return HTTPResponse::HTTP_BAD_REQUEST;
        }
        toDeleteList.push_back(fieldname);
    }
    if (!DBData::Endpoint::checkDeleteAllowed(endpoints, toDeleteList))
    {
        LOG_WARNING("DELETE on element: access denied by endpoints");
        return HTTPResponse::HTTP_FORBIDDEN;
    }
    return updateDELETECacheInternal(servicename, resourcename, elementId, toDeleteList);
}

} // namespace Orvi::Mapping
