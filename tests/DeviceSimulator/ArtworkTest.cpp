// Covers of every kind, and the rate that the capture device offers.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>

#include "DeviceSimulator/ArtworkVariant.h"
#include "DeviceSimulator/PictureCodec.h"
#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

constexpr std::uint32_t kBlockBytes = 0x200000;

TEST(ArtworkVariants, AreWhatTheirNamesSay) {
    TrackInfo track;
    track.artist = "a";
    track.album = "b";
    const auto make = [&](ArtworkVariant variant) { return ApplyArtworkVariant(variant, nullptr, track); };
    EXPECT_EQ(make(ArtworkVariant::AsIs), nullptr);
    EXPECT_EQ(make(ArtworkVariant::None), nullptr);
    const struct {
        ArtworkVariant variant;
        PictureSize size;
    } good[] = {{ArtworkVariant::Narrow, {90, 480}},
                {ArtworkVariant::Huge, {2000, 2000}},
                {ArtworkVariant::Limit, {320, 320}}};
    for (const auto& expected : good) {
        const auto picture = make(expected.variant);
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ((PictureSize{picture->width, picture->height}), expected.size);
        EXPECT_LE(picture->bytes.size(), kBlockBytes);
        const auto header = ReadJpegHeader(picture->bytes);
        ASSERT_TRUE(header);
        EXPECT_EQ(header->size, expected.size);
    }
    const auto whole = make(ArtworkVariant::Limit);
    const auto half = ApplyArtworkVariant(ArtworkVariant::Truncated, whole, track);
    EXPECT_EQ(half->bytes.size(), whole->bytes.size() / 2);
    EXPECT_TRUE(ReadJpegHeader(half->bytes));
    EXPECT_FALSE(ReadJpegHeader(make(ArtworkVariant::NotJpeg)->bytes));
    EXPECT_EQ(FindArtworkVariant("narrow"), ArtworkVariant::Narrow);
    EXPECT_FALSE(FindArtworkVariant("Narrow"));
}

using ArtworkTest = SimulatorTest;

TEST_F(ArtworkTest, IsInProgressForAWhileAfterATrackBegins) {
    OpenPlayer();
    u32 size = kBlockBytes;
    u32 block = 0;
    ASSERT_EQ(eDevMgrAllocateSharedMemory(ph, &size, &block), kSuccess);
    const auto fetch = [&] {
        u32 height = 320;
        u32 width = 480;
        return eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, &height, &width, block);
    };
    ASSERT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    Simulator::Instance().SetArtwork(ArtworkVariant::Limit, 500ms);
    EXPECT_EQ(fetch(), u32{kArtworkInProgress});
    clock->Move(499ms);
    EXPECT_EQ(fetch(), u32{kArtworkInProgress});
    clock->Move(1ms);
    EXPECT_EQ(fetch(), kSuccess);
    ASSERT_EQ(eDevMgriPodPlayNextPreviousTrack(ph, dh, 0), kSuccess);
    EXPECT_EQ(fetch(), u32{kArtworkInProgress});
    Simulator::Instance().SetArtwork(ArtworkVariant::None);
    EXPECT_EQ(fetch(), u32{kArtworkNotPresent});
}

TEST_F(ArtworkTest, TheCaptureRateIsThereBeforeItsEventIsHeard) {
    std::string folder = std::filesystem::temp_directory_path() / "capture-rate-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    setenv("DEVICE_SIMULATOR_AUDIO", folder.c_str(), 1);
    OpenPlayer();
    ASSERT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    Simulator::Instance().Drain();
    u32 told = 0;
    for (const DeviceEvent& event : EventRecorder::Instance().Take(ph))
        if (event.words[0] == kSampleRate)
            told = event.words[1];
    u32 offered = 0;
    std::ifstream(folder + "/capture.rate") >> offered;
    EXPECT_NE(told, 0U);
    EXPECT_EQ(offered, told);
    // What a test fires is told, and is not the player's.
    Simulator::Instance().Fire(MakeEvent({kSampleRate, 12345}));
    Simulator::Instance().Drain();
    std::ifstream(folder + "/capture.rate") >> offered;
    EXPECT_EQ(offered, told);
    unsetenv("DEVICE_SIMULATOR_AUDIO");
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace DeviceSimulator::Test
