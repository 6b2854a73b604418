#pragma once

#include <Poco/Net/NetException.h>

namespace Orvi::Net
{

POCO_DECLARE_EXCEPTION(, BodyTooLargeException, Poco::Net::MessageException)
/// A request body, as sent or once decoded, is larger than the receiver accepts.

} // namespace Orvi::Net
