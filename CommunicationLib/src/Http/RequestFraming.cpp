#include "Http/RequestFraming.h"

#include <Poco/Ascii.h>
#include <Poco/String.h>

#include <limits>
#include <string>

namespace Orvi::Net
{

using Poco::Net::HTTPResponse;

const std::string RequestFraming::MSG_MALFORMED_VERSION = "malformed HTTP version";
const std::string RequestFraming::MSG_VERSION_NOT_SUPPORTED = "HTTP version not supported";
const std::string RequestFraming::MSG_MALFORMED_CONTENT_LENGTH = "malformed Content-Length";
const std::string RequestFraming::MSG_CONFLICTING_LENGTHS = "conflicting body lengths";
const std::string RequestFraming::MSG_MALFORMED_HEADER_NAME = "malformed header name";

namespace
{

const std::string PROTOCOL = "HTTP/";

bool isVersion(const std::string& version)
{
    return version.size() == PROTOCOL.size() + 3 && version.compare(0, PROTOCOL.size(), PROTOCOL) == 0 &&
           Poco::Ascii::isDigit(version[PROTOCOL.size()]) && version[PROTOCOL.size() + 1] == '.' &&
           Poco::Ascii::isDigit(version[PROTOCOL.size() + 2]);
}

bool isLength(const std::string& value)
{
    // Compared as text, since POCO's parsers wrap around beyond 64 bits instead of failing.
    static const std::string LARGEST = std::to_string(std::numeric_limits<Poco::Int64>::max());
    if (value.empty() || value.size() > LARGEST.size())
    {
        return false;
    }
    for (const char digit : value)
    {
        if (!Poco::Ascii::isDigit(digit))
        {
            return false;
        }
    }
    return value.size() < LARGEST.size() || value <= LARGEST;
}

// A token of HTTP: letters, digits and !#$%&'*+-.^_`|~.
bool isToken(const std::string& name)
{
    static const std::string SYMBOLS = "!#$%&'*+-.^_`|~";
    if (name.empty())
    {
        return false;
    }
    for (const char c : name)
    {
        if (!Poco::Ascii::isAlphaNumeric(c) && SYMBOLS.find(c) == std::string::npos)
        {
            return false;
        }
    }
    return true;
}

} // namespace

HTTPResponse::HTTPStatus RequestFraming::check(const Poco::Net::HTTPRequest& request, std::string& message)
{
    const std::string& version = request.getVersion();
    if (!isVersion(version))
    {
        message = MSG_MALFORMED_VERSION;
        return HTTPResponse::HTTP_BAD_REQUEST;
    }
    if (version[PROTOCOL.size()] != '1')
    {
        message = MSG_VERSION_NOT_SUPPORTED;
        return HTTPResponse::HTTP_VERSION_NOT_SUPPORTED;
    }

    for (const auto& header : request)
    {
        if (!isToken(header.first))
        {
            message = MSG_MALFORMED_HEADER_NAME;
            return HTTPResponse::HTTP_BAD_REQUEST;
        }
    }

    // Headers of one name follow each other in the collection.
    const std::string* first = nullptr;
    for (auto header = request.find(Poco::Net::HTTPMessage::CONTENT_LENGTH);
         header != request.end() &&
         Poco::icompare(header->first, Poco::Net::HTTPMessage::CONTENT_LENGTH) == 0;
         ++header)
    {
        if (!isLength(header->second))
        {
            message = MSG_MALFORMED_CONTENT_LENGTH;
            return HTTPResponse::HTTP_BAD_REQUEST;
        }
        if (first != nullptr && *first != header->second)
        {
            message = MSG_CONFLICTING_LENGTHS;
            return HTTPResponse::HTTP_BAD_REQUEST;
        }
        first = &header->second;
    }
    if (first != nullptr && request.has(Poco::Net::HTTPMessage::TRANSFER_ENCODING))
    {
        message = MSG_CONFLICTING_LENGTHS;
        return HTTPResponse::HTTP_BAD_REQUEST;
    }
    return HTTPResponse::HTTP_OK;
}

} // namespace Orvi::Net
