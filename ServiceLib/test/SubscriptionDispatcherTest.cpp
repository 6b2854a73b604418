#include "SubscriptionHandling/SubscriptionDispatcher.h"

#include "SubscriptionHandling/ISubscriberChannel.h"
#include "SubscriptionHandling/WebSocketSubscription.h"
#include "Support/InMemoryTrigger.h"
#include "Support/TestWebSocketClient.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Exception.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

using namespace ServiceDB::Test;
using Scope = Orvi::Service::ISubscriptionChangeSink::Scope;
using Orvi::Service::SubscriptionDispatcher;
using Orvi::Service::WebSocketSubscription;
using Clock = std::chrono::steady_clock;

namespace
{

const std::chrono::seconds WAIT(10);

// Keeps what a subscriber would have been sent, with the moment it was queued.
class RecordingChannel : public Orvi::Service::ISubscriberChannel
{
public:
    void post(const std::string& text) override { record(text); }

    bool postUpdate(WebSocketSubscription& subscription, const std::string& text, bool last) override
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!subscription.takesUpdates())
            {
                return false;
            }
            if (last)
            {
                subscription.stopUpdates();
            }
        }
        record(text);
        return true;
    }

    void postEnd(WebSocketSubscription& subscription, const std::string& text) override
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            subscription.stopUpdates();
        }
        record(text);
    }

    // The texts, without their timestamps, once there are count of them (bounded wait).
    std::vector<std::string> waitFor(std::size_t count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, WAIT, [this, count] { return m_texts.size() >= count; });
        std::vector<std::string> texts;
        for (const std::string& text : m_texts)
        {
            texts.push_back(withoutTimestamp(text));
        }
        return texts;
    }

    std::vector<Clock::time_point> times() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_times;
    }

private:
    void record(const std::string& text)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_texts.push_back(text);
            m_times.push_back(Clock::now());
        }
        m_changed.notify_all();
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_texts;
    std::vector<Clock::time_point> m_times;
};

class ThrowingSource : public Orvi::Service::ISubscriptionDataSource
{
public:
    explicit ThrowingSource(const Orvi::Service::ISubscriptionDataSource& next)
        : m_next(next)
    {
    }

    bool fetchData(const Orvi::Service::SubscriptionRequest& request,
                   Orvi::Command::WebSocketResponseObject& response) const override
    {
        if (request.getUri().getPath() == "/cabin/broken/b1")
        {
            throw Poco::IOException("store unreachable");
        }
        return m_next.fetchData(request, response);
    }

private:
    const Orvi::Service::ISubscriptionDataSource& m_next;
};

std::shared_ptr<WebSocketSubscription> subscription(const std::shared_ptr<RecordingChannel>& channel,
                                                    const std::string& event, const std::string& options = "")
{
    const std::string message = R"({"type":"subscribe","event":")" + event + "\"" + options + "}";
    const Orvi::Service::SubscriptionRequest request(message, Poco::Net::SocketAddress("127.0.0.1", 4000),
                                                     Poco::Net::SocketAddress("127.0.0.1", 50000));
    return std::make_shared<WebSocketSubscription>(request, event, channel);
}

std::string update(const std::string& event, const std::string& data)
{
    return R"({"data":)" + data + R"(,"event":")" + event + R"(","status":"ok","timestamp":0,"type":"data"})";
}

class SubscriptionDispatcherTest : public ::testing::Test
{
protected:
    SubscriptionDispatcherTest()
    {
        trigger.put("/cabin/seats/driver", R"({"heating":1})");
        trigger.put("/cabin/seats/rear", R"({"heating":0})");
        trigger.put("/cabin/lamps/l1", R"({"on":false})");
    }

    void change(SubscriptionDispatcher& sut, const std::string& element, const std::string& data)
    {
        trigger.put("/cabin/seats/" + element, data);
        sut.addressChanged(Scope::Element, "cabin", "seats", element);
    }

