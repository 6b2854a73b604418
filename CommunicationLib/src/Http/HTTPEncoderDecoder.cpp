#include "Http/HTTPEncoderDecoder.h"

#include "Http/BodyTooLargeException.h"

#include <Poco/Net/MessageHeader.h>
#include <Poco/Net/NameValueCollection.h>
#include <Poco/NumberParser.h>
#include <Poco/StreamCopier.h>
#include <Poco/String.h>

#include <sstream>
#include <vector>

namespace Orvi::Net
{

const std::string HTTPEncoderDecoder::FIELD_CONTENT_ENCODING = "Content-Encoding";
const std::string HTTPEncoderDecoder::FIELD_ACCEPT_ENCODING = "Accept-Encoding";
const std::string HTTPEncoderDecoder::FIELD_VARY = "Vary";
const std::string HTTPEncoderDecoder::KEY_GZIP = "gzip";
const std::string HTTPEncoderDecoder::KEY_X_GZIP = "x-gzip";
const std::string HTTPEncoderDecoder::KEY_DEFLATE = "deflate";
const std::string HTTPEncoderDecoder::KEY_ANY_CODING = "*";
const std::string HTTPEncoderDecoder::KEY_QUALITY = "q";

namespace
{

const std::string& NO_CODING = Poco::Net::HTTPMessage::EMPTY;

bool isGzip(const std::string& coding)
{
    return coding == HTTPEncoderDecoder::KEY_GZIP || coding == HTTPEncoderDecoder::KEY_X_GZIP;
}

std::string normalizedCoding(const std::string& coding)
{
    return Poco::toLower(Poco::trim(coding));
}

// What the client's Accept-Encoding says of one coding: not named, accepted, or refused by q=0.
enum class Acceptance
{
    Unnamed,
    Accepted,
    Refused
};

Acceptance acceptanceOf(const Poco::Net::NameValueCollection& parameters)
{
    if (!parameters.has(HTTPEncoderDecoder::KEY_QUALITY))
    {
        return Acceptance::Accepted;
    }
    // A quality that cannot be read is taken as a refusal: identity is always a safe answer.
    double quality = 0.0;
    return Poco::NumberParser::tryParseFloat(parameters.get(HTTPEncoderDecoder::KEY_QUALITY), quality) &&
                   quality > 0.0
               ? Acceptance::Accepted
               : Acceptance::Refused;
}

struct AcceptedCodings
{
    Acceptance gzip = Acceptance::Unnamed;
    Acceptance deflate = Acceptance::Unnamed;
    Acceptance any = Acceptance::Unnamed;

