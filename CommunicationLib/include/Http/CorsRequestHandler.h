#pragma once

#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>

#include <string>
#include <vector>

namespace Orvi::Net
{

/// Answers cross-origin preflights and marks cross-origin answers for the browser.
class CorsRequestHandler
{
public:
    static const std::string FIELD_ORIGIN;
    /// "Origin"
    static const std::string FIELD_REQUEST_METHOD;
    /// "Access-Control-Request-Method"
    static const std::string FIELD_REQUEST_HEADERS;
    /// "Access-Control-Request-Headers"
    static const std::string FIELD_ALLOW_ORIGIN;
    /// "Access-Control-Allow-Origin"
    static const std::string FIELD_ALLOW_METHODS;
    /// "Access-Control-Allow-Methods"
    static const std::string FIELD_ALLOW_HEADERS;
    /// "Access-Control-Allow-Headers"
    static const std::string FIELD_EXPOSE_HEADERS;
    /// "Access-Control-Expose-Headers"
    static const std::string FIELD_VARY;
    /// "Vary"
    static const std::string KEY_EXPOSED_HEADERS;
    /// "Location, ETag": the answer headers that scripts of another origin may read.
    static const std::string KEY_LIST_SEPARATOR;
    /// ", "

    CorsRequestHandler() = default;

    void setAllowedMethods(const std::vector<std::string>& methods);
    /// The methods that a preflight may ask for, announced in this order. None until set, so that
    /// every preflight is refused.

    bool handleRequest(const Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) const;
    /// False when the request was a preflight and has been answered here: 200 with the allowed
    /// methods, or 403 when the asked method is not allowed, both without a body. True otherwise;
    /// a request with an Origin then gets the Allow-Origin, Expose-Headers and Vary headers set
    /// (not sent) and goes on.

private:
    bool isMethodAllowed(const std::string& method) const;
    void answerPreflight(const Poco::Net::HTTPServerRequest& request,
                         Poco::Net::HTTPServerResponse& response) const;

    std::vector<std::string> m_allowedMethods;
    std::string m_allowedMethodsText;
};

} // namespace Orvi::Net
