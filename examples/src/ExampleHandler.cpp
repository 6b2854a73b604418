#include "ExampleHandler.h"

namespace Orvi::Example
{

namespace
{

// A version the service does not implement is answered 200 too, with a text instead of the success body.
bool changedTheStore(Poco::Net::HTTPResponse::HTTPStatus status, const Command::HttpResponse& response)
{
    return (status == Poco::Net::HTTPResponse::HTTP_OK || status == Poco::Net::HTTPResponse::HTTP_CREATED) &&
           response.getTextMsg() == Mapping::MappingServiceJSONDataCache::jsonDataOk;
}

} // namespace

ExampleHandler::ExampleHandler(Util::MessageSync& worker, Mapping::MappingServiceJSONDataCache& cache,
                               const Service::SubscriptionTrigger& trigger)
    : HttpRequestHandlerBase(worker)
    , m_cache(cache)
    , m_trigger(trigger)
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
    const Poco::Net::HTTPResponse::HTTPStatus status = m_cache.updatePOSTCache(request, response);
    if (changedTheStore(status, response))
    {
        m_trigger.byRequest(request);
    }
    return status;
}

Poco::Net::HTTPResponse::HTTPStatus ExampleHandler::processDeleteRequest(const Command::HttpRequest& request,
                                                                         Command::HttpResponse& response,
                                                                         const Poco::URI&,
                                                                         const std::vector<std::string>&)
{
    const Poco::Net::HTTPResponse::HTTPStatus status = m_cache.updateDELETECache(request, response);
    if (changedTheStore(status, response))
    {
        m_trigger.byDeleteRequest(request, nullptr);
    }
    return status;
}

} // namespace Orvi::Example
