#include "Logging/Log.h"
#include "Logging/LogStream.h"
#include "TestSupport/LogCapture.h"

#include <gtest/gtest.h>

namespace
{

using Logging::Log;

TEST(Log, WritesToTheServiceDBLoggerByDefault)
{
    EXPECT_EQ(Log::Logger().name(), "ServiceDB");
}

TEST(Log, ReportsTheActiveLevels)
{
    ServiceDB::Test::LogCapture capture(Poco::Message::PRIO_WARNING);

    EXPECT_TRUE(Log::IsLogLevelActive(Poco::Message::PRIO_ERROR));
    EXPECT_TRUE(Log::IsLogLevelActive(Poco::Message::PRIO_WARNING));
    EXPECT_FALSE(Log::IsLogLevelActive(Poco::Message::PRIO_INFORMATION));
    EXPECT_EQ(Log::GetLogLevel(), Poco::Message::PRIO_WARNING);
}

TEST(Log, SetsTheLevelOfTheLoggerInUseForAnEmptyName)
{
    ServiceDB::Test::LogCapture capture(Poco::Message::PRIO_WARNING);

    Log::SetLogLevel(Poco::Message::PRIO_DEBUG, "");

    EXPECT_EQ(Log::GetLogLevel(), Poco::Message::PRIO_DEBUG);
}

TEST(Log, SetsTheLevelOfANamedLogger)
{
    Log::SetLogLevel(Poco::Message::PRIO_TRACE, "ServiceDB.Other");

    EXPECT_EQ(Poco::Logger::get("ServiceDB.Other").getLevel(), Poco::Message::PRIO_TRACE);
}

TEST(Log, NamesEveryLevel)
{
    EXPECT_EQ(Log::logLevelToString(Poco::Message::PRIO_FATAL), "fatal");
    EXPECT_EQ(Log::logLevelToString(Poco::Message::PRIO_CRITICAL), "critical");
    EXPECT_EQ(Log::logLevelToString(Poco::Message::PRIO_ERROR), "error");
    EXPECT_EQ(Log::logLevelToString(Poco::Message::PRIO_WARNING), "warning");
    EXPECT_EQ(Log::logLevelToString(Poco::Message::PRIO_NOTICE), "notice");
    EXPECT_EQ(Log::logLevelToString(Poco::Message::PRIO_INFORMATION), "information");
    EXPECT_EQ(Log::logLevelToString(Poco::Message::PRIO_DEBUG), "debug");
    EXPECT_EQ(Log::logLevelToString(Poco::Message::PRIO_TRACE), "trace");
}

TEST(Log, DirectsLinesToAnotherLoggerAfterConfiguration)
{
    Log::ConfigureLogging("ServiceDB.Configured");
    const std::string configured = Log::Logger().name();
    Log::ConfigureLogging(Log::DEFAULT_LOGGER_NAME);

    EXPECT_EQ(configured, "ServiceDB.Configured");
    EXPECT_EQ(Log::Logger().name(), "ServiceDB");
}

} // namespace
