#include "SubscriptionHandling/SubscriptionRequestHandler.h"

#include "SubscriptionHandling/SubscriptionService.h"

#include <Poco/String.h>
#include <Poco/StringTokenizer.h>

namespace Orvi::Service
{

SubscriptionRequestHandler::SubscriptionRequestHandler(SubscriptionService& service)
    : m_service(service)
{
}

void SubscriptionRequestHandler::handleRequest(Poco::Net::HTTPServerRequest& request,
                                               Poco::Net::HTTPServerResponse& response)
{
    m_service.accept(request, response);
}

bool SubscriptionRequestHandler::isUpgradeRequest(const Poco::Net::HTTPRequest& request)
{
    if (request.getMethod() != Poco::Net::HTTPRequest::HTTP_GET ||
        Poco::icompare(request.get("Upgrade", ""), "websocket") != 0)
    {
        return false;
    }
    const Poco::StringTokenizer tokens(request.get("Connection", ""), ",",
                                       Poco::StringTokenizer::TOK_TRIM |
                                           Poco::StringTokenizer::TOK_IGNORE_EMPTY);
    for (const std::string& token : tokens)
    {
        if (Poco::icompare(token, "upgrade") == 0)
        {
            return true;
        }
    }
    return false;
}

} // namespace Orvi::Service
