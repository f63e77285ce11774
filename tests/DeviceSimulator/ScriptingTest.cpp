#include <stdexcept>
#include <thread>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

class ScriptingTest : public SimulatorTest {
  protected:
    ScriptingTest() {
        OpenPlayer();
        simulator.ClearCalls();
    }

    Simulator& simulator = Simulator::Instance();
};

TEST_F(ScriptingTest, FailuresRunOutAndChangeNothing) {
    EXPECT_TRUE(simulator.Fail("eDevMgriPodPlay", DEV_MGR_IAP_APP_BUSY, 2));
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), 94U);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), 94U);
    EXPECT_EQ(Status(), E_DEVMGR_IPOD_PLAY_STOPPED);
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_FALSE(simulator.Fail("eDevMgriPodNothing", DEV_MGR_SUCCESS));
}

TEST_F(ScriptingTest, ADelayedCallHoldsNobodyElseAndCanBeReleased) {
    simulator.Delay("eDevMgriPodPlay", 1h);
    std::atomic<u32> result{0};
    std::thread caller([&] { result = eDevMgriPodPlay(ph, dh); });
    EXPECT_TRUE(simulator.WaitForCall("eDevMgriPodPlay", 1, 10s));
    EXPECT_EQ(Status(), E_DEVMGR_IPOD_PLAY_STOPPED);
    EXPECT_EQ(simulator.Calls("eDevMgriPodPlay").front().result, 0U);
    simulator.ClearScripts();
    caller.join();
    EXPECT_EQ(result, DEV_MGR_SUCCESS);
    EXPECT_FALSE(simulator.WaitForCall("eDevMgriPodPlay", 2, 0ms));
}

TEST_F(ScriptingTest, StandInsAnswerInTheModelsPlace) {
    StandIns standIns;
    standIns.eDevMgriPodGetPlayStatus = [&](u32, u32, u32* status) -> u32 {
        *status = E_DEVMGR_IPOD_PLAY_UNKNOWN;
        // No lock is held: it may call back in.
        EXPECT_EQ(eDevMgriPodPlay(ph, dh), DEV_MGR_SUCCESS);
        return 1;
    };
    standIns.eDevMgriPodPause = [](u32, u32) -> u32 { throw std::runtime_error("stand-in"); };
    simulator.SetStandIns(std::move(standIns));
    EXPECT_EQ(Status(), E_DEVMGR_IPOD_PLAY_UNKNOWN);
    EXPECT_EQ(eDevMgriPodPause(ph, dh), u32{DEV_MGR_UNKNOWN_FAILURE});
    simulator.Fail("eDevMgriPodPause", DEV_MGR_PROCESS_DE_REGISTRY_FAILED, 1);
    EXPECT_EQ(eDevMgriPodPause(ph, dh), 7U);
}

TEST_F(ScriptingTest, TheNewestCallsAreRecordedWithWhatTheyWereHanded) {
    const std::size_t total = CallLog::kMostCalls + 10;
    for (u32 i = 2; i < total; ++i) {
        eDevMgrOpenDevice(ph, i);
    }
    u32 count = 1;
    BrowseItem item;
    eDevMgriPodGetItems(ph, dh, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, 3, &count, &item);
    char path[] = "a path";
    eDevMgriPodStartBuildingDatabase(ph, dh, path);
    const auto calls = simulator.Calls();
    using Numbers = std::vector<std::int64_t>;
    ASSERT_EQ(calls.size(), CallLog::kMostCalls);
    EXPECT_EQ(calls.front().arguments, (Numbers{ph, 12}));
    const CallRecord* const newest = &calls.back() - 1;
    EXPECT_EQ(newest[0].arguments, (Numbers{ph, dh, DEV_MGR_WHOLE_LIBRARY, 0, 32, 3, 1}));
    EXPECT_EQ(newest[1].text, "a path");
    EXPECT_EQ(newest[1].result, u32{DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE});
}

}  // namespace
}  // namespace DeviceSimulator::Test
