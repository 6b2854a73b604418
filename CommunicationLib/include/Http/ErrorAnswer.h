#pragma once

#include <Poco/Net/HTTPResponse.h>

#include <string>

namespace Orvi::Net
{

/// The error answers that the server writes by itself, before any request handler is involved. They
/// carry the body of every error answer of the system and close the connection.
class ErrorAnswer
{
public:
    static std::string body(Poco::Net::HTTPResponse::HTTPStatus status, const std::string& message);
    /// {"code":<status>,"message":"<message>","status":"error"}; the message must need no escaping.

    static std::string prepare(Poco::Net::HTTPResponse& response, Poco::Net::HTTPResponse::HTTPStatus status,
                               const std::string& message);
    /// Sets version 1.1, status, reason, JSON content type, length and Connection: Close on the
    /// response, and returns the body to send after it.
};

} // namespace Orvi::Net
