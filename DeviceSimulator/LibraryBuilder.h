// Makes a library of tracks as they come: groups them, sorts them, numbers them.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "DeviceSimulator/LibraryTables.h"

namespace DeviceSimulator {

/// What one track says of itself; well-formed UTF-8 throughout (see CleanName), empty where it says nothing.
struct TrackTags {
    std::string title;
    std::string artist;
    std::string album;
    std::string albumArtist;
    std::string genre;
    std::string composer;
    std::uint32_t disc = 0;   ///< 0: not told
    std::uint32_t track = 0;  ///< 0: not told
    bool compilation = false;
    std::uint32_t durationMs = 0;
    std::uint32_t sampleRate = 44100;  ///< the file's own, in Hz
};

/// One thread builds; Build() ends it.
class LibraryBuilder {
  public:
    /// Where a track went, by numbers that count only for the builder.
    struct Added {
        std::uint32_t track = 0;
        std::uint32_t album = 0;
    };

    /// Tracks without an artist or album are filed as unknown. Albums of one title are one when they have
    /// the same album artist (or are compilations, or without either have the same artist).
    /// `file` is any bytes, empty for none.
    Added Add(const TrackTags& tags, std::string_view file = {});

    /// Playlists keep the order in which they are added, and their tracks that of `tracks` (from Added).
    void AddPlaylist(std::string_view name, std::vector<std::uint32_t> tracks);

    bool HasCover(std::uint32_t album) const;
    /// `cover` is a number of the store that BuildWithCovers is given.
    void SetCover(std::uint32_t album, std::uint32_t cover);

    std::size_t TrackCount() const { return m_tracks.size(); }

    /// With covers drawn at run time.
    std::unique_ptr<Library> BuildWithDrawnCovers() { return Build(nullptr); }
    /// With the covers that were set.
    std::unique_ptr<Library> BuildWithCovers(std::shared_ptr<CoverStore> store) {
        return Build(std::move(store));
    }

  private:
    struct AddedTrack {
        TrackRow row;
        std::uint32_t disc = 0;
        std::uint32_t track = 0;
    };
    struct Groups {
        std::vector<std::string_view> names;
        std::vector<std::string_view> owners;  // albums only; else empty texts
        std::unordered_map<std::string_view, std::uint32_t> numbers;
    };

    std::uint32_t GroupNumber(GroupKind kind, std::string_view name, std::string_view owner = {});
    std::unique_ptr<Library> Build(std::shared_ptr<CoverStore> covers);
    void NumberGroups(GroupKind kind);
    std::vector<std::uint32_t> NumberTracks();
    std::vector<std::uint32_t> AlbumOrder() const;
    void ListTracks(GroupKind kind, const std::vector<std::uint32_t>& order);

    LibraryTables m_tables;
    std::vector<AddedTrack> m_tracks;
    std::array<Groups, kGroupKinds> m_groups;
    std::vector<std::uint32_t> m_covers;  // by album; may be shorter
};

}  // namespace DeviceSimulator
