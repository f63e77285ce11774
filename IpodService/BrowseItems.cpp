// The items of the current level: pages, the whole of it, what its filter lets through, and jumps.

#include <limits>

#include "IpodService/BrowsePaging.h"
#include "IpodService/BrowseParent.h"
#include "IpodService/BrowseStack.h"
#include "IpodService/CaselessText.h"
#include "IpodService/RecordText.h"

BrowsePage BrowseStack::GetItems(const BrowseLevel& level, i32 start, i32 count) const {
    const PagePlan plan = PlanPage(level.itemCount, start, count);
    BrowsePage page;
    if (plan.count == 0) {
        return page;
    }
    page.items = AllocateItems(plan.count);
    if (page.items == nullptr) {
        return page;
    }
    for (const PageFetch& fetch : plan) {
        const u32 delivered = FetchItems(level, fetch.start, fetch.count, &page.items[fetch.offset]);
        // What is delivered behind a gap would stand in the wrong place.
        if (page.count == fetch.offset) {
            page.count += delivered;
        }
    }
    return page;
}

/// How many of the items the device delivered, from the first one on.
u32 BrowseStack::FetchItems(const BrowseLevel& level, u32 start, u32 count, BrowseItem* into) const {
    const BrowseParent parent = ParentOf(level.parent);
    u32 delivered = count;
    const u32 code =
        m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetItems, .failureName = "eDevMgrGetItems",
                                    .countText = " Num entries returned = ", .count = &delivered),
                        parent.category, parent.index, level.category, start, &delivered, into);
    return code == DEV_MGR_SUCCESS ? std::min(delivered, count) : 0;
}

/// Fetches the whole level and stores it; where the device delivers less, that is returned and not stored, so
/// that the next one who needs the level asks again. Nothing is fetched when the level is stored already.
BrowsePage BrowseStack::FetchLevelItems(BrowseLevel& level) const {
    if (level.items != nullptr) {
        return {};
    }
    BrowsePage page = GetItems(level, 0, std::numeric_limits<i32>::max());
    if (page.count < level.itemCount) {
        return page;
    }
    level.filterMatches.clear();
    level.filter.clear();
    level.items = std::move(page.items);
    return {};
}

u32 BrowseStack::ListItems(i32 start, i32 count, const BrowseItemVisitor& visit) const {
    const BrowseLevel* const level = Current();
    if (level == nullptr) {
        return 0;
    }
    if (level->filter.empty()) {
        const BrowsePage page = GetItems(*level, start, count);
        for (const BrowseItem& item : page.Items()) {
            visit(item);
        }
        return level->itemCount;
    }
    for (const std::size_t position : FilteredPositions(level->filterMatches.size(), start, count)) {
        visit(*level->filterMatches[position]);
    }
    return static_cast<u32>(level->filterMatches.size());
}

bool BrowseStack::ListAllItems(const BrowseItemVisitor& visit) {
    BrowseLevel* const level = Current();
    if (level == nullptr || level->itemCount == 0) {
        return false;
    }
    const BrowsePage partial = FetchLevelItems(*level);
    const std::span<const BrowseItem> items =
        level->items != nullptr ? std::span<const BrowseItem>(level->items.get(), level->itemCount)
                                : partial.Items();
    for (const BrowseItem& item : items) {
        visit(item);
    }
    return true;
}

i32 BrowseStack::SetItemFilter(const std::string& text) {
    BrowseLevel* const level = Current();
    if (level == nullptr) {
        return -1;
    }
    FetchLevelItems(*level);
    if (text == level->filter) {
        return 0;
    }
    level->filter = text;
    level->filterMatches.clear();
    if (text.empty() || level->items == nullptr) {
        return 0;
    }
    CaselessPattern pattern(text);
    for (u32 i = 0; i < level->itemCount; ++i) {
        const BrowseItem& item = level->items[i];
        if (pattern.IsPartOf(RecordText(item.name))) {
            level->filterMatches.push_back(&item);
        }
    }
    return 0;
}

i32 BrowseStack::Jump(JumpFunction find, i32 start) const {
    const BrowseLevel& level = *Current();
    const PagedList list{static_cast<i32>(level.itemCount),
                         [this, &level](i32 first, i32 count)
                             REQUIRES(kServerThread) { return GetItems(level, first, count); }};
    return find(list, start);
}
