#pragma once

#include "SubscriptionHandling/ISubscriptionDataSource.h"
#include "SubscriptionHandling/SubscriptionSubscribingEventPayload.h"

namespace Orvi::Service
{

class SubscriptionObject;

/// What the subscription service asks of a database: checks of new subscriptions, data, and updates.
class ISubscriptionInterface : public ISubscriptionDataSource
{
public:
    virtual void checkNewSubscription(SubscriptionSubscribingEventPayload& payload) = 0;
    /// Refuses the subscription through payload.cancelSubscribing() when its address may not be
    /// subscribed to; leaves it alone otherwise.

    virtual void sendUpdate(SubscriptionObject*& subscription) = 0;
    /// Sends the subscription one update with the current content of its address.
};

} // namespace Orvi::Service
