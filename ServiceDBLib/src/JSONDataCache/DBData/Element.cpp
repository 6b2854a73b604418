#include "JSONDataCache/DBData/Element.h"

#include "JSONDataCache/DBData/AttributeIndex.h"
#include "JSONDataCache/DBData/Index/ArrayValue.h"
#include "JSONDataCache/DBData/Index/SimpleValue.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>

#include <algorithm>
#include <atomic>

namespace Orvi::DBData
{

namespace
{

// One sequence for all elements, so that a version never names the state of two elements.
std::atomic<Poco::UInt64> lastVersion{0};

Poco::UInt64 nextVersion()
{
    return ++lastVersion;
}

} // namespace

Element::Element(Resource& owner)
    : parent(owner)
    , version(nextVersion())
{
}

Element::~Element() = default;

Poco::UInt64 Element::latestVersion()
{
    return lastVersion.load();
}

void Element::setAttributes(const AttributeMap& newAttributes)
{
    AttributeMap copy(newAttributes);
    setAttributes(std::move(copy));
}

void Element::setAttributes(AttributeMap&& newAttributes)
{
    version = nextVersion();
    attributes = std::move(newAttributes);
    attributeIndexMaps.clear();
    for (const auto& [attributeName, attribute] : attributes)
    {
        if (attribute.isNull())
        {
            poco_bugcheck();
        }
        // The index borrows the attribute, which the attribute map keeps alive as long as the index.
        IAttributeIndex::Ptr index;
        if (attribute->isArray())
        {
            index = new AttributeIndex<Index::ArrayValue>(*attribute);
        }
        else
        {
            index = new AttributeIndex<Index::SimpleValue>(*attribute);
        }
        if (!attributeIndexMaps.emplace(attributeName, index).second)
        {
            poco_bugcheck_msg("duplicate attribute name");
        }
    }
}

bool Element::hasXObject(const DbId& id) const
{
    return xobjects.find(id) != xobjects.end();
}

DbId Element::getXObjectId(const Poco::UUID& uuid) const
{
    const auto found = xobjectIds.find(uuid);
    return found == xobjectIds.end() ? INVALID_DBID : found->second;
}

DbId Element::getXObjectId(const UUID& uuid) const
{
    return getXObjectId(uuid.get());
}

DbId Element::getXObjectId(const std::string& uuid) const
{
    return getXObjectId(UUID(uuid));
}

std::vector<long> Element::getAllXObjectIds() const
{
    std::vector<long> ids;
    ids.reserve(xobjectIds.size());
    for (const auto& entry : xobjectIds)
    {
        ids.push_back(entry.second);
    }
    return ids;
}

bool Element::addXObject(const XObject& object)
{
    const DbId id = object.getDBID();
    if (id == INVALID_DBID)
    {
        LOG_WARNING("Unable to add XObject with invalid dbid to element " << name);
        return false;
    }
    const Poco::UUID& uuid = object.getId().get();
    if (xobjects.find(id) != xobjects.end() || xobjectIds.find(uuid) != xobjectIds.end())
    {
        LOG_WARNING("XObject with dbid " << id << " and uuid " << uuid.toString()
                                         << " is already registered for element " << name);
        return false;
    }
    version = nextVersion();
    const bool idsInserted = xobjectIds.emplace(uuid, id).second;
    const bool objectsInserted = xobjects.emplace(id, uuid).second;
    // New ids mostly come after all others.
    xobjectIdList.insert(std::upper_bound(xobjectIdList.begin(), xobjectIdList.end(), id), id);
    return idsInserted && objectsInserted;
}

void Element::removeXObject(const DbId& id)
{
    const auto found = xobjects.find(id);
    if (found == xobjects.end())
    {
        return;
    }
    version = nextVersion();
    xobjectIds.erase(found->second);
    xobjects.erase(found);
    xobjectIdList.erase(std::lower_bound(xobjectIdList.begin(), xobjectIdList.end(), id));
}

bool Element::updateIndex(const AttributeValue& value, const Poco::Dynamic::Var& newValue)
{
    // Counted also when the index refuses: the store has taken the value already.
    version = nextVersion();
    const auto found = attributeIndexMaps.find(value.getName());
    if (found == attributeIndexMaps.end())
    {
        return false;
    }
    // A null index means a corrupt schema; the shared pointer raises Poco::NullPointerException.
    return found->second->update(value, newValue);
}

bool Element::removeFromIndex(const AttributeValue& value)
{
    version = nextVersion();
    const auto found = attributeIndexMaps.find(value.getName());
    if (found == attributeIndexMaps.end())
    {
        return false;
    }
    return found->second->remove(value);
}

} // namespace Orvi::DBData
