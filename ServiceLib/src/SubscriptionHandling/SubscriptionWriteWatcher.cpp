#include "SubscriptionHandling/SubscriptionWriteWatcher.h"

#include "Logging/LogStream.h"

#include <Poco/Exception.h>
#include <Poco/Timespan.h>

#include <exception>

namespace Orvi::Service
{

namespace
{

// PollSet cannot be woken: a stop waits for at most this long while sockets are watched.
const Poco::Timespan POLL_TICK(0, 50 * 1000);

} // namespace

SubscriptionWriteWatcher::SubscriptionWriteWatcher()
    : m_stopping(false)
    , m_thread(&SubscriptionWriteWatcher::run, this)
{
}

SubscriptionWriteWatcher::~SubscriptionWriteWatcher()
{
    stop();
}

void SubscriptionWriteWatcher::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
    {
        m_thread.join();
    }
}

void SubscriptionWriteWatcher::watch(const Poco::Net::Socket& socket, const WritableHandler& onWritable)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const bool known = m_handlers.count(socket) != 0;
        m_handlers[socket] = onWritable;
        if (!known)
        {
            m_pollSet.add(socket, Poco::Net::PollSet::POLL_WRITE | Poco::Net::PollSet::POLL_ERROR);
        }
    }
    m_wake.notify_all();
}

void SubscriptionWriteWatcher::unwatch(const Poco::Net::Socket& socket)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_handlers.erase(socket) != 0)
    {
        m_pollSet.remove(socket);
    }
}

std::size_t SubscriptionWriteWatcher::watchedCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_handlers.size();
}

void SubscriptionWriteWatcher::run()
{
    for (;;)
    {
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_handlers.empty(); });
            if (m_stopping)
            {
                return;
            }
        }
        Poco::Net::PollSet::SocketModeMap ready;
        try
        {
            ready = m_pollSet.poll(POLL_TICK);
        }
        catch (const Poco::Exception& e)
        {
            LOG_ERROR("Waiting for writable subscription sockets failed: " << e.displayText());
            continue;
        }
        for (const auto& socketAndMode : ready)
        {
            WritableHandler handler;
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                const auto found = m_handlers.find(socketAndMode.first);
                if (found == m_handlers.end())
                {
                    continue;
                }
                handler = found->second;
            }
            try
            {
                handler();
            }
            catch (const std::exception& e)
            {
                LOG_ERROR("Writing to a subscription socket failed: " << e.what());
            }
        }
    }
}

} // namespace Orvi::Service
