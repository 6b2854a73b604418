#pragma once

#include <Poco/Types.h>

namespace Orvi::DBData
{

using DbId = Poco::Int64;
/// Table id of a row; -1 while the row has none.

/// Root of every row of the service database: carries the row's table id.
class aDBTableEntry
{
public:
    static constexpr DbId INVALID_DBID = -1;

    aDBTableEntry() = default;
    aDBTableEntry(const aDBTableEntry&) = default;
    aDBTableEntry& operator=(const aDBTableEntry&) = default;
    virtual ~aDBTableEntry();

    DbId getDBID() const { return db_id; }

    void setDBID(DbId id);
    /// Write-once: takes the id only while the row has none; any later call is ignored.

protected:
    DbId db_id = INVALID_DBID;
};

} // namespace Orvi::DBData
