// Sound to music files, with GStreamer.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace DeviceSimulator {

/// What is wrong, for a person; empty: nothing.
using DemoError = std::string;

/// That every element which the demo's music needs is there, else which Debian package brings the missing
/// one. Initialises GStreamer.
DemoError CheckEncoders();

/// Writes 16-bit stereo sound as the format of `path`'s extension: .mp3, .flac, .ogg, .opus or .m4a. Without
/// tags.
DemoError EncodeFile(const std::filesystem::path& path, const std::vector<std::int16_t>& samples,
                     std::uint32_t sampleRate);

/// The same with a pipeline description of the caller's own between the sound and the file.
DemoError EncodeWith(std::string_view encoder, const std::filesystem::path& path,
                     const std::vector<std::int16_t>& samples, std::uint32_t sampleRate);

}  // namespace DeviceSimulator
