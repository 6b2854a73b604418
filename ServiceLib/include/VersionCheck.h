#pragma once

#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/SharedPtr.h>
#include <Poco/Types.h>

#include <string>
#include <vector>

namespace Orvi::Service
{

/// Matches the service version that a client asks for in its Accept header against the versions
/// that a service implements.
class VersionCheck
{
public:
    /// A version "major.minor.patch".
    struct VersionTuple
    {
        Poco::UInt32 majorNo = 0;
        Poco::UInt32 minorNo = 0;
        Poco::UInt32 patchNo = 0;

        bool isPatchCompatibleTo(const VersionTuple& requested) const;
        /// True when major and minor equal the requested ones and the patch is at least the
        /// requested one: a later patch serves the same interface.
    };

    static const std::string msgVersionNotImplemented;
    /// "The requested version of this service is not implemented.", the answer text when no version
    /// of the service matches.

    static const std::string FIELD_ACCEPT;
    /// "Accept"
    static const std::string KEY_MEDIA_TYPE_PREFIX;
    /// "application/vnd.servicedb.v", followed by the version in a versioned media type.
    static const std::string KEY_MEDIA_TYPE_SUFFIX;
    /// "+json", which closes a versioned media type.

    static bool acceptedVersionMatches(const Poco::Net::HTTPServerRequest& request,
                                       const std::vector<Poco::SharedPtr<std::string>>& versions);
    /// True when the request's Accept names no versioned media type, or when one of the versions
    /// (texts like "1.2.3") is patch compatible to one of those it names. Media types compare
    /// without regard to case and their parameters are ignored. A versioned media type whose
    /// version cannot be read, and a version text that cannot be read, match nothing.

    static bool parseVersion(const std::string& text, VersionTuple& retVersion);
    /// Reads "major.minor.patch", three decimal numbers of 32 bits with nothing around them. On
    /// failure returns false and leaves retVersion as it was.
};

} // namespace Orvi::Service
