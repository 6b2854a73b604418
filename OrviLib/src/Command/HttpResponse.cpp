#include "Command/HttpResponse.h"

#include "Http/HTTPEncoderDecoder.h"

#include <ostream>
#include <streambuf>
#include <utility>

namespace Orvi::Command
{

namespace
{

// Appends what a stream writes to a string: a large body grows in place and is not copied out of a
// buffer of its own at the end.
class AppendingBuffer : public std::streambuf
{
public:
    explicit AppendingBuffer(std::string& out)
        : m_out(out)
    {
    }

protected:
    int_type overflow(int_type c) override
    {
        if (!traits_type::eq_int_type(c, traits_type::eof()))
        {
            m_out.push_back(traits_type::to_char_type(c));
        }
        return traits_type::not_eof(c);
    }

    std::streamsize xsputn(const char* bytes, std::streamsize count) override
    {
        m_out.append(bytes, static_cast<std::size_t>(count));
        return count;
    }

private:
    std::string& m_out;
};

} // namespace

const std::string HttpResponse::MIMETYPE_JSON = "application/json; charset=utf-8";
const std::string HttpResponse::FIELD_LOCATION = "Location";

HttpResponse::HttpResponse()
    : m_status(Poco::Net::HTTPResponse::HTTP_OK)
{
}

bool HttpResponse::isSuccess(HTTPStatus status)
{
    return status >= 200 && status <= 299;
}

bool HttpResponse::hasContent() const
{
    return !m_jsonMsg.isNull() || !m_textMsg.empty();
}

void HttpResponse::setDataFromText(std::string text, std::string mimetype)
{
    m_textMsg = std::move(text);
    m_mimetype = std::move(mimetype);
    m_jsonMsg.reset();
}

void HttpResponse::setDataFromObject(const Poco::JSON::Object::Ptr& object)
{
    m_jsonMsg = object;
    m_textMsg.clear();
    if (m_mimetype.empty())
    {
        m_mimetype = MIMETYPE_JSON;
    }
}

void HttpResponse::setDataFromObject(const ResponseObject& object)
{
    setDataFromObject(object.JSONObject);
}

std::string HttpResponse::getBody() const
{
    if (m_jsonMsg.isNull())
    {
        return m_textMsg;
    }
    std::string body;
    AppendingBuffer buffer(body);
    std::ostream out(&buffer);
    m_jsonMsg->stringify(out);
    return body;
}

const std::string& HttpResponse::bodyBytes(std::string& rendered) const
{
    if (m_jsonMsg.isNull())
    {
        return m_textMsg;
    }
    rendered = getBody();
    return rendered;
}

void HttpResponse::renderBody()
{
    if (!m_jsonMsg.isNull())
    {
        m_textMsg = getBody();
        m_jsonMsg.reset();
    }
}

void HttpResponse::send(Poco::Net::HTTPServerResponse& response, Orvi::Net::HTTPEncoderDecoder& coder,
                        bool headOnly) const
{
    response.setStatusAndReason(m_status);
    if (!m_location.empty())
    {
        response.set(FIELD_LOCATION, m_location);
    }

    std::string written;
    const std::string* bytes = &m_textMsg;
    // An empty answer stays empty: compressing nothing would still produce a coding header.
    if (hasContent())
    {
        if (!m_mimetype.empty())
        {
            response.setContentType(m_mimetype);
        }
        bytes = &bodyBytes(written);
        if (coder.isEncodingResponse())
        {
            written = coder.encodeBody(*bytes);
            bytes = &written;
            response.set(Orvi::Net::HTTPEncoderDecoder::FIELD_CONTENT_ENCODING, coder.contentEncoding());
        }
    }

    response.setChunkedTransferEncoding(false);
    response.setContentLength64(static_cast<Poco::Int64>(bytes->size()));
    if (headOnly)
    {
        // send() writes the headers only; sendBuffer() would replace Content-Length by the bytes given.
        response.send();
        return;
    }
    response.sendBuffer(bytes->data(), bytes->size());
}

HttpResponse HttpResponse::createStatusOk(HTTPStatus status)
{
    HttpResponse response;
    response.setStatus(status);
    response.setDataFromObject(ResponseObject());
    return response;
}

HttpResponse HttpResponse::createError(HTTPStatus status, const std::string& message)
{
    // Built directly: the body is an error body whatever the status number.
    StatusObject body;
    body.setErrorCode(status);
    body.setMessage(message);
    body.setStatus(StatusObject::STATUS_ERROR);

    HttpResponse response;
    response.setStatus(status);
    response.setDataFromObject(body.JSONObject);
    return response;
}

} // namespace Orvi::Command
