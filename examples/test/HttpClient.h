#pragma once

#include <Poco/DeflatingStream.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/StreamCopier.h>
#include <Poco/Timespan.h>
#include <Poco/Types.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace ServiceDB::Example::Test
{

/// What the example answered to one exchange.
struct Answer
{
    int status = 0;
    std::string body;
    std::string location;
};

/// One request as a client sends it. A body goes with its length, or in chunks when `chunked` is set, so
/// that the server has to read it before it can judge its size.
struct Request
{
    std::string method;
    std::string uri;
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
    bool chunked = false;
};

/// Sends the request to 127.0.0.1 on the given port on a connection of its own, and reads the whole answer.
inline Answer exchangeWith(Poco::UInt16 port, const Request& request)
{
    Poco::Net::HTTPClientSession session("127.0.0.1", port);
    session.setTimeout(Poco::Timespan(10, 0));
    Poco::Net::HTTPRequest message(request.method, request.uri, Poco::Net::HTTPRequest::HTTP_1_1);
    for (const auto& [name, value] : request.headers)
    {
        message.set(name, value);
    }
    if (!request.body.empty())
    {
        message.setContentType("application/json");
        if (request.chunked)
        {
            message.setChunkedTransferEncoding(true);
        }
        else
        {
            message.setContentLength(static_cast<std::streamsize>(request.body.size()));
        }
    }
    session.sendRequest(message) << request.body;
    Poco::Net::HTTPResponse response;
    std::istream& in = session.receiveResponse(response);
    Answer answer;
    answer.status = response.getStatus();
    answer.location = response.get("Location", "");
    Poco::StreamCopier::copyToString(in, answer.body);
    return answer;
}

/// The text in gzip coding, as a client sends it with "Content-Encoding: gzip".
inline std::string gzipped(const std::string& plain)
{
    std::ostringstream compressed;
    Poco::DeflatingOutputStream deflater(compressed, Poco::DeflatingStreamBuf::STREAM_GZIP);
    deflater << plain;
    deflater.close();
    return compressed.str();
}

} // namespace ServiceDB::Example::Test
