#include "ExampleHandler.h"

#include "VersionCheck.h"

namespace Orvi::Example
{

ExampleHandler::ExampleHandler(Util::MessageSync& worker, JSONDataCache::JSONDataCache& cache)
    : HttpRequestHandlerBase(worker)
    , m_cache(cache)
{
}

Poco::Net::HTTPResponse::HTTPStatus ExampleHandler::processGetRequest(const Command::HttpRequest& request,
                                                                      Command::HttpResponse& response,
                                                                      const Poco::URI&,
                                                                      const std::vector<std::string>&)
{
    const DBData::Service::Ptr service = m_cache.selectService(request.getUrlPath().getService());
    if (service &&
        !Service::VersionCheck::acceptedVersionMatches(request.getHttpRequest(), service->getVersions()))
    {
        // A version mismatch is no error of the exchange: the client gets a readable text with 200.
        response.setMimetype("application/json");
        response.setDataFromText(Service::VersionCheck::msgVersionNotImplemented, "text/plain");
        return Poco::Net::HTTPResponse::HTTP_OK;
    }
    return m_cache.queryCache(request, response, request.getHttpRequest().serverAddress().port());
}

Poco::Net::HTTPResponse::HTTPStatus
ExampleHandler::processHeadRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                                   const Poco::URI& uri, const std::vector<std::string>& pathSegments)
{
    return processGetRequest(request, response, uri, pathSegments);
}

Poco::Net::HTTPResponse::HTTPStatus ExampleHandler::processPostRequest(const Command::HttpRequest&,
                                                                       Command::HttpResponse&,
                                                                       const Poco::URI&,
                                                                       const std::vector<std::string>&)
{
    return Poco::Net::HTTPResponse::HTTP_METHOD_NOT_ALLOWED;
}

Poco::Net::HTTPResponse::HTTPStatus ExampleHandler::processDeleteRequest(const Command::HttpRequest&,
                                                                         Command::HttpResponse&,
                                                                         const Poco::URI&,
                                                                         const std::vector<std::string>&)
{
    return Poco::Net::HTTPResponse::HTTP_METHOD_NOT_ALLOWED;
}

} // namespace Orvi::Example
