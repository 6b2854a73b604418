#include "XObjectRefHolder.h"

#include <algorithm>

namespace Orvi::Mapping
{

XObjectRefHolder::~XObjectRefHolder()
{
    clear();
}

bool XObjectRefHolder::addReference(const std::string& service, const std::string& resource,
                                    const std::string& attribute, Poco::Int32 fromObjectId,
                                    Poco::Int32 toObjectId)
{
    auto from = std::make_unique<AttributeIdent>(service, resource, attribute, fromObjectId);
    const auto known =
        std::find_if(m_references.begin(), m_references.end(),
                     [&](const Reference& reference)
                     { return reference.data->pointingToId == toObjectId && *reference.from == *from; });
    if (known != m_references.end())
    {
        return false;
    }
    auto data = std::make_unique<XObjectRefData>(from.get(), toObjectId);
    mapXObjectRefData[toObjectId].push_back(data.get());
    if (fromObjectId != toObjectId)
    {
        mapXObjectRefData[fromObjectId].push_back(data.get());
    }
    m_references.push_back(Reference{std::move(from), std::move(data)});
    return true;
}

bool XObjectRefHolder::removeReference(const std::string& service, const std::string& resource,
                                       const std::string& attribute, Poco::Int32 fromObjectId,
                                       Poco::Int32 toObjectId)
{
    const AttributeIdent from(service, resource, attribute, fromObjectId);
    return removeIf([&](const Reference& reference)
                    { return reference.data->pointingToId == toObjectId && *reference.from == from; }) > 0;
}

std::size_t XObjectRefHolder::removeReferencesFrom(Poco::Int32 fromObjectId)
{
    return removeIf([&](const Reference& reference)
                    { return reference.from->getObjectId() == fromObjectId; });
}

std::size_t XObjectRefHolder::removeReferencesTo(Poco::Int32 toObjectId)
{
    return removeIf([&](const Reference& reference) { return reference.data->pointingToId == toObjectId; });
}

std::size_t XObjectRefHolder::size() const
{
    return m_references.size();
}

void XObjectRefHolder::clear()
{
    removeIf([](const Reference&) { return true; });
}

std::size_t XObjectRefHolder::removeIf(const std::function<bool(const Reference&)>& matches)
{
    std::size_t removed = 0;
    for (auto it = m_references.begin(); it != m_references.end();)
    {
        if (!matches(*it))
        {
            ++it;
            continue;
        }
        unlist(it->data->pointingToId, it->data.get());
        unlist(it->from->getObjectId(), it->data.get());
        it = m_references.erase(it);
        ++removed;
    }
    return removed;
}

void XObjectRefHolder::unlist(Poco::Int32 objId, XObjectRefData* data)
{
    const auto list = mapXObjectRefData.find(objId);
    if (list == mapXObjectRefData.end())
    {
        return;
    }
    list->second.remove(data);
    if (list->second.empty())
    {
        mapXObjectRefData.erase(list);
    }
}

} // namespace Orvi::Mapping
