// What makes one player behave unlike another. The defaults are what a phone does.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "DeviceSimulator/music/MusicChoice.h"

namespace DeviceSimulator {

/// What an item's id is.
enum class ItemIds {
    Positions,  ///< its position in the list
    Stable,     ///< a number that it has in every list, and that is no position
};

/// In which size covers are delivered, whatever size is wanted.
enum class CoverSize {
    Stored,  ///< as they are
    Wanted,  ///< made smaller until they fit what is wanted
    Length,  ///< as they are, told as a height of 0 and a width of so many bytes
};

struct Character {
    MusicChoice music;
    std::optional<std::uint32_t> seed;  ///< of shuffle; none: another one each time
    std::optional<std::chrono::milliseconds> databaseBuildTime;
    ItemIds ids = ItemIds::Positions;
    std::uint32_t pageLimit = 0;  ///< most items that one call delivers; 0: any number
    CoverSize covers = CoverSize::Stored;
};

}  // namespace DeviceSimulator
