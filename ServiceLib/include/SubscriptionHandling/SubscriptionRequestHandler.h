#pragma once

#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>

namespace Orvi::Service
{

class SubscriptionService;

/// Hands a WebSocket upgrade request to the subscription service. The HTTP server's factory returns one
/// for every request that isUpgradeRequest() accepts, whatever its path. handleRequest() returns right
/// after the handshake: the connection is served on the service's own threads, so the HTTP server's
/// thread pool needs no room for WebSocket clients.
class SubscriptionRequestHandler : public Poco::Net::HTTPRequestHandler
{
public:
    explicit SubscriptionRequestHandler(SubscriptionService& service);
    /// The service must outlive the handler.

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override;

    static bool isUpgradeRequest(const Poco::Net::HTTPRequest& request);
    /// True for a GET with "Upgrade: websocket" and "upgrade" among the tokens of "Connection", in any case.

private:
    SubscriptionService& m_service;
};

} // namespace Orvi::Service
