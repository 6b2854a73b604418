#include "SubscriptionHandling/SubscriptionService.h"

#include "Logging/LogStream.h"
#include "SubscriptionHandling/SubscriptionConnection.h"

#include <Poco/Exception.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/WebSocket.h>

#include <exception>
#include <ostream>

namespace Orvi::Service
{

const std::string SubscriptionService::TEXT_TOO_MANY_CONNECTIONS = "too many subscription connections";

SubscriptionService::SubscriptionService(SubscriptionTrigger& trigger, const SubscriptionLimits& limits)
    : m_trigger(trigger)
    , m_limits(limits)
    , m_dispatcher(trigger, limits.senderThreads())
    , m_stopping(false)
    , m_admitted(0)
{
    m_trigger.setChangeSink(this);
}

SubscriptionService::~SubscriptionService()
{
    // First, so that no change is reported into a service that is going away.
    m_trigger.setChangeSink(nullptr);
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_stopping = true;
        for (const auto& served : m_connections)
        {
            served.second.connection->goAway();
        }
        m_changed.wait(lock, [this] { return m_admitted == 0; });
    }
    reapFinished();
    m_dispatcher.stop();
    m_watcher.stop();
}

void SubscriptionService::addressChanged(Scope scope, const std::string& service, const std::string& resource,
                                         const std::string& element)
{
    m_dispatcher.addressChanged(scope, service, resource, element);
}

void SubscriptionService::accept(Poco::Net::HTTPServerRequest& request,
                                 Poco::Net::HTTPServerResponse& response)
{
    reapFinished();
    std::size_t open = 0;
    bool admitted = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        open = m_admitted;
        admitted = !m_stopping && m_admitted < m_limits.maxConnections();
        if (admitted)
        {
            ++m_admitted;
        }
    }
    if (!admitted)
    {
        LOG_WARNING("Refused subscription connection of " << request.clientAddress().toString() << ": "
                                                          << open << " connections open");
        refuse(response, Poco::Net::HTTPResponse::HTTP_SERVICE_UNAVAILABLE, TEXT_TOO_MANY_CONNECTIONS);
        return;
    }

    std::shared_ptr<SubscriptionConnection> connection;
    try
    {
        // The handshake detaches the socket from the HTTP session, which leaves it open when the handler
        // returns: the connection lives on with its own reader thread.
        const Poco::Net::WebSocket socket(request, response);
        connection =
            std::make_shared<SubscriptionConnection>(socket, m_trigger, m_dispatcher, m_watcher, m_limits);
    }
    catch (const Poco::Net::WebSocketException& e)
    {
        release();
        LOG_DEBUG("Refused subscription handshake of " << request.clientAddress().toString() << ": "
                                                       << e.displayText());
        if (e.code() == Poco::Net::WebSocket::WS_ERR_HANDSHAKE_UNSUPPORTED_VERSION)
        {
            // Tells the client which version to retry with.
            response.set("Sec-WebSocket-Version", Poco::Net::WebSocket::WEBSOCKET_VERSION);
            refuse(response, Poco::Net::HTTPResponse::HTTP_UPGRADE_REQUIRED, e.message());
            return;
        }
        refuse(response, Poco::Net::HTTPResponse::HTTP_BAD_REQUEST, e.message());
        return;
    }
    catch (const Poco::Exception& e)
    {
        // The client has gone during the handshake; there is nobody to answer.
        release();
        LOG_DEBUG("Subscription handshake of " << request.clientAddress().toString()
                                               << " failed: " << e.displayText());
        return;
    }
    start(connection);
}

bool SubscriptionService::waitForConnectionCount(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [this, count] { return m_connections.size() == count; });
}

std::size_t SubscriptionService::connectionCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connections.size();
}

std::size_t SubscriptionService::subscriptionCount() const
{
    return m_dispatcher.subscriptionCount();
}

std::uint64_t SubscriptionService::fetchCount() const
{
    return m_dispatcher.fetchCount();
}

void SubscriptionService::start(const std::shared_ptr<SubscriptionConnection>& connection)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_stopping)
        {
            try
            {
                // Under the lock, so that the reader finds itself registered when it ends.
                Served& served = m_connections[connection.get()];
                served.connection = connection;
                served.reader = std::thread(&SubscriptionService::run, this, connection);
                m_changed.notify_all();
                return;
            }
            catch (const std::exception& e)
            {
                m_connections.erase(connection.get());
                LOG_ERROR("No thread for the subscription connection of "
                          << connection->peerAddress().toString() << ": " << e.what());
            }
        }
    }
    release();
    connection->close();
}

void SubscriptionService::run(const std::shared_ptr<SubscriptionConnection>& connection)
{
    connection->serve();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_connections.find(connection.get());
        m_finished.push_back(std::move(found->second.reader));
        m_connections.erase(found);
        --m_admitted;
        m_changed.notify_all();
    }
    // Counted out before the socket closes: a client that sees its connection end may connect again.
    connection->close();
}

void SubscriptionService::release()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    --m_admitted;
    m_changed.notify_all();
}

void SubscriptionService::reapFinished()
{
    std::vector<std::thread> finished;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        finished.swap(m_finished);
    }
    for (std::thread& reader : finished)
    {
        reader.join();
    }
}

void SubscriptionService::refuse(Poco::Net::HTTPServerResponse& response,
                                 Poco::Net::HTTPResponse::HTTPStatus status, const std::string& text)
{
    if (response.sent())
    {
        return;
    }
    response.setStatusAndReason(status);
    response.setKeepAlive(false);
    response.setContentType("text/plain");
    response.setContentLength(static_cast<std::streamsize>(text.size()));
    response.send() << text;
}

} // namespace Orvi::Service
