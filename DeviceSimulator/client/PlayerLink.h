// What connects this process with one player, from its first registration to the player's end.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "DeviceSimulator/client/Callbacks.h"
#include "DeviceSimulator/client/StartPlayer.h"
#include "DeviceSimulator/wire/FunctionId.h"
#include "DeviceSimulator/wire/LowMemory.h"

namespace DeviceSimulator {

/// One call's way there and back, on a connection that is its own meanwhile.
struct CallConnection {
    Descriptor socket;
    Wire::Bytes call;
    Wire::Bytes buffer;
    std::span<const std::byte> answer;  ///< in `buffer`
    Descriptor memory;                  ///< what came with the answer
};

/// Every member may be called from any thread.
class PlayerLink : public std::enable_shared_from_this<PlayerLink> {
  public:
    /// Finds a player, or starts one. `firstProcess`: no handle below is given. Null, with the reason on
    /// stderr.
    static std::shared_ptr<PlayerLink> Open(std::uint32_t firstProcess);

    PlayerLink(FoundPlayer player, const Wire::Hello& hello);

    bool IsAlive() const { return m_isAlive; }
    /// The player has gone: its processes are told so, and no call goes to it any more.
    void Lose();
    /// Null when the player has gone.
    std::unique_ptr<CallConnection> Take();
    void Return(std::unique_ptr<CallConnection> connection);
    /// What `connection->call` has behind its head becomes a call of `function`; the answer is in
    /// `connection->answer`. None: the player has gone, or does not make sense.
    static std::optional<std::uint32_t> Exchange(CallConnection& connection, FunctionId function);

    const std::shared_ptr<Callbacks>& Registered() const { return m_callbacks; }
    void AddBlock(std::uint32_t process, LowMemory memory);
    /// False when there is none.
    bool RemoveBlock(std::uint32_t process, std::uint32_t address);
    void RemoveBlocks(std::uint32_t process);

  private:
    void ReceiveEvents();

    const FoundPlayer m_player;
    Wire::Hello m_hello;  // of connections for calls
    std::atomic<bool> m_isAlive{true};
    const std::shared_ptr<Callbacks> m_callbacks = std::make_shared<Callbacks>();
    std::mutex m_mutex;  // guards all below
    std::vector<std::unique_ptr<CallConnection>> m_idle;
    std::map<std::pair<std::uint32_t, std::uint32_t>, LowMemory> m_blocks;  // by process and address
};

}  // namespace DeviceSimulator
