// What lies below a folder of music.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "DeviceSimulator/music/MusicRecord.h"

namespace DeviceSimulator {

struct FoundFile {
    std::string path;  ///< any bytes
    FileStamp stamp;
};

/// Sorted by path, so that a folder is the same library wherever it is copied to.
struct MusicFolderFiles {
    std::vector<FoundFile> music;
    std::vector<std::filesystem::path> playlists;  ///< .m3u and .m3u8
    std::vector<std::string> errors;  ///< a line for each folder, link or pipe that could not be read
    bool isComplete = true;           ///< every folder could be read
};

/// All files below `folder` but the hidden ones. Links are followed; a folder that is reached twice is looked
/// at once.
MusicFolderFiles FindMusicFiles(const std::filesystem::path& folder);

/// A path as text for a message.
std::string PathText(const std::filesystem::path& path);

}  // namespace DeviceSimulator