    InMemoryTrigger trigger;
    std::shared_ptr<RecordingChannel> driver = std::make_shared<RecordingChannel>();
    std::shared_ptr<RecordingChannel> rear = std::make_shared<RecordingChannel>();
    std::shared_ptr<RecordingChannel> seats = std::make_shared<RecordingChannel>();
};

} // namespace

TEST_F(SubscriptionDispatcherTest, AnAddedSubscriptionGetsItsFirstUpdateAtOnce)
{
    SubscriptionDispatcher sut(trigger, 1);

    sut.add(subscription(driver, "/cabin/seats/driver#d"));

    EXPECT_EQ(driver->waitFor(1),
              std::vector<std::string>{update("/cabin/seats/driver#d", R"({"heating":1})")});
    EXPECT_EQ(sut.subscriptionCount(), 1U);
}

TEST_F(SubscriptionDispatcherTest, AnElementChangeUpdatesTheObjectAndItsCollectionButNoOtherObject)
{
    SubscriptionDispatcher sut(trigger, 1);
    sut.add(subscription(driver, "/cabin/seats/driver"));
    sut.add(subscription(rear, "/cabin/seats/rear"));
    sut.add(subscription(seats, "/cabin/seats"));
    driver->waitFor(1);
    rear->waitFor(1);
    seats->waitFor(1);

    change(sut, "driver", R"({"heating":3})");
    driver->waitFor(2);
    seats->waitFor(2);
    // With one sender, anything the first change had caused would come before this.
    change(sut, "rear", R"({"heating":4})");

    EXPECT_EQ(driver->waitFor(2)[1], update("/cabin/seats/driver", R"({"heating":3})"));
    EXPECT_EQ(seats->waitFor(2)[1],
              R"({"data":[{"heating":3},{"heating":0}],"event":"/cabin/seats","paging":{"total":2},)"
              R"("status":"ok","timestamp":0,"type":"data"})");
    EXPECT_EQ(rear->waitFor(2), (std::vector<std::string>{update("/cabin/seats/rear", R"({"heating":0})"),
                                                          update("/cabin/seats/rear", R"({"heating":4})")}));
}

TEST_F(SubscriptionDispatcherTest, ACollectionChangeUpdatesTheCollectionOnly)
{
    SubscriptionDispatcher sut(trigger, 1);
    sut.add(subscription(driver, "/cabin/seats/driver"));
    sut.add(subscription(seats, "/cabin/seats"));
    driver->waitFor(1);
    seats->waitFor(1);

    trigger.put("/cabin/seats/passenger", R"({"heating":5})");
    sut.addressChanged(Scope::Collection, "cabin", "seats", "");
    seats->waitFor(2);
    change(sut, "driver", R"({"heating":6})");

    EXPECT_EQ(
        seats->waitFor(2)[1],
        R"({"data":[{"heating":1},{"heating":5},{"heating":0}],"event":"/cabin/seats","paging":{"total":3},)"
        R"("status":"ok","timestamp":0,"type":"data"})");
    EXPECT_EQ(driver->waitFor(2),
              (std::vector<std::string>{update("/cabin/seats/driver", R"({"heating":1})"),
                                        update("/cabin/seats/driver", R"({"heating":6})")}));
}

TEST_F(SubscriptionDispatcherTest, AResourceChangeUpdatesTheCollectionAndEachOfItsObjects)
{
    SubscriptionDispatcher sut(trigger, 1);
    sut.add(subscription(driver, "/cabin/seats/driver"));
    sut.add(subscription(rear, "/cabin/seats/rear"));
    sut.add(subscription(seats, "/cabin/seats?$fields=heating"));
    driver->waitFor(1);
    rear->waitFor(1);
    seats->waitFor(1);

    sut.addressChanged(Scope::Resource, "cabin", "seats", "");

    EXPECT_EQ(driver->waitFor(2).size(), 2U);
    EXPECT_EQ(rear->waitFor(2).size(), 2U);
    EXPECT_EQ(seats->waitFor(2).size(), 2U);
}

