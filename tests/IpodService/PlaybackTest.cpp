// Playback, settings, and what is playing: the calls made, their results and log lines, and what methods
// make of them.

#include <cstring>
#include <functional>

#include "tests/IpodService/ManagerFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class PlaybackTest : public ManagerTest {
  protected:
    PlaybackTest() { Connect(); }
};

TEST_F(PlaybackTest, WrappersPassTheirArgumentsAndTurnCodesIntoOutcomes) {
    const char* const stop = "eDevMgriPodStop";
    const struct {
        std::function<i32(IpodManager&)> operation;
        std::string call;
        const char* reported = nullptr;  ///< in place of the call's name when it fails
    } cases[] = {
        {[](auto& m) { return m.Play(); }, "eDevMgriPodPlay()"},
        {[](auto& m) { return m.Pause(); }, "eDevMgriPodPause()"},
        {[](auto& m) { return m.Stop(); }, "eDevMgriPodStop()"},
        {[](auto& m) { return m.TrackFastForward(1); }, "eDevMgriPodFastForwardRewindStart(0)", stop},
        {[](auto& m) { return m.TrackFastForward(0); }, "eDevMgriPodFastForwardRewindStop()", stop},
        {[](auto& m) { return m.TrackRewind(1); }, "eDevMgriPodFastForwardRewindStart(1)", stop},
        {[](auto& m) { return m.TrackRewind(0); }, "eDevMgriPodFastForwardRewindStop()", stop},
        {[](auto& m) { return m.NextTrack(); }, "eDevMgriPodPlayNextPreviousTrack(0)"},
        {[](auto& m) { return m.PreviousTrack(); }, "eDevMgriPodPlayNextPreviousTrack(1)"},
        {[](auto& m) { return m.SetShuffle(E_DEVMGR_IPOD_SHUFFLE_ALBUMS); },
         "eDevMgriPodSetShuffleSetting(2)"},
        {[](auto& m) { return m.SetRepeat(E_DEVMGR_IPOD_REPEAT_ONE); }, "eDevMgriPodSetRepeatSetting(1)"},
        {[](auto& m) { return m.SetMaxCurrent(0); }, "eDevMgriPodSetMaxCurrent(500)"},
        {[](auto& m) { return m.SetMaxCurrent(2000); }, "eDevMgriPodSetMaxCurrent(1000)"},
        {[](auto& m) { return m.SetVolume(300); }, "eDevmgriPodSetVolume(1,255)"},
        {[](auto& m) { return m.SetVolume(-5); }, "eDevmgriPodSetVolume(0,0)"},
        {[](auto& m) { return m.SetInternalBatteryChargeState(-7); },
         "eDevMgriPodSetInternalBatteryChargeState(1)"},
        {[](auto& m) { return m.GetVolume(); }, "eDevmgriPodGetVolume()"},
        {[](auto& m) { return m.GetBatteryPowerState(); }, "eDevMgriPodGetBatteryPowerState()"},
        {[](auto& m) { return m.GetNowPlayingAppName(); }, "eDevMgriPodGetNowPlayingAppname()"},
    };
    for (const auto& [operation, call, reported] : cases) {
        const std::string name = call.substr(0, call.find('('));
        m_simulator.Fail(name, DEV_MGR_SUCCESS, 1);
        m_simulator.ClearCalls();
        TakeLog();
        EXPECT_EQ(operation(*m_manager), 0) << call;
        EXPECT_THAT(TakeCalls(), ElementsAre(call));
        EXPECT_THAT(TakeLog(), HasSubstr("[INFO ] " + name + "\n"));
        m_simulator.Fail(name, DEV_MGR_DEVICE_NOT_RESPONDING, 1);
        EXPECT_EQ(operation(*m_manager), 1 - DEV_MGR_DEVICE_NOT_RESPONDING) << call;
        EXPECT_THAT(TakeLog(), HasSubstr("[WARN ] Return from " + (reported ? reported : name) +
                                         " is :DEV_MGR_DEVICE_NOT_RESPONDING\n"));
        m_simulator.ClearScripts();
    }
}

