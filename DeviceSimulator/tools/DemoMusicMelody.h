// Sound for the demo's tracks.
#pragma once

#include <cstdint>
#include <vector>

namespace DeviceSimulator {

/// A little tune, `seconds` long, 16-bit stereo; the same one for the same `seed`.
std::vector<std::int16_t> MakeMelody(std::uint32_t seed, std::uint32_t sampleRate, std::uint32_t seconds);

}  // namespace DeviceSimulator
