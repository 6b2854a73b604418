#pragma once

#include <Poco/BasicEvent.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/TCPServerConnectionFactory.h>

#include <functional>

namespace Orvi::Net
{

/// Makes an HttpServerConnection for each connection the server accepts.
class HttpServerConnectionFactory : public Poco::Net::TCPServerConnectionFactory
{
public:
    HttpServerConnectionFactory(Poco::Net::HTTPServerParams::Ptr params,
                                Poco::Net::HTTPRequestHandlerFactory::Ptr handlers,
                                std::function<bool()> othersWaiting);

    Poco::Net::TCPServerConnection* createConnection(const Poco::Net::StreamSocket& socket) override;

    Poco::BasicEvent<const bool> serverStopped;
    /// Fired when the server stops, with whether current requests are to be cut off.

private:
    Poco::Net::HTTPServerParams::Ptr m_params;
    Poco::Net::HTTPRequestHandlerFactory::Ptr m_handlers;
    std::function<bool()> m_othersWaiting;
};

} // namespace Orvi::Net
