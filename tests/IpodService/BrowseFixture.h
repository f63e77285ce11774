// A manager over a scripted player: category masks and lists of names.
#pragma once

#include <algorithm>
#include <map>

#include "IpodService/RecordText.h"
#include "tests/IpodService/ManagerFixture.h"

class BrowseFixture : public ManagerTest {
  protected:
    BrowseFixture() {
        m_standIns.eDevMgriPodMdGetCategories = [this](u32, u32, u32 category, u32* mask) {
            *mask = m_masks[category];
            return DEV_MGR_SUCCESS;
        };
        m_standIns.eDevMgriPodGetNumItems = [this](u32, u32, i32, u32, u32 category, u32* count) {
            *count = static_cast<u32>(m_names[category].size());
            return DEV_MGR_SUCCESS;
        };
        m_standIns.eDevMgriPodGetItems = [this](u32, u32, i32, u32, u32 category, u32 start, u32* count,
                                                BrowseItem* items) {
            for (u32 i = 0; i < *count; ++i) {
                m_names[category].at(start + i).copy(items[i].name, sizeof items[i].name);
                items[i].id = IdOf(category, start + i);
            }
            *count = m_delivered == kAll ? UINT32_MAX : std::min(m_delivered, *count);
            return DEV_MGR_SUCCESS;
        };
        m_standIns.eDevMgriPodResetDatabase = m_standIns.eDevMgriPodCloseMdBrowseSession =
            Answering(DEV_MGR_SUCCESS);
        m_standIns.eDevMgriPodOpenMdBrowseSession = Answering(DEV_MGR_SUCCESS);
        m_standIns.eDevMgriPodBrowseOneLevelBack = Answering(DEV_MGR_SUCCESS);
        m_standIns.eDevMgriPodSelectCategorizedIndex = Answering(DEV_MGR_SUCCESS);
        UseStandIns();
    }

    static constexpr u32 kAll = UINT32_MAX;  ///< and claims to have delivered more

    static u32 IdOf(u32 category, u32 position) { return category * 100000 + position; }
    std::size_t CallCount(const char* function) const { return m_simulator.Calls(function).size(); }

    Texts Names(i32 start, i32 count) const {
        Texts names;
        m_manager->ListItems(start, count,
                             [&](const BrowseItem& item) { names.emplace_back(RecordText(item.name)); });
        return names;
    }

    u32 m_delivered = kAll;  ///< items that one fetch brings at most
    std::map<u32, u32> m_masks = {
        {DEV_MGR_CATEGORY_TOP_LEVEL, DEV_MGR_CATEGORY_PLAYLIST | DEV_MGR_CATEGORY_ARTIST |
                                         DEV_MGR_CATEGORY_ALBUM | DEV_MGR_CATEGORY_GENRE |
                                         DEV_MGR_CATEGORY_TRACK | DEV_MGR_CATEGORY_COMPOSER},
        {DEV_MGR_CATEGORY_ARTIST, DEV_MGR_CATEGORY_ARTIST | DEV_MGR_CATEGORY_ALBUM},
        {DEV_MGR_CATEGORY_ALBUM, DEV_MGR_CATEGORY_ALBUM | DEV_MGR_CATEGORY_TRACK},
        {DEV_MGR_CATEGORY_TRACK, DEV_MGR_CATEGORY_TRACK}};
    std::map<u32, Texts> m_names = {
        {DEV_MGR_CATEGORY_ARTIST, {"Amber", "AB/CD", "The Brooks", "Bluff"}},
        {DEV_MGR_CATEGORY_ALBUM, {"Harbour!", "Rotunda"}},
        {DEV_MGR_CATEGORY_TRACK, {"Gorse", "Meadow", "Rust", "Wander", "Whistle"}}};
};
