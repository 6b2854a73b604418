#include "Net/OrviHttpCacheHandler.h"

#include <string>

namespace Orvi::Net
{

HTTPCacheHandler::CacheRequestResult
OrviHttpCacheHandler::handleRequest(const Poco::Net::HTTPRequest& request, Poco::Net::HTTPResponse& response,
                                    const Orvi::Command::HttpResponse& answer)
{
    // A rendered body is tagged as it is held, without a copy.
    const std::string etag = answer.getJsonMsg().isNull() ? HTTPCacheHandler::computeETag(answer.getTextMsg())
                                                          : HTTPCacheHandler::computeETag(answer.getBody());
    response.set(HTTPCacheHandler::FIELD_ETAG, etag);
    if (!HTTPCacheHandler::matchesIfNoneMatch(request, etag))
    {
        return HTTPCacheHandler::CONTENT_CHANGED;
    }
    response.setStatusAndReason(Poco::Net::HTTPResponse::HTTP_NOT_MODIFIED);
    return HTTPCacheHandler::CONTENT_UNCHANGED;
}

} // namespace Orvi::Net
