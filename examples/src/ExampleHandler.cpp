#include "ExampleHandler.h"

namespace Orvi::Example
{

ExampleHandler::ExampleHandler(Util::MessageSync& worker, Mapping::MappingServiceJSONDataCache& cache)
    : HttpRequestHandlerBase(worker)
    , m_cache(cache)
{
}

Poco::Net::HTTPResponse::HTTPStatus ExampleHandler::processGetRequest(const Command::HttpRequest& request,
                                                                      Command::HttpResponse& response,
                                                                      const Poco::URI&,
                                                                      const std::vector<std::string>&)
{
    return m_cache.queryCache(request, response);
}

Poco::Net::HTTPResponse::HTTPStatus
ExampleHandler::processHeadRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                                   const Poco::URI& uri, const std::vector<std::string>& pathSegments)
{
    return processGetRequest(request, response, uri, pathSegments);
}

Poco::Net::HTTPResponse::HTTPStatus ExampleHandler::processPostRequest(const Command::HttpRequest& request,
                                                                       Command::HttpResponse& response,
                                                                       const Poco::URI&,
                                                                       const std::vector<std::string>&)
{
    return m_cache.updatePOSTCache(request, response);
}

Poco::Net::HTTPResponse::HTTPStatus ExampleHandler::processDeleteRequest(const Command::HttpRequest& request,
                                                                         Command::HttpResponse& response,
                                                                         const Poco::URI&,
                                                                         const std::vector<std::string>&)
{
    return m_cache.updateDELETECache(request, response);
}

} // namespace Orvi::Example
