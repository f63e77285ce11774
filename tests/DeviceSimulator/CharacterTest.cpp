// Players that are unlike each other: each with music, ids, pages, covers and chance of its own.

#include <set>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

constexpr u32 kBlockBytes = 1U << 21U;

class CharacterTest : public SimulatorTest {
  protected:
    /// Plugs a player in as the command has it, with ' for ", opens it and a browse session.
    u32 Open(std::string members) {
        std::replace(members.begin(), members.end(), '\'', '"');
        const std::string answer =
            Simulator::Instance().Command(R"({"command":"plug","type":"iap",)" + members + "}");
        const std::size_t handle = answer.find("\"handle\":");
        EXPECT_NE(handle, std::string::npos) << answer;
        dh = static_cast<u32>(std::stoul(answer.substr(handle + 9)));
        EXPECT_EQ(eDevMgrOpenDevice(ph, dh), DEV_MGR_SUCCESS);
        EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), DEV_MGR_SUCCESS);
        return dh;
    }
    u32 Count(u32 category) const {
        u32 count = 0;
        EXPECT_EQ(eDevMgriPodGetNumItems(ph, dh, DEV_MGR_WHOLE_LIBRARY, 0, category, &count),
                  DEV_MGR_SUCCESS);
        return count;
    }
    std::vector<BrowseItem> Items(i32 parentCategory, u32 parent, u32 category, u32 start = 0) const {
        std::vector<BrowseItem> items(100);
        auto count = static_cast<u32>(items.size());
        EXPECT_EQ(eDevMgriPodGetItems(ph, dh, parentCategory, parent, category, start, &count, items.data()),
                  DEV_MGR_SUCCESS);
        items.resize(count);
        return items;
    }
    std::vector<BrowseItem> Whole(u32 category) const { return Items(DEV_MGR_WHOLE_LIBRARY, 0, category); }
    u32 Select(u32 category, u32 id) { return eDevMgriPodSelectCategorizedIndex(ph, dh, category, id); }
    /// The titles in shuffled order.
    std::string Shuffled() {
        EXPECT_EQ(eDevMgriPodSetShuffleSetting(ph, dh, E_DEVMGR_IPOD_SHUFFLE_TRACKS), DEV_MGR_SUCCESS);
        EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, 0), DEV_MGR_SUCCESS);
        std::string titles;
        for (u32 i = 0; i < 10; ++i) {
            titles += Title() + ',';
            eDevMgriPodPlayNextPreviousTrack(ph, dh, DEV_MGR_SKIP_NEXT);
        }
        return titles;
    }
    PictureSize Cover(PictureSize wanted) const {
        u32 size = kBlockBytes;
        u32 block = 0;
        EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), DEV_MGR_SUCCESS);
        EXPECT_EQ(eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, &wanted.height, &wanted.width, block),
                  DEV_MGR_SUCCESS);
        EXPECT_EQ(eDevMgrDeAllocateSharedMemory(ph, block), DEV_MGR_SUCCESS);
        return wanted;
    }
};

TEST_F(CharacterTest, EachHoldsItsOwnMusicInItsOwnOrder) {
    Open("'tracks':30");
    EXPECT_EQ(Count(DEV_MGR_CATEGORY_TRACK), 30U);
    Open("'tracks':7");
    EXPECT_EQ(Count(DEV_MGR_CATEGORY_TRACK), 7U);
    Open("'name':'the default'");
    EXPECT_EQ(Count(DEV_MGR_CATEGORY_TRACK), kTracks);
    const auto names = [this](const std::string& sort) {
        Open("'tracks':400,'sort':'" + sort + "'");
        std::vector<std::string> artists;
        for (const BrowseItem& item : Whole(DEV_MGR_CATEGORY_ARTIST)) {
            artists.emplace_back(item.name);
        }
        return artists;
    };
    const auto bytes = names("bytes");
    EXPECT_TRUE(std::is_sorted(bytes.begin(), bytes.end()));
    EXPECT_NE(names("no-article"), bytes) << "a leading The counts there";
    EXPECT_EQ(names("article"), bytes) << "made-up names are of one case";
}

TEST_F(CharacterTest, StableIdsNameAnItemInEveryList) {
    Open("'tracks':60,'ids':'stable'");
    const auto tracks = Whole(DEV_MGR_CATEGORY_TRACK);
    std::set<u32> ids;
    for (const BrowseItem& item : tracks) {
        EXPECT_GE(item.id, tracks.size());
        ids.insert(item.id);
    }
    EXPECT_EQ(ids.size(), tracks.size());
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, 0), u32{DEV_MGR_IAP_INVALID_INDEX}) << "a position";
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, tracks[5].id), DEV_MGR_SUCCESS);
    EXPECT_EQ(Title(), tracks[5].name);

    const BrowseItem album = Whole(DEV_MGR_CATEGORY_ALBUM).at(1);
    const auto inAlbum = Items(DEV_MGR_CATEGORY_ALBUM, album.id, DEV_MGR_CATEGORY_TRACK);
    ASSERT_FALSE(inAlbum.empty());
    EXPECT_TRUE(ids.count(inAlbum.front().id)) << "the same as in the whole library";
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_ALBUM, album.id), DEV_MGR_SUCCESS);
    EXPECT_EQ(Items(DEV_MGR_CATEGORY_ALBUM, album.id, DEV_MGR_CATEGORY_TRACK).size(), inAlbum.size());
    EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, inAlbum.back().id), DEV_MGR_SUCCESS);
    EXPECT_EQ(Title(), inAlbum.back().name);
}

TEST_F(CharacterTest, PagesEndAtTheirLimitAndGoOnWhereTheyEnded) {
    Open("'page':10");
    EXPECT_EQ(Whole(DEV_MGR_CATEGORY_TRACK).size(), 10U);
    EXPECT_EQ(Items(DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, 20).size(), kTracks - 20);
    EXPECT_EQ(Count(DEV_MGR_CATEGORY_TRACK), kTracks);
}

TEST_F(CharacterTest, TheSameSeedShufflesAlike) {
    Open("'seed':7");
    const std::string first = Shuffled();
    Open("'seed':7");
    EXPECT_EQ(Shuffled(), first);
    Open("'seed':8");
    EXPECT_NE(Shuffled(), first);
}

TEST_F(CharacterTest, CoversComeAsThePlayerHasThem) {
    const auto play = [this](const std::string& covers) {
        Open("'tracks':20,'covers':'" + covers + "'");
        EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, 0), DEV_MGR_SUCCESS);
    };
    const PictureSize wanted{160, 120};
    play("stored");
    const PictureSize stored = Cover(wanted);
    EXPECT_GT(stored.height, wanted.height);
    play("wanted");
    EXPECT_EQ(Cover(wanted), (PictureSize{120, 120}));
    play("length");
    const PictureSize length = Cover(wanted);
    EXPECT_EQ(length.height, 0U);
    EXPECT_GT(length.width, 1000U) << "bytes";
}

TEST_F(CharacterTest, BlocksAreNoLargerThanTheBoundUntilItIsTakenBack) {
    const auto granted = [this] {
        u32 size = kBlockBytes;
        u32 block = 0;
        EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), DEV_MGR_SUCCESS);
        return size;
    };
    Simulator::Instance().Command(R"({"command":"memory","largest":4096})");
    EXPECT_EQ(granted(), 4096U);
    Simulator::Instance().ClearScripts();
    EXPECT_EQ(granted(), kBlockBytes);
}

}  // namespace
}  // namespace DeviceSimulator::Test
