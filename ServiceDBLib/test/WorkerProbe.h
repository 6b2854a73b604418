#pragma once

#include "Message/DataWaitMessageBase.h"
#include "Message/MessageSync.h"

#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>
#include <Poco/Thread.h>
#include <Poco/Timestamp.h>

#include <functional>
#include <utility>

namespace ServiceDB::Test
{

// A worker message that runs a function, so that a test can do something on the worker thread. The
// event, if any, is signalled after the function returned.
class WorkerProbe : public Orvi::Util::DataWaitMessageBase
{
public:
    explicit WorkerProbe(std::function<void()> work, Event event = Event())
        : Orvi::Util::DataWaitMessageBase(std::move(event))
        , m_work(std::move(work))
    {
    }

    void processData() override { m_work(); }

    // Runs the function on the worker and waits until it is done, at most timeoutMs; false when the queue
    // refused the message or the time ran out.
    static bool run(Orvi::Util::MessageSync& worker, std::function<void()> work, long timeoutMs = 10000)
    {
        Event done(new Poco::SynchronizedObject);
        if (!worker.enqueueDataMessage(new WorkerProbe(std::move(work), done),
                                       Orvi::Util::MESSAGE_PRIO_NORMAL))
        {
            return false;
        }
        return done->tryWait(timeoutMs);
    }

    // Waits until the condition holds, at most timeoutMs, for states that no event announces.
    static bool waitUntil(const std::function<bool()>& condition, long timeoutMs = 10000)
    {
        const Poco::Timestamp start;
        while (!condition())
        {
            if (start.elapsed() > static_cast<Poco::Timestamp::TimeDiff>(timeoutMs) * 1000)
            {
                return false;
            }
            Poco::Thread::yield();
        }
        return true;
    }

protected:
    ~WorkerProbe() override = default;

private:
    std::function<void()> m_work;
};

} // namespace ServiceDB::Test
