#include "DataMessages/RSISubscriptionUpdateMessage.h"

#include "Mapping/MappingServiceSubscrTrigger.h"

#include <utility>

namespace Orvi
{

RSISubscriptionUpdateMessage::Parameter::Parameter(::Orvi::JSONDataCache::JSONDataCache& cacheRef,
                                                   const Service::SubscriptionRequest& requestRef,
                                                   Command::WebSocketResponseObject& responseRef)
    : cache(cacheRef)
    , request(requestRef)
    , responseObj(responseRef)
{
}

RSISubscriptionUpdateMessage::RSISubscriptionUpdateMessage(Parameter& params,
                                                           Poco::SharedPtr<Poco::SynchronizedObject> event)
    : Util::DataWaitMessageBase(std::move(event))
    , m_params(params)
{
}

RSISubscriptionUpdateMessage::~RSISubscriptionUpdateMessage() = default;

void RSISubscriptionUpdateMessage::processData()
{
    m_params.result = Mapping::MappingServiceSubscrTrigger::fetchDataSync(m_params.cache, m_params.request,
                                                                          m_params.responseObj);
}

} // namespace Orvi
