#include <sys/syscall.h>
#include <unistd.h>

#include <stdexcept>
#include <thread>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

using ScriptingTest = SimulatorTest;

TEST_F(ScriptingTest, FailuresRunOutAndChangeNothing) {
    OpenPlayer();
    Simulator& simulator = Simulator::Instance();
    EXPECT_TRUE(simulator.Fail("eDevMgriPodPlay", 94, 2));
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), 94U);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), 94U);
    EXPECT_EQ(Status(), 2U);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    EXPECT_TRUE(simulator.Fail("eDevMgriPodPause", 0));
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(eDevMgriPodPause(ph, dh), 0U);
    }
    simulator.ClearScripts();
    EXPECT_EQ(eDevMgriPodPause(ph, dh), kSuccess);
    EXPECT_FALSE(simulator.Fail("eDevMgriPodNothing", 1));
    EXPECT_FALSE(simulator.Delay("", 1ms));
}

TEST_F(ScriptingTest, ADelayedCallHoldsNobodyElseAndCanBeReleased) {
    OpenPlayer();
    Simulator& simulator = Simulator::Instance();
    simulator.ClearCalls();
    simulator.Delay("eDevMgriPodPlay", 1h);
    std::atomic<u32> result{0};
    std::thread caller([&] { result = eDevMgriPodPlay(ph, dh); });
    EXPECT_TRUE(simulator.WaitForCall("eDevMgriPodPlay", 1, 10s));
    EXPECT_EQ(Status(), 2U);
    EXPECT_EQ(simulator.Calls("eDevMgriPodPlay").front().result, 0U);
    simulator.ClearScripts();
    caller.join();
    EXPECT_EQ(result, kSuccess);
    EXPECT_FALSE(simulator.WaitForCall("eDevMgriPodPlay", 2, 0ms));
    EXPECT_FALSE(simulator.WaitForCall("no such call", 0, 0ms));
}

TEST_F(ScriptingTest, StandInsAnswerInTheModelsPlace) {
    OpenPlayer();
    StandIns standIns;
    standIns.eDevMgriPodGetPlayStatus = [&](u32 process, u32 device, u32* status) -> u32 {
        EXPECT_EQ(process, ph);
        EXPECT_EQ(device, dh);
        *status = 5;
        // No lock is held: it may call back in.
        EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
        return 1;
    };
    standIns.eDevMgriPodPause = [](u32, u32) -> u32 { throw std::runtime_error("stand-in"); };
    standIns.eDevMgriPodStop = [](u32, u32) -> u32 { throw std::bad_alloc(); };
    Simulator::Instance().SetStandIns(std::move(standIns));
    EXPECT_EQ(Status(), 5U);
    EXPECT_EQ(eDevMgriPodPause(ph, dh), u32{kUnknownFailure});
    EXPECT_EQ(eDevMgriPodStop(ph, dh), u32{kMemoryError});
    Simulator::Instance().Fail("eDevMgriPodPause", 7, 1);
    EXPECT_EQ(eDevMgriPodPause(ph, dh), 7U);
    Simulator::Instance().SetStandIns({});
    EXPECT_EQ(Status(), 0U);
}

TEST_F(ScriptingTest, CallsAreRecordedWithWhatTheyWereHanded) {
    OpenPlayer();
    Simulator& simulator = Simulator::Instance();
    simulator.ClearCalls();
    u32 count = 1;
    BrowseItem item;
    eDevMgriPodGetItems(ph, dh, -1, 0, kTrack, 3, &count, &item);
    char path[] = "a path";
    eDevMgriPodStartBuildingDatabase(ph, dh, path);
    u32 height = 320;
    u32 width = 480;
    eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, &height, &width, 77);
    eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, nullptr, &width, 77);
    const auto calls = simulator.Calls();
    using Numbers = std::vector<std::int64_t>;
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[0].name, "eDevMgriPodGetItems");
    EXPECT_EQ(calls[0].arguments, (Numbers{ph, dh, -1, 0, 32, 3, 1}));
    EXPECT_EQ(calls[0].result, kSuccess);
    EXPECT_EQ(calls[0].thread, static_cast<std::uint64_t>(syscall(SYS_gettid)));
    EXPECT_EQ(calls[1].arguments, (Numbers{ph, dh}));
    EXPECT_EQ(calls[1].text, "a path");
    EXPECT_EQ(calls[1].result, u32{kNotSupportedByDevice});
    EXPECT_EQ(calls[2].arguments, (Numbers{ph, dh, 320, 480, 77}));
    EXPECT_EQ(calls[3].arguments, (Numbers{ph, dh, 0, 480, 77}));
    EXPECT_EQ(simulator.Calls("eDevMgriPodGetItems").size(), 1U);
}

TEST_F(ScriptingTest, TheRecordKeepsTheNewestCalls) {
    Simulator& simulator = Simulator::Instance();
    simulator.ClearCalls();
    const std::size_t total = CallLog::kMostCalls + 10;
    for (u32 i = 0; i < total; ++i) {
        eDevMgrOpenDevice(ph, i);
    }
    const auto calls = simulator.Calls();
    ASSERT_EQ(calls.size(), CallLog::kMostCalls);
    EXPECT_EQ(calls.front().arguments[1], 10);
    EXPECT_EQ(calls.back().result, u32{kInvalidDeviceHandle});
    EXPECT_TRUE(simulator.WaitForCall("eDevMgrOpenDevice", total, 0ms));
}

}  // namespace
}  // namespace DeviceSimulator::Test
