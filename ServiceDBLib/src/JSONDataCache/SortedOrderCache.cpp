#include "JSONDataCache/SortedOrderCache.h"

#include <algorithm>
#include <utility>

namespace Orvi::JSONDataCache
{

SortedOrderCache::SortedOrderCache(std::size_t capacity)
    : m_capacity(capacity > 0 ? capacity : 1)
{
}

SortedOrderCache::~SortedOrderCache() = default;

SortedOrderCache::Kept* SortedOrderCache::find(DBData::DbId element, Poco::UInt64 version,
                                               const std::string& criteria)
{
    dropOtherVersions(element, version);
    for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry)
    {
        if (entry->element == element && entry->criteria == criteria)
        {
            m_entries.splice(m_entries.begin(), m_entries, entry);
            return &m_entries.front().kept;
        }
    }
    return nullptr;
}

void SortedOrderCache::valueChanged(DBData::DbId element, Poco::UInt64 before, Poco::UInt64 after,
                                    DBData::DbId object)
{
    // Nothing is dropped here, since a query may hold an order while its selection repairs a value;
    // an order left behind in its version goes at the next find or keep.
    for (Entry& entry : m_entries)
    {
        if (entry.element != element || entry.version != before || entry.kept.changed.size() == MAX_CHANGED)
        {
            continue;
        }
        entry.version = after;
        std::vector<DBData::DbId>& changed = entry.kept.changed;
        if (std::find(changed.begin(), changed.end(), object) == changed.end())
        {
            changed.push_back(object);
        }
    }
}

const SortedOrderCache::Order& SortedOrderCache::keep(DBData::DbId element, Poco::UInt64 version,
                                                      const std::string& criteria, Order order)
{
    dropOtherVersions(element, version);
    m_entries.remove_if([&](const Entry& entry)
                        { return entry.element == element && entry.criteria == criteria; });
    m_entries.push_front({element, version, criteria, {std::move(order), {}}});
    while (m_entries.size() > m_capacity)
    {
        m_entries.pop_back();
    }
    return m_entries.front().kept.order;
}

std::string SortedOrderCache::criteriaOf(const Command::QueryRows::Sortings& sortings)
{
    // Names are written with their length, so that no name can pass for two.
    std::string criteria;
    for (const auto& sorting : sortings)
    {
        criteria += '(';
        for (const Command::SortingParameter::SortKey& key : sorting->getSortKeys())
        {
            criteria += key.descending ? '-' : '+';
            criteria += std::to_string(key.name.size());
            criteria += ':';
            criteria += key.name;
        }
        criteria += ')';
    }
    return criteria;
}

void SortedOrderCache::dropOtherVersions(DBData::DbId element, Poco::UInt64 version)
{
    m_entries.remove_if([&](const Entry& entry)
                        { return entry.element == element && entry.version != version; });
}

} // namespace Orvi::JSONDataCache
