// What a player lets sound.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

#include "DeviceSimulator/device/Time.h"

namespace DeviceSimulator {

struct Sound {
    std::string_view file;  ///< lives as long as the player's queue; empty: silence
    std::uint32_t rate = 0;
    std::uint64_t track = 0;               ///< another one each time that a track begins
    std::chrono::nanoseconds position{0};  ///< at `since`
    TimePoint since{};
    bool isMoving = false;
};

}  // namespace DeviceSimulator
