#pragma once

#include "ExampleOptions.h"
#include "ServiceRegistryConnection.h"

#include <Poco/Types.h>

#include <string>
#include <vector>

namespace Orvi::Registry
{

/// The command line of the registry: --port N, --log-level LEVEL and --help.
class RegistryOptions
{
public:
    static constexpr Poco::UInt16 DEFAULT_PORT = ServiceRegistryConnection::DEFAULT_PORT;

    static RegistryOptions parse(const std::vector<std::string>& arguments);
    /// Reads the arguments after the program name. Raises Poco::InvalidArgumentException naming the
    /// faulty argument.

    static std::string usage();
    /// The help text.

    Poco::UInt16 port = DEFAULT_PORT;
    /// 0 lets the system pick a free port.
    std::string logLevel = Example::ExampleOptions::DEFAULT_LOG_LEVEL;
    bool help = false;
};

} // namespace Orvi::Registry
