#pragma once

#include "Command/RequestBase.h"

#include <Poco/Net/HTTPServerRequest.h>

#include <cstddef>
#include <limits>
#include <string>

namespace Orvi::Net
{
class HTTPEncoderDecoder;
} // namespace Orvi::Net

namespace Orvi::Command
{

/// An HTTP request as the service database sees it: method, address with criteria, and body.
class HttpRequest : public RequestBase
{
public:
    enum RequestType
    {
        UNSUPPORTED = 0,
        GET = 1,
        HEAD = 2,
        POST = 3,
        PUT = 4,
        DELETE = 5
    };

    explicit HttpRequest(Poco::Net::HTTPServerRequest& request);
    /// Takes method and address of the request as they stand, without reading the body. Throws
    /// Poco::URISyntaxException for an address or query that does not parse.

    HttpRequest(Poco::Net::HTTPServerRequest& request, Orvi::Net::HTTPEncoderDecoder& coder,
                std::size_t maxBodySize = std::numeric_limits<std::size_t>::max());
    /// As the constructor above, then reads the whole body through the coder, which decodes a gzip or
    /// deflate body. The address is parsed first, so a bad one is reported before the body is touched;
    /// a corrupt compressed body raises Poco::IOException. A body longer than maxBodySize, as announced
    /// by its Content-Length (then nothing is read) or once decoded, raises Net::BodyTooLargeException.

    Poco::Net::HTTPServerRequest& getHttpRequest() const { return m_httpRequest; }

    bool hasMessage() const { return !m_message.empty(); }
    /// True when the request has a body.

    const std::string& getMessage() const { return m_message; }
    /// The body of the request.

    RequestType getType() const { return m_type; }
    /// The method; UNSUPPORTED for any method but GET, HEAD, POST, PUT and DELETE.

    static RequestType toRequestType(const std::string& method);
    /// The type of an HTTP method name; method names are case-sensitive.

private:
    std::string m_message;
    RequestType m_type;
    Poco::Net::HTTPServerRequest& m_httpRequest;
};

} // namespace Orvi::Command
