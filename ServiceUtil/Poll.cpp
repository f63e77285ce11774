#include "ServiceUtil/Poll.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace {

/// For poll, rounded up; no longer than it can count.
int MillisecondsUntil(const std::optional<Deadline>& deadline) {
    constexpr std::int64_t kLongest = 3'600'000;
    if (!deadline) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, kLongest));
}

}  // namespace

PollEnd PollUntil(std::span<pollfd> entries, std::optional<Deadline> deadline) {
    for (;;) {
        const int ready = poll(entries.data(), entries.size(), MillisecondsUntil(deadline));
        if (ready > 0) {
            return PollEnd::Ready;
        }
        if (ready < 0 && errno != EINTR) {
            return PollEnd::Failed;
        }
        if (deadline && std::chrono::steady_clock::now() >= *deadline) {
            return PollEnd::Over;
        }
    }
}
