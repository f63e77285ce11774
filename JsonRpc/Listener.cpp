#include "JsonRpc/Listener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace Json::Rpc {

namespace {

union SocketAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

/// The address's length; 0 when the text is no numeric address.
socklen_t ParseAddress(const std::string& text, std::uint16_t port, SocketAddress& address) {
    address = {};
    if (::inet_pton(AF_INET, text.c_str(), &address.ipv4.sin_addr) == 1) {
        address.ipv4.sin_family = AF_INET;
        address.ipv4.sin_port = htons(port);
        return sizeof(address.ipv4);
    }
    address = {};
    if (::inet_pton(AF_INET6, text.c_str(), &address.ipv6.sin6_addr) == 1) {
        address.ipv6.sin6_family = AF_INET6;
        address.ipv6.sin6_port = htons(port);
        return sizeof(address.ipv6);
    }
    return 0;
}

void SetOption(int fd, int level, int option, int value) {
    ::setsockopt(fd, level, option, &value, sizeof(value));
}

/// The sockets that are accepted inherit these.
void Configure(int fd) {
    // A restart must not wait for the connections of the run before to time out.
    SetOption(fd, SOL_SOCKET, SO_REUSEADDR, 1);
    SetOption(fd, IPPROTO_TCP, TCP_NODELAY, 1);
    // A peer that has vanished without a word is noticed after two minutes.
    SetOption(fd, SOL_SOCKET, SO_KEEPALIVE, 1);
    SetOption(fd, IPPROTO_TCP, TCP_KEEPIDLE, 60);
    SetOption(fd, IPPROTO_TCP, TCP_KEEPINTVL, 20);
    SetOption(fd, IPPROTO_TCP, TCP_KEEPCNT, 3);
}

Descriptor OpenSpare() {
    return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

Descriptor AcceptFrom(const Descriptor& socket) {
    return Descriptor(::accept4(socket.Get(), nullptr, nullptr, SOCK_CLOEXEC));
}

}  // namespace

bool Listener::Bind(const std::string& address, std::uint16_t port) {
    SocketAddress parsed;
    const socklen_t length = ParseAddress(address, port, parsed);
    if (length == 0 || m_socket.IsOpen()) {
        errno = EINVAL;
        return false;
    }
    Descriptor socket(::socket(parsed.any.sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    Configure(socket.Get());
    if (::bind(socket.Get(), &parsed.any, length) != 0) {
        const int reason = errno;
        socket.Close();
        errno = reason;
        return false;
    }
    m_socket = std::move(socket);
    return true;
}

bool Listener::Listen() {
    m_spare = OpenSpare();
    return ::listen(m_socket.Get(), SOMAXCONN) == 0;
}

std::uint16_t Listener::Port() const {
    SocketAddress address{};
    socklen_t length = sizeof(address);
    if (::getsockname(m_socket.Get(), &address.any, &length) != 0) {
        return 0;
    }
    return ntohs(address.any.sa_family == AF_INET6 ? address.ipv6.sin6_port : address.ipv4.sin_port);
}

Descriptor Listener::Accept() {
    for (;;) {
        Descriptor client = AcceptFrom(m_socket);
        int error = client.IsOpen() ? 0 : errno;
        if (error == EMFILE || error == ENFILE) {
            error = RefuseOne();
        }
        if (client.IsOpen() || error == EAGAIN || error == EWOULDBLOCK) {
            return client;
        }
        if (error != 0 && error != EINTR && error != ECONNABORTED) {
            m_pauseEnd = Clock::now() + m_pauseTime;
            return client;
        }
    }
}

/// Accepts and closes one client in the spare's place. Returns 0 or the error of accept.
int Listener::RefuseOne() {
    m_spare.Close();
    Descriptor client = AcceptFrom(m_socket);
    const int error = client.IsOpen() ? 0 : errno;
    client.Close();
    m_spare = OpenSpare();
    return error;
}

void Listener::Close() {
    m_socket.Close();
    m_spare.Close();
}

}  // namespace Json::Rpc
