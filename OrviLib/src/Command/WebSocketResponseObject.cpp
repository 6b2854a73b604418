#include "Command/WebSocketResponseObject.h"

namespace Orvi::Command
{

const WebSocketResponseObject::JsonFieldName WebSocketResponseObject::FIELD_TYPE = "type";
const WebSocketResponseObject::JsonFieldName WebSocketResponseObject::FIELD_EVENT = "event";

WebSocketResponseObject::WebSocketResponseObject() = default;

void WebSocketResponseObject::setError(HTTPStatus status, const std::string& message)
{
    setStatus(STATUS_ERROR);
    setErrorCode(status);
    setMessage(message);
    JSONObject->remove(FIELD_DATA);
    JSONObject->remove(FIELD_PAGING);
}

void WebSocketResponseObject::setType(const std::string& type)
{
    JSONObject->set(FIELD_TYPE, type);
}

void WebSocketResponseObject::setEvent(const std::string& event)
{
    JSONObject->set(FIELD_EVENT, event);
}

} // namespace Orvi::Command
