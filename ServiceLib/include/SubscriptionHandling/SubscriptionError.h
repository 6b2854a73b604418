#pragma once

#include <Poco/Types.h>

namespace Orvi::Service
{

/// Why a subscription was refused; the value is the code of the error message the subscriber gets.
enum class SubscriptionError : Poco::UInt16
{
    none = 0,
    syntax_error = 400,
    access_denied_or_token_invalid_or_expired = 403,
    event_name_unknown = 404,
    maximum_number_of_event_subscriptions_reached = 503
};

} // namespace Orvi::Service
