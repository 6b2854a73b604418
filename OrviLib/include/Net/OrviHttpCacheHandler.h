#pragma once

#include "Command/HttpResponse.h"
#include "Http/HTTPCacheHandler.h"

#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>

namespace Orvi::Net
{

/// Entity tags for the answers of the service database, and the short answer to a client whose copy
/// is current.
class OrviHttpCacheHandler
{
public:
    static HTTPCacheHandler::CacheRequestResult handleRequest(const Poco::Net::HTTPRequest& request,
                                                              Poco::Net::HTTPResponse& response,
                                                              const Orvi::Command::HttpResponse& answer);
    /// Sets the "ETag" header of the response to the strong tag of the answer's body bytes (before
    /// content coding). When the request's If-None-Match names that tag, sets 304 Not Modified and
    /// gives CONTENT_UNCHANGED: the caller then sends the response without a body. Otherwise gives
    /// CONTENT_CHANGED and leaves the status alone.
};

} // namespace Orvi::Net
