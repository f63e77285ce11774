// Where a player and its clients meet: a socket at a path.
#pragma once

#include <functional>
#include <string>

#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// The environment's name of the path. Unset or empty: a client has a player of its own.
inline constexpr const char* kPlayerVariable = "DEVICE_SIMULATOR_PLAYER";

/// A connection to whoever listens at `path`. Empty when nobody does.
Descriptor ConnectToPlayer(const std::string& path);

/// Listens at `path`, in place of a socket there that nobody listens at. Of several processes that want to,
/// one does. Empty, with what is wrong in `error`, when that does not work or another one listens there
/// already.
Descriptor ListenForClients(const std::string& path, std::string& error);

/// The same at a name that nobody else has, which stands in no folder.
Descriptor ListenPrivately();

/// A connection to the address that `listener` listens at.
Descriptor ConnectTo(const Descriptor& listener);

}  // namespace DeviceSimulator
