#include "TestWebSocketClient.h"

#include <Poco/Buffer.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/NetException.h>

#include <regex>
#include <sstream>

namespace ServiceDB::Test
{

const Poco::Timespan TestWebSocketClient::RECEIVE_TIMEOUT(10, 0);

Poco::UInt16 TestWebSocketClient::Frame::closeStatus() const
{
    if (payload.size() < 2)
    {
        return 0;
    }
    return static_cast<Poco::UInt16>((static_cast<unsigned char>(payload[0]) << 8) |
                                     static_cast<unsigned char>(payload[1]));
}

TestWebSocketClient::TestWebSocketClient(Poco::UInt16 port, const std::string& path)
    : m_session("127.0.0.1", port)
{
    Poco::Net::HTTPRequest request(Poco::Net::HTTPRequest::HTTP_GET, path, Poco::Net::HTTPMessage::HTTP_1_1);
    Poco::Net::HTTPResponse response;
    m_socket = std::make_unique<Poco::Net::WebSocket>(m_session, request, response);
    m_socket->setReceiveTimeout(RECEIVE_TIMEOUT);
}

void TestWebSocketClient::send(const std::string& text)
{
    sendFrame(text, Poco::Net::WebSocket::FRAME_TEXT);
}

void TestWebSocketClient::sendFrame(const std::string& payload, int flags)
{
    m_socket->sendFrame(payload.data(), static_cast<int>(payload.size()), flags);
}

std::string TestWebSocketClient::receive()
{
    const Frame frame = receiveFrame();
    if (frame.opcode() != Poco::Net::WebSocket::FRAME_OP_TEXT)
    {
        throw Poco::IllegalStateException("expected a text frame", std::to_string(frame.flags));
    }
    return frame.payload;
}

TestWebSocketClient::Frame TestWebSocketClient::receiveFrame()
{
    Poco::Buffer<char> buffer(0);
    int flags = 0;
    const int length = m_socket->receiveFrame(buffer, flags);
    return Frame{flags, std::string(buffer.begin(), static_cast<std::size_t>(length))};
}

bool TestWebSocketClient::receivesEndOfStream()
{
    try
    {
        for (;;)
        {
            const Frame frame = receiveFrame();
            if (frame.flags == 0 && frame.payload.empty())
            {
                return true;
            }
        }
    }
    catch (const Poco::TimeoutException&)
    {
        return false;
    }
    catch (const Poco::Net::NetException&)
    {
        // A reset ends the stream as well as an orderly close does.
        return true;
    }
}

std::string withoutTimestamp(const std::string& message)
{
    static const std::regex timestamp("\"timestamp\":[0-9]+");
    return std::regex_replace(message, timestamp, "\"timestamp\":0");
}

namespace
{

std::string typedMessage(const std::string& type, const std::string& event)
{
    Poco::JSON::Object message;
    message.set("type", type);
    message.set("event", event);
    std::ostringstream text;
    message.stringify(text);
    return text.str();
}

} // namespace

std::string subscribeMessage(const std::string& event)
{
    return typedMessage("subscribe", event);
}

std::string unsubscribeMessage(const std::string& event)
{
    return typedMessage("unsubscribe", event);
}

} // namespace ServiceDB::Test
