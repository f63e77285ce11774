// The player's side of the connections of its clients, the processes that have loaded libdevicemanager.so.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "DeviceSimulator/run/RemoteClient.h"
#include "DeviceSimulator/wire/Protocol.h"
#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// A thread a connection, so that a call that hangs or a client that does not read holds up its own thread
/// only.
class PlayerServer {
  public:
    static constexpr std::size_t kMostConnections = 512;

    /// `isStaying`: the process goes on when no client is left; else it ends then.
    PlayerServer(Descriptor listener, bool isStaying)
        : m_listener(std::move(listener)), m_isStaying(isStaying) {}
    PlayerServer(const PlayerServer&) = delete;
    PlayerServer& operator=(const PlayerServer&) = delete;

    /// Accepts connections, for good.
    [[noreturn]] void Run();

  private:
    void Start(Descriptor socket);
    void Serve(Descriptor socket);
    void ServeClient(Descriptor socket, const Wire::Hello& hello);
    void ServeCalls(const Descriptor& socket, std::uint64_t client);
    /// Who keeps the player running: clients, and those that have not said yet what they are.
    void Enter() { ++m_holders; }
    void Leave();

    const Descriptor m_listener;
    const bool m_isStaying;
    std::atomic<std::size_t> m_connections{0};
    std::atomic<std::size_t> m_holders{0};
    std::mutex m_mutex;
    std::map<std::uint64_t, std::shared_ptr<RemoteClient>> m_clients;  // by their own numbers; under m_mutex
};

}  // namespace DeviceSimulator
