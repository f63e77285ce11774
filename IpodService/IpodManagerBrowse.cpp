// The browse session, and the walk through the device's categories.

#include <bit>

#include "IpodService/DeviceManagerNames.h"
#include "IpodService/IpodManager.h"
#include "IpodService/ParentPair.h"

namespace {

constexpr u32 kIrreducible = 1024;  ///< stands for a mask that is no single category

struct CategoryName {
    u32 category;
    const char* name;
};

constexpr CategoryName kCategoryNames[] = {
    {DEV_MGR_CATEGORY_PLAYLIST, "PLAYLIST"},   {DEV_MGR_CATEGORY_ARTIST, "ARTIST"},
    {DEV_MGR_CATEGORY_ALBUM, "ALBUM"},         {DEV_MGR_CATEGORY_GENRE, "GENRE"},
    {DEV_MGR_CATEGORY_TRACK, "TRACK"},         {DEV_MGR_CATEGORY_COMPOSER, "COMPOSER"},
    {DEV_MGR_CATEGORY_AUDIOBOOK, "AUDIOBOOK"}, {DEV_MGR_CATEGORY_PODCAST, "PODCAST"},
};

void LogCategories(const char* label, u32 mask) {
    std::string line = label;
    if (mask == DEV_MGR_CATEGORY_NONE) {
        line += " NONE";
    }
    for (const CategoryName& entry : kCategoryNames) {
        if ((mask & entry.category) != 0) {
            line.append(" ").append(entry.name);
        }
    }
    LOG_INFO("%s\n", line.c_str());
}

/// A failure's value stands in the mask's place and is negative, save for the code 0.
bool IsFailure(u32 mask) {
    return static_cast<i32>(mask) < 0;
}

bool IsOneCategory(u32 mask) {
    return std::has_single_bit(mask) && mask >= DEV_MGR_CATEGORY_PLAYLIST && mask <= kIrreducible;
}

/// Stands between the announcement and the call.
u32 SelectCategorizedIndex(u32 ph, u32 dh, u32 category, u32 index) {
    LOG_DEBUG("Going to do select, Type is :%d and index is %d\n", static_cast<int>(category),
              static_cast<int>(index));
    return eDevMgriPodSelectCategorizedIndex(ph, dh, category, index);
}

}  // namespace

i32 IpodManager::OpenBrowseSession() {
    const u32 code = OnDevice(DeviceCall("eDevMgriPodOpenMdBrowseSession").AnnouncedAt(LogLevel::kWarn),
                              eDevMgriPodOpenMdBrowseSession, 1u);
    EmptyBrowseStack();
    if (code == DEV_MGR_SUCCESS) {
        m_connectionState = ConnectionState::BrowseReady;
    }
    return Outcome(code);
}

i32 IpodManager::ResetDatabase() {
    const u32 code = OnDevice(DeviceCall("eDevMgriPodResetDatabase"), eDevMgriPodResetDatabase);
    EmptyBrowseStack();
    return Outcome(code);
}

i32 IpodManager::CloseBrowseSession() {
    const u32 code = OnDevice(DeviceCall("eDevMgriPodCloseMdBrowseSession"), eDevMgriPodCloseMdBrowseSession);
    EmptyBrowseStack();
    return Outcome(code);
}

void IpodManager::EmptyBrowseStack() {
    for (std::unique_ptr<BrowseLevel>& level : m_browseStack) {
        level.reset();
    }
    m_browseStack.clear();
}

BrowseLevel* IpodManager::CurrentBrowseLevel() {
    return m_browseStack.empty() ? nullptr : m_browseStack.back().get();
}

u32 IpodManager::GetSupportedCategories(u32 category) {
    u32 mask = 0;
    const u32 code =
        OnDevice(DeviceCall("eDevMgriPodMdGetCategories"), eDevMgriPodMdGetCategories, category, &mask);
    if (code != DEV_MGR_SUCCESS) {
        return static_cast<u32>(Outcome(code));
    }
    LogCategories("SupportedCategories", mask);
    return mask;
}

std::vector<TopCategoryEntry> IpodManager::GetTopCategories() {
    std::vector<TopCategoryEntry> entries = {{0, DEV_MGR_CATEGORY_PLAYLIST}, {1, DEV_MGR_CATEGORY_ARTIST},
                                             {2, DEV_MGR_CATEGORY_TRACK},    {3, DEV_MGR_CATEGORY_ALBUM},
                                             {4, DEV_MGR_CATEGORY_GENRE},    {5, DEV_MGR_CATEGORY_COMPOSER}};
    const u32 mask = GetSupportedCategories(DEV_MGR_CATEGORY_TOP_LEVEL);
    if (IsFailure(mask)) {
        return entries;
    }
    for (TopCategoryEntry& entry : entries) {
        entry.supported = (mask & entry.category) != 0 ? 1 : 0;
    }
    return entries;
}

