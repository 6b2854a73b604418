#include "SubscriptionHandling/SubscriptionTrigger.h"

#include "SubscriptionHandling/SubscriptionObject.h"

#include <mutex>

namespace Orvi::Service
{

SubscriptionTrigger::SubscriptionTrigger() = default;

SubscriptionTrigger::~SubscriptionTrigger() = default;

void SubscriptionTrigger::sendUpdate(SubscriptionObject*& subscription)
{
    if (subscription == nullptr)
    {
        return;
    }
    Command::WebSocketResponseObject response;
    if (fetchData(subscription->request(), response))
    {
        subscription->send(response);
    }
}

void SubscriptionTrigger::byRequest(const Command::HttpRequest& request) const
{
    notifyAddress(request.getUrlPath());
}

void SubscriptionTrigger::byDeleteRequest(const Command::HttpRequest& request,
                                          const Poco::JSON::Object*) const
{
    notifyAddress(request.getUrlPath());
}

void SubscriptionTrigger::manualTrigger(const Command::HttpRequest::RequestType&,
                                        const Command::UrlPath& urlPath, const Poco::JSON::Object*)
{
    notifyAddress(urlPath);
}

void SubscriptionTrigger::changedResourceCollection(Command::HttpRequest::RequestType,
                                                    const std::string& service, const std::string& resource,
                                                    const Poco::JSON::Object*) const
{
    notify(ISubscriptionChangeSink::Scope::Collection, service, resource, std::string());
}

void SubscriptionTrigger::changedElement(Command::HttpRequest::RequestType, const std::string& service,
                                         const std::string& resource, const std::string& element,
                                         const Poco::JSON::Object*) const
{
    notify(ISubscriptionChangeSink::Scope::Element, service, resource, element);
}

void SubscriptionTrigger::setChangeSink(ISubscriptionChangeSink* sink)
{
    const std::unique_lock<std::shared_mutex> lock(m_sinkMutex);
    m_sink = sink;
}

bool SubscriptionTrigger::hasChangeSink() const
{
    const std::shared_lock<std::shared_mutex> lock(m_sinkMutex);
    return m_sink != nullptr;
}

void SubscriptionTrigger::notify(ISubscriptionChangeSink::Scope scope, const std::string& service,
                                 const std::string& resource, const std::string& element) const
{
    const std::shared_lock<std::shared_mutex> lock(m_sinkMutex);
    if (m_sink != nullptr)
    {
        m_sink->addressChanged(scope, service, resource, element);
    }
}

void SubscriptionTrigger::notifyAddress(const Command::UrlPath& urlPath) const
{
    switch (urlPath.getCharacteristic())
    {
    case Command::UrlPath::SERVICE_RESOURCE_OBJECT:
        notify(ISubscriptionChangeSink::Scope::Element, urlPath.getService(), urlPath.getResource(),
               urlPath.getElement());
        break;
    case Command::UrlPath::SERVICE_RESOURCE:
        // A creation or a batch: which objects changed is only known to the store.
        notify(ISubscriptionChangeSink::Scope::Resource, urlPath.getService(), urlPath.getResource(),
               std::string());
        break;
    default:
        break;
    }
}

} // namespace Orvi::Service
