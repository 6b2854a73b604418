#include "RegistryOptions.h"

#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Registry::RegistryOptions;
using Strings = std::vector<std::string>;

std::string refusal(const Strings& arguments)
{
    try
    {
        RegistryOptions::parse(arguments);
    }
    catch (const Poco::InvalidArgumentException& e)
    {
        return e.message();
    }
    return "accepted";
}

TEST(RegistryOptions, ListensOnTheRegistrysWellKnownPortWithoutArguments)
{
    const RegistryOptions sut = RegistryOptions::parse({});

    EXPECT_EQ(sut.port, 7410);
    EXPECT_EQ(sut.logLevel, "information");
    EXPECT_FALSE(sut.help);
}

TEST(RegistryOptions, ReadsEveryOptionWithItsValue)
{
    const RegistryOptions sut = RegistryOptions::parse({"--port", "7500", "--log-level", "debug", "--help"});

    EXPECT_EQ(sut.port, 7500);
    EXPECT_EQ(sut.logLevel, "debug");
    EXPECT_TRUE(sut.help);
}

TEST(RegistryOptions, TakesPortZeroToLetTheSystemPick)
{
    const RegistryOptions sut = RegistryOptions::parse({"--port", "0"});

    EXPECT_EQ(sut.port, 0);
}

TEST(RegistryOptions, ReadsTheShortHelp)
{
    const RegistryOptions sut = RegistryOptions::parse({"-h"});

    EXPECT_TRUE(sut.help);
}

TEST(RegistryOptions, RefusesAPortBeyondTheRange)
{
    EXPECT_EQ(refusal({"--port", "65536"}), "--port needs a number from 0 to 65535, not \"65536\"");
}

TEST(RegistryOptions, RefusesAnUnknownLogLevel)
{
    EXPECT_EQ(refusal({"--log-level", "loud"}),
              "--log-level needs one of fatal, critical, error, warning, notice, "
              "information, debug or trace, not \"loud\"");
}

TEST(RegistryOptions, RefusesAnOptionWithoutItsValue)
{
    EXPECT_EQ(refusal({"--log-level"}), "--log-level needs a value");
}

TEST(RegistryOptions, RefusesAnOptionOfTheExampleThatTheRegistryDoesNotHave)
{
    EXPECT_EQ(refusal({"--tracks", "10"}), "unknown option \"--tracks\"");
}

TEST(RegistryOptions, TakesAnOptionNameAfterThePortAsTheValueItRefuses)
{
    EXPECT_EQ(refusal({"--port", "--tracks"}), "--port needs a number from 0 to 65535, not \"--tracks\"");
}

TEST(RegistryOptions, DescribesEveryOptionInItsUsage)
{
    const std::string sut = RegistryOptions::usage();

    EXPECT_EQ(sut,
              "usage: servicedb-registry [--port N] [--log-level LEVEL]\n"
              "  --port N            port to listen on at 127.0.0.1 (default 7410, 0 picks a free one)\n"
              "  --log-level LEVEL   fatal, critical, error, warning, notice, information, debug or trace\n"
              "                      (default information)\n");
}

} // namespace
