// What a WAV file sounds like at its end.
#pragma once

#include <filesystem>
#include <optional>

namespace DeviceSimulator {

/// The frequency in Hz of the last 40 ms in a file of 16-bit stereo sound, which may still grow; 0 for
/// silence. None where there is not as much in it.
std::optional<double> NewestTone(const std::filesystem::path& path);

}  // namespace DeviceSimulator
