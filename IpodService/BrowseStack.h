// The walk through the device's library: which categories have been entered, and what lies in the last one.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/BrowseLevel.h"
#include "IpodService/DeviceLink.h"
#include "IpodService/LetterJump.h"

/// One category that the top level may offer.
struct TopCategoryEntry {
    u32 index = 0;
    u32 category = 0;
    u32 supported = 0;  ///< 0 or 1
};

/// Called for each item of a list, in the list's order; the item is valid for the call.
using BrowseItemVisitor = std::function<void(const BrowseItem& item)>;

/// The levels that have been entered, the browse session of the device that they mirror, and the items of the
/// last level, the current one. No level leaves it. Operations that wrap one call of the device manager
/// answer 0, or 1 minus the code. Server thread only.
class BrowseStack {
  public:
    /// The link outlives the stack.
    explicit BrowseStack(const DeviceLink& link);

    // The device's session: each of the three empties the stack, whatever the device answers

    i32 OpenSession() REQUIRES(kServerThread);
    i32 ResetDatabase() REQUIRES(kServerThread);
    i32 CloseSession() REQUIRES(kServerThread);
    void Clear() REQUIRES(kServerThread);

    // Levels

    /// False before the stack is emptied for the first time, though no level has been entered then.
    bool IsEmpty() const REQUIRES(kServerThread) { return m_levels.empty(); }
    /// Whether a level has been entered; false at the root.
    bool IsBrowsing() const REQUIRES(kServerThread) { return Current() != nullptr; }
    /// True when the device offers no category below the current level's: its items are tracks.
    bool IsAtLeafCategory() const REQUIRES(kServerThread);
    /// Mask of the categories that may follow `category`, or 1 minus the code.
    u32 GetSupportedCategories(u32 category) const REQUIRES(kServerThread);
    std::vector<TopCategoryEntry> GetTopCategories() const REQUIRES(kServerThread);
    /// Opens a category of the top level; the stack is empty. 0, or -1 on failure.
    i32 EnterTopCategory(u32 category) REQUIRES(kServerThread);
    /// 0 when a level was entered, 1 when the item was a leaf and browsing has ended, -1 on failure.
    i32 BrowseInto(u32 index) REQUIRES(kServerThread);
    /// 1 on an empty stack.
    i32 BrowseOneLevelBack() REQUIRES(kServerThread);

    // Items of the current level

    /// Visits the page of `count` items from `start`, taken circularly, of what the level's filter lets
    /// through; a count beyond their number asks for all of them. Returns that number; 0 at the root.
    u32 ListItems(i32 start, i32 count, const BrowseItemVisitor& visit) const REQUIRES(kServerThread);
    /// Visits all items, whatever the filter. False at the root and in an empty level.
    bool ListAllItems(const BrowseItemVisitor& visit) REQUIRES(kServerThread);
    /// The empty text takes the filter away. 0, or -1 at the root.
    i32 SetItemFilter(const std::string& text) REQUIRES(kServerThread);
    /// Where the jump ends that `find` makes from `start` through the level's items, whatever the filter; the
    /// caller has seen that a level has been entered.
    i32 Jump(JumpFunction find, i32 start) const REQUIRES(kServerThread);

  private:
    const BrowseLevel* Current() const REQUIRES(kServerThread);
    BrowseLevel* Current() REQUIRES(kServerThread);
    u32 ReduceChildCategory(u32 category) const REQUIRES(kServerThread);
    i32 GetSubCategoryItems(BrowseLevel* parent, BrowseLevel& child) const REQUIRES(kServerThread);
    i32 SelectItem(BrowseLevel& level, u32 index) const REQUIRES(kServerThread);
    i32 DeviceOneLevelBack() const REQUIRES(kServerThread);

    BrowsePage GetItems(const BrowseLevel& level, i32 start, i32 count) const REQUIRES(kServerThread);
    u32 FetchItems(const BrowseLevel& level, u32 start, u32 count, BrowseItem* into) const
        REQUIRES(kServerThread);
    BrowsePage FetchLevelItems(BrowseLevel& level) const REQUIRES(kServerThread);

    const DeviceLink& m_link;
    std::vector<std::unique_ptr<BrowseLevel>> m_levels GUARDED_BY(kServerThread);
};
