#include "Net/OrviHttpCacheHandler.h"

#include <string>

namespace Orvi::Net
{

HTTPCacheHandler::CacheRequestResult
OrviHttpCacheHandler::handleRequest(const Poco::Net::HTTPRequest& request, Poco::Net::HTTPResponse& response,
                                    const Orvi::Command::HttpResponse& answer)
{
    std::string rendered;
    const std::string etag = HTTPCacheHandler::computeETag(answer.bodyBytes(rendered));
    response.set(HTTPCacheHandler::FIELD_ETAG, etag);
    if (!HTTPCacheHandler::matchesIfNoneMatch(request, etag))
    {
        return HTTPCacheHandler::CONTENT_CHANGED;
    }
    response.setStatusAndReason(Poco::Net::HTTPResponse::HTTP_NOT_MODIFIED);
    return HTTPCacheHandler::CONTENT_UNCHANGED;
}

} // namespace Orvi::Net
