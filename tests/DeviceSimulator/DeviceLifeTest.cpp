#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

using DeviceLifeTest = SimulatorTest;

TEST_F(DeviceLifeTest, ThePlayerComesAWhileAfterTheFirstRegistrationAndBuildsItsDatabase) {
    SimulatorOptions options;
    options.devices.push_back({});
    Restart(options);
    Pass(299ms);
    EXPECT_EQ(TakeEventText(), "");
    Pass(1ms);
    EXPECT_EQ(TakeEventText(), "3=17 18 19");
    ph = Register();
    Pass(1s);
    DeviceRecord device;
    u32 count = 1;
    EXPECT_EQ(eDevMgrGetDeviceList(ph, &device, 0, &count), kSuccess);
    ASSERT_EQ(count, 1U);
    ASSERT_EQ(eDevMgrOpenDevice(ph, device.handle), kSuccess);
    dh = device.handle;
    char path[] = "./Phone.db";
    EXPECT_EQ(eDevMgriPodStartBuildingDatabase(ph, dh, path), kSuccess);
    EXPECT_EQ(TakeEventText(), "37");
    EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), u32{kDatabaseBuildInProgress});
    Pass(999ms);
    EXPECT_EQ(TakeEventText(), "37=10 37=20 37=30 37=40 37=50 37=60 37=70 37=80 37=90");
    Pass(1ms);
    EXPECT_EQ(TakeEventText(), "37=100");
    EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), kSuccess);
}

TEST_F(DeviceLifeTest, ADatabaseIsDoneNeitherBeforeItsTimeNorBeforeItsMusic) {
    MusicSource& music = Engine::Instance().Music();
    std::promise<void> told, rest;
    const auto maker = [&](const LibraryProgress& progress) -> std::shared_ptr<const Library> {
        progress(59);
        told.set_value();
        rest.get_future().wait();
        throw std::runtime_error("no such disk");
    };
    music.Reset(maker, [] { Engine::Instance().Loop().ClockMoved(); });
    dh = Simulator::Instance().Plug({});
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh), kSuccess);
    char path[] = "./Phone.db";
    EXPECT_EQ(eDevMgriPodStartBuildingDatabase(ph, dh, path), kSuccess);
    told.get_future().wait();
    TakeEvents(ph);
    Pass(300ms);
    EXPECT_EQ(TakeEventText(), "37=10 37=20 37=30");
    Pass(5s);
    EXPECT_EQ(TakeEventText(), "37=40 37=50");
    rest.set_value();
    EXPECT_EQ(music.Get()->TrackCount(), 0U);
    while (*music.Progress() < 100) {
        std::this_thread::yield();
    }
    EXPECT_EQ(TakeEventText(), "37=60 37=70 37=80 37=90 37=100");
}

TEST_F(DeviceLifeTest, UnpluggingAndClosingSilenceThePlayer) {
    OpenPlayer();
    const u32 listener = Register();
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    EXPECT_EQ(TakeEventText(), "34=24 13 17=44100 9");
    Pass(2500ms);
    EXPECT_EQ(TakeEventText(), "8=1000 8=2000");
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
    const auto heard = TakeEvents(listener);
    ASSERT_EQ(heard.size(), 1U) << "what plays is told to those who have it open";
    EXPECT_EQ(heard[0].words[0], kDeviceDisconnected);
}

TEST_F(DeviceLifeTest, WhichPlayerSoundsTellsItsRateAfterAnother) {
    OpenPlayer();
    const u32 first = dh;
    OpenPlayer();
    EXPECT_EQ(eDevMgriPodPlay(ph, first), kSuccess);
    EXPECT_EQ(TakeEventText(), "34=24 13 17=44100 9");
    EXPECT_EQ(eDevMgriPodSelectCategorizedIndex(ph, dh, kTrack, 3), kSuccess);
    EXPECT_EQ(TakeEventText(), "34=24 13 17=48000 9 17=44100") << "the first one still sounds";
    EXPECT_EQ(eDevMgriPodPause(ph, first), kSuccess);
    const auto told = TakeEvents(ph);
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[1].words[0], kSampleRate);
    EXPECT_EQ(told[1].words[1], 48000U);
    EXPECT_EQ(told[1].words[5], dh);
    EXPECT_EQ(eDevMgriPodPause(ph, dh), kSuccess);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    EXPECT_EQ(TakeEventText(), "10 9") << "nobody else has sounded";
    EXPECT_EQ(eDevMgriPodPause(ph, dh), kSuccess);
    EXPECT_EQ(eDevMgriPodPlay(ph, first), kSuccess);
    EXPECT_EQ(TakeEventText(), "10 9 17=44100");
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    EXPECT_TRUE(Simulator::Instance().Unplug(first));
    EXPECT_EQ(TakeEventText(), "9 4=14 17=48000");
}

std::atomic<int> g_running{0};
std::atomic<u32> g_ownResult{0};
std::atomic<int> g_calls{0};

void DeregisteringCallback(const DeviceEvent*, u32 ph) {
    ++g_calls;
    g_ownResult = eDevMgrDeRegisterProcess(ph);
}

TEST_F(DeviceLifeTest, ACallbackMayDeregisterItself) {
    u32 handle = 0;
    ASSERT_EQ(eDevMgrRegisterProcess(&handle, DeregisteringCallback), kSuccess);
    Simulator::Instance().Fire(MakeEvent({30}));
    Simulator::Instance().Fire(MakeEvent({30}));
    EXPECT_EQ(TakeEventText(), "30 30");
    EXPECT_EQ(g_ownResult, kSuccess);
    EXPECT_EQ(g_calls, 1);
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
        EXPECT_EQ(eDevMgrRegisterProcess(&handle, BusyCallback), kSuccess);
        EXPECT_EQ(eDevMgrDeRegisterProcess(handle), kSuccess);
        EXPECT_EQ(g_running, 0);
    }
    isOver = true;
    storm.join();
}

}  // namespace
}  // namespace DeviceSimulator::Test
