#include <functional>

#include "tests/IpodService/BrowseFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class BrowseModel : public BrowseFixture {
  protected:
    /// Enters a top-level category from an empty stack.
    BrowseLevel& Enter(u32 category) {
        manager.ResetDatabase();
        EXPECT_EQ(manager.BrowseTopCategory(category), 0);
        simulator.ClearCalls();
        return *manager.CurrentBrowseLevel();
    }
};

TEST_F(BrowseModel, BeforeTheFirstSessionTheStackIsNeitherEmptyNorALevel) {
    EXPECT_FALSE(manager.IsAtLeafCategory());
    EXPECT_EQ(manager.BrowseInto(3), -1);
    EXPECT_EQ(manager.SetItemFilter("a"), -1);
    EXPECT_TRUE(simulator.Calls().empty());
    EXPECT_EQ(manager.BrowseOneLevelBack(), 0);
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 1u);

    simulator.Fail("eDevMgriPodResetDatabase", 44, 1);
    EXPECT_EQ(manager.BrowseTopCategory(Category::kArtist), 0);
    EXPECT_EQ(CallCount("eDevMgriPodCloseMdBrowseSession"), 1u);
    EXPECT_EQ(manager.State(), ConnectionState::BrowseReady);
    EXPECT_THAT(Log(), testing::ContainsRegex("error : browsing category while not at top level\n.*"
                                              " experimental browse reset performed\n(.*\n)*.*"
                                              " FORCE browse reset performed\n"));
    EXPECT_EQ(manager.BrowseOneLevelBack(), 0);
    EXPECT_EQ(manager.BrowseOneLevelBack(), 1);
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 1u);
}

TEST_F(BrowseModel, WalksDownToALeafAndNamesEachParentToTheDevice) {
    BrowseLevel& artists = Enter(Category::kArtist);
    artists.selectedIndex = 11;
    const u32 beatles = IdOf(Category::kArtist, 2);
    ASSERT_EQ(manager.BrowseInto(beatles), 0);
    EXPECT_THAT(simulator.Calls("eDevMgriPodGetNumItems").front().arguments,
                ElementsAre(0, 0, Category::kArtist, 11, Category::kArtist));
    EXPECT_THAT(LastArguments("eDevMgriPodSelectCategorizedIndex"),
                ElementsAre(0, 0, Category::kArtist, beatles));
    EXPECT_THAT(Log(),
                HasSubstr("eDevMgriPodSelectCategorizedIndex\n[DEBUG] Going to do select, Type is :4"));

    BrowseLevel& albums = *manager.CurrentBrowseLevel();
    i32 count = 2;
    EXPECT_NE(manager.GetItems(albums.parent, albums, 0, count), nullptr);
    EXPECT_THAT(LastArguments("eDevMgriPodGetItems"),
                ElementsAre(0, 0, Category::kArtist, beatles, Category::kAlbum, 0, 2));
    EXPECT_FALSE(manager.IsAtLeafCategory());

    ASSERT_EQ(manager.BrowseInto(IdOf(Category::kAlbum, 1)), 0);
    EXPECT_TRUE(manager.IsAtLeafCategory());
    EXPECT_EQ(manager.BrowseInto(IdOf(Category::kTrack, 3)), 1);
    EXPECT_EQ(CallCount("eDevMgriPodResetDatabase"), 1u);
    EXPECT_EQ(manager.BrowseOneLevelBack(), 1);
}

