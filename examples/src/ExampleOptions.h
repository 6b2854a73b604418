#pragma once

#include <Poco/Types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Orvi::Example
{

/// The command line of the example: --port N, --definitions FILE (repeatable), --tracks N,
/// --vehicle-rate N, --registry HOST:PORT, --log-level LEVEL and --help.
class ExampleOptions
{
public:
    static constexpr Poco::UInt16 DEFAULT_PORT = 8080;
    static constexpr std::size_t DEFAULT_TRACKS = 1000;
    static constexpr std::size_t DEFAULT_VEHICLE_RATE = 2;
    static constexpr std::size_t MAX_VEHICLE_RATE = 100000;
    static const std::string DEFAULT_LOG_LEVEL;
    /// "information"

    static ExampleOptions parse(const std::vector<std::string>& arguments,
                                const std::vector<std::string>& defaultDefinitions);
    /// Reads the arguments after the program name; the default definitions apply when no --definitions
    /// is given. Raises Poco::InvalidArgumentException naming the faulty argument.

    static std::string usage();
    /// The help text.

    Poco::UInt16 port = DEFAULT_PORT;
    /// 0 lets the system pick a free port.
    std::vector<std::string> definitions;
    std::size_t tracks = DEFAULT_TRACKS;
    std::size_t vehicleRate = DEFAULT_VEHICLE_RATE;
    /// Steps of the simulated vehicle a second; 0 keeps it still.
    std::string registryHost;
    /// Where the services are registered at start-up; empty for nowhere.
    Poco::UInt16 registryPort = 0;
    std::string logLevel = DEFAULT_LOG_LEVEL;
    bool help = false;
};

} // namespace Orvi::Example
