// Playback, settings, and what is playing: the calls made, their results and log lines.

#include <cstring>
#include <functional>

#include "tests/IpodService/ManagerFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PlaybackTest : public ManagerTest {
  protected:
    PlaybackTest() { Connect(); }

    void AnswerStatus(u32 status) {
        m_standIns.eDevMgriPodGetPlayStatus = [status](u32, u32, u32* out) -> u32 {
            *out = status;
            return 1;
        };
        m_simulator.SetStandIns(m_standIns);
    }

    DeviceSimulator::StandIns m_standIns;
};

TEST_F(PlaybackTest, WrappersPassTheirArgumentsAndTurnCodesIntoOutcomes) {
    const struct {
        std::function<i32(IpodManager&)> operation;
        const char* call;
        const char* failure;  ///< the name in the failure's report
    } cases[] = {
        {[](IpodManager& m) { return m.Play(); }, "eDevMgriPodPlay()", "eDevMgriPodPlay"},
        {[](IpodManager& m) { return m.Pause(); }, "eDevMgriPodPause()", "eDevMgriPodPause"},
        {[](IpodManager& m) { return m.Stop(); }, "eDevMgriPodStop()", "eDevMgriPodStop"},
        {[](IpodManager& m) { return m.TrackFastForward(true); }, "eDevMgriPodFastForwardRewindStart(0)",
         "eDevMgriPodStop"},
        {[](IpodManager& m) { return m.TrackFastForward(false); }, "eDevMgriPodFastForwardRewindStop()",
         "eDevMgriPodStop"},
        {[](IpodManager& m) { return m.TrackRewind(true); }, "eDevMgriPodFastForwardRewindStart(1)",
         "eDevMgriPodStop"},
        {[](IpodManager& m) { return m.TrackRewind(false); }, "eDevMgriPodFastForwardRewindStop()",
         "eDevMgriPodStop"},
        {[](IpodManager& m) { return m.NextTrack(); }, "eDevMgriPodPlayNextPreviousTrack(0)",
         "eDevMgriPodPlayNextPreviousTrack"},
        {[](IpodManager& m) { return m.PreviousTrack(); }, "eDevMgriPodPlayNextPreviousTrack(1)",
         "eDevMgriPodPlayNextPreviousTrack"},
        {[](IpodManager& m) { return m.SetShuffle(2); }, "eDevMgriPodSetShuffleSetting(2)",
         "eDevMgriPodSetShuffleSetting"},
        {[](IpodManager& m) { return m.SetRepeat(1); }, "eDevMgriPodSetRepeatSetting(1)",
         "eDevMgriPodSetRepeatSetting"},
        {[](IpodManager& m) { return m.SetMaxCurrent(0); }, "eDevMgriPodSetMaxCurrent(500)",
         "eDevMgriPodSetMaxCurrent"},
        {[](IpodManager& m) { return m.SetMaxCurrent(2000); }, "eDevMgriPodSetMaxCurrent(1000)",
         "eDevMgriPodSetMaxCurrent"},
        {[](IpodManager& m) { return m.SetMaxCurrent(750); }, "eDevMgriPodSetMaxCurrent(750)",
         "eDevMgriPodSetMaxCurrent"},
        {[](IpodManager& m) { return m.SetVolume(300); }, "eDevmgriPodSetVolume(1,255)",
         "eDevmgriPodSetVolume"},
        {[](IpodManager& m) { return m.SetVolume(1); }, "eDevmgriPodSetVolume(1,1)", "eDevmgriPodSetVolume"},
        {[](IpodManager& m) { return m.SetVolume(-5); }, "eDevmgriPodSetVolume(0,0)", "eDevmgriPodSetVolume"},
        {[](IpodManager& m) { return m.SetInternalBatteryChargeState(-7); },
         "eDevMgriPodSetInternalBatteryChargeState(1)", "eDevMgriPodSetInternalBatteryChargeState"},
        {[](IpodManager& m) { return m.GetVolume(); }, "eDevmgriPodGetVolume()", "eDevmgriPodGetVolume"},
        {[](IpodManager& m) { return m.GetBatteryPowerState(); }, "eDevMgriPodGetBatteryPowerState()",
         "eDevMgriPodGetBatteryPowerState"},
        {[](IpodManager& m) { return m.GetNowPlayingAppName(); }, "eDevMgriPodGetNowPlayingAppname()",
         "eDevMgriPodGetNowPlayingAppname"},
    };
    for (const auto& testCase : cases) {
        const std::string name(testCase.call, std::strchr(testCase.call, '('));
        m_simulator.Fail(name, 1, 1);
        m_simulator.ClearCalls();
        m_log.Take();
        EXPECT_EQ(testCase.operation(*m_manager), 0) << testCase.call;
        EXPECT_THAT(TakeCalls(), ElementsAre(testCase.call));
        EXPECT_THAT(m_log.Take(), HasSubstr("[INFO ] " + name + "\n"));
        m_simulator.Fail(name, 54, 1);
        EXPECT_EQ(testCase.operation(*m_manager), -53) << testCase.call;
        EXPECT_THAT(m_log.Take(), HasSubstr(std::string("[WARN ] Return from ") + testCase.failure +
                                            " is :DEV_MGR_DEVICE_NOT_RESPONDING\n"));
        m_simulator.ClearScripts();
    }
}

