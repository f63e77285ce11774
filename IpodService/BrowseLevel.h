// One entered category of the browse stack.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManager.h"

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

/// Items as the device wrote them, zero-filled where it wrote none. calloc'ed, so that asking for more than
/// the device has costs address space and no memory.
using BrowseItemArray = std::unique_ptr<BrowseItem[], FreeDeleter>;

/// Server thread only.
struct BrowseLevel {
    explicit BrowseLevel(u32 levelCategory) : category(levelCategory) {}

    u32 selectedIndex = 0;  ///< id last selected here
    u32 category;
    BrowseItemArray items;                         ///< the whole level once it has been fetched, else null
    u32 storedCount = 0;                           ///< entries in `items`
    u32 itemCount = 0;                             ///< as the device reported it
    std::vector<const BrowseItem*> filterMatches;  ///< into `items`
    std::string filter;
    BrowseLevel* parent = nullptr;  ///< not owned; null for a top-level category. Levels die bottom-up, so a
                                    ///< destructor must not follow it.
};
