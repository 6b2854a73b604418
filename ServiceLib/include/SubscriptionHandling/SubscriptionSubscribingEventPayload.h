#pragma once

#include "SubscriptionHandling/SubscriptionRequest.h"

#include <string>

namespace Orvi::Service
{

/// A subscription about to be added; the checks may still refuse it.
struct SubscriptionSubscribingEventPayload
{
    SubscriptionRequest& request;

    void cancelSubscribing(SubscriptionError code, const std::string& message)
    {
        request.cancel(code, message);
    }
};

} // namespace Orvi::Service
