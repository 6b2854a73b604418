#include "ExampleOptions.h"

#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Example::ExampleOptions;
using Strings = std::vector<std::string>;

const Strings BUNDLED{"cabin.json", "audio.json"};

std::string refusal(const Strings& arguments)
{
    try
    {
        ExampleOptions::parse(arguments, BUNDLED);
    }
    catch (const Poco::InvalidArgumentException& e)
    {
        return e.message();
    }
    return "accepted";
}

TEST(ExampleOptions, GivesTheDefaultsWithoutArguments)
{
    const ExampleOptions sut = ExampleOptions::parse({}, BUNDLED);

    EXPECT_EQ(sut.port, 8080);
    EXPECT_EQ(sut.definitions, BUNDLED);
    EXPECT_EQ(sut.tracks, 1000U);
    EXPECT_EQ(sut.vehicleRate, 2U);
    EXPECT_EQ(sut.registryHost, "");
    EXPECT_EQ(sut.registryPort, 0);
    EXPECT_EQ(sut.logLevel, "information");
    EXPECT_FALSE(sut.help);
}

TEST(ExampleOptions, ReadsTheRegistryAsHostAndPort)
{
    const ExampleOptions sut = ExampleOptions::parse({"--registry", "registry.local:7410"}, BUNDLED);

    EXPECT_EQ(sut.registryHost, "registry.local");
    EXPECT_EQ(sut.registryPort, 7410);
}

TEST(ExampleOptions, RefusesARegistryWithoutAValidPort)
{
    for (const char* registry :
         {"127.0.0.1", "127.0.0.1:", "127.0.0.1:0", "127.0.0.1:65536", ":7410", "host:x"})
    {
        EXPECT_EQ(refusal({"--registry", registry}),
                  "--registry needs HOST:PORT with a port from 1 to 65535, not \"" + std::string(registry) +
                      "\"")
            << registry;
    }
}

TEST(ExampleOptions, ReadsEveryOptionWithItsValue)
{
    const ExampleOptions sut =
        ExampleOptions::parse({"--port", "9090", "--tracks", "100000", "--vehicle-rate", "0", "--log-level",
                               "debug", "--definitions", "a.json", "--help"},
                              BUNDLED);

    EXPECT_EQ(sut.port, 9090);
    EXPECT_EQ(sut.definitions, Strings{"a.json"});
    EXPECT_EQ(sut.tracks, 100000U);
    EXPECT_EQ(sut.vehicleRate, 0U);
    EXPECT_EQ(sut.logLevel, "debug");
    EXPECT_TRUE(sut.help);
}

TEST(ExampleOptions, CollectsRepeatedDefinitionsInsteadOfTheBundledOnes)
{
    const ExampleOptions sut =
        ExampleOptions::parse({"--definitions", "a.json", "--definitions", "b.json"}, BUNDLED);

    EXPECT_EQ(sut.definitions, (Strings{"a.json", "b.json"}));
}

TEST(ExampleOptions, RefusesAPortBeyondTheRange)
{
    EXPECT_EQ(refusal({"--port", "65536"}), "--port needs a number from 0 to 65535, not \"65536\"");
}

TEST(ExampleOptions, RefusesATrackCountThatIsNoNumber)
{
    EXPECT_EQ(refusal({"--tracks", "many"}), "--tracks needs a number from 0 to 4294967295, not \"many\"");
}

TEST(ExampleOptions, RefusesAVehicleRateAboveAHundredThousandStepsASecond)
{
    EXPECT_EQ(refusal({"--vehicle-rate", "100001"}),
              "--vehicle-rate needs a number from 0 to 100000, not \"100001\"");
}

TEST(ExampleOptions, RefusesAnUnknownLogLevel)
{
    EXPECT_EQ(refusal({"--log-level", "loud"}),
              "--log-level needs one of fatal, critical, error, warning, notice, "
              "information, debug or trace, not \"loud\"");
}

TEST(ExampleOptions, RefusesAnOptionWithoutItsValue)
{
    EXPECT_EQ(refusal({"--port"}), "--port needs a value");
}

TEST(ExampleOptions, RefusesAnUnknownOption)
{
    EXPECT_EQ(refusal({"--verbose"}), "unknown option \"--verbose\"");
}

} // namespace
