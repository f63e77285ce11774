#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "DeviceSimulator/media/MediaWork.h"
#include "DeviceSimulator/media/SoundFeeder.h"

namespace DeviceSimulator {

namespace {

constexpr int kTickMs = 10;
/// A decoder that holds this program up for so long will not let it go: it dies, and is started anew.
constexpr unsigned kStuckSeconds = 20;

/// Each command says everything, so only the newest counts.
void TakeCommands(int socket, SoundFeeder& feeder) {
    std::array<char, sizeof(SoundCommand) + kMostSoundText> message;
    SoundCommand command;
    std::optional<std::string> file;
    ssize_t size = 0;
    while ((size = recv(socket, message.data(), message.size(), MSG_DONTWAIT)) >=
           static_cast<ssize_t>(sizeof command)) {
        std::memcpy(&command, message.data(), sizeof command);
        file.emplace(message.data() + sizeof command, static_cast<std::size_t>(size) - sizeof command);
    }
    if (file) {
        feeder.Obey(command, std::move(*file));
    }
}

void Report(int socket, const SoundFeeder::News& news) {
    const SoundReport report{news.track};
    std::string message(reinterpret_cast<const char*>(&report), sizeof report);
    message += news.failure.substr(0, kMostSoundText);
    send(socket, message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

}  // namespace

int FeedSound(int socket, const char* folder) {
    if (gst_init_check(nullptr, nullptr, nullptr) == FALSE) {
        std::fprintf(stderr, "simulated-player-media: GStreamer does not start\n");
        return 1;
    }
    SoundFeeder feeder(folder);
    for (;;) {
        std::array<pollfd, 2> ready{{{socket, POLLIN, 0}, {feeder.MessageFd(), POLLIN, 0}}};
        poll(ready.data(), ready.size(), feeder.IsMoving() ? kTickMs : -1);
        alarm(kStuckSeconds);
        TakeCommands(socket, feeder);
        feeder.Work();
        if (const auto news = feeder.TakeNews()) {
            Report(socket, *news);
        }
        alarm(0);
    }
}

}  // namespace DeviceSimulator
