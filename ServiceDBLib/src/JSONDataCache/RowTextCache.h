#pragma once

#include "JSONDataCache/DBData/aDBTableEntry.h"
#include "JSONDataCache/JsonText.h"

#include <Poco/Types.h>

#include <cstddef>
#include <unordered_map>

namespace Orvi::JSONDataCache
{

/// The JSON texts of stored objects as rows of an answer, kept while the store stays unchanged, so that
/// a search or a page shown again is not written again. A text shows the object's values and the
/// identities of the objects it names, so any change of any object may change it.
class RowTextCache
{
public:
    explicit RowTextCache(std::size_t byteLimit);
    /// Keeps texts of at most byteLimit bytes in all.

    const JsonText* find(DBData::DbId object, Poco::UInt64 storeVersion);
    /// The text kept for the object in this version of the store, or null. A new version drops every
    /// text kept.

    void keep(DBData::DbId object, Poco::UInt64 storeVersion, const JsonText& text);
    /// Keeps the text for this version of the store; a text that would pass the limit drops the others
    /// first, one longer than the limit is not kept.

    std::size_t size() const { return m_texts.size(); }
    std::size_t bytes() const { return m_bytes; }

private:
    void follow(Poco::UInt64 storeVersion);
    void clear();

    std::size_t m_byteLimit;
    std::size_t m_bytes;
    Poco::UInt64 m_version;
    std::unordered_map<DBData::DbId, JsonText> m_texts;
};

} // namespace Orvi::JSONDataCache
