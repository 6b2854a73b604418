#include "Message/MessageSync.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Event.h>
#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::Util::DataMessageBase;
using Orvi::Util::MessageSync;

constexpr long WAIT_LIMIT_MS = 10000;

/// What the test messages report back: the order they ran in and how many were released.
struct Journal
{
    std::mutex mutex;
    std::vector<std::string> events;
    std::atomic<int> released{0};

    void add(const std::string& event)
    {
        std::lock_guard<std::mutex> lock(mutex);
        events.push_back(event);
    }

    std::vector<std::string> read()
    {
        std::lock_guard<std::mutex> lock(mutex);
        return events;
    }
};

class JournalMessage : public DataMessageBase
{
public:
    JournalMessage(Journal& journal, std::string name, std::function<void()> work = {})
        : m_journal(journal)
        , m_name(std::move(name))
        , m_work(std::move(work))
    {
    }

    void processData() override
    {
        m_journal.add("process " + m_name);
        if (m_work)
        {
            m_work();
        }
    }

    void destroyData() override { m_journal.add("destroy " + m_name); }

protected:
    ~JournalMessage() override { ++m_journal.released; }

private:
    Journal& m_journal;
    std::string m_name;
    std::function<void()> m_work;
};

/// Holds the worker inside a message until the test opens the gate.
struct Gate
{
    Poco::Event entered;
    Poco::Event open;

    std::function<void()> work()
    {
        return [this]
        {
            entered.set();
            open.wait();
        };
    }
};

TEST(MessageSync, RunsLowerPrioritiesFirstAndEqualPrioritiesInArrivalOrder)
{
    Journal journal;
    Gate gate;
    Poco::Event done;
    MessageSync sut(100);
    sut.start();
    sut.enqueueDataMessage(new JournalMessage(journal, "gate", gate.work()), Orvi::Util::MESSAGE_PRIO_NORMAL);
    ASSERT_TRUE(gate.entered.tryWait(WAIT_LIMIT_MS));

    sut.enqueueDataMessage(new JournalMessage(journal, "normal 1"), Orvi::Util::MESSAGE_PRIO_NORMAL);
    sut.enqueueDataMessage(new JournalMessage(journal, "high 1"), Orvi::Util::MESSAGE_PRIO_HIGH);
    sut.enqueueDataMessage(new JournalMessage(journal, "urgent"), Orvi::Util::MESSAGE_PRIO_URGENT);
    sut.enqueueDataMessage(new JournalMessage(journal, "normal 2"), Orvi::Util::MESSAGE_PRIO_NORMAL);
    sut.enqueueDataMessage(new JournalMessage(journal, "high 2"), Orvi::Util::MESSAGE_PRIO_HIGH);
    sut.enqueueDataMessage(new JournalMessage(journal, "last", [&done] { done.set(); }),
                           Orvi::Util::MESSAGE_PRIO_NORMAL);
    gate.open.set();
    ASSERT_TRUE(done.tryWait(WAIT_LIMIT_MS));
    sut.stop();

    EXPECT_EQ(journal.read(), (std::vector<std::string>{
                                  "process gate", "destroy gate", "process urgent", "destroy urgent",
                                  "process high 1", "destroy high 1", "process high 2", "destroy high 2",
                                  "process normal 1", "destroy normal 1", "process normal 2",
                                  "destroy normal 2", "process last", "destroy last"}));
    EXPECT_EQ(journal.released, 7);
}

TEST(MessageSync, ReportsTheCriticalSizeOnceThatManyMessagesWait)
{
    Journal journal;
    Gate gate;
    MessageSync sut(2);
    sut.start();
    sut.enqueueDataMessage(new JournalMessage(journal, "gate", gate.work()), Orvi::Util::MESSAGE_PRIO_NORMAL);
    ASSERT_TRUE(gate.entered.tryWait(WAIT_LIMIT_MS));

    const bool criticalWhenIdle = sut.isCriticalQueueSizeReached();
    sut.enqueueDataMessage(new JournalMessage(journal, "one"), Orvi::Util::MESSAGE_PRIO_NORMAL);
    const bool criticalWithOne = sut.isCriticalQueueSizeReached();
    sut.enqueueDataMessage(new JournalMessage(journal, "two"), Orvi::Util::MESSAGE_PRIO_NORMAL);
    const bool criticalWithTwo = sut.isCriticalQueueSizeReached();
    gate.open.set();
    sut.stop();

    EXPECT_FALSE(criticalWhenIdle);
    EXPECT_FALSE(criticalWithOne);
    EXPECT_TRUE(criticalWithTwo);
    EXPECT_FALSE(sut.isCriticalQueueSizeReached());
}

