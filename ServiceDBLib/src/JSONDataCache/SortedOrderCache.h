#pragma once

#include "Command/QueryRows.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <Poco/Types.h>

#include <cstddef>
#include <list>
#include <string>
#include <vector>

namespace Orvi::JSONDataCache
{

/// Orders of all objects of an element by sort criteria, so that paging through a sorted resource sorts
/// it once. An order is kept while the element keeps its objects; when values of a few of them change,
/// only those objects move.
class SortedOrderCache
{
public:
    using Order = std::vector<std::size_t>;
    /// Positions in the element's ascending id list, in sorted order.

    /// A kept order, and the objects whose values changed since it was right.
    struct Kept
    {
        Order order;
        std::vector<DBData::DbId> changed;
    };

    static constexpr std::size_t MAX_CHANGED = 32;
    /// Beyond so many changed objects an order is dropped: sorting again costs less than moving each.

    explicit SortedOrderCache(std::size_t capacity);
    /// Keeps at most capacity orders; a capacity of 0 counts as 1.

    ~SortedOrderCache();

    Kept* find(DBData::DbId element, Poco::UInt64 version, const std::string& criteria);
    /// The order kept for the element in this version under these criteria, or null. The caller moves
    /// each changed object to its place and clears the list before it uses the order.

    void valueChanged(DBData::DbId element, Poco::UInt64 before, Poco::UInt64 after, DBData::DbId object);
    /// Takes the element's orders of version before into version after, which differs from it only by
    /// values of the object. Orders of other versions, or with too many changed objects, stay behind and
    /// go at the next find or keep; an order found before stays valid.

    const Order& keep(DBData::DbId element, Poco::UInt64 version, const std::string& criteria, Order order);
    /// Keeps the order in place of the element's orders of other versions and gives it; beyond the
    /// capacity the order used least recently goes.

    std::size_t size() const { return m_entries.size(); }

    static std::string criteriaOf(const Command::QueryRows::Sortings& sortings);
    /// A text that is the same for two sortings exactly when they order alike.

private:
    struct Entry
    {
        DBData::DbId element;
        Poco::UInt64 version;
        std::string criteria;
        Kept kept;
    };

    void dropOtherVersions(DBData::DbId element, Poco::UInt64 version);

    std::size_t m_capacity;
    std::list<Entry> m_entries; // the most recently used first
};

} // namespace Orvi::JSONDataCache
