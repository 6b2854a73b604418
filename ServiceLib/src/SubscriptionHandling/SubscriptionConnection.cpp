#include "SubscriptionHandling/SubscriptionConnection.h"

#include "Logging/LogStream.h"
#include "SubscriptionHandling/SubscriptionDispatcher.h"
#include "SubscriptionHandling/SubscriptionMessages.h"
#include "SubscriptionHandling/SubscriptionRequest.h"
#include "SubscriptionHandling/SubscriptionSubscribingEventPayload.h"
#include "SubscriptionHandling/SubscriptionWriteWatcher.h"
#include "SubscriptionHandling/WebSocketSubscription.h"

#include <Poco/Buffer.h>
#include <Poco/Exception.h>
#include <Poco/Net/NetException.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <sys/socket.h>
#include <utility>

namespace Orvi::Service
{

const Poco::Timespan SubscriptionConnection::FRAME_TIMEOUT(10, 0);
const Poco::Timespan SubscriptionConnection::CLOSE_TIMEOUT(1, 0);

namespace
{

using Poco::Net::WebSocket;

// Only bounds a single wait for the next frame; an idle client may stay as long as it likes.
const Poco::Timespan IDLE_POLL(60, 0);

const std::string REASON_TOO_BIG = "message too big";
const std::string REASON_GOING_AWAY = "service stopping";
const std::string REASON_INCOMPLETE = "frame incomplete";
const std::string REASON_PROTOCOL = "protocol error";

std::string eventAsWritten(const SubscriptionRequest& request)
{
    if (request.getData().isNull())
    {
        return SubscriptionMessages::NO_EVENT;
    }
    const Poco::Dynamic::Var event = request.getData()->get(Command::WebSocketRequestObject::FIELD_EVENT);
    return event.isString() ? event.extract<std::string>() : SubscriptionMessages::NO_EVENT;
}

// The answer repeats the client's status, as a close handshake does, unless no frame may carry it.
Poco::UInt16 answerToClose(const std::string& payload)
{
    if (payload.size() < 2)
    {
        return WebSocket::WS_NORMAL_CLOSE;
    }
    const auto status = static_cast<Poco::UInt16>((static_cast<unsigned char>(payload[0]) << 8) |
                                                  static_cast<unsigned char>(payload[1]));
    const bool sendable =
        status >= WebSocket::WS_NORMAL_CLOSE && status <= 4999 && status != WebSocket::WS_RESERVED &&
        status != WebSocket::WS_RESERVED_NO_STATUS_CODE && status != WebSocket::WS_RESERVED_ABNORMAL_CLOSE &&
        status != WebSocket::WS_RESERVED_TLS_FAILURE;
    return sendable ? status : static_cast<Poco::UInt16>(WebSocket::WS_PROTOCOL_ERROR);
}

std::string closePayload(Poco::UInt16 status, const std::string& reason)
{
    std::string payload;
    payload += static_cast<char>(status >> 8);
    payload += static_cast<char>(status & 0xFF);
    payload += reason;
    return payload;
}

} // namespace

SubscriptionConnection::SubscriptionConnection(const Poco::Net::WebSocket& socket,
                                               ISubscriptionInterface& checker,
                                               SubscriptionDispatcher& dispatcher,
                                               SubscriptionWriteWatcher& watcher,
                                               const SubscriptionLimits& limits)
    : m_socket(socket)
    , m_fd(static_cast<int>(socket.impl()->sockfd()))
    , m_localAddress(socket.address())
    , m_peerAddress(socket.peerAddress())
    , m_checker(checker)
    , m_dispatcher(dispatcher)
    , m_watcher(watcher)
    , m_limits(limits)
    , m_state(State::Open)
    , m_frontOffset(0)
    , m_watched(false)
    , m_fragmentOpcode(0)
{
}

SubscriptionConnection::~SubscriptionConnection() = default;

void SubscriptionConnection::serve()
{
    LOG_DEBUG("Subscription connection of " << m_peerAddress.toString() << " opened");
    try
    {
        m_socket.setMaxPayloadSize(static_cast<int>(m_limits.maxFrameSize()));
        m_socket.setReceiveTimeout(FRAME_TIMEOUT);
        while (readMessage())
        {
        }
    }
    catch (const Poco::Exception& e)
    {
        LOG_DEBUG("Subscription connection of " << m_peerAddress.toString()
                                                << " failed: " << e.displayText());
    }
    catch (const std::exception& e)
    {
        LOG_ERROR("Subscription connection of " << m_peerAddress.toString() << " failed: " << e.what());
    }
    endSubscriptions();
    waitUntilSent(CLOSE_TIMEOUT);
    LOG_DEBUG("Subscription connection of " << m_peerAddress.toString() << " closed");
}

void SubscriptionConnection::close()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_watched)
        {
            m_watched = false;
            m_watcher.unwatch(m_socket);
        }
        m_state = State::Closed;
        m_frames.clear();
    }
    try
    {
        m_socket.close();
    }
    catch (const Poco::Exception&)
    {
        // Closed either way; the peer has gone already.
    }
}

