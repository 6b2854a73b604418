#pragma once

#include "Command/HttpRequest.h"
#include "Command/HttpResponse.h"
#include "Http/CorsRequestHandler.h"
#include "Http/HTTPEncoderDecoder.h"
#include "IUncopyable.h"
#include "Message/MessageSync.h"

#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/URI.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Orvi
{

class RSIDataMessage;

/// The door of every HTTP request. A server thread hands the exchange to the worker thread and waits;
/// the worker answers CORS, content coding, preconditions and errors, and dispatches the methods to the
/// subclass. Register a subclass with the server's request handler factory.
class HttpRequestHandlerBase : public Poco::Net::HTTPRequestHandler, private Util::IUncopyable
{
public:
    explicit HttpRequestHandlerBase(Util::MessageSync& messageSync);
    /// The queue must outlive the handler.

    ~HttpRequestHandlerBase() override;

    static constexpr std::size_t DEFAULT_MAX_BODY_SIZE = 1024 * 1024;
    /// The largest request body accepted unless setMaxBodySize says otherwise: 1 MB.

    void setMaxBodySize(std::size_t maxBodySize) { m_maxBodySize = maxBodySize; }
    /// A larger body, as announced or once decoded, is answered 400 before it is parsed.

    std::size_t getMaxBodySize() const { return m_maxBodySize; }

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override;
    /// Runs on the server thread: refuses a request whose version or body length is wrong and closes
    /// its connection (Net::RequestFraming), answers 503 at once when the worker queue is full, reads
    /// the body into memory (400 beyond the size limit, 408 when the client stalls longer than the
    /// server's time-out; a request that fails its precondition is left unread), and then queues the
    /// exchange for the worker and waits until it has been answered.

protected:
    virtual Poco::Net::HTTPResponse::HTTPStatus
    processGetRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                      const Poco::URI& uri, const std::vector<std::string>& pathSegments) = 0;

    virtual Poco::Net::HTTPResponse::HTTPStatus
    processHeadRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                       const Poco::URI& uri, const std::vector<std::string>& pathSegments) = 0;

    virtual Poco::Net::HTTPResponse::HTTPStatus
    processPostRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                       const Poco::URI& uri, const std::vector<std::string>& pathSegments) = 0;
    /// Gets the request with its body.

    virtual Poco::Net::HTTPResponse::HTTPStatus
    processDeleteRequest(const Command::HttpRequest& request, Command::HttpResponse& response,
                         const Poco::URI& uri, const std::vector<std::string>& pathSegments) = 0;
    /// Gets the request without its body.

    virtual bool checkSwapKey(Net::HTTPEncoderDecoder& coder, const Poco::Net::HTTPServerRequest& request,
                              Poco::Net::HTTPServerResponse& response);
    /// A hook before the request is read; a subclass that returns false has answered by itself. The
    /// base returns true.

    void processRequestSync(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response);
    /// Runs on the worker thread and answers the request.

private:
    friend class RSIDataMessage;

    Poco::Net::HTTPResponse::HTTPStatus dispatch(Poco::Net::HTTPServerRequest& request,
                                                 const Command::HttpRequest& requestWithBody,
                                                 Command::HttpResponse& httpResponse, const Poco::URI& uri,
                                                 const std::vector<std::string>& pathSegments);

    static void traceResponse(const Poco::Net::HTTPServerResponse& response);

    Net::CorsRequestHandler m_corsHandler;
    Util::MessageSync& m_messageSync;
    std::size_t m_maxBodySize = DEFAULT_MAX_BODY_SIZE;
};

} // namespace Orvi
