// simulated-player-sound: the sound of the simulated player, which starts it with the other end of a socket
// as its standard input (SoundProtocol.h) and the folder of the simulated sound card as its argument. A
// program of its own: a file that brings a decoder down does not take along who plays it.

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <thread>

#include "DeviceSimulator/sound/SoundFeeder.h"

namespace DeviceSimulator {
namespace {

constexpr int kSocket = STDIN_FILENO;
constexpr int kTickMs = 10;
/// A decoder that holds this program up for so long will not let it go: it dies, and is started anew.
constexpr unsigned kStuckSeconds = 20;

bool IsSocket() {
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(kSocket, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET;
}

/// Ends the process with the player, whatever a decoder keeps the main thread at.
void EndWithPlayer() {
    pollfd socket{kSocket, 0, 0};
    while (poll(&socket, 1, -1) <= 0) {
    }
    _exit(0);
}

/// Each command says everything, so only the newest counts.
void TakeCommands(SoundFeeder& feeder) {
    std::array<char, sizeof(SoundCommand) + kMostSoundText> message;
    SoundCommand command;
    std::optional<std::string> file;
    ssize_t size = 0;
    while ((size = recv(kSocket, message.data(), message.size(), MSG_DONTWAIT)) >=
           static_cast<ssize_t>(sizeof command)) {
        std::memcpy(&command, message.data(), sizeof command);
        file.emplace(message.data() + sizeof command, static_cast<std::size_t>(size) - sizeof command);
    }
    if (file) {
        feeder.Obey(command, std::move(*file));
    }
}

void Report(const SoundFeeder::News& news) {
    const SoundReport report{news.track};
    std::string message(reinterpret_cast<const char*>(&report), sizeof report);
    message += news.failure.substr(0, kMostSoundText);
    send(kSocket, message.data(), message.size(), MSG_NOSIGNAL);
}

void Run(SoundFeeder& feeder) {
    for (;;) {
        std::array<pollfd, 2> ready{{{kSocket, POLLIN, 0}, {feeder.MessageFd(), POLLIN, 0}}};
        poll(ready.data(), ready.size(), feeder.IsMoving() ? kTickMs : -1);
        alarm(kStuckSeconds);
        TakeCommands(feeder);
        feeder.Work();
        if (const auto news = feeder.TakeNews()) {
            Report(*news);
        }
        alarm(0);
    }
}

}  // namespace
}  // namespace DeviceSimulator

int main(int argc, char** argv) {
    using namespace DeviceSimulator;
    if (argc != 2 || !IsSocket()) {
        std::fprintf(stderr, "%s is started by the simulated player.\n", argv[0]);
        return 2;
    }
    std::thread(EndWithPlayer).detach();
    if (gst_init_check(nullptr, nullptr, nullptr) == FALSE) {
        std::fprintf(stderr, "simulated-player-sound: GStreamer does not start\n");
        return 1;
    }
    SoundFeeder feeder(argv[1]);
    Run(feeder);
}
