// Sockets that stand in the file system, and what is sent through a socket of whatever kind.
#pragma once

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "ServiceUtil/Descriptor.h"

struct LocalAddress {
    sockaddr_un name{};
    socklen_t length = 0;
    const sockaddr* Generic() const { return reinterpret_cast<const sockaddr*>(&name); }
};

/// Of a socket at `path`; none when that is empty, or too long, which errno then says.
inline std::optional<LocalAddress> LocalAddressOf(const std::string& path) {
    LocalAddress address;
    address.name.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.name.sun_path)) {
        errno = path.empty() ? ENOENT : ENAMETOOLONG;
        return std::nullopt;
    }
    std::memcpy(address.name.sun_path, path.c_str(), path.size() + 1);
    address.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size() + 1);
    return address;
}

/// Listens at `address`, where nothing may be yet; only this user may connect. Empty on failure, which errno
/// then says.
inline Descriptor ListenLocally(const LocalAddress& address, int backlog) {
    Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // The mode of the socket to be: set before bind, so that it never stands open to others.
    const bool isGood = listener.IsOpen() && fchmod(listener.Get(), S_IRUSR | S_IWUSR) == 0 &&
                        bind(listener.Get(), address.Generic(), address.length) == 0 &&
                        listen(listener.Get(), backlog) == 0;
    return isGood ? std::move(listener) : Descriptor{};
}

/// Sends all of `bytes`. Blocks, as the socket does; false when the connection ends, or a time limit of the
/// socket's. No signal is raised.
inline bool SendAll(int socket, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) {
            continue;
        }
        if (sent <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(sent));
    }
    return true;
}
