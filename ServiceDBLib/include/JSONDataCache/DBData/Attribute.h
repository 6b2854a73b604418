#pragma once

#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <Poco/SharedPtr.h>

#include <string>

namespace Orvi::DBData
{

/// The definition of one named field of an element's objects.
class Attribute : public aDBTableEntry
{
public:
    using Ptr = Poco::SharedPtr<Attribute>;

    explicit Attribute(const std::string& attributeName);
    ~Attribute() override;

    const std::string& getName() const { return name; }
    void setName(const std::string& newName) { name = newName; }

private:
    std::string name;
};

} // namespace Orvi::DBData
