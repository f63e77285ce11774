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
        const u32 result = eDevMgriPodGetNumItems(ph, dh, parentCategory, parentIndex, category, &count);
        if (result != DEV_MGR_SUCCESS) {
            return std::to_string(result);
        }
        std::string text;
        u32 position = 0;
        for (const BrowseItem& item : Items(parentCategory, parentIndex, category)) {
            EXPECT_EQ(item.id, position++);
            text += (text.empty() ? "" : ", ") + std::string(item.name);
        }
        EXPECT_EQ(position, count);
        return text;
    }
};

TEST_F(BrowseTest, NarrowingsAddUpForTheProcessThatMakesThem) {
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_GENRE, 1), DEV_MGR_SUCCESS);
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_ARTIST, 1), DEV_MGR_SUCCESS);
    EXPECT_EQ(List(DEV_MGR_CATEGORY_ARTIST, 1, DEV_MGR_CATEGORY_ALBUM), "Album 06, Album 07");
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_ALBUM, 0), DEV_MGR_SUCCESS);
    EXPECT_EQ(List(DEV_MGR_CATEGORY_ALBUM, 0, DEV_MGR_CATEGORY_TRACK), "Title 18, Title 19, Title 20");
    // Higher steps of the path, the whole library, and what is not in the path at all.
    EXPECT_EQ(List(DEV_MGR_CATEGORY_GENRE, 1, DEV_MGR_CATEGORY_ARTIST), "Artist 02, Artist 03");
    EXPECT_EQ(List(DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_ARTIST),
              "Artist 00, Artist 01, Artist 02, Artist 03");
    EXPECT_EQ(List(DEV_MGR_CATEGORY_ARTIST, 0, DEV_MGR_CATEGORY_ALBUM), "Album 00, Album 01");
    const u32 other = Register();
    ASSERT_EQ(eDevMgrOpenDevice(other, dh), DEV_MGR_SUCCESS);
    ASSERT_EQ(eDevMgriPodOpenMdBrowseSession(other, dh, 1), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(other, dh), u32{DEV_MGR_ALREADY_ON_TOP_LEVEL});
    EXPECT_EQ(eDevMgriPodBrowseOneLevelBack(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(List(DEV_MGR_CATEGORY_ARTIST, 1, DEV_MGR_CATEGORY_ALBUM), "Album 06, Album 07");
    EXPECT_EQ(eDevMgriPodResetDatabase(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(List(DEV_MGR_CATEGORY_ARTIST, 1, DEV_MGR_CATEGORY_ALBUM), "Album 02, Album 03");
}

TEST_F(BrowseTest, QueriesStayInsideTheListAndTheRoom) {
    EXPECT_EQ(List(DEV_MGR_CATEGORY_ARTIST, 99, DEV_MGR_CATEGORY_ALBUM), "");
    EXPECT_EQ(List(DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_COMPOSER), "");
    EXPECT_EQ(List(DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_ARTIST | DEV_MGR_CATEGORY_ALBUM),
              std::to_string(DEV_MGR_INVALID_CATEGORY_SELECTION));
    EXPECT_EQ(List(DEV_MGR_CATEGORY_PODCAST, 0, DEV_MGR_CATEGORY_TRACK),
              std::to_string(DEV_MGR_INVALID_BASE_CATEGORY));
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, kTracks), u32{DEV_MGR_IAP_INVALID_INDEX});
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_ARTIST, 1), DEV_MGR_SUCCESS);
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_ARTIST, 0), u32{DEV_MGR_INVALID_CATEGORY_SELECTION});
    BrowseItem items[4];
    std::memset(items, 'x', sizeof(items));
    u32 count = 3;
    EXPECT_EQ(
        eDevMgriPodGetItems(ph, dh, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, 22, &count, items),
        DEV_MGR_SUCCESS);
    EXPECT_EQ(count, 2U);
    EXPECT_STREQ(items[1].name, "Title 23");
    EXPECT_EQ(items[1].name[255], '\0');
    EXPECT_EQ(items[2].name[0], 'x');
    EXPECT_EQ(
        eDevMgriPodGetItems(ph, dh, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, 24, &count, items),
        u32{DEV_MGR_IAP_INVALID_INDEX});
    EXPECT_EQ(count, 2U);
}

TEST_F(BrowseTest, ATrackStartsWithItsListAsTheQueue) {
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_PLAYLIST, 0), DEV_MGR_SUCCESS);
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, 2), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(),
              "play-context-setting=24 play-track-changed new-track-sample-rate=48000 play-started");
    EXPECT_EQ(Title(), "Title 21");
    EXPECT_EQ(eDevMgriPodResetDatabase(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(Status(), E_DEVMGR_IPOD_PLAY_PLAYING);
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_ALBUM, 1), DEV_MGR_SUCCESS);
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, 1), DEV_MGR_SUCCESS);
    EXPECT_EQ(Title(), "Title 04");
    BrowseItem items[5];
    u32 count = 5;
    EXPECT_EQ(eDevMgriPodGetPlayingList(ph, dh, 1, &count, items), DEV_MGR_SUCCESS);
    EXPECT_EQ(std::pair(count, items[0].id), std::pair(2U, 1U));
    EXPECT_STREQ(items[0].name, "Title 04");
    EXPECT_EQ(eSelectNowPlayingIndex(ph, dh, 2), DEV_MGR_SUCCESS);
    EXPECT_EQ(Title(), "Title 05");
    EXPECT_EQ(eSelectNowPlayingIndex(ph, dh, 3), u32{DEV_MGR_IAP_INVALID_INDEX});
}

}  // namespace
}  // namespace DeviceSimulator::Test
