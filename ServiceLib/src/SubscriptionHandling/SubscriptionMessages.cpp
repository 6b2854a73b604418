#include "SubscriptionHandling/SubscriptionMessages.h"

#include "Command/WebSocketResponseObject.h"

#include <Poco/JSON/Stringifier.h>
#include <Poco/JSONString.h>

#include <sstream>

namespace Orvi::Service
{

const std::string SubscriptionMessages::TYPE_ERROR = "error";
const std::string SubscriptionMessages::ERROR_STATUS = Command::StatusObject::STATUS_ERROR;
const std::string SubscriptionMessages::NO_EVENT;
const std::string SubscriptionMessages::TEXT_NOT_AN_OBJECT = "message is not a JSON object";
const std::string SubscriptionMessages::TEXT_INVALID_FIELDS =
    "message needs \"type\" and \"event\" strings; \"interval\" and \"updatelimit\" must be "
    "non-negative integers, \"authorization\" a string, \"autosubscribe\" a boolean";
const std::string SubscriptionMessages::TEXT_UNKNOWN_TYPE = "unknown message type";
const std::string SubscriptionMessages::TEXT_BINARY_FRAME = "binary frames are not supported";
const std::string SubscriptionMessages::TEXT_ALREADY_SUBSCRIBED = "already subscribed to this event";
const std::string SubscriptionMessages::TEXT_NOT_SUBSCRIBED = "not subscribed to this event";
const std::string SubscriptionMessages::TEXT_TOO_MANY_SUBSCRIPTIONS =
    "maximum number of subscriptions on this connection reached";
const std::string SubscriptionMessages::TEXT_CHECK_FAILED = "subscription could not be checked";

namespace
{

std::string toText(const Command::WebSocketResponseObject& message)
{
    std::ostringstream text;
    Poco::JSON::Stringifier::stringify(message.JSONObject, text);
    return text.str();
}

} // namespace

std::string SubscriptionMessages::answer(const std::string& type, const std::string& event)
{
    Command::WebSocketResponseObject message;
    message.setType(type);
    message.setEvent(event);
    return toText(message);
}

std::string SubscriptionMessages::error(const std::string& event, int code, const std::string& message)
{
    Command::WebSocketResponseObject body;
    body.setError(static_cast<Command::HTTPStatus>(code), message);
    body.setType(TYPE_ERROR);
    body.setEvent(event);
    return toText(body);
}

std::string SubscriptionMessages::quote(const std::string& text)
{
    return Poco::toJSON(text, Poco::JSON_WRAP_STRINGS);
}

} // namespace Orvi::Service
