#include "Http/HttpServer.h"

#include <utility>

namespace Orvi::Net
{

HttpServer::HttpServer(Poco::Net::HTTPRequestHandlerFactory::Ptr handlers, Poco::ThreadPool& threadPool,
                       const Poco::Net::ServerSocket& socket, Poco::Net::HTTPServerParams::Ptr params)
    : HttpServer(new HttpServerConnectionFactory(params, std::move(handlers),
                                                 [this] { return queuedConnections() > 0; }),
                 threadPool, socket, params)
{
}

HttpServer::HttpServer(Poco::SharedPtr<HttpServerConnectionFactory> connections, Poco::ThreadPool& threadPool,
                       const Poco::Net::ServerSocket& socket, Poco::Net::HTTPServerParams::Ptr params)
    : Poco::Net::TCPServer(connections, threadPool, socket, params)
    , m_connections(connections)
    , m_overflow(new OverflowConnectionFilter(*this))
{
    setConnectionFilter(m_overflow);
}

HttpServer::~HttpServer()
{
    try
    {
        stop();
        m_overflow->stop();
    }
    catch (...)
    {
        // A destructor must not throw.
    }
}

void HttpServer::stopAll(bool abortCurrent)
{
    stop();
    m_overflow->stop();
    m_connections->serverStopped(this, abortCurrent);
}

} // namespace Orvi::Net
