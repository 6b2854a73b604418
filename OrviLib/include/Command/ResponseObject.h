#pragma once

#include "Command/StatusObject.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include <string>

namespace Orvi::Command
{

/// The JSON body of an answer that carries data: status, data, paging and timestamp.
class ResponseObject : public StatusObject
{
public:
    static const JsonFieldName FIELD_PAGING;
    static const JsonFieldName FIELD_PAGING_OFFSET_ID;
    static const JsonFieldName FIELD_PAGING_OFFSET;
    static const JsonFieldName FIELD_PAGING_LIMIT;
    static const JsonFieldName FIELD_PAGING_TOTAL;
    static const JsonFieldName FIELD_PAGING_TOTAL_PAGES;
    static const JsonFieldName FIELD_PAGING_PREVIOUS;
    static const JsonFieldName FIELD_PAGING_NEXT;
    static const JsonFieldName FIELD_TIMESTAMP;
    static const JsonFieldName FIELD_DATA;
    static const JsonFieldName FIELD_SERVICE;

    ResponseObject();
    /// A success body: {"status":"ok"}.

    ResponseObject(int code, const std::string& message);
    /// For a 2xx code a success body, with "message" when the message is not empty; for any other
    /// code an error body with "code", "message" and "status":"error".

    void setData(const Poco::JSON::Object::Ptr& data);
    /// Sets "data"; a null pointer removes it.

    void setData(const Poco::JSON::Array::Ptr& data);
    /// Sets "data"; a null pointer removes it.

    void setPaging(const Poco::JSON::Object::Ptr& paging);
    /// Sets "paging"; a null pointer removes it.

    void setTimestamp();
    /// Sets "timestamp" to the milliseconds since the process started.
};

} // namespace Orvi::Command
