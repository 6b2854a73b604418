#include "JSONDataCache/JSONDataCache.h"
#include "JSONDataCache/SortedOrderCache.h"
#include "JSONDataCache/UuidList.h"

#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/ConstraintOneOf.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/UUID.h"
#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/String.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

namespace Orvi::JSONDataCache
{

using Command::UrlPath;
using DBData::AttributeValue;
using DBData::AttributeValuePtr;
using DBData::DbId;
using DBData::Element;
using DBData::XObject;

namespace
{

// Generated UUIDs that collide with stored ones are drawn again, but not for ever.
constexpr int MAX_UUID_ATTEMPTS = 10;

const std::string ATTRIBUTE_ID = "id";
const std::string ATTRIBUTE_NAME = "name";
const std::string ATTRIBUTE_URI = "uri";

} // namespace

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
    if (DBData::UUID::parse(newUUID, requested) && requested != Poco::UUID::null())
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
    suspectDanglingReferences(element.get());
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
    suspectDanglingReferences();
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
    const Poco::UInt64 versionBefore = element->getVersion();
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
        const std::string uuid = extractUuid(value);
        success = m_xobjCache.updateValue(parent->getDBID(), attrvalue.getDBID(), Poco::Dynamic::Var(uuid)) &&
                  element->updateIndex(attrvalue, Poco::Dynamic::Var(uuid));
        suspectDanglingReference(*element, {uuid});
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
    m_sortedOrders->valueChanged(element->getDBID(), versionBefore, element->getVersion(), parent->getDBID());
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
    const Poco::UInt64 versionBefore = element->getVersion();

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
        std::vector<std::string> uuids;
        if (isReference && extractUuidList(stored, uuids))
        {
            suspectDanglingReference(*element, uuids);
        }
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
    m_sortedOrders->valueChanged(element->getDBID(), versionBefore, element->getVersion(), parent->getDBID());
    return true;
}

namespace
{

// Whether a reference of the attribute may name an object of the resource; one without a constraint
// of targets may name any object.
bool mayName(const DBData::Attribute& attribute, const std::string& service, const std::string& resource)
{
    for (const Poco::SharedPtr<DBData::aConstraint>& constraint : attribute.getConstraints())
    {
        const auto* targets = dynamic_cast<const DBData::ConstraintOneOf*>(constraint.get());
        if (targets == nullptr)
        {
            continue;
        }
        for (const DBData::ConstraintOneOf::ElementType& target : targets->getAllowedReferences())
        {
            if (Poco::icompare(target.service, service) == 0 &&
                Poco::icompare(target.resource, resource) == 0)
            {
                return true;
            }
        }
        return false;
    }
    return true;
}

} // namespace

void JSONDataCache::suspectDanglingReferences(const Element* goneFrom)
{
    // The service and resource of the element whose object is gone; none: any object may be gone.
    const DBData::Service* goneService = nullptr;
    const DBData::Resource* goneResource = nullptr;
    for (const auto& service : m_serviceCache)
    {
        if (goneFrom == nullptr || service.second.isNull())
        {
            continue;
        }
        for (const auto& resource : service.second->getResources())
        {
            if (!resource.second.isNull() && resource.second->getElement().get() == goneFrom)
            {
                goneService = service.second.get();
                goneResource = resource.second.get();
            }
        }
    }
    for (const auto& service : m_serviceCache)
    {
        if (service.second.isNull())
        {
            continue;
        }
        for (const auto& resource : service.second->getResources())
        {
            const Element::Ptr element =
                resource.second.isNull() ? Element::Ptr() : resource.second->getElement();
            if (element.isNull())
            {
                continue;
            }
            for (const auto& attribute : element->getAttributes())
            {
                if (!attribute.second.isNull() && attribute.second->getType() == DBData::AttrType_Object &&
                    (goneResource == nullptr ||
                     mayName(*attribute.second, goneService->getName(), goneResource->getName())))
                {
                    m_danglingSuspects.insert(element->getDBID());
                    break;
                }
            }
        }
    }
}

void JSONDataCache::suspectDanglingReference(const Element& element, const std::vector<std::string>& uuids)
{
    for (const std::string& uuid : uuids)
    {
        if (!uuid.empty() && !m_xobjCache.exists(uuid))
        {
            m_danglingSuspects.insert(element.getDBID());
            return;
        }
    }
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

} // namespace Orvi::JSONDataCache
