#include "SubscriptionHandling/WebSocketSubscription.h"

#include "SubscriptionHandling/SubscriptionMessages.h"
#include "SubscriptionHandling/SubscriptionUpdateText.h"

#include <string>

namespace Orvi::Service
{

namespace
{

Poco::Int64 millisecondsOrZero(const Poco::Nullable<Poco::Int64>& value)
{
    return value.isNull() ? 0 : value.value();
}

std::string makeContentKey(const SubscriptionRequest& request)
{
    return std::to_string(request.address().port()) + ' ' + request.getEvent().getPathAndQuery();
}

} // namespace

WebSocketSubscription::WebSocketSubscription(const SubscriptionRequest& request, const std::string& event,
                                             const std::shared_ptr<ISubscriberChannel>& channel)
    : m_request(request)
    , m_event(event)
    , m_quotedEvent(SubscriptionMessages::quote(event))
    , m_contentKey(makeContentKey(request))
    , m_interval(millisecondsOrZero(request.getInterval()))
    , m_updateLimit(millisecondsOrZero(request.getUpdateLimit()))
    , m_channel(channel)
    , m_takesUpdates(true)
{
}

void WebSocketSubscription::send(Command::WebSocketResponseObject& update)
{
    if (deliver(SubscriptionUpdateText(update)) && m_endHandler)
    {
        m_endHandler(*this);
    }
}

bool WebSocketSubscription::deliver(const SubscriptionUpdateText& update)
{
    // Once its object has gone there is nothing left to watch; other errors may pass.
    const bool last = update.errorCode() == Command::StatusObject::gone;
    return m_channel->postUpdate(*this, update.withEvent(m_quotedEvent), last) && last;
}

} // namespace Orvi::Service
