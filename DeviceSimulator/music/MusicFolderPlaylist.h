// Playlist files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace DeviceSimulator {

/// The entries of an .m3u or .m3u8 text, in order: what is left without comments, blanks and line ends.
std::vector<std::string_view> PlaylistEntries(std::string_view text);

/// The paths that an entry of the playlist `file` may mean, likeliest first: as it stands, with the other
/// system's separators, and in UTF-8 where it was written in that system's Western code page. All absolute
/// and without dots.
std::vector<std::filesystem::path> EntryPaths(const std::filesystem::path& file, std::string_view entry);

/// What a playlist file holds, none when it cannot be read; what is behind the first 8 MiB is left out.
std::optional<std::string> ReadPlaylist(const std::filesystem::path& file);

/// How paths are compared.
std::filesystem::path ComparablePath(const std::filesystem::path& path);

}  // namespace DeviceSimulator