TEST_F(PlaybackTest, ToggleFollowsTheStatus) {
    const struct {
        u32 status;
        const char* call;
    } cases[] = {{0, "eDevMgriPodPause()"}, {1, "eDevMgriPodPlay()"},  {2, "eDevMgriPodPlay()"},
                 {3, "eDevMgriPodPause()"}, {4, "eDevMgriPodPause()"}, {5, "eDevMgriPodPause()"}};
    for (const auto& testCase : cases) {
        AnswerStatus(testCase.status);
        m_simulator.Fail("eDevMgriPodPause", 1);
        m_simulator.Fail("eDevMgriPodPlay", 1);
        m_simulator.ClearCalls();
        EXPECT_TRUE(m_manager->TogglePlayPause());
        const std::vector<std::string> calls = TakeCalls();
        EXPECT_EQ(calls.back(), testCase.call) << testCase.status;
        EXPECT_EQ(calls.size(), testCase.status == 2 ? 4u : 2u);
    }
    m_simulator.ClearScripts();
    m_simulator.SetStandIns({});
    m_simulator.Fail("eDevMgriPodGetPlayStatus", 54);
    m_simulator.Fail("eDevMgriPodPause", 54);
    EXPECT_FALSE(m_manager->TogglePlayPause());
    EXPECT_EQ(m_manager->GetPlayStatus(), 5u);
    EXPECT_FALSE(m_manager->IsPlaying() || m_manager->IsPaused() || m_manager->IsStopped());
}

TEST_F(PlaybackTest, ABusyDeviceIsAskedAgain) {
    m_simulator.Fail("eDevMgriPodGetPlayStatus", 94, 2);
    m_log.Take();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(m_manager->GetPlayStatus(), 2u);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(800));
    EXPECT_EQ(m_log.Take(),
              "[INFO ] eDevMgriPodGetPlayStatus\n[WARN ] eDevMgriPodGetPlayStatus - DEV_MGR_IAP_APP_BUSY\n"
              "[WARN ] eDevMgriPodGetPlayStatus - DEV_MGR_IAP_APP_BUSY\n"
              "[DEBUG] iPod play status is E_DEVMGR_IPOD_PLAY_STOPPED\n");
    // Other calls are not repeated.
    m_simulator.Fail("eDevMgriPodPlay", 94, 1);
    EXPECT_EQ(m_manager->Play(), 1 - 94);
}

