// The one sample rate that the simulated capture device offers.
#pragma once

#include <cstdint>

namespace DeviceSimulator {

/// Writes `rate`, in Hz, to "capture.rate" in the folder that DEVICE_SIMULATOR_AUDIO names, whole or not at
/// all. Without that folder, or where it cannot be written, nothing happens. Any thread.
void SetCaptureRate(std::uint32_t rate);

}  // namespace DeviceSimulator
