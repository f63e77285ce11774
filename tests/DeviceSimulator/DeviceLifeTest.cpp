#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include "SimulatorFixture.h"
#include "tests/Support/Deadline.h"

namespace DeviceSimulator::Test {
namespace {

using DeviceLifeTest = SimulatorTest;

/// The events of a database's progress, in tenths.
std::string Progress(int from, int to) {
    std::string text;
    for (int i = from; i <= to; ++i) {
        text += (text.empty() ? "" : " ") +
                EventText(DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO, 10U * static_cast<u32>(i));
    }
    return text;
}

TEST_F(DeviceLifeTest, TheEnvironmentNamesAPlayerAStickOrNothing) {
    const auto typeFor = [](const char* word) {
        setenv("DEVICE_SIMULATOR_DEVICE", word, 1);
        return OptionsFromEnvironment().devices.at(0).type;
    };
    EXPECT_EQ(typeFor("iap"), DEV_MGR_DEVICE_TYPE_IAP_2WIRE);
    EXPECT_EQ(typeFor("stick"), DEV_MGR_DEVICE_TYPE_USB_FAT_32);
    testing::internal::CaptureStderr();
    EXPECT_EQ(typeFor("hub"), DEV_MGR_DEVICE_TYPE_IAP2_2WIRE);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("it takes iap2, iap, stick or none"),
              std::string::npos);
    setenv("DEVICE_SIMULATOR_DEVICE", "none", 1);
    EXPECT_TRUE(OptionsFromEnvironment().devices.empty());
    unsetenv("DEVICE_SIMULATOR_DEVICE");
}

TEST_F(DeviceLifeTest, APhoneWhoseProcessIsNoMorePlaysOn) {
    OpenPlayer();
    ASSERT_EQ(eDevMgriPodSelectCategorizedIndex(ph, dh, DEV_MGR_CATEGORY_TRACK, 4), DEV_MGR_SUCCESS);
    ASSERT_EQ(eSelectNowPlayingIndex(ph, dh, 5), DEV_MGR_SUCCESS);
    Pass(1500ms);
    Simulator::Instance().Drain();
    Engine::Instance().Loop().Locked([this](ManagerModel& model, TimePoint now) { model.Abandon(ph, now); });
    EXPECT_EQ(eDevMgriPodPause(ph, dh), u32{DEV_MGR_PROCESS_NOT_REGISTERED});
    Pass(1500ms);
    Simulator::Instance().Drain();
    ph = Register();
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(), "new-track-sample-rate=48000") << "who comes anew has heard of none";
    EXPECT_EQ(Title(), "Title 05");
    u32 elapsed = 0;
    u32 total = 0;
    EXPECT_EQ(eDevMgriPodGetPlayingTrackElapsedAndTotaltime(ph, dh, &elapsed, &total), DEV_MGR_SUCCESS);
    EXPECT_EQ(elapsed, 3000U);
}

TEST_F(DeviceLifeTest, ThePlayerComesAWhileAfterTheFirstRegistrationAndBuildsItsDatabase) {
    SimulatorOptions options;
    options.devices.push_back({});
    Restart(options);
    Pass(299ms);
    EXPECT_EQ(TakeEventText(), "");
    Pass(1ms);
    EXPECT_EQ(TakeEventText(), "device-connected=iap2 auth-started auth-success");
    ph = Register();
    Pass(1s);
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh = 1), DEV_MGR_SUCCESS);
    char path[] = "./Phone.db";
    EXPECT_EQ(eDevMgriPodStartBuildingDatabase(ph, dh, path), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(), Progress(0, 0));
    EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), u32{DEV_MGR_IAP_DB_BUILDING_IN_PROGRESS});
    Pass(999ms);
    EXPECT_EQ(TakeEventText(), Progress(1, 9));
    Pass(1ms);
    EXPECT_EQ(TakeEventText(), Progress(10, 10));
    EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), DEV_MGR_SUCCESS);
}

