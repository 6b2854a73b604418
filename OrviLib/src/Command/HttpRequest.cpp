#include "Command/HttpRequest.h"

#include "Http/BodyTooLargeException.h"
#include "Http/HTTPEncoderDecoder.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/URI.h>

#include <string>

namespace Orvi::Command
{

namespace
{

UrlPath parseAddress(const std::string& text)
{
    try
    {
        const Poco::URI uri(text);
        // The query is decoded lazily; decode it here so that a bad one is reported like a bad path.
        uri.getQueryParameters();
        return UrlPath(uri);
    }
    catch (const Poco::URISyntaxException&)
    {
        throw;
    }
    catch (const Poco::SyntaxException& error)
    {
        throw Poco::URISyntaxException(error.message());
    }
}

} // namespace

HttpRequest::HttpRequest(Poco::Net::HTTPServerRequest& request)
    : RequestBase(parseAddress(request.getURI()))
    , m_type(toRequestType(request.getMethod()))
    , m_httpRequest(request)
{
}

HttpRequest::HttpRequest(Poco::Net::HTTPServerRequest& request, Orvi::Net::HTTPEncoderDecoder& coder,
                         std::size_t maxBodySize)
    : HttpRequest(request)
{
    if (request.hasContentLength() && static_cast<Poco::UInt64>(request.getContentLength64()) > maxBodySize)
    {
        throw Net::BodyTooLargeException(std::to_string(request.getContentLength64()) + " bytes announced");
    }
    // An HTTP/1.1 request without a length and without chunks has no body; reading one anyway would
    // wait for the client to close its connection.
    if (request.hasContentLength() || request.getChunkedTransferEncoding())
    {
        m_message = coder.readBody(request.stream(), maxBodySize);
    }
}

HttpRequest::RequestType HttpRequest::toRequestType(const std::string& method)
{
    if (method == Poco::Net::HTTPRequest::HTTP_GET)
    {
        return GET;
    }
    if (method == Poco::Net::HTTPRequest::HTTP_HEAD)
    {
        return HEAD;
    }
    if (method == Poco::Net::HTTPRequest::HTTP_POST)
    {
        return POST;
    }
    if (method == Poco::Net::HTTPRequest::HTTP_PUT)
    {
        return PUT;
    }
    if (method == Poco::Net::HTTPRequest::HTTP_DELETE)
    {
        return DELETE;
    }
    return UNSUPPORTED;
}

} // namespace Orvi::Command
