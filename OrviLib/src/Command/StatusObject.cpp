#include "Command/StatusObject.h"

namespace Orvi::Command
{

const StatusObject::JsonFieldName StatusObject::FIELD_STATUS = "status";
const StatusObject::JsonFieldName StatusObject::FIELD_MESSAGE = "message";
const StatusObject::JsonFieldName StatusObject::FIELD_ERROR_CODE = "code";
const StatusObject::StatusCode StatusObject::STATUS_OK = "ok";
const StatusObject::StatusCode StatusObject::STATUS_ERROR = "error";
const StatusObject::StatusCode StatusObject::STATUS_NONE = "none";

StatusObject::StatusObject()
    : JSONObject(new Poco::JSON::Object())
{
}

StatusObject::~StatusObject() = default;

void StatusObject::setStatus(const StatusCode& status)
{
    JSONObject->set(FIELD_STATUS, status);
}

void StatusObject::setMessage(const std::string& message)
{
    JSONObject->set(FIELD_MESSAGE, message);
}

void StatusObject::setErrorCode(int code)
{
    JSONObject->set(FIELD_ERROR_CODE, code);
}

} // namespace Orvi::Command
