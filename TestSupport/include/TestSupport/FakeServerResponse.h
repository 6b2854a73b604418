#pragma once

#include <Poco/Net/HTTPServerResponse.h>

#include <map>
#include <sstream>
#include <string>

namespace ServiceDB::Test
{

/// An HTTP server response that records what is sent: status, headers and the body bytes.
class FakeServerResponse : public Poco::Net::HTTPServerResponse
{
public:
    void sendContinue() override;
    std::ostream& send() override;
    void sendFile(const std::string& path, const std::string& mediaType) override;
    void sendBuffer(const void* buffer, std::size_t length) override;
    void redirect(const std::string& uri, HTTPStatus status) override;
    void requireAuthentication(const std::string& realm) override;
    bool sent() const override { return m_sendCount > 0; }

    int sendCount() const { return m_sendCount; }
    /// How often send() or sendBuffer() was called; an answer is sent once.

    std::string body() const { return m_body.str(); }
    /// The bytes written after the headers.

    std::map<std::string, std::string> headers() const;
    /// The headers by name; a repeated name keeps its last value.

private:
    std::ostringstream m_body;
    int m_sendCount = 0;
};

} // namespace ServiceDB::Test
