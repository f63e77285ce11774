#include "bench/wire/Connection.h"

#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "bench/wire/Protocol.h"

namespace Bench {
namespace {

[[noreturn]] void Fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

Connection::Connection(const sockaddr_in& server, int receiveBuffer)
    : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    setsockopt(m_socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (receiveBuffer > 0) {
        setsockopt(m_socket.Get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    if (connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0) {
        Fail("connect");
    }
}

void Connection::Send(std::string_view text) const {
    if (send(m_socket.Get(), text.data(), text.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(text.size())) {
        Fail("send");
    }
}

std::size_t Connection::Receive(std::string* text) const {
    std::array<char, 65536> buffer;
    const ssize_t count = recv(m_socket.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count < 0 && errno == EAGAIN) {
        return 0;
    }
    if (count <= 0) {
        count == 0 ? throw std::runtime_error("the server hung up") : Fail("recv");
    }
    const std::string_view received(buffer.data(), static_cast<std::size_t>(count));
    if (text != nullptr) {
        text->append(received);
    }
    return static_cast<std::size_t>(std::count(received.begin(), received.end(), '\n'));
}

void Connection::Await(std::size_t lines, std::string* text) const {
    SpinLimit limit;
    for (std::size_t received = 0; (received += Receive(text)) < lines;) {
        limit.Spin();
    }
}

void SpinLimit::Spin() {
    constexpr unsigned kSpinsALook = 1 << 12;
    if (++m_spins % kSpinsALook != 0) {
        return;
    }
    const auto now = Clock::now();
    if (m_end == Clock::time_point{}) {
        m_end = now + std::chrono::seconds(10);
    } else if (now > m_end) {
        throw std::runtime_error("no answer came");
    }
}

Connections::Connections(const sockaddr_in& server, std::size_t count)
    : m_epoll(epoll_create1(EPOLL_CLOEXEC)) {
    for (std::size_t i = 0; i < count; ++i) {
        m_all.emplace_back(server);
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = i;
        if (epoll_ctl(m_epoll.Get(), EPOLL_CTL_ADD, m_all.back().Socket(), &event) != 0) {
            Fail("epoll_ctl");
        }
    }
    // The kernel connects before the server accepts: an answer says that it has.
    for (const Connection& connection : m_all) {
        connection.Ask(kRequest);
    }
}

void Connections::Poll(const OnLines& onLines) const {
    std::array<epoll_event, 64> ready{};
    const int count = epoll_wait(m_epoll.Get(), ready.data(), static_cast<int>(ready.size()), 0);
    for (int i = 0; i < count; ++i) {
        const Connection& connection = m_all[ready[static_cast<std::size_t>(i)].data.u64];
        onLines(connection, connection.Receive());
    }
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace Bench
