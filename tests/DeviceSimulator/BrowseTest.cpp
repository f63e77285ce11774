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
        if (result != kSuccess) {
            return std::to_string(result);
        }
        std::string text;
        for (u32 i = 0; i < written; ++i) {
            EXPECT_EQ(items[i].id, i);
            text += (text.empty() ? "" : ", ") + std::string(items[i].name);
        }
        return text;
    }

    u32 Select(u32 category, u32 index) { return eDevMgriPodSelectCategorizedIndex(ph, dh, category, index); }

    u32 Mask(u32 category) {
        u32 mask = 0xDEAD;
        EXPECT_EQ(eDevMgriPodMdGetCategories(ph, dh, category, &mask), kSuccess);
        return mask;
    }
};

TEST_F(BrowseTest, CategoriesLeadToTheirNext) {
    EXPECT_EQ(Mask(kTopLevel), u32{kPlaylist | kArtist | kAlbum | kGenre | kTrack});
    EXPECT_EQ(Mask(kPlaylist), u32{kTrack});
    EXPECT_EQ(Mask(kArtist), u32{kAlbum});
    EXPECT_EQ(Mask(kAlbum), u32{kTrack});
    EXPECT_EQ(Mask(kGenre), u32{kArtist});
    EXPECT_EQ(Mask(kComposer), u32{kAlbum});
    EXPECT_EQ(Mask(kTrack), 0U);
    u32 mask = 0;
    EXPECT_EQ(eDevMgriPodMdGetCategories(ph, dh, kAudiobook, &mask), u32{kInvalidCategory});
}

TEST_F(BrowseTest, NarrowingsAddUp) {
    EXPECT_EQ(Select(kGenre, 1), kSuccess);
    EXPECT_EQ(List(kGenre, 1, kArtist), "Artist 2, Artist 3");
    EXPECT_EQ(Select(kArtist, 1), kSuccess);
    EXPECT_EQ(List(kArtist, 1, kAlbum), "Album 6, Album 7");
    EXPECT_EQ(Select(kAlbum, 0), kSuccess);
    EXPECT_EQ(List(kAlbum, 0, kTrack), "Title 18, Title 19, Title 20");
    // Higher steps of the path, the whole library, and what is not in the path at all.
    EXPECT_EQ(List(kGenre, 1, kArtist), "Artist 2, Artist 3");
    EXPECT_EQ(List(-1, 0, kArtist), "Artist 0, Artist 1, Artist 2, Artist 3");
    EXPECT_EQ(List(kArtist, 0, kAlbum), "Album 0, Album 1");
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(ph, dh), kSuccess);
    EXPECT_EQ(List(kArtist, 1, kAlbum), "Album 6, Album 7");
    EXPECT_EQ(eDevMgriPodResetDatabase(ph, dh), kSuccess);
    EXPECT_EQ(List(kArtist, 1, kAlbum), "Album 2, Album 3");
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(ph, dh), u32{kAlreadyOnTopLevel});
}

TEST_F(BrowseTest, QueriesOfWhatIsNotThere) {
    EXPECT_EQ(List(kArtist, 99, kAlbum), "");
    EXPECT_EQ(List(kTrack, 0, kTrack), "");
    EXPECT_EQ(List(-1, 0, kComposer), "");
    EXPECT_EQ(List(-1, 0, kPodcast), std::to_string(kInvalidCategory));
    EXPECT_EQ(List(-1, 0, kArtist | kAlbum), std::to_string(kInvalidCategory));
    EXPECT_EQ(List(-2, 0, kTrack), std::to_string(kInvalidBaseCategory));
    EXPECT_EQ(List(kPodcast, 0, kTrack), std::to_string(kInvalidBaseCategory));
    EXPECT_EQ(Select(kArtist, 4), u32{kInvalidIndex});
    EXPECT_EQ(Select(kTrack, kTracks), u32{kInvalidIndex});
    EXPECT_EQ(Select(1024, 0), u32{kInvalidCategory});
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
    EXPECT_EQ(items[1].id, 23U);
    EXPECT_EQ(items[1].name[255], '\0');
    EXPECT_EQ(items[2].name[0], 'x');
    count = 1;
    EXPECT_EQ(eDevMgriPodGetItems(ph, dh, -1, 0, kTrack, 24, &count, items), u32{kInvalidIndex});
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(eDevMgriPodGetItems(ph, dh, -1, 0, kTrack, 0, &count, nullptr), u32{kWrongParameters});
    EXPECT_EQ(eDevMgriPodGetItems(ph, dh, -1, 0, kTrack, 0, nullptr, items), u32{kWrongParameters});
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
    EXPECT_EQ(Title(), "Title 4");
    BrowseItem items[5];
    u32 count = 5;
    EXPECT_EQ(eDevMgriPodGetPlayingList(ph, dh, 1, &count, items), kSuccess);
    EXPECT_EQ(count, 2U);
    EXPECT_STREQ(items[0].name, "Title 4");
    EXPECT_EQ(items[0].id, 1U);
    u32 index = 0;
    EXPECT_EQ(eDevMgriPodGetNumPlayingTracks(ph, dh, &count, &index), kSuccess);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(index, 1U);
    EXPECT_EQ(eSelectNowPlayingIndex(ph, dh, 2), kSuccess);
    EXPECT_EQ(Title(), "Title 5");
    EXPECT_EQ(eSelectNowPlayingIndex(ph, dh, 3), u32{kInvalidIndex});
}

TEST_F(BrowseTest, ProcessesBrowseApart) {
    u32 other = 0;
    ASSERT_EQ(eDevMgrRegisterProcess(&other, EventRecorder::Callback), kSuccess);
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(other, dh), u32{kDeviceNotOpened});
    ASSERT_EQ(eDevMgrOpenDevice(other, dh), kSuccess);
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(other, dh), u32{kSessionNotOpened});
    ASSERT_EQ(eDevMgriPodOpenMdBrowseSession(other, dh, 1), kSuccess);
    EXPECT_EQ(Select(kArtist, 1), kSuccess);
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(other, dh), u32{kAlreadyOnTopLevel});
}

}  // namespace
}  // namespace DeviceSimulator::Test
