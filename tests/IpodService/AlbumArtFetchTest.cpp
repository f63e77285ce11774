// The two ways to a cover: at once, and from a later pass of the server loop.
#include <optional>
#include <vips/vips8>

#include "IpodService/AlbumArt.h"
#include "tests/IpodService/ManagerFixture.h"
#include "tests/IpodService/TestPictures.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr u32 kGranted = 0x200000;

class AlbumArtFetchTest : public ManagerTest {
  protected:
    AlbumArtFetchTest() {
        m_player.eDevMgriPodGetPlayingTrackAlbumArt = [this](u32, u32, u32* height, u32* width, u32 block) {
            m_asked.push_back({*height, *width, block});
            if (m_code != ResultCode::kSuccess)
                return m_code;
            *height = m_height;
            *width = m_width;
            if (block != 0)
                std::copy(m_bytes.begin(), m_bytes.end(), reinterpret_cast<u8*>(std::uintptr_t{block}));
            return m_code;
        };
        m_player.eDevMgriPodGetNumPlayingTracks = [this](u32, u32, u32* count, u32* index) {
            *count = 10;
            *index = 4;
            return m_positionCode;
        };
        m_simulator.SetStandIns(m_player);
    }

    void Deliver(const PictureBytes& bytes, u32 width, u32 height) {
        m_bytes = bytes;
        m_width = width;
        m_height = height;
        m_code = ResultCode::kSuccess;
    }
    /// What one pass reports after a request for the picture.
    std::vector<std::string> RequestAndPass() {
        EXPECT_EQ(m_manager->RequestDelayedAlbumArt(), 0);
        m_manager->ProcessDelayedAlbumArt();
        return m_notifications.Take();
    }
    bool StillPending() {
        const size_t before = m_asked.size();
        m_manager->ProcessDelayedAlbumArt();
        return m_asked.size() > before;
    }

    struct Asked {
        u32 height;
        u32 width;
        u32 block;
    };
    DeviceSimulator::StandIns m_player;
    std::vector<Asked> m_asked;
    PictureBytes m_bytes;
    u32 m_width = 0;
    u32 m_height = 0;
    u32 m_code = ResultCode::kSuccess;
    u32 m_positionCode = ResultCode::kSuccess;
};

TEST_F(AlbumArtFetchTest, DelayedFetchByOutcome) {
    EXPECT_EQ(m_manager->RequestDelayedAlbumArt(), -1) << "no device";
    Connect();
    const PictureBytes four{'n', 'o', 'n', 'e'};
    struct {
        u32 code;
        u32 width;
        u32 height;
        std::vector<std::string> reported;
        bool pending;
    } const cases[] = {
        {ResultCode::kSuccess, 4, 0, {"art 8 4x0 5"}, false},
        {ResultCode::kSuccess, 1, 2, {"art 8 1x2 5"}, false},
        {ResultCode::kSuccess, 0, 0, {"art 0 0x0 5"}, false},
        {ResultCode::kSuccess, 32768, 65536, {"art 0 0x0 5"}, false},
        {ResultCode::kNone, 4, 0, {"art 0 0x0 5"}, false},
        {70, 4, 0, {}, true},
        {71, 4, 0, {}, false},
        {72, 4, 0, {}, false},
        {73, 4, 0, {}, false},
        {74, 4, 0, {}, false},
        {75, 4, 0, {}, true},
        {ResultCode::kAppBusy, 4, 0, {}, true},
    };
    for (const auto& [code, width, height, reported, pending] : cases) {
        SCOPED_TRACE(testing::Message() << "code " << code << ", " << width << " x " << height);
        Deliver(four, width, height);
        m_code = code;
        EXPECT_EQ(RequestAndPass(), reported);
        EXPECT_EQ(m_asked.back().height, 320U);
        EXPECT_EQ(m_asked.back().width, 480U);
        EXPECT_EQ(StillPending(), pending);
        m_code = 74;
        m_manager->ProcessDelayedAlbumArt();
    }
    m_positionCode = 52;
    Deliver(four, 4, 0);
    EXPECT_THAT(RequestAndPass(), ElementsAre("art 8 4x0 1")) << "position unknown";
}

