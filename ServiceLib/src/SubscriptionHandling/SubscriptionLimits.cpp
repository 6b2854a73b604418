#include "SubscriptionHandling/SubscriptionLimits.h"

#include <Poco/Exception.h>

#include <limits>
#include <string>

namespace Orvi::Service
{

namespace
{

void requirePositive(std::size_t value, const std::string& name)
{
    if (value == 0)
    {
        throw Poco::InvalidArgumentException("subscription limit must not be zero", name);
    }
}

} // namespace

SubscriptionLimits::SubscriptionLimits(std::size_t maxConnections, std::size_t maxSubscriptionsPerConnection,
                                       std::size_t maxUnsentUpdates, std::size_t maxFrameSize,
                                       std::size_t senderThreads)
    : m_maxConnections(maxConnections)
    , m_maxSubscriptionsPerConnection(maxSubscriptionsPerConnection)
    , m_maxUnsentUpdates(maxUnsentUpdates)
    , m_maxFrameSize(maxFrameSize)
    , m_senderThreads(senderThreads)
{
    requirePositive(maxConnections, "maxConnections");
    requirePositive(maxSubscriptionsPerConnection, "maxSubscriptionsPerConnection");
    requirePositive(maxUnsentUpdates, "maxUnsentUpdates");
    requirePositive(maxFrameSize, "maxFrameSize");
    requirePositive(senderThreads, "senderThreads");
    // The WebSocket reader counts payload bytes in an int.
    if (maxFrameSize > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    {
        throw Poco::InvalidArgumentException("frame size limit too large", "maxFrameSize");
    }
}

} // namespace Orvi::Service
