// The control socket: lets a person or a test outside of the process lead the simulated player.
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// A Unix stream socket that only this user may open (mode 0600). Every client has a thread of its own, so
/// one that hangs keeps nobody else waiting; one client too many takes the place of the one that has been
/// silent for longest.
class ControlServer {
  public:
    static constexpr std::size_t kMostClients = 8;
    static constexpr std::size_t kLongestLine = std::size_t{64} * 1024;

    /// Listens at `path`, in place of a socket there that nobody listens at. Null, with the reason on stderr,
    /// when that does not work.
    static std::unique_ptr<ControlServer> Open(const std::string& path);
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

  private:
    struct Client {
        Descriptor socket;
        std::thread thread;
        std::atomic<std::uint64_t> lastHeard{0};  // by m_heard
        std::atomic<bool> isBeingAnswered{false};
        std::atomic<bool> isDropped{false};
        std::atomic<bool> isDone{false};
    };

    ControlServer(Descriptor listener, std::string path);
    void Accept();
    void Admit(Descriptor socket);
    void Serve(Client& client);
    /// False when the connection is to be closed.
    bool AnswerLines(Client& client, std::string& pending);
    bool Answer(Client& client, std::string_view line);
    void Reap();
    /// False when each one is being answered.
    bool DropSilentClient();

    const Descriptor m_listener;
    const std::string m_path;
    std::atomic<bool> m_isStopping{false};
    std::atomic<std::uint64_t> m_heard{0};
    std::mutex m_mutex;
    std::list<Client> m_clients;  // guarded by m_mutex
    std::thread m_thread;
};

}  // namespace DeviceSimulator