i32 IpodManager::BrowseTopCategory(u32 category) {
    // The device's path would narrow what is opened here.
    if (!m_browseStack.empty()) {
        LOG_WARN("error : browsing category while not at top level\n");
        LOG_WARN(" experimental browse reset performed\n");
        if (ResetDatabase() != 0) {
            LOG_WARN(" FORCE browse reset performed\n");
            CloseBrowseSession();
            OpenBrowseSession();
        }
    }
    auto level = std::make_unique<BrowseLevel>(category);
    if (GetSubCategoryItems(nullptr, level.get()) != 0) {
        return -1;
    }
    m_browseStack.push_back(std::move(level));
    return 0;
}

i32 IpodManager::GetSubCategoryItems(BrowseLevel* parent, BrowseLevel* child) {
    if (child == nullptr) {
        LOG_ERROR("GetSubCategoryItems null child");
        return -1;
    }
    LogCategories("Expanding category", child->category);
    const u32 mask =
        GetSupportedCategories(parent != nullptr ? parent->category : u32{DEV_MGR_CATEGORY_TOP_LEVEL});
    if (IsFailure(mask)) {
        LOG_INFO("Return from eDevMgriPodMdGetCategories is :%s\n", ResultCodeName(DEV_MGR_UNKNOWN_FAILURE));
        return static_cast<i32>(mask);
    }
    if ((mask & child->category) == 0) {
        LOG_INFO("Subcategory is not reported as supported(%08x) vs child(%08x)\n", mask, child->category);
        return -1;
    }
    u32 count = 0;
    const ParentPair above = ParentPairOf(parent);
    const u32 code = OnDevice(DeviceCall("eDevMgriPodGetNumItems").FailureWithCount(", Num items = ", count),
                              eDevMgriPodGetNumItems, above.category, above.index, child->category, &count);
    if (code == DEV_MGR_SUCCESS) {
        child->parent = parent;
        child->itemCount = count;
    }
    return Outcome(code);
}

i32 IpodManager::SelectItem(BrowseLevel& level, u32 index) {
    u32 count = 0;
    OnDevice(DeviceCall("eDevMgriPodGetNumItems"), eDevMgriPodGetNumItems, static_cast<i32>(level.category),
             level.selectedIndex, level.category, &count);
    level.selectedIndex = index;
    return Outcome(OnDevice(DeviceCall("eDevMgriPodSelectCategorizedIndex"), SelectCategorizedIndex,
                            level.category, index));
}

u32 IpodManager::ReduceChildCategory(u32 category) {
    const u32 mask = GetSupportedCategories(category);
    const u32 child = mask & ~category;
    if (child == DEV_MGR_CATEGORY_NONE || IsOneCategory(child)) {
        return child;
    }
    LOG_ERROR("Couldn't reduce category %x -> %x\n", category, mask);
    LogCategories(" : ", child);
    return kIrreducible;
}

i32 IpodManager::BrowseInto(u32 index) {
    BrowseLevel* const top = CurrentBrowseLevel();
    if (top == nullptr) {
        return -1;
    }
    const u32 childCategory = ReduceChildCategory(top->category);
    if (SelectItem(*top, index) != 0) {
        return -1;
    }
    if (childCategory == DEV_MGR_CATEGORY_NONE) {
        LOG_DEBUG("Done with current browse session\n");
        ResetDatabase();
        return 1;
    }
    auto child = std::make_unique<BrowseLevel>(childCategory);
    if (GetSubCategoryItems(top, child.get()) != 0) {
        DeviceOneLevelBack();
        return -1;
    }
    m_browseStack.push_back(std::move(child));
    return 0;
}

bool IpodManager::IsAtLeafCategory() {
    const BrowseLevel* const top = CurrentBrowseLevel();
    return top != nullptr && ReduceChildCategory(top->category) == DEV_MGR_CATEGORY_NONE;
}

i32 IpodManager::BrowseOneLevelBack() {
    if (m_browseStack.empty()) {
        return 1;
    }
    // Entering a top-level category narrowed nothing on the device.
    const i32 outcome = m_browseStack.size() > 1 ? DeviceOneLevelBack() : 0;
    m_browseStack.pop_back();
    return outcome;
}

i32 IpodManager::DeviceOneLevelBack() {
    return Outcome(OnDevice(DeviceCall("eDevMgriPodBrowseOneLevelBack"), eDevMgriPodBrowseOneLevelBack));
}
