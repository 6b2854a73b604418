#include "ExampleOptions.h"

#include <Poco/Exception.h>
#include <Poco/Logger.h>
#include <Poco/NumberParser.h>

#include <limits>

namespace Orvi::Example
{

const std::string ExampleOptions::DEFAULT_LOG_LEVEL = "information";

namespace
{

Poco::UInt64 numberAt(const std::string& option, const std::string& text, Poco::UInt64 maximum)
{
    Poco::UInt64 number = 0;
    if (!Poco::NumberParser::tryParseUnsigned64(text, number) || number > maximum)
    {
        throw Poco::InvalidArgumentException(option + " needs a number from 0 to " + std::to_string(maximum) +
                                             ", not \"" + text + "\"");
    }
    return number;
}

// HOST:PORT without a name lookup, so that a registry that is down cannot delay the command line.
void readRegistry(const std::string& text, ExampleOptions& options)
{
    const std::string::size_type colon = text.rfind(':');
    unsigned port = 0;
    if (colon == std::string::npos || colon == 0 ||
        !Poco::NumberParser::tryParseUnsigned(text.substr(colon + 1), port) || port == 0 ||
        port > std::numeric_limits<Poco::UInt16>::max())
    {
        throw Poco::InvalidArgumentException(
            "--registry needs HOST:PORT with a port from 1 to 65535, not \"" + text + "\"");
    }
    options.registryHost = text.substr(0, colon);
    options.registryPort = static_cast<Poco::UInt16>(port);
}

} // namespace

ExampleOptions ExampleOptions::parse(const std::vector<std::string>& arguments,
                                     const std::vector<std::string>& defaultDefinitions)
{
    ExampleOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        const std::string& option = arguments[i];
        if (option == "--help" || option == "-h")
        {
            options.help = true;
            continue;
        }
        if (option != "--port" && option != "--definitions" && option != "--tracks" &&
            option != "--vehicle-rate" && option != "--registry" && option != "--log-level")
        {
            throw Poco::InvalidArgumentException("unknown option \"" + option + "\"");
        }
        if (i + 1 == arguments.size())
        {
            throw Poco::InvalidArgumentException(option + " needs a value");
        }
        const std::string& value = arguments[++i];
        if (option == "--port")
        {
            options.port =
                static_cast<Poco::UInt16>(numberAt(option, value, std::numeric_limits<Poco::UInt16>::max()));
        }
        else if (option == "--definitions")
        {
            options.definitions.push_back(value);
        }
        else if (option == "--tracks")
        {
            options.tracks =
                static_cast<std::size_t>(numberAt(option, value, std::numeric_limits<Poco::UInt32>::max()));
        }
        else if (option == "--vehicle-rate")
        {
            options.vehicleRate = static_cast<std::size_t>(numberAt(option, value, MAX_VEHICLE_RATE));
        }
        else if (option == "--registry")
        {
            readRegistry(value, options);
        }
        else
        {
            try
            {
                Poco::Logger::parseLevel(value);
            }
            catch (const Poco::InvalidArgumentException&)
            {
                throw Poco::InvalidArgumentException(
                    "--log-level needs one of fatal, critical, error, warning, "
                    "notice, information, debug or trace, not \"" +
                    value + "\"");
            }
            options.logLevel = value;
        }
    }
    if (options.definitions.empty())
    {
        options.definitions = defaultDefinitions;
    }
    return options;
}

std::string ExampleOptions::usage()
{
    return "usage: servicedb-example [--port N] [--definitions FILE]... [--tracks N] [--vehicle-rate N]\n"
           "                         [--registry HOST:PORT] [--log-level LEVEL]\n"
           "  --port N            port to listen on at 127.0.0.1 (default 8080, 0 picks a free one)\n"
           "  --definitions FILE  service definition file, repeatable (default: the bundled cabin and "
           "audio)\n"
           "  --tracks N          number of generated tracks (default 1000)\n"
           "  --vehicle-rate N    steps of the simulated vehicle a second (default 2, 0 keeps it still)\n"
           "  --registry H:P      register the services at the registry on host H, port P, while running\n"
           "  --log-level LEVEL   fatal, critical, error, warning, notice, information, debug or trace\n"
           "                      (default information)\n";
}

} // namespace Orvi::Example
