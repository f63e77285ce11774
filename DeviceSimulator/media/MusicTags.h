// What a music file says of itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DeviceSimulator/helper/MediaProtocol.h"

namespace DeviceSimulator {

struct MusicFile {
    ScannedFile facts;                                ///< without a cover
    std::vector<std::vector<std::uint8_t>> pictures;  ///< as they are embedded; a front cover comes first
};

/// No music when the file holds no sound of a known length. Of a file that leads the reader astray only so
/// much is read. Texts are in UTF-8 and not longer than they are handed over.
MusicFile ReadMusicFile(const std::string& path);

}  // namespace DeviceSimulator
