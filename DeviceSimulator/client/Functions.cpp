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
#include <tuple>

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
        {
            const std::lock_guard lock(m_mutex);
            if (m_latest != nullptr && m_latest->IsAlive()) {
                return m_latest;
            }
        }
        if (m_latest != nullptr) {
            // Waits for those who register with it still: the next player gives none of their handles again.
            m_latest->Registered().Processes();
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

template <typename... Arguments>
u32 CallOn(PlayerLink& link, FunctionId function, Descriptor* memory, Arguments... arguments) {
    auto connection = link.Take();
    if (connection == nullptr) {
        return DEV_MGR_DEVICE_NOT_RESPONDING;
    }
    connection->call.assign(sizeof(Wire::CallHead), {});
    (Wire::Send(connection->call, arguments), ...);
    const auto result = PlayerLink::Exchange(*connection, function);
    if (!result) {
        link.Lose();
        return DEV_MGR_DEVICE_NOT_RESPONDING;
    }
    if (*result == DEV_MGR_SUCCESS) {
        const std::uint32_t room = std::max({Wire::Room(arguments)...});
        Wire::Taker taker(connection->answer);
        taker.Take<Wire::AnswerHead>();
        (Wire::Receive(taker, arguments, room), ...);
        if (!taker.IsDone()) {
            return DEV_MGR_UNKNOWN_FAILURE;
        }
    }
    Descriptor received = std::move(connection->memory);
    if (memory != nullptr) {
        *memory = std::move(received);
    }
    link.Return(std::move(connection));
    return *result;
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

template <FunctionId kFunction, typename... Arguments>
u32 Call(u32 ph, Arguments... arguments) {
    return Guarded([&]() -> u32 {
        const auto link = Players::Instance().Of(ph);
        return link != nullptr ? CallOn(*link, kFunction, nullptr, ph, arguments...)
                               : u32{DEV_MGR_PROCESS_NOT_REGISTERED};
    });
}

template <>
u32 Call<FunctionId::eDevMgrDeRegisterProcess>(u32 ph) {
    return Guarded([&]() -> u32 {
        const auto link = Players::Instance().Of(ph);
        if (link == nullptr) {
            return DEV_MGR_PROCESS_NOT_REGISTERED;
        }
        u32 result = CallOn(*link, FunctionId::eDevMgrDeRegisterProcess, nullptr, ph);
        if (!link->IsAlive()) {
            // With the player went all that it had of the process.
            result = DEV_MGR_SUCCESS;
        }
        if (result == DEV_MGR_SUCCESS) {
            link->Registered().Remove(ph);
            link->RemoveBlocks(ph);
            Players::Instance().Remove(ph);
        }
        return result;
    });
}

template <>
u32 Call<FunctionId::eDevMgrAllocateSharedMemory>(u32 ph, u32* size, u32* block) {
    return Guarded([&]() -> u32 {
        const auto link = Players::Instance().Of(ph);
        if (link == nullptr) {
            return DEV_MGR_PROCESS_NOT_REGISTERED;
        }
        LowMemory memory(size != nullptr ? *size : 0);
        u32 address = memory.Address();
        Descriptor file;
        const u32 result = CallOn(*link, FunctionId::eDevMgrAllocateSharedMemory, &file, ph, size,
                                  block != nullptr ? &address : nullptr);
        if (result != DEV_MGR_SUCCESS) {
            return result;
        }
        if (!file.IsOpen() || !memory.Fill(file.Get())) {
            CallOn(*link, FunctionId::eDevMgrDeAllocateSharedMemory, nullptr, ph, address);
            return DEV_MGR_MEMORY_ERROR;
        }
        *block = address;
        link->AddBlock(ph, std::move(memory));
        return result;
    });
}

template <>
u32 Call<FunctionId::eDevMgrDeAllocateSharedMemory>(u32 ph, u32 block) {
    return Guarded([&]() -> u32 {
        const auto link = Players::Instance().Of(ph);
        if (link == nullptr) {
            return DEV_MGR_PROCESS_NOT_REGISTERED;
        }
        const u32 result = CallOn(*link, FunctionId::eDevMgrDeAllocateSharedMemory, nullptr, ph, block);
        const bool isOver = result == DEV_MGR_SUCCESS || !link->IsAlive();
        if (isOver && link->RemoveBlock(ph, block)) {
            return DEV_MGR_SUCCESS;
        }
        return isOver ? u32{DEV_MGR_WROG_SHARED_MEMORY} : result;
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
        const Callbacks::Registering registering(link->Registered());
        const u32 result = CallOn(*link, kFunction, nullptr, ph, callback);
        if (result == DEV_MGR_SUCCESS) {
            Players::Instance().Add(*ph, link);
            link->Registered().Add(*ph, callback);
        }
        return result;
    });
}

template <typename Function>
struct Parameters;
template <typename... Arguments>
struct Parameters<u32(Arguments...)> {
    template <std::size_t kIndex>
    using At = std::tuple_element_t<kIndex, std::tuple<Arguments...>>;
};

}  // namespace

}  // namespace DeviceSimulator

using DeviceSimulator::FunctionId;

#define AT(f, index) typename DeviceSimulator::Parameters<decltype(f)>::At<index> a##index
#define PARAMETERS_1(f) AT(f, 0)
#define PARAMETERS_2(f) PARAMETERS_1(f), AT(f, 1)
#define PARAMETERS_3(f) PARAMETERS_2(f), AT(f, 2)
#define PARAMETERS_4(f) PARAMETERS_3(f), AT(f, 3)
#define PARAMETERS_5(f) PARAMETERS_4(f), AT(f, 4)
#define PARAMETERS_6(f) PARAMETERS_5(f), AT(f, 5)
#define PARAMETERS_7(f) PARAMETERS_6(f), AT(f, 6)
#define PARAMETERS_8(f) PARAMETERS_7(f), AT(f, 7)
#define NAMES_1 a0
#define NAMES_2 NAMES_1, a1
#define NAMES_3 NAMES_2, a2
#define NAMES_4 NAMES_3, a3
#define NAMES_5 NAMES_4, a4
#define NAMES_6 NAMES_5, a5
#define NAMES_7 NAMES_6, a6
#define NAMES_8 NAMES_7, a7
#define DEFINE(f, parameters)                                            \
    u32 f(PARAMETERS_##parameters(f)) {                                  \
        return DeviceSimulator::Call<FunctionId::f>(NAMES_##parameters); \
    }

DEVICE_MANAGER_FUNCTIONS(DEFINE)
