#pragma once

#include <Poco/Buffer.h>
#include <Poco/Net/HTTPServerSession.h>

#include <cstddef>
#include <string>

namespace Orvi::Net
{

/// Reads a chunked request body strictly, straight from its connection. A chunk size that is not
/// hexadecimal, a chunk without its line end, or the end of the connection before the last chunk is an
/// error, where a lenient decoder would end the body there and read the rest as the next request. The
/// bytes after the body are taken with it, so the connection serves no further request.
class ChunkedBodyReader
{
public:
    static const std::string MSG_MALFORMED_CHUNKS;
    /// "malformed chunked body"

    explicit ChunkedBodyReader(Poco::Net::HTTPServerSession& session);
    /// The session must outlive the reader.

    std::string read(std::size_t maxBodySize);
    /// The body with its chunks joined. Throws BodyTooLargeException beyond maxBodySize,
    /// Poco::Net::MessageException for malformed chunks or a body that ends early, and
    /// Poco::TimeoutException when the client stalls longer than the session's time-out.

private:
    int next();
    std::string line();
    void expectLineEnd();

    Poco::Net::HTTPServerSession& m_session;
    Poco::Buffer<char> m_buffer;
    std::size_t m_position = 0;
};

} // namespace Orvi::Net
