// What the environment asks of the simulated player.
#pragma once

#include <optional>
#include <string>

#include "DeviceSimulator/device/SimulatorOptions.h"

namespace DeviceSimulator {

/// DEVICE_SIMULATOR_DEVICE: what is plugged in at start. The library is left to MakeLibraryFromEnvironment.
SimulatorOptions OptionsFromEnvironment();

/// DEVICE_SIMULATOR_CONTROL: where the control socket is to be; none when unset or empty.
std::optional<std::string> ControlPathFromEnvironment();

}  // namespace DeviceSimulator
