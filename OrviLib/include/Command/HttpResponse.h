#pragma once

#include "Command/ResponseObject.h"

#include <Poco/JSON/Object.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/HTTPServerResponse.h>

#include <string>

namespace Orvi::Net
{
class HTTPEncoderDecoder;
} // namespace Orvi::Net

namespace Orvi::Command
{

using HTTPStatus = Poco::Net::HTTPResponse::HTTPStatus;

/// An answer to an HTTP request: status, media type, location and a JSON or text body.
class HttpResponse
{
public:
    static const std::string MIMETYPE_JSON;
    /// "application/json; charset=utf-8", the media type of every JSON body.
    static const std::string FIELD_LOCATION;
    /// "Location", the header that carries the address of a created object.

    HttpResponse();
    /// An empty answer with status 200.

    HttpResponse(const HttpResponse&) = default;
    HttpResponse(HttpResponse&&) = default;
    HttpResponse& operator=(const HttpResponse&) = default;
    HttpResponse& operator=(HttpResponse&&) = default;
    ~HttpResponse() = default;

    void setStatus(HTTPStatus status) { m_status = status; }
    HTTPStatus getStatus() const { return m_status; }

    void setMimetype(const std::string& mimetype) { m_mimetype = mimetype; }
    const std::string& getMimetype() const { return m_mimetype; }

    void setLocation(const std::string& location) { m_location = location; }
    /// The address of a created object.
    const std::string& getLocation() const { return m_location; }

    static bool isSuccess(HTTPStatus status);
    /// True for 200 to 299.

    bool hasContent() const;
    /// True when a JSON body is set or the text body is not empty.

    void setDataFromText(std::string text, std::string mimetype);
    /// Sets a text body and its media type, and drops the JSON body.

    void setDataFromObject(const Poco::JSON::Object::Ptr& object);
    /// Sets a JSON body and drops the text; the media type becomes JSON only if none is set yet.

    void setDataFromObject(const ResponseObject& object);
    /// Sets the object's JSON body, as the overload for a JSON object does.

    const Poco::JSON::Object::Ptr& getJsonMsg() const { return m_jsonMsg; }
    const std::string& getTextMsg() const { return m_textMsg; }

    std::string getBody() const;
    /// The bytes of the body: the JSON body in compact form, otherwise the text.

    const std::string& bodyBytes(std::string& rendered) const;
    /// The same bytes without a copy of a text body: the text as held, or the JSON body rendered into
    /// rendered.

    void renderBody();
    /// Replaces a JSON body by its bytes, keeping the media type, so that an answer that is both
    /// tagged and sent is rendered once.

    void send(Poco::Net::HTTPServerResponse& response, Orvi::Net::HTTPEncoderDecoder& coder,
              bool headOnly) const;
    /// Sends the answer: status with its reason, Location when set, and for content its media type,
    /// the body encoded by the coder with its Content-Encoding, and Content-Length of the bytes. An
    /// answer without content has Content-Length 0, no media type and no coding. With headOnly (for
    /// HEAD) the headers, Content-Length included, are the same but no body byte is written.

    static HttpResponse createStatusOk(HTTPStatus status);
    /// An answer with the status and the body {"status":"ok"}.

    static HttpResponse createError(HTTPStatus status, const std::string& message);
    /// An answer with the status and the body {"code":status,"message":message,"status":"error"}.

private:
    HTTPStatus m_status;
    std::string m_mimetype;
    std::string m_location;
    Poco::JSON::Object::Ptr m_jsonMsg;
    std::string m_textMsg;
};

} // namespace Orvi::Command
