// What a scan keeps of a music file.
#pragma once

#include <cstdint>
#include <string>

#include "DeviceSimulator/helper/MediaProtocol.h"

namespace DeviceSimulator {

/// A file that was written to has another one.
struct FileStamp {
    std::int64_t size = 0;
    std::int64_t modified = 0;  ///< in ns since 1970
    bool operator==(const FileStamp&) const = default;
};

struct MusicRecord {
    FileStamp stamp;
    std::uint32_t isMusic = 0;  ///< else the rest is empty, but for
    std::string failure;        ///< why it never will be read; empty: it holds no music
    TrackTags tags;             ///< well-formed UTF-8 throughout (see CleanName)
    CoverKey cover;             ///< of its own pictures
};

}  // namespace DeviceSimulator
