#include "TestSupport/FullBacklogListener.h"

#include <Poco/Net/SocketAddress.h>

namespace ServiceDB::Test
{

// A backlog of 0 leaves room for one connection that nobody accepts; it fills the queue.
FullBacklogListener::FullBacklogListener()
    : m_listener(Poco::Net::SocketAddress("127.0.0.1", 0), 0)
    , m_queued(m_listener.address())
{
}

} // namespace ServiceDB::Test
