#include "DeviceSimulator/wire/Stream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

namespace DeviceSimulator {

namespace {

constexpr int kBacklog = 128;
constexpr int kLockTries = 100;
constexpr int kLockPauseMs = 50;

Descriptor NewSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
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

/// What is kept of a buffer that once held a long list.
constexpr std::size_t kBufferSize = 4096;
constexpr std::size_t kLargestKept = 1U << 20U;
constexpr timeval kWelcomeTime{5, 0};

union Control {
    cmsghdr head;
    char bytes[CMSG_SPACE(sizeof(int))];
};

ssize_t SendSome(int socket, std::span<const std::byte> bytes, int passed) {
    iovec part{const_cast<std::byte*>(bytes.data()), bytes.size()};
    Control control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes;
    message.msg_controllen = sizeof(control.bytes);
    cmsghdr* const rights = CMSG_FIRSTHDR(&message);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(rights), &passed, sizeof(int));
    return sendmsg(socket, &message, MSG_NOSIGNAL);
}

ssize_t ReceiveSome(int socket, std::span<std::byte> bytes, Descriptor& passed) {
    iovec part{bytes.data(), bytes.size()};
    Control control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes;
    message.msg_controllen = CMSG_LEN(sizeof(int));  // no room for a second one
    const ssize_t count = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    const cmsghdr* const rights = count > 0 ? CMSG_FIRSTHDR(&message) : nullptr;
    if (rights != nullptr && rights->cmsg_type == SCM_RIGHTS && rights->cmsg_len == CMSG_LEN(sizeof(int))) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(rights), sizeof(int));
        passed = Descriptor(descriptor);
    }
    return count;
}

}  // namespace

Descriptor ConnectTo(const LocalAddress& address, bool isLimited) {
    Descriptor connection = NewSocket();
    Wire::LimitTime(connection.Get(), isLimited);
    const bool isConnected =
        connection.IsOpen() && connect(connection.Get(), address.Generic(), address.length) == 0;
    return isConnected ? std::move(connection) : Descriptor{};
}

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
        listener = ListenLocally(*address, kBacklog);
    }
    if (!listener.IsOpen()) {
        error = "cannot listen at " + path + ": " + std::strerror(errno);
    }
    return listener;
}

Descriptor ListenPrivately(LocalAddress& address) {
    address = {};
    address.name.sun_family = AF_UNIX;
    // Without a name: the system finds one.
    address.length = sizeof(address.name.sun_family);
    Descriptor listener = ListenLocally(address, kBacklog);
    address.length = sizeof(address.name);
    const bool isNamed =
        listener.IsOpen() &&
        getsockname(listener.Get(), reinterpret_cast<sockaddr*>(&address.name), &address.length) == 0;
    return isNamed ? std::move(listener) : Descriptor{};
}

namespace Wire {

bool SendWith(int socket, std::span<const std::byte> bytes, int passed) {
    ssize_t sent = 0;
    do {
        sent = SendSome(socket, bytes, passed);
    } while (sent < 0 && errno == EINTR);
    return sent > 0 && SendAll(socket, bytes.subspan(static_cast<std::size_t>(sent)));
}

bool ReceiveAll(int socket, std::span<std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = recv(socket, bytes.data(), bytes.size(), 0);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

std::span<const std::byte> ReceiveMessage(int socket, Bytes& buffer, std::size_t headSize, std::size_t most,
                                          Descriptor& passed) {
    if (buffer.size() < kBufferSize || buffer.size() > kLargestKept) {
        buffer = Bytes(kBufferSize);
    }
    ssize_t count = 0;
    do {
        count = ReceiveSome(socket, buffer, passed);
    } while (count < 0 && errno == EINTR);
    auto there = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    if (there < headSize) {
        if (there == 0 || !ReceiveAll(socket, std::span(buffer).subspan(there, headSize - there))) {
            return {};
        }
        there = headSize;
    }
    std::uint32_t length = 0;
    std::memcpy(&length, buffer.data(), sizeof(length));
    const std::size_t whole = headSize + length;
    if (length > most || there > whole) {
        return {};
    }
    buffer.resize(std::max(buffer.size(), whole));
    const auto message = std::span(buffer).first(whole);
    return ReceiveAll(socket, message.subspan(there)) ? message : std::span<std::byte>();
}

void LimitTime(int socket, bool isLimited) {
    const timeval time = isLimited ? kWelcomeTime : timeval{};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof(time));
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof(time));
}

bool IsOwnUser(int socket) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

}  // namespace Wire

}  // namespace DeviceSimulator