TEST_F(PlaybackTest, TheFirstTrackIsPlayedEvenWhenItCouldNotBeSelected) {
    m_simulator.Fail("eDevMgriPodSelectCategorizedIndex", 50, 1);
    m_simulator.Fail("eDevMgriPodPlay", 1, 1);
    m_log.Take();
    EXPECT_EQ(m_manager->PlayFirstTrack(), 0);
    EXPECT_THAT(TakeCalls(), ElementsAre("eDevMgriPodGetNumItems(-1,0,32)",
                                         "eDevMgriPodSelectCategorizedIndex(32,0)", "eDevMgriPodPlay()"));
    const std::string log = m_log.Take();
    EXPECT_THAT(log, HasSubstr("[INFO ] PlayFirstTrack eDevMgriPodSelectCategorizedIndex - itemCount = "));
    EXPECT_THAT(log,
                HasSubstr("[WARN ] Return from eDevMgriPodSelectCategorizedIndex is :"
                          "DEV_MGR_INVALID_CATEGORY_SELECTION\n[INFO ] PlayFirstTrack eDevMgriPodPlay\n"));
    // Counts that are no counts: nothing to play. The count's own result is of no interest.
    for (const u32 count : {0u, 0x80000000u, 0xFFFFFFFFu}) {
        m_standIns.eDevMgriPodGetNumItems = [count](u32, u32, i32, u32, u32, u32* out) -> u32 {
            *out = count;
            return 1;
        };
        m_simulator.SetStandIns(m_standIns);
        EXPECT_EQ(m_manager->PlayFirstTrack(), 1) << count;
        EXPECT_FALSE(m_manager->GetHasPlayableData());
    }
    m_simulator.SetStandIns({});
    m_simulator.Fail("eDevMgriPodGetNumItems", 54);
    EXPECT_EQ(m_manager->PlayFirstTrack(), 1);
}

TEST_F(PlaybackTest, PlayableDataOpensTheSessionThatIsMissing) {
    m_manager->CloseBrowseSession();
    m_manager->CloseDevice();
    m_simulator.ClearCalls();
    m_log.Take();
    EXPECT_FALSE(m_manager->GetHasPlayableData());
    EXPECT_THAT(
        m_log.Take(),
        HasSubstr(
            "[WARN ] eDevMgriPodOpenMdBrowseSession\n[WARN ] Return from eDevMgriPodOpenMdBrowseSession "
            "is :DEV_MGR_INVALID_DEVICE_HANDLE\n[INFO ] eDevMgriPodGetNumItems\n[WARN ] "
            "GetHasPlayableData - eRet = 52, itemCount = 0\n"));
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
}

TEST_F(PlaybackTest, TrackInfoComesFromFourQueriesAndSurvivesTheirFailure) {
    m_standIns.eDevMgriPodGetNumPlayingTracks = [](u32, u32, u32* count, u32* index) -> u32 {
        *count = 12;
        *index = 4;
        return 1;
    };
    m_standIns.eDevMgriPodGetPlayingTrackMetaData = [](u32, u32, TrackMetadataRecord* record) -> u32 {
        std::memset(record, 'C', sizeof *record);
        std::memset(record->title, 'T', sizeof record->title);
        std::strcpy(record->album, "Album");
        std::strcpy(record->artist, "Artist");
        return 1;
    };
    m_standIns.eDevMgriPodGetPlayingTrackElapsedAndTotaltime = [](u32, u32, u32* elapsed, u32* total) -> u32 {
        *elapsed = 7;
        *total = 9;
        return 1;
    };
    AnswerStatus(3);
    m_manager->RequestPlayStatus();
    m_manager->UpdatePlayStatus();
    EXPECT_THAT(m_notifications.Take(),
                ElementsAre("track 1 4/12 " + std::string(255, 'T') + "|Album|Artist 7/9"));
    EXPECT_THAT(TakeCalls(), ElementsAre("eDevMgriPodGetPlayStatus()", "eDevMgriPodGetNumPlayingTracks()",
                                         "eDevMgriPodGetPlayingTrackMetaData()",
                                         "eDevMgriPodGetPlayingTrackElapsedAndTotaltime()"));
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[INFO ] Number of tracks in now playing list = 12\n[INFO ] Index of now "
                          "playing track = 4, i.e. Song no. 5 is now playing.\n"));
    m_simulator.SetStandIns({});
    for (const char* name :
         {"eDevMgriPodGetPlayStatus", "eDevMgriPodGetNumPlayingTracks", "eDevMgriPodGetPlayingTrackMetaData",
          "eDevMgriPodGetPlayingTrackElapsedAndTotaltime"})
        m_simulator.Fail(name, 54);
    m_manager->RequestPlayStatus();
    m_manager->UpdatePlayStatus();
    EXPECT_THAT(m_notifications.Take(), ElementsAre("track 0 0/0 || 0/0"));
    m_manager->UpdateTrackTime();
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
}

