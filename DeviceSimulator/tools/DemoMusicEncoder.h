// Sound to music files, with GStreamer.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace DeviceSimulator {

/// What is wrong, for a person; empty: nothing.
using DemoError = std::string;

/// Writes 16-bit stereo sound as the format of `path`'s extension: .mp3, .flac, .ogg, .opus or .m4a. Without
/// tags.
DemoError EncodeFile(const std::filesystem::path& path, const std::vector<std::int16_t>& samples,
                     std::uint32_t sampleRate);

}  // namespace DeviceSimulator
