// The control socket: lets a person or a test outside of the process lead the simulated player.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
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
    struct Client;

    ControlServer(Descriptor listener, std::string path);
    void Accept();
    void Admit(Descriptor socket);
    /// False when each one has sent something that is not answered yet.
    bool DropSilentClient();

    const Descriptor m_listener;
    const std::string m_path;
    std::list<Client> m_clients;  // of m_thread while that runs
    std::thread m_thread;
};

}  // namespace DeviceSimulator
