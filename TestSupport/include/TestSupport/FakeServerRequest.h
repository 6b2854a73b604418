#pragma once

#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/SocketAddress.h>

#include <sstream>
#include <string>

namespace ServiceDB::Test
{

/// An HTTP server request built in memory: method, URI, headers, body and addresses.
class FakeServerRequest : public Poco::Net::HTTPServerRequest
{
public:
    FakeServerRequest(const std::string& method, const std::string& uri, const std::string& body = "");

    void setClientAddress(const Poco::Net::SocketAddress& address) { m_clientAddress = address; }
    void setServerAddress(const Poco::Net::SocketAddress& address) { m_serverAddress = address; }

    std::istream& stream() override { return m_body; }
    const Poco::Net::SocketAddress& clientAddress() const override { return m_clientAddress; }
    const Poco::Net::SocketAddress& serverAddress() const override { return m_serverAddress; }
    const Poco::Net::HTTPServerParams& serverParams() const override;
    /// Throws Poco::NotImplementedException: nothing under test reads it.
    Poco::Net::HTTPServerResponse& response() const override;
    /// Throws Poco::NotImplementedException: nothing under test reads it.
    bool secure() const override { return false; }

private:
    std::istringstream m_body;
    Poco::Net::SocketAddress m_clientAddress;
    Poco::Net::SocketAddress m_serverAddress;
};

} // namespace ServiceDB::Test
