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

bool UUID::assign(const std::string& text)
{
    if (text.empty())
    {
        value = Poco::UUID::null();
        svalue.clear();
        return true;
    }
    Poco::UUID parsed;
    if (!parsed.tryParse(text))
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
