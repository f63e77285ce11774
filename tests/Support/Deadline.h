// How long is waited for what has to happen.
#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

namespace TestSupport {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// For what takes a moment on an idle machine.
inline constexpr milliseconds kPatience{10'000};

/// Sanitizers slow everything down, so deadlines grow with them.
inline Clock::time_point In(milliseconds time) {
    return Clock::now() + time * TEST_TIME_SCALE;
}

/// Looks at `condition` every few milliseconds; false when `patience` ends before it holds.
inline bool WaitUntil(const std::function<bool()>& condition, milliseconds patience = kPatience) {
    const Clock::time_point deadline = In(patience);
    while (!condition()) {
        if (Clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(milliseconds{5});
    }
    return true;
}

/// As WaitUntil; throws std::runtime_error, naming `what`.
inline void Require(const std::string& what, const std::function<bool()>& condition,
                    milliseconds patience = kPatience) {
    if (!WaitUntil(condition, patience)) {
        throw std::runtime_error("timed out waiting for " + what);
    }
}

}  // namespace TestSupport
