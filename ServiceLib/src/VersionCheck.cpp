#include "VersionCheck.h"

#include <Poco/Net/MessageHeader.h>
#include <Poco/Net/NameValueCollection.h>
#include <Poco/String.h>

#include <limits>

namespace Orvi::Service
{

const std::string VersionCheck::msgVersionNotImplemented =
    "The requested version of this service is not implemented.";
const std::string VersionCheck::FIELD_ACCEPT = "Accept";
const std::string VersionCheck::KEY_MEDIA_TYPE_PREFIX = "application/vnd.servicedb.v";
const std::string VersionCheck::KEY_MEDIA_TYPE_SUFFIX = "+json";

namespace
{

constexpr char VERSION_SEPARATOR = '.';

// Reads the decimal number at text[pos, end) and fails on anything but digits or on overflow.
bool parseNumber(const std::string& text, std::size_t pos, std::size_t end, Poco::UInt32& retNumber)
{
    if (pos >= end)
    {
        return false;
    }
    Poco::UInt64 number = 0;
    for (; pos < end; ++pos)
    {
        const char c = text[pos];
        if (c < '0' || c > '9')
        {
            return false;
        }
        number = number * 10 + static_cast<Poco::UInt64>(c - '0');
        if (number > std::numeric_limits<Poco::UInt32>::max())
        {
            return false;
        }
    }
    retNumber = static_cast<Poco::UInt32>(number);
    return true;
}

bool isVersionedMediaType(const std::string& mediaType)
{
    const std::string& prefix = VersionCheck::KEY_MEDIA_TYPE_PREFIX;
    const std::string& suffix = VersionCheck::KEY_MEDIA_TYPE_SUFFIX;
    return mediaType.size() >= prefix.size() + suffix.size() &&
           mediaType.compare(0, prefix.size(), prefix) == 0 &&
           mediaType.compare(mediaType.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The versions that the Accept headers ask for; an unreadable one is kept as invalid so that it
// still counts as a request for a version.
struct RequestedVersion
{
    VersionCheck::VersionTuple version;
    bool valid = false;
};

std::vector<RequestedVersion> requestedVersions(const Poco::Net::HTTPServerRequest& request)
{
    std::vector<RequestedVersion> result;
    std::vector<std::string> elements;
    for (const auto& [name, value] : request)
    {
        if (Poco::icompare(name, VersionCheck::FIELD_ACCEPT) != 0)
        {
            continue;
        }
        elements.clear();
        Poco::Net::MessageHeader::splitElements(value, elements);
        for (const std::string& element : elements)
        {
            std::string mediaType;
            Poco::Net::NameValueCollection parameters;
            Poco::Net::MessageHeader::splitParameters(element, mediaType, parameters);
            Poco::toLowerInPlace(mediaType);
            if (!isVersionedMediaType(mediaType))
            {
                continue;
            }
            RequestedVersion requested;
            const std::size_t length = mediaType.size() - VersionCheck::KEY_MEDIA_TYPE_PREFIX.size() -
                                       VersionCheck::KEY_MEDIA_TYPE_SUFFIX.size();
            requested.valid = VersionCheck::parseVersion(
                mediaType.substr(VersionCheck::KEY_MEDIA_TYPE_PREFIX.size(), length), requested.version);
            result.push_back(requested);
        }
    }
    return result;
}

} // namespace

bool VersionCheck::VersionTuple::isPatchCompatibleTo(const VersionTuple& requested) const
{
    return majorNo == requested.majorNo && minorNo == requested.minorNo && patchNo >= requested.patchNo;
}

bool VersionCheck::acceptedVersionMatches(const Poco::Net::HTTPServerRequest& request,
                                          const std::vector<Poco::SharedPtr<std::string>>& versions)
{
    const std::vector<RequestedVersion> requested = requestedVersions(request);
    if (requested.empty())
    {
        return true;
    }
    for (const Poco::SharedPtr<std::string>& text : versions)
    {
        VersionTuple offered;
        if (!text || !parseVersion(*text, offered))
        {
            continue;
        }
        for (const RequestedVersion& wanted : requested)
        {
            if (wanted.valid && offered.isPatchCompatibleTo(wanted.version))
            {
                return true;
            }
        }
    }
    return false;
}

bool VersionCheck::parseVersion(const std::string& text, VersionTuple& retVersion)
{
    const std::size_t firstDot = text.find(VERSION_SEPARATOR);
    if (firstDot == std::string::npos)
    {
        return false;
    }
    const std::size_t secondDot = text.find(VERSION_SEPARATOR, firstDot + 1);
    if (secondDot == std::string::npos)
    {
        return false;
    }
    VersionTuple parsed;
    if (!parseNumber(text, 0, firstDot, parsed.majorNo) ||
        !parseNumber(text, firstDot + 1, secondDot, parsed.minorNo) ||
        !parseNumber(text, secondDot + 1, text.size(), parsed.patchNo))
    {
        return false;
    }
    retVersion = parsed;
    return true;
}

} // namespace Orvi::Service
