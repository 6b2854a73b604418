#include "Command/ResponseObject.h"

#include "Timestamp.h"

namespace Orvi::Command
{

const ResponseObject::JsonFieldName ResponseObject::FIELD_PAGING = "paging";
const ResponseObject::JsonFieldName ResponseObject::FIELD_PAGING_OFFSET_ID = "offsetId";
const ResponseObject::JsonFieldName ResponseObject::FIELD_PAGING_OFFSET = "offset";
const ResponseObject::JsonFieldName ResponseObject::FIELD_PAGING_LIMIT = "limit";
const ResponseObject::JsonFieldName ResponseObject::FIELD_PAGING_TOTAL = "total";
const ResponseObject::JsonFieldName ResponseObject::FIELD_PAGING_TOTAL_PAGES = "totalPages";
const ResponseObject::JsonFieldName ResponseObject::FIELD_PAGING_PREVIOUS = "previous";
const ResponseObject::JsonFieldName ResponseObject::FIELD_PAGING_NEXT = "next";
const ResponseObject::JsonFieldName ResponseObject::FIELD_TIMESTAMP = "timestamp";
const ResponseObject::JsonFieldName ResponseObject::FIELD_DATA = "data";
const ResponseObject::JsonFieldName ResponseObject::FIELD_SERVICE = "service";

namespace
{

bool isSuccessCode(int code)
{
    return code >= 200 && code <= 299;
}

} // namespace

ResponseObject::ResponseObject()
{
    setStatus(STATUS_OK);
}

ResponseObject::ResponseObject(int code, const std::string& message)
{
    if (isSuccessCode(code))
    {
        setStatus(STATUS_OK);
        if (!message.empty())
        {
            setMessage(message);
        }
        return;
    }
    setStatus(STATUS_ERROR);
    setErrorCode(code);
    setMessage(message);
}

void ResponseObject::setData(const Poco::JSON::Object::Ptr& data)
{
    // A null pointer would break stringifying; no data is the honest answer.
    if (data.isNull())
    {
        JSONObject->remove(FIELD_DATA);
        return;
    }
    JSONObject->set(FIELD_DATA, data);
}

void ResponseObject::setData(const Poco::JSON::Array::Ptr& data)
{
    if (data.isNull())
    {
        JSONObject->remove(FIELD_DATA);
        return;
    }
    JSONObject->set(FIELD_DATA, data);
}

void ResponseObject::setPaging(const Poco::JSON::Object::Ptr& paging)
{
    if (paging.isNull())
    {
        JSONObject->remove(FIELD_PAGING);
        return;
    }
    JSONObject->set(FIELD_PAGING, paging);
}

void ResponseObject::setTimestamp()
{
    JSONObject->set(FIELD_TIMESTAMP, Orvi::Timestamp::createTimestamp().asMilliseconds());
}

} // namespace Orvi::Command
