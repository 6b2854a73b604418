#pragma once

#include <Poco/BasicEvent.h>
#include <Poco/Mutex.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/HTTPServerSession.h>
#include <Poco/Net/TCPServerConnection.h>
#include <Poco/Timespan.h>

#include <atomic>
#include <functional>
#include <string>

namespace Orvi::Net
{

/// Serves the requests of one connection, one after the other, with the handlers of the factory. Every
/// request gets an answer: one whose head cannot be read or whose Content-Length is not a number is
/// answered 400, one whose head stalls beyond the time-out 408, and the connection closed. While other
/// connections wait for a server thread, each answer closes its connection, and a connection that is
/// silent, before its first request or between two, gives its thread up within IDLE_SLICE, so that a
/// few busy or silent clients cannot keep the others waiting.
class HttpServerConnection : public Poco::Net::TCPServerConnection
{
public:
    static const std::string MSG_MALFORMED_HEAD;
    /// "malformed request head"
    static const std::string MSG_HEAD_TIMED_OUT;
    /// "request head timed out"
    static const std::string MSG_NO_HANDLER;
    /// "no handler for the request"

    HttpServerConnection(const Poco::Net::StreamSocket& socket, Poco::Net::HTTPServerParams::Ptr params,
                         Poco::Net::HTTPRequestHandlerFactory::Ptr factory,
                         Poco::BasicEvent<const bool>& serverStopped, std::function<bool()> othersWaiting);
    /// serverStopped must outlive the connection; othersWaiting tells whether connections wait for a
    /// thread of the server.

    ~HttpServerConnection() override;

    HttpServerConnection(const HttpServerConnection&) = delete;
    HttpServerConnection& operator=(const HttpServerConnection&) = delete;

    void run() override;

    static const Poco::Timespan IDLE_SLICE;
    /// How often a connection that waits for its first or next request looks for connections waiting
    /// for a thread: 100 ms.

private:
    bool awaitRequest(Poco::Net::HTTPServerSession& session, bool first);
    /// Waits for the connection's first or next request; false when the connection is to end.

    bool serve(Poco::Net::HTTPServerSession& session, Poco::Net::HTTPServerRequest& request,
               Poco::Net::HTTPServerResponse& response);
    /// Lets a handler answer the request; false when the connection is to end.

    void onServerStopped(const bool& abortCurrent);

    Poco::Net::HTTPServerParams::Ptr m_params;
    Poco::Net::HTTPRequestHandlerFactory::Ptr m_factory;
    Poco::BasicEvent<const bool>& m_serverStopped;
    std::function<bool()> m_othersWaiting;
    std::atomic<bool> m_stopped{false};
    Poco::FastMutex m_mutex;
    /// Held while a request is served.
    Poco::FastMutex m_socketMutex;
    /// Guards the connection's socket between stopping and a handler's taking it over.
};

} // namespace Orvi::Net
