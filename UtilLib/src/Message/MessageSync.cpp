#include "Message/MessageSync.h"

#include "Logging/LogStream.h"

#include <Poco/Exception.h>

#include <exception>

namespace Orvi::Util
{

MessageSync::MessageSync(std::size_t criticalQueueSize)
    : m_criticalQueueSize(criticalQueueSize)
    , m_thread("MessageSync")
{
}

MessageSync::~MessageSync()
{
    stop();
}

void MessageSync::start()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_started || m_stopping)
    {
        return;
    }
    m_started = true;
    m_thread.start(*this);
}

void MessageSync::stop()
{
    bool join = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_stopping)
        {
            m_stopping = true;
            join = m_started;
        }
    }
    m_wakeUp.notify_all();
    if (join)
    {
        m_thread.join();
    }
    // Without a worker nobody will run what is left: free it.
    std::lock_guard<std::mutex> lock(m_mutex);
    while (!m_queue.empty())
    {
        m_queue.top().message->release();
        m_queue.pop();
    }
}

bool MessageSync::enqueueDataMessage(DataMessageBase* message, MESSAGE_PRIO priority)
{
    if (message == nullptr)
    {
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_stopping)
        {
            m_queue.push(Entry{priority, m_nextSequence++, message});
            m_wakeUp.notify_one();
            return true;
        }
    }
    message->release();
    return false;
}

bool MessageSync::isCriticalQueueSizeReached() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_queue.size() >= m_criticalQueueSize;
}

std::size_t MessageSync::queueSize() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_queue.size();
}

Poco::Thread::TID MessageSync::getWorkerTID() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_workerTID;
}

void MessageSync::run()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_workerTID = Poco::Thread::currentTid();
    }
    for (;;)
    {
        DataMessageBase* message = nullptr;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_wakeUp.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
            if (m_queue.empty())
            {
                return;
            }
            message = m_queue.top().message;
            m_queue.pop();
        }
        execute(*message);
        message->release();
    }
}

void MessageSync::execute(DataMessageBase& message)
{
    // destroyData() wakes a waiting sender, so it runs whatever processData() did.
    try
    {
        message.processData();
    }
    catch (const Poco::Exception& exception)
    {
        LOG_ERROR("Message processing failed: " << exception.displayText());
    }
    catch (const std::exception& exception)
    {
        LOG_ERROR("Message processing failed: " << exception.what());
    }
    catch (...)
    {
        LOG_ERROR("Message processing failed with an unknown exception");
    }
    try
    {
        message.destroyData();
    }
    catch (const Poco::Exception& exception)
    {
        LOG_ERROR("Message clean-up failed: " << exception.displayText());
    }
    catch (const std::exception& exception)
    {
        LOG_ERROR("Message clean-up failed: " << exception.what());
    }
    catch (...)
    {
        LOG_ERROR("Message clean-up failed with an unknown exception");
    }
}

} // namespace Orvi::Util
