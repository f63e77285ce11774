// 64 connections that ask as fast as they are answered, and as little as a server can do for them.
#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "bench/Loopback.h"

inline constexpr std::size_t kClients = 64;
inline constexpr std::chrono::milliseconds kBlockTime{200};
inline const std::string kNotification =
    "{\"jsonrpc\":\"2.0\",\"method\":\"trackTimeNotification\",\"params\":{\"trackTime\":5000}}\n";

inline double ThreadCpuMicroseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// poll, recv, send; and send to all.
class Floor {
  public:
    Floor() {
        sockaddr_in address = Loopback(0);
        socklen_t length = sizeof(address);
        if (::bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(m_listener, kClients) != 0 ||
            ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            Die("floor");
        }
        port = ntohs(address.sin_port);
    }

    void Accept() {
        for (pollfd& client : m_polls) {
            client = {::accept(m_listener, nullptr, nullptr), POLLIN, 0};
            SetNoDelay(client.fd);
        }
    }
    void Step() {
        ::poll(m_polls.data(), m_polls.size(), 10);
        std::array<char, 4096> buffer;
        for (const pollfd& client : m_polls) {
            if (client.revents != 0) {
                const ssize_t count = ::recv(client.fd, buffer.data(), buffer.size(), 0);
                ::send(client.fd, buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)),
                       MSG_NOSIGNAL);
            }
        }
    }
    void Broadcast() {
        for (const pollfd& client : m_polls) {
            ::send(client.fd, kNotification.data(), kNotification.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        }
    }

    std::uint16_t port = 0;

  private:
    const int m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::array<pollfd, kClients> m_polls{};
};

/// One end of 64 connections: each asks again as soon as it has its answer.
class Clients {
  public:
    explicit Clients(std::uint16_t port) {
        for (pollfd& client : m_polls) {
            client = {Connect(port), POLLIN, 0};
        }
    }

    /// Returns the answers a second.
    double Ask() {
        for (const pollfd& client : m_polls) {
            Request(client.fd);
        }
        const auto start = std::chrono::steady_clock::now();
        long answers = 0;
        std::size_t outstanding = kClients;
        for (bool isOver = false; outstanding > 0;) {
            ::poll(m_polls.data(), m_polls.size(), -1);
            isOver = isOver || std::chrono::steady_clock::now() - start >= kBlockTime;
            for (const pollfd& client : m_polls) {
                if (client.revents == 0) {
                    continue;
                }
                Receive(client.fd);
                answers += isOver ? 0 : 1;
                isOver ? --outstanding : static_cast<std::size_t>(Request(client.fd));
            }
        }
        return static_cast<double>(answers) / std::chrono::duration<double>(kBlockTime).count();
    }

    void Drain() {
        while (::poll(m_polls.data(), m_polls.size(), 0) > 0) {
            for (const pollfd& client : m_polls) {
                if (client.revents != 0) {
                    Receive(client.fd);
                }
            }
        }
    }

  private:
    static bool Request(int fd) { return ::send(fd, kRequest.data(), kRequest.size(), MSG_NOSIGNAL) > 0; }
    static void Receive(int fd) {
        std::array<char, 65536> buffer;
        if (::recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT) <= 0) {
            Die("recv");
        }
    }

    std::array<pollfd, kClients> m_polls{};
};
