#include "DbObjectIdMapper.h"

namespace Orvi::Mapping
{

bool DbObjectIdMapper::getObjIdItemByXObjId(XObjectId xObjId, Poco::Int32& objId,
                                            ServiceArrayIndexType_t& index) const
{
    const auto it = m_itemsByXObjId.find(xObjId);
    if (it == m_itemsByXObjId.end())
    {
        return false;
    }
    objId = it->second.first;
    index = it->second.second;
    return true;
}

bool DbObjectIdMapper::getXObjIdItemByObjId(Poco::Int32 objId, ServiceArrayIndexType_t index,
                                            XObjectId& xObjId) const
{
    const auto it = m_xObjIdsByItem.find(ItemKey(objId, index));
    if (it == m_xObjIdsByItem.end())
    {
        return false;
    }
    xObjId = it->second;
    return true;
}

void DbObjectIdMapper::addXObjId(Poco::Int32 objId, XObjectId xObjId, ServiceArrayIndexType_t index)
{
    const ItemKey item(objId, index);
    // Either side may have been mapped to something else before; its old partner must not keep
    // pointing back to it.
    delXObjId(xObjId);
    const auto previous = m_xObjIdsByItem.find(item);
    if (previous != m_xObjIdsByItem.end())
    {
        m_itemsByXObjId.erase(previous->second);
        m_xObjIdsByItem.erase(previous);
    }
    m_itemsByXObjId[xObjId] = item;
    m_xObjIdsByItem[item] = xObjId;
}

void DbObjectIdMapper::delXObjId(XObjectId xObjId)
{
    const auto it = m_itemsByXObjId.find(xObjId);
    if (it == m_itemsByXObjId.end())
    {
        return;
    }
    m_xObjIdsByItem.erase(it->second);
    m_itemsByXObjId.erase(it);
}

std::size_t DbObjectIdMapper::size() const
{
    return m_itemsByXObjId.size();
}

void DbObjectIdMapper::clear()
{
    m_itemsByXObjId.clear();
    m_xObjIdsByItem.clear();
}

} // namespace Orvi::Mapping
