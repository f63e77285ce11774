// How a level's parent is named to the device manager.
#pragma once

#include "DeviceManager/DeviceManager.h"
#include "IpodService/BrowseLevel.h"

struct ParentPair {
    i32 category = -1;  ///< -1: the whole library
    u32 index = 0;
};

/// `parent` may be null: the whole library.
inline ParentPair ParentPairOf(const BrowseLevel* parent) {
    if (parent == nullptr) {
        return {};
    }
    return {static_cast<i32>(parent->category), parent->selectedIndex};
}
