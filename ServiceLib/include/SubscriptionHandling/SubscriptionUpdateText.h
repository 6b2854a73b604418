#pragma once

#include "Command/WebSocketResponseObject.h"

#include <string>

namespace Orvi::Service
{

/// One fetched update, written once for all subscribers of its address: each of them gets the same
/// text with its own event spliced in, so the content is serialised once however many they are.
class SubscriptionUpdateText
{
public:
    static const std::string TYPE_DATA;
    /// "data".

    explicit SubscriptionUpdateText(const Command::WebSocketResponseObject& update);
    /// Takes what the data source filled in. A body with a "code" is an error (e.g. 410 for a deleted
    /// object) and becomes an error message; anything else a data message stamped with the current time.

    bool isError() const { return m_errorCode != 0; }

    int errorCode() const { return m_errorCode; }
    /// The code of an error update; 0 for data.

    std::string withEvent(const std::string& quotedEvent) const;
    /// The whole message for one subscriber; quotedEvent is its event as SubscriptionMessages::quote()
    /// gives it.

private:
    std::string m_head; // "{" and the keys that sort before "event", each followed by ","
    std::string m_tail; // the keys that sort after "event", each preceded by ",", and "}"
    int m_errorCode;
};

} // namespace Orvi::Service
