#pragma once

#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Endpoint.h"
#include "JSONDataCache/DBData/IAttributeIndex.h"
#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/SharedPtr.h>
#include <Poco/Types.h>
#include <Poco/UUID.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Orvi::DBData
{

class Resource;
class XObject;

using AttributeMap = std::map<std::string, Attribute::Ptr>;
/// Attribute definitions by name, in byte order.

using AttributeIndexMap = std::map<std::string, IAttributeIndex::Ptr>;
/// One index per attribute, keyed like the attributes.

/// The schema of one resource's objects: attribute definitions, one index per attribute, access rules,
/// and the registry of the objects that belong to it. The objects themselves live in the object store.
class Element : public aDBTableEntry
{
public:
    using Ptr = Poco::SharedPtr<Element>;

    using XObjectIdMap = std::map<Poco::UUID, DbId>;
    /// UUID to id of the registered objects.

    using XObjectUuidMap = std::map<DbId, Poco::UUID>;
    /// Id to UUID of the same objects.

    explicit Element(Resource& owner);
    /// The element stays bound to this resource for its whole life.

    ~Element() override;

    const Resource& getResource() const { return parent; }

    const std::string& getName() const { return name; }
    void setName(const std::string& newName) { name = newName; }
    void setName(const char* newName) { name = newName; }

    const std::vector<Endpoint>& getEndpoints() const { return endpoints; }
    void setEndpoints(const std::vector<Endpoint>& newEndpoints) { endpoints = newEndpoints; }
    void setEndpoints(std::vector<Endpoint>&& newEndpoints) { endpoints = std::move(newEndpoints); }

    const AttributeMap& getAttributes() const { return attributes; }

    const AttributeIndexMap& getIndexes() const { return attributeIndexMaps; }
    /// One index per attribute, under the attribute's name.

    void setAttributes(const AttributeMap& newAttributes);
    void setAttributes(AttributeMap&& newAttributes);
    /// Replaces the attributes and gives each a new, empty index: an array index for an array
    /// attribute, a simple index otherwise. A null attribute is a bugcheck. Set attributes before
    /// objects are added.

    bool hasXObject(const DbId& id) const;
    /// True when an object of this id is registered here.

    DbId getXObjectId(const Poco::UUID& uuid) const;
    DbId getXObjectId(const UUID& uuid) const;
    DbId getXObjectId(const std::string& uuid) const;
    /// The id of the object registered here under the UUID, or -1. Text that is neither empty nor a
    /// UUID raises Poco::SyntaxException.

    const XObjectUuidMap& getXObjectIds() const { return xobjects; }
    /// The registered objects by id.

    const std::vector<DbId>& getXObjectIdList() const { return xobjectIdList; }
    /// The ids of the registered objects in ascending order, in one block of memory.

    std::vector<long> getAllXObjectIds() const;
    /// The ids of all registered objects, in the order of their UUIDs.

    bool addXObject(const XObject& object);
    /// Registers the object's id and UUID; its values are not indexed here. An object without id, or
    /// whose id or UUID is registered already, is refused with a warning.

    void removeXObject(const DbId& id);
    /// Unregisters the object; its index entries are left to the caller. An unknown id does nothing.

    bool updateIndex(const AttributeValue& value, const Poco::Dynamic::Var& newValue);
    /// Files the cell under the new value in its attribute's index; false when there is no index of
    /// that name or the index refuses the cell.

    bool removeFromIndex(const AttributeValue& value);
    /// Takes the cell out of its attribute's index; false when there is no index of that name or the
    /// index refuses the cell.

    Poco::UInt64 getVersion() const { return version; }
    /// Changes with every registration, unregistration and index change, so that what is derived from
    /// the element's objects can tell whether it is still current. No two elements of the process ever
    /// show the same version.

    static Poco::UInt64 latestVersion();
    /// The version given last to any element of the process: while it stays, no object of any element
    /// has changed.

private:
    std::string name;
    Resource& parent;
    XObjectIdMap xobjectIds;
    XObjectUuidMap xobjects;
    std::vector<DbId> xobjectIdList;
    AttributeMap attributes;
    AttributeIndexMap attributeIndexMaps;
    std::vector<Endpoint> endpoints;
    Poco::UInt64 version;
};

} // namespace Orvi::DBData
