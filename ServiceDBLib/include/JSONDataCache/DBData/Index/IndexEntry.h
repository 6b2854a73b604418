#pragma once

#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <vector>

namespace Orvi::DBData::Index
{

/// Names one indexed cell: the object and the attribute value within it.
struct IndexEntry
{
    IndexEntry(DbId xobjectId, DbId attributeValueId)
        : idXObj(xobjectId)
        , idAttrValue(attributeValueId)
    {
    }
    virtual ~IndexEntry();

    IndexEntry(const IndexEntry&) = default;
    IndexEntry(IndexEntry&&) = default;
    IndexEntry& operator=(const IndexEntry&) = default;
    IndexEntry& operator=(IndexEntry&&) = default;

    bool operator<(const IndexEntry& other) const
    {
        return idXObj != other.idXObj ? idXObj < other.idXObj : idAttrValue < other.idAttrValue;
    }
    /// By object id, then by attribute value id.

    bool operator==(const IndexEntry& other) const
    {
        return idXObj == other.idXObj && idAttrValue == other.idAttrValue;
    }

    DbId getXObjId() const { return idXObj; }

    DbId idXObj;
    DbId idAttrValue;
};

using IndexGroup = std::vector<IndexEntry>;
/// The cells found by a search, or held under one key of an index.

} // namespace Orvi::DBData::Index
