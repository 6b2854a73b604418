#include "DataAccess/DBDataAccessPoint.h"

#include "Command/UrlPath.h"
#include "CompareResult.h"
#include "Data/AttributeBase.h"
#include "Data/AttributeValueArrayBase.h"
#include "Data/AttributeValueBase.h"
#include "Data/DataTypes.h"
#include "Data/XObjectBase.h"
#include "DataAccess/ElementAccess.h"
#include "DataAccess/ResourceAccess.h"
#include "DataAccess/ServiceAccess.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>
#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/Types.h>
#include <Poco/UUID.h>

#include <string>
#include <typeinfo>
#include <vector>

namespace Orvi::Service
{

namespace
{

using UpdateResult = ServiceDataAccessPoint::UpdateResult;
using UpdateList = DBData::AttributeValueList;

// Objects are read with their references resolved to the identity of what they refer to.
const Poco::Int32 SELECTION_DEPTH = 0;

bool isBelowNotFound(UpdateResult::Value value)
{
    return value < UpdateResult::NOT_FOUND;
}

// A copy that does not share an array's vector with the original.
Poco::Dynamic::Var detachedCopy(const Poco::Dynamic::Var& value)
{
    if (value.type() == typeid(DBData::AttributeValue::ValueArrayPtr))
    {
        const DBData::AttributeValue::ValueArrayPtr& array =
            value.extract<DBData::AttributeValue::ValueArrayPtr>();
        if (!array.isNull())
        {
            return Poco::Dynamic::Var(
                DBData::AttributeValue::ValueArrayPtr(new DBData::AttributeValue::ValueArray(*array)));
        }
    }
    return value;
}

// The generic form of a reference is the whole object, which the store cannot take; its JSON form
// carries the "uri" as a client would send it. The same holds for each reference of an array.
bool holdsReferences(const Data::AttributeValueBase& value)
{
    if (value.isXObjReference())
    {
        return true;
    }
    if (!value.isArray())
    {
        return false;
    }
    const std::vector<const Data::AttributeValueBase*> elements =
        dynamic_cast<const Data::AttributeValueArrayBase&>(value).getValueArray();
    return !elements.empty() && elements.front()->isXObjReference();
}

bool addToUpdateList(UpdateList& list, DBData::AttributeValuePtr value, const Poco::Dynamic::Var& newValue)
{
    if (value.isNull())
    {
        throw Poco::NullPointerException("Invalid attribute value");
    }
    try
    {
        const Poco::Dynamic::Var previous = detachedCopy(value->getValue());
        // A selected object shares its arrays with the store, which must see the new elements only
        // once the cache has accepted them.
        if (value->isArray())
        {
            value->setValue(detachedCopy(previous), false);
        }
        if (!value->setValue(newValue))
        {
            LOG_ERROR("Invalid value for attribute " << value->getName());
            value->setValue(previous, false);
            return false;
        }
        if (value->compareValue(previous) == Util::EQUAL)
        {
            LOG_TRACE("Skip update of attribute " << value->getName() << ". Value does not change.");
        }
        else
        {
            list.push_back(value);
        }
        return true;
    }
    catch (const Poco::Exception& e)
    {
        LOG_ERROR("Invalid type of attribute " << value->getName()
                                               << " - Caught exception: " << e.displayText());
        return false;
    }
}

UpdateResult::Value createUpdateList(UpdateList& list, const DBData::XObject& xobject,
                                     const Data::AttributeMap& attributes)
{
    list.clear();
    list.reserve(attributes.size());
    for (const auto& entry : attributes)
    {
        const std::string& name = entry.first;
        // The stored object keeps the UUID and the URI the cache gave it.
        if (name == Data::XObjectBase::KEY_ID || name == Data::XObjectBase::KEY_URI)
        {
            continue;
        }
        DBData::AttributeValuePtr value = xobject.getValue(name);
        if (value.isNull())
        {
            LOG_ERROR("Failed to update element with unknown attribute " << name);
            return UpdateResult::INVALID_OBJECT;
        }
        const Data::AttributeBase::Ptr& attribute = entry.second;
        if (attribute.isNull() || attribute->getValueBase() == nullptr)
        {
            continue;
        }
        const Data::AttributeValueBase& typed = *attribute->getValueBase();
        const Poco::Dynamic::Var generic = holdsReferences(typed) ? typed.toJSON(0) : typed.asGeneric();
        if (!addToUpdateList(list, value, generic))
        {
            return UpdateResult::INVALID_REQUEST;
        }
    }
    return UpdateResult::OK;
}

UpdateResult::Value createUpdateList(UpdateList& list, const DBData::XObject& xobject,
                                     const Poco::JSON::Object::Ptr& json)
{
    if (json.isNull())
    {
        LOG_ERROR("DBDataAccessPoint::updateElement - JSON object is null");
        return UpdateResult::INVALID_OBJECT;
    }
    list.clear();
    list.reserve(json->size());
    for (const auto& entry : *json)
    {
        DBData::AttributeValuePtr value = xobject.getValue(entry.first);
        if (value.isNull())
        {
            LOG_ERROR("Failed to initialise element with unknown attribute " << entry.first);
            return UpdateResult::INVALID_OBJECT;
        }
        if (!addToUpdateList(list, value, entry.second))
        {
            return UpdateResult::INVALID_REQUEST;
        }
    }
    return UpdateResult::OK;
}

UpdateResult::Value updateAttributes(const UpdateList& list, JSONDataCache::JSONDataCache& cache)
{
    if (list.empty())
    {
        return UpdateResult::NO_UPDATE;
    }
    for (DBData::AttributeValuePtr value : list)
    {
        poco_check_ptr(value.get());
        const bool written = value->isArray() ? cache.updateCacheArrayAttributeValueById(*value, false)
                                              : cache.updateCacheAttributeValueById(*value, false);
        if (!written)
        {
            LOG_ERROR("Failed to initialise attribute " << value->getName());
            return UpdateResult::PROCESSING_ERROR;
        }
    }
    return UpdateResult::OK;
}

template <typename Values>
UpdateResult::Value writeValues(JSONDataCache::JSONDataCache& cache, const DBData::XObject& xobject,
                                const Values& values)
{
    UpdateList list;
    const UpdateResult::Value result = createUpdateList(list, xobject, values);
    if (!isBelowNotFound(result))
    {
        return result;
    }
    return updateAttributes(list, cache);
}

template <typename Values>
UpdateResult insertObject(const DBDataAccessPoint& accessPoint, JSONDataCache::JSONDataCache& cache,
                          const std::string& service, const std::string& resource, const Values& values,
                          const Poco::UUID& uuid = Poco::UUID::null())
{
    DBData::XObject xobject{DBData::Element::Ptr()};
    if (uuid != Poco::UUID::null())
    {
        xobject.setId(DBData::UUID(uuid));
    }
    if (!cache.insertXObject(service, resource, xobject))
    {
        return UpdateResult(UpdateResult::PROCESSING_ERROR);
    }
    const UpdateResult::Value result = writeValues(cache, xobject, values);
    if (isBelowNotFound(result))
    {
        return UpdateResult(result, accessPoint.getElement(xobject.getDBID()));
    }
    if (!cache.deleteXObject(xobject.getUUID()))
    {
        poco_bugcheck_msg("Failed to remove an object whose insert failed");
    }
    return UpdateResult(result);
}

} // namespace

DBDataAccessPoint::DBDataAccessPoint(JSONDataCache::JSONDataCache& cache)
    : m_cache(cache)
{
}

DBDataAccessPoint::~DBDataAccessPoint() = default;

void DBDataAccessPoint::loadServices() const
{
    if (!m_serviceList.empty())
    {
        return;
    }
    std::vector<DBData::Service::Ptr> services;
    if (!m_cache.selectServices(services))
    {
        return;
    }
    m_serviceList.reserve(services.size());
    for (const DBData::Service::Ptr& service : services)
    {
        if (!service.isNull())
        {
            m_serviceList.emplace_back(new DataAccess::ServiceAccess(service, m_cache));
        }
    }
}

void DBDataAccessPoint::loadResources(const std::string& service) const
{
    if (m_resourceList.count(service) > 0)
    {
        return;
    }
    const DBData::Service::Ptr row = m_cache.selectService(service);
    if (row.isNull())
    {
        return;
    }
    const DBData::ResourceMap& resources = row->getResources();
    std::vector<Data::ResourceBase::Ptr> views;
    views.reserve(resources.size());
    for (const auto& entry : resources)
    {
        if (!entry.second.isNull())
        {
            views.emplace_back(new DataAccess::ResourceAccess(entry.second, service, m_cache));
        }
    }
    m_resourceList.emplace(service, std::move(views));
}

Data::ServiceBase::Ptr DBDataAccessPoint::getService(const std::string& name) const
{
    loadServices();
    for (const Data::ServiceBase::Ptr& service : m_serviceList)
    {
        if (!service.isNull() && service->getName() == name)
        {
            return service;
        }
    }
    return {};
}

std::vector<Data::ServiceBase::Ptr> DBDataAccessPoint::getServices() const
{
    loadServices();
    return m_serviceList;
}

Data::ResourceBase::Ptr DBDataAccessPoint::getResource(const std::string& service,
                                                       const std::string& resource) const
{
    loadResources(service);
    const auto found = m_resourceList.find(service);
    if (found == m_resourceList.end())
    {
        return {};
    }
    for (const Data::ResourceBase::Ptr& view : found->second)
    {
        if (!view.isNull() && view->getName() == resource)
        {
            return view;
        }
    }
    return {};
}

std::vector<Data::ResourceBase::Ptr> DBDataAccessPoint::getResources(const std::string& service) const
{
    loadResources(service);
    const auto found = m_resourceList.find(service);
    if (found == m_resourceList.end())
    {
        return {};
    }
    return found->second;
}

Data::ElementBase::Ptr DBDataAccessPoint::getElement(Data::XObjectId id) const
{
    const DBData::XObject::Ptr object = m_cache.selectXObject(id, SELECTION_DEPTH);
    if (object.isNull())
    {
        return {};
    }
    return new DataAccess::ElementAccess(object, &m_cache);
}

Data::ElementBase::Ptr DBDataAccessPoint::getElement(const Poco::URI& uri) const
{
    const Command::UrlPath path(uri);
    if (path.getCharacteristic() != Command::UrlPath::SERVICE_RESOURCE_OBJECT)
    {
        return {};
    }
    return getElement(path.getService(), path.getResource(), path.getElement());
}

Data::ElementBase::Ptr DBDataAccessPoint::getElement(const std::string& service, const std::string& resource,
                                                     const Poco::UUID& uuid) const
{
    return getElement(service, resource, uuid.toString());
}

Data::ElementBase::Ptr DBDataAccessPoint::getElement(const std::string& service, const std::string& resource,
                                                     const std::string& element) const
{
    const DBData::XObject::Ptr object = m_cache.selectXObject(service, resource, element, SELECTION_DEPTH);
    if (object.isNull())
    {
        return {};
    }
    return new DataAccess::ElementAccess(object, service, resource, &m_cache);
}

ServiceDataAccessPoint::ElementCollection DBDataAccessPoint::getElements(const std::string& service,
                                                                         const std::string& resource) const
{
    const Data::ResourceBase::Ptr view = getResource(service, resource);
    if (view.isNull())
    {
        return {};
    }
    return view->getElements();
}

ServiceDataAccessPoint::UpdateResult DBDataAccessPoint::insertElement(const Data::ElementBase& element)
{
    // An element that names its UUID is created under it, so that program code can give objects
    // addresses known in advance.
    const Poco::UUID uuid =
        element.hasValue(Data::XObjectBase::KEY_ID) ? element.getId() : Poco::UUID::null();
    return insertObject(*this, m_cache, element.service(), element.resource(), element.getAttributes(), uuid);
}

ServiceDataAccessPoint::UpdateResult DBDataAccessPoint::insertElement(const Poco::URI& uri,
                                                                      const Poco::JSON::Object::Ptr& json)
{
    const Command::UrlPath path(uri);
    if (path.getCharacteristic() != Command::UrlPath::SERVICE_RESOURCE)
    {
        return UpdateResult(UpdateResult::INVALID_REQUEST);
    }
    return insertElement(path.getService(), path.getResource(), json);
}

ServiceDataAccessPoint::UpdateResult DBDataAccessPoint::insertElement(const std::string& service,
                                                                      const std::string& resource,
                                                                      const Poco::JSON::Object::Ptr& json)
{
    if (json.isNull())
    {
        LOG_ERROR("Invalid JSON Object: nullptr");
        return UpdateResult(UpdateResult::INVALID_OBJECT);
    }
    return insertObject(*this, m_cache, service, resource, json);
}

ServiceDataAccessPoint::UpdateResult DBDataAccessPoint::updateElement(const Data::ElementBase& element)
{
    DBData::XObject xobject{DBData::Element::Ptr()};
    const bool found =
        element.id() != -1
            ? m_cache.selectXObjectByID(element.id(), xobject, SELECTION_DEPTH, false)
            : m_cache.selectXObjectByUUID(element.service(), element.resource(), element.getId().toString(),
                                          xobject, SELECTION_DEPTH, false);
    if (!found)
    {
        return UpdateResult(UpdateResult::NOT_FOUND);
    }
    return UpdateResult(writeValues(m_cache, xobject, element.getAttributes()));
}

ServiceDataAccessPoint::UpdateResult DBDataAccessPoint::updateElement(Data::XObjectId id,
                                                                      const Poco::JSON::Object::Ptr& json)
{
    DBData::XObject xobject{DBData::Element::Ptr()};
    if (!m_cache.selectXObjectByID(id, xobject, SELECTION_DEPTH, false))
    {
        return UpdateResult(UpdateResult::NOT_FOUND);
    }
    return UpdateResult(writeValues(m_cache, xobject, json));
}

ServiceDataAccessPoint::UpdateResult DBDataAccessPoint::updateElement(const std::string& service,
                                                                      const std::string& resource,
                                                                      const std::string& element,
                                                                      const Poco::JSON::Object::Ptr& json)
{
    DBData::XObject xobject{DBData::Element::Ptr()};
    if (!m_cache.selectXObjectByUUID(service, resource, element, xobject, SELECTION_DEPTH, false))
    {
        return UpdateResult(UpdateResult::NOT_FOUND);
    }
    return UpdateResult(writeValues(m_cache, xobject, json));
}

ServiceDataAccessPoint::UpdateResult DBDataAccessPoint::deleteElement(const Data::ElementBase& element)
{
    if (m_cache.deleteXObject(element.getId().toString()))
    {
        return UpdateResult(UpdateResult::OK);
    }
    LOG_WARNING("Failed to delete element " << element.getUri().toString());
    return UpdateResult(UpdateResult::NOT_FOUND);
}

} // namespace Orvi::Service
