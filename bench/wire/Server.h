// A server that is measured: a process of its own, the service's or the floor's.
#pragma once

#include <netinet/in.h>
#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace Bench {

using Environment = std::vector<std::pair<std::string, std::string>>;

/// Runs from its constructor to its end. Failures throw std::runtime_error or std::system_error.
class Server {
  public:
    /// The epoll echo server.
    static Server Floor();
    /// The service's program at `path` over the quick player, with the log at its default level in its file.
    /// `number`, from 0 on, is that of the services that run at once: each has an address of its own.
    static Server Service(const std::string& path, unsigned number, const Environment& environment = {});

    Server(Server&& other) noexcept
        : m_name(std::move(other.m_name)),
          m_address(other.m_address),
          m_pid(std::exchange(other.m_pid, -1)) {}
    Server& operator=(Server&&) = delete;
    ~Server();

    const std::string& Name() const { return m_name; }
    const sockaddr_in& Address() const { return m_address; }
    pid_t Process() const { return m_pid; }
    /// Processor time of all its threads so far, in microseconds.
    double CpuMicroseconds() const;
    /// Waits until it has the player, and has told all that it tells then.
    void AwaitPlayer() const;

  private:
    Server(std::string name, const sockaddr_in& address, const std::vector<std::string>& command,
           const Environment& environment);

    std::string m_name;
    sockaddr_in m_address;
    pid_t m_pid = -1;
};

}  // namespace Bench