void SubscriptionConnection::goAway()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    closeLocked(WebSocket::WS_ENDPOINT_GOING_AWAY, REASON_GOING_AWAY);
    if (m_state != State::Closed)
    {
        // Wakes the reader; the close frame still leaves.
        ::shutdown(m_fd, SHUT_RD);
    }
}

void SubscriptionConnection::post(const std::string& text)
{
    std::string frame = encodeFrame(WebSocket::FRAME_OP_TEXT, text);
    const std::lock_guard<std::mutex> lock(m_mutex);
    queueFrameLocked(std::move(frame));
}

bool SubscriptionConnection::postUpdate(WebSocketSubscription& subscription, const std::string& text,
                                        bool last)
{
    std::string frame = encodeFrame(WebSocket::FRAME_OP_TEXT, text);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!subscription.takesUpdates())
    {
        return false;
    }
    if (last)
    {
        endLocked(subscription);
    }
    queueFrameLocked(std::move(frame));
    return true;
}

void SubscriptionConnection::postEnd(WebSocketSubscription& subscription, const std::string& text)
{
    std::string frame = encodeFrame(WebSocket::FRAME_OP_TEXT, text);
    const std::lock_guard<std::mutex> lock(m_mutex);
    endLocked(subscription);
    queueFrameLocked(std::move(frame));
}

std::size_t SubscriptionConnection::subscriptionCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_subscriptions.size();
}

std::size_t SubscriptionConnection::unsentCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_frames.size();
}

