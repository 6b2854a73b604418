#include "JSONDataCache/DBData/Index/IndexEntry.h"

namespace Orvi::DBData::Index
{

IndexEntry::IndexEntry(DbId xobjectId, DbId attributeValueId)
    : idXObj(xobjectId)
    , idAttrValue(attributeValueId)
{
}

IndexEntry::~IndexEntry() = default;

bool IndexEntry::operator<(const IndexEntry& other) const
{
    if (idXObj != other.idXObj)
    {
        return idXObj < other.idXObj;
    }
    return idAttrValue < other.idAttrValue;
}

bool IndexEntry::operator==(const IndexEntry& other) const
{
    return idXObj == other.idXObj && idAttrValue == other.idAttrValue;
}

} // namespace Orvi::DBData::Index