    bool accepts(Acceptance named) const
    {
        return named == Acceptance::Accepted || (named == Acceptance::Unnamed && any == Acceptance::Accepted);
    }
};

AcceptedCodings parseAcceptEncoding(const std::string& header)
{
    AcceptedCodings result;
    std::vector<std::string> elements;
    Poco::Net::MessageHeader::splitElements(header, elements);
    for (const std::string& element : elements)
    {
        std::string coding;
        Poco::Net::NameValueCollection parameters;
        Poco::Net::MessageHeader::splitParameters(element, coding, parameters);
        coding = normalizedCoding(coding);
        const Acceptance acceptance = acceptanceOf(parameters);
        if (isGzip(coding))
        {
            result.gzip = acceptance;
        }
        else if (coding == HTTPEncoderDecoder::KEY_DEFLATE)
        {
            result.deflate = acceptance;
        }
        else if (coding == HTTPEncoderDecoder::KEY_ANY_CODING)
        {
            result.any = acceptance;
        }
    }
    return result;
}

void addVaryOnAcceptEncoding(Poco::Net::HTTPResponse& response)
{
    const std::string& field = HTTPEncoderDecoder::FIELD_VARY;
    const std::string& token = HTTPEncoderDecoder::FIELD_ACCEPT_ENCODING;
    if (!response.has(field))
    {
        response.set(field, token);
    }
    else if (!response.hasToken(field, token))
    {
        response.set(field, response.get(field) + ", " + token);
    }
}

} // namespace

HTTPEncoderDecoder::HTTPEncoderDecoder(const Poco::Net::HTTPRequest& request,
                                       Poco::Net::HTTPResponse& response)
    : m_isGzipEncoded(false)
    , m_isDeflateEncoded(false)
    , m_encodeGzip(false)
    , m_encodeDeflate(false)
{
    const std::string requestCoding =
        normalizedCoding(request.get(FIELD_CONTENT_ENCODING, Poco::Net::HTTPMessage::EMPTY));
    m_isGzipEncoded = isGzip(requestCoding);
    m_isDeflateEncoded = requestCoding == KEY_DEFLATE;

    const AcceptedCodings accepted =
        parseAcceptEncoding(request.get(FIELD_ACCEPT_ENCODING, Poco::Net::HTTPMessage::EMPTY));
    m_encodeGzip = accepted.accepts(accepted.gzip);
    m_encodeDeflate = !m_encodeGzip && accepted.accepts(accepted.deflate);

    addVaryOnAcceptEncoding(response);
}

HTTPEncoderDecoder::~HTTPEncoderDecoder()
{
    try
    {
        finishEncoding();
    }
    catch (...)
    {
        // A destructor must not throw; the peer sees a truncated body.
    }
}

std::istream& HTTPEncoderDecoder::decodingStream(std::istream& body)
{
    if (!isDecodingRequest())
    {
        return body;
    }
    m_inStream =
        new Poco::InflatingInputStream(body, m_isGzipEncoded ? Poco::InflatingStreamBuf::STREAM_GZIP
                                                             : Poco::InflatingStreamBuf::STREAM_ZLIB);
    // Without this the stream would swallow a decoding error and look like a short body.
    m_inStream->exceptions(std::ios::badbit);
    return *m_inStream;
}

std::string HTTPEncoderDecoder::readBody(std::istream& body, std::size_t maxSize)
{
    std::string result;
    if (body.peek() == std::char_traits<char>::eof())
    {
        return result;
    }
    std::istream& decoded = decodingStream(body);
    char buffer[8192];
    while (decoded.read(buffer, sizeof(buffer)) || decoded.gcount() > 0)
    {
        const auto count = static_cast<std::size_t>(decoded.gcount());
        if (count > maxSize - result.size())
        {
            throw BodyTooLargeException("more than " + std::to_string(maxSize) + " bytes");
        }
        result.append(buffer, count);
    }
    return result;
}

const std::string& HTTPEncoderDecoder::contentEncoding() const
{
    if (m_encodeGzip)
    {
        return KEY_GZIP;
    }
    return m_encodeDeflate ? KEY_DEFLATE : NO_CODING;
}

std::string HTTPEncoderDecoder::encodeBody(std::string body) const
{
    if (!isEncodingResponse())
    {
        return body;
    }
    std::ostringstream encoded;
    Poco::DeflatingOutputStream deflater(encoded, m_encodeGzip ? Poco::DeflatingStreamBuf::STREAM_GZIP
                                                               : Poco::DeflatingStreamBuf::STREAM_ZLIB);
    deflater.write(body.data(), static_cast<std::streamsize>(body.size()));
    deflater.close();
    return encoded.str();
}

std::ostream& HTTPEncoderDecoder::encodingStream(std::ostream& out)
{
    finishEncoding();
    if (!isEncodingResponse())
    {
        return out;
    }
    m_outStream = new Poco::DeflatingOutputStream(out, m_encodeGzip ? Poco::DeflatingStreamBuf::STREAM_GZIP
                                                                    : Poco::DeflatingStreamBuf::STREAM_ZLIB);
    return *m_outStream;
}

void HTTPEncoderDecoder::finishEncoding()
{
    if (m_outStream)
    {
        m_outStream->close();
        m_outStream.reset();
    }
}

} // namespace Orvi::Net
