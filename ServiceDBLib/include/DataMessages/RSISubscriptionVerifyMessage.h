#pragma once

#include "Command/UrlPath.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Message/DataWaitMessageBase.h"

#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>

namespace Orvi
{

/// Carries the check of a subscription's address to the worker thread. Path and result are borrowed
/// from the subscription thread, which waits until the event is signalled.
class RSISubscriptionVerifyMessage : public Util::DataWaitMessageBase
{
public:
    RSISubscriptionVerifyMessage(::Orvi::JSONDataCache::JSONDataCache& cache, const Command::UrlPath& urlPath,
                                 Poco::SharedPtr<Poco::SynchronizedObject>& event, bool& result);

    void processData() override;
    /// Writes into result whether the address names an existing service, resource or object.

protected:
    ~RSISubscriptionVerifyMessage() override;

private:
    ::Orvi::JSONDataCache::JSONDataCache& cache;
    const Command::UrlPath& urlPath;
    bool& result;
};

} // namespace Orvi
