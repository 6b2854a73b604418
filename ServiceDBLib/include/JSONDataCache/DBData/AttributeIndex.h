#pragma once

#include "JSONDataCache/DBData/IAttributeIndex.h"
#include "JSONDataCache/DBData/Index/ArrayValue.h"
#include "JSONDataCache/DBData/Index/IndexEntry.h"
#include "JSONDataCache/DBData/Index/SimpleValue.h"

#include <Poco/Bugcheck.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <utility>

namespace Orvi::DBData
{

/// The index of one attribute, keyed by Index::SimpleValue for single values and by Index::ArrayValue
/// for arrays. Searches scan the keys in their text order, except a search for written texts in an
/// index of single values, which looks them up.
template <typename V>
class AttributeIndex : public IAttributeIndex
{
public:
    using IndexMap = std::map<V, Index::IndexGroup>;
    /// Value to the cells that hold it, in order of arrival.

    using EntryMap = std::map<Index::IndexEntry, typename IndexMap::iterator>;
    /// Cell to the group of its present value, so that a new value replaces the old one without reading
    /// the object; each value is kept once, as the key of its group.

    explicit AttributeIndex(const Attribute& attribute);
    ~AttributeIndex() override;

    bool update(const AttributeValue& attrValue, const Poco::Dynamic::Var& value) override;
    bool remove(const AttributeValue& attrValue) override;
    Index::IndexGroup find(const Poco::RegularExpression& regex) const override;
    Index::IndexGroup find(const Poco::Dynamic::Var& value) const override;
    Index::IndexGroup findWritten(const std::set<std::string>& texts) const override;

protected:
    IndexMap m_index;
    EntryMap m_entries;

    std::size_t m_keysWrittenOtherwise = 0;
    /// Keys of m_index not written as they sort; while there is one, a search for written texts scans.

private:
    typename IndexMap::iterator insertIndexEntry(const Index::IndexEntry& entry, V&& key);
    /// Appends the cell to the group of the key, made when missing; gives the group.

    void removeFromGroup(const Index::IndexEntry& entry, typename IndexMap::iterator group);
    /// Takes the cell out of its group, and the group out of the index when it empties.

    template <typename Matches>
    Index::IndexGroup findImpl(const Matches& matches) const;
    /// Scans every key; the key of an array matches when one of its elements does.

    static bool isWrittenOtherwise(const V& key);
    /// Whether the key is a single value not written as it sorts; arrays are scanned anyway.

