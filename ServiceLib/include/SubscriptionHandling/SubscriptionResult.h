#pragma once

#include "SubscriptionHandling/SubscriptionError.h"

#include <string>

namespace Orvi::Service
{

/// The outcome of the checks of a new subscription: none, or the code and text it was refused with.
struct SubscriptionResult
{
    SubscriptionError errorCode = SubscriptionError::none;
    std::string errorMsg;

    bool isCanceled() const { return errorCode != SubscriptionError::none; }
};

} // namespace Orvi::Service
