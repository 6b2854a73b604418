#pragma once

#include "JSONDataCache/DBData/UUID.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <string>

namespace Orvi::DBData
{

/// A row that clients can address: it has a name and a UUID besides its table id.
class XObjectBase : public aDBTableEntry
{
public:
    XObjectBase() = default;
    XObjectBase(const XObjectBase&) = default;
    XObjectBase& operator=(const XObjectBase&) = default;
    ~XObjectBase() override;

    const std::string& getName() const { return name; }
    void setName(const std::string& newName) { name = newName; }

    const UUID& getId() const { return uuid; }

    const std::string& getUUID() const { return uuid.toString(); }
    /// The UUID as text.

    void setId(const UUID& id) { uuid = id; }
    /// Takes both forms of the UUID as they are, without a check.

    void setUUID(const UUID& id) { uuid = id; }
    /// Same as setId.

    void generateId();
    /// Gives the row a new random UUID.

protected:
    std::string name;
    UUID uuid;
};

} // namespace Orvi::DBData
