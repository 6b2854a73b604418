// A subscriber's text frames: parsed as the connection parses them, and answered as it answers them. Every
// answer must be a JSON object that repeats the event as the client wrote it.
#include "JSONTools.h"
#include "SubscriptionHandling/SubscriptionMessages.h"
#include "SubscriptionHandling/SubscriptionRequest.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>
#include <Poco/Net/SocketAddress.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{

using Orvi::Command::WebSocketRequestObject;
using Orvi::Service::SubscriptionMessages;
using Orvi::Service::SubscriptionRequest;

void require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "SubscriptionMessageFuzzer: %s\n", what);
        std::abort();
    }
}

std::string eventAsWritten(const SubscriptionRequest& request)
{
    if (request.getData().isNull())
    {
        return SubscriptionMessages::NO_EVENT;
    }
    const Poco::Dynamic::Var event = request.getData()->get(WebSocketRequestObject::FIELD_EVENT);
    return event.isString() ? event.extract<std::string>() : SubscriptionMessages::NO_EVENT;
}

void requireRepeats(const std::string& message, const std::string& event)
{
    Poco::JSON::Object::Ptr parsed;
    require(Orvi::Util::JSONTools::parseJSONString(message, parsed), "an answer must be a JSON object");
    const Poco::Dynamic::Var repeated = parsed->get(WebSocketRequestObject::FIELD_EVENT);
    require(repeated.isString() && repeated.extract<std::string>() == event,
            "an answer must repeat the event as written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Poco::Net::SocketAddress local("127.0.0.1", 8080);
    static const Poco::Net::SocketAddress peer("127.0.0.1", 40000);

    // Documented never to throw, whatever the text.
    const SubscriptionRequest request(std::string(reinterpret_cast<const char*>(data), size), local, peer);
    const std::string event = eventAsWritten(request);

    if (request.isValid())
    {
        require(!request.getData().isNull(), "a valid message has its object");
        // The key under which the subscription's content is shared.
        request.getEvent().getPathAndQuery();
        request.getUrlPath().isValid();
        requireRepeats(SubscriptionMessages::answer(request.getType(), event), event);
    }
    requireRepeats(SubscriptionMessages::error(event, 400, SubscriptionMessages::TEXT_INVALID_FIELDS), event);
    requireRepeats("{\"event\":" + SubscriptionMessages::quote(event) + "}", event);
    return 0;
}
