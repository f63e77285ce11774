// Blocks of shared memory, the covers that are put into them, and the rate that the capture device offers.
#include <algorithm>
#include <cstdlib>

#include "DeviceSimulator/device/Artwork.h"
#include "ScratchFolder.h"
#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

u8* Bytes(u32 block) {
    return reinterpret_cast<u8*>(std::uintptr_t{block});
}

class SharedMemoryTest : public SimulatorTest {
  protected:
    u32 Allocate(u32 size) {
        u32 block = 0;
        const u32 wanted = size;
        EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), DEV_MGR_SUCCESS);
        EXPECT_EQ(size, wanted);
        EXPECT_LE(std::uint64_t{block} + size, std::uint64_t{1} << 32U);
        return block;
    }
};

TEST_F(SharedMemoryTest, BlocksAreBoundedAndBelongToTheirProcess) {
    const u32 large = Allocate(0x200000);
    EXPECT_TRUE(std::all_of(Bytes(large), Bytes(large) + 0x200000, [](u8 byte) { return byte == 0; }));
    std::fill_n(Bytes(large), 0x200000, u8{1});
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(Register(), large), u32{DEV_MGR_WROG_SHARED_MEMORY});
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(ph, large), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(ph, large), u32{DEV_MGR_WROG_SHARED_MEMORY});
    u32 block = 7;
    for (u32 size : {0U, ProcessRegistry::kLargestBlock + 1, UINT32_MAX}) {
        EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), u32{DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY});
        EXPECT_EQ(block, 7U);
    }
    for (std::size_t i = 0; i < ProcessRegistry::kMostBlocks; ++i) {
        Allocate(1);
    }
    u32 size = 1;
    EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), u32{DEV_MGR_MEMORY_ERROR});
    EXPECT_EQ(eDevMgrDeRegisterProcess(ph), DEV_MGR_SUCCESS);
    ph = Register();
    Allocate(1);
    // A bound that is set grants less, until it is taken back.
    EXPECT_TRUE(IsDone("{'command':'memory','largest':4096}"));
    EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &(size = 8192), &block), DEV_MGR_SUCCESS);
    EXPECT_EQ(size, 4096U);
    EXPECT_TRUE(IsDone("{'command':'clear'}"));
    Allocate(8192);
}

TEST_F(SharedMemoryTest, ArtworkStaysInsideTheBlock) {
    const Picture picture{{1, 2, 3, 4}, 2, 2};
    struct Case {
        std::size_t block;
        u32 result;
        std::vector<u8> expected;  // of ten bytes, before which all are 9
    };
    const Case cases[] = {
        {10, DEV_MGR_SUCCESS, {1, 2, 3, 4, 0, 0, 0, 0, 9, 9}},
        {6, DEV_MGR_SUCCESS, {1, 2, 3, 4, 0, 0, 9, 9, 9, 9}},
        {4, DEV_MGR_SUCCESS, {1, 2, 3, 4, 9, 9, 9, 9, 9, 9}},
        {3, DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY, {9, 9, 9, 9, 9, 9, 9, 9, 9, 9}},
    };
    for (const Case& c : cases) {
        std::vector<u8> bytes(10, 9);
        PictureSize size;
        EXPECT_EQ(DeliverPicture(&picture, std::span(bytes).first(c.block), size), c.result);
        EXPECT_EQ(bytes, c.expected) << c.block;
        EXPECT_EQ(size.height, c.result == DEV_MGR_SUCCESS ? 2U : 0U);
    }
}

TEST_F(SharedMemoryTest, TheCoverIsThatOfThePlayingTrackOnceItIsThere) {
    OpenPlayer();
    const u32 block = Allocate(0x200000);
    u32 height = 320;
    u32 width = 480;
    const auto fetch = [&] { return eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, &height, &width, block); };
    EXPECT_EQ(fetch(), u32{DEV_MGR_IAP_NOT_PLAYING_ERROR});
    ASSERT_EQ(eDevMgriPodSelectCategorizedIndex(ph, dh, DEV_MGR_CATEGORY_TRACK, 0), DEV_MGR_SUCCESS);
    EXPECT_EQ(fetch(), u32{DEV_MGR_IAP_ARTWORK_NOT_PRESENT_ERROR});
    ASSERT_EQ(eSelectNowPlayingIndex(ph, dh, 7), DEV_MGR_SUCCESS);
    EXPECT_EQ(fetch(), DEV_MGR_SUCCESS);
    EXPECT_EQ(std::pair(height, width), std::pair(3U, 2U));
    EXPECT_EQ(Bytes(block)[2], 2U);
    EXPECT_EQ(eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, &height, &width, 0),
              u32{DEV_MGR_WROG_SHARED_MEMORY});
    Simulator::Instance().SetArtwork(ArtworkVariant::Limit, 500ms);
    Move(499ms);
    EXPECT_EQ(fetch(), u32{DEV_MGR_IAP_RETRIEVING_ALBUM_ART_IN_PROGRESS});
    Move(1ms);
    EXPECT_EQ(fetch(), DEV_MGR_SUCCESS);
    ASSERT_EQ(eDevMgriPodPlayNextPreviousTrack(ph, dh, DEV_MGR_SKIP_NEXT), DEV_MGR_SUCCESS);
    EXPECT_EQ(fetch(), u32{DEV_MGR_IAP_RETRIEVING_ALBUM_ART_IN_PROGRESS});
}

TEST_F(SharedMemoryTest, TheCaptureRateIsThereBeforeItsEventIsHeard) {
    const ScratchFolder folder;
    setenv("DEVICE_SIMULATOR_AUDIO", folder.Path().c_str(), 1);
    OpenPlayer();
    ASSERT_EQ(eDevMgriPodSelectCategorizedIndex(ph, dh, DEV_MGR_CATEGORY_TRACK, 4), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(),
              "play-context-setting=24 play-track-changed new-track-sample-rate=48000 play-started");
    u32 offered = 0;
    std::ifstream(folder.Path() / "capture.rate") >> offered;
    EXPECT_EQ(offered, 48000U);
    unsetenv("DEVICE_SIMULATOR_AUDIO");
}

}  // namespace
}  // namespace DeviceSimulator::Test
