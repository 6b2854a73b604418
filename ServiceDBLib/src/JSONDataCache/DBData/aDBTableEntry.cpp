#include "JSONDataCache/DBData/aDBTableEntry.h"

namespace Orvi::DBData
{

aDBTableEntry::~aDBTableEntry() = default;

void aDBTableEntry::setDBID(DbId id)
{
    if (db_id == INVALID_DBID)
    {
        db_id = id;
    }
}

} // namespace Orvi::DBData
