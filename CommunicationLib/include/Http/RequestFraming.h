#pragma once

#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>

#include <string>

namespace Orvi::Net
{

/// Checks what frames a request before anything of its body is read: the protocol version of its
/// request line and the headers that give the length of its body. Where these are wrong, nobody can
/// know where the body ends, so such a request is answered and its connection closed.
class RequestFraming
{
public:
    static const std::string MSG_MALFORMED_VERSION;
    /// "malformed HTTP version"
    static const std::string MSG_VERSION_NOT_SUPPORTED;
    /// "HTTP version not supported"
    static const std::string MSG_MALFORMED_CONTENT_LENGTH;
    /// "malformed Content-Length"
    static const std::string MSG_CONFLICTING_LENGTHS;
    /// "conflicting body lengths"
    static const std::string MSG_MALFORMED_HEADER_NAME;
    /// "malformed header name"

    static Poco::Net::HTTPResponse::HTTPStatus check(const Poco::Net::HTTPRequest& request,
                                                     std::string& message);
    /// HTTP_OK for a sound request. Otherwise the status to answer with (400, or 505 for a major
    /// version other than 1), and its message: a version that is not "HTTP/<digit>.<digit>", a header
    /// name that is not a token of letters, digits and !#$%&'*+-.^_`|~, a Content-Length that is not a number
    /// of at most 63 bits, two Content-Length headers that differ, or a Content-Length beside a
    /// Transfer-Encoding.
};

} // namespace Orvi::Net
