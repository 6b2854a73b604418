#pragma once

#include <string>

namespace Orvi::Mapping
{

/// Names the attribute of a mapped object that a reference starts from.
class IAttributeIdent
{
public:
    virtual ~IAttributeIdent() = default;

    virtual std::string getServiceName() const = 0;
    virtual std::string getResourceName() const = 0;
    virtual std::string getAttributeName() const = 0;

    virtual int getObjectId() const = 0;
    /// The handler's 32-bit object id of the referring object, not its database id.
};

} // namespace Orvi::Mapping
