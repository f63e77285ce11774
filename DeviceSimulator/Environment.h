// What the environment asks of the simulated player.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "DeviceSimulator/Simulator.h"

namespace DeviceSimulator {

/// DEVICE_SIMULATOR_DEVICE: what is plugged in at start. The library is left to MakeLibraryFromEnvironment.
SimulatorOptions OptionsFromEnvironment();

/// DEVICE_SIMULATOR_CONTROL: where the control socket is to be; none when unset or empty.
std::optional<std::string> ControlPathFromEnvironment();

/// The device type of a word such as "iap2" or "stick".
std::optional<std::uint32_t> FindDeviceType(std::string_view word);
/// The word for a type, or for one of its kind; empty when there is none.
std::string_view DeviceTypeWord(std::uint32_t type);

/// DEVICE_SIMULATOR_AUDIO: the folder of the simulated sound card; empty when unset.
std::string SoundFolderFromEnvironment();

}  // namespace DeviceSimulator
