// What lies below a folder of music.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace DeviceSimulator {

/// Sorted by path, so that a folder is the same library wherever it is copied to.
struct MusicFolderFiles {
    std::vector<std::filesystem::path> music;
    std::vector<std::filesystem::path> playlists;  ///< .m3u and .m3u8
    std::vector<std::string> errors;               ///< a line for each folder that could not be read
};

/// All files below `folder` but the hidden ones. Links are followed; a folder that is reached twice is looked
/// at once.
MusicFolderFiles FindMusicFiles(const std::filesystem::path& folder);

/// A path as text for a message.
std::string PathText(const std::filesystem::path& path);

}  // namespace DeviceSimulator
