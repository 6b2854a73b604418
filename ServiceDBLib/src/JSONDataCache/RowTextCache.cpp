#include "JSONDataCache/RowTextCache.h"

namespace Orvi::JSONDataCache
{

RowTextCache::RowTextCache(std::size_t byteLimit)
    : m_byteLimit(byteLimit)
    , m_bytes(0)
    , m_version(0)
{
}

const JsonText* RowTextCache::find(DBData::DbId object, Poco::UInt64 storeVersion)
{
    follow(storeVersion);
    const auto found = m_texts.find(object);
    return found == m_texts.end() ? nullptr : &found->second;
}

void RowTextCache::keep(DBData::DbId object, Poco::UInt64 storeVersion, const JsonText& text)
{
    follow(storeVersion);
    const std::size_t length = text.text().size();
    if (length > m_byteLimit)
    {
        return;
    }
    // Dropping all at once needs no bookkeeping per text; answers still hold the texts they were given.
    if (m_bytes + length > m_byteLimit)
    {
        clear();
    }
    const auto [kept, inserted] = m_texts.emplace(object, text);
    if (!inserted)
    {
        m_bytes -= kept->second.text().size();
        kept->second = text;
    }
    m_bytes += length;
}

void RowTextCache::follow(Poco::UInt64 storeVersion)
{
    if (storeVersion != m_version)
    {
        clear();
        m_version = storeVersion;
    }
}

void RowTextCache::clear()
{
    m_texts.clear();
    m_bytes = 0;
}

} // namespace Orvi::JSONDataCache
