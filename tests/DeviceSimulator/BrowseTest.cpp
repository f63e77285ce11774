#include <cstring>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

class BrowseTest : public SimulatorTest {
  protected:
    BrowseTest() { OpenPlayer(); }

    /// The names of a list, or the result code.
    std::string List(i32 parentCategory, u32 parentIndex, u32 category) {
        u32 count = 0;
        u32 result = eDevMgriPodGetNumItems(ph, dh, parentCategory, parentIndex, category, &count);
        std::vector<BrowseItem> items(count + 5);
        u32 written = count + 5;
        if (result == kSuccess) {
            result =
                eDevMgriPodGetItems(ph, dh, parentCategory, parentIndex, category, 0, &written, items.data());
            EXPECT_EQ(written, count);
        }
        std::string text = result == kSuccess ? "" : std::to_string(result);
        for (u32 i = 0; result == kSuccess && i < written; ++i) {
            EXPECT_EQ(items[i].id, i);
            text += (text.empty() ? "" : ", ") + std::string(items[i].name);
        }
        return text;
    }

    u32 Select(u32 category, u32 index) { return eDevMgriPodSelectCategorizedIndex(ph, dh, category, index); }
};

TEST_F(BrowseTest, NarrowingsAddUpForTheProcessThatMakesThem) {
    EXPECT_EQ(Select(kGenre, 1), kSuccess);
    EXPECT_EQ(Select(kArtist, 1), kSuccess);
    EXPECT_EQ(List(kArtist, 1, kAlbum), "Album 06, Album 07");
    EXPECT_EQ(Select(kAlbum, 0), kSuccess);
    EXPECT_EQ(List(kAlbum, 0, kTrack), "Title 18, Title 19, Title 20");
    // Higher steps of the path, the whole library, and what is not in the path at all.
    EXPECT_EQ(List(kGenre, 1, kArtist), "Artist 02, Artist 03");
    EXPECT_EQ(List(-1, 0, kArtist), "Artist 00, Artist 01, Artist 02, Artist 03");
    EXPECT_EQ(List(kArtist, 0, kAlbum), "Album 00, Album 01");
    const u32 other = Register();
    ASSERT_EQ(eDevMgrOpenDevice(other, dh), kSuccess);
    ASSERT_EQ(eDevMgriPodOpenMdBrowseSession(other, dh, 1), kSuccess);
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(other, dh), u32{kAlreadyOnTopLevel});
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(ph, dh), kSuccess);
    EXPECT_EQ(List(kArtist, 1, kAlbum), "Album 06, Album 07");
    EXPECT_EQ(eDevMgriPodResetDatabase(ph, dh), kSuccess);
    EXPECT_EQ(List(kArtist, 1, kAlbum), "Album 02, Album 03");
}

TEST_F(BrowseTest, QueriesOfWhatIsNotThere) {
    EXPECT_EQ(List(kArtist, 99, kAlbum), "");
    EXPECT_EQ(List(-1, 0, kComposer), "");
    EXPECT_EQ(List(-1, 0, kArtist | kAlbum), std::to_string(kInvalidCategory));
    EXPECT_EQ(List(kPodcast, 0, kTrack), std::to_string(kInvalidBaseCategory));
    EXPECT_EQ(Select(kTrack, kTracks), u32{kInvalidIndex});
    EXPECT_EQ(Select(kArtist, 1), kSuccess);
    EXPECT_EQ(Select(kArtist, 0), u32{kInvalidCategory});
}

TEST_F(BrowseTest, PagesStayInsideTheListAndTheRoom) {
    BrowseItem items[4];
    std::memset(items, 'x', sizeof(items));
    u32 count = 3;
    EXPECT_EQ(eDevMgriPodGetItems(ph, dh, -1, 0, kTrack, 22, &count, items), kSuccess);
    EXPECT_EQ(count, 2U);
    EXPECT_STREQ(items[1].name, "Title 23");
    EXPECT_EQ(items[1].name[255], '\0');
    EXPECT_EQ(items[2].name[0], 'x');
    EXPECT_EQ(eDevMgriPodGetItems(ph, dh, -1, 0, kTrack, 24, &count, items), u32{kInvalidIndex});
    EXPECT_EQ(count, 2U);
}

TEST_F(BrowseTest, ATrackStartsWithItsListAsTheQueue) {
    EXPECT_EQ(Select(kPlaylist, 0), kSuccess);
    EXPECT_EQ(Select(kTrack, 2), kSuccess);
    EXPECT_EQ(TakeEventText(), "34=24 13 17=48000 9");
    EXPECT_EQ(Title(), "Title 21");
    EXPECT_EQ(eDevMgriPodResetDatabase(ph, dh), kSuccess);
    EXPECT_EQ(Status(), 0U);
    EXPECT_EQ(Select(kAlbum, 1), kSuccess);
    EXPECT_EQ(Select(kTrack, 1), kSuccess);
    EXPECT_EQ(Title(), "Title 04");
    BrowseItem items[5];
    u32 count = 5;
    EXPECT_EQ(eDevMgriPodGetPlayingList(ph, dh, 1, &count, items), kSuccess);
    EXPECT_EQ(count, 2U);
    EXPECT_STREQ(items[0].name, "Title 04");
    EXPECT_EQ(items[0].id, 1U);
    u32 index = 0;
    EXPECT_EQ(eDevMgriPodGetNumPlayingTracks(ph, dh, &count, &index), kSuccess);
    EXPECT_EQ(std::pair(count, index), std::pair(3U, 1U));
    EXPECT_EQ(eSelectNowPlayingIndex(ph, dh, 2), kSuccess);
    EXPECT_EQ(Title(), "Title 05");
    EXPECT_EQ(eSelectNowPlayingIndex(ph, dh, 3), u32{kInvalidIndex});
}

}  // namespace
}  // namespace DeviceSimulator::Test
