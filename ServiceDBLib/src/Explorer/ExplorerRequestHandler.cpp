#include "Explorer/ExplorerRequestHandler.h"

#include "Command/HttpResponse.h"
#include "Explorer/ExplorerAsset.h"
#include "Http/HTTPCacheHandler.h"
#include "Http/HTTPEncoderDecoder.h"

#include <Poco/Net/HTTPRequest.h>

#include <map>
#include <string_view>

namespace Orvi::Explorer
{

const std::string ExplorerRequestHandler::BASE_PATH = "/$explorer/";
const std::string ExplorerRequestHandler::MSG_NO_SUCH_FILE = "no such file of the explorer";
const std::string ExplorerRequestHandler::MSG_METHOD_NOT_ALLOWED = "the explorer is only read";

namespace
{

const std::string INDEX_FILE = "index.html";
const std::string ALLOWED_METHODS = "GET, HEAD";
const std::string CACHE_CONTROL = "no-cache";
// The page loads nothing but its own files and talks to its own origin only.
const std::string CONTENT_SECURITY_POLICY =
    "default-src 'self'; connect-src 'self'; img-src 'self' data:; frame-ancestors 'none'";

// The request's path as sent, without its query: the explorer's addresses carry no escapes.
std::string_view pathOf(const std::string& target)
{
    const std::string_view view(target);
    return view.substr(0, view.find_first_of("?#"));
}

std::string_view baseWithoutSlash()
{
    return std::string_view(ExplorerRequestHandler::BASE_PATH)
        .substr(0, ExplorerRequestHandler::BASE_PATH.size() - 1);
}

// Each file's tag, computed once: the files do not change while the process runs.
const std::string& etagOf(const ExplorerAsset& asset)
{
    static const std::map<std::string_view, std::string> tags = []
    {
        std::map<std::string_view, std::string> computed;
        for (const ExplorerAsset& each : ExplorerAsset::all())
        {
            computed.emplace(each.name, Net::HTTPCacheHandler::computeETag(std::string(each.bytes)));
        }
        return computed;
    }();
    return tags.at(asset.name);
}

void sendError(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response,
               Poco::Net::HTTPResponse::HTTPStatus status, const std::string& message)
{
    Net::HTTPEncoderDecoder coder(request, response);
    Command::HttpResponse::createError(status, message)
        .send(response, coder, request.getMethod() == Poco::Net::HTTPRequest::HTTP_HEAD);
}

// An answer without a body: a redirect or a confirmation that the client's copy is current.
void sendEmpty(Poco::Net::HTTPServerResponse& response, Poco::Net::HTTPResponse::HTTPStatus status)
{
    response.setStatusAndReason(status);
    response.setContentLength(0);
    response.send();
}

} // namespace

bool ExplorerRequestHandler::isExplorerRequest(const Poco::Net::HTTPServerRequest& request)
{
    const std::string_view path = pathOf(request.getURI());
    return path == baseWithoutSlash() || path.substr(0, BASE_PATH.size()) == BASE_PATH;
}

void ExplorerRequestHandler::handleRequest(Poco::Net::HTTPServerRequest& request,
                                           Poco::Net::HTTPServerResponse& response)
{
    const std::string& method = request.getMethod();
    const bool headOnly = method == Poco::Net::HTTPRequest::HTTP_HEAD;
    if (!headOnly && method != Poco::Net::HTTPRequest::HTTP_GET)
    {
        response.set("Allow", ALLOWED_METHODS);
        sendError(request, response, Poco::Net::HTTPResponse::HTTP_METHOD_NOT_ALLOWED,
                  MSG_METHOD_NOT_ALLOWED);
        return;
    }

    const std::string_view path = pathOf(request.getURI());
    if (path == baseWithoutSlash())
    {
        response.set(Command::HttpResponse::FIELD_LOCATION, BASE_PATH);
        sendEmpty(response, Poco::Net::HTTPResponse::HTTP_MOVED_PERMANENTLY);
        return;
    }

    std::string_view name = path.substr(BASE_PATH.size());
    if (name.empty())
    {
        name = INDEX_FILE;
    }
    const ExplorerAsset* asset = ExplorerAsset::find(name);
    if (asset == nullptr)
    {
        sendError(request, response, Poco::Net::HTTPResponse::HTTP_NOT_FOUND, MSG_NO_SUCH_FILE);
        return;
    }

    const std::string& etag = etagOf(*asset);
    response.set(Net::HTTPCacheHandler::FIELD_ETAG, etag);
    response.set("Cache-Control", CACHE_CONTROL);
    response.set("Content-Security-Policy", CONTENT_SECURITY_POLICY);
    response.set("X-Content-Type-Options", "nosniff");
    if (Net::HTTPCacheHandler::matchesIfNoneMatch(request, etag))
    {
        sendEmpty(response, Poco::Net::HTTPResponse::HTTP_NOT_MODIFIED);
        return;
    }
    Net::HTTPEncoderDecoder coder(request, response);
    Command::HttpResponse answer;
    answer.setStatus(Poco::Net::HTTPResponse::HTTP_OK);
    answer.setDataFromText(std::string(asset->bytes), std::string(asset->mediaType));
    answer.send(response, coder, headOnly);
}

} // namespace Orvi::Explorer
