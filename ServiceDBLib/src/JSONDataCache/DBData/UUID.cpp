#include "JSONDataCache/DBData/UUID.h"

#include <Poco/Exception.h>

#include <utility>

namespace Orvi::DBData
{

UUID::UUID(const std::string& text)
{
    if (!assign(text))
    {
        throw Poco::SyntaxException("Invalid UUID string: " + text);
    }
}

UUID::UUID(const Poco::UUID& uuid)
{
    assign(uuid);
}

bool UUID::parse(const std::string& text, Poco::UUID& parsed)
{
    constexpr std::size_t WITH_DASHES = 36;
    constexpr std::size_t WITHOUT_DASHES = 32;
    const bool dashed =
        text.size() == WITH_DASHES && text[8] == '-' && text[13] == '-' && text[18] == '-' && text[23] == '-';
    return (dashed || (text.size() == WITHOUT_DASHES && text.find('-') == std::string::npos)) &&
           parsed.tryParse(text);
}

bool UUID::assign(const std::string& text)
{
    if (text.empty())
    {
        value = Poco::UUID::null();
        svalue.clear();
        return true;
    }
    Poco::UUID parsed;
    if (!parse(text, parsed))
    {
        return false;
    }
    value = parsed;
    svalue = text;
    return true;
}

bool UUID::assign(const Poco::UUID& uuid)
{
    value = uuid;
    svalue = uuid.toString();
    return true;
}

void UUID::swap(UUID& other) noexcept
{
    value.swap(other.value);
    svalue.swap(other.svalue);
}

} // namespace Orvi::DBData
