// The sample rates that the player's USB audio runs at.
#pragma once

#include <algorithm>
#include <cstdint>

namespace DeviceSimulator {

constexpr std::uint32_t kLowestSentRate = 8000;
constexpr std::uint32_t kHighestSentRate = 48000;

/// The rate at which a file of `rate` Hz is sent: what is above the highest is halved until it is not, so
/// that it stays in its family (88,200 Hz goes out as 44,100).
constexpr std::uint32_t SentSampleRate(std::uint32_t rate) {
    while (rate > kHighestSentRate) {
        rate /= 2;
    }
    return std::max(rate, kLowestSentRate);
}

static_assert(SentSampleRate(192000) == 48000 && SentSampleRate(96000) == 48000);
static_assert(SentSampleRate(176400) == 44100 && SentSampleRate(88200) == 44100);
static_assert(SentSampleRate(22050) == 22050 && SentSampleRate(1) == 8000);

}  // namespace DeviceSimulator