TEST_F(PlaybackTest, ButtonsDoWhatTheStatusLeavesToDo) {
    const struct {
        u32 status;
        const char* play;  ///< the answer
        std::size_t selected;
        std::size_t played;
        const char* pause;
        const char* toggle;  ///< the last call
    } cases[] = {{E_DEVMGR_IPOD_PLAY_PLAYING, "null", 0, 0, "true", "eDevMgriPodPause()"},
                 {E_DEVMGR_IPOD_PLAY_PAUSED, "true", 0, 1, "false", "eDevMgriPodPlay()"},
                 {E_DEVMGR_IPOD_PLAY_STOPPED, "true", 1, 1, "true", "eDevMgriPodPlay()"},
                 {E_DEVMGR_IPOD_PLAY_FAST_FORWARD, "null", 0, 0, "true", "eDevMgriPodPause()"},
                 {E_DEVMGR_IPOD_PLAY_FAST_REWIND, "null", 0, 0, "true", "eDevMgriPodPause()"},
                 {E_DEVMGR_IPOD_PLAY_UNKNOWN, "true", 0, 1, "true", "eDevMgriPodPause()"}};
    m_standIns.eDevMgriPodPause = m_standIns.eDevMgriPodPlay = Answering(DEV_MGR_SUCCESS);
    const auto text = [](const Json::Value& result) {
        return result.isNull() ? "null" : result["success"].asString();
    };
    for (const auto& [status, play, selected, played, pause, toggle] : cases) {
        m_standIns.eDevMgriPodGetPlayStatus = Giving(status);
        UseStandIns();
        m_simulator.ClearCalls();
        EXPECT_EQ(text(Result(&Handler::Play)), play) << status;
        EXPECT_EQ(m_simulator.Calls("eDevMgriPodSelectCategorizedIndex").size(), selected) << status;
        EXPECT_EQ(m_simulator.Calls("eDevMgriPodPlay").size(), played) << status;
        EXPECT_EQ(text(Result(&Handler::Pause)), pause) << status;
        EXPECT_EQ(m_simulator.Calls("eDevMgriPodPause").size(), pause[0] == 't' ? 1u : 0u) << status;
        EXPECT_EQ(Result(&Handler::PlayPause)["success"], true);
        EXPECT_EQ(TakeCalls().back(), toggle) << status;
    }
}

TEST_F(PlaybackTest, ABusyDeviceIsAskedForItsStateAgain) {
    const struct {
        const char* call;
        std::function<i32(IpodManager&)> operation;
        int pause;  ///< in milliseconds, before the second time
    } cases[] = {
        {"eDevMgriPodGetPlayStatus", [](auto& m) { return m.IsStopped() ? 0 : 1; }, 400},
        {"eDevMgriPodGetRepeatSetting", [](auto& m) { return m.GetRepeat(); }, 500},
        {"eDevMgriPodGetShuffleSetting", [](auto& m) { return m.GetShuffle(); }, 500},
        {"eDevMgriPodGetNumPlayingTracks", [](auto& m) { return i32(m.GetNowPlayingIndex().count); }, 500},
        {"eDevMgriPodGetNumPlayingTracks", [](auto& m) { return m.GetNowPlayingList(); }, 0}};
    for (const auto& [call, operation, pause] : cases) {
        m_simulator.Fail(call, DEV_MGR_IAP_APP_BUSY, 1);
        m_simulator.ClearCalls();
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(operation(*m_manager), 0) << call;
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(pause));
        EXPECT_EQ(m_simulator.Calls(call).size(), 2u);
        const std::string warning = "[WARN ] " + std::string(call) + " - DEV_MGR_IAP_APP_BUSY\n";
        EXPECT_EQ(TakeLog().find(warning) != std::string::npos, pause > 0) << call;
    }
    // Other calls are not repeated.
    m_simulator.Fail("eDevMgriPodPlay", DEV_MGR_IAP_APP_BUSY, 1);
    EXPECT_EQ(m_manager->Play(), 1 - DEV_MGR_IAP_APP_BUSY);
}

TEST_F(PlaybackTest, PlayingOpensTheSessionThatIsMissing) {
    for (const bool opens : {true, false}) {
        m_manager->CloseDevice();
        ASSERT_TRUE(StepUntil(ConnectionState::Connected));
        if (!opens) {
            m_simulator.Fail("eDevMgriPodOpenMdBrowseSession", DEV_MGR_OPEN_MD_BROWSE_SESSION_FAILED);
        }
        m_simulator.ClearCalls();
        EXPECT_EQ(m_manager->GetHasPlayableData(), opens);
        EXPECT_EQ(m_manager->PlayFirstTrack(), opens ? 0 : 1);
        EXPECT_EQ(m_simulator.Calls("eDevMgriPodOpenMdBrowseSession").size(), opens ? 1u : 2u);
    }
}

