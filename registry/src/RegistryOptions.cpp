#include "RegistryOptions.h"

#include <Poco/Exception.h>

namespace Orvi::Registry
{

RegistryOptions RegistryOptions::parse(const std::vector<std::string>& arguments)
{
    bool portGiven = false;
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        const std::string& option = arguments[i];
        if (option == "--port" || option == "--log-level")
        {
            portGiven = portGiven || option == "--port";
            ++i;
        }
        else if (option != "--help" && option != "-h")
        {
            throw Poco::InvalidArgumentException("unknown option \"" + option + "\"");
        }
    }
    // The options are a subset of the example's, whose parser judges their values.
    const Example::ExampleOptions common = Example::ExampleOptions::parse(arguments, {});
    RegistryOptions options;
    options.port = portGiven ? common.port : DEFAULT_PORT;
    options.logLevel = common.logLevel;
    options.help = common.help;
    return options;
}

std::string RegistryOptions::usage()
{
    return "usage: servicedb-registry [--port N] [--log-level LEVEL]\n"
           "  --port N            port to listen on at 127.0.0.1 (default " +
           std::to_string(DEFAULT_PORT) +
           ", 0 picks a free one)\n"
           "  --log-level LEVEL   fatal, critical, error, warning, notice, information, debug or trace\n"
           "                      (default " +
           Example::ExampleOptions::DEFAULT_LOG_LEVEL + ")\n";
}

} // namespace Orvi::Registry
