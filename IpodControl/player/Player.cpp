#include "IpodControl/player/Player.h"

#include <cstdio>
#include <exception>
#include <string>

#include "IpodControl/player/Controller.h"

namespace IpodControl {

namespace {

constexpr int kFailed = 1;
constexpr int kNoTerminal = 2;

int Say(const std::string& sentence, int status) {
    std::fprintf(stderr, "%s\n", sentence.c_str());
    return status;
}

}  // namespace

int RunPlayer(const PlayerOptions& options) {
    std::string why;
    try {
        // Before ncurses takes them for itself, and until it has left the terminal.
        const PlayerView::Signals signals;
        const auto terminal = PlayerView::Terminal::Open(options.hasColours, why);
        if (terminal) {
            return PlayerView::Controller(options, *terminal, signals).Run();
        }
    } catch (const std::exception& failure) {
        return Say(std::string("The player view has failed: ") + failure.what(), kFailed);
    }
    return Say(why, kNoTerminal);
}

}  // namespace IpodControl
