#include "UpgradeHandlerFactory.h"

#include "SubscriptionHandling/SubscriptionRequestHandler.h"

namespace ServiceDB::Test
{

UpgradeHandlerFactory::UpgradeHandlerFactory(Orvi::Service::SubscriptionService& service)
    : m_service(service)
{
}

Poco::Net::HTTPRequestHandler*
UpgradeHandlerFactory::createRequestHandler(const Poco::Net::HTTPServerRequest& request)
{
    if (Orvi::Service::SubscriptionRequestHandler::isUpgradeRequest(request))
    {
        return new Orvi::Service::SubscriptionRequestHandler(m_service);
    }
    return nullptr;
}

} // namespace ServiceDB::Test
