#include "RegistryHandler.h"

#include "JSONDataCache/DBData/Element.h"
#include "JSONTools.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>

#include <vector>

namespace Orvi::Registry
{

const std::string RegistryHandler::SERVICE = "registry";
const std::string RegistryHandler::RESOURCE = "services";
const std::string RegistryHandler::MSG_ALREADY_REGISTERED = "service already registered";

RegistryHandler::RegistryHandler(Util::MessageSync& worker, Mapping::MappingServiceJSONDataCache& cache,
                                 const Service::SubscriptionTrigger& trigger)
    : ExampleHandler(worker, cache, trigger)
    , m_cache(cache)
{
}

Poco::Net::HTTPResponse::HTTPStatus
RegistryHandler::processPostRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                                    const Poco::URI& uri, const std::vector<std::string>& pathSegments)
{
    if (isRegisteredAlready(request))
    {
        response = Command::HttpResponse::createError(Poco::Net::HTTPResponse::HTTP_CONFLICT,
                                                      MSG_ALREADY_REGISTERED);
        return Poco::Net::HTTPResponse::HTTP_CONFLICT;
    }
    return ExampleHandler::processPostRequest(request, response, uri, pathSegments);
}

bool RegistryHandler::isRegisteredAlready(const Command::HttpRequest& request) const
{
    const Command::UrlPath& path = request.getUrlPath();
    Poco::JSON::Object::Ptr body;
    // Only a POST on the collection itself creates; with a query it changes the objects selected.
    if (path.getCharacteristic() != Command::UrlPath::SERVICE_RESOURCE || path.getService() != SERVICE ||
        path.getResource() != RESOURCE || !path.getQueryParameters().empty() ||
        !Util::JSONTools::parseJSONString(request.getMessage(), body))
    {
        return false;
    }
    const DBData::Element::Ptr element = m_cache.selectElement(SERVICE, RESOURCE);
    if (element.isNull())
    {
        return false;
    }
    JSONDataCache::JSONDataCache::AttributeValuePairs identity;
    for (const std::string name : {"name", "host", "port"})
    {
        const auto attribute = element->getAttributes().find(name);
        Poco::Dynamic::Var value = body->get(name);
        // Compared as the store would keep them; a value that it would refuse is its to refuse.
        if (attribute == element->getAttributes().end() || value.isEmpty() ||
            !attribute->second->checkAttributeValueContent(value, false))
        {
            return false;
        }
        identity.emplace_back(name, value);
    }
    std::vector<long> registrations;
    return m_cache.selectXObjectIDsWithAttributesOfValues(SERVICE, RESOURCE, registrations, identity) &&
           !registrations.empty();
}

} // namespace Orvi::Registry
