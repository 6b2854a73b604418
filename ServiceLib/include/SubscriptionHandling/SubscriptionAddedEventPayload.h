#pragma once

#include "SubscriptionHandling/SubscriptionRequest.h"

namespace Orvi::Service
{

/// A subscription that has been added.
struct SubscriptionAddedEventPayload
{
    const SubscriptionRequest& subscription;
};

} // namespace Orvi::Service
