// Waiting for descriptors until a moment.
#pragma once

#include <poll.h>

#include <chrono>
#include <optional>
#include <span>

using Deadline = std::chrono::steady_clock::time_point;

/// `time` from now.
inline Deadline In(std::chrono::milliseconds time) {
    return std::chrono::steady_clock::now() + time;
}

enum class PollEnd {
    Ready,   ///< an entry has something in `revents`
    Over,    ///< the deadline has come first
    Failed,  ///< poll itself has failed, which `errno` explains: nothing is known of any entry
};

/// Waits, through interruptions by signals, until an entry is ready or `deadline`; without one for ever.
/// Never returns before the deadline without an entry that is ready. An entry that is ready counts also where
/// the deadline has passed. Any thread.
PollEnd PollUntil(std::span<pollfd> entries, std::optional<Deadline> deadline);
