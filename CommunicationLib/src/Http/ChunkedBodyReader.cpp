#include "Http/ChunkedBodyReader.h"

#include "Http/BodyTooLargeException.h"
#include "Http/BufferedServerRequest.h"

#include <Poco/Net/NetException.h>

#include <cctype>

namespace Orvi::Net
{

const std::string ChunkedBodyReader::MSG_MALFORMED_CHUNKS = "malformed chunked body";

namespace
{

constexpr std::size_t MAX_LINE_LENGTH = 1024;
constexpr std::size_t MAX_SIZE_DIGITS = 15;
constexpr std::size_t MAX_TRAILER_LINES = 100;
constexpr std::size_t READ_SIZE = 8192;

[[noreturn]] void malformed()
{
    throw Poco::Net::MessageException(ChunkedBodyReader::MSG_MALFORMED_CHUNKS);
}

std::size_t parseSize(const std::string& line)
{
    std::size_t size = 0;
    std::size_t digits = 0;
    for (const char c : line)
    {
        if (c == ';')
        {
            break; // chunk extensions mean nothing to us
        }
        if (!std::isxdigit(static_cast<unsigned char>(c)) || ++digits > MAX_SIZE_DIGITS)
        {
            malformed();
        }
        size = size * 16 +
               static_cast<std::size_t>(std::isdigit(static_cast<unsigned char>(c))
                                            ? c - '0'
                                            : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10);
    }
    if (digits == 0)
    {
        malformed();
    }
    return size;
}

} // namespace

ChunkedBodyReader::ChunkedBodyReader(Poco::Net::HTTPServerSession& session)
    : m_session(session)
    , m_buffer(0)
{
    // What the session read ahead of the head belongs to the body.
    m_session.drainBuffer(m_buffer);
}

std::string ChunkedBodyReader::read(std::size_t maxBodySize)
{
    std::string body;
    while (true)
    {
        const std::size_t size = parseSize(line());
        if (size == 0)
        {
            break;
        }
        if (size > maxBodySize - body.size())
        {
            throw BodyTooLargeException("more than " + std::to_string(maxBodySize) + " bytes");
        }
        for (std::size_t i = 0; i < size; ++i)
        {
            const int c = next();
            if (c < 0)
            {
                throw Poco::Net::MessageException(BufferedServerRequest::MSG_BODY_INCOMPLETE);
            }
            body.push_back(static_cast<char>(c));
        }
        expectLineEnd();
    }
    for (std::size_t trailers = 0; !line().empty(); ++trailers)
    {
        if (trailers == MAX_TRAILER_LINES)
        {
            malformed();
        }
    }
    return body;
}

int ChunkedBodyReader::next()
{
    if (m_position == m_buffer.size())
    {
        m_buffer.resize(READ_SIZE, false);
        const int length = m_session.socket().receiveBytes(m_buffer.begin(), static_cast<int>(READ_SIZE));
        m_buffer.resize(length > 0 ? static_cast<std::size_t>(length) : 0, true);
        m_position = 0;
        if (length <= 0)
        {
            return -1;
        }
    }
    return static_cast<unsigned char>(m_buffer[m_position++]);
}

std::string ChunkedBodyReader::line()
{
    std::string text;
    int c = 0;
    while ((c = next()) != '\r')
    {
        if (c < 0)
        {
            throw Poco::Net::MessageException(BufferedServerRequest::MSG_BODY_INCOMPLETE);
        }
        if (c == '\n' || text.size() == MAX_LINE_LENGTH)
        {
            malformed();
        }
        text.push_back(static_cast<char>(c));
    }
    if (next() != '\n')
    {
        malformed();
    }
    return text;
}

void ChunkedBodyReader::expectLineEnd()
{
    const int first = next();
    const int second = first == '\r' ? next() : -1;
    if (first < 0 || (first == '\r' && second < 0))
    {
        throw Poco::Net::MessageException(BufferedServerRequest::MSG_BODY_INCOMPLETE);
    }
    if (first != '\r' || second != '\n')
    {
        malformed();
    }
}

} // namespace Orvi::Net