TEST_F(PlaybackTest, TheFirstTrackIsPlayedEvenWhenItCouldNotBeSelected) {
    m_simulator.Fail("eDevMgriPodSelectCategorizedIndex", DEV_MGR_INVALID_CATEGORY_SELECTION, 1);
    m_simulator.Fail("eDevMgriPodPlay", DEV_MGR_SUCCESS, 1);
    EXPECT_EQ(m_manager->PlayFirstTrack(), 0);
    EXPECT_THAT(TakeCalls(), ElementsAre("eDevMgriPodGetNumItems(-1,0,32)",
                                         "eDevMgriPodSelectCategorizedIndex(32,0)", "eDevMgriPodPlay()"));
    // Counts that are no counts: nothing to play. The count's own result is of no interest.
    for (const u32 count : {0u, 0x80000000u, 0xFFFFFFFFu}) {
        m_standIns.eDevMgriPodGetNumItems = [count](u32, u32, i32, u32, u32, u32* out) {
            *out = count;
            return DEV_MGR_SUCCESS;
        };
        UseStandIns();
        EXPECT_EQ(m_manager->PlayFirstTrack(), 1) << count;
        EXPECT_FALSE(m_manager->GetHasPlayableData());
    }
}

TEST_F(PlaybackTest, TrackInfoComesFromFourQueriesAndSurvivesTheirFailure) {
    TrackMetadataRecord record;
    std::memset(&record, 'T', sizeof record);
    std::strcpy(record.album, "Album");
    std::strcpy(record.artist, "caf\xE9!");
    m_standIns.eDevMgriPodGetNumPlayingTracks = Giving(12u, 4u);
    m_standIns.eDevMgriPodGetPlayingTrackMetaData = Giving(record);
    m_standIns.eDevMgriPodGetPlayingTrackElapsedAndTotaltime = Giving(7u, 9u);
    m_standIns.eDevMgriPodGetPlayStatus = Giving(u32{E_DEVMGR_IPOD_PLAY_FAST_FORWARD});
    UseStandIns();
    m_manager->RequestPlayStatus();
    m_manager->UpdatePlayStatus();
    EXPECT_THAT(m_notifications.Take(),
                ElementsAre("track 1 4/12 " + std::string(255, 'T') + "|Album|caf\xE9! 7/9"));
    EXPECT_THAT(TakeCalls(), ElementsAre("eDevMgriPodGetPlayStatus()", "eDevMgriPodGetNumPlayingTracks()",
                                         "eDevMgriPodGetPlayingTrackMetaData()",
                                         "eDevMgriPodGetPlayingTrackElapsedAndTotaltime()"));
    const Json::Value onTheWire = Result(&Handler::GetCurrentTrackInfo)["trackInfo"];
    m_notifications.Take();
    m_manager->UpdatePlayStatus();
    EXPECT_THAT(m_notifications.Take(), testing::SizeIs(1)) << "what the answer leaves out follows";
    EXPECT_EQ(onTheWire["trackArtist"].asString(), "caf\xEF\xBF\xBD!");
    m_simulator.SetStandIns({});
    for (const char* name :
         {"eDevMgriPodGetPlayStatus", "eDevMgriPodGetNumPlayingTracks", "eDevMgriPodGetPlayingTrackMetaData",
          "eDevMgriPodGetPlayingTrackElapsedAndTotaltime"}) {
        m_simulator.Fail(name, DEV_MGR_DEVICE_NOT_RESPONDING);
    }
    m_manager->RequestPlayStatus();
    m_manager->UpdatePlayStatus();
    EXPECT_THAT(m_notifications.Take(), ElementsAre("track 0 0/0 || 0/0"));
}

TEST_F(PlaybackTest, SettingsAreAnsweredAsReadBack) {
    EXPECT_EQ(Result(&Handler::SetRepeatMode, "{'mode':'current'}")["mode"], "current");
    m_manager->SetShuffle(E_DEVMGR_IPOD_SHUFFLE_ALBUMS);
    EXPECT_EQ(Result(&Handler::IsShuffleEnabled)["enabled"], true);
    EXPECT_EQ(Result(&Handler::EnableShuffle, "{'enable':0}")["enabled"], false);
}

TEST_F(PlaybackTest, ANowPlayingListThatLiesIsReadWithinItsArray) {
    for (const auto& [counted, written] : {std::pair(2u, 0xFFFFFFFFu), {0xFFFFFFFFu, 2u}}) {
        m_standIns.eDevMgriPodGetNumPlayingTracks = Giving(counted, 0u);
        m_standIns.eDevMgriPodGetPlayingList = [claim = written](u32, u32, u32, u32* count,
                                                                 BrowseItem* items) {
            std::memset(items, 'n', sizeof(BrowseItem) * 2);
            *count = claim;
            return DEV_MGR_SUCCESS;
        };
        UseStandIns();
        EXPECT_EQ(m_manager->GetNowPlayingList(), 0);
        EXPECT_THAT(TakeLog(), HasSubstr("[INFO ] Number of tracks returned are 2\n"));
    }
}

}  // namespace