TEST_F(SubscriptionDispatcherTest, AChangeOfAnotherResourceUpdatesNobody)
{
    SubscriptionDispatcher sut(trigger, 1);
    sut.add(subscription(driver, "/cabin/seats/driver"));
    sut.add(subscription(rear, "/cabin/lamps/l1"));
    driver->waitFor(1);
    rear->waitFor(1);

    sut.addressChanged(Scope::Element, "cabin", "lamps", "driver");
    sut.addressChanged(Scope::Element, "audio", "seats", "driver");
    sut.addressChanged(Scope::Element, "cabin", "lamps", "l1");
    rear->waitFor(2);
    change(sut, "driver", R"({"heating":2})");

    EXPECT_EQ(driver->waitFor(2),
              (std::vector<std::string>{update("/cabin/seats/driver", R"({"heating":1})"),
                                        update("/cabin/seats/driver", R"({"heating":2})")}));
}

TEST_F(SubscriptionDispatcherTest, SubscriptionsOfOneAddressShareOneFetchPerChange)
{
    SubscriptionDispatcher sut(trigger, 2);
    sut.add(subscription(driver, "/cabin/seats/driver#1"));
    sut.add(subscription(rear, "/cabin/seats/driver#2"));
    sut.add(subscription(seats, "/cabin/seats/driver#3"));
    driver->waitFor(1);
    rear->waitFor(1);
    seats->waitFor(1);
    const auto fetchesBefore = sut.fetchCount();

    change(sut, "driver", R"({"heating":9})");

    EXPECT_EQ(driver->waitFor(2)[1], update("/cabin/seats/driver#1", R"({"heating":9})"));
    EXPECT_EQ(rear->waitFor(2)[1], update("/cabin/seats/driver#2", R"({"heating":9})"));
    EXPECT_EQ(seats->waitFor(2)[1], update("/cabin/seats/driver#3", R"({"heating":9})"));
    EXPECT_EQ(sut.fetchCount(), fetchesBefore + 1);
}

TEST_F(SubscriptionDispatcherTest, ChangesDuringAFetchMergeIntoOneFurtherUpdate)
{
    SubscriptionDispatcher sut(trigger, 2);
    trigger.holdFetches();
    sut.add(subscription(driver, "/cabin/seats/driver"));
    ASSERT_TRUE(trigger.waitForHeldFetch());

    change(sut, "driver", R"({"heating":2})");
    change(sut, "driver", R"({"heating":3})");
    change(sut, "driver", R"({"heating":4})");
    trigger.releaseFetches();

    EXPECT_EQ(driver->waitFor(2),
              (std::vector<std::string>{update("/cabin/seats/driver", R"({"heating":1})"),
                                        update("/cabin/seats/driver", R"({"heating":4})")}));
    EXPECT_EQ(sut.fetchCount(), 2U);
}

TEST_F(SubscriptionDispatcherTest, ChangesInsideTheUpdateLimitAreSentOnceWhenTheLimitHasPassed)
{
    constexpr int LIMIT_MS = 200;
    SubscriptionDispatcher sut(trigger, 1);
    sut.add(subscription(driver, "/cabin/seats/driver", R"(,"updatelimit":200)"));
    driver->waitFor(1);

    change(sut, "driver", R"({"heating":2})");
    change(sut, "driver", R"({"heating":3})");

    EXPECT_EQ(driver->waitFor(2),
              (std::vector<std::string>{update("/cabin/seats/driver", R"({"heating":1})"),
                                        update("/cabin/seats/driver", R"({"heating":3})")}));
    const std::vector<Clock::time_point> times = driver->times();
    EXPECT_GE(times[1] - times[0], std::chrono::milliseconds(LIMIT_MS));
}

