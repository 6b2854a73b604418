#include "TestSupport/FakeServerRequest.h"

#include <Poco/Exception.h>

namespace ServiceDB::Test
{

FakeServerRequest::FakeServerRequest(const std::string& method, const std::string& uri,
                                     const std::string& body)
    : m_body(body)
    , m_clientAddress("127.0.0.1", 40000)
    , m_serverAddress("127.0.0.1", 8080)
{
    setMethod(method);
    setURI(uri);
    setVersion(Poco::Net::HTTPMessage::HTTP_1_1);
    if (!body.empty())
    {
        setContentLength(static_cast<std::streamsize>(body.size()));
    }
}

const Poco::Net::HTTPServerParams& FakeServerRequest::serverParams() const
{
    throw Poco::NotImplementedException("serverParams");
}

Poco::Net::HTTPServerResponse& FakeServerRequest::response() const
{
    throw Poco::NotImplementedException("response");
}

} // namespace ServiceDB::Test
