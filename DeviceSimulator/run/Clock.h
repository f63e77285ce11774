// Where the model's time comes from.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "DeviceSimulator/device/Time.h"

namespace DeviceSimulator {

class Clock {
  public:
    virtual ~Clock() = default;
    virtual TimePoint Now() const = 0;
    /// Waits for a notification, at the longest until `until` (none: for ever). May return early.
    virtual void Wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
                      std::optional<TimePoint> until) const = 0;
};

/// CLOCK_MONOTONIC.
class SteadyClock : public Clock {
  public:
    TimePoint Now() const override { return std::chrono::steady_clock::now(); }
    void Wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
              std::optional<TimePoint> until) const override {
        if (until) {
            changed.wait_until(lock, *until);
        } else {
            changed.wait(lock);
        }
    }
};

}  // namespace DeviceSimulator
