// What becomes of the next calls: scripts make them slower, or fail; a test answers them in the model's
// place.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "DeviceManager/DeviceManager.h"
#include "DeviceSimulator/device/SimulatorOptions.h"
#include "DeviceSimulator/wire/FunctionId.h"

namespace DeviceSimulator {

/// Every function's stand-in; an empty one leaves the model's own answer. A stand-in runs on the caller's
/// thread, without any lock of the simulator's held, so it may block and may call back into the simulator.
struct StandIns {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member's name takes none
#define DEVICE_SIMULATOR_STAND_IN(name, parameters) std::function<decltype(::name)> name;
    DEVICE_MANAGER_FUNCTIONS(DEVICE_SIMULATOR_STAND_IN)
#undef DEVICE_SIMULATOR_STAND_IN
};

struct ArtworkScript {
    ArtworkVariant variant = ArtworkVariant::AsIs;
    std::chrono::milliseconds inProgress{0};
};

/// What is in force for the calls of one function.
struct CallScript {
    std::uint32_t failCode = 0;
    std::uint32_t failTimes = 0;
    std::chrono::milliseconds delay{0};
    std::uint32_t delayTimes = 0;
};

/// Every member may be called from any thread.
class ScriptEngine {
  public:
    /// Of times: they never run out.
    static constexpr std::uint32_t kForEver = UINT32_MAX;

    /// A later order for the same function takes the place of an earlier one.
    void Fail(FunctionId function, std::uint32_t code, std::uint32_t times) {
        const std::lock_guard lock(m_mutex);
        m_scripts[IndexOf(function)].failCode = code;
        m_scripts[IndexOf(function)].failTimes = times;
    }
    void Delay(FunctionId function, std::chrono::milliseconds time, std::uint32_t times) {
        const std::lock_guard lock(m_mutex);
        m_scripts[IndexOf(function)].delay = time;
        m_scripts[IndexOf(function)].delayTimes = times;
    }
    /// By function.
    std::array<CallScript, kFunctionCount> Active() {
        const std::lock_guard lock(m_mutex);
        return m_scripts;
    }
    void SetArtwork(ArtworkScript script) {
        const std::lock_guard lock(m_mutex);
        m_artwork = script;
    }
    ArtworkScript Artwork() {
        const std::lock_guard lock(m_mutex);
        return m_artwork;
    }
    /// Of shared memory no block larger than that is granted. Bytes.
    void SetLargestBlock(std::uint32_t size) {
        const std::lock_guard lock(m_mutex);
        m_largestBlock = size;
    }
    std::uint32_t LargestBlock() {
        const std::lock_guard lock(m_mutex);
        return m_largestBlock;
    }
    /// Also releases the calls that are being delayed. The stand-ins stay.
    void Clear() {
        const std::lock_guard lock(m_mutex);
        m_scripts = {};
        m_artwork = {};
        m_largestBlock = UINT32_MAX;
        ++m_generation;
        m_cleared.notify_all();
    }
    void SetStandIns(StandIns standIns) {
        auto replacement = std::make_shared<const StandIns>(std::move(standIns));
        const std::lock_guard lock(m_mutex);
        m_standIns.swap(replacement);
    }

    /// What takes the place of the model's answer.
    struct Instead {
        std::optional<std::uint32_t> failure;      ///< goes before a stand-in
        std::shared_ptr<const StandIns> standIns;  ///< never null
    };
    /// For the next call of `function`, once the time has passed by which it is to be delayed.
    Instead Apply(FunctionId function) {
        std::unique_lock lock(m_mutex);
        CallScript& script = m_scripts[IndexOf(function)];
        if (Use(script.delayTimes)) {
            const auto until = std::chrono::steady_clock::now() + script.delay;
            m_cleared.wait_until(lock, until,
                                 [this, generation = m_generation] { return m_generation != generation; });
        }
        return {Use(script.failTimes) ? std::optional(script.failCode) : std::nullopt, m_standIns};
    }

  private:
    static bool Use(std::uint32_t& times) {
        const bool isLeft = times != 0;
        times -= isLeft && times != kForEver ? 1U : 0U;
        return isLeft;
    }

    std::mutex m_mutex;  // guards all below
    std::condition_variable m_cleared;
    std::uint64_t m_generation = 0;
    std::array<CallScript, kFunctionCount> m_scripts{};
    ArtworkScript m_artwork;
    std::uint32_t m_largestBlock = UINT32_MAX;
    std::shared_ptr<const StandIns> m_standIns = std::make_shared<StandIns>();
};

}  // namespace DeviceSimulator
