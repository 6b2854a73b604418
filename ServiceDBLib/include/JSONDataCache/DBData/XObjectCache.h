#pragma once

#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/UUID.h>

#include <map>
#include <string>
#include <unordered_map>

namespace Orvi::DBData
{

/// The store of all objects of one data cache, found by id and by UUID. It owns a deep copy of every
/// object given to it; the shared pointers that it hands out let the caller make live changes.
class XObjectCache
{
public:
    using idMap = std::unordered_map<DbId, XObject::Ptr>;
    using uuidMap = std::map<Poco::UUID, XObject::Ptr>;

    static constexpr DbId FIRST_ID = 1;
    static constexpr DbId LAST_ID = 9223372036854775806;
    /// The range of ids that the store hands out.

    XObjectCache();
    ~XObjectCache();

    XObjectCache(const XObjectCache&) = delete;
    XObjectCache& operator=(const XObjectCache&) = delete;

    DbId getNextId();
    /// The lowest free id from the cursor on, wrapping after LAST_ID. The id counts as taken only once
    /// an object with it is inserted, so two calls without an insertion give the same id. Raises
    /// Poco::PoolOverflowException when no id is left.

    bool insertObject(const XObject& object);
    /// Stores a deep copy of the object. False, changing nothing, for an object without id or UUID, or
    /// whose id or UUID is stored already.

    bool exists(DbId id) const;
    bool exists(const Poco::UUID& uuid) const;
    bool exists(const std::string& uuid) const;
    /// False also for text that is not a UUID.

    bool get(DbId id, XObject& retObject, bool copyValues) const;
    bool get(const std::string& uuid, XObject& retObject, bool copyValues) const;
    /// Copies the stored object into retObject by XObject::copyFrom; false, leaving retObject alone,
    /// when there is no such object.

    XObject::Ptr get(DbId id) const;
    XObject::Ptr get(const Poco::UUID& uuid) const;
    XObject::Ptr get(const std::string& uuid) const;
    /// The stored object itself, shared; null when there is none or the text is not a UUID.

    const XObject* find(DbId id) const;
    /// The stored object itself, or null; valid until the store changes. Reads of many objects in turn
    /// pay no share count.

    bool updateValue(const DbId& xObjId, const DbId& avalId, const Poco::Dynamic::Var& value);
    /// Assigns the value, unconverted and unchecked, to the first cell of that id in the object. False
    /// when the object or the cell is not found.

    bool removeValue(const DbId& xObjId, const DbId& avalId);
    /// Empties the cell; the cell stays in the object's list.

    void removeObject(DbId id);
    void removeObject(const Poco::UUID& uuid);
    void removeObject(const std::string& uuid);
    /// Takes the object out of the store; unknown objects and text that is not a UUID are ignored. A
    /// caller that still shares the object keeps it alive.

    void clear();
    /// Removes every object; the cursor of getNextId stays where it is.

protected:
    idMap m_idMap;
    uuidMap m_uuidMap;
    DbId m_nextId;
};

} // namespace Orvi::DBData
