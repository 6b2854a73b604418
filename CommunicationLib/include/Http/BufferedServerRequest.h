#pragma once

#include <Poco/MemoryStream.h>
#include <Poco/Net/HTTPServerRequest.h>

#include <cstddef>
#include <string>

namespace Orvi::Net
{

/// A server request whose body has been read into memory: head and addresses are those of the request
/// it was made from, its stream gives the body as the client sent it (still content-coded). Reading
/// the body on the connection's own thread keeps a slow client from holding whoever processes the
/// request later.
class BufferedServerRequest : public Poco::Net::HTTPServerRequest
{
public:
    static const std::string MSG_BODY_TIMED_OUT;
    /// "request body timed out"
    static const std::string MSG_BODY_INCOMPLETE;
    /// "request body incomplete"

    BufferedServerRequest(Poco::Net::HTTPServerRequest& request, std::size_t maxBodySize);
    /// Reads the whole body; chunks on a server connection strictly (ChunkedBodyReader). A body announced
    /// longer than maxBodySize is left unread, for the receiver to refuse by its Content-Length. Throws
    /// BodyTooLargeException for chunks adding up to more than maxBodySize bytes,
    /// Poco::Net::MessageException for malformed chunks or a body that ends before its length
    /// (MSG_BODY_INCOMPLETE), Poco::TimeoutException when the client stalls longer than the session's
    /// time-out, and passes on network errors.

    BufferedServerRequest(const BufferedServerRequest&) = delete;
    BufferedServerRequest& operator=(const BufferedServerRequest&) = delete;

    static bool hasBody(const Poco::Net::HTTPRequest& request);
    /// True when the request announces a body: a Content-Length above zero, or chunks.

    const std::string& body() const { return m_body; }

    std::istream& stream() override { return m_stream; }
    const Poco::Net::SocketAddress& clientAddress() const override { return m_request.clientAddress(); }
    const Poco::Net::SocketAddress& serverAddress() const override { return m_request.serverAddress(); }
    const Poco::Net::HTTPServerParams& serverParams() const override { return m_request.serverParams(); }
    Poco::Net::HTTPServerResponse& response() const override { return m_request.response(); }
    bool secure() const override { return m_request.secure(); }

private:
    static std::string readBody(Poco::Net::HTTPServerRequest& request, std::size_t maxBodySize);

    Poco::Net::HTTPServerRequest& m_request;
    const std::string m_body;
    Poco::MemoryInputStream m_stream;
};

} // namespace Orvi::Net