TEST_F(PlaybackTest, ReadModesCannotBeToldFromFailures) {
    m_simulator.Fail("eDevMgriPodGetRepeatSetting", 0, 1);
    EXPECT_EQ(m_manager->GetRepeat(), 1);
    m_simulator.Fail("eDevMgriPodGetShuffleSetting", 54, 1);
    EXPECT_EQ(m_manager->GetShuffle(), -53);
    EXPECT_EQ(m_manager->SetShuffle(1), 0);
    EXPECT_EQ(m_manager->GetShuffle(), 1);
    EXPECT_EQ(m_manager->SetRepeat(2), 0);
    EXPECT_EQ(m_manager->GetRepeat(), 2);
    const std::string log = m_log.Take();
    EXPECT_THAT(log, HasSubstr("[INFO ] iPod Shuffle status changed to E_DEVMGR_IPOD_SHUFFLE_TRACKS\n"));
    EXPECT_THAT(log, HasSubstr("[INFO ] iPod Repeat status changed to E_DEVMGR_IPOD_REPEAT_ALL\n"));
}

TEST_F(PlaybackTest, ANowPlayingListThatLiesIsReadWithinItsArray) {
    m_standIns.eDevMgriPodGetNumPlayingTracks = [](u32, u32, u32* count, u32* index) -> u32 {
        *count = 2;
        *index = 0;
        return 1;
    };
    m_standIns.eDevMgriPodGetPlayingList = [](u32, u32, u32, u32* count, BrowseItem* items) -> u32 {
        std::memset(items, 'n', sizeof(BrowseItem) * 2);
        *count = 0xFFFFFFFF;
        return 1;
    };
    m_simulator.SetStandIns(m_standIns);
    EXPECT_EQ(m_manager->GetNowPlayingList(), 0);
    const std::string log = m_log.Take();
    EXPECT_THAT(log, HasSubstr("is now plaing.\n"));
    EXPECT_THAT(log, HasSubstr("[INFO ] Number of tracks returned are 2\n"));
    m_standIns.eDevMgriPodGetNumPlayingTracks = [](u32, u32, u32* count, u32*) -> u32 {
        *count = 0xFFFFFFFF;
        return 1;
    };
    m_standIns.eDevMgriPodGetPlayingList = [](u32, u32, u32, u32* count, BrowseItem*) -> u32 {
        *count = 0;
        return 1;
    };
    m_simulator.SetStandIns(m_standIns);
    EXPECT_EQ(m_manager->GetNowPlayingList(), 0);
    EXPECT_EQ(m_manager->SelectNowPlayingIndex(1u << 30), Outcome(100));
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[INFO ] Return from eSelectNowPlayingIndex is :DEV_MGR_IAP_INVALID_INDEX\n"
                          "[INFO ] Error in selected specified entry.\n"));
}

}  // namespace
