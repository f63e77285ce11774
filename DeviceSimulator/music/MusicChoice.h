// What music a player holds, and how it sorts it.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace DeviceSimulator {

/// What of a name counts where names are sorted.
enum class SortRule {
    WithoutArticle,  ///< a leading "The " does not count, nor does case
    WithArticle,     ///< case does not count
    Bytes,
};

struct Sorting {
    SortRule rule = SortRule::WithoutArticle;
    std::string locale;  ///< whose alphabet it is, as "sv" or "de-AT"; empty: none's. Not by bytes.
    auto operator<=>(const Sorting&) const = default;
};

/// Whether anything is known of how `locale` sorts.
bool IsLocale(const std::string& locale);

/// Ten times what any player holds, and still within the memory of a small machine.
constexpr std::uint32_t kMostSyntheticTracks = 1'000'000;

/// A folder, or a number of made-up tracks; with neither, what the environment says.
struct MusicChoice {
    std::string folder;
    std::optional<std::uint32_t> tracks;
    Sorting sorting;
    auto operator<=>(const MusicChoice&) const = default;
};

}  // namespace DeviceSimulator
