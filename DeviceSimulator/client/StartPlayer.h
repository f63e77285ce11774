// Finds the player that this process belongs to, and starts one where there is none.
#pragma once

#include <sys/types.h>

#include <optional>

#include "DeviceSimulator/wire/Protocol.h"
#include "DeviceSimulator/wire/Stream.h"
#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

struct FoundPlayer {
    Descriptor socket;     ///< of kind Events; welcome has been said
    LocalAddress address;  ///< for more connections
    pid_t child = -1;      ///< the player, where this process has started it
};

/// None, with the reason on stderr, once for each reason. Takes a few seconds at most. One thread at a time.
std::optional<FoundPlayer> FindPlayer(const Wire::Hello& hello);

/// One more connection; empty when the player has gone. Waits for it for as long as it takes.
Descriptor ConnectOnceMore(const LocalAddress& address, const Wire::Hello& hello);

}  // namespace DeviceSimulator
