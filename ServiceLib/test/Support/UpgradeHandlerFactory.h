#pragma once

#include "SubscriptionHandling/SubscriptionService.h"

#include <Poco/Net/HTTPRequestHandlerFactory.h>

namespace ServiceDB::Test
{

/// The factory an embedding HTTP server would have: upgrade requests go to the subscription service,
/// anything else is not served (HTTP 501).
class UpgradeHandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    explicit UpgradeHandlerFactory(Orvi::Service::SubscriptionService& service);

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest& request) override;

private:
    Orvi::Service::SubscriptionService& m_service;
};

} // namespace ServiceDB::Test
