#include "DeviceSimulator/wire/PlayerSocket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "DeviceSimulator/wire/Stream.h"

namespace DeviceSimulator {

namespace {

constexpr int kBacklog = 128;
constexpr int kLockTries = 100;
constexpr int kLockPauseMs = 50;

Descriptor NewSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

Descriptor ConnectTo(const LocalAddress& address) {
    Descriptor connection = NewSocket();
    Wire::LimitTime(connection.Get(), true);
    const bool isConnected =
        connection.IsOpen() && connect(connection.Get(), address.Generic(), address.length) == 0;
    return isConnected ? std::move(connection) : Descriptor{};
}

Descriptor Listen(const LocalAddress& address) {
    Descriptor listener = NewSocket();
    // The mode of the socket to be: set before bind, so that it never stands open to others.
    const bool isGood = listener.IsOpen() && fchmod(listener.Get(), S_IRUSR | S_IWUSR) == 0 &&
                        bind(listener.Get(), address.Generic(), address.length) == 0 &&
                        listen(listener.Get(), kBacklog) == 0;
    return isGood ? std::move(listener) : Descriptor{};
}

/// Waits for those who are at it; they take a moment.
Descriptor Lock(const std::string& path) {
    Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    for (int i = 0; file.IsOpen() && i < kLockTries; ++i) {
        if (flock(file.Get(), LOCK_EX | LOCK_NB) == 0) {
            return file;
        }
        poll(nullptr, 0, kLockPauseMs);
    }
    return Descriptor{};
}

void RemoveSocket(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode)) {
        unlink(path.c_str());
    }
}

}  // namespace

Descriptor ConnectToPlayer(const std::string& path) {
    const auto address = LocalAddressOf(path);
    return address ? ConnectTo(*address) : Descriptor{};
}

Descriptor ListenForClients(const std::string& path, std::string& error) {
    const auto address = LocalAddressOf(path);
    const Descriptor lock = address ? Lock(path + ".lock") : Descriptor{};
    Descriptor listener;
    if (lock.IsOpen() && ConnectTo(*address).IsOpen()) {
        errno = EADDRINUSE;
    } else if (lock.IsOpen() && (errno == ECONNREFUSED || errno == ENOENT)) {
        RemoveSocket(path);
        listener = Listen(*address);
    }
    if (!listener.IsOpen()) {
        error = "cannot listen at " + path + ": " + std::strerror(errno);
    }
    return listener;
}

Descriptor ListenPrivately() {
    LocalAddress address;
    address.name.sun_family = AF_UNIX;
    // Without a name: the system finds one.
    address.length = sizeof(address.name.sun_family);
    return Listen(address);
}

Descriptor ConnectTo(const Descriptor& listener) {
    LocalAddress address;
    address.length = sizeof(address.name);
    if (getsockname(listener.Get(), reinterpret_cast<sockaddr*>(&address.name), &address.length) != 0) {
        return Descriptor{};
    }
    return ConnectTo(address);
}

}  // namespace DeviceSimulator
