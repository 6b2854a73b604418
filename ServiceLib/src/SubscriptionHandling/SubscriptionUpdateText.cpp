#include "SubscriptionHandling/SubscriptionUpdateText.h"

#include "SubscriptionHandling/SubscriptionMessages.h"
#include "Timestamp.h"

#include <Poco/JSON/Object.h>
#include <Poco/JSON/Stringifier.h>

#include <sstream>

namespace Orvi::Service
{

const std::string SubscriptionUpdateText::TYPE_DATA = "data";

namespace
{

using Command::WebSocketResponseObject;

// Both halves are ordinary JSON objects; only their braces are dropped when they are joined.
std::string stringify(const Poco::JSON::Object& object)
{
    std::ostringstream text;
    object.stringify(text);
    return text.str();
}

int readErrorCode(const Poco::JSON::Object& body)
{
    const Poco::Dynamic::Var code = body.get(WebSocketResponseObject::FIELD_ERROR_CODE);
    if (code.isEmpty())
    {
        return 0;
    }
    try
    {
        return code.convert<int>();
    }
    catch (const Poco::Exception&)
    {
        // A code that is no number still makes an error; 500 says that the source failed.
        return 500;
    }
}

std::string readMessage(const Poco::JSON::Object& body)
{
    const Poco::Dynamic::Var message = body.get(WebSocketResponseObject::FIELD_MESSAGE);
    return message.isString() ? message.extract<std::string>() : std::string();
}

} // namespace

SubscriptionUpdateText::SubscriptionUpdateText(const Command::WebSocketResponseObject& update)
    : m_errorCode(readErrorCode(*update.JSONObject))
{
    Poco::JSON::Object message;
    if (isError())
    {
        // Rebuilt, so that an error has the same keys whichever way the source wrote it.
        WebSocketResponseObject error;
        error.setError(static_cast<Command::HTTPStatus>(m_errorCode), readMessage(*update.JSONObject));
        error.setType(SubscriptionMessages::TYPE_ERROR);
        message = *error.JSONObject;
    }
    else
    {
        message = *update.JSONObject;
        message.set(WebSocketResponseObject::FIELD_TYPE, TYPE_DATA);
        message.set(WebSocketResponseObject::FIELD_TIMESTAMP,
                    Orvi::Timestamp::createTimestamp().asMilliseconds());
    }
    message.remove(WebSocketResponseObject::FIELD_EVENT);

    Poco::JSON::Object before;
    Poco::JSON::Object after;
    for (const auto& entry : message)
    {
        (entry.first < WebSocketResponseObject::FIELD_EVENT ? before : after).set(entry.first, entry.second);
    }
    m_head = stringify(before);
    m_head.pop_back();
    if (m_head.size() > 1)
    {
        m_head += ',';
    }
    m_head += '"' + WebSocketResponseObject::FIELD_EVENT + "\":";
    m_tail = stringify(after);
    m_tail.erase(0, 1);
    if (m_tail.size() > 1)
    {
        m_tail.insert(0, 1, ',');
    }
}

std::string SubscriptionUpdateText::withEvent(const std::string& quotedEvent) const
{
    std::string text;
    text.reserve(m_head.size() + quotedEvent.size() + m_tail.size());
    text += m_head;
    text += quotedEvent;
    text += m_tail;
    return text;
}

} // namespace Orvi::Service
