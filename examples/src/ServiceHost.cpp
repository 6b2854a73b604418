#include "ServiceHost.h"

#include "Http/HttpServer.h"
#include "Logging/Log.h"
#include "Logging/LogStream.h"
#include "SubscriptionHandling/SubscriptionLimits.h"

#include <Poco/AutoPtr.h>
#include <Poco/ConsoleChannel.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/PatternFormatter.h>
#include <Poco/ThreadPool.h>
#include <Poco/Timespan.h>

#include <csignal>
#include <memory>
#include <pthread.h>

namespace Orvi::Example
{

ServiceHost::ServiceHost()
    : m_worker(CRITICAL_QUEUE_SIZE)
{
    sigemptyset(&m_stopSignals);
    sigaddset(&m_stopSignals, SIGINT);
    sigaddset(&m_stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &m_stopSignals, nullptr);
}

Poco::UInt16 ServiceHost::listen(DBData::ServiceMap& services, Poco::UInt16 port)
{
    m_socket.bind(Poco::Net::SocketAddress("127.0.0.1", port), true);
    m_socket.listen(LISTEN_BACKLOG);
    const Poco::UInt16 listened = m_socket.address().port();
    for (auto& entry : services)
    {
        entry.second->setPort(listened);
    }
    return listened;
}

void ServiceHost::serve(Service::SubscriptionTrigger& trigger, const FactoryMaker& makeFactory,
                        const std::function<void()>& serving, const std::function<void()>& stopping)
{
    const Poco::UInt16 port = m_socket.address().port();
    Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
    params->setMaxThreads(MAX_SERVER_THREADS);
    params->setMaxQueued(MAX_QUEUED_CONNECTIONS);
    params->setTimeout(Poco::Timespan(TIMEOUT_SECONDS, 0));
    params->setKeepAlive(true);
    params->setKeepAliveTimeout(Poco::Timespan(KEEP_ALIVE_SECONDS, 0));
    params->setMaxKeepAliveRequests(MAX_KEEP_ALIVE_REQUESTS);
    Poco::ThreadPool pool(2, MAX_SERVER_THREADS);
    // Subscribers are served on the service's own threads; it goes before the worker, which it may wait for.
    auto subscriptions =
        std::make_unique<Service::SubscriptionService>(trigger, Service::SubscriptionLimits(MAX_SUBSCRIBERS));
    Net::HttpServer server(makeFactory(subscriptions.get()), pool, m_socket, params);
    const auto stopAll = [&]
    {
        server.stopAll(true);
        pool.joinAll();
        subscriptions.reset();
        m_worker.stop();
    };
    try
    {
        m_worker.start();
        server.start();
        if (serving)
        {
            serving();
        }
        LOG_INFO("Listening on http://127.0.0.1:" << port << "/");
        int signal = 0;
        sigwait(&m_stopSignals, &signal);
        LOG_INFO("Stopping on signal " << signal);
        if (stopping)
        {
            stopping();
        }
    }
    catch (...)
    {
        stopAll();
        throw;
    }
    stopAll();
}

void ServiceHost::configureLogging(const std::string& level)
{
    Poco::AutoPtr<Poco::PatternFormatter> formatter(new Poco::PatternFormatter("%t"));
    Poco::AutoPtr<Poco::FormattingChannel> channel(
        new Poco::FormattingChannel(formatter, new Poco::ConsoleChannel));
    Logging::Log::Logger().setChannel(channel);
    Logging::Log::SetLogLevel(static_cast<Poco::Message::Priority>(Poco::Logger::parseLevel(level)), "");
}

int ServiceHost::refuse(const std::string& program, const Poco::Exception& fault, const std::string& usage,
                        std::ostream& err)
{
    err << program << ": " << fault.message() << "\n" << usage;
    return EXIT_USAGE;
}

int ServiceHost::run(const std::string& program, const std::string& logLevel,
                     const std::function<void(ServiceHost&)>& serve, std::ostream& err)
{
    ServiceHost host;
    configureLogging(logLevel);
    try
    {
        serve(host);
        return 0;
    }
    catch (const Poco::Exception& fault)
    {
        err << program << ": " << fault.displayText() << "\n";
        return EXIT_FAILURE_TO_SERVE;
    }
}

} // namespace Orvi::Example
