#pragma once

#include "HttpRequestHandlerBase.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

namespace Orvi::Example
{

/// Hands every request to the mapped cache: GET and HEAD are answered from the store, POST and DELETE
/// pass the access rules and the data handler before anything changes. What a write changed at once is
/// told to the subscribers; a change taken over for later is told when the vehicle confirms it.
class ExampleHandler : public HttpRequestHandlerBase
{
public:
    ExampleHandler(Util::MessageSync& worker, Mapping::MappingServiceJSONDataCache& cache,
                   const Service::SubscriptionTrigger& trigger);
    /// All three must outlive the handler.

protected:
    Poco::Net::HTTPResponse::HTTPStatus
    processGetRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                      const Poco::URI& uri, const std::vector<std::string>& pathSegments) override;

    Poco::Net::HTTPResponse::HTTPStatus
    processHeadRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                       const Poco::URI& uri, const std::vector<std::string>& pathSegments) override;

    Poco::Net::HTTPResponse::HTTPStatus
    processPostRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                       const Poco::URI& uri, const std::vector<std::string>& pathSegments) override;

    Poco::Net::HTTPResponse::HTTPStatus
    processDeleteRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                         const Poco::URI& uri, const std::vector<std::string>& pathSegments) override;

private:
    Mapping::MappingServiceJSONDataCache& m_cache;
    const Service::SubscriptionTrigger& m_trigger;
};

} // namespace Orvi::Example
