#pragma once

#include "SubscriptionHandling/SubscriptionRequest.h"

namespace Orvi::Service
{

/// A subscription that has ended, by unsubscription or with its connection.
struct SubscriptionRemovedEventPayload
{
    const SubscriptionRequest& subscription;
};

} // namespace Orvi::Service
