#include "Command/UrlPath.h"

#include <Poco/Exception.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace Orvi::Command
{

const std::string UrlPath::URI_ROOT = "/";
const std::string UrlPath::URI_ROOT_API = "/api";
const std::string UrlPath::RESERVED_KEY_ID = "$id";
const std::string UrlPath::RESERVED_KEY_SPEC = "$spec";
const std::string UrlPath::RESERVED_KEY_RIGHTS = "$rights";
const std::string UrlPath::QUERY_WILDCARD = "%";
const std::string UrlPath::QUERY_WILDCARD_HTML = "%25";
const std::string UrlPath::QUERY_FREETEXT_SEARCH = "$q";
const std::string UrlPath::QUERY_FIELDS = "$fields";
const std::string UrlPath::QUERY_SORTBY = "$sortby";
const std::string UrlPath::QUERY_PAGING_OFFSET = "$offset";
const std::string UrlPath::QUERY_PAGING_LIMIT = "$limit";
const std::string UrlPath::QUERY_EXPAND = "$expand";

namespace
{

constexpr char RESERVED_PREFIX = '$';
constexpr char LEVEL_SEPARATOR = '/';
constexpr std::size_t MAX_LEVELS = 3;

bool isReservedName(std::string_view level)
{
    return !level.empty() && level.front() == RESERVED_PREFIX;
}

int compareUris(const Poco::URI& a, const Poco::URI& b)
{
    if (const int result = a.getScheme().compare(b.getScheme()))
    {
        return result;
    }
    if (const int result = a.getUserInfo().compare(b.getUserInfo()))
    {
        return result;
    }
    if (const int result = a.getHost().compare(b.getHost()))
    {
        return result;
    }
    const unsigned short portA = a.getPort();
    const unsigned short portB = b.getPort();
    if (portA != portB)
    {
        return portA < portB ? -1 : 1;
    }
    if (const int result = a.getPath().compare(b.getPath()))
    {
        return result;
    }
    if (const int result = a.getRawQuery().compare(b.getRawQuery()))
    {
        return result;
    }
    return a.getFragment().compare(b.getFragment());
}

} // namespace

UrlPath::UrlPath()
    : characteristic(INVALID)
{
}

UrlPath::UrlPath(const Poco::URI& address)
    : uri(address)
    , characteristic(INVALID)
{
    parseLevels();
    if (!parseQuery())
    {
        characteristic = INVALID;
    }
    if (characteristic == INVALID)
    {
        service.clear();
        resource.clear();
        element.clear();
    }
}

void UrlPath::parseLevels()
{
    const std::string& path = uri.getPath();
    // A relative reference names nothing on this server.
    if (!path.empty() && path.front() != LEVEL_SEPARATOR)
    {
        return;
    }

    // One slot more than allowed, so that a fourth level is seen without splitting the rest.
    std::array<std::string_view, MAX_LEVELS + 1> levels;
    std::size_t count = 0;
    const std::string_view text(path);
    std::size_t begin = 0;
    while (begin < text.size() && count < levels.size())
    {
        std::size_t end = text.find(LEVEL_SEPARATOR, begin);
        if (end == std::string_view::npos)
        {
            end = text.size();
        }
        if (end > begin)
        {
            levels[count++] = text.substr(begin, end - begin);
        }
        begin = end + 1;
    }

    switch (count)
    {
    case 0:
        characteristic = ROOT;
        break;
    case 1:
        if (levels[0] == RESERVED_KEY_ID)
        {
            characteristic = ROOT_ID;
        }
        else if (!isReservedName(levels[0]))
        {
            service = levels[0];
            characteristic = SERVICE;
        }
        break;
    case 2:
        if (isReservedName(levels[0]))
        {
            break;
        }
        service = levels[0];
        if (levels[1] == RESERVED_KEY_ID)
        {
            characteristic = SERVICE_ID;
        }
        else if (levels[1] == RESERVED_KEY_SPEC)
        {
            characteristic = SERVICE_SPEC;
        }
        else if (levels[1] == RESERVED_KEY_RIGHTS)
        {
            characteristic = SERVICE_RIGHTS;
        }
        else if (!isReservedName(levels[1]))
        {
            resource = levels[1];
            characteristic = SERVICE_RESOURCE;
        }
        break;
    case 3:
        if (isReservedName(levels[0]) || isReservedName(levels[1]))
        {
            break;
        }
        service = levels[0];
        resource = levels[1];
        if (levels[2] == RESERVED_KEY_ID)
        {
            characteristic = SERVICE_RESOURCE_ID;
        }
        else if (levels[2] == RESERVED_KEY_SPEC)
        {
            characteristic = SERVICE_RESOURCE_SPEC;
        }
        else if (!isReservedName(levels[2]))
        {
            element = levels[2];
            characteristic = SERVICE_RESOURCE_OBJECT;
        }
        break;
    default:
        break;
    }
}

bool UrlPath::parseQuery()
{
    try
    {
        for (auto& parameter : uri.getQueryParameters())
        {
            queryParameter.emplace(std::move(parameter.first), std::move(parameter.second));
        }
        return true;
    }
    catch (const Poco::SyntaxException&)
    {
        queryParameter.clear();
        return false;
    }
}

bool UrlPath::isReservedKeyword(Characteristic characteristic)
{
    switch (characteristic)
    {
    case ROOT_ID:
    case SERVICE_ID:
    case SERVICE_SPEC:
    case SERVICE_RIGHTS:
    case SERVICE_RESOURCE_ID:
    case SERVICE_RESOURCE_SPEC:
        return true;
    default:
        return false;
    }
}

Poco::URI::QueryParameters UrlPath::getQueryParameters() const
{
    try
    {
        return uri.getQueryParameters();
    }
    catch (const Poco::SyntaxException&)
    {
        // Such a path is invalid already; it simply has no parameters.
        return {};
    }
}

bool UrlPath::operator==(const UrlPath& other) const
{
    return compareUris(uri, other.uri) == 0;
}

bool UrlPath::operator<(const UrlPath& other) const
{
    return compareUris(uri, other.uri) < 0;
}

} // namespace Orvi::Command
