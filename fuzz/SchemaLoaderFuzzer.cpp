// The schema loader: random definition texts. A load succeeds whole or raises SchemaError and leaves the
// map as it was; nothing else may escape.
#include "JSONTools.h"
#include "SchemaLoader/SchemaError.h"
#include "SchemaLoader/SchemaLoader.h"

#include <Poco/JSON/Object.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{

using Orvi::Loader::SchemaError;
using Orvi::Loader::SchemaLoader;

const std::string SOURCE = "fuzz.json";

void require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "SchemaLoaderFuzzer: %s\n", what);
        std::abort();
    }
}

bool loads(const std::string& text, Orvi::DBData::ServiceMap& services)
{
    try
    {
        SchemaLoader().loadText(text, SOURCE, services);
        return true;
    }
    catch (const SchemaError& error)
    {
        require(error.message().compare(0, SOURCE.size() + 2, SOURCE + ": ") == 0,
                "an error names its source first");
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    Orvi::DBData::ServiceMap services;
    if (!loads(text, services))
    {
        require(services.empty(), "a failed load must leave the map as it was");
        return 0;
    }

    require(services.size() == 1, "a definition defines one service");
    const Orvi::DBData::Service& service = *services.begin()->second;
    require(!service.getName().empty() && services.begin()->first == service.getName(),
            "a service stands under its own name");
    require(service.getSpec() == text, "a service keeps its definition text");
    for (const auto& [name, resource] : service.getResources())
    {
        require(!name.empty() && !resource->getElement().isNull(), "a resource has a name and an element");
        Poco::JSON::Object::Ptr spec;
        require(Orvi::Util::JSONTools::parseJSONString(resource->getSpec(), spec),
                "a resource keeps its part of the definition as a JSON object");
        const Orvi::DBData::AttributeMap& attributes = resource->getElement()->getAttributes();
        for (const char* defaultName : {"id", "name", "uri"})
        {
            require(attributes.count(defaultName) == 1, "every element has the default attributes");
        }
    }

    // The same service a second time is refused, and the first one stays.
    require(!loads(text, services), "a service cannot be loaded twice");
    require(services.size() == 1, "a refused load must leave the map as it was");
    return 0;
}
