#include <atomic>
#include <thread>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

using DeviceLifeTest = SimulatorTest;

TEST_F(DeviceLifeTest, TheFirstDeviceComesAWhileAfterTheFirstRegistration) {
    SimulatorOptions options;
    options.devices.push_back({});
    Restart(options);
    EXPECT_EQ(TakeEventText(), "");
    Pass(299ms);
    EXPECT_EQ(TakeEventText(), "");
    Pass(1ms);
    EXPECT_EQ(TakeEventText(), "3=17 18 19");
    ASSERT_EQ(eDevMgrDeRegisterProcess(ph), kSuccess);
    ASSERT_EQ(eDevMgrRegisterProcess(&ph, EventRecorder::Callback), kSuccess);
    Pass(1s);
    u32 count = 0;
    EXPECT_EQ(eDevMgrGetNumDevices(ph, &count), kSuccess);
    EXPECT_EQ(count, 1U);
}

TEST_F(DeviceLifeTest, TheDatabaseIsBuiltOverItsTime) {
    dh = Simulator::Instance().Plug({});
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh), kSuccess);
    TakeEvents();
    char path[] = "./Phone.db";
    EXPECT_EQ(eDevMgriPodStartBuildingDatabase(ph, dh, path), kSuccess);
    EXPECT_EQ(TakeEventText(), "37");
    EXPECT_EQ(eDevMgriPodStartBuildingDatabase(ph, dh, path), u32{kDatabaseBuildInProgress});
    EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), u32{kDatabaseBuildInProgress});
    Pass(999ms);
    EXPECT_EQ(TakeEventText(), "37=10 37=20 37=30 37=40 37=50 37=60 37=70 37=80 37=90");
    Pass(1ms);
    EXPECT_EQ(TakeEventText(), "37=100");
    EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), kSuccess);
    EXPECT_EQ(Simulator::Instance().Calls("eDevMgriPodStartBuildingDatabase").front().text, "./Phone.db");
}

TEST_F(DeviceLifeTest, TimeIsToldWhilePlayingOnly) {
    OpenPlayer();
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    EXPECT_EQ(TakeEventText(), "34=24 13 17=44100 9");
    Pass(2500ms);
    EXPECT_EQ(TakeEventText(), "8=1000 8=2000");
    u32 elapsed = 0;
    u32 total = 0;
    EXPECT_EQ(eDevMgriPodGetPlayingTrackElapsedAndTotaltime(ph, dh, &elapsed, &total), kSuccess);
    EXPECT_EQ(elapsed, 2500U);
    EXPECT_EQ(total, FakeLibrary::kTrackMs);
    EXPECT_EQ(eDevMgriPodFastForwardRewindStart(ph, dh, 0), kSuccess);
    EXPECT_EQ(Status(), 3U);
    EXPECT_EQ(eDevMgriPodPause(ph, dh), kSuccess);
    EXPECT_EQ(Status(), 1U);
    EXPECT_EQ(eDevMgriPodStop(ph, dh), kSuccess);
    EXPECT_EQ(TakeEventText(), "14 16 10 12");
}

TEST_F(DeviceLifeTest, UnpluggingAndClosingSilenceThePlayer) {
    OpenPlayer();
    u32 listener = 0;
    ASSERT_EQ(eDevMgrRegisterProcess(&listener, EventRecorder::Callback), kSuccess);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    TakeEvents();
    EXPECT_EQ(eDevMgrCloseDevice(ph, dh), kSuccess);
    Pass(5s);
    EXPECT_EQ(TakeEventText(), "");
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh), kSuccess);
    EXPECT_EQ(Status(), 1U);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    EXPECT_EQ(TakeEventText(), "9");
    EXPECT_TRUE(Simulator::Instance().Unplug(dh));
    EXPECT_FALSE(Simulator::Instance().Unplug(dh));
    Pass(5s);
    EXPECT_EQ(TakeEventText(), "4=14");
    EXPECT_EQ(eDevMgriPodPause(ph, dh), u32{kInvalidDeviceHandle});
    const auto heard = EventRecorder::Instance().Take(listener);
    ASSERT_EQ(heard.size(), 1U) << "what plays is told to those who have it open";
    EXPECT_EQ(heard[0].words[0], kDeviceDisconnected);
}

std::atomic<int> g_running{0};
std::atomic<u32> g_ownHandle{0};
std::atomic<u32> g_ownResult{0};
std::atomic<int> g_callsAfter{0};

void DeregisteringCallback(const DeviceEvent*, u32 ph) {
    if (g_ownHandle.exchange(0) == ph) {
        g_ownResult = eDevMgrDeRegisterProcess(ph);
    } else {
        ++g_callsAfter;
    }
}

TEST_F(DeviceLifeTest, ACallbackMayDeregisterItself) {
    u32 handle = 0;
    ASSERT_EQ(eDevMgrRegisterProcess(&handle, DeregisteringCallback), kSuccess);
    g_ownHandle = handle;
    g_callsAfter = 0;
    Simulator::Instance().Fire(MakeEvent({30}));
    Simulator::Instance().Fire(MakeEvent({30}));
    Simulator::Instance().Drain();
    EXPECT_EQ(g_ownResult, kSuccess);
    EXPECT_EQ(g_callsAfter, 0);
    EXPECT_EQ(TakeEventText(), "30 30");
}

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
            Simulator::Instance().Fire(MakeEvent({8, 1}));
            Simulator::Instance().Drain();
        }
    });
    for (int i = 0; i < 300; ++i) {
        u32 handle = 0;
        ASSERT_EQ(eDevMgrRegisterProcess(&handle, BusyCallback), kSuccess);
        ASSERT_EQ(eDevMgrDeRegisterProcess(handle), kSuccess);
        ASSERT_EQ(g_running, 0);
    }
    isOver = true;
    storm.join();
}

}  // namespace
}  // namespace DeviceSimulator::Test
