#include "Http/CorsRequestHandler.h"

#include <Poco/Net/HTTPRequest.h>
#include <Poco/String.h>

#include <algorithm>

namespace Orvi::Net
{

const std::string CorsRequestHandler::FIELD_ORIGIN = "Origin";
const std::string CorsRequestHandler::FIELD_REQUEST_METHOD = "Access-Control-Request-Method";
const std::string CorsRequestHandler::FIELD_REQUEST_HEADERS = "Access-Control-Request-Headers";
const std::string CorsRequestHandler::FIELD_ALLOW_ORIGIN = "Access-Control-Allow-Origin";
const std::string CorsRequestHandler::FIELD_ALLOW_METHODS = "Access-Control-Allow-Methods";
const std::string CorsRequestHandler::FIELD_ALLOW_HEADERS = "Access-Control-Allow-Headers";
const std::string CorsRequestHandler::FIELD_EXPOSE_HEADERS = "Access-Control-Expose-Headers";
const std::string CorsRequestHandler::FIELD_VARY = "Vary";
const std::string CorsRequestHandler::KEY_EXPOSED_HEADERS = "Location, ETag";
const std::string CorsRequestHandler::KEY_LIST_SEPARATOR = ", ";

namespace
{

// The answer depends on the Origin, so shared caches must keep one copy per origin.
void addVaryOnOrigin(Poco::Net::HTTPServerResponse& response)
{
    const std::string& origin = CorsRequestHandler::FIELD_ORIGIN;
    if (!response.has(CorsRequestHandler::FIELD_VARY))
    {
        response.set(CorsRequestHandler::FIELD_VARY, origin);
    }
    else if (!response.hasToken(CorsRequestHandler::FIELD_VARY, origin))
    {
        response.set(CorsRequestHandler::FIELD_VARY, response.get(CorsRequestHandler::FIELD_VARY) +
                                                         CorsRequestHandler::KEY_LIST_SEPARATOR + origin);
    }
}

} // namespace

void CorsRequestHandler::setAllowedMethods(const std::vector<std::string>& methods)
{
    m_allowedMethods = methods;
    m_allowedMethodsText = Poco::cat(KEY_LIST_SEPARATOR, m_allowedMethods.begin(), m_allowedMethods.end());
}

bool CorsRequestHandler::handleRequest(const Poco::Net::HTTPServerRequest& request,
                                       Poco::Net::HTTPServerResponse& response) const
{
    if (!request.has(FIELD_ORIGIN))
    {
        return true;
    }
    if (request.getMethod() == Poco::Net::HTTPRequest::HTTP_OPTIONS && request.has(FIELD_REQUEST_METHOD))
    {
        answerPreflight(request, response);
        return false;
    }
    response.set(FIELD_ALLOW_ORIGIN, request.get(FIELD_ORIGIN));
    response.set(FIELD_EXPOSE_HEADERS, KEY_EXPOSED_HEADERS);
    addVaryOnOrigin(response);
    return true;
}

bool CorsRequestHandler::isMethodAllowed(const std::string& method) const
{
    return std::find(m_allowedMethods.begin(), m_allowedMethods.end(), method) != m_allowedMethods.end();
}

void CorsRequestHandler::answerPreflight(const Poco::Net::HTTPServerRequest& request,
                                         Poco::Net::HTTPServerResponse& response) const
{
    // Method names are case-sensitive in HTTP, so only the exact name is allowed.
    if (!isMethodAllowed(Poco::trim(request.get(FIELD_REQUEST_METHOD))))
    {
        response.setStatusAndReason(Poco::Net::HTTPResponse::HTTP_FORBIDDEN);
    }
    else
    {
        response.setStatusAndReason(Poco::Net::HTTPResponse::HTTP_OK);
        response.set(FIELD_ALLOW_ORIGIN, request.get(FIELD_ORIGIN));
        response.set(FIELD_ALLOW_METHODS, m_allowedMethodsText);
        const std::string& requestedHeaders =
            request.get(FIELD_REQUEST_HEADERS, Poco::Net::HTTPMessage::EMPTY);
        if (!requestedHeaders.empty())
        {
            response.set(FIELD_ALLOW_HEADERS, requestedHeaders);
        }
        response.set(FIELD_EXPOSE_HEADERS, KEY_EXPOSED_HEADERS);
        addVaryOnOrigin(response);
    }
    response.setContentLength(0);
    response.send();
}

} // namespace Orvi::Net
