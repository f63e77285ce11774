// What lies below a folder of music, and what its playlists name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace DeviceSimulator {

/// A file that was written to has another one.
struct FileStamp {
    std::int64_t size = 0;
    std::int64_t modified = 0;  ///< in ns since 1970
    bool operator==(const FileStamp&) const = default;
};

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

/// Calls `take` for each entry of the playlist `file` in its order, with the paths that it may mean,
/// likeliest first: as it stands, with the other system's separators, and in UTF-8 where it was written in
/// that system's Western code page. All absolute and without dots. False when it cannot be read; what is
/// behind the first 8 MiB is left out.
bool ReadPlaylist(const std::filesystem::path& file,
                  const std::function<void(const std::vector<std::filesystem::path>&)>& take);

/// How paths are compared.
std::filesystem::path ComparablePath(const std::filesystem::path& path);

/// A path as text for a message.
std::string PathText(const std::filesystem::path& path);

}  // namespace DeviceSimulator
