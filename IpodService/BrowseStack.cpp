#include "IpodService/BrowseStack.h"

#include <bit>

#include "IpodService/BrowseParent.h"
#include "IpodService/DeviceManagerNames.h"
#include "IpodService/Outcome.h"

namespace {

// Browsing before the first session finds a stack that is not empty and resets the device first.
constexpr std::size_t kInitialNullLevels = 10;

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
    if (!CLogger::IsWritten(LogLevel::kInfo)) {
        return;
    }
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

}  // namespace

BrowseStack::BrowseStack(const DeviceLink& link) : m_link(link), m_levels(kInitialNullLevels) {}

i32 BrowseStack::OpenSession() {
    const u32 code = m_link.OnDevice(
        DEVICE_CALL(eDevMgriPodOpenMdBrowseSession, .announceLevel = LogLevel::kWarn), u32{1});
    Clear();
    return Outcome(code);
}

i32 BrowseStack::ResetDatabase() {
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodResetDatabase));
    Clear();
    return Outcome(code);
}

i32 BrowseStack::CloseSession() {
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodCloseMdBrowseSession));
    Clear();
    return Outcome(code);
}

void BrowseStack::Clear() {
    m_levels.clear();
}

const BrowseLevel* BrowseStack::Current() const {
    return m_levels.empty() ? nullptr : m_levels.back().get();
}

BrowseLevel* BrowseStack::Current() {
    return m_levels.empty() ? nullptr : m_levels.back().get();
}

u32 BrowseStack::GetSupportedCategories(u32 category) const {
    u32 mask = 0;
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodMdGetCategories), category, &mask);
    return code == DEV_MGR_SUCCESS ? mask : static_cast<u32>(Outcome(code));
}

std::vector<TopCategoryEntry> BrowseStack::GetTopCategories() const {
    std::vector<TopCategoryEntry> entries = {{0, DEV_MGR_CATEGORY_PLAYLIST}, {1, DEV_MGR_CATEGORY_ARTIST},
                                             {2, DEV_MGR_CATEGORY_TRACK},    {3, DEV_MGR_CATEGORY_ALBUM},
                                             {4, DEV_MGR_CATEGORY_GENRE},    {5, DEV_MGR_CATEGORY_COMPOSER}};
    const u32 mask = GetSupportedCategories(DEV_MGR_CATEGORY_TOP_LEVEL);
    if (IsFailure(mask)) {
        return entries;
    }
    LogCategories("SupportedCategories", mask);
    for (TopCategoryEntry& entry : entries) {
        entry.supported = (mask & entry.category) != 0 ? 1 : 0;
    }
    return entries;
}

i32 BrowseStack::EnterTopCategory(u32 category) {
    auto level = std::make_unique<BrowseLevel>(category);
    if (GetSubCategoryItems(nullptr, *level) != 0) {
        return -1;
    }
    m_levels.push_back(std::move(level));
    return 0;
}

i32 BrowseStack::GetSubCategoryItems(BrowseLevel* parent, BrowseLevel& child) const {
    LogCategories("Expanding category", child.category);
    const u32 above = parent != nullptr ? parent->category : u32{DEV_MGR_CATEGORY_TOP_LEVEL};
    const u32 mask = GetSupportedCategories(above);
    if (IsFailure(mask)) {
        LOG_INFO("Return from eDevMgriPodMdGetCategories is :%s\n", ResultCodeName(DEV_MGR_UNKNOWN_FAILURE));
        return static_cast<i32>(mask);
    }
    if ((mask & child.category) == 0) {
        LOG_INFO("Subcategory is not reported as supported(%08x) vs child(%08x)\n", mask, child.category);
        return -1;
    }
    u32 count = 0;
    const BrowseParent pair = ParentOf(parent);
    const u32 code =
        m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetNumItems, .countText = ", Num items = ", .count = &count),
                        pair.category, pair.index, child.category, &count);
    if (code == DEV_MGR_SUCCESS) {
        child.parent = parent;
        child.itemCount = count;
    }
    return Outcome(code);
}

i32 BrowseStack::SelectItem(BrowseLevel& level, u32 index) const {
    u32 count = 0;
    m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetNumItems), static_cast<i32>(level.category),
                    level.selectedIndex, level.category, &count);
    level.selectedIndex = index;
    LOG_INFO("eDevMgriPodSelectCategorizedIndex\n");
    LOG_DEBUG("Going to do select, Type is :%d and index is %d\n", static_cast<int>(level.category),
              static_cast<int>(index));
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodSelectCategorizedIndex, .announced = false),
                                   level.category, index));
}

u32 BrowseStack::ReduceChildCategory(u32 category) const {
    const u32 mask = GetSupportedCategories(category);
    const u32 child = mask & ~category;
    if (child == DEV_MGR_CATEGORY_NONE || IsOneCategory(child)) {
        return child;
    }
    LOG_ERROR("Couldn't reduce category %x -> %x\n", category, mask);
    LogCategories(" : ", child);
    return kIrreducible;
}

i32 BrowseStack::BrowseInto(u32 index) {
    BrowseLevel* const top = Current();
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
    if (GetSubCategoryItems(top, *child) != 0) {
        DeviceOneLevelBack();
        return -1;
    }
    m_levels.push_back(std::move(child));
    return 0;
}

bool BrowseStack::IsAtLeafCategory() const {
    const BrowseLevel* const top = Current();
    return top != nullptr && ReduceChildCategory(top->category) == DEV_MGR_CATEGORY_NONE;
}

i32 BrowseStack::BrowseOneLevelBack() {
    if (m_levels.empty()) {
        return 1;
    }
    // Entering a top-level category narrowed nothing on the device.
    const i32 outcome = m_levels.size() > 1 ? DeviceOneLevelBack() : 0;
    m_levels.pop_back();
    return outcome;
}

i32 BrowseStack::DeviceOneLevelBack() const {
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodBrowseOneLevelBack)));
}
