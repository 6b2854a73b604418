#pragma once

#include <Poco/Net/HTTPRequest.h>

#include <string>

namespace Orvi::Net
{

/// Conditional request headers: which methods may carry them, entity tags and their comparison.
class HTTPCacheHandler
{
public:
    enum PreconditionResult
    {
        PRECONDITION_VALID = 0,
        PRECONDITION_FAILED = 1
    };

    enum CacheRequestResult
    {
        CONTENT_CHANGED = 0,
        CONTENT_UNCHANGED = 1
    };

    static const std::string FIELD_IF_NONE_MATCH;
    /// "If-None-Match"
    static const std::string FIELD_IF_MATCH;
    /// "If-Match"
    static const std::string FIELD_IF_MODIFIED_SINCE;
    /// "If-Modified-Since"
    static const std::string FIELD_IF_UNMODIFIED_SINCE;
    /// "If-Unmodified-Since"
    static const std::string FIELD_ETAG;
    /// "ETag"
    static const std::string KEY_ANY_TAG;
    /// "*", the If-None-Match value that matches every tag.
    static const std::string KEY_WEAK_PREFIX;
    /// "W/", the mark of a weak tag.

    static PreconditionResult checkRequestHeader(const Poco::Net::HTTPRequest& request);
    /// PRECONDITION_FAILED when a request other than GET or HEAD carries If-None-Match, If-Match,
    /// If-Modified-Since or If-Unmodified-Since; those are answered only for reading.

    static std::string computeETag(const std::string& bytes);
    /// A strong tag of the bytes: the 64-bit FNV-1a hash as 16 lower-case hex digits in double
    /// quotes, e.g. "\"cbf29ce484222325\"" for no bytes. The same bytes give the same tag in every
    /// process.

    static bool matchesIfNoneMatch(const Poco::Net::HTTPRequest& request, const std::string& etag);
    /// True when an If-None-Match of the request names etag or is "*", so that the client's copy is
    /// current. Tags compare weakly: a "W/" on either side is ignored. Several header lines and lists
    /// of tags are searched; false without the header.
};

} // namespace Orvi::Net
