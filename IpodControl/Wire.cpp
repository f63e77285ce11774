#include "IpodControl/Wire.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace IpodControl {

namespace {

/// The list of all songs of the largest libraries takes some 30 MB; what sends more than this is no service.
constexpr std::size_t kLongestLine = 64U << 20;
constexpr std::size_t kReadBytes = 64U << 10;
/// So much at a time, so that a flood lets its reader do something else in between.
constexpr std::size_t kMostReads = 4;

/// Of a connection that is under way. 0, or an errno.
int Finish(const Descriptor& connection, Deadline deadline) {
    pollfd entry{connection.Get(), POLLOUT, 0};
    const PollEnd end = PollUntil({&entry, 1}, deadline);
    if (end != PollEnd::Ready) {
        return end == PollEnd::Over ? ETIMEDOUT : errno;
    }
    int failure = 0;
    socklen_t size = sizeof failure;
    return getsockopt(connection.Get(), SOL_SOCKET, SO_ERROR, &failure, &size) == 0 ? failure : errno;
}

/// 0, or an errno. The connection is then `connection`.
int ConnectTo(const addrinfo& address, Deadline deadline, Descriptor& connection) {
    const int kind = address.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK;
    connection = Descriptor(socket(address.ai_family, kind, address.ai_protocol));
    if (!connection.IsOpen()) {
        return errno;
    }
    // A request is one small segment, and the next one must not wait for its acknowledgement.
    const int on = 1;
    setsockopt(connection.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const int failure = connect(connection.Get(), address.ai_addr, address.ai_addrlen) == 0 ? 0 : errno;
    return failure == EINPROGRESS ? Finish(connection, deadline) : failure;
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

/// Whether `text` cannot become an object or an array any more.
bool IsHopeless(std::string_view text) {
    const auto* const first = std::find_if_not(text.begin(), text.end(), IsBlank);
    return first != text.end() && *first != '{' && *first != '[';
}

std::string Printable(std::string_view text) {
    constexpr std::size_t kMost = 40;
    std::string printable;
    for (const char c : text.substr(0, kMost)) {
        printable += c >= ' ' && c <= '~' ? c : '.';
    }
    return printable;
}

}  // namespace

Outcome<Done> Wire::Open(const Endpoint& endpoint, Deadline deadline) {
    Close();
    m_peer = endpoint;
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* list = nullptr;
    const std::string port = std::to_string(endpoint.port);
    if (const int unknown = getaddrinfo(endpoint.host.c_str(), port.c_str(), &hints, &list); unknown != 0) {
        return Fail(ProblemKind::NoConnection,
                    "There is no host " + endpoint.host + ": " + gai_strerror(unknown));
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(list, freeaddrinfo);
    int failure = 0;
    for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
        failure = ConnectTo(*address, deadline, m_socket);
        if (failure == 0) {
            return Done{};
        }
    }
    return Fail(ProblemKind::NoConnection,
                "No service answers on " + ToText(endpoint) + ": " + std::strerror(failure));
}

Outcome<Done> Wire::Send(std::string_view line) {
    m_unsent.append(line).append("\n");
    return Flush();
}

Outcome<Done> Wire::Flush() {
    while (!m_unsent.empty()) {
        const ssize_t sent = send(m_socket.Get(), m_unsent.data(), m_unsent.size(), MSG_NOSIGNAL);
        if (sent > 0) {
            m_unsent.erase(0, static_cast<std::size_t>(sent));
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            return FailAsClosed();
        }
    }
    if (m_unsent.empty() && std::exchange(m_endsSending, false)) {
        shutdown(m_socket.Get(), SHUT_WR);
    }
    return Done{};
}

Outcome<Done> Wire::EndSending() {
    m_endsSending = true;
    return Flush();
}

Outcome<std::vector<Message>> Wire::Wait(std::optional<Deadline> deadline, std::span<pollfd> others) {
    std::vector<pollfd> entries(others.begin(), others.end());
    entries.push_back({m_socket.Get(), static_cast<short>(POLLIN | (HasUnsent() ? POLLOUT : 0)), 0});
    if (PollUntil(entries, deadline) == PollEnd::Failed) {
        return Fail(ProblemKind::Closed, std::string("Waiting has failed: ") + std::strerror(errno));
    }
    std::copy_n(entries.begin(), others.size(), others.begin());
    const short events = entries.back().revents;
    if ((events & POLLOUT) != 0) {
        if (const auto sent = Flush(); !sent) {
            return sent.Why();
        }
    }
    return (events & ~POLLOUT) != 0 ? Receive() : std::vector<Message>();
}

Outcome<std::vector<Message>> Wire::Receive() {
    for (std::size_t reads = 0; reads < kMostReads && !m_hasEnded && ReadSome(); ++reads) {
    }
    auto messages = TakeMessages();
    if (messages && messages->empty() && m_hasEnded) {
        return FailAsClosed();
    }
    return messages;
}

bool Wire::ReadSome() {
    std::array<char, kReadBytes> bytes;
    const ssize_t count = recv(m_socket.Get(), bytes.data(), bytes.size(), 0);
    if (count > 0) {
        m_received.append(bytes.data(), static_cast<std::size_t>(count));
    }
    // A reset is an end as well: what was received before it counts.
    m_hasEnded = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
    return count > 0;
}

Outcome<std::vector<Message>> Wire::TakeMessages() {
    std::vector<Message> messages;
    std::size_t begin = 0;
    bool isGood = true;
    for (;;) {
        const std::size_t end = m_received.find('\n', std::max(begin, m_searched));
        if (end == std::string::npos) {
            break;
        }
        const auto line = std::string_view(m_received).substr(begin, end - begin);
        if (!std::all_of(line.begin(), line.end(), IsBlank)) {
            auto message = Message::Parse(line);
            if (!message) {
                isGood = false;
                break;
            }
            messages.push_back(std::move(*message));
        }
        begin = end + 1;
    }
    m_received.erase(0, begin);
    m_searched = isGood ? m_received.size() : 0;
    isGood = isGood && !IsHopeless(m_received) && m_received.size() <= kLongestLine;
    if (!isGood && messages.empty()) {
        return Fail(ProblemKind::NotTheService, ToText(m_peer) +
                                                    " does not speak the service's protocol: \"" +
                                                    Printable(m_received) + "\" came");
    }
    return messages;
}

Problem Wire::Fail(ProblemKind kind, std::string text) {
    Close();
    return {kind, std::move(text)};
}

Problem Wire::FailAsClosed() {
    return Fail(ProblemKind::Closed, ToText(m_peer) + " has closed the connection");
}

}  // namespace IpodControl
