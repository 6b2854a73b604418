#include "Http/HttpServerConnectionFactory.h"

#include "Http/HttpServerConnection.h"

#include <utility>

namespace Orvi::Net
{

HttpServerConnectionFactory::HttpServerConnectionFactory(Poco::Net::HTTPServerParams::Ptr params,
                                                         Poco::Net::HTTPRequestHandlerFactory::Ptr handlers,
                                                         std::function<bool()> othersWaiting)
    : m_params(std::move(params))
    , m_handlers(std::move(handlers))
    , m_othersWaiting(std::move(othersWaiting))
{
}

Poco::Net::TCPServerConnection*
HttpServerConnectionFactory::createConnection(const Poco::Net::StreamSocket& socket)
{
    return new HttpServerConnection(socket, m_params, m_handlers, serverStopped, m_othersWaiting);
}

} // namespace Orvi::Net
