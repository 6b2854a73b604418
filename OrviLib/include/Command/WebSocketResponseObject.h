#pragma once

#include "Command/HttpResponse.h"
#include "Command/ResponseObject.h"

#include <string>

namespace Orvi::Command
{

/// A message to a subscriber: an answer body that also names its type and its event.
class WebSocketResponseObject : public ResponseObject
{
public:
    static const JsonFieldName FIELD_TYPE;
    static const JsonFieldName FIELD_EVENT;

    WebSocketResponseObject();
    /// A success body: {"status":"ok"}.

    void setError(HTTPStatus status, const std::string& message);
    /// Turns the body into an error: "status":"error", "code" and "message", without data or paging.

    void setType(const std::string& type);
    /// Sets "type", the kind of message ("subscribe", "unsubscribe", "data", "error").

    void setEvent(const std::string& event);
    /// Sets "event", the address the message is about, as the subscriber wrote it.
};

} // namespace Orvi::Command