    bool isForeign(const AttributeValue& attrValue) const;
};

template <typename V>
AttributeIndex<V>::AttributeIndex(const Attribute& attribute)
    : IAttributeIndex(attribute)
{
}

template <typename V>
AttributeIndex<V>::~AttributeIndex() = default;

template <typename V>
bool AttributeIndex<V>::isForeign(const AttributeValue& attrValue) const
{
    return attrValue.getName() != m_attribute.getName() || attrValue.getType() != m_attribute.getType();
}

template <typename V>
bool AttributeIndex<V>::update(const AttributeValue& attrValue, const Poco::Dynamic::Var& value)
{
    if (isForeign(attrValue))
    {
        printLogError("Failed to update index for attribute " + m_attribute.getName() +
                      " with value for attribute " + attrValue.getName());
        return false;
    }

    const Index::IndexEntry newEntry(attrValue.getParent(), attrValue.getDBID());
    // Cells of new objects come after all others, so their place is found without a search.
    auto found = !m_entries.empty() && m_entries.rbegin()->first < newEntry ? m_entries.end()
                                                                            : m_entries.lower_bound(newEntry);
    if (found == m_entries.end() || newEntry < found->first)
    {
        const auto group = insertIndexEntry(newEntry, V(value));
        try
        {
            m_entries.emplace_hint(found, newEntry, group);
        }
        catch (...)
        {
            removeFromGroup(newEntry, group);
            throw;
        }
        return true;
    }

    // Moved to the end of its group even when the value is unchanged.
    removeFromGroup(found->first, found->second);
    try
    {
        found->second = insertIndexEntry(newEntry, V(value));
    }
    catch (...)
    {
        // The cell is out of its group already: drop it, so that the index stays consistent.
        m_entries.erase(found);
        throw;
    }
    return true;
}

template <typename V>
bool AttributeIndex<V>::remove(const AttributeValue& attrValue)
{
    if (isForeign(attrValue))
    {
        printLogError("Failed to remove index for attribute " + m_attribute.getName());
        return false;
    }
    const auto found = m_entries.find(Index::IndexEntry(attrValue.getParent(), attrValue.getDBID()));
    if (found != m_entries.end())
    {
        removeFromGroup(found->first, found->second);
        m_entries.erase(found);
    }
    return true;
}

template <typename V>
Index::IndexGroup AttributeIndex<V>::find(const Poco::RegularExpression& regex) const
{
    return findImpl([&regex](const Index::SimpleValue& key) { return key.match(regex); });
}

template <typename V>
Index::IndexGroup AttributeIndex<V>::find(const Poco::Dynamic::Var& value) const
{
    // The text of the value is computed once for the whole scan.
    const Index::SimpleValue probe(value);
    return findImpl([&probe](const Index::SimpleValue& key) { return key.match(probe); });
}

template <typename V>
Index::IndexGroup AttributeIndex<V>::findWritten(const std::set<std::string>& texts) const
{
    if constexpr (std::is_same_v<V, Index::SimpleValue>)
    {
        // Then a key is written as one of the texts only if it sorts as that text; the texts come in
        // key order, and each cell is in one group only.
        if (m_keysWrittenOtherwise == 0)
        {
            Index::IndexGroup result;
            for (const std::string& text : texts)
            {
                const auto found = m_index.find(Index::SimpleValue(Poco::Dynamic::Var(text)));
                if (found != m_index.end())
                {
                    result.insert(result.end(), found->second.begin(), found->second.end());
                }
            }
            return result;
        }
    }
    return findImpl(
        [&texts](const Index::SimpleValue& key)
        {
            return std::any_of(texts.begin(), texts.end(),
                               [&key](const std::string& text) { return key.isWrittenAs(text); });
        });
}

template <typename V>
bool AttributeIndex<V>::isWrittenOtherwise(const V& key)
{
    if constexpr (std::is_same_v<V, Index::SimpleValue>)
    {
        return !key.isWrittenAsSorted();
    }
    return false;
}

template <typename V>
typename AttributeIndex<V>::IndexMap::iterator
AttributeIndex<V>::insertIndexEntry(const Index::IndexEntry& entry, V&& key)
{
    auto position = m_index.lower_bound(key);
    if (position != m_index.end() && !(key < position->first))
    {
        position->second.push_back(entry);
        return position;
    }
    const bool writtenOtherwise = isWrittenOtherwise(key);
    position = m_index.emplace_hint(position, std::move(key), Index::IndexGroup(1, entry));
    if (writtenOtherwise)
    {
        ++m_keysWrittenOtherwise;
    }
    return position;
}

template <typename V>
void AttributeIndex<V>::removeFromGroup(const Index::IndexEntry& entry, typename IndexMap::iterator group)
{
    Index::IndexGroup& entries = group->second;
    // A cell that changes often sits near the end of its group.
    const auto position = std::find(entries.rbegin(), entries.rend(), entry);
    if (position == entries.rend())
    {
        poco_bugcheck();
    }
    entries.erase(std::next(position).base());
    if (entries.empty())
    {
        if (isWrittenOtherwise(group->first))
        {
            --m_keysWrittenOtherwise;
        }
        m_index.erase(group);
    }
}

template <typename V>
template <typename Matches>
Index::IndexGroup AttributeIndex<V>::findImpl(const Matches& matches) const
{
    Index::IndexGroup result;
    for (const auto& [key, group] : m_index)
    {
        bool found = false;
        if constexpr (std::is_same_v<V, Index::SimpleValue>)
        {
            found = matches(key);
        }
        else
        {
            found = std::any_of(key.values.begin(), key.values.end(), matches);
        }
        if (found)
        {
            result.insert(result.end(), group.begin(), group.end());
        }
    }
    return result;
}

extern template class AttributeIndex<Index::SimpleValue>;
extern template class AttributeIndex<Index::ArrayValue>;

} // namespace Orvi::DBData
