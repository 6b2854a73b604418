#pragma once

#include "Http/HttpServer.h"

#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/ThreadPool.h>
#include <Poco/Timespan.h>
#include <Poco/Types.h>

#include <memory>

namespace ServiceDB::Test
{

/// A real HTTP server on 127.0.0.1, on a port the OS picks, for the life of the object. Its pool has
/// room for every connection a test keeps open, so no client waits for a thread.
class LocalHttpServer
{
public:
    static constexpr int MAX_THREADS = 8;

    explicit LocalHttpServer(Poco::Net::HTTPRequestHandlerFactory::Ptr factory,
                             Poco::Timespan timeout = Poco::Timespan(60, 0));
    /// The time-out bounds how long the server waits for a client that stalls.
    ~LocalHttpServer();

    LocalHttpServer(const LocalHttpServer&) = delete;
    LocalHttpServer& operator=(const LocalHttpServer&) = delete;

    Poco::UInt16 port() const { return m_port; }

private:
    Poco::ThreadPool m_pool;
    Poco::UInt16 m_port;
    std::unique_ptr<Orvi::Net::HttpServer> m_server;
};

} // namespace ServiceDB::Test
