#include "SubscriptionHandling/SubscriptionRequest.h"

namespace Orvi::Service
{

SubscriptionRequest::SubscriptionRequest(const std::string& message, const Poco::Net::SocketAddress& address,
                                         const Poco::Net::SocketAddress& peerAddress)
    : Command::WebSocketRequestObject(message)
    , m_address(address)
    , m_peeraddress(peerAddress)
{
}

SubscriptionRequest::SubscriptionRequest(const Poco::JSON::Object::Ptr& message,
                                         const Poco::Net::SocketAddress& address,
                                         const Poco::Net::SocketAddress& peerAddress)
    : Command::WebSocketRequestObject(message)
    , m_address(address)
    , m_peeraddress(peerAddress)
{
}

SubscriptionRequest::~SubscriptionRequest() = default;

void SubscriptionRequest::cancel(SubscriptionError code, const std::string& message)
{
    m_result.errorCode = code;
    m_result.errorMsg = message;
}

} // namespace Orvi::Service
