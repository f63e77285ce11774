// The service as a process: the real binary with the simulated player's library behind it.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/EndToEnd/Socket.h"

namespace EndToEnd {

inline constexpr const char* kControlSocket = "/tmp/device-simulator.control";

struct ServiceOptions {
    std::vector<std::string> arguments{};
    std::string device = "none";        ///< what is plugged in at start: iap2, iap, stick or none
    std::string address = "127.0.0.1";  ///< where it is expected to listen
};

/// One run of the service. At most one at a time listens on an address; it is killed when the object goes.
class ServiceProcess {
  public:
    explicit ServiceProcess(ServiceOptions options = {});
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    /// Both throw Timeout.
    void WaitForPort();
    /// From here on SIGTERM and SIGINT stop the service in order.
    void WaitForMainLoop();

    /// Whether the main thread is asleep in the main loop, with nothing left to do. False as well when the
    /// process has ended.
    bool IsInMainLoop() const;

    /// Whether it has a handler for the signal in place.
    bool Catches(int number) const;
    void Signal(int number);
    /// As a shell has it: the exit status, or 128 and the signal's number. None while the process runs on.
    std::optional<int> WaitForExit(milliseconds patience = kPatience);
    bool IsRunning() { return !WaitForExit(milliseconds{0}).has_value(); }

    /// How many descriptors it has open.
    std::size_t DescriptorCount() const;
    /// What it has written so far.
    std::string StandardOutput() const;
    std::string StandardError() const;

  private:
    ServiceOptions m_options;
    pid_t m_pid = -1;
    UniqueFd m_pidFd;
    std::optional<int> m_status;
};

}  // namespace EndToEnd
