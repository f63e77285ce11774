// What music a player holds, and how it sorts it.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace DeviceSimulator {

enum class Sorting {
    WithoutArticle,  ///< a leading "The " does not count, nor does case
    WithArticle,     ///< case does not count
    Bytes,
};

/// Ten times what any player holds, and still within the memory of a small machine.
constexpr std::uint32_t kMostSyntheticTracks = 1'000'000;

/// A folder, or a number of made-up tracks; with neither, what the environment says.
struct MusicChoice {
    std::string folder;
    std::optional<std::uint32_t> tracks;
    Sorting sorting = Sorting::WithoutArticle;
    auto operator<=>(const MusicChoice&) const = default;
};

}  // namespace DeviceSimulator
