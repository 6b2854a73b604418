#pragma once

#include "IDbObjectIdMapper.h"

#include <cstddef>
#include <map>
#include <utility>

namespace Orvi::Mapping
{

/// An id mapper in memory. Each database id and each pair of object id and index takes part in at most
/// one mapping: entering a pair replaces every earlier mapping of either side, in both directions.
class DbObjectIdMapper : public IDbObjectIdMapper
{
public:
    bool getObjIdItemByXObjId(XObjectId xObjId, Poco::Int32& objId,
                              ServiceArrayIndexType_t& index) const override;
    /// False for an unknown database id, leaving objId and index untouched.

    bool getXObjIdItemByObjId(Poco::Int32 objId, ServiceArrayIndexType_t index,
                              XObjectId& xObjId) const override;
    /// False for an unknown pair, leaving xObjId untouched.

    void addXObjId(Poco::Int32 objId, XObjectId xObjId, ServiceArrayIndexType_t index) override;

    void delXObjId(XObjectId xObjId) override;
    /// Removes both directions; an unknown id is ignored.

    std::size_t size() const;
    /// The number of mappings.

    void clear();

private:
    using ItemKey = std::pair<Poco::Int32, ServiceArrayIndexType_t>;

    std::map<XObjectId, ItemKey> m_itemsByXObjId;
    std::map<ItemKey, XObjectId> m_xObjIdsByItem;
};

} // namespace Orvi::Mapping
