#pragma once

#include "IUncopyable.h"
#include "Message/DataMessageBase.h"
#include "Message/MessagePriority.h"

#include <Poco/Runnable.h>
#include <Poco/Thread.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <queue>
#include <vector>

namespace Orvi::Util
{

/// The queue towards the one worker thread that owns the data. Messages run one at a time, the lower
/// MESSAGE_PRIO first and in arrival order within a priority.
class MessageSync : public IUncopyable, private Poco::Runnable
{
public:
    explicit MessageSync(std::size_t criticalQueueSize);
    /// A queue that counts as full at criticalQueueSize waiting messages. The worker starts with start().

    ~MessageSync() override;
    /// Stops the worker as stop() does.

    void start();
    /// Starts the worker thread; messages queued before run now. Does nothing if it runs already.

    void stop();
    /// Refuses new messages, lets the worker finish every message already queued, and joins it.

    bool enqueueDataMessage(DataMessageBase* message, MESSAGE_PRIO priority);
    /// Takes ownership of the message in every case. False, with the message released at once, when the
    /// queue has been stopped or the message is null.

    bool isCriticalQueueSizeReached() const;
    /// True while the waiting messages reach the critical size.

    std::size_t queueSize() const;
    /// The number of waiting messages, not counting the one that runs.

    Poco::Thread::TID getWorkerTID() const;
    /// The thread id of the worker, as Poco::Thread::currentTid() gives it there; 0 before start().

private:
    struct Entry
    {
        MESSAGE_PRIO priority;
        std::uint64_t sequence;
        DataMessageBase* message;
    };

    struct RunsLater
    {
        bool operator()(const Entry& a, const Entry& b) const
        {
            return a.priority != b.priority ? a.priority > b.priority : a.sequence > b.sequence;
        }
    };

    void run() override;
    static void execute(DataMessageBase& message);

    const std::size_t m_criticalQueueSize;
    mutable std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    std::priority_queue<Entry, std::vector<Entry>, RunsLater> m_queue;
    std::uint64_t m_nextSequence = 0;
    bool m_stopping = false;
    bool m_started = false;
    Poco::Thread::TID m_workerTID{};
    Poco::Thread m_thread;
};

} // namespace Orvi::Util
