// What a music file says of itself.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "DeviceSimulator/LibraryBuilder.h"

namespace DeviceSimulator {

struct MusicFile {
    TrackTags tags;  ///< the title is the file's name where the tags have none
    std::vector<std::vector<std::uint8_t>> pictures;  ///< as they are embedded; a front cover comes first
};

/// By its name: mp3, m4a, mp4, m4b, aac, flac, ogg, oga, opus or wav.
bool IsMusicFile(const std::filesystem::path& path);

/// None when the file holds no sound of a known length, or, with the reason in `error`, when it cannot be
/// read at present. Of a file that leads the reader astray only so much is read. Any thread may call.
std::optional<MusicFile> ReadMusicFile(const std::filesystem::path& path, std::string& error);

}  // namespace DeviceSimulator
