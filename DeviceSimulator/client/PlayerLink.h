// What connects this process with one player, from its first registration to the player's end.
#pragma once

#include <sys/types.h>

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
#include "DeviceSimulator/wire/FunctionId.h"
#include "DeviceSimulator/wire/LowMemory.h"
#include "DeviceSimulator/wire/Stream.h"

namespace DeviceSimulator {

struct FoundPlayer {
    Descriptor socket;     ///< of kind Events; welcome has been said
    LocalAddress address;  ///< for more connections
    pid_t child = -1;      ///< the player, where this process has started it
};

/// None, with the reason on stderr, once for each reason. Takes a few seconds at most. One thread at a time.
std::optional<FoundPlayer> FindPlayer(const Wire::Hello& hello);

/// One more connection; empty when the player has gone. Waits for it for as long as it takes.
Descriptor ConnectOnceMore(const LocalAddress& address, const Wire::Hello& hello);

/// One call's way there and back, on a connection that is its own meanwhile.
struct CallConnection {
    Descriptor socket;
    Wire::Bytes call;
    Wire::Bytes buffer;
    std::span<const std::byte> answer;  ///< in `buffer`
    Descriptor memory;                  ///< what came with the answer
};

/// Every member may be called from any thread.
class PlayerLink {
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

    void AddBlock(std::uint32_t process, LowMemory memory) {
        const std::lock_guard lock(m_mutex);
        const std::uint32_t address = memory.Address();
        m_blocks.insert_or_assign({process, address}, std::move(memory));
    }
    /// False when there is none.
    bool RemoveBlock(std::uint32_t process, std::uint32_t address) {
        const std::lock_guard lock(m_mutex);
        return m_blocks.erase({process, address}) != 0;
    }
    void RemoveBlocks(std::uint32_t process) {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_blocks, [&](const auto& block) { return block.first.first == process; });
    }

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
