#include "SubscriptionHandling/SubscriptionWriteWatcher.h"

#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <sys/socket.h>

using Orvi::Service::SubscriptionWriteWatcher;

namespace
{

const std::chrono::seconds WAIT(10);

// Counts the calls of a handler and lets the test wait for them.
class CallCounter
{
public:
    SubscriptionWriteWatcher::WritableHandler handler()
    {
        return [this]
        {
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                ++m_calls;
            }
            m_called.notify_all();
        };
    }

    bool waitForCall()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_called.wait_for(lock, WAIT, [this] { return m_calls > 0; });
    }

    int calls() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_calls;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_called;
    int m_calls = 0;
};

class SubscriptionWriteWatcherTest : public ::testing::Test
{
protected:
    SubscriptionWriteWatcherTest()
        : listener(Poco::Net::SocketAddress("127.0.0.1", 0))
        , writer(listener.address())
        , reader(listener.acceptConnection())
    {
        reader.setReceiveTimeout(Poco::Timespan(10, 0));
    }

    // Writes without blocking until the socket takes no more; gives the bytes written.
    std::size_t fillWriter()
    {
        const std::string chunk(64 * 1024, 'x');
        std::size_t written = 0;
        for (;;)
        {
            const ssize_t sent = ::send(writer.impl()->sockfd(), chunk.data(), chunk.size(), MSG_DONTWAIT);
            if (sent < 0)
            {
                return written;
            }
            written += static_cast<std::size_t>(sent);
        }
    }

    void drainReader(std::size_t bytes)
    {
        std::string buffer(64 * 1024, '\0');
        while (bytes > 0)
        {
            bytes -=
                static_cast<std::size_t>(reader.receiveBytes(&buffer[0], static_cast<int>(buffer.size())));
        }
    }

    Poco::Net::ServerSocket listener;
    Poco::Net::StreamSocket writer;
    Poco::Net::StreamSocket reader;
};

} // namespace

TEST_F(SubscriptionWriteWatcherTest, AFullSocketIsReportedOnceItsPeerHasReadItsData)
{
    CallCounter counter;
    SubscriptionWriteWatcher sut;
    const std::size_t written = fillWriter();

    sut.watch(writer, counter.handler());
    drainReader(written);

    EXPECT_TRUE(counter.waitForCall());
}

TEST_F(SubscriptionWriteWatcherTest, AnUnwatchedSocketIsForgotten)
{
    CallCounter counter;
    SubscriptionWriteWatcher sut;
    sut.watch(writer, counter.handler());
    ASSERT_TRUE(counter.waitForCall());

    sut.unwatch(writer);

    EXPECT_EQ(sut.watchedCount(), 0U);
}

TEST_F(SubscriptionWriteWatcherTest, WatchingASocketAgainReplacesItsHandler)
{
    CallCounter first;
    CallCounter second;
    SubscriptionWriteWatcher sut;

    sut.watch(writer, first.handler());
    sut.watch(writer, second.handler());

    EXPECT_EQ(sut.watchedCount(), 1U);
    EXPECT_TRUE(second.waitForCall());
}

TEST_F(SubscriptionWriteWatcherTest, StoppingEndsTheReportsEvenWhileSocketsAreWatched)
{
    CallCounter counter;
    SubscriptionWriteWatcher sut;
    sut.watch(writer, counter.handler());
    ASSERT_TRUE(counter.waitForCall());

    sut.stop();
    const int callsAtStop = counter.calls();

    EXPECT_EQ(counter.calls(), callsAtStop);
    EXPECT_EQ(sut.watchedCount(), 1U);
}
