// Jumps from letter to letter through a level sorted by name.
#pragma once

#include <functional>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/BrowseLevel.h"

/// A level that is read in circular pages: `count` items from `start`, or all from the first one where there
/// are fewer.
struct PagedList {
    i32 total = 0;
    std::function<BrowsePage(i32 start, i32 count)> fetch;
};

using JumpFunction = i32 (*)(const PagedList& list, i32 start);

/// Items asked for at a time while a jump looks for the end of a letter.
inline constexpr i32 kAlphaPageSize = 100;

// A jump makes one fetch of a single item and as many pages as the letter spans, and ends once it has seen
// the whole list, whatever position the client named and whatever the device delivers. Items without a name
// are skipped.

/// Index of the first item behind `start` that is filed under another letter than the one at `start`; the
/// last index (-1 in an empty list) when there is none or the item has no name. Negative for some negative
/// `start`.
i32 NextInitialIndex(const PagedList& list, i32 start);

/// Index of the nearest item before `start` that is filed under another letter; 0 when there is none or the
/// item has no name. Beyond the list for some `start` beyond it.
i32 PreviousInitialIndex(const PagedList& list, i32 start);
