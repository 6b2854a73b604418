#pragma once

#include "JSONDataCache/DBData/IAttributeIndex.h"
#include "JSONDataCache/DBData/Index/ArrayValue.h"
#include "JSONDataCache/DBData/Index/IndexEntry.h"
#include "JSONDataCache/DBData/Index/SimpleValue.h"

#include <Poco/Bugcheck.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <type_traits>

namespace Orvi::DBData
{

/// The index of one attribute, keyed by Index::SimpleValue for single values and by Index::ArrayValue
/// for arrays. Searches scan the keys in their text order.
template <typename V>
class AttributeIndex : public IAttributeIndex
{
public:
    using IndexMap = std::map<V, Index::IndexGroup>;
    /// Value to the cells that hold it, in order of arrival.

    using EntryMap = std::map<Index::IndexEntry, V>;
    /// Cell to its present value, so that a new value replaces the old one without reading the object.

    explicit AttributeIndex(const Attribute& attribute);
    ~AttributeIndex() override;

    bool update(const AttributeValue& attrValue, const Poco::Dynamic::Var& value) override;
    bool remove(const AttributeValue& attrValue) override;
    Index::IndexGroup find(const Poco::RegularExpression& regex) const override;
    Index::IndexGroup find(const Poco::Dynamic::Var& value) const override;

protected:
    IndexMap m_index;
    EntryMap m_entries;

private:
    void insertIndexEntry(const Index::IndexEntry& entry, const V& key);
    void removeIndexEntry(const typename EntryMap::iterator& it);

    template <typename T>
    Index::IndexGroup findImpl(const T& argument) const;
    /// Scans every key, for a regular expression or for a value taken as a SimpleValue probe.

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
    auto found = m_entries.find(newEntry);
    if (found == m_entries.end())
    {
        auto inserted = m_entries.emplace(newEntry, V(value));
        if (!inserted.second)
        {
            printLogError("Failed to insert new entry to AttributeIndex '" + attrValue.getName() + "'");
            return false;
        }
        found = inserted.first;
    }
    else
    {
        // Moved to the end of its group even when the value is unchanged.
        removeIndexEntry(found);
        try
        {
            found->second = V(value);
        }
        catch (...)
        {
            // The cell is out of its group already: drop it, so that the index stays consistent.
            m_entries.erase(found);
            throw;
        }
    }

    try
    {
        insertIndexEntry(newEntry, found->second);
    }
    catch (...)
    {
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
        removeIndexEntry(found);
        m_entries.erase(found);
    }
    return true;
}

template <typename V>
Index::IndexGroup AttributeIndex<V>::find(const Poco::RegularExpression& regex) const
{
    return findImpl(regex);
}

template <typename V>
Index::IndexGroup AttributeIndex<V>::find(const Poco::Dynamic::Var& value) const
{
    // The text of the value is computed once for the whole scan.
    return findImpl(Index::SimpleValue(value));
}

template <typename V>
void AttributeIndex<V>::insertIndexEntry(const Index::IndexEntry& entry, const V& key)
{
    auto position = m_index.lower_bound(key);
    if (position != m_index.end() && !(key < position->first))
    {
        position->second.push_back(entry);
        return;
    }
    m_index.emplace_hint(position, key, Index::IndexGroup(1, entry));
}

template <typename V>
void AttributeIndex<V>::removeIndexEntry(const typename EntryMap::iterator& it)
{
    const auto group = m_index.find(it->second);
    if (group == m_index.end() || group->second.empty())
    {
        poco_bugcheck();
    }
    Index::IndexGroup& entries = group->second;
    // A cell that changes often sits near the end of its group.
    const auto position = std::find(entries.rbegin(), entries.rend(), it->first);
    if (position == entries.rend())
    {
        poco_bugcheck();
    }
    entries.erase(std::next(position).base());
    if (entries.empty())
    {
        m_index.erase(group);
    }
}

template <typename V>
template <typename T>
Index::IndexGroup AttributeIndex<V>::findImpl(const T& argument) const
{
    Index::IndexGroup result;
    for (const auto& [key, group] : m_index)
    {
        bool matches = false;
        if constexpr (std::is_same_v<V, Index::SimpleValue>)
        {
            matches = key.match(argument);
        }
        else
        {
            matches = std::any_of(key.values.begin(), key.values.end(),
                                  [&argument](const Index::SimpleValue& element)
                                  { return element.match(argument); });
        }
        if (matches)
        {
            result.insert(result.end(), group.begin(), group.end());
        }
    }
    return result;
}

extern template class AttributeIndex<Index::SimpleValue>;
extern template class AttributeIndex<Index::ArrayValue>;

} // namespace Orvi::DBData
