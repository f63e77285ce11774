// One entered category of the browse stack.
#pragma once

#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManager.h"

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

/// Room for items, zero-filled. calloc'ed, so that asking for more than the device has costs address space
/// and no memory.
using BrowseItemArray = std::unique_ptr<BrowseItem[], FreeDeleter>;

/// Null when there is no memory.
inline BrowseItemArray AllocateItems(u32 count) {
    return BrowseItemArray(static_cast<BrowseItem*>(std::calloc(count, sizeof(BrowseItem))));
}

/// Items that the device delivered, from the first that was asked for and without a gap.
struct BrowsePage {
    BrowseItemArray items;
    u32 count = 0;

    std::span<const BrowseItem> Items() const { return {items.get(), count}; }
};

/// Server thread only.
struct BrowseLevel {
    explicit BrowseLevel(u32 levelCategory) : category(levelCategory) {}

    u32 selectedIndex = 0;  ///< id last selected here
    u32 category;
    BrowseItemArray items;  ///< all itemCount of them, or null: the device was not asked
    u32 itemCount = 0;      ///< as the device reported it
    std::vector<const BrowseItem*> filterMatches;  ///< into `items`
    std::string filter;
    BrowseLevel* parent = nullptr;  ///< not owned; null for a top-level category. Levels die bottom-up, so a
                                    ///< destructor must not follow it.
};
