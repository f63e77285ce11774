// Circular pages of a level's items: no device and no memory here, only positions.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "DeviceManager/DeviceManager.h"

/// More items than any player holds. A larger page would be fetched on the word of a device that is wrong
/// about its totals, and could take all memory or minutes.
inline constexpr i32 kMostItems = 1'000'000;

/// One fetch from the device: `count` items from `start` on go to `offset` of the page.
struct PageFetch {
    u32 start = 0;
    u32 count = 0;
    u32 offset = 0;
    bool operator==(const PageFetch&) const = default;
};

/// What a page takes: one fetch, or two where it runs past the last item and goes on at the first.
struct PagePlan {
    u32 count = 0;  ///< items of the page; 0: there is nothing to fetch
    std::array<PageFetch, 2> fetches{};
    std::size_t fetchCount = 0;

    const PageFetch* begin() const { return fetches.data(); }
    const PageFetch* end() const { return fetches.data() + fetchCount; }
};

/// The page of `count` items from `start` of a level of `total` items, taken circularly; a negative `start`
/// counts from the end. A count beyond the total asks for the whole level from its first item. Empty for a
/// page of more than kMostItems, and for a `total` that is negative as a signed number.
PagePlan PlanPage(u32 total, i32 start, i32 count);

/// Positions of a filtered list of `size` entries that the page of `count` entries from `start` shows, in
/// order. A count that covers the list shows it from its first entry.
std::vector<std::size_t> FilteredPositions(std::size_t size, i32 start, i32 count);
