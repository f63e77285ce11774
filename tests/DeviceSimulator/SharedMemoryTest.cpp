#include <algorithm>

#include "DeviceSimulator/Artwork.h"
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
        EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), kSuccess);
        EXPECT_EQ(size, wanted);
        EXPECT_NE(block, 0U);
        EXPECT_LE(std::uint64_t{block} + size, std::uint64_t{1} << 32U);
        return block;
    }
};

TEST_F(SharedMemoryTest, BlocksAreWritableAndBelongToTheirProcess) {
    const u32 block = Allocate(0x200000);
    EXPECT_TRUE(std::all_of(Bytes(block), Bytes(block) + 0x200000, [](u8 byte) { return byte == 0; }));
    std::fill_n(Bytes(block), 0x200000, u8{1});
    u32 other = 0;
    ASSERT_EQ(eDevMgrRegisterProcess(&other, EventRecorder::Callback), kSuccess);
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(other, block), u32{kWrongSharedMemory});
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(ph, block + 1), u32{kWrongSharedMemory});
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(ph, 0), u32{kWrongSharedMemory});
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(ph, block), kSuccess);
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(ph, block), u32{kWrongSharedMemory});
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(0, block), u32{kProcessNotRegistered});
}

TEST_F(SharedMemoryTest, SizesAndNumbersAreBounded) {
    for (u32 size : {0U, SharedMemory::kLargestBlock + 1, UINT32_MAX}) {
        u32 block = 7;
        EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), u32{kWrongSharedMemorySize});
        EXPECT_EQ(block, 7U);
    }
    for (std::size_t i = 0; i < SharedMemory::kMostBlocks; ++i) {
        Allocate(1);
    }
    u32 size = 1;
    u32 block = 0;
    EXPECT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), u32{kMemoryError});
    EXPECT_EQ(eDevMgrDeRegisterProcess(ph), kSuccess);
    ASSERT_EQ(eDevMgrRegisterProcess(&ph, EventRecorder::Callback), kSuccess);
    Allocate(1);
}

TEST_F(SharedMemoryTest, ArtworkStaysInsideTheBlock) {
    const Picture picture{{1, 2, 3, 4}, 2, 2};
    struct Case {
        std::size_t block;
        const Picture* picture;
        u32 result;
        std::vector<u8> expected;  // of ten bytes, before which all are 9
    };
    const Case cases[] = {
        {10, &picture, kSuccess, {1, 2, 3, 4, 0, 0, 0, 0, 9, 9}},
        {6, &picture, kSuccess, {1, 2, 3, 4, 0, 0, 9, 9, 9, 9}},
        {4, &picture, kSuccess, {1, 2, 3, 4, 9, 9, 9, 9, 9, 9}},
        {3, &picture, kWrongSharedMemorySize, {9, 9, 9, 9, 9, 9, 9, 9, 9, 9}},
        {10, nullptr, kArtworkNotPresent, {9, 9, 9, 9, 9, 9, 9, 9, 9, 9}},
    };
    for (const Case& c : cases) {
        std::vector<u8> bytes(10, 9);
        PictureSize size;
        EXPECT_EQ(DeliverPicture(c.picture, std::span(bytes).first(c.block), size), c.result);
        EXPECT_EQ(bytes, c.expected) << c.block;
        EXPECT_EQ(size.height, c.result == kSuccess ? 2U : 0U);
    }
}

TEST_F(SharedMemoryTest, TheCoverIsThatOfThePlayingTrack) {
    OpenPlayer();
    const u32 block = Allocate(100);
    u32 height = 320;
    u32 width = 480;
    const auto art = [&] { return eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, &height, &width, block); };
    EXPECT_EQ(art(), u32{kNotPlaying});
    ASSERT_EQ(eDevMgriPodSelectCategorizedIndex(ph, dh, kTrack, 0), kSuccess);
    EXPECT_EQ(art(), u32{kArtworkNotPresent});
    ASSERT_EQ(eSelectNowPlayingIndex(ph, dh, 7), kSuccess);
    EXPECT_EQ(height, 320U);
    EXPECT_EQ(art(), kSuccess);
    EXPECT_EQ(height, FakeLibrary::kCoverHeight);
    EXPECT_EQ(width, 2U);
    EXPECT_EQ(Bytes(block)[2], 2U);
    EXPECT_EQ(eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, &height, &width, 0), u32{kWrongSharedMemory});
    EXPECT_EQ(eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, nullptr, &width, block), u32{kWrongParameters});
}

}  // namespace
}  // namespace DeviceSimulator::Test
