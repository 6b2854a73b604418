#pragma once

#include <Poco/JSON/Object.h>

#include <string>

namespace Orvi::Command
{

/// The JSON body of an answer under construction, with its status word.
class StatusObject
{
public:
    using StatusCode = std::string;
    using JsonFieldName = std::string;

    enum AdditionalJsonErrorCodes
    {
        syntax_error = 400,
        access_denied = 403,
        subscription_uri_invalid = 404,
        gone = 410,
        maximum_number_of_event_subscriptions_reached = 503
    };

    static const JsonFieldName FIELD_STATUS;
    static const JsonFieldName FIELD_MESSAGE;
    static const JsonFieldName FIELD_ERROR_CODE;
    static const StatusCode STATUS_OK;
    static const StatusCode STATUS_ERROR;
    static const StatusCode STATUS_NONE;

    StatusObject();
    /// An empty body.

    StatusObject(const StatusObject&) = default;
    StatusObject(StatusObject&&) = default;
    StatusObject& operator=(const StatusObject&) = default;
    StatusObject& operator=(StatusObject&&) = default;
    virtual ~StatusObject();

    void setStatus(const StatusCode& status);
    /// Sets "status".

    void setMessage(const std::string& message);
    /// Sets "message".

    void setErrorCode(int code);
    /// Sets "code".

    Poco::JSON::Object::Ptr JSONObject;
    /// The body; copies of this object share it.
};

} // namespace Orvi::Command
