// libdevicemanager.so: the functions of DeviceManager.h, each a call to the player's process.
//
// What belongs to this process is kept here: the callbacks, the addresses of its blocks, and which player a
// process handle is of.
#pragma GCC visibility push(default)
#include "DeviceManager/DeviceManager.h"
#pragma GCC visibility pop

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <new>

#include "DeviceSimulator/client/PlayerLink.h"
#include "DeviceSimulator/wire/Arguments.h"

namespace DeviceSimulator {

namespace {

/// The player that this process talks to, and those that handles are still of. Any thread.
class Players {
  public:
    /// Never destroyed: threads may be calling while the process exits.
    static Players& Instance() {
        static auto* const kPlayers = new Players;
        return *kPlayers;
    }

    /// That of the handle; of one that is none the latest, which then says so. May be null.
    std::shared_ptr<PlayerLink> Of(std::uint32_t process) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_links.find(process);
        if (found != m_links.end()) {
            return found->second;
        }
        return m_latest != nullptr && m_latest->IsAlive() ? m_latest : nullptr;
    }
    /// One that runs; null when there is none to be had.
    std::shared_ptr<PlayerLink> Running() {
        const std::lock_guard opening(m_openMutex);
        // Written under both locks, so read under either.
        if (m_latest != nullptr && m_latest->IsAlive()) {
            return m_latest;
        }
        if (m_latest != nullptr) {
            // Waits for those who register with it still: the next player gives none of their handles again.
            m_latest->Registered()->AwaitRegistrations();
        }
        auto link = PlayerLink::Open(m_nextProcess);
        const std::lock_guard lock(m_mutex);
        m_latest = link;
        return link;
    }
    void Add(std::uint32_t process, std::shared_ptr<PlayerLink> link) {
        const std::lock_guard lock(m_mutex);
        m_links[process] = std::move(link);
        m_nextProcess = std::max(m_nextProcess.load(), process + 1);
    }
    void Remove(std::uint32_t process) {
        const std::lock_guard lock(m_mutex);
        m_links.erase(process);
    }

  private:
    std::mutex m_openMutex;  // one at a time looks for a player
    std::mutex m_mutex;      // guards all below
    std::map<std::uint32_t, std::shared_ptr<PlayerLink>> m_links;
    std::shared_ptr<PlayerLink> m_latest;
    std::atomic<std::uint32_t> m_nextProcess{0};
};

struct Outcome {
    u32 result;
    Descriptor memory{};  ///< what came with a success
};

template <typename... Arguments>
Outcome CallOn(PlayerLink& link, FunctionId function, Arguments... arguments) {
    auto connection = link.Take();
    if (connection == nullptr) {
        return {DEV_MGR_DEVICE_NOT_RESPONDING};
    }
    connection->call.assign(sizeof(Wire::CallHead), {});
    (Wire::Send(connection->call, arguments), ...);
    const auto result = PlayerLink::Exchange(*connection, function);
    if (!result) {
        link.Lose();
        return {DEV_MGR_DEVICE_NOT_RESPONDING};
    }
    if (*result == DEV_MGR_SUCCESS) {
        const std::uint32_t room = std::max({Wire::Room(arguments)...});
        Wire::Taker taker(connection->answer);
        taker.Take<Wire::AnswerHead>();
        (Wire::Receive(taker, arguments, room), ...);
        if (!taker.IsDone()) {
            return {DEV_MGR_UNKNOWN_FAILURE};
        }
    }
    Outcome outcome{*result, std::move(connection->memory)};
    link.Return(std::move(connection));
    return outcome;
}

/// What goes wrong here comes to the caller as a code.
template <typename Work>
u32 Guarded(Work work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return DEV_MGR_MEMORY_ERROR;
    } catch (...) {
        return DEV_MGR_UNKNOWN_FAILURE;
    }
}

/// `work`(link) with the player of the process.
template <typename Work>
u32 OnPlayerOf(u32 ph, Work work) {
    return Guarded([&]() -> u32 {
        const auto link = Players::Instance().Of(ph);
        return link != nullptr ? work(*link) : u32{DEV_MGR_PROCESS_NOT_REGISTERED};
    });
}

template <FunctionId kFunction, typename... Arguments>
u32 Call(u32 ph, Arguments... arguments) {
    return OnPlayerOf(ph, [&](PlayerLink& link) { return CallOn(link, kFunction, ph, arguments...).result; });
}

template <>
u32 Call<FunctionId::eDevMgrDeRegisterProcess>(u32 ph) {
    return OnPlayerOf(ph, [&](PlayerLink& link) -> u32 {
        const u32 result = CallOn(link, FunctionId::eDevMgrDeRegisterProcess, ph).result;
        // With a player that is gone went all that it had of the process.
        if (result != DEV_MGR_SUCCESS && link.IsAlive()) {
            return result;
        }
        link.Registered()->Remove(ph);
        link.RemoveBlocks(ph);
        Players::Instance().Remove(ph);
        return DEV_MGR_SUCCESS;
    });
}

template <>
u32 Call<FunctionId::eDevMgrAllocateSharedMemory>(u32 ph, u32* size, u32* block) {
    return OnPlayerOf(ph, [&](PlayerLink& link) -> u32 {
        LowMemory memory(size != nullptr ? *size : 0);
        u32 address = memory.Address();
        const Outcome outcome = CallOn(link, FunctionId::eDevMgrAllocateSharedMemory, ph, size,
                                       block != nullptr ? &address : nullptr);
        if (outcome.result != DEV_MGR_SUCCESS) {
            return outcome.result;
        }
        if (!outcome.memory.IsOpen() || !memory.Fill(outcome.memory.Get())) {
            CallOn(link, FunctionId::eDevMgrDeAllocateSharedMemory, ph, address);
            return DEV_MGR_MEMORY_ERROR;
        }
        *block = address;
        link.AddBlock(ph, std::move(memory));
        return DEV_MGR_SUCCESS;
    });
}

template <>
u32 Call<FunctionId::eDevMgrDeAllocateSharedMemory>(u32 ph, u32 block) {
    return OnPlayerOf(ph, [&](PlayerLink& link) -> u32 {
        const u32 result = CallOn(link, FunctionId::eDevMgrDeAllocateSharedMemory, ph, block).result;
        if (result != DEV_MGR_SUCCESS && link.IsAlive()) {
            return result;
        }
        return link.RemoveBlock(ph, block) ? DEV_MGR_SUCCESS : DEV_MGR_WROG_SHARED_MEMORY;
    });
}

template <FunctionId kFunction>
u32 Call(u32* ph, DeviceEventCallback callback) {
    static_assert(kFunction == FunctionId::eDevMgrRegisterProcess);
    return Guarded([&]() -> u32 {
        const auto link = Players::Instance().Running();
        if (link == nullptr) {
            return DEV_MGR_PROCESS_REGISTRY_FAILED;
        }
        Callbacks::Registering registering(link->Registered());
        const u32 result = CallOn(*link, kFunction, ph, callback).result;
        if (result == DEV_MGR_SUCCESS) {
            Players::Instance().Add(*ph, link);
            registering.Add(*ph, callback);
        }
        return result;
    });
}

}  // namespace

}  // namespace DeviceSimulator

#define DEFINE(function, count) \
    DEVICE_MANAGER_DEFINE(function, count, DeviceSimulator::Call<DeviceSimulator::FunctionId::function>)

DEVICE_MANAGER_FUNCTIONS(DEFINE)
