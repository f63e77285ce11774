// A server that is measured: a process of its own, the service's or the floor's.
#pragma once

#include <netinet/in.h>
#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace Bench {

using Environment = std::vector<std::pair<std::string, std::string>>;

/// What is measured: the floor, or a program of the service's.
class Program {
  public:
    /// The epoll echo server.
    static Program Floor() { return Program(""); }
    static Program Service(std::string path) { return Program(std::move(path)); }

    bool IsFloor() const { return m_path.empty(); }
    const std::string& Path() const { return m_path; }

  private:
    explicit Program(std::string path) : m_path(std::move(path)) {}

    std::string m_path;
};

/// A run of a program, from its constructor to its end. Failures throw std::runtime_error or
/// std::system_error.
class Server {
  public:
    /// Returns with the first reply. The service runs over the quick player unless the environment says
    /// otherwise, and logs at its default level into its file. `number`, from 0 on: each of those that run at
    /// once has an address of its own.
    Server(const Program& program, unsigned number, const Environment& environment = {});
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    const sockaddr_in& Address() const { return m_address; }
    /// Its folder in /proc.
    std::string Proc() const { return "/proc/" + std::to_string(m_pid); }
    /// From its start to the first reply.
    double StartMilliseconds() const { return m_startMilliseconds; }
    /// Processor time of all its threads so far.
    double CpuMicroseconds() const;
    /// Waits until it has the player.
    void AwaitPlayer() const;
    /// Waits until it has had nothing to tell for a while that is longer than a pass at rest.
    void AwaitRest() const;
    /// Ends it in order; how long it takes from the signal on.
    double StopMilliseconds();

  private:
    sockaddr_in m_address;
    pid_t m_pid = -1;
    double m_startMilliseconds = 0;
};

}  // namespace Bench