TEST_F(DeviceLifeTest, ADatabaseIsDoneNeitherBeforeItsTimeNorBeforeItsMusic) {
    std::promise<void> told, rest;
    const auto maker = [&](const LibraryProgress& progress) -> std::shared_ptr<const Library> {
        progress(59);
        told.set_value();
        rest.get_future().wait();
        throw std::runtime_error("no such disk");
    };
    Restart({}, maker);
    dh = Simulator::Instance().Plug({});
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh), DEV_MGR_SUCCESS);
    char path[] = "./Phone.db";
    EXPECT_EQ(eDevMgriPodStartBuildingDatabase(ph, dh, path), DEV_MGR_SUCCESS);
    told.get_future().wait();
    TakeEvents(ph);
    Pass(300ms);
    EXPECT_EQ(TakeEventText(), Progress(1, 3));
    Pass(5s);
    EXPECT_EQ(TakeEventText(), Progress(4, 5));
    rest.set_value();
    const auto music = Engine::Instance().Music();
    EXPECT_EQ(music->Get()->TrackCount(), 0U);
    ASSERT_TRUE(TestSupport::WaitUntil([&] { return *music->Progress() >= 100; }));
    EXPECT_EQ(TakeEventText(), Progress(6, 10));
}

TEST_F(DeviceLifeTest, UnpluggingAndClosingSilenceThePlayer) {
    OpenPlayer();
    const u32 listener = Register();
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(),
              "play-context-setting=24 play-track-changed new-track-sample-rate=44100 play-started");
    Pass(2500ms);
    EXPECT_EQ(TakeEventText(), "play-time=1000 play-time=2000");
    EXPECT_EQ(eDevMgrCloseDevice(ph, dh), DEV_MGR_SUCCESS);
    Pass(5s);
    EXPECT_EQ(TakeEventText(), "");
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(Status(), E_DEVMGR_IPOD_PLAY_PAUSED);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(), "play-started");
    EXPECT_TRUE(Simulator::Instance().Unplug(dh));
    EXPECT_FALSE(Simulator::Instance().Unplug(dh));
    Pass(5s);
    EXPECT_EQ(TakeEventText(), "device-disconnected=iap");
    EXPECT_EQ(eDevMgriPodPause(ph, dh), u32{DEV_MGR_INVALID_DEVICE_HANDLE});
    const auto heard = TakeEvents(listener);
    ASSERT_EQ(heard.size(), 1U) << "what plays is told to those who have it open";
    EXPECT_EQ(heard[0].words[0], DEV_MGR_EVENT_DEVICE_DISCONNECTED);
}

TEST_F(DeviceLifeTest, WhichPlayerSoundsTellsItsRateAfterAnother) {
    OpenPlayer();
    const u32 first = dh;
    OpenPlayer();
    EXPECT_EQ(eDevMgriPodPlay(ph, first), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(),
              "play-context-setting=24 play-track-changed new-track-sample-rate=44100 play-started");
    EXPECT_EQ(eDevMgriPodSelectCategorizedIndex(ph, dh, DEV_MGR_CATEGORY_TRACK, 3), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(),
              "play-context-setting=24 play-track-changed new-track-sample-rate=48000 play-started "
              "new-track-sample-rate=44100")
        << "the first one still sounds";
    EXPECT_EQ(eDevMgriPodPause(ph, first), DEV_MGR_SUCCESS);
    const auto told = TakeEvents(ph);
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[1].words[0], DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE);
    EXPECT_EQ(told[1].words[1], 48000U);
    EXPECT_EQ(told[1].words[5], dh);
    EXPECT_EQ(eDevMgriPodPause(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(), "play-paused play-started") << "nobody else has sounded";
    EXPECT_EQ(eDevMgriPodPause(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgriPodPlay(ph, first), DEV_MGR_SUCCESS);
    EXPECT_EQ(TakeEventText(), "play-paused play-started new-track-sample-rate=44100");
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_TRUE(Simulator::Instance().Unplug(first));
    EXPECT_EQ(TakeEventText(), "play-started device-disconnected=iap new-track-sample-rate=48000");
}

std::atomic<int> g_running{0};

void BusyCallback(const DeviceEvent*, u32) {
    ++g_running;
    std::this_thread::yield();
    u32 count = 0;
    eDevMgrGetNumDevices(1, &count);
    --g_running;
}

TEST_F(DeviceLifeTest, NoCallbackOutlivesItsRegistration) {
    std::atomic<bool> isOver{false};
    std::thread storm([&] {
        while (!isOver) {
            Simulator::Instance().Fire(MakeEvent({DEV_MGR_EVENT_PLAY_TIME, 1}));
            Simulator::Instance().Drain();
        }
    });
    for (int i = 0; i < 300; ++i) {
        u32 handle = 0;
        EXPECT_EQ(eDevMgrRegisterProcess(&handle, BusyCallback), DEV_MGR_SUCCESS);
        EXPECT_EQ(eDevMgrDeRegisterProcess(handle), DEV_MGR_SUCCESS);
        EXPECT_EQ(g_running, 0);
    }
    isOver = true;
    storm.join();
}

}  // namespace
}  // namespace DeviceSimulator::Test
