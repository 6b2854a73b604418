#pragma once

#include "IServiceDataHandler.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Mapping/MappingServiceJSONDataCache.h"

namespace ServiceDB::Test
{

// A mapped cache that lets a test reach the objects in its store, which selections hand out as copies
// only. A stored reference shows there as the bare UUID of its target.
class StoredObjectCache : public Orvi::Mapping::MappingServiceJSONDataCache
{
public:
    using Orvi::Mapping::MappingServiceJSONDataCache::MappingServiceJSONDataCache;

    Orvi::DBData::XObject::Ptr stored(Orvi::DBData::DbId id) const { return m_xobjCache.get(id); }
    // Null when the store has no such object.

    Orvi::DBData::XObject::Ptr stored(const std::string& uuid) const { return m_xobjCache.get(uuid); }
};

} // namespace ServiceDB::Test