TEST_F(AlbumArtFetchTest, TrackInfoThatIsDueGoesFirst) {
    Connect();
    Deliver(PictureBytes(4), 4, 0);
    m_manager->RequestPlayStatus();
    EXPECT_THAT(RequestAndPass(), IsEmpty());
    EXPECT_THAT(m_asked, IsEmpty());
    m_manager->UpdatePlayStatus();
    m_notifications.Take();
    m_manager->ProcessDelayedAlbumArt();
    EXPECT_THAT(m_notifications.Take(), ElementsAre("art 8 4x0 5"));
}

TEST_F(AlbumArtFetchTest, ReadsStayWithinTheGrantedBlock) {
    Connect();
    std::string text;
    u32 width = 0;
    u32 height = 0;
    for (const auto& [reportedWidth, reportedHeight] : {std::pair<u32, u32>{2000, 2000}, {0xFFFFFFFF, 0}}) {
        Deliver(MakeJpeg(640, 640), reportedWidth, reportedHeight);
        EXPECT_EQ(m_manager->GetPlayingTrackAlbumArt(text, width, height), 0);
    }
    EXPECT_EQ(text.size(), (kGranted + 2) / 3 * 4);

    m_manager->FreeShm1();
    m_player.eDevMgrAllocateSharedMemory = [](u32, u32*, u32*) { return ResultCode::kUnknownFailure; };
    m_simulator.SetStandIns(m_player);
    EXPECT_THAT(RequestAndPass(), ElementsAre("art 0 0x0 5")) << "no memory for the block";
    EXPECT_EQ(m_asked.back().block, 0U);
    EXPECT_THAT(m_log.Take(), HasSubstr("Shared memory not alloted. allocate shared memory block 1.\n"));
}

TEST_F(AlbumArtFetchTest, UndecodablePictureGoesOutAsItIsWhenDelayedAndFailsAtOnce) {
    Connect();
    Deliver(PictureBytes(4), 2, 400);
    EXPECT_THAT(RequestAndPass(), ElementsAre("art 2136 2x400 5"));
    EXPECT_THAT(m_log.Take(), HasSubstr("[WARN ] Failed Jpeg Decode\n"));
    EXPECT_FALSE(StillPending());

    std::string text;
    u32 width = 7;
    u32 height = 7;
    EXPECT_THROW(m_manager->GetPlayingTrackAlbumArt(text, width, height), vips::VError);
}

TEST_F(AlbumArtFetchTest, ImmediateFetch) {
    Connect();
    std::string text = "as it was";
    u32 width = 7;
    u32 height = 8;
    const auto untouched = [&] { return text == "as it was" && width == 7 && height == 8; };
    for (u32 code : {0U, 72U, 94U}) {
        m_code = code;
        EXPECT_EQ(m_manager->GetPlayingTrackAlbumArt(text, width, height), static_cast<i32>(code));
        EXPECT_TRUE(untouched());
    }
    EXPECT_THAT(m_log.Take(), HasSubstr("[INFO ] Return from eDevMgriPodGetPlayingTrackAlbumArt is :"));
    Deliver({}, 0, 0);
    EXPECT_EQ(m_manager->GetPlayingTrackAlbumArt(text, width, height), 0);
    EXPECT_TRUE(untouched());
    EXPECT_THAT(m_notifications.Take(), IsEmpty());

    Deliver(MakeJpeg(640, 640), 640, 640);
    EXPECT_EQ(m_manager->GetPlayingTrackAlbumArt(text, width, height), 0);
    EXPECT_EQ(width, 100U);
    EXPECT_EQ(height, 100U);
    EXPECT_EQ(DecodeBase64Jpeg(text)->width, 106);
}

}  // namespace
