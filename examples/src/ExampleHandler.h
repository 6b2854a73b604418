#pragma once

#include "HttpRequestHandlerBase.h"
#include "Mapping/MappingServiceJSONDataCache.h"

namespace Orvi::Example
{

/// Hands every request to the mapped cache: GET and HEAD are answered from the store, POST and DELETE
/// pass the access rules and the data handler before anything changes.
class ExampleHandler : public HttpRequestHandlerBase
{
public:
    ExampleHandler(Util::MessageSync& worker, Mapping::MappingServiceJSONDataCache& cache);
    /// Both must outlive the handler.

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
};

} // namespace Orvi::Example
