// Exit statuses, and what leads to them.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <system_error>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

constexpr const char* kBindFailed = "Ipod Service - Bind failed\n";
constexpr const char* kOrderlyEnd = "Exiting applet status: 0\n";
constexpr const char* kServerStopped = "Stop JSON-RPC TCP server\n";

TEST(ExitTest, SignalStopsInOrder) {
    for (const int signal : {SIGTERM, SIGINT}) {
        Scene scene;
        scene.PlugPlayer();
        scene.service.Signal(signal);
        EXPECT_EQ(scene.service.WaitForExit(), 0);
        EXPECT_EQ(scene.service.StandardOutput(), "Returned, stopping streaming\n");
        const std::string log = ReadFile(kLogPath);
        std::size_t at = log.find("Exit signal caught: " + std::to_string(signal) + "\n");
        for (const char* part :
             {"eDevMgriPodCloseMdBrowseSession\n", "eDevMgrCloseDevice\n", "eDevMgrDeAllocateSharedMemory\n",
              "Shm 2 block already gone.\n", "eDevMgrDeRegisterProcess\n", kServerStopped, kOrderlyEnd,
              "no ipod stream to stop\n"}) {
            at = log.find(part, at);
            ASSERT_NE(at, std::string::npos) << "no '" << part << "' in its place in\n" << log;
        }
    }
}

// The player stays busy for good; its state is asked for until the service is to end.
TEST(ExitTest, ABusyPlayerDoesNotHoldUpTheStop) {
    Scene scene;
    scene.PlugPlayer();
    scene.Do("{'command':'fail','call':'eDevMgriPodGetPlayStatus','code':94}");
    scene.client.Send(Request("isTrackPaused", 1));
    scene.service.WaitForLog("eDevMgriPodGetPlayStatus - DEV_MGR_IAP_APP_BUSY\n");
    EXPECT_EQ(scene.service.Stop(), 0);
    EXPECT_TRUE(scene.service.HasLogged("Return from eDevMgriPodGetPlayStatus is :DEV_MGR_IAP_APP_BUSY\n"));
    EXPECT_TRUE(scene.service.HasLogged(kOrderlyEnd));
}

// A call of the device manager never comes back.
TEST(ExitTest, SecondSignalEndsAHangingService) {
    Scene scene;
    scene.PlugPlayer();
    scene.Do("{'command':'delay','call':'eDevMgriPodGetPlayStatus','milliseconds':600000}");
    scene.client.Send(Request("isTrackPaused", 1));
    scene.service.WaitForLog("eDevMgriPodGetPlayStatus\n");
    scene.service.Signal(SIGTERM);
    scene.service.WaitForLog("Exit signal caught: 15\n");
    EXPECT_FALSE(scene.service.HasLogged(kServerStopped));
    EXPECT_EQ(scene.service.Stop(), 1);
    EXPECT_TRUE(scene.service.HasLogged("Double Exit signal caught: 15\n"));
    EXPECT_FALSE(scene.service.HasLogged(kOrderlyEnd));
}

// Standard output is a pipe that nobody reads.
TEST(ExitTest, SecondSignalEndsAServiceWhoseLogIsStuck) {
    const auto removed = [](const char* path) { std::filesystem::remove(path); };
    const std::unique_ptr<const char, decltype(removed)> fifo(ServiceProcess::kStandardOutput, removed);
    removed(fifo.get());
    mkfifo(fifo.get(), 0600);
    const Descriptor pipe(open(ServiceProcess::kStandardOutput, O_RDWR | O_NONBLOCK | O_CLOEXEC));
    ServiceProcess service({.arguments = {"--stdout"}});
    service.WaitForPort();
    service.WaitForMainLoop();
    while (write(pipe.Get(), "x", 1) == 1) {
    }
    const Clock::time_point start = Clock::now();
    service.Signal(SIGTERM);
    service.Signal(SIGINT);  // two of a number may become one on their way
    EXPECT_EQ(service.WaitForExit(), 1);
    EXPECT_LT(Clock::now() - start, milliseconds{1'500} * TEST_TIME_SCALE);
}

Descriptor OccupyPort() {
    Descriptor fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int reuse = 1;
    setsockopt(fd.Get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    const sockaddr_in address = ServiceAddress(kLoopback);
    if (bind(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd.Get(), 1) != 0)
        throw std::system_error(errno, std::generic_category(), "occupy the port");
    return fd;
}

TEST(ExitTest, ServesOnceTheOccupiedPortIsFree) {
    Descriptor occupant = OccupyPort();
    ServiceProcess service;
    Require("three tries", [&] { return CountEntries(ReadFile(kLogPath), "WARN ", kBindFailed) >= 3; });
    EXPECT_FALSE(service.Status().has_value());
    occupant = Descriptor();
    Client client = service.WaitForPort();
    EXPECT_EQ(client.Result("isIpodConnected")["connected"], false);
    service.WaitForMainLoop();
    EXPECT_EQ(service.Stop(), 0);
}

TEST(ExitTest, SignalDuringTheTriesForThePortEndsTheServiceOnceItHasOne) {
    Descriptor occupant = OccupyPort();
    ServiceProcess service;
    service.WaitForMainLoop();
    service.WaitForLog(kBindFailed);
    service.Signal(SIGTERM);
    service.WaitForLog("Exit signal caught: 15\n");
    occupant = Descriptor();
    EXPECT_EQ(service.WaitForExit(), 0);
    EXPECT_TRUE(service.HasLogged(kOrderlyEnd));
}

TEST(ExitTest, GivesUpAfter33TriesForThePortAndStillStopsInOrder) {
    const Descriptor occupant = OccupyPort();
    ServiceProcess service;
    const Clock::time_point start = Clock::now();
    Require(
        "the last try", [&] { return service.HasLogged("[FATAL]"); }, milliseconds{30'000});
    EXPECT_GE(Clock::now() - start, milliseconds{7'500});
    EXPECT_EQ(CountEntries(ReadFile(kLogPath), "WARN ", kBindFailed), 33);
    EXPECT_EQ(CountEntries(ReadFile(kLogPath), "FATAL", kBindFailed), 1);
    EXPECT_EQ(CountEntries(ReadFile(kLogPath), "WARN ",
                           "Ipod Service - cannot bind 127.0.0.1:8883: Address already in use\n"),
              1);
    EXPECT_EQ(service.Stop(), 0);
    EXPECT_TRUE(service.HasLogged(kOrderlyEnd));
    EXPECT_FALSE(service.HasLogged("eDevMgr")) << "the device manager was called";
}

}  // namespace
}  // namespace EndToEnd
