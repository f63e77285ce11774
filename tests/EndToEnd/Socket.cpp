#include "tests/EndToEnd/Socket.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace EndToEnd {

namespace {

[[noreturn]] void ThrowErrno(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

UniqueFd NewSocket(int family) {
    UniqueFd fd(socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (fd.Get() < 0)
        ThrowErrno("socket");
    return fd;
}

}  // namespace

sockaddr_in ServiceAddress(const std::string& address) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(kPort);
    if (inet_pton(AF_INET, address.c_str(), &result.sin_addr) != 1)
        throw std::invalid_argument(address);
    return result;
}

LineSocket LineSocket::ConnectTcp(const std::string& address, int receiveBuffer) {
    UniqueFd fd = NewSocket(AF_INET);
    if (receiveBuffer > 0)
        setsockopt(fd.Get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    const sockaddr_in to = ServiceAddress(address);
    if (connect(fd.Get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0)
        ThrowErrno("connect to " + address);
    return LineSocket(std::move(fd));
}

LineSocket LineSocket::ConnectUnix(const std::string& path) {
    UniqueFd fd = NewSocket(AF_UNIX);
    sockaddr_un to{};
    to.sun_family = AF_UNIX;
    path.copy(to.sun_path, sizeof to.sun_path - 1);
    if (connect(fd.Get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0)
        ThrowErrno("connect to " + path);
    return LineSocket(std::move(fd));
}

void LineSocket::Send(std::string_view bytes) {
    const Clock::time_point deadline = In(kPatience);
    while (!bytes.empty()) {
        const ssize_t sent = send(m_fd.Get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        else if (errno != EAGAIN && errno != EINTR)
            ThrowErrno("send");
        else if (!WaitForFd(m_fd.Get(), POLLOUT, deadline))
            throw Timeout("timed out sending");
    }
}

void LineSocket::SendWhileOpen(std::string_view bytes) {
    try {
        Send(bytes);
    } catch (const std::system_error&) {
        // The peer has hung up, as it may.
    }
}

std::optional<std::string> LineSocket::ReadLine(milliseconds patience) {
    const Clock::time_point deadline = In(patience);
    std::size_t searched = 0;
    for (;;) {
        const std::size_t end = m_received.find('\n', searched);
        if (end != std::string::npos) {
            std::string line = m_received.substr(0, end);
            m_received.erase(0, end + 1);
            return line;
        }
        searched = m_received.size();
        if (!Receive(deadline))
            return std::nullopt;
    }
}

bool LineSocket::WaitForHangUp(milliseconds patience) {
    const Clock::time_point deadline = In(patience);
    try {
        while (Receive(deadline))
            m_received.clear();
        return true;
    } catch (const Timeout&) {
        return false;
    }
}

bool LineSocket::Receive(Clock::time_point deadline) {
    std::array<char, 65536> buffer;
    for (;;) {
        if (!WaitForFd(m_fd.Get(), POLLIN, deadline))
            throw Timeout("timed out receiving; so far: " + m_received.substr(0, 200));
        const ssize_t got = recv(m_fd.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (got > 0)
            m_received.append(buffer.data(), static_cast<std::size_t>(got));
        if (got > 0)
            return true;
        if (got == 0 || (errno != EAGAIN && errno != EINTR))
            return false;
    }
}

void LineSocket::ShutDownSending() {
    shutdown(m_fd.Get(), SHUT_WR);
}

void LineSocket::Abort() {
    const linger reset{1, 0};
    setsockopt(m_fd.Get(), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    m_fd = UniqueFd();
}

}  // namespace EndToEnd
