// simulated-player-media: what reads foreign files for the simulated player, which starts it with the other
// end of a socket as its standard input (MediaProtocol.h). A program of its own: a file that brings a decoder
// down, or takes all the memory that there is, takes nobody along.

#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <new>
#include <string_view>
#include <thread>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "DeviceSimulator/media/MediaWork.h"

namespace DeviceSimulator {
namespace {

constexpr int kSocket = STDIN_FILENO;
constexpr rlim_t kMostScanMemory = rlim_t{192} << 20;
constexpr rlim_t kMostSoundMemory = rlim_t{512} << 20;  // a dozen threads' stacks count in full

bool IsSocket() {
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(kSocket, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

/// Ends the process with the player, whatever a file keeps the main thread at.
void EndWithPlayer() {
    pollfd socket{kSocket, 0, 0};
    while (poll(&socket, 1, -1) <= 0) {
    }
    _exit(0);
}

/// Of data: libraries are many, and their code is not what a file makes grow.
void LimitMemory(rlim_t most) {
#ifndef MEDIA_MEMORY_UNLIMITED
    const rlimit limit{most, most};
    setrlimit(RLIMIT_DATA, &limit);
#endif
    static_cast<void>(most);
    // What did not fit may be anywhere by now: the next file finds a fresh program.
    std::set_new_handler([] { _exit(kOutOfMemoryStatus); });
}

}  // namespace
}  // namespace DeviceSimulator

int main(int argc, char** argv) {
    // Standard error is that of whoever started it, and may be a pipe that nobody reads any more.
    std::signal(SIGPIPE, SIG_IGN);
    using namespace DeviceSimulator;
    const std::string_view work = argc > 1 ? argv[1] : "";
    const bool isScan = work == kScanWork && argc == 2;
    if (!IsSocket() || (!isScan && (work != kSoundWork || argc != 3))) {
        std::fprintf(stderr, "%s is started by the simulated player.\n", argv[0]);
        return 2;
    }
    signal(SIGTERM, SIG_IGN);  // to all of a service: the player's end is this one's too, and no file's fault
    LimitMemory(isScan ? kMostScanMemory : kMostSoundMemory);
    std::thread(EndWithPlayer).detach();
    return isScan ? Scan(kSocket) : FeedSound(kSocket, argv[2]);
}
