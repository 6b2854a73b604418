#include "Data/AttributeContainer.h"

#include <utility>

namespace Orvi::Data
{

AttributeContainer::AttributeContainer(XObjectId parentId)
    : m_parentId(parentId)
{
}

XObjectId AttributeContainer::parent() const
{
    return m_parentId;
}

bool AttributeContainer::contains(const std::string& name) const
{
    return m_attrMap.find(name) != m_attrMap.end();
}

std::size_t AttributeContainer::size() const
{
    return m_attrMap.size();
}

void AttributeContainer::clear()
{
    m_attrMap.clear();
}

AttributeMap::const_iterator AttributeContainer::begin() const
{
    return m_attrMap.begin();
}

AttributeMap::const_iterator AttributeContainer::end() const
{
    return m_attrMap.end();
}

AttributeMap::iterator AttributeContainer::begin()
{
    return m_attrMap.begin();
}

AttributeMap::iterator AttributeContainer::end()
{
    return m_attrMap.end();
}

const AttributeMap& AttributeContainer::getAttributes() const
{
    return m_attrMap;
}

AttributeBase::Ptr AttributeContainer::getAttribute(const std::string& name) const
{
    const auto found = m_attrMap.find(name);
    if (found == m_attrMap.end())
    {
        return {};
    }
    return found->second;
}

bool AttributeContainer::setAttribute(const AttributeBase& attribute)
{
    if (attribute.isEmpty())
    {
        return false;
    }
    m_attrMap[attribute.getName()] = attribute.copy(m_parentId);
    return true;
}

bool AttributeContainer::setAttribute(AttributeBase::Ptr&& attribute)
{
    if (attribute.isNull() || attribute->isEmpty())
    {
        return false;
    }
    const std::string name = attribute->getName();
    m_attrMap[name] = std::move(attribute);
    return true;
}

AttributeValueBase* AttributeContainer::getValue(const std::string& name)
{
    const auto found = m_attrMap.find(name);
    if (found == m_attrMap.end() || found->second.isNull())
    {
        return nullptr;
    }
    return found->second->getValueBase();
}

const AttributeValueBase* AttributeContainer::getValue(const std::string& name) const
{
    const auto found = m_attrMap.find(name);
    if (found == m_attrMap.end() || found->second.isNull())
    {
        return nullptr;
    }
    return found->second->getValueBase();
}

bool AttributeContainer::removeValue(const std::string& name)
{
    return m_attrMap.erase(name) > 0;
}

Poco::JSON::Object::Ptr AttributeContainer::toJSON(int level) const
{
    Poco::JSON::Object::Ptr result = new Poco::JSON::Object(0);
    for (const auto& [name, attribute] : m_attrMap)
    {
        const AttributeValueBase* value = attribute.isNull() ? nullptr : attribute->getValueBase();
        if (value != nullptr)
        {
            result->set(name, value->toJSON(level));
        }
    }
    return result;
}

Poco::JSON::Object::Ptr AttributeContainer::toJSON(const std::vector<std::string>& names) const
{
    Poco::JSON::Object::Ptr result = new Poco::JSON::Object(0);
    for (const std::string& name : names)
    {
        const AttributeValueBase* value = getValue(name);
        if (value != nullptr)
        {
            result->set(name, value->toJSON(0));
        }
    }
    return result;
}

AttributeContainer AttributeContainer::deepCopy(const AttributeContainer& other)
{
    AttributeContainer result(other.m_parentId);
    for (const auto& [name, attribute] : other.m_attrMap)
    {
        if (!attribute.isNull() && !attribute->isEmpty())
        {
            result.m_attrMap[name] = attribute->copy(other.m_parentId);
        }
    }
    return result;
}

std::string AttributeContainer::notSetMessage(const std::string& name)
{
    return "Attribute " + name + " is not set";
}

std::string AttributeContainer::invalidTypeMessage(const std::string& name)
{
    return "Invalid type for attribute " + name + " in AttributeContainer";
}

} // namespace Orvi::Data
