#include "TestSupport/FakeServerResponse.h"

#include <Poco/Exception.h>

namespace ServiceDB::Test
{

void FakeServerResponse::sendContinue()
{
    throw Poco::NotImplementedException("sendContinue");
}

std::ostream& FakeServerResponse::send()
{
    ++m_sendCount;
    return m_body;
}

void FakeServerResponse::sendFile(const std::string&, const std::string&)
{
    throw Poco::NotImplementedException("sendFile");
}

void FakeServerResponse::sendBuffer(const void* buffer, std::size_t length)
{
    ++m_sendCount;
    m_body.write(static_cast<const char*>(buffer), static_cast<std::streamsize>(length));
}

void FakeServerResponse::redirect(const std::string&, HTTPStatus)
{
    throw Poco::NotImplementedException("redirect");
}

void FakeServerResponse::requireAuthentication(const std::string&)
{
    throw Poco::NotImplementedException("requireAuthentication");
}

std::map<std::string, std::string> FakeServerResponse::headers() const
{
    std::map<std::string, std::string> result;
    for (const auto& [name, value] : *this)
    {
        result[name] = value;
    }
    return result;
}

} // namespace ServiceDB::Test
