#pragma once

#include <string>

namespace Orvi::Service
{

class WebSocketSubscription;

/// The outgoing side of one subscriber's connection: queues messages for it and never waits for the
/// network. Whether a subscription still takes updates is decided here, under the channel's own lock,
/// so that nothing of a subscription follows the message that ends it.
class ISubscriberChannel
{
public:
    virtual ~ISubscriberChannel() = default;

    virtual void post(const std::string& text) = 0;
    /// Queues a message that belongs to no live subscription, such as an answer or an error.

    virtual bool postUpdate(WebSocketSubscription& subscription, const std::string& text, bool last) = 0;
    /// Queues an update unless the subscription has ended; with last it ends with this update. False
    /// when the update was dropped.

    virtual void postEnd(WebSocketSubscription& subscription, const std::string& text) = 0;
    /// Ends the subscription and queues the text after its last update.
};

} // namespace Orvi::Service