TEST(MessageSync, FinishesQueuedMessagesWhenStopped)
{
    Journal journal;
    Gate gate;
    MessageSync sut(10);
    sut.start();
    sut.enqueueDataMessage(new JournalMessage(journal, "gate", gate.work()), Orvi::Util::MESSAGE_PRIO_NORMAL);
    ASSERT_TRUE(gate.entered.tryWait(WAIT_LIMIT_MS));
    sut.enqueueDataMessage(new JournalMessage(journal, "queued"), Orvi::Util::MESSAGE_PRIO_NORMAL);

    gate.open.set();
    sut.stop();

    EXPECT_EQ(journal.read(),
              (std::vector<std::string>{"process gate", "destroy gate", "process queued", "destroy queued"}));
    EXPECT_EQ(journal.released, 2);
}

TEST(MessageSync, RefusesAndReleasesMessagesOnceStopped)
{
    Journal journal;
    MessageSync sut(10);
    sut.start();
    sut.stop();

    const bool accepted =
        sut.enqueueDataMessage(new JournalMessage(journal, "late"), Orvi::Util::MESSAGE_PRIO_NORMAL);

    EXPECT_FALSE(accepted);
    EXPECT_TRUE(journal.read().empty());
    EXPECT_EQ(journal.released, 1);
}

TEST(MessageSync, RefusesANullMessage)
{
    MessageSync sut(10);

    EXPECT_FALSE(sut.enqueueDataMessage(nullptr, Orvi::Util::MESSAGE_PRIO_NORMAL));
}

TEST(MessageSync, KeepsMessagesQueuedBeforeStartAndRunsThemThen)
{
    Journal journal;
    Poco::Event done;
    MessageSync sut(10);
    sut.enqueueDataMessage(new JournalMessage(journal, "early", [&done] { done.set(); }),
                           Orvi::Util::MESSAGE_PRIO_NORMAL);
    const std::size_t waitingBeforeStart = sut.queueSize();

    sut.start();

    ASSERT_TRUE(done.tryWait(WAIT_LIMIT_MS));
    EXPECT_EQ(waitingBeforeStart, 1U);
}

TEST(MessageSync, ReleasesMessagesThatNeverRanWhenStoppedWithoutStart)
{
    Journal journal;
    auto sut = std::make_unique<MessageSync>(10);
    sut->enqueueDataMessage(new JournalMessage(journal, "never"), Orvi::Util::MESSAGE_PRIO_NORMAL);

    sut.reset();

    EXPECT_TRUE(journal.read().empty());
    EXPECT_EQ(journal.released, 1);
}

TEST(MessageSync, LogsAThrowingMessageAndStillDestroysAndReleasesIt)
{
    ServiceDB::Test::LogCapture capture;
    Journal journal;
    MessageSync sut(10);
    sut.enqueueDataMessage(
        new JournalMessage(journal, "poco", [] { throw Poco::NotFoundException("no row"); }),
        Orvi::Util::MESSAGE_PRIO_NORMAL);
    sut.enqueueDataMessage(new JournalMessage(journal, "std", [] { throw std::runtime_error("bad state"); }),
                           Orvi::Util::MESSAGE_PRIO_NORMAL);
    sut.enqueueDataMessage(new JournalMessage(journal, "other", [] { throw 42; }),
                           Orvi::Util::MESSAGE_PRIO_NORMAL);

    sut.start();
    sut.stop();

    EXPECT_EQ(journal.read(), (std::vector<std::string>{"process poco", "destroy poco", "process std",
                                                        "destroy std", "process other", "destroy other"}));
    EXPECT_EQ(journal.released, 3);
    EXPECT_EQ(capture.lines(),
              (std::vector<std::string>{"Error: Message processing failed: Not found: no row",
                                        "Error: Message processing failed: bad state",
                                        "Error: Message processing failed with an unknown exception"}));
}

TEST(MessageSync, GivesTheThreadIdOfItsWorker)
{
    Journal journal;
    Poco::Event done;
    Poco::Thread::TID seenOnWorker{};
    MessageSync sut(10);
    const Poco::Thread::TID beforeStart = sut.getWorkerTID();
    sut.enqueueDataMessage(new JournalMessage(journal, "tid",
                                              [&]
                                              {
                                                  seenOnWorker = Poco::Thread::currentTid();
                                                  done.set();
                                              }),
                           Orvi::Util::MESSAGE_PRIO_NORMAL);

    sut.start();
    ASSERT_TRUE(done.tryWait(WAIT_LIMIT_MS));

    EXPECT_EQ(beforeStart, Poco::Thread::TID{});
    EXPECT_EQ(sut.getWorkerTID(), seenOnWorker);
    EXPECT_NE(sut.getWorkerTID(), Poco::Thread::currentTid());
}

} // namespace
