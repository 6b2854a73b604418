#include "Http/ErrorAnswer.h"

#include <Poco/Net/HTTPMessage.h>

namespace Orvi::Net
{

namespace
{

const std::string JSON_CONTENT_TYPE = "application/json; charset=utf-8";

} // namespace

std::string ErrorAnswer::body(Poco::Net::HTTPResponse::HTTPStatus status, const std::string& message)
{
    return "{\"code\":" + std::to_string(static_cast<int>(status)) + ",\"message\":\"" + message +
           "\",\"status\":\"error\"}";
}

std::string ErrorAnswer::prepare(Poco::Net::HTTPResponse& response,
                                 Poco::Net::HTTPResponse::HTTPStatus status, const std::string& message)
{
    std::string text = body(status, message);
    response.setVersion(Poco::Net::HTTPMessage::HTTP_1_1);
    response.setStatusAndReason(status);
    response.setKeepAlive(false);
    response.setContentType(JSON_CONTENT_TYPE);
    response.setContentLength(static_cast<std::streamsize>(text.size()));
    return text;
}

} // namespace Orvi::Net
