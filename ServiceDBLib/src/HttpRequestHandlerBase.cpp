#include "HttpRequestHandlerBase.h"

#include "DataMessages/RSIDataMessage.h"
#include "Http/BodyTooLargeException.h"
#include "Http/BufferedServerRequest.h"
#include "Http/HTTPCacheHandler.h"
#include "Http/RequestFraming.h"
#include "Logging/LogStream.h"
#include "Net/OrviHttpCacheHandler.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/NetException.h>
#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>

#include <exception>
#include <optional>
#include <sstream>

namespace Orvi
{

using Poco::Net::HTTPResponse;
using HTTPStatus = HTTPResponse::HTTPStatus;

namespace
{

const std::string MSG_QUEUE_OVERFLOW = "message data queue overflow";
const std::string MSG_WRONG_URI_SYNTAX = "wrong URI syntax";
const std::string MSG_BODY_TOO_LARGE = "request body too large";

const std::vector<std::string>& allowedMethods()
{
    // PATCH is announced to preflights on purpose; the real PATCH request is then answered 405.
    static const std::vector<std::string> methods{
        Poco::Net::HTTPRequest::HTTP_GET,     Poco::Net::HTTPRequest::HTTP_HEAD,
        Poco::Net::HTTPRequest::HTTP_POST,    Poco::Net::HTTPRequest::HTTP_DELETE,
        Poco::Net::HTTPRequest::HTTP_OPTIONS, Poco::Net::HTTPRequest::HTTP_PATCH};
    return methods;
}

void sendWithoutBody(Poco::Net::HTTPServerResponse& response)
{
    response.setContentLength(0);
    response.send();
}

// Answers on the server thread, without the worker.
void sendError(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response,
               HTTPStatus status, const std::string& message)
{
    Net::HTTPEncoderDecoder coder(request, response);
    Command::HttpResponse::createError(status, message).send(response, coder, false);
}

void refuse(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response, HTTPStatus status,
            const std::string& message)
{
    // The server answers in the request's version, which may be none; and the rest of the bytes on the
    // connection cannot be told apart from the next request.
    LOG_WARNING("Refused request (" << request.getURI() << "): " << message);
    response.setVersion(Poco::Net::HTTPMessage::HTTP_1_1);
    response.setKeepAlive(false);
    sendError(request, response, status, message);
}

// What is left of the body would be read as the next request: the connection ends here.
void refuseBodyTooLarge(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response,
                        Net::HTTPEncoderDecoder& coder, const Net::BodyTooLargeException& exception)
{
    response.setKeepAlive(false);
    Command::HttpResponse::createError(HTTPResponse::HTTP_BAD_REQUEST, MSG_BODY_TOO_LARGE)
        .send(response, coder, false);
    LOG_WARNING("Request body too large (" << request.getURI() << "): " << exception.message());
}

bool isPreconditionFailed(const Poco::Net::HTTPRequest& request)
{
    return Net::HTTPCacheHandler::checkRequestHeader(request) == Net::HTTPCacheHandler::PRECONDITION_FAILED;
}

// Reads the body of the request into memory, or answers the request and returns false. A request that
// fails its precondition is left unread, for the worker to answer it so.
bool readBody(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response,
              std::size_t maxBodySize, std::optional<Net::BufferedServerRequest>& buffered)
{
    // An unread body, or the bytes that the strict chunk reader takes beyond the body, would be read as
    // the next request.
    const bool preconditionFailed = isPreconditionFailed(request);
    if (preconditionFailed || request.getChunkedTransferEncoding())
    {
        response.setKeepAlive(false);
    }
    if (preconditionFailed)
    {
        return true;
    }
    try
    {
        buffered.emplace(request, maxBodySize);
        return true;
    }
    catch (const Net::BodyTooLargeException& exception)
    {
        Net::HTTPEncoderDecoder coder(request, response);
        refuseBodyTooLarge(request, response, coder, exception);
    }
    catch (const Poco::TimeoutException&)
    {
        refuse(request, response, HTTPResponse::HTTP_REQUEST_TIMEOUT,
               Net::BufferedServerRequest::MSG_BODY_TIMED_OUT);
    }
    catch (const Poco::Net::MessageException& exception)
    {
        refuse(request, response, HTTPResponse::HTTP_BAD_REQUEST, exception.message());
    }
    return false;
}

} // namespace

HttpRequestHandlerBase::HttpRequestHandlerBase(Util::MessageSync& messageSync)
    : m_messageSync(messageSync)
{
    m_corsHandler.setAllowedMethods(allowedMethods());
}

HttpRequestHandlerBase::~HttpRequestHandlerBase() = default;

void HttpRequestHandlerBase::handleRequest(Poco::Net::HTTPServerRequest& request,
                                           Poco::Net::HTTPServerResponse& response)
{
    // An exchange that nobody answers ends as an internal error.
    response.setStatus(HTTPResponse::HTTP_INTERNAL_SERVER_ERROR);

    std::string fault;
    const HTTPStatus framing = Net::RequestFraming::check(request, fault);
    if (framing != HTTPResponse::HTTP_OK)
    {
        refuse(request, response, framing, fault);
        return;
    }

    // Before any allocation, so that a flooded worker costs this thread one check and an answer.
    if (m_messageSync.isCriticalQueueSizeReached())
    {
        sendError(request, response, HTTPResponse::HTTP_SERVICE_UNAVAILABLE, MSG_QUEUE_OVERFLOW);
        return;
    }

    // The body is read here, so that a client that stalls holds its own thread and never the worker.
    std::optional<Net::BufferedServerRequest> buffered;
    if (Net::BufferedServerRequest::hasBody(request))
    {
        if (!readBody(request, response, m_maxBodySize, buffered))
        {
            return;
        }
        // The worker may have filled up while the body came in.
        if (m_messageSync.isCriticalQueueSizeReached())
        {
            sendError(request, response, HTTPResponse::HTTP_SERVICE_UNAVAILABLE, MSG_QUEUE_OVERFLOW);
            return;
        }
    }

    Poco::SharedPtr<Poco::SynchronizedObject> event(new Poco::SynchronizedObject);
    auto* message = new RSIDataMessage(this, buffered ? *buffered : request, response, event);
    if (!m_messageSync.enqueueDataMessage(message, Util::MESSAGE_PRIO_NORMAL))
    {
        LOG_WARNING("handleRequest"
                    << " Could not enqueue message!");
        return;
    }
    if (event.isNull())
    {
        throw Poco::NullPointerException();
    }
    event->wait();
}

bool HttpRequestHandlerBase::checkSwapKey(Net::HTTPEncoderDecoder& /*coder*/,
                                          const Poco::Net::HTTPServerRequest& /*request*/,
                                          Poco::Net::HTTPServerResponse& /*response*/)
{
    return true;
}

void HttpRequestHandlerBase::processRequestSync(Poco::Net::HTTPServerRequest& request,
                                                Poco::Net::HTTPServerResponse& response)
{
    if (!m_corsHandler.handleRequest(request, response))
    {
        return;
    }
    LOG_INFO("Request from " << request.clientAddress().toString());

    Net::HTTPEncoderDecoder coder(request, response);
    if (!checkSwapKey(coder, request, response))
    {
        return;
    }

    if (isPreconditionFailed(request))
    {
        LOG_WARNING("HTTP Cache Requests are only allowed for GET and HEAD requests.");
        response.setStatusAndReason(HTTPResponse::HTTP_PRECONDITION_FAILED);
        sendWithoutBody(response);
        traceResponse(response);
        return;
    }

    Poco::SharedPtr<Command::HttpRequest> requestWithBody;
    try
    {
        requestWithBody = new Command::HttpRequest(request, coder, m_maxBodySize);
    }
    catch (const Net::BodyTooLargeException& exception)
    {
        refuseBodyTooLarge(request, response, coder, exception);
        return;
    }
    catch (const Poco::URISyntaxException&)
    {
        Command::HttpResponse::createError(HTTPResponse::HTTP_BAD_REQUEST, MSG_WRONG_URI_SYNTAX)
            .send(response, coder, false);
        LOG_WARNING("Failed to parse URI (" << request.getURI() << ")");
        return;
    }
    catch (...)
    {
        Command::HttpResponse::createError(HTTPResponse::HTTP_INTERNAL_SERVER_ERROR, "")
            .send(response, coder, false);
        LOG_WARNING("Unknown exception while parsing URI (" << request.getURI() << ")");
        return;
    }

    const Poco::URI uri(request.getURI());
    std::vector<std::string> pathSegments;
    uri.getPathSegments(pathSegments);
    Command::HttpResponse httpResponse;

    HTTPStatus status = HTTPResponse::HTTP_INTERNAL_SERVER_ERROR;
    try
    {
        status = dispatch(request, *requestWithBody, httpResponse, uri, pathSegments);
    }
    catch (const Poco::Exception& exception)
    {
        LOG_ERROR("Error in processRequest. Message: " << exception.displayText());
    }
    catch (const std::exception& exception)
    {
        LOG_ERROR("Error in processRequest. Message: " << exception.what());
    }
    catch (...)
    {
        LOG_ERROR("Unknown Error in processRequest");
    }

    httpResponse.setStatus(status);
    const std::string& method = request.getMethod();
    if (!Command::HttpResponse::isSuccess(status))
    {
        // An error answer carries its body, also to HEAD.
        if (!httpResponse.hasContent())
        {
            httpResponse = Command::HttpResponse::createError(status, "");
        }
        httpResponse.send(response, coder, false);
        return;
    }
    if (method == Poco::Net::HTTPRequest::HTTP_GET || method == Poco::Net::HTTPRequest::HTTP_HEAD)
    {
        httpResponse.renderBody();
        if (Net::OrviHttpCacheHandler::handleRequest(request, response, httpResponse) ==
            Net::HTTPCacheHandler::CONTENT_UNCHANGED)
        {
            // A length here would claim the length of the full answer, which 304 leaves out.
            response.send();
            traceResponse(response);
            return;
        }
        httpResponse.send(response, coder, method == Poco::Net::HTTPRequest::HTTP_HEAD);
        return;
    }
    if (!httpResponse.hasContent())
    {
        httpResponse = Command::HttpResponse::createStatusOk(status);
    }
    httpResponse.send(response, coder, false);
}

HTTPStatus HttpRequestHandlerBase::dispatch(Poco::Net::HTTPServerRequest& request,
                                            const Command::HttpRequest& requestWithBody,
                                            Command::HttpResponse& httpResponse, const Poco::URI& uri,
                                            const std::vector<std::string>& pathSegments)
{
    const std::string& method = request.getMethod();
    if (method == Poco::Net::HTTPRequest::HTTP_HEAD)
    {
        return processHeadRequest(Command::HttpRequest(request), httpResponse, uri, pathSegments);
    }
    if (method == Poco::Net::HTTPRequest::HTTP_GET)
    {
        return processGetRequest(Command::HttpRequest(request), httpResponse, uri, pathSegments);
    }
    if (method == Poco::Net::HTTPRequest::HTTP_DELETE)
    {
        // The body was read with the request, but a DELETE is judged by its address alone.
        return processDeleteRequest(Command::HttpRequest(request), httpResponse, uri, pathSegments);
    }
    if (method == Poco::Net::HTTPRequest::HTTP_POST)
    {
        return processPostRequest(requestWithBody, httpResponse, uri, pathSegments);
    }
    return HTTPResponse::HTTP_METHOD_NOT_ALLOWED;
}

void HttpRequestHandlerBase::traceResponse(const Poco::Net::HTTPServerResponse& response)
{
    if (!Logging::Log::IsLogLevelActive(Poco::Message::PRIO_TRACE))
    {
        return;
    }
    std::ostringstream headers;
    for (auto header = response.begin(); header != response.end(); ++header)
    {
        headers << (header == response.begin() ? "{" : ", ") << '"' << header->first << "\"=\""
                << header->second << '"';
    }
    if (response.begin() != response.end())
    {
        headers << '}';
    }
    LOG_TRACE("HTTP Response:\t" << headers.str());
}

} // namespace Orvi
