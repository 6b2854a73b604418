#include "Mapping/MappingServiceJSONDataCache.h"

#include "Command/UrlPath.h"
#include "DataAccess/ElementAccess.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/OrviDataConverter.h"
#include "JSONDataCache/DBData/Resource.h"
#include "Logging/LogStream.h"
#include "VersionCheck.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/Net/HTTPResponse.h>

namespace Orvi::Mapping
{

using DataLayer::JSONExtractionMap_t;
using DataLayer::JSONProcessingContext;
using DataLayer::JSONProcessingData;

namespace
{

// The handler gets a view on a copy, so that nothing it does with the view reaches the caller's object.
DBData::XObject::Ptr copyOf(const DBData::XObject& xobject)
{
    DBData::XObject::Ptr copy(new DBData::XObject(xobject.getElement()));
    copy->copyFrom(xobject, true);
    return copy;
}

} // namespace

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

} // namespace Orvi::Mapping
