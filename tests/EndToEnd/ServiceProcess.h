// The service as a process: the real binary with the simulated player's library behind it.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tests/EndToEnd/Client.h"

namespace EndToEnd {

inline constexpr const char* kControlSocket = "/tmp/device-simulator.control";
inline constexpr const char* kLogPath = "/home/root/ipod.log";

/// The service as it was built, and the module that it loads for pictures.
extern const std::string kServiceProgram;
extern const std::string kPictureModule;

/// Empty when there is no such file.
std::string ReadFile(const std::string& path);

struct LogEntry {
    std::string level;  ///< for example "WARN "
    std::string source;
    std::string message;  ///< with its newline, where it has one
};

/// Entries are found by their heads wherever these stand: some messages end without a newline.
std::vector<LogEntry> ParseLog(const std::string& text);
std::ptrdiff_t CountEntries(const std::string& log, const std::string& level, const std::string& message);

struct ServiceOptions {
    std::vector<std::string> arguments{};
    std::string device = "none";      ///< what is plugged in at start: iap2, iap, stick or none
    std::string address = kLoopback;  ///< where it is expected to listen
    std::string program = {};         ///< a copy of the service elsewhere; empty: the one that was built
};

/// One run of the service. At most one at a time listens on an address. When the object goes,
/// the process is killed; what a sanitizer has found in it ends the run.
class ServiceProcess {
  public:
    static constexpr const char* kStandardOutput = "/tmp/service.stdout";

    explicit ServiceProcess(ServiceOptions options = {});
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    /// The first client that gets through. Throws at its deadline.
    Client WaitForPort();
    /// From here on SIGTERM and SIGINT stop the service in order. Throws at its deadline.
    void WaitForMainLoop();
    /// Whether the main thread is asleep in the main loop, with nothing left to do. False as well when the
    /// process has ended.
    bool IsInMainLoop() const;

    void Signal(int number) const { kill(m_pid, number); }
    /// As a shell has it: the exit status, or 128 and the signal's number. None while the process runs on.
    std::optional<int> Status();
    /// The same, once there is one; none when it does not come.
    std::optional<int> WaitForExit();
    /// Sends SIGTERM, and waits.
    std::optional<int> Stop();

    /// Throws unless `text` appears.
    void WaitForLog(const std::string& text) const;
    static bool HasLogged(const std::string& text) {
        return ReadFile(kLogPath).find(text) != std::string::npos;
    }
    static std::string StandardOutput() { return ReadFile(kStandardOutput); }
    std::size_t DescriptorCount() const;
    /// Its folder in /proc.
    std::string Proc() const { return "/proc/" + std::to_string(m_pid); }

  private:
    ServiceOptions m_options;
    pid_t m_pid = -1;
    std::optional<int> m_status;
};

}  // namespace EndToEnd