TEST_F(SubscriptionDispatcherTest, AnIntervalSendsTheContentAgainAtEveryTick)
{
    constexpr int INTERVAL_MS = 30;
    SubscriptionDispatcher sut(trigger, 1);
    const Clock::time_point added = Clock::now();

    sut.add(subscription(driver, "/cabin/seats/driver", R"(,"interval":30)"));

    EXPECT_EQ(driver->waitFor(3),
              std::vector<std::string>(3, update("/cabin/seats/driver", R"({"heating":1})")));
    EXPECT_GE(driver->times()[2] - added, std::chrono::milliseconds(2 * INTERVAL_MS));
}

TEST_F(SubscriptionDispatcherTest, ADeletedObjectIsSent410AndItsSubscriptionEnds)
{
    SubscriptionDispatcher sut(trigger, 1);
    const auto watched = subscription(driver, "/cabin/seats/driver#w");
    sut.add(watched);
    sut.add(subscription(rear, "/cabin/seats/rear"));
    driver->waitFor(1);
    rear->waitFor(1);

    trigger.erase("/cabin/seats/driver");
    sut.addressChanged(Scope::Element, "cabin", "seats", "driver");
    driver->waitFor(2);
    change(sut, "rear", R"({"heating":1})");
    rear->waitFor(2);

    EXPECT_EQ(driver->waitFor(2)[1],
              R"({"code":410,"event":"/cabin/seats/driver#w","message":"element has gone",)"
              R"("status":"error","type":"error"})");
    EXPECT_FALSE(watched->takesUpdates());
    EXPECT_EQ(sut.subscriptionCount(), 1U);
}

TEST_F(SubscriptionDispatcherTest, ARemovedSubscriptionGetsNoMoreUpdates)
{
    SubscriptionDispatcher sut(trigger, 1);
    const auto removed = subscription(driver, "/cabin/seats/driver");
    sut.add(removed);
    sut.add(subscription(rear, "/cabin/seats/rear"));
    driver->waitFor(1);
    rear->waitFor(1);

    sut.remove(*removed);
    change(sut, "driver", R"({"heating":7})");
    change(sut, "rear", R"({"heating":7})");
    rear->waitFor(2);

    EXPECT_EQ(driver->waitFor(1).size(), 1U);
    EXPECT_EQ(sut.subscriptionCount(), 1U);
}

TEST_F(SubscriptionDispatcherTest, AFailingFetchIsLoggedAndTheSenderServesTheOthers)
{
    trigger.put("/cabin/broken/b1", "{}");
    const ThrowingSource source(trigger);
    SubscriptionDispatcher sut(source, 1);
    LogCapture log(Poco::Message::PRIO_ERROR);

    sut.add(subscription(rear, "/cabin/broken/b1"));
    sut.add(subscription(driver, "/cabin/seats/driver"));

    EXPECT_EQ(driver->waitFor(1).size(), 1U);
    EXPECT_THAT(log.lines(),
                ::testing::ElementsAre("Error: Update of the subscribers of 4000 /cabin/broken/b1 "
                                       "failed: I/O error: store unreachable"));
}

TEST_F(SubscriptionDispatcherTest, NothingIsSentWhenTheSourceHasNoContent)
{
    SubscriptionDispatcher sut(trigger, 1);

    sut.add(subscription(rear, "/cabin"));
    sut.add(subscription(driver, "/cabin/seats/driver"));

    EXPECT_EQ(driver->waitFor(1).size(), 1U);
    EXPECT_TRUE(rear->waitFor(0).empty());
    EXPECT_EQ(sut.fetchCount(), 2U);
}

TEST_F(SubscriptionDispatcherTest, AfterStopNothingMoreIsSent)
{
    SubscriptionDispatcher sut(trigger, 2);
    sut.add(subscription(driver, "/cabin/seats/driver"));
    driver->waitFor(1);

    sut.stop();
    change(sut, "driver", R"({"heating":8})");

    EXPECT_EQ(driver->waitFor(1).size(), 1U);
    EXPECT_EQ(sut.fetchCount(), 1U);
}
