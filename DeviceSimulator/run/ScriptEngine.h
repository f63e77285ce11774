// What a script makes of the next calls: slower ones, failing ones.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

#include "DeviceSimulator/device/SimulatorOptions.h"
#include "DeviceSimulator/wire/FunctionId.h"

namespace DeviceSimulator {

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
    void Fail(FunctionId function, std::uint32_t code, std::uint32_t times);
    void Delay(FunctionId function, std::chrono::milliseconds time, std::uint32_t times);
    void SetArtwork(ArtworkScript script);
    ArtworkScript Artwork();
    /// Of shared memory no block larger than that is granted. Bytes.
    void SetLargestBlock(std::uint32_t size);
    std::uint32_t LargestBlock();
    /// By function.
    std::array<CallScript, kFunctionCount> Active();
    /// Also releases the calls that are being delayed.
    void Clear();

    /// Sleeps as long as the next call of `function` is to be delayed.
    void ApplyDelay(FunctionId function);
    /// The code with which the next call of `function` is to fail.
    std::optional<std::uint32_t> NextFailure(FunctionId function);

  private:
    std::mutex m_mutex;
    std::condition_variable m_cleared;
    std::uint64_t m_generation = 0;
    std::array<CallScript, kFunctionCount> m_scripts{};
    ArtworkScript m_artwork;
    std::uint32_t m_largestBlock = UINT32_MAX;
};

}  // namespace DeviceSimulator
