// The one form in which every library is held: numbered tracks and groups, in the player's order.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "DeviceSimulator/music/CoverFolder.h"
#include "DeviceSimulator/music/Library.h"
#include "DeviceSimulator/music/LibraryText.h"

namespace DeviceSimulator {

/// What tracks are grouped by. A track belongs to at most one group of each kind.
enum GroupKind : std::uint8_t { kArtists, kAlbums, kGenres, kComposers, kGroupKinds };

/// In place of a group's or playlist's or track's number.
constexpr std::uint32_t kNone = UINT32_MAX;

/// Tracks are numbered by title.
struct TrackRow {
    std::string_view title;
    std::string_view file;
    std::array<std::uint32_t, kGroupKinds> groups;
    std::uint32_t durationMs = 0;
    std::uint32_t sampleRate = 0;
};

/// Groups are numbered by name.
struct GroupRow {
    std::string_view name;
    std::string_view owner;          ///< an album's artist
    std::uint32_t cover = kNoCover;  ///< an album's, by the folder's numbers
    ItemList tracks;  ///< an artist's and an album's by album, disc and track number, others' by title
};

struct PlaylistRow {
    std::string_view name;
    ItemList tracks;
};

struct LibraryTables {
    TextPool texts;
    std::vector<TrackRow> tracks;
    std::array<std::vector<GroupRow>, kGroupKinds> groups;
    std::vector<PlaylistRow> playlists;
    std::shared_ptr<const CoverFolder> coverFolder;  ///< null: covers are drawn
};

std::unique_ptr<Library> MakeTableLibrary(LibraryTables tables);

}  // namespace DeviceSimulator
