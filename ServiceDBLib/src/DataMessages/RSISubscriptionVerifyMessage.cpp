#include "DataMessages/RSISubscriptionVerifyMessage.h"

#include "Mapping/MappingServiceSubscrTrigger.h"

namespace Orvi
{

RSISubscriptionVerifyMessage::RSISubscriptionVerifyMessage(::Orvi::JSONDataCache::JSONDataCache& cache,
                                                           const Command::UrlPath& urlPath,
                                                           Poco::SharedPtr<Poco::SynchronizedObject>& event,
                                                           bool& result)
    : Util::DataWaitMessageBase(event)
    , cache(cache)
    , urlPath(urlPath)
    , result(result)
{
}

RSISubscriptionVerifyMessage::~RSISubscriptionVerifyMessage() = default;

void RSISubscriptionVerifyMessage::processData()
{
    result = Mapping::MappingServiceSubscrTrigger::verifySubscriptionDestSync(cache, urlPath);
}

} // namespace Orvi
