// The items of a level: pages, the whole of it, and what its filter lets through.

#include <algorithm>
#include <limits>

#include "IpodService/BrowsePaging.h"
#include "IpodService/CaselessText.h"
#include "IpodService/IpodManager.h"
#include "IpodService/ParentPair.h"
#include "IpodService/RecordText.h"

namespace {

BrowseItemArray AllocateItems(u32 count) {
    return BrowseItemArray(static_cast<BrowseItem*>(std::calloc(count, sizeof(BrowseItem))));
}

}  // namespace

BrowseItemArray IpodManager::GetItems(const BrowseLevel* parent, const BrowseLevel& level, i32 start,
                                      i32& count) {
    const PagePlan plan = PlanPage(level.itemCount, start, count);
    count = 0;
    if (plan.count == 0) {
        return nullptr;
    }
    BrowseItemArray items = AllocateItems(plan.count);
    if (items == nullptr) {
        return nullptr;
    }
    for (const PageFetch& fetch : plan) {
        FetchItems(parent, level, fetch.start, fetch.count, &items[fetch.offset]);
    }
    // Whatever the device wrote: the page keeps its places, blank where nothing came.
    count = static_cast<i32>(plan.count);
    return items;
}

u32 IpodManager::FetchItems(const BrowseLevel* parent, const BrowseLevel& level, u32 start, u32 count,
                            BrowseItem* into) {
    const ParentPair above = ParentPairOf(parent);
    return OnDevice(DeviceCall("eDevMgriPodGetItems")
                        .FailureNamed("eDevMgrGetItems")
                        .FailureWithCount(" Num entries returned = ", count),
                    eDevMgriPodGetItems, above.category, above.index, level.category, start, &count, into);
}

void IpodManager::SetLevelItems(BrowseLevel& level, BrowseItemArray items, i32 count) {
    level.filterMatches.clear();
    level.filter.clear();
    level.items = std::move(items);
    level.storedCount = level.items != nullptr ? static_cast<u32>(std::max(count, 0)) : 0;
}

void IpodManager::FetchLevelItems(BrowseLevel& level) {
    if (level.items != nullptr) {
        return;
    }
    i32 count = std::numeric_limits<i32>::max();
    BrowseItemArray items = GetItems(level.parent, level, 0, count);
    SetLevelItems(level, std::move(items), count);
}

i32 IpodManager::SetItemFilter(const std::string& text) {
    BrowseLevel* const level = CurrentBrowseLevel();
    if (level == nullptr) {
        return -1;
    }
    if (text == level->filter) {
        return 0;
    }
    level->filter = text;
    level->filterMatches.clear();
    if (text.empty()) {
        return 0;
    }
    CaselessPattern pattern(text);
    for (u32 i = 0; i < level->storedCount; ++i) {
        const BrowseItem& item = level->items[i];
        if (pattern.IsPartOf(RecordText(item.name).View())) {
            level->filterMatches.push_back(&item);
        }
    }
    return 0;
}
