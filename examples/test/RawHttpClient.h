#pragma once

#include <Poco/String.h>
#include <Poco/Types.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace ServiceDB::Example::Test
{

/// What came back on a raw connection: the answer as the server wrote it, or why there was none.
struct RawAnswer
{
    bool answered = false;
    /// A status line and its headers arrived, and the whole body as they frame it.
    std::string failure;
    /// Why not: "timed out", "closed without an answer", an error of the socket, or a framing fault.
    std::string version;
    int status = 0;
    std::string reason;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    std::string header(const std::string& name) const
    {
        for (const auto& [key, value] : headers)
        {
            if (Poco::icompare(key, name) == 0)
            {
                return value;
            }
        }
        return {};
    }

    bool closesConnection() const { return Poco::icompare(header("Connection"), "close") == 0; }

    /// The answer in one line, for failure messages.
    std::string summary() const
    {
        if (!answered)
        {
            return "no answer (" + failure + ")";
        }
        return version + " " + std::to_string(status) + " " + reason + " [" + body + "]";
    }
};

/// How the client ends its side once the request bytes are written.
enum class ClientEnding
{
    StaysOpen,
    /// The connection stays open for the answer.
    HalfCloses,
    /// The client shuts down its sending side and reads the answer.
    Closes
    /// The client closes at once and reads nothing.
};

/// A TCP connection to 127.0.0.1 that writes bytes exactly as given, so that requests can be as broken
/// as a hostile client makes them, and reads the answer with a deadline instead of waiting for ever.
class RawConnection
{
public:
    RawConnection(Poco::UInt16 port, std::chrono::milliseconds timeLimit)
        : m_deadline(std::chrono::steady_clock::now() + timeLimit)
    {
        m_socket = ::socket(AF_INET, SOCK_STREAM, 0);
        if (m_socket < 0)
        {
            m_error = "socket: " + std::string(std::strerror(errno));
            return;
        }
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        {
            m_error = "connect: " + std::string(std::strerror(errno));
        }
    }

    ~RawConnection() { close(); }

    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    bool connected() const { return m_socket >= 0 && m_error.empty(); }

    /// Writes all bytes unless the server has closed first or the deadline passes; a server that refuses
    /// a request early may well stop reading it, so a failure here is no failure of the exchange.
    bool write(const std::string& bytes)
    {
        std::size_t sent = 0;
        while (connected() && sent < bytes.size())
        {
            if (!waitFor(POLLOUT))
            {
                return false;
            }
            const ssize_t count = ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count < 0)
            {
                if (errno == EINTR)
                {
                    continue;
                }
                return false;
            }
            sent += static_cast<std::size_t>(count);
        }
        return sent == bytes.size();
    }

    void halfClose()
    {
        if (m_socket >= 0)
        {
            ::shutdown(m_socket, SHUT_WR);
        }
    }

    void close()
    {
        if (m_socket >= 0)
        {
            ::close(m_socket);
            m_socket = -1;
        }
    }

    /// Reads one answer: status line, headers, and the body by its Content-Length, its chunks, or up to
    /// the end of the connection. Interim answers (1xx) are passed over. A HEAD answer has no body.
    RawAnswer readAnswer(bool toHead = false)
    {
        RawAnswer answer;
        if (!connected())
        {
            answer.failure = m_error.empty() ? "not connected" : m_error;
            return answer;
        }
        for (;;)
        {
            std::string head;
            if (!readHead(head, answer.failure))
            {
                return answer;
            }
            if (!parseHead(head, answer))
            {
                answer.failure = "malformed answer head: " + head;
                return answer;
            }
            if (answer.status >= 200)
            {
                break;
            }
            answer.headers.clear();
        }
        if (!readBody(answer, toHead))
        {
            return answer;
        }
        answer.answered = true;
        return answer;
    }

    /// True when the server has closed its side by the deadline, after everything it sent was read.
    bool closedByServer()
    {
        char byte = 0;
        for (;;)
        {
            if (!m_buffer.empty())
            {
                return false;
            }
            if (!waitFor(POLLIN))
            {
                return false;
            }
            const ssize_t count = ::recv(m_socket, &byte, 1, 0);
            if (count == 0 || (count < 0 && errno == ECONNRESET))
            {
                return true;
            }
            if (count < 0 && errno != EINTR)
            {
                return false;
            }
            if (count > 0)
            {
                m_buffer.push_back(byte);
            }
        }
    }

private:
    bool waitFor(short events)
    {
        for (;;)
        {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                m_deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0)
            {
                return false;
            }
            pollfd entry{m_socket, events, 0};
            const int ready = ::poll(&entry, 1, static_cast<int>(left.count()));
            if (ready > 0)
            {
                return true;
            }
            if (ready == 0 || errno != EINTR)
            {
                return false;
            }
        }
    }

    /// Adds what has arrived to the buffer; false with the reason once nothing more can come.
    bool receiveMore(std::string& failure)
    {
        if (!waitFor(POLLIN))
        {
            failure = "timed out";
            return false;
        }
        char chunk[16384];
        for (;;)
        {
            const ssize_t count = ::recv(m_socket, chunk, sizeof(chunk), 0);
            if (count > 0)
            {
                m_buffer.append(chunk, static_cast<std::size_t>(count));
                return true;
            }
            if (count == 0)
            {
                failure = "closed without an answer";
                return false;
            }
            if (errno != EINTR)
            {
                failure = std::string("recv: ") + std::strerror(errno);
                return false;
            }
        }
    }

    bool readHead(std::string& head, std::string& failure)
    {
        static const std::string END = "\r\n\r\n";
        std::size_t end = std::string::npos;
        while ((end = m_buffer.find(END)) == std::string::npos)
        {
            if (!receiveMore(failure))
            {
                if (!m_buffer.empty())
                {
                    failure += " after " + std::to_string(m_buffer.size()) + " bytes: " + m_buffer;
                }
                return false;
            }
        }
        head = m_buffer.substr(0, end);
        m_buffer.erase(0, end + END.size());
        return true;
    }

    static bool parseHead(const std::string& head, RawAnswer& answer)
    {
        std::size_t lineEnd = head.find("\r\n");
        const std::string statusLine = head.substr(0, lineEnd);
        const std::size_t firstBlank = statusLine.find(' ');
        if (firstBlank == std::string::npos)
        {
            return false;
        }
        answer.version = statusLine.substr(0, firstBlank);
        const std::size_t secondBlank = statusLine.find(' ', firstBlank + 1);
        const std::string code = statusLine.substr(firstBlank + 1, secondBlank == std::string::npos
                                                                       ? std::string::npos
                                                                       : secondBlank - firstBlank - 1);
        if (code.size() != 3 || code.find_first_not_of("0123456789") != std::string::npos)
        {
            return false;
        }
        answer.status = std::stoi(code);
        answer.reason = secondBlank == std::string::npos ? std::string() : statusLine.substr(secondBlank + 1);
        while (lineEnd != std::string::npos)
        {
            const std::size_t begin = lineEnd + 2;
            lineEnd = head.find("\r\n", begin);
            const std::string line =
                head.substr(begin, lineEnd == std::string::npos ? std::string::npos : lineEnd - begin);
            const std::size_t colon = line.find(':');
            if (colon == std::string::npos)
            {
                return false;
            }
            answer.headers.emplace_back(line.substr(0, colon), Poco::trim(line.substr(colon + 1)));
        }
        return true;
    }

    bool readExactly(std::size_t size, std::string& out, std::string& failure)
    {
        while (m_buffer.size() < size)
        {
            if (!receiveMore(failure))
            {
                return false;
            }
        }
        out.append(m_buffer, 0, size);
        m_buffer.erase(0, size);
        return true;
    }

    bool readLine(std::string& line, std::string& failure)
    {
        std::size_t end = std::string::npos;
        while ((end = m_buffer.find("\r\n")) == std::string::npos)
        {
            if (!receiveMore(failure))
            {
                return false;
            }
        }
        line = m_buffer.substr(0, end);
        m_buffer.erase(0, end + 2);
        return true;
    }

    bool readChunks(RawAnswer& answer)
    {
        for (;;)
        {
            std::string sizeLine;
            if (!readLine(sizeLine, answer.failure))
            {
                return false;
            }
            std::size_t size = 0;
            try
            {
                size = std::stoul(sizeLine, nullptr, 16);
            }
            catch (const std::exception&)
            {
                answer.failure = "malformed chunk size in the answer: " + sizeLine;
                return false;
            }
            std::string crlf;
            if (size == 0)
            {
                // No trailers are expected; the chunked body ends with an empty line.
                return readLine(crlf, answer.failure);
            }
            if (!readExactly(size, answer.body, answer.failure) || !readLine(crlf, answer.failure))
            {
                return false;
            }
        }
    }

    bool readBody(RawAnswer& answer, bool toHead)
    {
        const bool bodiless = toHead || answer.status == 204 || answer.status == 304;
        if (bodiless)
        {
            return true;
        }
        if (Poco::icompare(answer.header("Transfer-Encoding"), "chunked") == 0)
        {
            return readChunks(answer);
        }
        const std::string length = answer.header("Content-Length");
        if (!length.empty())
        {
            if (length.find_first_not_of("0123456789") != std::string::npos)
            {
                answer.failure = "malformed Content-Length in the answer: " + length;
                return false;
            }
            return readExactly(static_cast<std::size_t>(std::stoull(length)), answer.body, answer.failure);
        }
        // Neither length nor chunks: the body ends with the connection.
        std::string ignored;
        while (receiveMore(ignored))
        {
        }
        if (ignored == "timed out")
        {
            answer.failure = "timed out reading a body that ends with the connection";
            return false;
        }
        answer.body = std::move(m_buffer);
        m_buffer.clear();
        return true;
    }

    int m_socket = -1;
    std::string m_error;
    std::string m_buffer;
    std::chrono::steady_clock::time_point m_deadline;
};

/// Writes the bytes on a fresh connection, ends the client's side as asked and reads the answer; with
/// ClientEnding::Closes nothing is read and the answer is empty.
inline RawAnswer exchangeRaw(Poco::UInt16 port, const std::string& bytes, ClientEnding ending,
                             std::chrono::milliseconds timeLimit, bool toHead = false)
{
    RawConnection connection(port, timeLimit);
    connection.write(bytes);
    if (ending == ClientEnding::Closes)
    {
        connection.close();
        return {};
    }
    if (ending == ClientEnding::HalfCloses)
    {
        connection.halfClose();
    }
    return connection.readAnswer(toHead);
}

} // namespace ServiceDB::Example::Test
