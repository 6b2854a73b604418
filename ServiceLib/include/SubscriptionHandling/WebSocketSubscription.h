#pragma once

#include "SubscriptionHandling/ISubscriberChannel.h"
#include "SubscriptionHandling/SubscriptionObject.h"
#include "SubscriptionHandling/SubscriptionRequest.h"

#include <Poco/Types.h>

#include <functional>
#include <memory>
#include <string>

namespace Orvi::Service
{

class SubscriptionUpdateText;

/// One subscription of one WebSocket client: the subscribe message, the event exactly as the client
/// wrote it (with its #tag) and the channel its messages go to.
class WebSocketSubscription : public SubscriptionObject
{
public:
    using EndHandler = std::function<void(WebSocketSubscription&)>;

    WebSocketSubscription(const SubscriptionRequest& request, const std::string& event,
                          const std::shared_ptr<ISubscriberChannel>& channel);
    /// event is the "event" field as written; the request must be valid.

    const SubscriptionRequest& request() const override { return m_request; }

    void send(Command::WebSocketResponseObject& update) override;
    /// Queues the update for this subscriber alone. Error 410 (its object has gone) ends the
    /// subscription; the end handler hears of it.

    bool deliver(const SubscriptionUpdateText& update);
    /// Queues an update written for many; true when it ended the subscription (error 410 does).

    const std::string& event() const { return m_event; }
    /// As the client wrote it, with its #tag: the key of the subscription within its connection.

    const std::string& quotedEvent() const { return m_quotedEvent; }
    /// The event as a JSON string, ready for SubscriptionUpdateText::withEvent().

    const std::string& contentKey() const { return m_contentKey; }
    /// What the content depends on: the local port (the service) and the address with its query but
    /// without the #tag. Subscriptions with equal keys share each fetch of the content.

    Poco::Int64 interval() const { return m_interval; }
    /// Milliseconds between periodic updates; 0 for none.

    Poco::Int64 updateLimit() const { return m_updateLimit; }
    /// The least milliseconds between two updates caused by changes; 0 for none.

    ISubscriberChannel& channel() const { return *m_channel; }

    bool takesUpdates() const { return m_takesUpdates; }
    /// Read and written by its channel only, under the channel's lock.

    void stopUpdates() { m_takesUpdates = false; }
    /// Called by its channel only, under the channel's lock.

    void setEndHandler(const EndHandler& handler) { m_endHandler = handler; }
    /// Called when send() ended the subscription; set before the subscription is shared.

private:
    SubscriptionRequest m_request;
    std::string m_event;
    std::string m_quotedEvent;
    std::string m_contentKey;
    Poco::Int64 m_interval;
    Poco::Int64 m_updateLimit;
    std::shared_ptr<ISubscriberChannel> m_channel;
    bool m_takesUpdates;
    EndHandler m_endHandler;
};

} // namespace Orvi::Service
