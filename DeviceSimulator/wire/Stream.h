// The Unix stream sockets between the library and the player: where both meet, and messages, each a flat head
// that begins with the length of what follows it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "DeviceSimulator/wire/Protocol.h"
#include "ServiceUtil/Descriptor.h"
#include "ServiceUtil/LocalSocket.h"

namespace DeviceSimulator {

/// The environment's name of the path of the player's socket. Unset or empty: a client has a player of its
/// own.
inline constexpr const char* kPlayerVariable = "DEVICE_SIMULATOR_PLAYER";

/// A connection to whoever listens there, with the time limit of its welcome. Empty when nobody does.
Descriptor ConnectTo(const LocalAddress& address, bool isLimited = true);
Descriptor ConnectToPlayer(const std::string& path);

/// Listens at `path`, in place of a socket there that nobody listens at. Of several processes that want to,
/// one does. Empty, with what is wrong in `error`, when that does not work or another one listens there
/// already.
Descriptor ListenForClients(const std::string& path, std::string& error);

/// The same at a name that nobody else has, which stands in no folder. Empty, as errno says.
Descriptor ListenPrivately(LocalAddress& address);

namespace Wire {

/// All of `bytes`, and with the first of them the descriptor `passed`. As ::SendAll.
bool SendWith(int socket, std::span<const std::byte> bytes, int passed);

template <Flat T>
bool SendFlat(int socket, const T& value) {
    return SendAll(socket, std::as_bytes(std::span(&value, 1)));
}

/// As many bytes as `bytes` has room for. Blocks; false when the connection ends, or a time limit of the
/// socket's.
bool ReceiveAll(int socket, std::span<std::byte> bytes);

template <Flat T>
bool ReceiveFlat(int socket, T& value) {
    return ReceiveAll(socket, std::as_writable_bytes(std::span(&value, 1)));
}

/// A whole message of at most `most` bytes behind its head, mostly in one read; it lies in `buffer`. Blocks;
/// empty when the connection ends or the message is longer. A descriptor that comes with it goes to `passed`.
std::span<const std::byte> ReceiveMessage(int socket, Bytes& buffer, std::size_t headSize, std::size_t most,
                                          Descriptor& passed);

/// How long either side waits for the other's word of welcome; then for ever.
void LimitTime(int socket, bool isLimited);

/// Whether who is at the other end, or listens there, runs as this user.
bool IsOwnUser(int socket);

}  // namespace Wire

}  // namespace DeviceSimulator
