// The playback and status methods' answers.

#include <json/json.h>

#include "IpodService/IpodRequestHandler.h"
#include "tests/IpodService/ManagerFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Member = bool (CIpodRequestHandler::*)(const Json::Value&, Json::Value&);

class MethodsTest : public ManagerTest {
  protected:
    MethodsTest() { Connect(); }

    Json::Value Call(Member member, const std::string& params = "") {
        Json::Value request;
        const std::string text = R"({"jsonrpc":"2.0","method":"m","id":"seven")" +
                                 (params.empty() ? "" : ",\"params\":" + params) + "}";
        EXPECT_TRUE(Json::Reader().parse(text, request));
        Json::Value response;
        EXPECT_TRUE((m_handler.*member)(request, response));
        EXPECT_EQ(response["jsonrpc"], "2.0");
        EXPECT_EQ(response["id"], "seven");
        EXPECT_TRUE(response.isMember("result"));
        return response["result"];
    }

    std::string Text(Member member, const std::string& params = "") {
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        return Json::writeString(writer, Call(member, params));
    }

    CIpodRequestHandler m_handler{m_manager.get()};
};

TEST_F(MethodsTest, SettingsAreAnsweredAsReadBack) {
    const auto set = &CIpodRequestHandler::SetRepeatMode;
    EXPECT_EQ(Text(set, R"({"mode":"all"})"), R"({"mode":"all"})");
    EXPECT_EQ(Text(set), R"({"mode":"all"})");
    EXPECT_EQ(Text(set, "null"), R"({"mode":"all"})");
    EXPECT_EQ(Text(set, R"({"mode":"current"})"), R"({"mode":"current"})");
    EXPECT_EQ(Text(&CIpodRequestHandler::GetRepeatMode), R"({"mode":"current"})");
    EXPECT_EQ(Text(set, R"({"mode":"ALL"})"), R"({"mode":"off"})");
    EXPECT_EQ(Text(set, R"({"mode":"all"})"), R"({"mode":"all"})");
    EXPECT_EQ(Text(set, "{}"), R"({"mode":"off"})");
    m_simulator.Fail("eDevMgriPodSetRepeatSetting", 54, 1);
    EXPECT_EQ(Text(set, R"({"mode":"all"})"), R"({"mode":"off"})");

    const auto shuffle = &CIpodRequestHandler::EnableShuffle;
    EXPECT_EQ(Text(shuffle, R"({"enable":true})"), R"({"enabled":true})");
    EXPECT_EQ(Text(shuffle), R"({"enabled":true})");
    EXPECT_EQ(Text(shuffle, R"({"enable":0})"), R"({"enabled":false})");
    m_manager->SetShuffle(2);
    EXPECT_EQ(Text(&CIpodRequestHandler::IsShuffleEnabled), R"({"enabled":true})");
    m_simulator.Fail("eDevMgriPodGetShuffleSetting", 54, 1);
    EXPECT_EQ(Text(&CIpodRequestHandler::IsShuffleEnabled), R"({"enabled":false})");
}

TEST_F(MethodsTest, PlayingFollowsTheStatus) {
    const std::string yes = R"({"success":true})";
    const std::string no = R"({"success":false})";
    EXPECT_EQ(Text(&CIpodRequestHandler::Play), yes);  // stopped: the first track
    EXPECT_EQ(m_simulator.Calls("eDevMgriPodSelectCategorizedIndex").size(), 1u);
    EXPECT_EQ(Text(&CIpodRequestHandler::Play), "null");
    EXPECT_EQ(Text(&CIpodRequestHandler::IsTrackPaused), R"({"isPaused":false})");
    EXPECT_EQ(Text(&CIpodRequestHandler::Pause), yes);
    m_simulator.ClearCalls();
    EXPECT_EQ(Text(&CIpodRequestHandler::Pause), no);
    EXPECT_THAT(TakeCalls(), ElementsAre("eDevMgriPodGetPlayStatus()"));
    EXPECT_EQ(Text(&CIpodRequestHandler::IsTrackPaused), R"({"isPaused":true})");
    EXPECT_EQ(Text(&CIpodRequestHandler::Play), yes);  // paused: goes on
    EXPECT_THAT(TakeCalls(), ElementsAre("eDevMgriPodGetPlayStatus()", "eDevMgriPodGetPlayStatus()",
                                         "eDevMgriPodGetPlayStatus()", "eDevMgriPodPlay()"));
    EXPECT_EQ(Text(&CIpodRequestHandler::PlayPause), yes);
    EXPECT_EQ(Text(&CIpodRequestHandler::Next), yes);
    EXPECT_EQ(Text(&CIpodRequestHandler::Previous), yes);
    EXPECT_EQ(Text(&CIpodRequestHandler::PlayFirst), yes);
    m_simulator.Fail("eDevMgriPodPlayNextPreviousTrack", 54, 1);
    EXPECT_EQ(Text(&CIpodRequestHandler::Next), no);
    m_simulator.Fail("eDevMgriPodGetPlayStatus", 54);
    m_simulator.Fail("eDevMgriPodPlay", 1, 1);
    EXPECT_EQ(Text(&CIpodRequestHandler::Play), yes) << "an unknown status is not playing";
}

