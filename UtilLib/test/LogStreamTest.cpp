#include "Logging/LogStream.h"
#include "TestSupport/LogCapture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using ServiceDB::Test::LogCapture;

TEST(LogStream, WritesEachLevelWithItsPrefix)
{
    LogCapture capture;

    LOG_FATAL("f " << 1);
    LOG_ERROR("e " << 3);
    LOG_WARNING("w " << 4);
    LOG_INFO("i " << 6);
    LOG_DEBUG("d " << 7);
    LOG_TRACE("t " << 8);

    EXPECT_EQ(capture.lines(), (std::vector<std::string>{"Fatal: f 1", "Error: e 3", "Warning: w 4",
                                                         "Info: i 6", "Debug: d 7", "Trace: t 8"}));
}

TEST(LogStream, PutsTheSourcePositionInFrontOfTheLine)
{
    LogCapture capture;

    const int line = __LINE__ + 1;
    LOG_WARNING("positioned");

    EXPECT_EQ(capture.rawLines(), std::vector<std::string>{"[LogStreamTest.cpp:" + std::to_string(line) +
                                                           "] Warning: positioned"});
}

TEST(LogStream, GivesEachLineThePriorityOfItsLevel)
{
    class PriorityChannel : public Poco::Channel
    {
    public:
        void log(const Poco::Message& msg) override { priorities.push_back(msg.getPriority()); }
        std::vector<Poco::Message::Priority> priorities;
    };
    LogCapture capture;
    Poco::AutoPtr<PriorityChannel> channel(new PriorityChannel);
    Logging::Log::Logger().setChannel(channel);

    LOG_FATAL("");
    LOG_ERROR("");
    LOG_WARNING("");
    LOG_INFO("");
    LOG_DEBUG("");
    LOG_TRACE("");

    EXPECT_EQ(channel->priorities,
              (std::vector<Poco::Message::Priority>{
                  Poco::Message::PRIO_FATAL, Poco::Message::PRIO_ERROR, Poco::Message::PRIO_WARNING,
                  Poco::Message::PRIO_INFORMATION, Poco::Message::PRIO_DEBUG, Poco::Message::PRIO_TRACE}));
}

TEST(LogStream, DoesNotEvaluateTheTextOfAnInactiveLevel)
{
    LogCapture capture(Poco::Message::PRIO_WARNING);
    int evaluations = 0;
    const auto count = [&evaluations] { return ++evaluations; };

    LOG_DEBUG("never " << count());
    LOG_WARNING("once " << count());

    EXPECT_EQ(evaluations, 1);
    EXPECT_EQ(capture.lines(), std::vector<std::string>{"Warning: once 1"});
}

TEST(LogStream, GoesOnAfterAFatalLine)
{
    LogCapture capture;

    LOG_FATAL("missing app service CarServiceJSONDataCache");
    LOG_INFO("still running");

    EXPECT_EQ(capture.lines(), (std::vector<std::string>{"Fatal: missing app service CarServiceJSONDataCache",
                                                         "Info: still running"}));
}

} // namespace
