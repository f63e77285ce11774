// How a level's parent is named to the device manager.
#pragma once

#include "DeviceManager/DeviceManager.h"
#include "IpodService/BrowseLevel.h"

struct BrowseParent {
    i32 category = DEV_MGR_WHOLE_LIBRARY;
    u32 index = 0;
};

/// `parent` may be null: the whole library.
inline BrowseParent ParentOf(const BrowseLevel* parent) {
    if (parent == nullptr) {
        return {};
    }
    return {static_cast<i32>(parent->category), parent->selectedIndex};
}