TEST_F(MethodsTest, ScanningReadsItsFlagWithoutAskingForParams) {
    Call(&CIpodRequestHandler::PlayFirst);
    m_simulator.ClearCalls();
    EXPECT_EQ(Text(&CIpodRequestHandler::FastForwardSong, R"({"enable":true})"), R"({"enabled":true})");
    EXPECT_EQ(Text(&CIpodRequestHandler::FastForwardSong), R"({"enabled":true})");
    EXPECT_EQ(Text(&CIpodRequestHandler::RewindSong, R"({"enable":true})"), R"({"enabled":true})");
    EXPECT_EQ(Text(&CIpodRequestHandler::RewindSong, "{}"), R"({"enabled":true})");
    EXPECT_THAT(TakeCalls(),
                ElementsAre("eDevMgriPodFastForwardRewindStart(0)", "eDevMgriPodFastForwardRewindStop()",
                            "eDevMgriPodFastForwardRewindStart(1)", "eDevMgriPodFastForwardRewindStop()"));
}

TEST_F(MethodsTest, TheCurrentTrackHasFixedMembersAndAsksForTheNotification) {
    const Json::Value result = Call(&CIpodRequestHandler::GetCurrentTrackInfo);
    const Json::Value& info = result["trackInfo"];
    EXPECT_EQ(info["trackIndex"], -1);
    EXPECT_EQ(info["trackCount"], 1);
    EXPECT_EQ(info["isPlaying"], true);
    EXPECT_EQ(info["trackTitle"], "");
    m_manager->UpdatePlayStatus();
    EXPECT_THAT(m_notifications.Take(), ElementsAre("track 0 0/0 || 0/0"));
    // A character that the record's end has cut in two is left out; the JSON writer would damage it.
    DeviceSimulator::StandIns standIns;
    standIns.eDevMgriPodGetPlayingTrackMetaData = [](u32, u32, TrackMetadataRecord* record) -> u32 {
        *record = {};
        std::fill_n(record->title, 253, 'a');
        record->title[253] = '\xC3';
        std::copy_n("caf\xE9!", 6, record->artist);
        std::copy_n("\xE6\x97\xA5\xE6\x9C\xAC", 7, record->album);
        return 1;
    };
    m_simulator.SetStandIns(standIns);
    const Json::Value mended = Call(&CIpodRequestHandler::GetCurrentTrackInfo)["trackInfo"];
    EXPECT_EQ(mended["trackTitle"].asString(), std::string(253, 'a'));
    EXPECT_EQ(mended["trackArtist"].asString(), "caf\xEF\xBF\xBD!");
    EXPECT_EQ(mended["trackAlbum"].asString(), "\xE6\x97\xA5\xE6\x9C\xAC");
}

TEST_F(MethodsTest, ConnectionExitAndPlayableData) {
    EXPECT_EQ(Text(&CIpodRequestHandler::IsIpodConnected), R"({"connected":true})");
    EXPECT_EQ(Text(&CIpodRequestHandler::GetHasPlayableData), R"({"hasPlayableData":true})");
    EXPECT_EQ(Text(&CIpodRequestHandler::Stop), R"("failure")");
    m_manager->CloseDevice();
    EXPECT_EQ(Text(&CIpodRequestHandler::IsIpodConnected), R"({"connected":false})");
    EXPECT_EQ(Text(&CIpodRequestHandler::GetCurrentAlbumArtDelayed), R"({"success":false})");
    EXPECT_EQ(Text(&CIpodRequestHandler::Pause), R"({"success":false})");
    EXPECT_FALSE(m_manager->IsExitRequested());
    EXPECT_EQ(Text(&CIpodRequestHandler::Exit), R"("success")");
    EXPECT_TRUE(m_manager->IsExitRequested());
}

TEST_F(MethodsTest, ParametersOfTheWrongTypeLeaveByTheLibrarysException) {
    for (const char* params : {"[1]", "7", "\"x\"", R"({"mode":[]})", R"({"mode":{}})"})
        EXPECT_THROW(Call(&CIpodRequestHandler::SetRepeatMode, params), Json::Exception) << params;
    for (const char* params : {R"({"enable":"yes"})", R"({"enable":[]})"})
        EXPECT_THROW(Call(&CIpodRequestHandler::RewindSong, params), Json::Exception) << params;
    EXPECT_EQ(Text(&CIpodRequestHandler::SetRepeatMode, R"({"mode":5})"), R"({"mode":"off"})");
}

}  // namespace
