#include "IpodControl/terminal/RunView.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "IpodControl/terminal/ViewLoop.h"

namespace IpodControl {

namespace {

constexpr int kFailed = 1;
constexpr int kNoTerminal = 2;

int Say(const std::string& sentence, int status) {
    std::fprintf(stderr, "%s\n", sentence.c_str());
    return status;
}

}  // namespace

int RunView(const ViewOptions& options) {
    std::string why;
    try {
        // Before ncurses takes them for itself, and until it has left the terminal.
        const auto signals = SignalDescriptor::Open({SIGWINCH, SIGTERM, SIGHUP, SIGINT});
        if (!signals) {
            return Say(std::string("The player view cannot wait for signals: ") + std::strerror(errno),
                       kFailed);
        }
        const auto terminal = PlayerView::Terminal::Open(options.hasColours, why);
        if (terminal) {
            return PlayerView::ViewLoop(options, *terminal, *signals).Run();
        }
    } catch (const std::exception& failure) {
        return Say(std::string("The player view has failed: ") + failure.what(), kFailed);
    }
    return Say(why, kNoTerminal);
}

}  // namespace IpodControl
