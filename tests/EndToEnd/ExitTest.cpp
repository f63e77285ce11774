// Exit statuses, and what leads to them.

#include <gtest/gtest.h>

#include <csignal>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

constexpr const char* kOrderlyEnd = "Exiting applet status: 0\n";
constexpr const char* kServerStopped = "Stop JSON-RPC TCP server\n";

void ExpectInOrder(const std::string& text, const std::vector<std::string>& parts) {
    std::size_t at = 0;
    for (const std::string& part : parts) {
        const std::size_t found = text.find(part, at);
        ASSERT_NE(found, std::string::npos) << "no '" << part << "' in its place in\n" << text;
        at = found + part.size();
    }
}

void ExpectOrderlyStop(int signal) {
    Scene scene;
    scene.PlugPlayer();
    scene.service.Signal(signal);
    EXPECT_EQ(scene.service.WaitForExit(), 0);
    ExpectInOrder(
        scene.log.Text(),
        {"Exit signal caught: " + std::to_string(signal) + "\n", "eDevMgriPodCloseMdBrowseSession\n",
         "eDevMgrCloseDevice\n", "eDevMgrDeAllocateSharedMemory\n", "Shm 2 block already gone.\n",
         "eDevMgrDeRegisterProcess\n", kServerStopped, kOrderlyEnd, "no ipod stream to stop\n"});
    EXPECT_EQ(scene.service.StandardOutput(), "Returned, stopping streaming\n");
}

/// The server has been asked to end by other means than a signal: the next signal counts as the second.
void ExpectFirstSignalIsTheSecond(Scene& scene) {
    scene.log.WaitFor(kServerStopped);
    EXPECT_TRUE(scene.client.Socket().WaitForHangUp());
    EXPECT_THROW(RpcClient(), std::system_error);
    EXPECT_TRUE(scene.service.IsRunning());
    scene.service.Signal(SIGTERM);
    EXPECT_EQ(scene.service.WaitForExit(), 1);
    EXPECT_TRUE(scene.log.Contains("Double Exit signal caught: 15\n"));
    EXPECT_FALSE(scene.log.Contains("Exiting applet status"));
}

TEST(ExitTest, SignalStopsInOrder) {
    ExpectOrderlyStop(SIGTERM);
    ExpectOrderlyStop(SIGINT);
}

TEST(ExitTest, ExitMethodLeavesTheProcessForASignalToEnd) {
    Scene scene;
    scene.PlugPlayer();
    EXPECT_EQ(scene.client.Result("exit"), "success");
    ExpectFirstSignalIsTheSecond(scene);
}

TEST(ExitTest, ExitEventLeavesTheProcessForASignalToEnd) {
    Scene scene;
    scene.control.Event({1});
    scene.log.WaitFor(" Device manager has exited. No API can be used anymore. Exiting.");
    ExpectFirstSignalIsTheSecond(scene);
}

// The player stays busy for good, and the request that asks for its state never comes back.
TEST(ExitTest, SecondSignalEndsAHangingService) {
    constexpr std::uint32_t kBusy = 94;
    Scene scene;
    scene.PlugPlayer();
    scene.control.Fail("eDevMgriPodGetPlayStatus", kBusy);
    scene.client.Socket().Send(Request("isTrackPaused", 1));
    scene.log.WaitFor("eDevMgriPodGetPlayStatus - DEV_MGR_IAP_APP_BUSY\n");
    scene.service.Signal(SIGTERM);
    scene.log.WaitFor("Exit signal caught: 15\n");
    EXPECT_FALSE(scene.log.Contains(kServerStopped));
    scene.service.Signal(SIGTERM);
    EXPECT_EQ(scene.service.WaitForExit(), 1);
    EXPECT_TRUE(scene.log.Contains("Double Exit signal caught: 15\n"));
    EXPECT_FALSE(scene.log.Contains(kOrderlyEnd));
}

}  // namespace
}  // namespace EndToEnd
