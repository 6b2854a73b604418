#pragma once

#include "Http/HttpServerConnectionFactory.h"
#include "Http/OverflowConnectionFilter.h"

#include <Poco/AutoPtr.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/TCPServer.h>
#include <Poco/SharedPtr.h>
#include <Poco/ThreadPool.h>

namespace Orvi::Net
{

/// An HTTP server that answers every connection it accepts. Requests are served by the handlers of the
/// factory on the threads of the pool, as many at once as the parameters' maximum of threads. A
/// connection beyond the parameters' maximum of queued connections is answered 503 "connection queue
/// overflow"; a request whose head cannot be read is answered 400; and while connections wait for a
/// thread, each answer closes its connection, so that every waiting client is served in turn.
class HttpServer : public Poco::Net::TCPServer
{
public:
    HttpServer(Poco::Net::HTTPRequestHandlerFactory::Ptr handlers, Poco::ThreadPool& threadPool,
               const Poco::Net::ServerSocket& socket, Poco::Net::HTTPServerParams::Ptr params);
    /// Listens on the socket once started; the pool must outlive the server.

    ~HttpServer() override;

    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    void stopAll(bool abortCurrent = false);
    /// Stops accepting and ends the connections: at once with abortCurrent, else each after its
    /// current request.

private:
    HttpServer(Poco::SharedPtr<HttpServerConnectionFactory> connections, Poco::ThreadPool& threadPool,
               const Poco::Net::ServerSocket& socket, Poco::Net::HTTPServerParams::Ptr params);

    Poco::SharedPtr<HttpServerConnectionFactory> m_connections;
    Poco::AutoPtr<OverflowConnectionFilter> m_overflow;
};

} // namespace Orvi::Net
