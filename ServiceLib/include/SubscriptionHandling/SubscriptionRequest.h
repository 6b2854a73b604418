#pragma once

#include "Command/WebSocketRequestObject.h"
#include "SubscriptionHandling/SubscriptionResult.h"

#include <Poco/Net/SocketAddress.h>

#include <string>

namespace Orvi::Service
{

/// A subscriber's message together with the connection it came by, and the verdict of the checks.
class SubscriptionRequest : public Command::WebSocketRequestObject
{
public:
    SubscriptionRequest(const std::string& message, const Poco::Net::SocketAddress& address,
                        const Poco::Net::SocketAddress& peerAddress);
    /// Parses the message text (see WebSocketRequestObject); address is the local end of the
    /// connection, whose port names the service.

    SubscriptionRequest(const Poco::JSON::Object::Ptr& message, const Poco::Net::SocketAddress& address,
                        const Poco::Net::SocketAddress& peerAddress);

    ~SubscriptionRequest() override;

    SubscriptionRequest(const SubscriptionRequest&) = default;
    SubscriptionRequest& operator=(const SubscriptionRequest&) = default;

    const Poco::Net::SocketAddress& address() const { return m_address; }
    /// The local end of the subscriber's connection.

    const Poco::Net::SocketAddress& peerAddress() const { return m_peeraddress; }
    /// The subscriber's end.

    const SubscriptionResult& result() const { return m_result; }

    bool isCanceled() const { return m_result.isCanceled(); }

    virtual void cancel(SubscriptionError code, const std::string& message);
    /// Refuses the subscription with this code and text.

private:
    Poco::Net::SocketAddress m_address;
    Poco::Net::SocketAddress m_peeraddress;
    SubscriptionResult m_result;
};

} // namespace Orvi::Service
