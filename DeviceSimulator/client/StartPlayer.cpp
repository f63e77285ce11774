// Finds the player that this process belongs to, and starts one where there is none.
#include "DeviceSimulator/client/PlayerLink.h"

#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "ServiceUtil/ChildProcess.h"

namespace DeviceSimulator {

namespace {

/// Names the program where it does not stand beside the library.
constexpr const char* kProgramVariable = "DEVICE_SIMULATOR_PROGRAM";
/// A player that ends just then, and others that start one, get in each other's way now and then.
constexpr int kTries = 5;

enum class Welcome { Said, Refused, Ended };

Welcome ExchangeHello(int socket, const Wire::Hello& hello, std::string& error) {
    Wire::HelloAnswer answer;
    errno = 0;
    const bool isAnswered = Wire::SendFlat(socket, hello) && Wire::ReceiveFlat(socket, answer);
    if (!isAnswered && errno != EAGAIN && errno != EWOULDBLOCK) {
        error = "the player has ended";
        return Welcome::Ended;
    }
    if (!isAnswered) {
        error = "no answer";
    } else if (answer.magic != Wire::kMagic) {
        error = "that is no simulated player";
    } else if (answer.version != Wire::kVersion) {
        error = "the player is of version " + std::to_string(answer.version) + ", the library of " +
                std::to_string(Wire::kVersion);
    } else if (answer.isWelcome == 0 || !Wire::IsOwnUser(socket)) {
        error = "the player is another user's, or turns the library away";
    } else {
        return Welcome::Said;
    }
    return Welcome::Refused;
}

std::string ProgramPath() {
    static const char kHere = 0;
    Dl_info library{};
    if (dladdr(&kHere, &library) != 0 && library.dli_fname != nullptr) {
        std::string path = library.dli_fname;
        path = path.substr(0, path.rfind('/') + 1) + "simulated-player";
        if (access(path.c_str(), X_OK) == 0) {
            return path;
        }
    }
    const char* const named = std::getenv(kProgramVariable);
    return named != nullptr ? named : "simulated-player";
}

/// -1, with the reason, when it cannot be started.
pid_t StartPlayer(const Descriptor& listener, std::string& error) {
    const std::string path = ProgramPath();
    pid_t child = -1;
    // A session of its own, so that a terminal's Ctrl-C is for the service alone.
    const int failure = StartChild({path, "--inherit"}, listener.Get(), ChildPlace::Session, child);
    if (failure != 0) {
        error = "cannot start " + path + ": " + std::strerror(failure);
        return -1;
    }
    return child;
}

/// A player that runs, or else one that it starts. Not connected, with the reason, when there is neither.
FoundPlayer ReachPlayer(std::string& error) {
    FoundPlayer found;
    Descriptor listener;
    if (const char* const path = std::getenv(kPlayerVariable); path != nullptr && *path != '\0') {
        found.address = LocalAddressOf(path).value_or(LocalAddress{});
        found.socket = ConnectToPlayer(path);
        if (found.socket.IsOpen()) {
            return found;
        }
        listener = ListenForClients(path, error);
    } else {
        listener = ListenPrivately(found.address);
        error = listener.IsOpen() ? error : std::string("no socket: ") + std::strerror(errno);
    }
    if (listener.IsOpen()) {
        // Connected first: a player whose first client has gone meanwhile ends at once.
        found.socket = ConnectTo(found.address);
        found.child = StartPlayer(listener, error);
    }
    if (found.child < 0) {
        found.socket.Close();
    }
    return found;
}

}  // namespace

std::optional<FoundPlayer> FindPlayer(const Wire::Hello& hello) {
    std::string error;
    for (int i = 0; i < kTries; ++i) {
        FoundPlayer found = ReachPlayer(error);
        const Welcome welcome =
            found.socket.IsOpen() ? ExchangeHello(found.socket.Get(), hello, error) : Welcome::Ended;
        if (welcome == Welcome::Said) {
            Wire::LimitTime(found.socket.Get(), false);
            return found;
        }
        if (found.child >= 0) {
            EndChild(found.child);
        }
        if (welcome == Welcome::Refused) {
            break;
        }
    }
    // The service tries again each second.
    static auto* const kSaid = new std::string;
    if (*kSaid != error) {
        std::fprintf(stderr, "device simulator: no player: %s\n", error.c_str());
        *kSaid = error;
    }
    return std::nullopt;
}

Descriptor ConnectOnceMore(const LocalAddress& address, const Wire::Hello& hello) {
    Descriptor socket = ConnectTo(address, false);
    Wire::HelloAnswer answer;
    const bool isWelcome = socket.IsOpen() && Wire::SendFlat(socket.Get(), hello) &&
                           Wire::ReceiveFlat(socket.Get(), answer) && answer.isWelcome != 0;
    return isWelcome ? std::move(socket) : Descriptor{};
}

}  // namespace DeviceSimulator
