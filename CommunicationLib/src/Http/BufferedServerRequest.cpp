#include "Http/BufferedServerRequest.h"

#include "Http/BodyTooLargeException.h"
#include "Http/ChunkedBodyReader.h"

#include <Poco/Net/HTTPServerRequestImpl.h>
#include <Poco/Net/NetException.h>

#include <Poco/Types.h>

#include <ios>

namespace Orvi::Net
{

const std::string BufferedServerRequest::MSG_BODY_TIMED_OUT = "request body timed out";
const std::string BufferedServerRequest::MSG_BODY_INCOMPLETE = "request body incomplete";

BufferedServerRequest::BufferedServerRequest(Poco::Net::HTTPServerRequest& request, std::size_t maxBodySize)
    : m_request(request)
    , m_body(readBody(request, maxBodySize))
    , m_stream(m_body.data(), m_body.size())
{
    Poco::Net::HTTPRequest::operator=(request);
}

bool BufferedServerRequest::hasBody(const Poco::Net::HTTPRequest& request)
{
    return request.getChunkedTransferEncoding() ||
           (request.hasContentLength() && request.getContentLength64() > 0);
}

std::string BufferedServerRequest::readBody(Poco::Net::HTTPServerRequest& request, std::size_t maxBodySize)
{
    std::string body;
    if (request.hasContentLength() && static_cast<Poco::UInt64>(request.getContentLength64()) > maxBodySize)
    {
        return body;
    }
    // On a connection of the server the chunks are read strictly; other requests only give their stream.
    auto* const connected = dynamic_cast<Poco::Net::HTTPServerRequestImpl*>(&request);
    if (connected != nullptr && request.getChunkedTransferEncoding())
    {
        return ChunkedBodyReader(connected->session()).read(maxBodySize);
    }
    std::istream& in = request.stream();
    // Without this the stream swallows a time-out and ends the body early.
    in.exceptions(std::ios::badbit);
    char buffer[8192];
    while (in.read(buffer, sizeof buffer) || in.gcount() > 0)
    {
        const auto count = static_cast<std::size_t>(in.gcount());
        if (count > maxBodySize - body.size())
        {
            throw BodyTooLargeException("more than " + std::to_string(maxBodySize) + " bytes");
        }
        body.append(buffer, count);
    }
    // The stream ends early, without an error, when the client closes its connection.
    if (request.hasContentLength() && body.size() < static_cast<Poco::UInt64>(request.getContentLength64()))
    {
        throw Poco::Net::MessageException(MSG_BODY_INCOMPLETE);
    }
    return body;
}

} // namespace Orvi::Net
