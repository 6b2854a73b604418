#pragma once

#include "Command/RequestBase.h"

#include <Poco/JSON/Object.h>
#include <Poco/Nullable.h>
#include <Poco/Types.h>
#include <Poco/URI.h>

#include <string>

namespace Orvi::Command
{

/// A subscriber's message: its type, the event address with criteria, and the subscription options.
class WebSocketRequestObject : public RequestBase
{
public:
    using Type = std::string;

    static const Type TYPE_SUBSCRIBE;
    static const Type TYPE_UNSUBSCRIBE;
    static const Type TYPE_DATA;
    static const std::string FIELD_TYPE;
    static const std::string FIELD_EVENT;
    static const std::string FIELD_SUBSCRIPTION_INTERVAL;
    static const std::string FIELD_SUBSCRIPTION_UPDATE_LIMIT;
    static const std::string FIELD_AUTHORIZATION;
    static const std::string FIELD_AUTOSUBSCRIBE;
    static const std::string FIELD_DATA;
    static const std::string FIELD_ERROR;

    explicit WebSocketRequestObject(const std::string& message);
    /// Parses a message given as JSON text; never throws. See isValid().

    explicit WebSocketRequestObject(const Poco::JSON::Object::Ptr& message);
    /// Reads a parsed message; never throws. See isValid().

    bool isValid() const { return m_isValid; }
    /// True when the message is a JSON object with a string "type" and a string "event" that is an
    /// address whose query parses, and the optional fields have their types: "interval" and
    /// "updatelimit" non-negative integers, "authorization" a string, "autosubscribe" a bool. Whether
    /// the address names something is left to the caller (getUrlPath().isValid()).

    const Poco::JSON::Object::Ptr& getData() const { return m_data; }
    /// The message as received; null when the text was no JSON object.

    const Type& getType() const { return m_type; }

    const Poco::URI& getEvent() const { return m_event; }
    /// The event address as written, with its "#tag" fragment.

    const Poco::Nullable<Poco::Int64>& getInterval() const { return m_interval; }
    /// Milliseconds between periodic updates; null when not asked for.

    const Poco::Nullable<Poco::Int64>& getUpdateLimit() const { return m_updateLimit; }
    /// The least milliseconds between two change updates; null when not asked for.

    const std::string& getAuthorization() const { return m_authorization; }
    /// The token; empty when none was given.

    bool getAutosubscribe() const { return m_autosubscribe; }
    /// False when not given.

private:
    void read();
    bool readFields();

    bool m_isValid;
    Poco::JSON::Object::Ptr m_data;
    Type m_type;
    Poco::URI m_event;
    Poco::Nullable<Poco::Int64> m_interval;
    Poco::Nullable<Poco::Int64> m_updateLimit;
    std::string m_authorization;
    bool m_autosubscribe;
};

} // namespace Orvi::Command
