// An HTTP server on the library's own server (Orvi::Net::HttpServer over POCO) that answers every
// request with one fixed JSON body read from a file. It does no work per request beyond what that
// stack does, so its rate is the ceiling that the example, served the same way, can reach here.
//
// With --hand-off the server threads do what ours do: queue the exchange for one worker thread, which
// sends the answer, and wait until it has. Its rate is the ceiling of that threading model.
//
// Usage: fixed-body-server [--hand-off] PORT BODY_FILE [THREADS]
// Listens on 127.0.0.1 only and runs until SIGINT or SIGTERM.

#include "Http/HttpServer.h"

#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/NumberParser.h>
#include <Poco/SynchronizedObject.h>
#include <Poco/ThreadPool.h>

#include <condition_variable>
#include <csignal>
#include <deque>
#include <fstream>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace
{

const std::string CONTENT_TYPE_JSON = "application/json; charset=utf-8";

void sendBody(const std::string& body, Poco::Net::HTTPServerRequest& request,
              Poco::Net::HTTPServerResponse& response)
{
    // The request body is drained so that a keep-alive connection stays usable.
    request.stream().ignore(std::numeric_limits<std::streamsize>::max());
    response.setStatus(Poco::Net::HTTPResponse::HTTP_OK);
    response.setContentType(CONTENT_TYPE_JSON);
    response.sendBuffer(body.data(), body.size());
}

class Worker
/// One thread that runs queued jobs in order, as the worker of a service does.
{
public:
    Worker()
        : m_thread([this] { run(); })
    {
    }

    ~Worker()
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_stopping = true;
        }
        m_wakeUp.notify_one();
        m_thread.join();
    }

    /// Runs the job on the worker and returns when it has run.
    void runAndWait(const std::function<void()>& job)
    {
        Poco::SynchronizedObject done;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_jobs.emplace_back(
                [&job, &done]
                {
                    job();
                    done.notify();
                });
        }
        m_wakeUp.notify_one();
        done.wait();
    }

private:
    void run()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;)
        {
            m_wakeUp.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
            if (m_jobs.empty())
            {
                return;
            }
            const std::function<void()> job = std::move(m_jobs.front());
            m_jobs.pop_front();
            lock.unlock();
            job();
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    std::deque<std::function<void()>> m_jobs;
    bool m_stopping = false;
    std::thread m_thread;
};

class FixedBodyHandler : public Poco::Net::HTTPRequestHandler
/// Sends the shared body, itself or through the worker; made per request, so it only keeps references.
{
public:
    FixedBodyHandler(const std::string& body, Worker* worker)
        : m_body(body)
        , m_worker(worker)
    {
    }

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override
    {
        if (m_worker == nullptr)
        {
            sendBody(m_body, request, response);
            return;
        }
        m_worker->runAndWait([this, &request, &response] { sendBody(m_body, request, response); });
    }

private:
    const std::string& m_body;
    Worker* m_worker;
};

class FixedBodyHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
/// Owns the body and the worker, if any, for the server's whole life.
{
public:
    FixedBodyHandlerFactory(std::string body, bool handOff)
        : m_body(std::move(body))
        , m_worker(handOff ? std::make_unique<Worker>() : nullptr)
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new FixedBodyHandler(m_body, m_worker.get());
    }

private:
    const std::string m_body;
    const std::unique_ptr<Worker> m_worker;
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
    const bool handOff = argc > 1 && std::string(argv[1]) == "--hand-off";
    const int first = handOff ? 2 : 1;
    if (argc < first + 2 || argc > first + 3)
    {
        std::cerr << "usage: " << argv[0] << " [--hand-off] PORT BODY_FILE [THREADS]\n";
        return 2;
    }
    try
    {
        const auto port = static_cast<Poco::UInt16>(Poco::NumberParser::parseUnsigned(argv[first]));
        const int threads = argc == first + 3 ? Poco::NumberParser::parse(argv[first + 2]) : 16;

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
        Orvi::Net::HttpServer server(new FixedBodyHandlerFactory(readFile(argv[first + 1]), handOff), pool,
                                     socket, params);
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