bool SubscriptionConnection::readMessage()
{
    // Waiting here rather than in receiveFrame() lets the receive timeout bound begun frames only.
    while (!m_socket.poll(IDLE_POLL, Poco::Net::Socket::SELECT_READ | Poco::Net::Socket::SELECT_ERROR))
    {
    }

    Poco::Buffer<char> buffer(0);
    int flags = 0;
    int length = 0;
    try
    {
        length = m_socket.receiveFrame(buffer, flags);
    }
    catch (const Poco::Net::WebSocketException& e)
    {
        if (e.code() == WebSocket::WS_ERR_PAYLOAD_TOO_BIG)
        {
            LOG_INFO("Subscription connection of " << m_peerAddress.toString() << " sent a message above "
                                                   << m_limits.maxFrameSize() << " bytes");
            closeWith(WebSocket::WS_PAYLOAD_TOO_BIG, REASON_TOO_BIG);
            return false;
        }
        // Most likely the client went away in the middle of a frame; the stream cannot be read on.
        LOG_DEBUG("Subscription connection of " << m_peerAddress.toString() << ": " << e.displayText());
        closeWith(WebSocket::WS_PROTOCOL_ERROR, REASON_PROTOCOL);
        return false;
    }
    catch (const Poco::TimeoutException&)
    {
        LOG_INFO("Subscription connection of " << m_peerAddress.toString()
                                               << " stalled in the middle of a frame");
        closeWith(WebSocket::WS_POLICY_VIOLATION, REASON_INCOMPLETE);
        return false;
    }
    if (length == 0 && flags == 0)
    {
        return false;
    }

    const std::string payload(buffer.begin(), static_cast<std::size_t>(length));
    const int opcode = flags & WebSocket::FRAME_OP_BITMASK;
    const bool final = (flags & WebSocket::FRAME_FLAG_FIN) != 0;
    switch (opcode)
    {
    case WebSocket::FRAME_OP_CLOSE:
        closeWith(answerToClose(payload), std::string());
        return false;
    case WebSocket::FRAME_OP_PING:
    {
        std::string pong = encodeFrame(WebSocket::FRAME_OP_PONG, payload);
        const std::lock_guard<std::mutex> lock(m_mutex);
        queueFrameLocked(std::move(pong));
        return true;
    }
    case WebSocket::FRAME_OP_PONG:
        return true;
    case WebSocket::FRAME_OP_TEXT:
    case WebSocket::FRAME_OP_BINARY:
        if (m_fragmentOpcode != 0)
        {
            closeWith(WebSocket::WS_PROTOCOL_ERROR, REASON_PROTOCOL);
            return false;
        }
        if (!final)
        {
            m_fragmentOpcode = opcode;
            m_fragments = payload;
            return true;
        }
        return handleMessage(opcode, payload);
    case WebSocket::FRAME_OP_CONT:
        if (m_fragmentOpcode == 0)
        {
            closeWith(WebSocket::WS_PROTOCOL_ERROR, REASON_PROTOCOL);
            return false;
        }
        if (m_fragments.size() + payload.size() > m_limits.maxFrameSize())
        {
            closeWith(WebSocket::WS_PAYLOAD_TOO_BIG, REASON_TOO_BIG);
            return false;
        }
        m_fragments += payload;
        if (!final)
        {
            return true;
        }
        {
            const int messageOpcode = m_fragmentOpcode;
            m_fragmentOpcode = 0;
            const std::string message = std::move(m_fragments);
            m_fragments.clear();
            return handleMessage(messageOpcode, message);
        }
    default:
        closeWith(WebSocket::WS_PROTOCOL_ERROR, REASON_PROTOCOL);
        return false;
    }
}

bool SubscriptionConnection::handleMessage(int opcode, const std::string& payload)
{
    if (opcode == WebSocket::FRAME_OP_BINARY)
    {
        post(SubscriptionMessages::error(SubscriptionMessages::NO_EVENT, Command::StatusObject::syntax_error,
                                         SubscriptionMessages::TEXT_BINARY_FRAME));
        return true;
    }
    handleText(payload);
    return true;
}

void SubscriptionConnection::handleText(const std::string& text)
{
    SubscriptionRequest request(text, m_localAddress, m_peerAddress);
    const std::string event = eventAsWritten(request);
    if (request.getData().isNull())
    {
        post(SubscriptionMessages::error(event, Command::StatusObject::syntax_error,
                                         SubscriptionMessages::TEXT_NOT_AN_OBJECT));
    }
    else if (!request.isValid())
    {
        post(SubscriptionMessages::error(event, Command::StatusObject::syntax_error,
                                         SubscriptionMessages::TEXT_INVALID_FIELDS));
    }
    else if (request.getType() == Command::WebSocketRequestObject::TYPE_SUBSCRIBE)
    {
        subscribe(request, event);
    }
    else if (request.getType() == Command::WebSocketRequestObject::TYPE_UNSUBSCRIBE)
    {
        unsubscribe(event);
    }
    else
    {
        post(SubscriptionMessages::error(event, Command::StatusObject::syntax_error,
                                         SubscriptionMessages::TEXT_UNKNOWN_TYPE));
    }
}

