// Real time counted in audio frames.
#pragma once

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace DeviceSimulator {

class FrameClock {
  public:
    /// Starts counting after `delay`. `rate` in Hz, above 0; it runs fast by `driftPpm` millionths.
    void Start(std::uint32_t rate, std::int32_t driftPpm, std::chrono::nanoseconds delay) {
        m_rate = rate;
        m_drift = driftPpm;
        m_start = Clock::now() + delay;
    }

    /// Whole frames since it began to count.
    std::uint64_t Frames() const {
        const auto elapsed = std::max(Clock::now() - m_start, Clock::duration::zero());
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed);
        const std::chrono::nanoseconds rest = elapsed - seconds;
        // Seconds and the rest apart: nanoseconds times the rate would overflow after two days.
        const auto frames = static_cast<std::uint64_t>(seconds.count()) * m_rate +
                            static_cast<std::uint64_t>(rest.count()) * m_rate / kNanosecondsPerSecond;
        return frames + static_cast<std::uint64_t>(static_cast<std::int64_t>(frames) * m_drift / kMillion);
    }

    /// How long `frames` take at `rate`, rounded up, so that they are over when the time is.
    static timespec Duration(std::uint64_t frames, std::uint32_t rate) {
        const std::uint64_t nanoseconds = (frames * kNanosecondsPerSecond + rate - 1) / rate;
        timespec duration{};
        duration.tv_sec = static_cast<time_t>(nanoseconds / kNanosecondsPerSecond);
        duration.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
        return duration;
    }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
    static constexpr std::int64_t kMillion = 1'000'000;

    std::uint32_t m_rate = 1;
    std::int64_t m_drift = 0;
    Clock::time_point m_start{};
};

}  // namespace DeviceSimulator
