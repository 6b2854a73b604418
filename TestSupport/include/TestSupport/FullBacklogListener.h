#pragma once

#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Types.h>

namespace ServiceDB::Test
{

/// A listener on 127.0.0.1, on a port the OS picks, whose accept queue is full: the kernel drops further
/// connection attempts without an answer, so that they run into their time-out.
class FullBacklogListener
{
public:
    FullBacklogListener();

    Poco::UInt16 port() const { return m_listener.address().port(); }

private:
    Poco::Net::ServerSocket m_listener;
    Poco::Net::StreamSocket m_queued;
};

} // namespace ServiceDB::Test
