#include "Message/DataWaitMessageBase.h"
#include "Message/MessageSync.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Util::DataWaitMessageBase;

class WaitMessage : public DataWaitMessageBase
{
public:
    using DataWaitMessageBase::DataWaitMessageBase;

    void processData() override { processed = true; }

    bool processed = false;
};

TEST(DataWaitMessageBase, SignalsItsEventOnDestroyData)
{
    DataWaitMessageBase::Event event(new Poco::SynchronizedObject);
    Poco::AutoPtr<WaitMessage> sut(new WaitMessage(event));

    sut->destroyData();

    EXPECT_TRUE(event->tryWait(0));
}

TEST(DataWaitMessageBase, DoesNothingOnDestroyDataWithoutAnEvent)
{
    Poco::AutoPtr<WaitMessage> sut(new WaitMessage);

    EXPECT_NO_THROW(sut->destroyData());
}

TEST(DataWaitMessageBase, WakesASenderThatWaitsForTheWorker)
{
    DataWaitMessageBase::Event event(new Poco::SynchronizedObject);
    auto* message = new WaitMessage(event);
    message->duplicate();
    Poco::AutoPtr<WaitMessage> observed(message);
    Orvi::Util::MessageSync queue(10);
    queue.start();

    ASSERT_TRUE(queue.enqueueDataMessage(message, Orvi::Util::MESSAGE_PRIO_NORMAL));

    EXPECT_TRUE(event->tryWait(10000));
    EXPECT_TRUE(observed->processed);
}

} // namespace
