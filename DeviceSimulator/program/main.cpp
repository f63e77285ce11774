// simulated-player: the simulated device manager as a process. See docs/simulator.md.
#include <fcntl.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "DeviceSimulator/control/ControlServer.h"
#include "DeviceSimulator/run/Engine.h"
#include "DeviceSimulator/run/PlayerServer.h"
#include "DeviceSimulator/wire/Stream.h"

namespace {

using namespace DeviceSimulator;

constexpr const char* kUsage =
    "usage: simulated-player [--stay] [--socket PATH]\n"
    "\n"
    "Clients, processes that have loaded libdevicemanager.so, find it at PATH, else at "
    "DEVICE_SIMULATOR_PLAYER.\n"
    "It ends with the last of them; with --stay it goes on. The library starts one by itself where there is "
    "none.\n"
    "\n"
    "  --inherit    listens on standard input, a listening socket: how the library starts it\n";

struct Options {
    bool isStaying = false;
    bool isInheriting = false;
    bool isHelp = false;
    std::string socket;
};

bool Parse(int argc, char** argv, Options& options) {
    if (const char* const path = std::getenv(kPlayerVariable)) {
        options.socket = path;
    }
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--socket" && i + 1 < argc) {
            options.socket = argv[++i];
        } else if (word == "--stay") {
            options.isStaying = true;
        } else if (word == "--inherit") {
            options.isInheriting = true;
        } else if (word == "--help") {
            options.isHelp = true;
        } else {
            return false;
        }
    }
    return options.isHelp || options.isInheriting || !options.socket.empty();
}

Descriptor FindListener(const Options& options) {
    if (options.isInheriting) {
        return Descriptor(fcntl(0, F_DUPFD_CLOEXEC, 3));
    }
    std::string error;
    Descriptor listener = ListenForClients(options.socket, error);
    if (!listener.IsOpen()) {
        std::fprintf(stderr, "device simulator: %s\n", error.c_str());
    }
    return listener;
}

}  // namespace

int main(int argc, char** argv) {
    // Standard error is that of whoever started it, and may be a pipe that nobody reads any more.
    std::signal(SIGPIPE, SIG_IGN);
    Options options;
    if (!Parse(argc, argv, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (options.isHelp) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    Descriptor listener = FindListener(options);
    if (!listener.IsOpen()) {
        return 1;
    }
    // Before the first client is answered, who then finds both there.
    Engine::Instance().EnsureStarted();
    std::unique_ptr<ControlServer> control;
    if (const char* const path = std::getenv("DEVICE_SIMULATOR_CONTROL"); path != nullptr && *path != '\0') {
        control = ControlServer::Open(path);
    }
    ServePlayer(std::move(listener), options.isStaying);
}
