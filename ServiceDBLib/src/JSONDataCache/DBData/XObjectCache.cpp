#include "JSONDataCache/DBData/XObjectCache.h"

#include <Poco/Exception.h>

#include <cstddef>
#include <limits>

namespace Orvi::DBData
{

namespace
{

// The cursor wraps to FIRST_ID on reaching this id, which is thus never handed out.
constexpr DbId ID_LIMIT = std::numeric_limits<DbId>::max();

} // namespace

XObjectCache::XObjectCache()
    : m_nextId(FIRST_ID)
{
}

XObjectCache::~XObjectCache()
{
    clear();
}

DbId XObjectCache::getNextId()
{
    if (m_idMap.size() == static_cast<std::size_t>(ID_LIMIT))
    {
        throw Poco::PoolOverflowException("Maximum limit of XObjectIDs reached");
    }
    while (m_idMap.count(m_nextId) > 0)
    {
        ++m_nextId;
        if (m_nextId == ID_LIMIT)
        {
            m_nextId = FIRST_ID;
        }
    }
    return m_nextId;
}

bool XObjectCache::insertObject(const XObject& object)
{
    const DbId id = object.getDBID();
    if (id == aDBTableEntry::INVALID_DBID)
    {
        return false;
    }
    if (m_idMap.count(id) > 0)
    {
        return false;
    }
    const Poco::UUID& uuid = object.getId().get();
    if (object.getId().isEmpty())
    {
        return false;
    }
    const auto uuidPosition = m_uuidMap.lower_bound(uuid);
    if (uuidPosition != m_uuidMap.end() && uuidPosition->first == uuid)
    {
        return false;
    }

    // The store keeps its own cells, so that no caller shares a value with it by accident.
    XObject::Ptr copy(new XObject(Element::Ptr()));
    copy->copyFrom(object, true);
    m_idMap.emplace(id, copy);
    m_uuidMap.emplace_hint(uuidPosition, uuid, copy);
    return true;
}

bool XObjectCache::exists(DbId id) const
{
    return m_idMap.find(id) != m_idMap.end();
}

bool XObjectCache::exists(const Poco::UUID& uuid) const
{
    return m_uuidMap.find(uuid) != m_uuidMap.end();
}

bool XObjectCache::exists(const std::string& uuid) const
{
    Poco::UUID parsed;
    return UUID::parse(uuid, parsed) && exists(parsed);
}

bool XObjectCache::get(DbId id, XObject& retObject, bool copyValues) const
{
    const auto found = m_idMap.find(id);
    if (found == m_idMap.end())
    {
        return false;
    }
    retObject.copyFrom(*found->second, copyValues);
    return true;
}

bool XObjectCache::get(const std::string& uuid, XObject& retObject, bool copyValues) const
{
    Poco::UUID parsed;
    if (!UUID::parse(uuid, parsed))
    {
        return false;
    }
    const auto found = m_uuidMap.find(parsed);
    if (found == m_uuidMap.end())
    {
        return false;
    }
    retObject.copyFrom(*found->second, copyValues);
    return true;
}

XObject::Ptr XObjectCache::get(DbId id) const
{
    const auto found = m_idMap.find(id);
    return found == m_idMap.end() ? XObject::Ptr() : found->second;
}

const XObject* XObjectCache::find(DbId id) const
{
    const auto found = m_idMap.find(id);
    return found == m_idMap.end() ? nullptr : found->second.get();
}

XObject::Ptr XObjectCache::get(const Poco::UUID& uuid) const
{
    const auto found = m_uuidMap.find(uuid);
    return found == m_uuidMap.end() ? XObject::Ptr() : found->second;
}

XObject::Ptr XObjectCache::get(const std::string& uuid) const
{
    Poco::UUID parsed;
    return UUID::parse(uuid, parsed) ? get(parsed) : XObject::Ptr();
}

bool XObjectCache::updateValue(const DbId& xObjId, const DbId& avalId, const Poco::Dynamic::Var& value)
{
    const auto found = m_idMap.find(xObjId);
    if (found == m_idMap.end())
    {
        return false;
    }
    for (AttributeValuePtr& cell : found->second->getAttributeValues())
    {
        if (!cell.isNull() && cell->getDBID() == avalId)
        {
            // Values reaching the store have been converted and checked by the caller.
            cell->setValue(value, false);
            return true;
        }
    }
    return false;
}

bool XObjectCache::removeValue(const DbId& xObjId, const DbId& avalId)
{
    static const Poco::Dynamic::Var EMPTY_VALUE;
    return updateValue(xObjId, avalId, EMPTY_VALUE);
}

void XObjectCache::removeObject(DbId id)
{
    const auto found = m_idMap.find(id);
    if (found == m_idMap.end())
    {
        return;
    }
    m_uuidMap.erase(found->second->getId().get());
    m_idMap.erase(found);
}

void XObjectCache::removeObject(const Poco::UUID& uuid)
{
    const auto found = m_uuidMap.find(uuid);
    if (found == m_uuidMap.end())
    {
        return;
    }
    m_idMap.erase(found->second->getDBID());
    m_uuidMap.erase(found);
}

void XObjectCache::removeObject(const std::string& uuid)
{
    Poco::UUID parsed;
    if (UUID::parse(uuid, parsed))
    {
        removeObject(parsed);
    }
}

void XObjectCache::clear()
{
    m_idMap.clear();
    m_uuidMap.clear();
}

} // namespace Orvi::DBData
