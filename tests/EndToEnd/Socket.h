// Stream sockets whose every operation has a deadline.
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "DeviceSimulator/UniqueFd.h"
#include "tests/EndToEnd/Deadline.h"

namespace EndToEnd {

using DeviceSimulator::UniqueFd;

inline constexpr std::uint16_t kPort = 8883;

sockaddr_in ServiceAddress(const std::string& address);

/// A connected stream socket of either family, read by lines.
class LineSocket {
  public:
    explicit LineSocket(UniqueFd fd) : m_fd(std::move(fd)) {}

    /// Throws when the service is not there. `receiveBuffer`: SO_RCVBUF, or 0 for the system's own.
    static LineSocket ConnectTcp(const std::string& address, int receiveBuffer = 0);
    static LineSocket ConnectUnix(const std::string& path);

    /// Throws Timeout when the peer takes nothing, runtime_error when it is gone.
    void Send(std::string_view bytes);
    /// What the peer takes of `bytes` until it has hung up.
    void SendWhileOpen(std::string_view bytes);
    /// A line without its newline; none when the peer has hung up. Throws Timeout.
    std::optional<std::string> ReadLine(milliseconds patience = kPatience);
    /// Reads on, and drops what comes, until the peer hangs up.
    bool WaitForHangUp(milliseconds patience = kPatience);
    void ShutDownSending();
    /// Hangs up with a reset instead of an orderly end.
    void Abort();

  private:
    /// False at the end of the stream.
    bool Receive(Clock::time_point deadline);

    UniqueFd m_fd;
    std::string m_received;
};

}  // namespace EndToEnd
