// What ends with what: the service with a player that is killed, and a player with its service.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <system_error>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

pid_t FindPlayer() {
    for (const auto& process : std::filesystem::directory_iterator("/proc")) {
        if (ReadFile(process.path() / "cmdline").find("--inherit") != std::string::npos) {
            return std::stoi(process.path().filename());
        }
    }
    return -1;
}

TEST(RestartTest, AKilledPlayerIsTheDeviceManagersEnd) {
    for (const bool isCalled : {false, true}) {
        Scene scene;
        scene.PlugPlayer();
        scene.client.Result("playFirst");
        const pid_t player = FindPlayer();
        ASSERT_GT(player, 0);
        if (isCalled) {
            scene.Do("{'command':'clear','what':'calls'}");
            scene.Do("{'command':'delay','call':'eDevMgriPodGetPlayStatus','milliseconds':600000}");
            scene.client.Send(Request("isTrackPaused", 1));
            scene.Do("{'command':'wait','call':'eDevMgriPodGetPlayStatus'}");
        }
        kill(player, SIGKILL);
        scene.service.WaitForLog(" Device manager has exited. No API can be used anymore. Exiting.");
        scene.service.WaitForLog("Stop JSON-RPC TCP server\n");
        EXPECT_TRUE(scene.client.WaitForHangUp());
        EXPECT_THROW(Client(), std::system_error);
        EXPECT_TRUE(WaitUntil([&] { return kill(player, 0) != 0; })) << "it has been waited for";
        // The process stays, and the next signal counts as the second.
        EXPECT_FALSE(scene.service.Status().has_value());
        EXPECT_EQ(scene.service.Stop(), 1);
        EXPECT_TRUE(scene.service.HasLogged("Double Exit signal caught: 15\n"));
        EXPECT_FALSE(scene.service.HasLogged("Exiting applet status"));
    }
}

TEST(RestartTest, AStoppedServiceTakesItsPlayerWithIt) {
    Scene scene;
    scene.PlugPlayer();
    const pid_t player = FindPlayer();
    EXPECT_EQ(scene.service.Stop(), 0);
    EXPECT_TRUE(WaitUntil([&] { return kill(player, 0) != 0; }));
}

}  // namespace
}  // namespace EndToEnd
