// Answers of a test's own in the place of the player's.
#pragma once

#include <functional>

#include "DeviceManager/DeviceManager.h"
#include "DeviceSimulator/wire/Functions.h"

namespace DeviceSimulator {

/// Every function's stand-in; an empty one leaves the model's own answer. A stand-in runs on the caller's
/// thread, without any lock of the simulator's held, so it may block and may call back into the simulator.
struct StandIns {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member's name takes none
#define DEVICE_SIMULATOR_STAND_IN(name, parameters) std::function<decltype(::name)> name;
    DEVICE_MANAGER_FUNCTIONS(DEVICE_SIMULATOR_STAND_IN)
#undef DEVICE_SIMULATOR_STAND_IN
};

}  // namespace DeviceSimulator
