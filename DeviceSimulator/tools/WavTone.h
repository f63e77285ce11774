// What a WAV file sounds like at its end.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <vector>

namespace DeviceSimulator {

/// The frequency in Hz of the last 40 ms in a file of 16-bit stereo sound, which may still grow; 0 for
/// silence. None where there is not as much in it.
inline std::optional<double> NewestTone(const std::filesystem::path& path) {
    constexpr std::streamoff kHeaderBytes = 44;
    constexpr std::streamoff kRateAt = 24;
    constexpr std::streamoff kFrameBytes = 4;
    constexpr std::streamoff kPartOfASecond = 25;
    constexpr int kSilence = 300;  // of 32767
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    std::uint32_t rate = 0;
    file.seekg(kRateAt).read(reinterpret_cast<char*>(&rate), sizeof rate);
    const std::streamoff frames = rate / kPartOfASecond;
    const std::streamoff first = (size - kHeaderBytes) / kFrameBytes - frames;
    if (!file || first < 0) {
        return std::nullopt;
    }
    std::vector<std::int16_t> stereo(static_cast<std::size_t>(frames) * 2);
    file.seekg(kHeaderBytes + first * kFrameBytes);
    file.read(reinterpret_cast<char*>(stereo.data()), frames * kFrameBytes);
    if (!file) {
        return std::nullopt;
    }
    // By the left side's zero crossings: what changes meanwhile comes out as neither of its tones.
    int crossings = 0;
    int peak = 0;
    for (std::size_t i = 2; i < stereo.size(); i += 2) {
        crossings += (stereo[i - 2] < 0) != (stereo[i] < 0) ? 1 : 0;
        peak = std::max(peak, std::abs(stereo[i]));
    }
    return peak < kSilence ? 0 : crossings * (rate * 1.0) / static_cast<double>(stereo.size());
}

}  // namespace DeviceSimulator