void SubscriptionConnection::subscribe(SubscriptionRequest& request, const std::string& event)
{
    bool known = false;
    bool full = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        known = m_subscriptions.count(event) != 0;
        full = m_subscriptions.size() >= m_limits.maxSubscriptionsPerConnection();
    }
    if (known)
    {
        post(SubscriptionMessages::error(event, Command::StatusObject::syntax_error,
                                         SubscriptionMessages::TEXT_ALREADY_SUBSCRIBED));
        return;
    }
    if (full)
    {
        post(SubscriptionMessages::error(event,
                                         Command::StatusObject::maximum_number_of_event_subscriptions_reached,
                                         SubscriptionMessages::TEXT_TOO_MANY_SUBSCRIPTIONS));
        return;
    }

    // May wait for the database's worker: this is the connection's own thread, never the worker.
    SubscriptionSubscribingEventPayload payload{request};
    try
    {
        m_checker.checkNewSubscription(payload);
    }
    catch (const std::exception& e)
    {
        LOG_ERROR("Checking the subscription of " << m_peerAddress.toString() << " to " << event
                                                  << " failed: " << e.what());
        payload.cancelSubscribing(SubscriptionError::maximum_number_of_event_subscriptions_reached,
                                  SubscriptionMessages::TEXT_CHECK_FAILED);
    }
    if (request.isCanceled())
    {
        post(SubscriptionMessages::error(event, static_cast<int>(request.result().errorCode),
                                         request.result().errorMsg));
        return;
    }

    const auto subscription = std::make_shared<WebSocketSubscription>(request, event, shared_from_this());
    SubscriptionDispatcher& dispatcher = m_dispatcher;
    subscription->setEndHandler([&dispatcher](WebSocketSubscription& ended) { dispatcher.remove(ended); });
    std::string answer =
        encodeFrame(WebSocket::FRAME_OP_TEXT,
                    SubscriptionMessages::answer(Command::WebSocketRequestObject::TYPE_SUBSCRIBE, event));
    {
        // The answer is queued before the dispatcher knows the subscription, so it precedes every update.
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_subscriptions.emplace(event, subscription);
        queueFrameLocked(std::move(answer));
    }
    m_dispatcher.add(subscription);
}

void SubscriptionConnection::unsubscribe(const std::string& event)
{
    std::shared_ptr<WebSocketSubscription> subscription;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_subscriptions.find(event);
        if (found != m_subscriptions.end())
        {
            subscription = found->second;
        }
    }
    if (!subscription)
    {
        post(SubscriptionMessages::error(event, Command::StatusObject::subscription_uri_invalid,
                                         SubscriptionMessages::TEXT_NOT_SUBSCRIBED));
        return;
    }
    m_dispatcher.remove(*subscription);
    postEnd(*subscription,
            SubscriptionMessages::answer(Command::WebSocketRequestObject::TYPE_UNSUBSCRIBE, event));
}

void SubscriptionConnection::endSubscriptions()
{
    std::map<std::string, std::shared_ptr<WebSocketSubscription>> ended;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ended.swap(m_subscriptions);
        for (const auto& entry : ended)
        {
            entry.second->stopUpdates();
        }
    }
    for (const auto& entry : ended)
    {
        m_dispatcher.remove(*entry.second);
    }
}

void SubscriptionConnection::waitUntilSent(const Poco::Timespan& timeout)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_sent.wait_for(lock, std::chrono::microseconds(timeout.totalMicroseconds()),
                    [this] { return m_frames.empty() || m_state == State::Closed; });
}

void SubscriptionConnection::closeWith(Poco::UInt16 status, const std::string& reason)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    closeLocked(status, reason);
}

void SubscriptionConnection::endLocked(WebSocketSubscription& subscription)
{
    subscription.stopUpdates();
    const auto found = m_subscriptions.find(subscription.event());
    if (found != m_subscriptions.end() && found->second.get() == &subscription)
    {
        m_subscriptions.erase(found);
    }
}

