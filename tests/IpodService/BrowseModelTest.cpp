#include "tests/IpodService/BrowseFixture.h"

namespace {

using testing::ElementsAre;

class BrowseModel : public BrowseFixture {
  protected:
    /// Enters a top-level category from an empty stack.
    BrowseLevel& Enter(u32 category) {
        m_manager->ResetDatabase();
        EXPECT_EQ(m_manager->BrowseTopCategory(category), 0);
        m_simulator.ClearCalls();
        return *m_manager->CurrentBrowseLevel();
    }
};

TEST_F(BrowseModel, BeforeTheFirstSessionTheStackIsNeitherEmptyNorALevel) {
    EXPECT_FALSE(m_manager->IsAtLeafCategory());
    EXPECT_EQ(m_manager->BrowseInto(3), -1);
    EXPECT_EQ(m_manager->SetItemFilter("a"), -1);
    EXPECT_TRUE(m_simulator.Calls().empty());
    for (int entry = 0; entry < 9; ++entry) {
        EXPECT_EQ(m_manager->BrowseOneLevelBack(), 0);
    }
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 9u);

    m_simulator.Fail("eDevMgriPodResetDatabase", DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED, 1);
    EXPECT_EQ(m_manager->BrowseTopCategory(DEV_MGR_CATEGORY_ARTIST), 0);
    EXPECT_EQ(CallCount("eDevMgriPodCloseMdBrowseSession"), 1u);
    EXPECT_EQ(m_manager->State(), ConnectionState::BrowseReady);
    EXPECT_THAT(TakeLog(), testing::ContainsRegex("error : browsing category while not at top level\n.*"
                                                  " experimental browse reset performed\n(.*\n)*.*"
                                                  " FORCE browse reset performed\n"));
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 0);
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 1);
}

TEST_F(BrowseModel, WalksDownToALeafAndNamesEachParentToTheDevice) {
    Enter(DEV_MGR_CATEGORY_ARTIST).selectedIndex = 11;
    ASSERT_EQ(m_manager->BrowseInto(IdOf(DEV_MGR_CATEGORY_ARTIST, 2)), 0);
    EXPECT_THAT(TakeCalls(), testing::IsSupersetOf({"eDevMgriPodGetNumItems(4,11,4)",
                                                    "eDevMgriPodSelectCategorizedIndex(4,400002)"}));
    EXPECT_FALSE(m_manager->IsAtLeafCategory());
    m_manager->FetchLevelItems(*m_manager->CurrentBrowseLevel());
    EXPECT_THAT(TakeCalls(), testing::Contains("eDevMgriPodGetItems(4,400002,8,0,2)"));
    ASSERT_EQ(m_manager->BrowseInto(IdOf(DEV_MGR_CATEGORY_ALBUM, 1)), 0);
    EXPECT_TRUE(m_manager->IsAtLeafCategory());
    EXPECT_EQ(m_manager->BrowseInto(IdOf(DEV_MGR_CATEGORY_TRACK, 3)), 1);
    EXPECT_EQ(CallCount("eDevMgriPodResetDatabase"), 1u);
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 1);
}

TEST_F(BrowseModel, KeepsItsPlaceWhenAStepDownFails) {
    BrowseLevel& top = Enter(DEV_MGR_CATEGORY_ARTIST);
    m_simulator.Fail("eDevMgriPodSelectCategorizedIndex", DEV_MGR_INVALID_CATEGORY_SELECTION, 1);
    EXPECT_EQ(m_manager->BrowseInto(0), -1);
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 0u);

    // The count before the selection, and the child's.
    m_simulator.Fail("eDevMgriPodGetNumItems", DEV_MGR_DEVICE_NOT_RESPONDING, 2);
    EXPECT_EQ(m_manager->BrowseInto(0), -1);
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 1u);

    m_masks[DEV_MGR_CATEGORY_ARTIST] =
        DEV_MGR_CATEGORY_ARTIST | DEV_MGR_CATEGORY_ALBUM | DEV_MGR_CATEGORY_TRACK;
    EXPECT_EQ(m_manager->BrowseInto(0), -1);
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 2u);
    EXPECT_EQ(m_manager->CurrentBrowseLevel(), &top);

    m_masks[DEV_MGR_CATEGORY_ARTIST] = DEV_MGR_CATEGORY_ALBUM;
    ASSERT_EQ(m_manager->BrowseInto(0), 0);
    m_simulator.Fail("eDevMgriPodBrowseOneLevelBack", DEV_MGR_ALREADY_ON_TOP_LEVEL);
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 1 - DEV_MGR_ALREADY_ON_TOP_LEVEL);  // left all the same
    EXPECT_EQ(m_manager->CurrentBrowseLevel(), &top);
}

TEST_F(BrowseModel, EmptiesTheStackWithEverySessionCallThatFails) {
    for (const char* call :
         {"eDevMgriPodResetDatabase", "eDevMgriPodOpenMdBrowseSession", "eDevMgriPodCloseMdBrowseSession"}) {
        m_simulator.Fail(call, DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED);
    }
    for (const auto operation :
         {&IpodManager::ResetDatabase, &IpodManager::OpenBrowseSession, &IpodManager::CloseBrowseSession}) {
        Enter(DEV_MGR_CATEGORY_ARTIST);
        EXPECT_EQ((*m_manager.*operation)(), 1 - DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED);
        EXPECT_EQ(m_manager->BrowseOneLevelBack(), 1);
    }
    EXPECT_NE(m_manager->State(), ConnectionState::BrowseReady);
}

TEST_F(BrowseModel, FiltersTheStoredItemsOnly) {
    BrowseLevel& level = Enter(DEV_MGR_CATEGORY_TRACK);
    EXPECT_EQ(m_manager->SetItemFilter("w"), 0);  // nothing is stored yet
    EXPECT_TRUE(level.filterMatches.empty());
    m_manager->FetchLevelItems(level);
    level.itemCount = 100000;  // the device's library has grown since
    EXPECT_EQ(m_manager->SetItemFilter("wA"), 0);
    EXPECT_THAT(level.filterMatches, ElementsAre(&level.items[3]));
    IpodManager::SetLevelItems(level, nullptr, 5);
    EXPECT_EQ(m_manager->SetItemFilter("w"), 0);
    EXPECT_TRUE(level.filterMatches.empty());
}

}  // namespace
