// The player's side of the connections of its clients, the processes that have loaded libdevicemanager.so.
#pragma once

#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// Accepts connections, for good. A thread a connection, so that a call that hangs or a client that does not
/// read holds up its own thread only. `isStaying`: the process goes on when no client is left; else it ends
/// then.
[[noreturn]] void ServePlayer(Descriptor listener, bool isStaying);

}  // namespace DeviceSimulator
