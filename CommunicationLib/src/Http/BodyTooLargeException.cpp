#include "Http/BodyTooLargeException.h"

#include <typeinfo>

namespace Orvi::Net
{

POCO_IMPLEMENT_EXCEPTION(BodyTooLargeException, Poco::Net::MessageException, "Request body too large")

} // namespace Orvi::Net