TEST_F(BrowseModel, KeepsItsPlaceWhenAStepDownFails) {
    BrowseLevel& top = Enter(Category::kArtist);
    simulator.Fail("eDevMgriPodSelectCategorizedIndex", 50, 1);
    EXPECT_EQ(manager.BrowseInto(0), -1);
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 0u);

    simulator.Fail("eDevMgriPodGetNumItems", 54, 2);  // the count before the selection, and the child's
    EXPECT_EQ(manager.BrowseInto(0), -1);
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 1u);
    EXPECT_THAT(Log(),
                HasSubstr("eDevMgriPodGetNumItems is :DEV_MGR_DEVICE_NOT_RESPONDING, Num items = 0\n"));

    masks[Category::kArtist] = Category::kArtist | Category::kAlbum | Category::kTrack;
    EXPECT_EQ(manager.BrowseInto(0), -1);
    EXPECT_THAT(Log(), HasSubstr("Couldn't reduce category 4 -> 2c\n[INFO ]  :  ALBUM TRACK\n"));
    EXPECT_THAT(Log(), HasSubstr("Subcategory is not reported as supported(0000002c) vs child(00000400)\n"));
    EXPECT_EQ(CallCount("eDevMgriPodBrowseOneLevelBack"), 2u);
    EXPECT_EQ(manager.CurrentBrowseLevel(), &top);

    masks[Category::kArtist] = Category::kAlbum;
    ASSERT_EQ(manager.BrowseInto(0), 0);
    simulator.Fail("eDevMgriPodBrowseOneLevelBack", 51);
    EXPECT_EQ(manager.BrowseOneLevelBack(), -50);  // left all the same
    EXPECT_EQ(manager.CurrentBrowseLevel(), &top);
}

TEST_F(BrowseModel, EmptiesTheStackWithEverySessionCallThatFails) {
    for (const char* call :
         {"eDevMgriPodResetDatabase", "eDevMgriPodOpenMdBrowseSession", "eDevMgriPodCloseMdBrowseSession"})
        simulator.Fail(call, 44);
    for (const auto operation :
         {&IpodManager::ResetDatabase, &IpodManager::OpenBrowseSession, &IpodManager::CloseBrowseSession}) {
        Enter(Category::kArtist);
        EXPECT_EQ(std::invoke(operation, manager), -43);
        EXPECT_EQ(manager.BrowseOneLevelBack(), 1);
    }
    EXPECT_NE(manager.State(), ConnectionState::BrowseReady);
}

TEST_F(BrowseModel, OpensOnlyWhatTheDeviceOffers) {
    manager.ResetDatabase();
    for (const u32 category : {0u, Category::kPodcast, Category::kIrreducible, 0x80000000u})
        EXPECT_EQ(manager.BrowseTopCategory(category), -1) << category;
    for (const u32 code : {0u, 52u, 5000u}) {
        simulator.Fail("eDevMgriPodMdGetCategories", code, 1);
        EXPECT_EQ(manager.BrowseTopCategory(Category::kArtist), -1) << code;
    }
    EXPECT_THAT(Log(), HasSubstr("[INFO ] Expanding category NONE\n"));
    EXPECT_THAT(Log(),
                HasSubstr("[INFO ] Return from eDevMgriPodMdGetCategories is :DEV_MGR_UNKNOWN_FAILURE\n"));
    EXPECT_EQ(CallCount("eDevMgriPodGetNumItems"), 0u);
    EXPECT_EQ(manager.CurrentBrowseLevel(), nullptr);
}

TEST_F(BrowseModel, FiltersTheStoredItemsOnly) {
    BrowseLevel& level = Enter(Category::kTrack);
    EXPECT_EQ(manager.SetItemFilter("w"), 0);  // nothing is stored yet
    EXPECT_TRUE(level.filterMatches.empty());

    manager.FetchLevelItems(level);
    EXPECT_FALSE(IpodManager::HasFilter(level));
    level.itemCount = 100000;  // the device's library has grown since
    EXPECT_EQ(manager.SetItemFilter("wA"), 0);
    EXPECT_THAT(level.filterMatches, ElementsAre(&level.items[3]));
    EXPECT_EQ(manager.SetItemFilter("wh"), 0);
    EXPECT_THAT(level.filterMatches, ElementsAre(&level.items[4]));

    IpodManager::SetLevelItems(level, nullptr, 5);
    EXPECT_TRUE(level.filterMatches.empty());
    EXPECT_EQ(manager.SetItemFilter("w"), 0);
    EXPECT_TRUE(level.filterMatches.empty());
}

}  // namespace
