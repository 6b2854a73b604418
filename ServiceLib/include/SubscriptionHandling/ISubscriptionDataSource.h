#pragma once

#include "Command/WebSocketResponseObject.h"
#include "SubscriptionHandling/SubscriptionRequest.h"

namespace Orvi::Service
{

/// Where the content of a subscribed address comes from.
class ISubscriptionDataSource
{
public:
    virtual ~ISubscriptionDataSource() = default;

    virtual bool fetchData(const SubscriptionRequest& request,
                           Command::WebSocketResponseObject& response) const = 0;
    /// Fills the response with the current content of the request's address (or with an error the
    /// subscriber must hear of); false when there is nothing to send.
};

} // namespace Orvi::Service
