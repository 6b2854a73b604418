#pragma once

#include "Message/DataWaitMessageBase.h"

#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>

namespace Orvi
{

class HttpRequestHandlerBase;

/// Carries one HTTP exchange to the worker thread, where the handler answers it. Handler, request and
/// response are borrowed from the server thread, which waits until the event is signalled.
class RSIDataMessage : public Util::DataWaitMessageBase
{
public:
    RSIDataMessage(HttpRequestHandlerBase* handler, Poco::Net::HTTPServerRequest& request,
                   Poco::Net::HTTPServerResponse& response);
    /// A message that signals nobody.

    RSIDataMessage(HttpRequestHandlerBase* handler, Poco::Net::HTTPServerRequest& request,
                   Poco::Net::HTTPServerResponse& response, Poco::SharedPtr<Poco::SynchronizedObject> event);

    void processData() override;
    /// Lets the handler answer the request.

protected:
    ~RSIDataMessage() override;

private:
    HttpRequestHandlerBase* m_handler;
    Poco::Net::HTTPServerRequest& m_request;
    Poco::Net::HTTPServerResponse& m_response;
};

} // namespace Orvi