void SubscriptionConnection::queueFrameLocked(std::string&& frame)
{
    if (m_state != State::Open)
    {
        return;
    }
    if (m_frames.size() >= m_limits.maxUnsentUpdates())
    {
        LOG_WARNING("Closing subscription connection of " << m_peerAddress.toString() << ": more than "
                                                          << m_limits.maxUnsentUpdates()
                                                          << " updates unsent");
        abortLocked();
        return;
    }
    m_frames.push_back(std::move(frame));
    // While the watcher waits for room, it writes; writing here too would gain nothing.
    if (!m_watched)
    {
        flushLocked();
    }
}

void SubscriptionConnection::closeLocked(Poco::UInt16 status, const std::string& reason)
{
    if (m_state != State::Open)
    {
        return;
    }
    m_frames.push_back(encodeFrame(WebSocket::FRAME_OP_CLOSE, closePayload(status, reason)));
    m_state = State::Closing;
    if (!m_watched)
    {
        flushLocked();
    }
}

void SubscriptionConnection::flushLocked()
{
    while (!m_frames.empty() && m_state != State::Closed)
    {
        const std::string& frame = m_frames.front();
        // Non-blocking for this call only: the reader keeps its blocking socket.
        const ssize_t sent = ::send(m_fd, frame.data() + m_frontOffset, frame.size() - m_frontOffset,
                                    MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0)
        {
            m_frontOffset += static_cast<std::size_t>(sent);
            if (m_frontOffset == frame.size())
            {
                m_frames.pop_front();
                m_frontOffset = 0;
            }
            continue;
        }
        const int error = errno;
        if (error == EINTR)
        {
            continue;
        }
        if (error == EAGAIN || error == EWOULDBLOCK)
        {
            if (!m_watched)
            {
                m_watched = true;
                const std::weak_ptr<SubscriptionConnection> self = weak_from_this();
                m_watcher.watch(m_socket,
                                [self]
                                {
                                    if (const std::shared_ptr<SubscriptionConnection> connection =
                                            self.lock())
                                    {
                                        connection->onWritable();
                                    }
                                });
            }
            return;
        }
        LOG_DEBUG("Sending to subscription client " << m_peerAddress.toString()
                                                    << " failed: " << std::strerror(error));
        abortLocked();
        return;
    }
    if (m_watched)
    {
        m_watched = false;
        m_watcher.unwatch(m_socket);
    }
    m_sent.notify_all();
}

void SubscriptionConnection::abortLocked()
{
    m_state = State::Closed;
    m_frames.clear();
    m_frontOffset = 0;
    if (m_watched)
    {
        m_watched = false;
        m_watcher.unwatch(m_socket);
    }
    // Wakes the reader, which then ends the subscriptions and closes the socket.
    ::shutdown(m_fd, SHUT_RDWR);
    m_sent.notify_all();
}

void SubscriptionConnection::onWritable()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_watched)
    {
        flushLocked();
    }
}

std::string SubscriptionConnection::encodeFrame(int opcode, const std::string& payload)
{
    // Server frames are never masked; the length takes 7, 7+16 or 7+64 bits.
    const std::size_t length = payload.size();
    std::string frame;
    frame.reserve(length + 10);
    frame += static_cast<char>(WebSocket::FRAME_FLAG_FIN | opcode);
    if (length < 126)
    {
        frame += static_cast<char>(length);
    }
    else if (length <= 0xFFFF)
    {
        frame += static_cast<char>(126);
        frame += static_cast<char>((length >> 8) & 0xFF);
        frame += static_cast<char>(length & 0xFF);
    }
    else
    {
        frame += static_cast<char>(127);
        for (int shift = 56; shift >= 0; shift -= 8)
        {
            frame += static_cast<char>((static_cast<Poco::UInt64>(length) >> shift) & 0xFF);
        }
    }
    frame += payload;
    return frame;
}

} // namespace Orvi::Service
