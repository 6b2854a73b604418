#include "DataMessages/RSIDataMessage.h"

#include "HttpRequestHandlerBase.h"

#include <utility>

namespace Orvi
{

RSIDataMessage::RSIDataMessage(HttpRequestHandlerBase* handler, Poco::Net::HTTPServerRequest& request,
                               Poco::Net::HTTPServerResponse& response)
    : m_handler(handler)
    , m_request(request)
    , m_response(response)
{
}

RSIDataMessage::RSIDataMessage(HttpRequestHandlerBase* handler, Poco::Net::HTTPServerRequest& request,
                               Poco::Net::HTTPServerResponse& response,
                               Poco::SharedPtr<Poco::SynchronizedObject> event)
    : Util::DataWaitMessageBase(std::move(event))
    , m_handler(handler)
    , m_request(request)
    , m_response(response)
{
}

RSIDataMessage::~RSIDataMessage() = default;

void RSIDataMessage::processData()
{
    m_handler->processRequestSync(m_request, m_response);
}

} // namespace Orvi
