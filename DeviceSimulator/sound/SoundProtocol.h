// What the simulated player and its sound program, simulated-player-sound, say to each other: one message of
// a SOCK_SEQPACKET socket each, a fixed head and text behind it. Both run on one machine and are built
// together, so everything is as it lies in memory.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace DeviceSimulator {

/// A track as the player knows it: the same file is another one each time that it begins.
struct SoundTrack {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    bool operator==(const SoundTrack&) const = default;
};

/// What is to sound from now on. Behind it: the file's path, in any bytes; nothing for silence.
struct SoundCommand {
    SoundTrack track;
    std::chrono::nanoseconds position{0};  ///< into the track ...
    std::chrono::nanoseconds since{0};     ///< ... at this time of CLOCK_MONOTONIC
    std::uint32_t rate = 0;                ///< Hz
    std::uint32_t isMoving = 0;
};

/// What has become of a track. Behind it: why it cannot be decoded; nothing when it has begun to sound.
struct SoundReport {
    SoundTrack track;
};

constexpr std::size_t kMostSoundText = 16384;

}  // namespace DeviceSimulator
