// Players that are unlike each other: each with music, ids, pages, covers and chance of its own.

#include <set>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

constexpr u32 kBlockBytes = 1U << 21U;

class CharacterTest : public SimulatorTest {
  protected:
    /// Plugs a player in as the command has it, with ' for ", opens it and a browse session.
    void Open(const std::string& members) {
        dh = Do("{'command':'plug','type':'iap'," + members + "}")["handle"].asUInt();
        EXPECT_EQ(eDevMgrOpenDevice(ph, dh), DEV_MGR_SUCCESS);
        EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), DEV_MGR_SUCCESS);
    }
    u32 Count(u32 category) const {
        u32 count = 0;
        EXPECT_EQ(eDevMgriPodGetNumItems(ph, dh, DEV_MGR_WHOLE_LIBRARY, 0, category, &count),
                  DEV_MGR_SUCCESS);
        return count;
    }
    std::vector<BrowseItem> Whole(u32 category) { return Items(DEV_MGR_WHOLE_LIBRARY, 0, category); }
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

TEST_F(CharacterTest, EachHoldsItsOwnMusicInItsOwnOrderAndPages) {
    Open("'tracks':30");
    EXPECT_EQ(Count(DEV_MGR_CATEGORY_TRACK), 30U);
    Open("'tracks':7");
    EXPECT_EQ(Count(DEV_MGR_CATEGORY_TRACK), 7U);
    Open("'page':10");
    EXPECT_EQ(Count(DEV_MGR_CATEGORY_TRACK), kTracks) << "the environment's";
    EXPECT_EQ(Whole(DEV_MGR_CATEGORY_TRACK).size(), 10U);
    EXPECT_EQ(Items(DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, 20).size(), kTracks - 20);
    const auto names = [this](const std::string& sort) {
        Open("'tracks':4800,'sort':'" + sort + "'");
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
    EXPECT_NE(names("article','locale':'et"), bytes) << "Z stands before T there";
    EXPECT_FALSE(IsDone("{'command':'plug','locale':'et','sort':'bytes'}"));
    EXPECT_FALSE(IsDone("{'command':'plug','locale':'articel'}"));
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

TEST_F(CharacterTest, TheSameSeedShufflesAlike) {
    const auto shuffled = [this](const std::string& seed) {
        Open("'seed':" + seed);
        EXPECT_EQ(Select(DEV_MGR_CATEGORY_TRACK, 0), DEV_MGR_SUCCESS);
        const std::string player = "'handle':" + std::to_string(dh) + "}";
        EXPECT_TRUE(IsDone("{'command':'player','shuffle':'tracks'," + player));
        return Do("{'command':'queue'," + player)["tracks"];
    };
    const Json::Value first = shuffled("7");
    EXPECT_EQ(shuffled("7"), first);
    EXPECT_NE(shuffled("8"), first);
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

}  // namespace
}  // namespace DeviceSimulator::Test
