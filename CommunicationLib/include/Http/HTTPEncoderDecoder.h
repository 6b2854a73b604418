#pragma once

#include <Poco/DeflatingStream.h>
#include <Poco/InflatingStream.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/SharedPtr.h>

#include <cstddef>
#include <istream>
#include <limits>
#include <ostream>
#include <string>

namespace Orvi::Net
{

/// The content coding of one HTTP exchange: decodes the request body by its Content-Encoding and
/// encodes the answer by the request's Accept-Encoding. Codings: gzip, and deflate in the zlib
/// format as HTTP defines it.
class HTTPEncoderDecoder
{
public:
    static const std::string FIELD_CONTENT_ENCODING;
    /// "Content-Encoding"
    static const std::string FIELD_ACCEPT_ENCODING;
    /// "Accept-Encoding"
    static const std::string FIELD_VARY;
    /// "Vary"
    static const std::string KEY_GZIP;
    /// "gzip"
    static const std::string KEY_X_GZIP;
    /// "x-gzip", the old name of gzip.
    static const std::string KEY_DEFLATE;
    /// "deflate"
    static const std::string KEY_ANY_CODING;
    /// "*"
    static const std::string KEY_QUALITY;
    /// "q"

    HTTPEncoderDecoder(const Poco::Net::HTTPRequest& request, Poco::Net::HTTPResponse& response);
    /// Chooses both codings from the request's headers and adds "Accept-Encoding" to the answer's
    /// Vary header, since the answer's bytes depend on it. The answer is gzip if the client accepts
    /// it, else deflate if accepted, else identity; a coding with q=0 is refused.

    virtual ~HTTPEncoderDecoder();
    /// Closes the encoding stream, if one was opened, so that its data is complete.

    HTTPEncoderDecoder(const HTTPEncoderDecoder&) = delete;
    HTTPEncoderDecoder& operator=(const HTTPEncoderDecoder&) = delete;

    bool isDecodingRequest() const { return m_isGzipEncoded || m_isDeflateEncoded; }
    /// True when the request body is gzip or deflate encoded. Other codings are not decoded.

    std::istream& decodingStream(std::istream& body);
    /// The stream to read the decoded request body from: body itself, or an inflating stream over
    /// it, which lives as long as this object or until the next call. A corrupt compressed body
    /// raises Poco::IOException on reading.

    std::string readBody(std::istream& body, std::size_t maxSize = std::numeric_limits<std::size_t>::max());
    /// The whole decoded request body. An empty body stays empty whatever its coding; a corrupt
    /// compressed one raises Poco::IOException. A body that decodes to more than maxSize bytes raises
    /// BodyTooLargeException once the limit is passed, so that a small compressed body cannot fill memory.

    bool isEncodingResponse() const { return m_encodeGzip || m_encodeDeflate; }
    /// True when the answer is sent compressed.

    const std::string& contentEncoding() const;
    /// The Content-Encoding of the answer: "gzip", "deflate" or empty for identity.

    std::string encodeBody(std::string body) const;
    /// The bytes to send for this answer body: compressed by the chosen coding, or body itself
    /// (moved, not copied, when given an rvalue). The sender sets Content-Encoding from
    /// contentEncoding() and Content-Length from the size of the result.

    std::ostream& encodingStream(std::ostream& out);
    /// The stream to write the answer body to when it is streamed: out itself, or a compressing
    /// stream over it that finishEncoding() or the destructor completes. A new call completes the
    /// stream of an earlier one first.

    void finishEncoding();
    /// Completes the compressed data of encodingStream(); nothing to do when the answer is not
    /// compressed.

private:
    bool m_isGzipEncoded;
    bool m_isDeflateEncoded;
    bool m_encodeGzip;
    bool m_encodeDeflate;
    Poco::SharedPtr<Poco::DeflatingOutputStream> m_outStream;
    Poco::SharedPtr<Poco::InflatingInputStream> m_inStream;
};

} // namespace Orvi::Net
