// The player view in a terminal of its own, before the real service.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

/// What it prints.
std::string Tmux(const std::string& command) {
    FILE* const pipe = popen(("tmux -u -f /dev/null " + command).c_str(), "r");
    std::string text(64 * 1024, '\0');
    text.resize(fread(text.data(), 1, text.size(), pipe));
    pclose(pipe);
    return text;
}

std::string Await(const std::string& text) {
    std::string screen;
    Require(text, [&] { return (screen = Tmux("capture-pane -p")).find(text) != std::string::npos; });
    return screen;
}

/// A command, and what is on the screen then.
void Walk(const std::vector<std::pair<std::string, std::string>>& steps) {
    for (const auto& [command, shown] : steps) {
        Tmux(command);
        Await(shown);
    }
}

std::string In(const std::string& locale) {
    return " 'trap : INT; LC_ALL=" + locale +
           " TERM=tmux-256color " IPODCTL_FOLDER "/ipodctl player; echo status $?; stty -a; cat'";
}

TEST(PlayerViewTest, LeadsThePlayerThroughAll) {
    if (std::system("command -v tmux >/dev/null") != 0)
        GTEST_SKIP() << "tmux is not installed";
    Tmux("new-session -d -x 80 -y 24" + In("C"));
    const std::string plain = Await("Waiting for the service");
    EXPECT_TRUE(std::all_of(plain.begin(), plain.end(), [](int c) { return c > 0 && c < 127; })) << plain;
    Walk({{"send-keys C-c", "status 130"}});
    auto scene = std::make_unique<Scene>();
    scene->PlugPlayer();
    Walk({{"respawn-pane -k" + In("C.UTF-8"), "1 of 6"},
          {"send-keys Down Down Enter", "1 of 317"},
          {"send-keys ]", "2 of 317"},
          {"send-keys / s l a c k Enter Enter", "▶ playing"},
          {"send-keys a", "sound on"},
          {"send-keys Space", "‖ paused"},
          {"resize-window -x 19 -y 5", "too small"},
          {"resize-window -x 90 -y 30", "/slack"}});
    Await("▀");
    scene->UnplugPlayer();
    Await("No player is connected");
    scene.reset();
    Await("Waiting for the service");
    Walk({{"send-keys ?", "Ctrl-L"}, {"send-keys q", "Waiting for the service"}});
    scene = std::make_unique<Scene>();
    scene->PlugPlayer();
    Await("1 of 6");
    Walk({{"send-keys q", "status 0"}, {"display -p", " icanon"}});
    EXPECT_EQ(Tmux("display -p '#{alternate_on}'"), "0\n");
}

}  // namespace
}  // namespace EndToEnd
