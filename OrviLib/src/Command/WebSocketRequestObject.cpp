#include "Command/WebSocketRequestObject.h"

#include "JSONTools.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>

#include <exception>
#include <limits>

namespace Orvi::Command
{

const WebSocketRequestObject::Type WebSocketRequestObject::TYPE_SUBSCRIBE = "subscribe";
const WebSocketRequestObject::Type WebSocketRequestObject::TYPE_UNSUBSCRIBE = "unsubscribe";
const WebSocketRequestObject::Type WebSocketRequestObject::TYPE_DATA = "data";
const std::string WebSocketRequestObject::FIELD_TYPE = "type";
const std::string WebSocketRequestObject::FIELD_EVENT = "event";
const std::string WebSocketRequestObject::FIELD_SUBSCRIPTION_INTERVAL = "interval";
const std::string WebSocketRequestObject::FIELD_SUBSCRIPTION_UPDATE_LIMIT = "updatelimit";
const std::string WebSocketRequestObject::FIELD_AUTHORIZATION = "authorization";
const std::string WebSocketRequestObject::FIELD_AUTOSUBSCRIBE = "autosubscribe";
const std::string WebSocketRequestObject::FIELD_DATA = "data";
const std::string WebSocketRequestObject::FIELD_ERROR = "error";

namespace
{

// A JSON number without fraction that fits a signed 64-bit value and is not below zero; true is no number.
bool readMilliseconds(const Poco::Dynamic::Var& value, Poco::Nullable<Poco::Int64>& out_milliseconds)
{
    if (!value.isInteger() || value.isBoolean())
    {
        return false;
    }
    if (!value.isSigned())
    {
        const Poco::UInt64 number = value.convert<Poco::UInt64>();
        if (number > static_cast<Poco::UInt64>(std::numeric_limits<Poco::Int64>::max()))
        {
            return false;
        }
        out_milliseconds = static_cast<Poco::Int64>(number);
        return true;
    }
    const Poco::Int64 number = value.convert<Poco::Int64>();
    if (number < 0)
    {
        return false;
    }
    out_milliseconds = number;
    return true;
}

} // namespace

WebSocketRequestObject::WebSocketRequestObject(const std::string& message)
    : m_isValid(false)
    , m_autosubscribe(false)
{
    if (Util::JSONTools::parseJSONString(message, m_data))
    {
        read();
    }
}

WebSocketRequestObject::WebSocketRequestObject(const Poco::JSON::Object::Ptr& message)
    : m_isValid(false)
    , m_data(message)
    , m_autosubscribe(false)
{
    read();
}

void WebSocketRequestObject::read()
{
    if (m_data.isNull())
    {
        return;
    }
    // A subscriber's message must never take the connection down, whatever it holds.
    try
    {
        m_isValid = readFields();
    }
    catch (const Poco::Exception&)
    {
        m_isValid = false;
    }
    catch (const std::exception&)
    {
        m_isValid = false;
    }
}

bool WebSocketRequestObject::readFields()
{
    const Poco::JSON::Object& message = *m_data;

    const Poco::Dynamic::Var type = message.get(FIELD_TYPE);
    if (!type.isString())
    {
        return false;
    }
    m_type = type.extract<std::string>();

    const Poco::Dynamic::Var event = message.get(FIELD_EVENT);
    if (!event.isString())
    {
        return false;
    }
    m_event = Poco::URI(event.extract<std::string>());
    // Decoded here, since the address keeps its query undecoded and a bad one would pass unseen.
    m_event.getQueryParameters();
    setUrlPath(UrlPath(m_event));

    if (message.has(FIELD_SUBSCRIPTION_INTERVAL) &&
        !readMilliseconds(message.get(FIELD_SUBSCRIPTION_INTERVAL), m_interval))
    {
        return false;
    }
    if (message.has(FIELD_SUBSCRIPTION_UPDATE_LIMIT) &&
        !readMilliseconds(message.get(FIELD_SUBSCRIPTION_UPDATE_LIMIT), m_updateLimit))
    {
        return false;
    }
    if (message.has(FIELD_AUTHORIZATION))
    {
        const Poco::Dynamic::Var authorization = message.get(FIELD_AUTHORIZATION);
        if (!authorization.isString())
        {
            return false;
        }
        m_authorization = authorization.extract<std::string>();
    }
    if (message.has(FIELD_AUTOSUBSCRIBE))
    {
        const Poco::Dynamic::Var autosubscribe = message.get(FIELD_AUTOSUBSCRIBE);
        if (!autosubscribe.isBoolean())
        {
            return false;
        }
        m_autosubscribe = autosubscribe.extract<bool>();
    }
    return true;
}

} // namespace Orvi::Command
