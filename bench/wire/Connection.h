// The client's end of a connection. It spins instead of sleeping, so that what it takes the client to wake up
// is no part of what is measured.
#pragma once

#include <netinet/in.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ServiceUtil/Descriptor.h"

namespace Bench {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

/// Every failure, and 10 s without an answer, throws std::runtime_error or std::system_error.
class Connection {
  public:
    /// `receiveBuffer`: bytes; 0: what the system gives.
    explicit Connection(const sockaddr_in& server, int receiveBuffer = 0);

    void Send(std::string_view text) const;
    /// Lines that have come; does not wait. `text`: takes all that has come besides.
    std::size_t Receive(std::string* text = nullptr) const;
    /// Spins until so many more lines are there.
    void Await(std::size_t lines, std::string* text = nullptr) const;
    /// A request and its reply.
    void Ask(std::string_view request) const {
        Send(request);
        Await(1);
    }
    int Socket() const { return m_socket.Get(); }

  private:
    Descriptor m_socket;
};

/// Throws once the patience of a spinning wait is over; looks at the clock now and then only.
class SpinLimit {
  public:
    void Spin();

  private:
    unsigned m_spins = 0;
    Clock::time_point m_end{};
};

/// Many connections to one server, all of them known to it.
class Connections {
  public:
    Connections(const sockaddr_in& server, std::size_t count);

    using OnLines = std::function<void(const Connection&, std::size_t lines)>;
    /// Hands over what has come; does not wait.
    void Poll(const OnLines& onLines) const;
    const std::vector<Connection>& All() const { return m_all; }

  private:
    Descriptor m_epoll;
    std::vector<Connection> m_all;
};

double Median(std::vector<double> values);

}  // namespace Bench
