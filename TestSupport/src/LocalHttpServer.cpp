#include "TestSupport/LocalHttpServer.h"

#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Timespan.h>

namespace ServiceDB::Test
{

LocalHttpServer::LocalHttpServer(Poco::Net::HTTPRequestHandlerFactory::Ptr factory, Poco::Timespan timeout)
    : m_pool(1, MAX_THREADS)
    , m_port(0)
{
    Poco::Net::ServerSocket socket(Poco::Net::SocketAddress("127.0.0.1", 0));
    m_port = socket.address().port();

    Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
    params->setMaxThreads(MAX_THREADS);
    params->setMaxQueued(16);
    params->setTimeout(timeout);
    params->setKeepAlive(true);
    params->setKeepAliveTimeout(Poco::Timespan(2, 0));

    m_server = std::make_unique<Orvi::Net::HttpServer>(factory, m_pool, socket, params);
    m_server->start();
}

LocalHttpServer::~LocalHttpServer()
{
    m_server->stopAll(true);
    m_pool.joinAll();
}

} // namespace ServiceDB::Test
