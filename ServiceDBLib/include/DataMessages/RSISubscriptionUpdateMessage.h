#pragma once

#include "Command/WebSocketResponseObject.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Message/DataWaitMessageBase.h"
#include "SubscriptionHandling/SubscriptionRequest.h"

#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>

namespace Orvi
{

/// Carries the fetch of a subscription's content to the worker thread. The parameters are borrowed from
/// the subscription thread, which waits until the event is signalled.
class RSISubscriptionUpdateMessage : public Util::DataWaitMessageBase
{
public:
    /// What the fetch reads and where its answer goes.
    struct Parameter
    {
        Parameter(::Orvi::JSONDataCache::JSONDataCache& cacheRef,
                  const Service::SubscriptionRequest& requestRef,
                  Command::WebSocketResponseObject& responseRef);

        bool result = false;
        /// Written on the worker before the event is signalled.

        ::Orvi::JSONDataCache::JSONDataCache& cache;
        const Service::SubscriptionRequest& request;
        Command::WebSocketResponseObject& responseObj;
    };

    RSISubscriptionUpdateMessage(Parameter& params, Poco::SharedPtr<Poco::SynchronizedObject> event);

    void processData() override;
    /// Fetches the content into params.responseObj and its outcome into params.result.

protected:
    ~RSISubscriptionUpdateMessage() override;

private:
    Parameter& m_params;
};

} // namespace Orvi
