#pragma once

#include "ExampleHandler.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <string>

namespace Orvi::Registry
{

/// Answers as the example's handler does from the store, and refuses to register a service twice: a
/// registration of a name, host and port that is registered already is answered 409.
class RegistryHandler : public Example::ExampleHandler
{
public:
    static const std::string SERVICE;
    /// "registry"
    static const std::string RESOURCE;
    /// "services"
    static const std::string MSG_ALREADY_REGISTERED;
    /// "service already registered"

    RegistryHandler(Util::MessageSync& worker, Mapping::MappingServiceJSONDataCache& cache,
                    const Service::SubscriptionTrigger& trigger);
    /// All three must outlive the handler.

protected:
    Poco::Net::HTTPResponse::HTTPStatus
    processPostRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                       const Poco::URI& uri, const std::vector<std::string>& pathSegments) override;

private:
    bool isRegisteredAlready(const Command::HttpRequest& request) const;
    /// Whether the request registers a name, host and port that a registration holds, compared as the
    /// store keeps them. A body that the store would refuse is left to it.

    Mapping::MappingServiceJSONDataCache& m_cache;
};

} // namespace Orvi::Registry
