// A POCO HTTP server that answers every request with one fixed JSON body read from a file.
// It does no work per request beyond what POCO itself does, so its rate is the ceiling that any
// server built on the same POCO HTTP stack can reach on this machine.
//
// Usage: fixed-body-server PORT BODY_FILE [THREADS]
// Listens on 127.0.0.1 only and runs until SIGINT or SIGTERM.

#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServer.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/NumberParser.h>
#include <Poco/ThreadPool.h>

#include <csignal>
#include <fstream>
#include <iostream>
#include <limits>
#include <pthread.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace
{

const std::string CONTENT_TYPE_JSON = "application/json; charset=utf-8";

class FixedBodyHandler : public Poco::Net::HTTPRequestHandler
/// Sends the shared body; the handler is made per request, so it only keeps a reference.
{
public:
    explicit FixedBodyHandler(const std::string& body)
        : m_body(body)
    {
    }

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override
    {
        // The request body is drained so that a keep-alive connection stays usable.
        request.stream().ignore(std::numeric_limits<std::streamsize>::max());
        response.setStatus(Poco::Net::HTTPResponse::HTTP_OK);
        response.setContentType(CONTENT_TYPE_JSON);
        response.sendBuffer(m_body.data(), m_body.size());
    }

private:
    const std::string& m_body;
};

class FixedBodyHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
/// Owns the body for the server's whole life.
{
public:
    explicit FixedBodyHandlerFactory(std::string body)
        : m_body(std::move(body))
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new FixedBodyHandler(m_body);
    }

private:
    const std::string m_body;
};

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
    {
        throw std::runtime_error("cannot read " + path);
    }
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3 || argc > 4)
    {
        std::cerr << "usage: " << argv[0] << " PORT BODY_FILE [THREADS]\n";
        return 2;
    }
    try
    {
        const auto port = static_cast<Poco::UInt16>(Poco::NumberParser::parseUnsigned(argv[1]));
        const int threads = argc == 4 ? Poco::NumberParser::parse(argv[3]) : 16;

        // Block the stop signals before any thread starts, so that only sigwait below sees them.
        sigset_t stopSignals;
        sigemptyset(&stopSignals);
        sigaddset(&stopSignals, SIGINT);
        sigaddset(&stopSignals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

        Poco::Net::ServerSocket socket(Poco::Net::SocketAddress("127.0.0.1", port));
        Poco::Net::HTTPServerParams::Ptr params = new Poco::Net::HTTPServerParams;
        params->setMaxThreads(threads);
        params->setKeepAlive(true);
        Poco::ThreadPool pool(2, threads);
        Poco::Net::HTTPServer server(new FixedBodyHandlerFactory(readFile(argv[2])), pool, socket, params);
        server.start();
        std::cout << "fixed-body-server listening on 127.0.0.1:" << port << std::endl;

        int received = 0;
        sigwait(&stopSignals, &received);
        server.stopAll(true);
        pool.joinAll();
    }
    catch (const Poco::Exception& ex)
    {
        std::cerr << ex.displayText() << '\n';
        return 1;
    }
    catch (const std::exception& ex)
    {
        std::cerr << ex.what() << '\n';
        return 1;
    }
    return 0;
}
