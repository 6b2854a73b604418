// The address parser: any text a client may send as a request target or subscription event.
#include "Command/UrlPath.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{

using Orvi::Command::UrlPath;

void require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "UrlPathFuzzer: %s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Poco::URI uri;
    try
    {
        uri = Poco::URI(std::string(reinterpret_cast<const char*>(data), size));
    }
    catch (const Poco::SyntaxException&)
    {
        return 0; // the server refuses such a target before it is parsed into levels
    }

    // Documented never to throw: anything escaping from here is a finding.
    const UrlPath path(uri);
    const Poco::URI::QueryParameters parameters = path.getQueryParameters();

    require(path == path && !(path < path), "an address must equal itself and not precede itself");
    require(parameters.size() == path.getQueryParameterMap().size(),
            "the query must decode to the same parameters both ways");
    if (!path.isValid())
    {
        require(path.getService().empty() && path.getResource().empty() && path.getElement().empty(),
                "an invalid address must have no levels");
        return 0;
    }
    switch (path.getCharacteristic())
    {
    case UrlPath::ROOT:
    case UrlPath::ROOT_ID:
        require(path.getService().empty(), "the root has no service");
        break;
    case UrlPath::SERVICE_RESOURCE_OBJECT:
        require(!path.getElement().empty(), "an object address names its object");
        [[fallthrough]];
    case UrlPath::SERVICE_RESOURCE:
    case UrlPath::SERVICE_RESOURCE_ID:
    case UrlPath::SERVICE_RESOURCE_SPEC:
        require(!path.getResource().empty() && path.getResource().front() != '$',
                "a resource address names a resource that is no keyword");
        [[fallthrough]];
    default:
        require(!path.getService().empty() && path.getService().front() != '$',
                "a service address names a service that is no keyword");
        break;
    }
    return 0;
}
