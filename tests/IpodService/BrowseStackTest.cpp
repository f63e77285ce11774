#include "tests/IpodService/BrowseFixture.h"

namespace {

using testing::ElementsAre;

class BrowseStackTest : public BrowseFixture {
  protected:
    /// Enters a top-level category from an empty stack.
    void Enter(u32 category) {
        m_manager->ResetDatabase();
        EXPECT_EQ(m_manager->BrowseTopCategory(category), 0);
        m_simulator.ClearCalls();
    }
};

TEST_F(BrowseStackTest, BeforeTheFirstSessionTheStackIsNeitherEmptyNorALevel) {
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
    EXPECT_THAT(TakeLog(), testing::ContainsRegex("error : browsing category while not at top level\n.*"
                                                  " experimental browse reset performed\n(.*\n)*.*"
                                                  " FORCE browse reset performed\n"));
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 0);
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 1);
}

TEST_F(BrowseStackTest, WalksDownToALeafAndNamesEachParentToTheDevice) {
    Enter(DEV_MGR_CATEGORY_ARTIST);
    ASSERT_EQ(m_manager->BrowseInto(IdOf(DEV_MGR_CATEGORY_ARTIST, 2)), 0);
    EXPECT_THAT(TakeCalls(), testing::Contains("eDevMgriPodSelectCategorizedIndex(4,400002)"));
    EXPECT_FALSE(m_manager->IsAtLeafCategory());
    EXPECT_THAT(Names(0, 9), ElementsAre("Harbour!", "Rotunda"));
    EXPECT_THAT(TakeCalls(), testing::Contains("eDevMgriPodGetItems(4,400002,8,0,2)"));
    ASSERT_EQ(m_manager->BrowseInto(IdOf(DEV_MGR_CATEGORY_ALBUM, 1)), 0);
    EXPECT_TRUE(m_manager->IsAtLeafCategory());
    EXPECT_EQ(m_manager->BrowseInto(IdOf(DEV_MGR_CATEGORY_TRACK, 3)), 1);
    EXPECT_EQ(CallCount("eDevMgriPodResetDatabase"), 1u);
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 1);

    Enter(DEV_MGR_CATEGORY_ARTIST);
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 0);
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 0u) << "it narrowed nothing on the device";
}

TEST_F(BrowseStackTest, KeepsItsPlaceWhenAStepDownFails) {
    Enter(DEV_MGR_CATEGORY_ARTIST);
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
    EXPECT_THAT(Names(0, 1), ElementsAre("Amber"));

    m_masks[DEV_MGR_CATEGORY_ARTIST] = DEV_MGR_CATEGORY_ALBUM;
    ASSERT_EQ(m_manager->BrowseInto(0), 0);
    m_simulator.Fail("eDevMgriPodBrowseOneLevelBack", DEV_MGR_ALREADY_ON_TOP_LEVEL);
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 1 - DEV_MGR_ALREADY_ON_TOP_LEVEL);  // left all the same
    EXPECT_THAT(Names(0, 1), ElementsAre("Amber"));
}

TEST_F(BrowseStackTest, EmptiesTheStackWithEverySessionCallThatFails) {
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

TEST_F(BrowseStackTest, ShowsWhatTheDeviceDeliversAndNothingInPlaceOfTheRest) {
    Enter(DEV_MGR_CATEGORY_TRACK);
    m_delivered = 2;
    EXPECT_THAT(Names(0, 4), ElementsAre("Gorse", "Meadow"));
    EXPECT_THAT(Names(3, 4), ElementsAre("Wander", "Whistle", "Gorse", "Meadow")) << "two fetches of two";
    EXPECT_THAT(Names(2, 5), ElementsAre("Rust", "Wander")) << "the second fetch would leave a gap";
    m_delivered = kAll;
    m_simulator.Fail("eDevMgriPodGetItems", DEV_MGR_DEVICE_NOT_RESPONDING, 1);
    EXPECT_THAT(Names(3, 4), testing::IsEmpty());
}

TEST_F(BrowseStackTest, StoresALevelOnlyWhenItCameWhole) {
    Enter(DEV_MGR_CATEGORY_TRACK);
    m_delivered = 4;
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(m_manager->SetItemFilter("w"), 0);
        EXPECT_THAT(Names(0, 9), testing::IsEmpty());
    }
    EXPECT_EQ(CallCount("eDevMgriPodGetItems"), 2u);
    m_delivered = kAll;
    EXPECT_EQ(m_manager->SetItemFilter("W"), 0);
    EXPECT_THAT(Names(0, 9), ElementsAre("Meadow", "Wander", "Whistle"));
    EXPECT_EQ(m_manager->SetItemFilter("wA"), 0);
    EXPECT_THAT(Names(0, 9), ElementsAre("Wander"));
    EXPECT_EQ(CallCount("eDevMgriPodGetItems"), 3u) << "stored now";

    Enter(DEV_MGR_CATEGORY_TRACK);
    m_delivered = 4;
    std::size_t listed = 0;
    EXPECT_TRUE(m_manager->ListAllItems([&](const BrowseItem&) { ++listed; }));
    EXPECT_EQ(listed, 4u);
    m_delivered = kAll;
    EXPECT_TRUE(m_manager->ListAllItems([&](const BrowseItem&) { ++listed; }));
    EXPECT_EQ(listed, 9u);
}

}  // namespace
