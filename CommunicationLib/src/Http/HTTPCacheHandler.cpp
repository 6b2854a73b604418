#include "Http/HTTPCacheHandler.h"

#include <Poco/Net/MessageHeader.h>
#include <Poco/String.h>

#include <array>
#include <cstdint>
#include <vector>

namespace Orvi::Net
{

const std::string HTTPCacheHandler::FIELD_IF_NONE_MATCH = "If-None-Match";
const std::string HTTPCacheHandler::FIELD_IF_MATCH = "If-Match";
const std::string HTTPCacheHandler::FIELD_IF_MODIFIED_SINCE = "If-Modified-Since";
const std::string HTTPCacheHandler::FIELD_IF_UNMODIFIED_SINCE = "If-Unmodified-Since";
const std::string HTTPCacheHandler::FIELD_ETAG = "ETag";
const std::string HTTPCacheHandler::KEY_ANY_TAG = "*";
const std::string HTTPCacheHandler::KEY_WEAK_PREFIX = "W/";

namespace
{

constexpr std::uint64_t FNV_OFFSET_BASIS = 0xcbf29ce484222325ULL;
constexpr std::uint64_t FNV_PRIME = 0x100000001b3ULL;
constexpr std::size_t HASH_HEX_DIGITS = 16;

// Weak comparison looks only at the quoted part of a tag.
std::string opaqueTag(const std::string& tag)
{
    std::string trimmed = Poco::trim(tag);
    if (trimmed.compare(0, HTTPCacheHandler::KEY_WEAK_PREFIX.size(), HTTPCacheHandler::KEY_WEAK_PREFIX) == 0)
    {
        trimmed.erase(0, HTTPCacheHandler::KEY_WEAK_PREFIX.size());
    }
    return trimmed;
}

bool listMatches(const std::string& value, const std::string& opaqueEtag)
{
    if (Poco::trim(value) == HTTPCacheHandler::KEY_ANY_TAG)
    {
        return true;
    }
    // Commas may occur inside a quoted tag; the split keeps quoted text whole.
    std::vector<std::string> tags;
    Poco::Net::MessageHeader::splitElements(value, tags);
    for (const std::string& tag : tags)
    {
        if (opaqueTag(tag) == opaqueEtag)
        {
            return true;
        }
    }
    return false;
}

} // namespace

HTTPCacheHandler::PreconditionResult
HTTPCacheHandler::checkRequestHeader(const Poco::Net::HTTPRequest& request)
{
    const std::string& method = request.getMethod();
    if (method == Poco::Net::HTTPRequest::HTTP_GET || method == Poco::Net::HTTPRequest::HTTP_HEAD)
    {
        return PRECONDITION_VALID;
    }
    const bool conditional = request.has(FIELD_IF_NONE_MATCH) || request.has(FIELD_IF_MATCH) ||
                             request.has(FIELD_IF_MODIFIED_SINCE) || request.has(FIELD_IF_UNMODIFIED_SINCE);
    return conditional ? PRECONDITION_FAILED : PRECONDITION_VALID;
}

std::string HTTPCacheHandler::computeETag(const std::string& bytes)
{
    std::uint64_t hash = FNV_OFFSET_BASIS;
    for (const char byte : bytes)
    {
        hash ^= static_cast<unsigned char>(byte);
        hash *= FNV_PRIME;
    }
    static constexpr std::array<char, 16> HEX_DIGITS = {'0', '1', '2', '3', '4', '5', '6', '7',
                                                        '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
    std::string tag(HASH_HEX_DIGITS + 2, '"');
    for (std::size_t digit = HASH_HEX_DIGITS; digit > 0; --digit)
    {
        tag[digit] = HEX_DIGITS[hash & 0xfU];
        hash >>= 4U;
    }
    return tag;
}

bool HTTPCacheHandler::matchesIfNoneMatch(const Poco::Net::HTTPRequest& request, const std::string& etag)
{
    const std::string opaqueEtag = opaqueTag(etag);
    for (const auto& [name, value] : request)
    {
        if (Poco::icompare(name, FIELD_IF_NONE_MATCH) == 0 && listMatches(value, opaqueEtag))
        {
            return true;
        }
    }
    return false;
}

} // namespace Orvi::Net
