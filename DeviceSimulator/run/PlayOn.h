// Begins to play, for a process as for a thumb on the player.
#pragma once

#include <functional>

#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

/// Gives the device to play on, or says why there is none. Called under the model's lock, once or twice.
using FindDevice = std::function<DevMgrResult(ManagerModel&, Device*&)>;

/// Plays on; with nothing chosen yet, all that the library holds. DEV_MGR_IAP_IPOD_IN_STOP_STATE when it
/// holds nothing.
DevMgrResult PlayOn(Engine& engine, const FindDevice& find);

}  // namespace DeviceSimulator
