// Finds the managers that an event of the device manager is for.
#pragma once

#include "DeviceManager/DeviceManager.h"

class IpodManager;

namespace IpodManagerRegistry {

/// Any thread.
void Add(IpodManager* manager);

/// Removes every entry of `manager` and waits until no event of it is being handled. Any thread but the
/// device manager's callback thread, and never from inside a device-manager call.
void Remove(IpodManager* manager);

/// What the device manager calls with an event. Hands it to every manager registered under `processHandle`.
void DeviceManagerCallback(const DeviceEvent* event, u32 processHandle);

}  // namespace IpodManagerRegistry
