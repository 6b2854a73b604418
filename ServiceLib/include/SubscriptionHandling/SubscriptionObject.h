#pragma once

#include "Command/WebSocketResponseObject.h"
#include "SubscriptionHandling/SubscriptionRequest.h"

namespace Orvi::Service
{

/// One live subscription of one connection, as the trigger sees it.
class SubscriptionObject
{
public:
    virtual ~SubscriptionObject() = default;

    virtual const SubscriptionRequest& request() const = 0;
    /// The subscribe message that made it, with the address it watches.

    virtual void send(Command::WebSocketResponseObject& update) = 0;
    /// Hands a data update (or a 410 error) to the subscriber's connection, which adds "type",
    /// "event" and "timestamp". Never blocks on the network.
};

} // namespace Orvi::Service
