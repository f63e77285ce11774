// What the functions for processes and memory need to know besides their arguments when the process is
// another one.
#pragma once

#include "DeviceSimulator/device/ProcessRegistry.h"

namespace DeviceSimulator {

/// eDevMgrRegisterProcess, with `listener` in the callback's place.
u32 RegisterProcess(u32* ph, DeviceEventCallback callback, std::shared_ptr<EventListener> listener);

/// eDevMgrAllocateSharedMemory, with the memory that `map` makes.
u32 AllocateMemory(u32 ph, u32* size, u32* block, const MapBlock& map);

}  // namespace DeviceSimulator
