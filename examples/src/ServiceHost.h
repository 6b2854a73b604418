#pragma once

#include "JSONDataCache/DBData/Service.h"
#include "Message/MessageSync.h"
#include "SubscriptionHandling/SubscriptionService.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Types.h>

#include <csignal>
#include <cstddef>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace Orvi::Example
{

/// The frame of a process that serves its services on 127.0.0.1: command line, log, one worker, an
/// HTTP server with the WebSocket subscriptions on the same port, and an orderly stop on SIGINT or
/// SIGTERM.
class ServiceHost
{
public:
    static constexpr int EXIT_USAGE = 64;
    /// A faulty command line.
    static constexpr int EXIT_FAILURE_TO_SERVE = 1;

    // Worker queue and server pool are sized together: every busy server thread holds one waiting
    // message, so the queue counts as full only well above the number of threads.
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 64;
    static constexpr int MAX_SERVER_THREADS = 16;
    // Connections waiting for a server thread. While any wait, each answer closes its connection, so
    // they are served in turn; a connection beyond these is answered 503.
    static constexpr int MAX_QUEUED_CONNECTIONS = 256;
    // Connections the system holds until the server takes them; a burst beyond waits for the client's
    // retry of its connect.
    static constexpr int LISTEN_BACKLOG = 1024;
    // How long a client may stall within its request, head or body, before it is answered 408 or let go.
    static constexpr int TIMEOUT_SECONDS = 10;
    static constexpr int KEEP_ALIVE_SECONDS = 5;
    static constexpr int MAX_KEEP_ALIVE_REQUESTS = 100;
    static constexpr std::size_t MAX_SUBSCRIBERS = 1000;

    using FactoryMaker = std::function<Poco::Net::HTTPRequestHandlerFactory*(Service::SubscriptionService*)>;
    /// Makes the factory of the server's handlers; it hands upgrades to the subscription service given.

    template <typename Options>
    static int main(const std::string& program, const std::vector<std::string>& arguments,
                    const std::function<Options(const std::vector<std::string>&)>& parse,
                    const std::function<void(const Options&, ServiceHost&)>& serve,
                    std::ostream& out = std::cout, std::ostream& err = std::cerr);
    /// The whole process after its program name: a faulty command line is answered with the fault and
    /// Options::usage() on err and EXIT_USAGE, --help with the usage on out and 0. Otherwise the log is
    /// set to the options' logLevel and serve is called with a host: 0 once it returns,
    /// EXIT_FAILURE_TO_SERVE with a line on err when it raises a Poco::Exception.

    ServiceHost();
    /// Blocks SIGINT and SIGTERM in the calling thread before any thread of the process starts, so that
    /// every thread inherits the mask and only serve() takes them. The mask stays when the host goes.

    ServiceHost(const ServiceHost&) = delete;
    ServiceHost& operator=(const ServiceHost&) = delete;

    Poco::UInt16 listen(DBData::ServiceMap& services, Poco::UInt16 port);
    /// Listens on 127.0.0.1 at the port, 0 letting the system pick one, and gives every service the
    /// port listened on, since a service is answered on its own port only. Gives that port.

    Util::MessageSync& worker() { return m_worker; }
    /// The queue of the process's one worker thread; serve() starts it.

    void serve(Service::SubscriptionTrigger& trigger, const FactoryMaker& makeFactory,
               const std::function<void()>& serving = {}, const std::function<void()>& stopping = {});
    /// Starts the worker and serves HTTP and subscriptions on the port listened on until SIGINT or
    /// SIGTERM; calls serving once the server runs and stopping once the signal has come. Then stops the
    /// server, the subscription service and the worker, in this order, also when something raises.

private:
    static void configureLogging(const std::string& level);

    static int refuse(const std::string& program, const Poco::Exception& fault, const std::string& usage,
                      std::ostream& err);
    /// The answer to a faulty command line.

    static int run(const std::string& program, const std::string& logLevel,
                   const std::function<void(ServiceHost&)>& serve, std::ostream& err);

    sigset_t m_stopSignals;
    Util::MessageSync m_worker;
    Poco::Net::ServerSocket m_socket;
};

template <typename Options>
int ServiceHost::main(const std::string& program, const std::vector<std::string>& arguments,
                      const std::function<Options(const std::vector<std::string>&)>& parse,
                      const std::function<void(const Options&, ServiceHost&)>& serve, std::ostream& out,
                      std::ostream& err)
{
    Options options;
    try
    {
        options = parse(arguments);
    }
    catch (const Poco::Exception& fault)
    {
        return refuse(program, fault, Options::usage(), err);
    }
    if (options.help)
    {
        out << Options::usage();
        return 0;
    }
    return run(
        program, options.logLevel, [&](ServiceHost& host) { serve(options, host); }, err);
}

} // namespace Orvi::Example
