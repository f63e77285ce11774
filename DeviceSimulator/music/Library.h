// The music that a simulated player holds, and the lists that it makes of it.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "DeviceManager/DeviceManagerValues.h"
#include "DeviceSimulator/music/MusicChoice.h"
#include "DeviceSimulator/music/Picture.h"

namespace DeviceSimulator {

/// What the player tells of one track. The texts live as long as the library.
struct TrackInfo {
    std::string_view title;
    std::string_view artist;
    std::string_view album;
    std::string_view genre;
    std::string_view composer;
    std::uint32_t durationMs = 0;
    std::uint32_t sampleRate = 44100;  ///< that it is sent at, 8,000 to 48,000 Hz
    std::string_view file;             ///< empty for a track without one (built-in and synthetic libraries)
};

/// One narrowing of the browse path: the item at `position` of the list of `category` that stood there.
struct PathStep {
    std::uint32_t category = 0;
    std::uint32_t position = 0;
    bool operator==(const PathStep&) const = default;
};

/// A list as the player shows it. Entries are library-wide numbers: a track's number for
/// DEV_MGR_CATEGORY_TRACK, a group's number of that category otherwise (see Library::ItemName). An entry's
/// position in the list is the id that the device-manager interface gives it.
using ItemList = std::vector<std::uint32_t>;

/// Immutable once built, so any thread may read it.
class Library {
  public:
    virtual ~Library() = default;

    virtual std::size_t TrackCount() const = 0;
    /// `track` below TrackCount().
    virtual TrackInfo Track(std::uint32_t track) const = 0;
    /// The items of `category` below `path` (empty: the whole library), in the player's order. A step that
    /// does not exist gives an empty list. A category that the player does not offer gives an empty list. The
    /// result may be shared between callers; it costs nothing to ask again for what was asked for last.
    virtual std::shared_ptr<const ItemList> Items(const std::vector<PathStep>& path,
                                                  std::uint32_t category) const = 0;
    /// The name of an entry of a list of `category`.
    virtual std::string_view ItemName(std::uint32_t category, std::uint32_t entry) const = 0;
    /// The cover of a track, or null when it has none. JPEG, at most 640 x 640 or as the file held it when
    /// that can be passed on as it stands.
    virtual std::shared_ptr<const Picture> Cover(std::uint32_t track) const = 0;
};

/// At least 12 artists, 30 albums, 300 tracks, with playlists, genres and composers; covers are drawn at run
/// time.
std::unique_ptr<Library> MakeBuiltInLibrary(const Sorting& sorting = {});

/// `tracks` made-up tracks, the same ones at every call.
std::unique_ptr<Library> MakeSyntheticLibrary(std::size_t tracks, const Sorting& sorting = {});

/// Is told how far a library is, in per cent: on the thread that makes it, never less than before, below 100.
using LibraryProgress = std::function<void(std::uint32_t percentage)>;

struct ScanOptions {
    /// Is called every 100 ms at least; what it throws ends the scan.
    LibraryProgress progress;
    std::chrono::milliseconds patience{10000};  ///< with a file
    Sorting sorting = {};
};

/// The music files below `folder` by their tags, read by the media program. Files that cannot be read, or
/// twice take too much time or memory, are named once each on stderr and left out; a folder that is missing,
/// unreadable or without music gives an empty library and a line on stderr. What is read is kept in the
/// folder `cache` (empty: nowhere) as it comes, and only new and changed files are read again; a cache that
/// cannot be used costs time and a line on stderr, no more.
std::unique_ptr<Library> ScanMusicFolder(const std::filesystem::path& folder,
                                         const std::filesystem::path& cache = {},
                                         const ScanOptions& options = {});

/// What is chosen, else what the environment asks for: DEVICE_SIMULATOR_LIBRARY (a folder) with
/// DEVICE_SIMULATOR_CACHE, else DEVICE_SIMULATOR_TRACKS (a number), else the built-in library.
std::unique_ptr<Library> MakeChosenLibrary(const MusicChoice& choice, const LibraryProgress& progress = {});

}  // namespace DeviceSimulator
