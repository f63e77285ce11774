#include "DeviceSimulator/client/StartPlayer.h"

#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "DeviceSimulator/wire/PlayerSocket.h"
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

/// To a player that runs, or else to one that it starts; empty, with the reason, when there is neither.
Descriptor ReachPlayer(pid_t& child, std::string& error) {
    const char* const path = std::getenv(kPlayerVariable);
    const bool isShared = path != nullptr && *path != '\0';
    child = -1;
    if (isShared) {
        Descriptor socket = ConnectToPlayer(path);
        if (socket.IsOpen()) {
            return socket;
        }
    }
    const Descriptor listener = isShared ? ListenForClients(path, error) : ListenPrivately();
    if (!listener.IsOpen()) {
        error = isShared ? error : std::string("no socket: ") + std::strerror(errno);
        return Descriptor{};
    }
    // Connected first: a player whose first client has gone meanwhile ends at once.
    Descriptor socket = ConnectTo(listener);
    child = StartPlayer(listener, error);
    return child >= 0 ? std::move(socket) : Descriptor{};
}

}  // namespace

std::optional<FoundPlayer> FindPlayer(const Wire::Hello& hello) {
    std::string error;
    for (int i = 0; i < kTries; ++i) {
        FoundPlayer found;
        found.socket = ReachPlayer(found.child, error);
        const Welcome welcome =
            found.socket.IsOpen() ? ExchangeHello(found.socket.Get(), hello, error) : Welcome::Ended;
        found.address.length = sizeof(found.address.name);
        if (welcome == Welcome::Said &&
            getpeername(found.socket.Get(), reinterpret_cast<sockaddr*>(&found.address.name),
                        &found.address.length) == 0) {
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
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    Wire::HelloAnswer answer;
    const bool isWelcome = socket.IsOpen() && connect(socket.Get(), address.Generic(), address.length) == 0 &&
                           Wire::SendFlat(socket.Get(), hello) && Wire::ReceiveFlat(socket.Get(), answer) &&
                           answer.isWelcome != 0;
    return isWelcome ? std::move(socket) : Descriptor{};
}

}  // namespace DeviceSimulator
