#pragma once

#include <string>

namespace Orvi::Service
{

/// The messages the subscription service writes to its clients, and their fixed texts. Every message
/// is one JSON object with its keys in alphabetical order, as WebSocketResponseObject writes them.
class SubscriptionMessages
{
public:
    static const std::string TYPE_ERROR;
    /// "error": the type of every error message.

    static const std::string ERROR_STATUS;
    /// "error": error messages carry "status":"error" next to "code" and "message", the same as an
    /// error that the data source reports through WebSocketResponseObject::setError().

    static const std::string NO_EVENT;
    /// "": the event of an error about a message that named none.

    static const std::string TEXT_NOT_AN_OBJECT;
    static const std::string TEXT_INVALID_FIELDS;
    static const std::string TEXT_UNKNOWN_TYPE;
    static const std::string TEXT_BINARY_FRAME;
    static const std::string TEXT_ALREADY_SUBSCRIBED;
    static const std::string TEXT_NOT_SUBSCRIBED;
    static const std::string TEXT_TOO_MANY_SUBSCRIPTIONS;
    static const std::string TEXT_CHECK_FAILED;

    static std::string answer(const std::string& type, const std::string& event);
    /// The answer to a subscribe or unsubscribe: {"event":...,"status":"ok","type":...}.

    static std::string error(const std::string& event, int code, const std::string& message);
    /// {"code":...,"event":...,"message":...,"status":"error","type":"error"}.

    static std::string quote(const std::string& text);
    /// The text as a JSON string, quoted and escaped as in every message.
};

} // namespace Orvi::Service
