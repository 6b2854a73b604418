#pragma once

#include "IAttributeIdent.h"

#include <string>

namespace Orvi::Mapping
{

/// A fixed name of an attribute of a mapped object: service, resource, attribute and object id.
class AttributeIdent : public IAttributeIdent
{
public:
    AttributeIdent(const std::string& serviceName, const std::string& resourceName,
                   const std::string& attributeName, int objectId);

    std::string getServiceName() const override;
    std::string getResourceName() const override;
    std::string getAttributeName() const override;
    int getObjectId() const override;

    bool operator==(const AttributeIdent& other) const;
    /// True when all four parts are equal.

private:
    std::string m_serviceName;
    std::string m_resourceName;
    std::string m_attributeName;
    int m_objectId;
};

} // namespace Orvi::Mapping
