// ipodctl against the service, as a script uses it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

/// What a command prints; `status` is its exit status.
std::string Shell(const std::string& command, int& status) {
    std::FILE* const pipe = popen(("PATH=" IPODCTL_FOLDER ":$PATH; " + command + " 2>&1").c_str(), "r");
    std::string printed;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;)
        printed += static_cast<char>(c);
    status = pclose(pipe) / 256;
    return printed;
}

TEST(IpodctlTest, ControlsThePlayer) {
    Scene scene;
    scene.PlugPlayer();
    const struct {
        const char* command;
        int status;
        const char* printed;
    } cases[] = {
        {"ipodctl browse artists nobody", 1, "there is no \"nobody\""},
        {"ipodctl browse --play Songs '99 LIVES'", 0, "playing 99 Lives\n"},
        {"ipodctl wait playing && ipodctl status", 0, "track     6 of 317\ntitle     99 Lives\n"},
        {"ipodctl pause && ipodctl wait paused && ipodctl pause", 1, "paused already"},
        {"ipodctl art /tmp/cover.jpg && tail -c 2 /tmp/cover.jpg | od -An -tx1", 0, "ff d9\n"},
        {"(sleep 0.3; ipodctl next) & ipodctl watch --json --count 1", 0, "Notification\""},
        // Once it holds its signals back; a second one changes nothing.
        {"ipodctl watch & for i in $(seq 500); do grep -q '^SigBlk:.*4002$' /proc/$!/status && break; "
         "sleep 0.02; done; kill $! $!; wait $! && echo ended",
         0, "ended"},
        {"printf '%s\\n' '{\"jsonrpc\":\"2.0\",\"method\":\"stop\",\"id\":7}' '{' | ipodctl raw -", 1,
         "{\"id\":7,\"jsonrpc\":\"2.0\",\"result\":\"failure\"}\n"},
        {"ipodctl --port 1 next", 3, "Connection refused"},
    };
    for (const auto& each : cases) {
        int status = -1;
        EXPECT_THAT(Shell(each.command, status), testing::HasSubstr(each.printed)) << each.command;
        EXPECT_EQ(status, each.status) << each.command;
    }
    EXPECT_EQ(scene.service.Stop(), 0);
}

}  // namespace
}  // namespace EndToEnd
