// A port that is in use.

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <csignal>
#include <system_error>

#include "tests/EndToEnd/LogFile.h"
#include "tests/EndToEnd/RpcClient.h"
#include "tests/EndToEnd/ServiceProcess.h"

namespace EndToEnd {
namespace {

constexpr const char* kBindFailed = "Ipod Service - Bind failed\n";

UniqueFd OccupyPort() {
    UniqueFd fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int reuse = 1;
    setsockopt(fd.Get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    const sockaddr_in address = ServiceAddress(RpcClient::kLoopback);
    if (bind(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd.Get(), 1) != 0)
        throw std::system_error(errno, std::generic_category(), "occupy the port");
    return fd;
}

int CountLevel(const std::vector<LogEntry>& entries, const std::string& level) {
    int count = 0;
    for (const LogEntry& entry : entries)
        count += entry.level == level && entry.message == kBindFailed;
    return count;
}

TEST(PortTest, ServesOnceThePortIsFree) {
    UniqueFd occupant = OccupyPort();
    ServiceProcess service;
    const LogFile log;
    Require("three tries", [&] { return log.Count(kBindFailed) >= 3; });
    EXPECT_TRUE(service.IsRunning());
    occupant = UniqueFd();
    service.WaitForPort();
    RpcClient client;
    EXPECT_EQ(client.Result("isIpodConnected")["connected"], false);
    service.WaitForMainLoop();
    service.Signal(SIGTERM);
    EXPECT_EQ(service.WaitForExit(), 0);
}

TEST(PortTest, GivesUpAfter33TriesAndStillStopsInOrder) {
    const UniqueFd occupant = OccupyPort();
    ServiceProcess service;
    const LogFile log;
    const Clock::time_point start = Clock::now();
    Require(
        "the last try", [&] { return log.Contains("[FATAL]"); }, milliseconds{30'000});
    EXPECT_GE(Clock::now() - start, milliseconds{7'500});
    const std::vector<LogEntry> entries = log.Entries();
    EXPECT_EQ(CountLevel(entries, "WARN "), 33);
    EXPECT_EQ(CountLevel(entries, "FATAL"), 1);
    service.Signal(SIGTERM);
    EXPECT_EQ(service.WaitForExit(), 0);
    EXPECT_TRUE(log.Contains("Exiting applet status: 0\n"));
    EXPECT_FALSE(log.Contains("eDevMgr")) << "the device manager was called";
}

}  // namespace
}  // namespace EndToEnd
