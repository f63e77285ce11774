// Tones to music files, with GStreamer.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace DeviceSimulator {

/// Writes tones of `hertz`, one after another, in the format of `path`'s extension: .mp3, .flac, .ogg, .opus
/// or .m4a; in stereo, without tags. Each lasts `frames` at `rate` Hz. Returns what is wrong, for a person;
/// empty: nothing.
std::string WriteToneFile(const std::filesystem::path& path, std::uint32_t rate,
                          std::span<const double> hertz, std::uint32_t frames);

}  // namespace DeviceSimulator
