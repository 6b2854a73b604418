#include "AttributeIdent.h"

namespace Orvi::Mapping
{

AttributeIdent::AttributeIdent(const std::string& serviceName, const std::string& resourceName,
                               const std::string& attributeName, int objectId)
    : m_serviceName(serviceName)
    , m_resourceName(resourceName)
    , m_attributeName(attributeName)
    , m_objectId(objectId)
{
}

std::string AttributeIdent::getServiceName() const
{
    return m_serviceName;
}

std::string AttributeIdent::getResourceName() const
{
    return m_resourceName;
}

std::string AttributeIdent::getAttributeName() const
{
    return m_attributeName;
}

int AttributeIdent::getObjectId() const
{
    return m_objectId;
}

bool AttributeIdent::operator==(const AttributeIdent& other) const
{
    return m_objectId == other.m_objectId && m_attributeName == other.m_attributeName &&
           m_resourceName == other.m_resourceName && m_serviceName == other.m_serviceName;
}

} // namespace Orvi::Mapping
