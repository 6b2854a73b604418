#include "Http/HttpServerConnection.h"

#include "Http/ErrorAnswer.h"
#include "Http/RequestFraming.h"
#include "Logging/LogStream.h"

#include <Poco/Delegate.h>
#include <Poco/Exception.h>
#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPServerRequestImpl.h>
#include <Poco/Net/HTTPServerResponseImpl.h>
#include <Poco/Net/HTTPServerSession.h>
#include <Poco/Net/NetException.h>
#include <Poco/Timestamp.h>

#include <memory>
#include <optional>
#include <ostream>
#include <utility>

namespace Orvi::Net
{

using Poco::Net::HTTPResponse;

const std::string HttpServerConnection::MSG_MALFORMED_HEAD = "malformed request head";
const std::string HttpServerConnection::MSG_HEAD_TIMED_OUT = "request head timed out";
const std::string HttpServerConnection::MSG_NO_HANDLER = "no handler for the request";
const Poco::Timespan HttpServerConnection::IDLE_SLICE(0, 100000);

namespace
{

/// A session that tells whether bytes of the next request are in its buffer already.
class ServerSession : public Poco::Net::HTTPServerSession
{
public:
    using Poco::Net::HTTPServerSession::HTTPServerSession;

    bool hasBufferedBytes() const { return buffered() > 0; }
};

bool isTimeout(const Poco::Exception* exception)
{
    return dynamic_cast<const Poco::TimeoutException*>(exception) != nullptr;
}

bool isTimeout(const Poco::Exception& exception)
{
    return isTimeout(&exception);
}

void sendRefusal(Poco::Net::HTTPServerSession& session, HTTPResponse::HTTPStatus status,
                 const std::string& message)
{
    session.setKeepAlive(false);
    try
    {
        Poco::Net::HTTPServerResponseImpl response(session);
        const std::string body = ErrorAnswer::prepare(response, status, message);
        response.send() << body << std::flush;
    }
    catch (const Poco::Exception&)
    {
        // The client is gone: nobody is left to answer.
    }
}

// For a request whose head could not be read: its address is unknown.
void refuse(Poco::Net::HTTPServerSession& session, HTTPResponse::HTTPStatus status,
            const std::string& message)
{
    try
    {
        LOG_WARNING("Refused request from " << session.clientAddress().toString() << ": " << message);
    }
    catch (const Poco::Exception&)
    {
        // The client is gone; the answer below fails quietly as well.
    }
    sendRefusal(session, status, message);
}

} // namespace

HttpServerConnection::HttpServerConnection(const Poco::Net::StreamSocket& socket,
                                           Poco::Net::HTTPServerParams::Ptr params,
                                           Poco::Net::HTTPRequestHandlerFactory::Ptr factory,
                                           Poco::BasicEvent<const bool>& serverStopped,
                                           std::function<bool()> othersWaiting)
    : Poco::Net::TCPServerConnection(socket)
    , m_params(std::move(params))
    , m_factory(std::move(factory))
    , m_serverStopped(serverStopped)
    , m_othersWaiting(std::move(othersWaiting))
{
    m_serverStopped += Poco::delegate(this, &HttpServerConnection::onServerStopped);
}

HttpServerConnection::~HttpServerConnection()
{
    try
    {
        m_serverStopped -= Poco::delegate(this, &HttpServerConnection::onServerStopped);
    }
    catch (...)
    {
        // A destructor must not throw; the event is gone with the server anyway.
    }
}

void HttpServerConnection::run()
{
    ServerSession session(socket(), m_params);
    bool first = true;
    while (!m_stopped && awaitRequest(session, first))
    {
        first = false;
        Poco::FastMutex::ScopedLock lock(m_mutex);
        if (m_stopped)
        {
            break;
        }
        Poco::Net::HTTPServerResponseImpl response(session);
        std::optional<Poco::Net::HTTPServerRequestImpl> request;
        try
        {
            request.emplace(response, session, m_params);
        }
        catch (const Poco::SyntaxException&)
        {
            // Only a Content-Length that is not a number fails this way: where the body ends is unknown.
            refuse(session, HTTPResponse::HTTP_BAD_REQUEST, RequestFraming::MSG_MALFORMED_CONTENT_LENGTH);
            break;
        }
        catch (const Poco::Exception& exception)
        {
            // The head reader may end a head that stalls as if it ended there; the session keeps the cause.
            if (isTimeout(exception) || isTimeout(session.networkException()))
            {
                refuse(session, HTTPResponse::HTTP_REQUEST_TIMEOUT, MSG_HEAD_TIMED_OUT);
            }
            else if (dynamic_cast<const Poco::Net::MessageException*>(&exception) != nullptr &&
                     dynamic_cast<const Poco::Net::NoMessageException*>(&exception) == nullptr)
            {
                refuse(session, HTTPResponse::HTTP_BAD_REQUEST, MSG_MALFORMED_HEAD);
            }
            // Otherwise the client went away, or closed before it sent anything.
            break;
        }
        // Checked for every handler, a WebSocket upgrade's too, before any of them answers in the
        // request's version.
        std::string fault;
        const HTTPResponse::HTTPStatus framing = RequestFraming::check(*request, fault);
        if (framing != HTTPResponse::HTTP_OK)
        {
            LOG_WARNING("Refused request (" << request->getURI() << "): " << fault);
            sendRefusal(session, framing, fault);
            break;
        }
        if (!serve(session, *request, response))
        {
            break;
        }
        if (!session.connected())
        {
            // A handler took the socket over, as a WebSocket upgrade does: stopping the server must leave
            // it alone.
            Poco::FastMutex::ScopedLock socketLock(m_socketMutex);
            socket() = Poco::Net::StreamSocket();
            break;
        }
    }
}

bool HttpServerConnection::awaitRequest(Poco::Net::HTTPServerSession& session, bool first)
{
    // A handler that took the connection over, as a WebSocket upgrade does, has detached the session's
    // socket.
    if (!first && (!session.getKeepAlive() || !session.connected()))
    {
        return false;
    }
    // Waits in slices, so that a connection waiting for a thread takes over this one's while it is silent:
    // a client that connected and sends nothing, or a kept-alive one between its requests.
    const Poco::Timespan limit = first ? m_params->getTimeout() : m_params->getKeepAliveTimeout();
    Poco::Timespan waited;
    while (!static_cast<ServerSession&>(session).hasBufferedBytes() &&
           !session.socket().poll(IDLE_SLICE, Poco::Net::Socket::SELECT_READ))
    {
        waited += IDLE_SLICE;
        if (m_stopped || m_othersWaiting() || waited >= limit)
        {
            return false;
        }
    }
    return session.hasMoreRequests();
}

bool HttpServerConnection::serve(Poco::Net::HTTPServerSession& session, Poco::Net::HTTPServerRequest& request,
                                 Poco::Net::HTTPServerResponse& response)
{
    response.setDate(Poco::Timestamp());
    response.setVersion(request.getVersion());
    response.setKeepAlive(m_params->getKeepAlive() && request.getKeepAlive() && session.canKeepAlive() &&
                          !m_othersWaiting());
    if (!m_params->getSoftwareVersion().empty())
    {
        response.set("Server", m_params->getSoftwareVersion());
    }
    try
    {
        const std::unique_ptr<Poco::Net::HTTPRequestHandler> handler(
            m_factory->createRequestHandler(request));
        if (!handler)
        {
            refuse(session, HTTPResponse::HTTP_NOT_IMPLEMENTED, MSG_NO_HANDLER);
            return false;
        }
        if (request.getExpectContinue() && response.getStatus() == HTTPResponse::HTTP_OK)
        {
            response.sendContinue();
        }
        handler->handleRequest(request, response);
    }
    catch (const Poco::Exception& exception)
    {
        if (session.networkException())
        {
            return false;
        }
        LOG_WARNING("Request failed (" << request.getURI() << "): " << exception.displayText());
        if (!response.sent())
        {
            refuse(session, HTTPResponse::HTTP_INTERNAL_SERVER_ERROR, "");
        }
        return false;
    }
    session.setKeepAlive(m_params->getKeepAlive() && response.getKeepAlive() && session.canKeepAlive());
    return true;
}

void HttpServerConnection::onServerStopped(const bool& abortCurrent)
{
    m_stopped = true;
    // Without abortCurrent the request being served is finished first.
    std::optional<Poco::FastMutex::ScopedLock> requestLock;
    if (!abortCurrent)
    {
        requestLock.emplace(m_mutex);
    }
    Poco::FastMutex::ScopedLock socketLock(m_socketMutex);
    try
    {
        if (socket().impl()->initialized())
        {
            socket().shutdown();
        }
    }
    catch (const Poco::Exception&)
    {
        // The client may have closed the connection already.
    }
}

} // namespace Orvi::Net
