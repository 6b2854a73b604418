#pragma once

#include <string>

namespace Orvi::Service
{

/// Hears which addresses a change touched, so that their subscribers get an update. The
/// subscription service implements it; a SubscriptionTrigger reports to it.
class ISubscriptionChangeSink
{
public:
    enum class Scope
    {
        Element,    ///< /service/resource/element changed.
        Collection, ///< The collection /service/resource changed: an object came or went.
        Resource    ///< Objects of /service/resource changed, which ones is not known.
    };

    virtual ~ISubscriptionChangeSink() = default;

    virtual void addressChanged(Scope scope, const std::string& service, const std::string& resource,
                                const std::string& element) = 0;
    /// Called on the thread that made the change, often the worker: must only take note, never
    /// fetch or send. element is empty unless the scope is Element.
};

} // namespace Orvi::Service
