#pragma once

#include "HttpRequestHandlerBase.h"
#include "JSONDataCache/JSONDataCache.h"

namespace Orvi::Example
{

/// Answers GET and HEAD from the cache, on the port the request came in on, once the service version
/// that the client accepts matches; POST and DELETE are not supported yet (405).
class ExampleHandler : public HttpRequestHandlerBase
{
public:
    ExampleHandler(Util::MessageSync& worker, JSONDataCache::JSONDataCache& cache);
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
    JSONDataCache::JSONDataCache& m_cache;
};

} // namespace Orvi::Example
