#pragma once

#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>

#include <string>

namespace Orvi::Explorer
{

/// Serves the browser explorer of the process's services: one page with its script and style, built
/// into the library, under an address that no service can have. Add it to the server's handler factory
/// before the store's handler:
///
///     if (Explorer::ExplorerRequestHandler::isExplorerRequest(request))
///         return new Explorer::ExplorerRequestHandler;
///
/// The page reads and writes through the process's own REST and WebSocket addresses.
class ExplorerRequestHandler : public Poco::Net::HTTPRequestHandler
{
public:
    static const std::string BASE_PATH;
    /// "/$explorer/": a first level beginning with '$' is never a service's name.
    static const std::string MSG_NO_SUCH_FILE;
    /// The message of the 404 for an address under BASE_PATH that names no file of the explorer.
    static const std::string MSG_METHOD_NOT_ALLOWED;
    /// The message of the 405 for any method but GET and HEAD.

    static bool isExplorerRequest(const Poco::Net::HTTPServerRequest& request);
    /// True for BASE_PATH, for BASE_PATH without its closing slash, and for every address under it.

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override;
    /// GET and HEAD: the page at BASE_PATH, a file by its name under it, a redirect to BASE_PATH from the
    /// address without its closing slash. Answers carry a strong ETag (304 on a matching If-None-Match),
    /// are compressed as the request accepts, and are revalidated by the browser before each use.
};

} // namespace Orvi::Explorer
